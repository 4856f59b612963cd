// `bgp-rehearse generate`: a configuration drawn at random, for rehearsals and measurements.
#pragma once

#include "options.h"

namespace bgp_rehearse {

// Writes the configuration to the file or to standard output. Throws CommandError when it cannot, and Interrupted when a
// signal ended it.
ExitStatus generate(const GenerateOptions& options);

}  // namespace bgp_rehearse
