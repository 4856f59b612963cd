// The report of a fleet as text for an engineer.
#pragma once

#include <cstddef>
#include <string>

#include "fleet/report/comparison.h"
#include "fleet/report/summary.h"
#include "report/page.h"

namespace bgp_rehearse {

inline constexpr std::size_t kStepColumns = 34;  // of a step's name

// `opens` is what opens a list when an option of the report's lines is put behind it: "bgp-rehearse fleet show FLEET.db".
void add_summary(const FleetSummary& summary, const std::string& opens, Page* page);

void add_comparison(const Comparison& comparison, const std::string& opens, Page* page);

}  // namespace bgp_rehearse
