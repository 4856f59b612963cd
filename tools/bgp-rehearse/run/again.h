// A second upgrade of what an upgrade has made, which should find nothing left to do.
#pragma once

#include "device.h"
#include "judge/evidence.h"
#include "run/library.h"

namespace bgp_rehearse {

// Upgrades the result of the device's open upgrade once more, in a process of its own: this one's device stays as it is.
Again upgrade_again(const UpgradeLibrary& library, bgp_platform::Device& device);

}  // namespace bgp_rehearse
