// What the terminal on standard output is like, and whether there is one.
#pragma once

#include <cstddef>
#include <optional>

namespace bgp_rehearse {

enum class Colour { Auto, Always, Never };  // --color

// Whether what goes to standard output has colours. Auto: on a terminal that is not dumb, unless NO_COLOR is set.
bool wants_colour(Colour asked);

// The columns that lines have on standard output: the terminal's, else those that COLUMNS tells of a terminal that does
// not know its own. Nothing where lines are not to be wrapped: standard output is no terminal.
std::optional<std::size_t> line_columns();

}  // namespace bgp_rehearse
