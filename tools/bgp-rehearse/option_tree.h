// The command line as data, without its parser.
#pragma once

#include <CLI/CLI.hpp>

#include "manual/command.h"

namespace bgp_rehearse {

// The commands and options that help tells. Throws std::logic_error for an option whose value has a name that is not known
// here: what a shell is to offer for it has to be said.
manual::Command option_tree(const CLI::App& top);

}  // namespace bgp_rehearse
