// What a rehearsal that returned is judged by.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "device.h"
#include "judge/failed_calls.h"
#include "judge/upgrade_steps.h"

namespace bgp_rehearse {

// What the rehearsal takes for granted of the device, and who said so.
struct Assumptions {
    std::string user_profile;         // as text: "0"
    bool user_profile_given = false;  // by an option or by the facts of the device; else it is the default
    std::string interfaces;           // "127.0.0.1"
    bool interfaces_given = false;
};

// A second upgrade of the result.
struct Again {
    std::string ended;                 // how it ended, when it did not return
    std::vector<std::string> changes;  // the keypaths of the rows that it changed still
};

struct Evidence {
    const bgp_platform::Device& device;  // its upgrade still open, with a history whose writers are the steps' numbers
    int result = 0;                      // of update()
    const std::vector<Step>& steps;
    const FailedCalls& failed_calls;
    Assumptions assumptions;
    std::optional<std::string> invalid;  // what is not valid in the result, "" when all is; none: nobody looked
    std::optional<Again> again;          // none: it was not asked for
};

// The name of the step that is a writer of a history; "" for 0. A step's number is its place among bgp_contract::kSteps,
// from 1 (UpgradeSteps::current_number()).
const char* step_of_writer(bgp_platform::store::Writer writer) noexcept;

}  // namespace bgp_rehearse
