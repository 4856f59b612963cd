// Entries that changed their key, among those that an upgrade created and deleted.
#pragma once

#include <vector>

#include "report/change.h"

namespace bgp_rehearse {

// Turns a deleted and a created entry of one list into one that moved, where the two hold the same and differ in one
// key leaf, and no other entry fits either of them. The move stands where the created entry stood.
void find_moves(std::vector<Change>* changes);

}  // namespace bgp_rehearse
