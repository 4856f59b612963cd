// How much text a writer of a report gathers before it hands it on.
#pragma once

#include <cstddef>

namespace bgp_rehearse {

inline constexpr std::size_t kPiece = 1 << 16;  // bytes

}  // namespace bgp_rehearse
