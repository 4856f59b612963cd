// How far a sweep is, in memory that its workers share with the process that waits for them.
#pragma once

#include <atomic>
#include <cstddef>

#include "base/shared_memory.h"

namespace bgp_rehearse {

struct RunsDone {
    std::atomic<std::size_t> planned{0};  // as far as is known
    std::atomic<std::size_t> done{0};
};

using SharedRunsDone = SharedMemory<RunsDone>;

}  // namespace bgp_rehearse
