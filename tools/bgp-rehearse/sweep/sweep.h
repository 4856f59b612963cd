// bgp-rehearse sweep: every call and allocation of the upgrade made to fail in turn, and each run held against the
// library's contract.
#pragma once

#include "base/exit_status.h"
#include "options.h"

namespace bgp_rehearse {

// Sweeps the configurations and prints the report. Throws CommandError for what keeps it from starting.
ExitStatus sweep(const SweepOptions& options);

}  // namespace bgp_rehearse
