// What a sweep makes go wrong, run by run.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "calls/fault_plan.h"
#include "sweep/site.h"
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

// The kinds of runs: one call fails, every call fails from one on, two calls fail, one allocation is refused.
enum class RunKind { OneCall, FromThereOn, TwoCalls, Allocation };
constexpr std::size_t kRunKinds = 4;
RunKind kind_of(const SweepPlan& plan);

// "call 17 (update_l3vpn: cdb_exists /MPLS-VPN-MIB/...) fails from there on: item does not exist"
std::string describe(const SweepPlan& plan);

// Each call with each of its failures, alone and from there on.
std::vector<SweepPlan> call_plans(const Baseline& baseline);

// Those, all pairs of calls where they are wanted, and each allocation.
std::vector<SweepPlan> all_plans(const Baseline& baseline, bool pairs);

}  // namespace bgp_rehearse
