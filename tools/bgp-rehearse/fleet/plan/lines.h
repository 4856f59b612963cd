// The lines of a plan's file: JSON, one object a line. The first is the plan's own, each other one is of an input.
#pragma once

#include <string>
#include <string_view>

#include "fleet/plan/plan.h"

namespace bgp_rehearse {

std::string line_of(const Plan& plan);
std::string line_of(const PlannedInput& input);

// The options of a plan as they stand in its line: equal where they are.
std::string line_of(const FleetOptions& options);

// Throw std::invalid_argument, which tells what is wrong, for lines that were not made by line_of().
FleetOptions fleet_options_of(std::string_view line);
Plan plan_of(std::string_view line);
PlannedInput input_of(std::string_view line);

}  // namespace bgp_rehearse
