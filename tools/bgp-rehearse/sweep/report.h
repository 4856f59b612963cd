// The report of a fault sweep: a table of call sites, and what broke the contract.
#pragma once

#include <string>
#include <vector>

#include "sweep/tally.h"

namespace bgp_rehearse {

std::string text_sweep_report(const std::vector<std::string>& configurations, const Tally& tally, bool colour);
std::string json_sweep_report(const std::vector<std::string>& configurations, const Tally& tally);

}  // namespace bgp_rehearse
