// Text broken into lines at words.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace bgp_rehearse {

// How many columns a text takes: one for each character.
std::size_t columns_of(std::string_view text) noexcept;

// The words of a text, which stand between blanks and line ends, in lines of at most so many columns; a word that is
// wider than that has a line of its own. One blank is left between two words. No line for a text without words.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);

}  // namespace bgp_rehearse
