// What each step of an upgrade made of a configuration, as a number: two results of one configuration whose numbers are
// equal are, but for chance, the same.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "device.h"

namespace bgp_rehearse {

// By the name of the step, for those that changed something: of each row that it made, moved or removed, and each leaf that
// it wrote last, path and value. What no step did is under "". A secret counts as set, whatever it is. The device's upgrade
// has returned and keeps a history.
std::map<std::string, uint64_t> change_digests(const bgp_platform::Device& device);

}  // namespace bgp_rehearse
