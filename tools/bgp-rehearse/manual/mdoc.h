// Text in mdoc, the language of manual pages.
#pragma once

#include <string>
#include <string_view>

namespace bgp_rehearse::manual {

// Words of a text or of a macro's arguments, whatever characters they have.
std::string mdoc_words(std::string_view text);

// A paragraph as lines, each sentence on one of its own. Marks as Markdown has them: `code` and **bold**.
std::string mdoc_lines(std::string_view text);

// Paragraphs, lists and blocks of Markdown.
std::string mdoc_blocks(std::string_view markdown);

}  // namespace bgp_rehearse::manual
