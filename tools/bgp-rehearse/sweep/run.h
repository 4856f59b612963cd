// The runs of a sweep over one loaded configuration.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "calls/fault_plan.h"
#include "device.h"
#include "run/library.h"
#include "sweep/verdict.h"

namespace bgp_rehearse {

// What goes wrong in one run: calls of the C API, and an allocation of the library (counted from 1; 0: none).
struct SweepPlan {
    struct FailedCall {
        std::size_t n;  // from 1
        Site site;      // of that call
        bgp_platform::capi::PlannedFailure failure;
        bool from_there;
    };
    std::vector<FailedCall> calls;
    std::size_t allocation = 0;
};

// Runs the upgrade once, without failures, in this process.
Baseline run_baseline(bgp_platform::Device& device, const UpgradeLibrary& library);

// Runs the upgrade in a child process, whatever it does there, and judges it.
Verdict run_plan(bgp_platform::Device& device, const UpgradeLibrary& library, const Baseline& baseline,
                 const SweepPlan& plan);

}  // namespace bgp_rehearse
