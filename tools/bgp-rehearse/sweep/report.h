// The report of a fault sweep: a table of call sites, and what broke the contract.
#pragma once

#include <string>

#include "options.h"
#include "sweep/tally.h"

namespace bgp_rehearse {

std::string text_sweep_report(const SweepOptions& options, const Tally& tally);
std::string json_sweep_report(const SweepOptions& options, const Tally& tally);

}  // namespace bgp_rehearse
