#include "calls/fault_plan.h"

#include <algorithm>
#include <utility>

namespace bgp_platform::capi {

void FaultPlan::fail_call(std::size_t n, PlannedFailure failure, bool from_there)
{
    by_count_.push_back({seen_ + n, failure, from_there});
}

void FaultPlan::fail(Function function, std::string path, PlannedFailure failure, std::size_t times, std::size_t skip)
{
    by_match_.push_back({function, std::move(path), failure, times, skip});
}

void FaultPlan::clear() noexcept
{
    seen_ = 0;
    by_count_.clear();
    by_match_.clear();
}

bool FaultPlan::looks_at_path(Function function) const noexcept
{
    return std::any_of(by_match_.begin(), by_match_.end(),
                       [function](const ByMatch& match) { return match.function == function && !match.path.empty(); });
}

std::optional<PlannedFailure> FaultPlan::next(Function function, const std::string& path)
{
    ++seen_;
    for (const ByCount& count : by_count_) {
        if (seen_ == count.n || (count.from_there && seen_ > count.n)) {
            return count.failure;
        }
    }
    for (ByMatch& match : by_match_) {
        if (match.function != function || path.compare(0, match.path.size(), match.path) != 0) {
            continue;
        }
        const std::size_t turn = match.matched++;
        if (turn >= match.skip && (match.times == 0 || turn < match.skip + match.times)) {
            return match.failure;
        }
    }
    return std::nullopt;
}

}  // namespace bgp_platform::capi
