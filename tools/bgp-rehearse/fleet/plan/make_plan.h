// Makes a plan: `bgp-rehearse fleet plan`, and the first third of `bgp-rehearse fleet run`.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_status.h"
#include "fleet/plan/plan.h"

namespace bgp_rehearse {

// What `bgp-rehearse fleet plan` was asked to do.
struct PlanOptions {
    std::vector<std::string> paths;     // folders, files, archives, repositories; "@FILE": a list of files
    std::string output;                 // where the plan goes
    std::string library;                // empty: the library that belongs to this build
    std::string facts;                  // the file that knows the devices; empty: none
    FleetOptions options;               // of all inputs
    bool all_names = false;             // files of any name are taken, not only those of XML
    std::optional<std::size_t> shards;  // default: as many as take `shard_seconds` each, and at least `least_shards`
    double shard_seconds = 120;
    std::size_t least_shards = 1;
};

// Writes the plan's file, whole or not at all. What was passed over is told on standard error. Throws CommandError.
Plan make_plan(const PlanOptions& options);

// The same, and tells what was planned.
ExitStatus plan_fleet(const PlanOptions& options);

}  // namespace bgp_rehearse
