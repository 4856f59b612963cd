// The runs of a sweep over one loaded configuration.
#pragma once

#include "device.h"
#include "run/library.h"
#include "sweep/plan.h"
#include "sweep/verdict.h"

namespace bgp_rehearse {

// Runs the upgrade once, without failures, in this process.
Baseline run_baseline(bgp_platform::Device& device, const UpgradeLibrary& library);

// Runs the upgrade in a child process, whatever it does there, and judges it.
RunVerdict run_plan(bgp_platform::Device& device, const UpgradeLibrary& library, const Baseline& baseline,
                    const SweepPlan& plan);

}  // namespace bgp_rehearse
