// bgp-rehearse sweep: every call and allocation of the upgrade made to fail in turn, and each run held against the
// library's contract.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/exit_status.h"
#include "run/request.h"

namespace bgp_rehearse {

// What `bgp-rehearse sweep` was asked to do.
struct SweepOptions {
    std::vector<std::string> configurations;  // the files to upgrade
    std::string library;                      // empty: the library that belongs to this build
    DeviceOptions device;
    unsigned int jobs = 1;   // runs at a time
    std::size_t every = 1;   // only each so manieth run
    bool pairs = false;      // all pairs of failed calls, too
    bool all_sites = false;  // a call site that was not reached counts as a failure
    bool json = false;
    Colour colour = Colour::Auto;
};

// Sweeps the configurations and prints the report. Throws CommandError for what keeps it from starting.
ExitStatus sweep(const SweepOptions& options);

}  // namespace bgp_rehearse
