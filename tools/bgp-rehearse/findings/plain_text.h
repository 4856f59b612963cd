// A piece of a Markdown page as text for a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace bgp_rehearse {

// Paragraphs and items of lists in lines of at most so many columns, an empty line between paragraphs. The marks of
// code, of bold text and of links are left out; blocks that are set in stay as they are.
std::string plain_text(std::string_view markdown, std::size_t columns);

}  // namespace bgp_rehearse
