// Processor time of a piece of work.
#pragma once

#include <ctime>

namespace bgp_bench {

inline double cpu_seconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename Work>
double timed(Work&& work)
{
    const double start = cpu_seconds();
    work();
    return cpu_seconds() - start;
}

}  // namespace bgp_bench
