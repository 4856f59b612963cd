// The data of the contract on failures; contract.h puts it together.
#pragma once

#include <string>
#include <vector>

#include "calls/function.h"

namespace bgp_rehearse {

enum class Must {
    GoOn,    // without a line of its own: the failure does not matter, or shows in what follows
    Log,     // the log says so before the next call, in a line that begins with `text`; then it goes on
    Fault,   // the process ends with a fault report by the function `text`
    Assert,  // the process ends with a failed assertion in a function whose signature has `text`
};

// What must happen, and what may.
struct Demand {
    Must must = Must::GoOn;
    const char* text = "";
    const char* source = "";          // of a fault or an assertion
    unsigned int lines[2] = {0, 0};   // of a fault, one of these; 0: the contract names none
    std::vector<const char*> writes;  // beginnings of keypaths: what a run without the failure would not write there

    // The same, and these writes are explained: what was to be read, or to be written and read again, is lost.
    Demand explaining(std::vector<const char*> keypaths) const;
};

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
