// Makes text from a configuration or a library safe and plain to show.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace bgp_rehearse {

// The text with everything that a terminal would act on made visible: control characters as \n, \r, \t or \xNN (those
// beyond ASCII, and the marks that turn the direction of writing, as \u{NNNN}), and bytes that are not UTF-8 as \xNN.
// Printable text of any script stays as it is.
std::string escaped(std::string_view text);

// Does the same to the end of a text, from a place on.
void escape_from(std::size_t start, std::string* text);

// A log line as a line of text: escaped, without the line end that it may have.
std::string escaped_line(std::string_view line);

// A name that is bytes, such as a file's, as text that shows as it is and tells the bytes: a backslash becomes \\\\, and
// each byte of what escaped() would change becomes \xNN.
std::string escaped_name(std::string_view bytes);

// The bytes of an escaped name. A backslash that escaped_name() does not write stays.
std::string unescaped_name(std::string_view name);

}  // namespace bgp_rehearse
