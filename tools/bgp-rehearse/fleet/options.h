// The command line of `bgp-rehearse fleet`: its verbs and their options.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "base/exit_status.h"

namespace bgp_rehearse {

// What a verb does when the whole command line has been read.
using FleetAction = std::function<ExitStatus()>;

// Adds `fleet` to the command. The verb that is asked for leaves what it does in `action`.
CLI::App* add_fleet(CLI::App* app, FleetAction* action);

}  // namespace bgp_rehearse
