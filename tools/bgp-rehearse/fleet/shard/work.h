// `bgp-rehearse fleet work`: rehearses the inputs of one shard of a plan.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "base/exit_status.h"
#include "fleet/plan/plan_reader.h"
#include "fleet/shard/worker.h"

namespace bgp_rehearse {

struct WorkOptions {
    std::string plan;       // its file
    std::size_t shard = 0;  // from 0
    std::string output;     // where the part goes
    std::string library;    // where it lies on this machine; empty: where the plan says
};

// Writes the part of a shard, whole or not at all, of the lines that `line_for` gives. Throws CommandError.
void write_part(const PlanReader& plan, std::size_t shard, const std::string& file,
                const std::function<std::string(const PlannedInput&)>& line_for);

// The library of a plan, opened. A path that is not empty says where it lies instead. Throws CommandError (BadInput) when
// it cannot be, or is another one than the plan was made for.
UpgradeLibrary library_of(const Plan& plan, const std::string& path);

// Throws CommandError, and Interrupted when a signal ended it.
ExitStatus work_shard(const WorkOptions& options);

}  // namespace bgp_rehearse
