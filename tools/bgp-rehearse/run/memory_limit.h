// Keeps the process that runs an upgrade to an amount of memory.
//
// What does not fit ends the process at once, where it was asked for: what a library makes of an allocation that failed
// tells nothing of a device that has the memory. C++'s new and the platform are known to run out the moment they do; of
// other allocations it shows when the library crashes or exits over one.
#pragma once

#include <cstddef>
#include <optional>

#include "run/watch.h"

namespace bgp_rehearse {

class MemoryLimit {
public:
    // From now on until its end the process may map as many bytes more. Only one at a time; none does nothing, and so
    // does one that is wider than what the process may have anyway.
    MemoryLimit(std::optional<std::size_t> bytes, const Watch& watch);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

    // An allocation failed: ends the process, and the watch knows why. Returns where there is no limit.
    static void reached() noexcept;
};

}  // namespace bgp_rehearse
