// Puts the results of a fleet into one database: `bgp-rehearse fleet merge`.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/exit_status.h"

namespace bgp_rehearse {

struct MergeOptions {
    std::string plan;                // the plan's file
    std::vector<std::string> parts;  // one of each of its shards, in any order
    std::string output;              // the database
};

// Writes the database, whole or not at all; its bytes are the same however the fleet was cut into shards. Returns the
// number of routers. Throws CommandError: PartsDiffer, telling what is wrong, unless each input of the plan has exactly one
// result.
std::size_t merge_parts(const MergeOptions& options);

// The same, and tells what was merged.
ExitStatus merge_fleet(const MergeOptions& options);

}  // namespace bgp_rehearse
