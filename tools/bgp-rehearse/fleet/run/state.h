// What `bgp-rehearse fleet run` keeps beside its database, so that it can be killed at any time and run again: a folder
// with a plan and the parts of its shards for each run that did not come to its end, and for the one that did.
//
//     FLEET.db.parts/lock
//     FLEET.db.parts/82df3b9d7a8e67b4/plan
//     FLEET.db.parts/82df3b9d7a8e67b4/0.part
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "fleet/plan/make_plan.h"
#include "fleet/plan/plan_reader.h"
#include "fleet/run/known_results.h"

namespace bgp_rehearse {

class FleetState {
public:
    // Makes the folder where it is missing. Throws CommandError (BadInput) when it cannot be, or while another run uses it.
    explicit FleetState(std::string folder);
    ~FleetState();
    FleetState(const FleetState&) = delete;
    FleetState& operator=(const FleetState&) = delete;

    // Makes a plan. One of the same inputs, library and options that is here already is kept with its shards and parts.
    // Returns what was planned now.
    Plan plan(PlanOptions options);

    const std::string& plan_file() const noexcept { return plan_file_; }
    std::string part_file(std::size_t shard) const;

    // The shards of which there is no whole part.
    std::vector<std::size_t> missing(const PlanReader& plan) const;

    // What other plans of the same library and options came to.
    KnownResults known(const PlanReader& plan) const;

    // Removes what a killed run left unfinished, or all that does not belong to the plan.
    void remove_unfinished() const;
    void remove_others() const;

private:
    std::vector<std::string> others() const;  // folders of other plans

    std::string folder_;
    std::string plan_folder_;
    std::string plan_file_;
    int lock_ = -1;
};

}  // namespace bgp_rehearse
