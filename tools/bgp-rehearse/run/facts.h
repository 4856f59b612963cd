// What is known of devices beside their configurations: a file, CSV or JSON, that has interfaces and user profile of each.
//
//     device,interfaces,profile
//     edge-1,192.0.2.1 127.0.0.1,7
//
//     [{"device": "edge-1", "interfaces": ["192.0.2.1", "127.0.0.1"], "profile": 7}]
//     {"edge-1": {"interfaces": ["192.0.2.1", "127.0.0.1"], "profile": 7}}
//
// CSV has a line of names, in any order, and quotes as RFC 4180 has it; its addresses stand between blanks or semicolons.
// Interfaces and profile may be missing or empty: then they are not known.
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "run/request.h"

namespace bgp_rehearse {

struct DeviceFacts {
    std::optional<std::vector<in_addr>> interfaces;
    std::optional<uint32_t> user_profile;
};

using FactsByDevice = std::map<std::string, DeviceFacts>;

// Throws CommandError (BadInput) that names the file and, but for a value in JSON, the line.
FactsByDevice read_facts(const std::string& file);

// The device that a configuration's file is named for: without folder and endings (".xml", ".xml.gz").
std::string device_of(const std::string& configuration);

// The options with what the facts say of the device where no option does. A device that they do not have is told on
// standard error, and keeps what is assumed.
RunOptions with_facts(RunOptions options);

// Lets the facts say of a device what no option says.
void take_facts(const DeviceFacts& facts, DeviceOptions* device);

}  // namespace bgp_rehearse
