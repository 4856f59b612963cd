// The data of the contract on failures; contract.h puts it together.
#pragma once

#include <string>
#include <vector>

#include "sweep/contract.h"

namespace bgp_rehearse {

struct CallRule {
    bgp_platform::capi::Function function;
    const char* path;  // without keys
    Demand demand;
};

struct StepRules {
    const char* step;
    std::vector<CallRule> calls;
};

// All sites but those that each re-keyed table has alike.
const std::vector<StepRules>& step_rules();

// Where an allocation of the library is refused and the process does not end: without room for the names of the VRFs the
// upgrade goes on without their instances.
Demand without_memory();

// A table whose rows update_rm_index walks through and moves. Rows that stay behind may bring these writes.
struct RekeyedTable {
    std::string path;
    std::vector<const char*> explains;
};

const std::vector<RekeyedTable>& rekeyed_tables();

}  // namespace bgp_rehearse
