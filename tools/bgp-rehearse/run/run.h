// `bgp-rehearse run`: the whole sequence, from the checks of the command line to the report.
#pragma once

#include <string>

#include "base/exit_status.h"
#include "device.h"
#include "run/request.h"

namespace bgp_rehearse {

// Rehearses the upgrade and prints the report. Throws CommandError when it cannot, and Interrupted when a signal ended
// it.
ExitStatus run(const RunOptions& asked);

// The device of a rehearsal: set up as the command line says, and loaded with the stored configuration. Throws
// CommandError (BadInput) when it cannot be. It is never freed: that would take a big configuration apart row by row, and
// the process ends soon.
bgp_platform::Device& load_device(const DeviceOptions& options, const std::string& configuration);

}  // namespace bgp_rehearse
