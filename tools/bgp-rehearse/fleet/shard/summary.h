// What came of a router, as the summary that its line tells.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "base/exit_status.h"
#include "device.h"
#include "fleet/plan/plan.h"
#include "fleet/shard/result.h"
#include "judge/judgement.h"
#include "report/model.h"

namespace bgp_rehearse {

// An upgrade that returned or ended, and its judgement.
struct Rehearsed {
    const bgp_platform::Device& device;
    const Judgement& judgement;
    const std::vector<Step>& steps;
    CallTotals calls;
    int exit_status;
    std::map<std::string, uint64_t> changes;  // change_digests() of an upgrade that returned
};
RouterResult result_of(const PlannedInput& input, const Rehearsed& rehearsed);

// A backup that was not rehearsed. Its errors are without its name: "line 17: /router/bgp{65010}/as-size: …".
RouterResult refused_result(const PlannedInput& input, std::vector<std::string> errors);

// This command made a mistake over a router, or could not tell what came of it.
RouterResult failed_result(const PlannedInput& input, ExitStatus status, const std::string& sentence);

// A loader's error without the name that it was given for the file.
std::string without_name(const std::string& error, const std::string& name);

// What all errors of a kind have in common: without line, path, values and numbers.
std::string reason_of_error(const std::string& error);

}  // namespace bgp_rehearse
