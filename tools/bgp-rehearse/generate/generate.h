// `bgp-rehearse generate`: a configuration drawn at random, for rehearsals and measurements.
#pragma once

#include <string>

#include "base/exit_status.h"
#include "generate/configuration.h"

namespace bgp_rehearse {

enum class Kind { Adversarial, Healthy };

// What `bgp-rehearse generate` was asked to do. What both kinds have stands in the healthy one's request alone.
struct GenerateOptions {
    Kind kind = Kind::Adversarial;
    bgp_generator::healthy::Request request;
    uint32_t entities = 1;  // of the adversarial kind
    std::string output;     // where the configuration goes; empty or "-": to standard output

    bool to_file() const noexcept { return !output.empty() && output != "-"; }
};

// The roles and flaws that there are, for a help text.
std::string roles_and_flaws();

// Writes the configuration to the file or to standard output. Throws CommandError when it cannot, and Interrupted when a
// signal ended it.
ExitStatus generate(const GenerateOptions& options);

}  // namespace bgp_rehearse
