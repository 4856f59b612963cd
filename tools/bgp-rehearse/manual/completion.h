// What shells complete behind bgp-rehearse: commands, options, words that a value may be, ids of findings, files.
#pragma once

#include <string>

#include "manual/command.h"

namespace bgp_rehearse::manual {

std::string bash_completion(const Command& top);
std::string zsh_completion(const Command& top);
std::string fish_completion(const Command& top);

}  // namespace bgp_rehearse::manual
