// Memory that runs out on order, inside one shared library: the executable's operators new, calloc and strndup, which
// the whole process uses, count the allocations that the library makes, directly or through the C++ library, and can
// refuse one.
#pragma once

#include <cstddef>
#include <string>

namespace bgp_rehearse::failing_allocations {

// Starts to count, from 1, the allocations of the library at this path (as the loader names it), and refuses the n-th;
// 0 refuses none.
void watch(const std::string& library, std::size_t n);

// Stops counting, and tells how many there were.
std::size_t stop() noexcept;

}  // namespace bgp_rehearse::failing_allocations
