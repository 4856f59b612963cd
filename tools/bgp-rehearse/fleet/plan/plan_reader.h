// Reads a plan: all that is said of it as a whole at once, its inputs a shard at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "fleet/plan/plan.h"

namespace bgp_rehearse {

class PlanReader {
public:
    // Throws CommandError (BadInput) that names file and line, for what cannot be read or is no plan.
    explicit PlanReader(std::string file);

    const Plan& plan() const noexcept { return plan_; }

    // The inputs of a shard (from 0), in its order, in memory one at a time. Throws likewise, also when what `take` got
    // before is not all: the plan is cut off, or has been changed.
    void each_input(std::size_t shard, const std::function<void(PlannedInput)>& take) const;

    std::vector<PlannedInput> shard(std::size_t shard) const;

private:
    std::string file_;
    uint64_t start_ = 0;  // of the first input's line
    Plan plan_;
};

}  // namespace bgp_rehearse
