// What is rehearsed, and on which device.
#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/duration.h"
#include "base/terminal.h"
#include "base/upgrade_limits.h"
#include "xml/config_reader.h"

namespace bgp_rehearse {

// The device that an upgrade is rehearsed on.
struct DeviceOptions {
    std::vector<in_addr> interfaces;  // its IPv4 interface addresses, in order
    uint32_t user_profile = 0;        // of its forwarding resources
    bool interfaces_known = false;    // told by option or facts, not assumed
    bool user_profile_known = false;
    std::size_t max_entries = bgp_platform::xml::Limits().entries;  // that a configuration loaded on it may have
    std::size_t max_errors = bgp_platform::xml::Limits().errors;    // that are told of one
};

// The verdict from which on the command exits with VerdictReached.
enum class FailOn { Review, Stop, Never };

// What `bgp-rehearse run` was asked to do.
struct RunOptions {
    std::string configuration;  // the file to upgrade
    std::string library;        // empty: the library that belongs to this build
    std::string output;         // where the upgraded configuration goes; empty: nowhere
    std::string log;            // where the upgrade log goes; "-": into the report; empty: nowhere
    std::string json;           // where the JSON report goes; "-": to standard output; empty: nowhere
    std::string junit;          // where the JUnit report goes; empty: nowhere
    std::string html;           // where the page goes; empty: nowhere
    std::string changes;        // the subtree whose changes are listed, as a keypath; "/": all; empty: none
    std::string facts;          // the file that knows the device; empty: none
    std::string device_name;    // in that file; empty: the configuration's file name tells it
    DeviceOptions device;
    FailOn fail_on = FailOn::Stop;
    std::vector<std::pair<std::string, std::string>> severities;  // of findings: id and level, a later one counts
    std::optional<Duration> call_time;                            // of a call on the device
    std::optional<Duration> connect_time;                         // of a connection
    UpgradeLimits limits;
    Colour colour = Colour::Auto;
    bool json_log = false;  // the log is in the JSON report, too
    bool again = false;     // the result is upgraded once more
    bool commit_check = false;

    bool log_in_report() const noexcept { return log == "-"; }
    bool log_in_file() const noexcept { return !log.empty() && !log_in_report(); }
    bool keeps_log() const noexcept { return log_in_report() || log_in_json() || !html.empty(); }
    bool log_in_json() const noexcept { return json_log && !json.empty(); }
    bool json_printed() const noexcept { return json == "-"; }
    bool json_in_file() const noexcept { return !json.empty() && !json_printed(); }
};

}  // namespace bgp_rehearse
