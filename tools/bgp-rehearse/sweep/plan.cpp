#include "sweep/plan.h"

#include <fmt/format.h>

#include "confd_lib.h"
#include "sweep/errors.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::capi::PlannedFailure;

std::string call_text(const SweepPlan::FailedCall& call)
{
    return fmt::format("call {} ({}) fails{}: {}", call.n, call.site.name(), call.from_there ? " from there on" : "",
                       call.failure.result == CONFD_EOF ? "end of file" : confd_strerror(call.failure.code));
}

void add_pair_plans(const Baseline& baseline, std::vector<SweepPlan>* plans)
{
    for (std::size_t first = 1; first <= baseline.sites.size(); ++first) {
        for (std::size_t second = first + 1; second <= baseline.sites.size(); ++second) {
            plans->push_back(
                {{{first, baseline.sites[first - 1], {}, false}, {second, baseline.sites[second - 1], {}, false}}, 0});
        }
    }
}

}  // namespace

RunKind kind_of(const SweepPlan& plan)
{
    if (plan.allocation != 0) {
        return RunKind::Allocation;
    }
    if (plan.calls.size() > 1) {
        return RunKind::TwoCalls;
    }
    return plan.calls.front().from_there ? RunKind::FromThereOn : RunKind::OneCall;
}

std::string describe(const SweepPlan& plan)
{
    if (plan.allocation != 0) {
        return fmt::format("allocation {} refused", plan.allocation);
    }
    std::string text;
    for (const SweepPlan::FailedCall& call : plan.calls) {
        text += (text.empty() ? "" : ", ") + call_text(call);
    }
    return text;
}

std::vector<SweepPlan> call_plans(const Baseline& baseline)
{
    std::vector<SweepPlan> plans;
    for (std::size_t call = 0; call < baseline.sites.size(); ++call) {
        for (const PlannedFailure& failure : failures_of(baseline.sites[call].function)) {
            for (const bool from_there : {false, true}) {
                plans.push_back({{{call + 1, baseline.sites[call], failure, from_there}}, 0});
            }
        }
    }
    return plans;
}

std::vector<SweepPlan> all_plans(const Baseline& baseline, bool pairs)
{
    std::vector<SweepPlan> plans = call_plans(baseline);
    if (pairs) {
        add_pair_plans(baseline, &plans);
    }
    for (std::size_t allocation = 1; allocation <= baseline.allocations; ++allocation) {
        plans.push_back({{}, allocation});
    }
    return plans;
}

}  // namespace bgp_rehearse
