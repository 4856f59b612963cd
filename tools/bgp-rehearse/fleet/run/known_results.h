// Results of earlier runs that hold for a plan, too: those of the same bytes, of a device with the same facts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "fleet/plan/plan_reader.h"

namespace bgp_rehearse {

class KnownResults {
public:
    // Takes the results of a whole part of a plan of the same library and options. One that is not whole gives none. A
    // refused input is none that is known: what made it unreadable may have gone.
    void add(const PlanReader& plan, const std::string& part);

    // The line of an input's result.
    std::optional<std::string> line_for(const PlannedInput& input) const;

private:
    struct Place {
        uint32_t part;
        uint64_t offset;
    };
    std::vector<std::string> parts_;
    std::unordered_map<std::string, Place> places_;
};

}  // namespace bgp_rehearse
