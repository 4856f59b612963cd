// `bgp-rehearse fleet run`: plan, work and merge on this machine. It can be ended at any time, and goes on where it was.
#pragma once

#include <cstddef>
#include <string>

#include "base/exit_status.h"
#include "fleet/plan/make_plan.h"

namespace bgp_rehearse {

struct FleetRunOptions {
    PlanOptions plan;    // what is rehearsed, and how
    std::string output;  // the database
    std::size_t jobs = 1;
};

// Throws CommandError, and Interrupted when a signal ended it.
ExitStatus run_fleet(const FleetRunOptions& options);

}  // namespace bgp_rehearse
