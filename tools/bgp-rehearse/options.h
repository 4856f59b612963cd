// The command line of bgp-rehearse.
#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_status.h"
#include "generate/configuration.h"
#include "xml/config_reader.h"

namespace bgp_rehearse {

// The device that an upgrade is rehearsed on.
struct DeviceOptions {
    std::vector<in_addr> interfaces;                                // its IPv4 interface addresses, in order
    uint32_t user_profile = 0;                                      // of its forwarding resources
    std::size_t max_entries = bgp_platform::xml::Limits().entries;  // that a configuration loaded on it may have
};

// What `bgp-rehearse run` was asked to do.
struct RunOptions {
    std::string configuration;  // the file to upgrade
    std::string library;        // empty: the library that belongs to this build
    std::string output;         // where the upgraded configuration goes; empty: nowhere
    std::string log;            // where the upgrade log goes; "-": into the report; empty: nowhere
    DeviceOptions device;
    bool json = false;
    bool strict = false;
    bool commit_check = false;

    bool log_in_report() const noexcept { return log == "-"; }
    bool log_in_file() const noexcept { return !log.empty() && !log_in_report(); }
};

// What `bgp-rehearse generate` was asked to do.
struct GenerateOptions {
    bgp_generator::Settings settings;
    std::string output;  // where the configuration goes; empty or "-": to standard output

    bool to_file() const noexcept { return !output.empty() && output != "-"; }
};

// What `bgp-rehearse sweep` was asked to do.
struct SweepOptions {
    std::vector<std::string> configurations;  // the files to upgrade
    std::string library;                      // empty: the library that belongs to this build
    DeviceOptions device;
    unsigned int jobs = 1;   // runs at a time
    std::size_t every = 1;   // only each so manieth run
    bool pairs = false;      // all pairs of failed calls, too
    bool all_sites = false;  // a call site that was not reached counts as a failure
    bool json = false;
};

// What a command line comes to: something to do, or a status to exit with at once (help and version were printed, or a
// message about the command line was).
struct CommandLine {
    std::optional<RunOptions> run;
    std::optional<GenerateOptions> generate;
    std::optional<SweepOptions> sweep;
    ExitStatus status = ExitStatus::Ok;
};

CommandLine parse_command_line(int argc, const char* const* argv);

}  // namespace bgp_rehearse
