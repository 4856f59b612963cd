// Options that come from files: from that of --config, and from the user's own, which is bgp-rehearse.toml in the folder
// $XDG_CONFIG_HOME, else in ~/.config. Both are TOML, as CLI11 reads it; the options of a command stand below its name:
//
//     [run]
//     fail-on = "review"
//     [fleet.run]
//     jobs = 4
//
// The command line counts most, then the environment, then the file of --config, then the user's own. Of options that
// may be given again all count.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace bgp_rehearse {

// Adds a command whose options may come from files, with its option --config.
CLI::App* add_command(CLI::App* app, const std::string& name, const std::string& what);

// The names of an option's command as they are typed: "fleet run"; empty for the whole command line.
std::string words_of_command(const CLI::App& command);

std::vector<std::string> names_of_commands(const CLI::App& app);  // those right below it

// The names of the options that --help tells, with their dashes.
std::vector<std::string> names_of_options(const CLI::App& command);

}  // namespace bgp_rehearse
