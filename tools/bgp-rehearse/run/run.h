// `bgp-rehearse run`: the whole sequence, from the checks of the command line to the report.
#pragma once

#include "base/exit_status.h"
#include "run/options.h"

namespace bgp_rehearse {

// Rehearses the upgrade and prints the report. Throws CommandError when it cannot, and Interrupted when a signal ended
// it.
ExitStatus run(const RunOptions& options);

}  // namespace bgp_rehearse
