// The changes of an upgrade as text, list by list: what became of each row, which step did it, and its leaves.
#pragma once

#include "device.h"
#include "report/page.h"
#include "report/subtree.h"

namespace bgp_rehearse {

// Of an upgrade that is still open on the device; those in the subtree.
void list_changes(const bgp_platform::Device& device, const Subtree& subtree, Page* page);

}  // namespace bgp_rehearse
