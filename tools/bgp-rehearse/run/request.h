// What is rehearsed, and on which device.
#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

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

}  // namespace bgp_rehearse
