// The device of a rehearsal: set up as the command line says, and loaded with the stored configuration.
#pragma once

#include "device.h"
#include "run/options.h"

namespace bgp_rehearse {

// A device with the configuration loaded; throws CommandError (BadInput) when it cannot be. It is never freed: that
// would take a big configuration apart row by row, and the process ends soon.
bgp_platform::Device& load_device(const DeviceOptions& options, const std::string& configuration);

}  // namespace bgp_rehearse
