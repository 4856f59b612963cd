// `bgp-rehearse --generate`: manual pages and completion for shells, made of the command line itself for a package.
#pragma once

#include <string>
#include <vector>

#include "base/exit_status.h"
#include "manual/command.h"

namespace bgp_rehearse {

struct ManualOptions {
    std::string kind;    // one of kinds_of_manual()
    std::string folder;  // where the files go; made where it is missing
    manual::Command tree;
};

// "man", "complete-bash", "complete-zsh", "complete-fish"
std::vector<std::string> kinds_of_manual();

// Writes all pages, "bgp-rehearse.1" and one for each command, or the one file of a shell. Each file appears whole or
// not at all. Throws CommandError.
ExitStatus write_manual(const ManualOptions& options);

}  // namespace bgp_rehearse
