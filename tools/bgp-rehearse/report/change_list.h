// What an upgrade changed, entry by entry.
#pragma once

#include <vector>

#include "device.h"
#include "report/change.h"

namespace bgp_rehearse {

// The changes of the open transaction in the order of the schema and of the keys, moves found: where a deleted and a
// created entry of one list hold the same and differ in one key leaf, and no other entry fits either of them, they are
// one that moved. It stands where the created entry stood.
std::vector<Change> collect_changes(const bgp_platform::Device& device);

}  // namespace bgp_rehearse
