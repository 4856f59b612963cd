// Lines broken between words.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace bgp_rehearse {

// The columns that a text takes: a code point of UTF-8 is one, a colour that a terminal takes ("\033[31m") none.
std::size_t columns_of(std::string_view text) noexcept;

// The text in lines of at most so many columns, those after the first behind `hanging` blanks; without columns, and when
// it fits, as it is. A word that is longer than a line stays whole; the blanks that the text begins with stay.
std::string wrapped(std::string_view text, std::optional<std::size_t> columns, std::size_t hanging);

}  // namespace bgp_rehearse
