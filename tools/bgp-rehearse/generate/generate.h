// `bgp-rehearse generate`: a configuration drawn at random, for rehearsals and measurements.
#pragma once

#include <string>

#include "base/exit_status.h"
#include "generate/settings.h"

namespace bgp_rehearse {

// What `bgp-rehearse generate` was asked to do.
struct GenerateOptions {
    bgp_generator::Settings settings;
    std::string output;  // where the configuration goes; empty or "-": to standard output

    bool to_file() const noexcept { return !output.empty() && output != "-"; }
};

// Writes the configuration to the file or to standard output. Throws CommandError when it cannot, and Interrupted when a
// signal ended it.
ExitStatus generate(const GenerateOptions& options);

}  // namespace bgp_rehearse
