// Which failures each function of the C API can give.
#pragma once

#include <vector>

#include "calls/fault_plan.h"
#include "calls/function.h"

namespace bgp_rehearse {

// The ConfD codes that a call of the function can fail with, and end-of-file last.
std::vector<bgp_platform::capi::PlannedFailure> failures_of(bgp_platform::capi::Function function);

}  // namespace bgp_rehearse
