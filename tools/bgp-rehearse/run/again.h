// A second upgrade of what an upgrade has made, which should find nothing left to do.
#pragma once

#include "base/upgrade_limits.h"
#include "device.h"
#include "judge/evidence.h"
#include "run/library.h"
#include "run/watch.h"

namespace bgp_rehearse {

// Upgrades the result of the device's open upgrade once more, in a process of its own: this one's device stays as it is.
// The limits are those of each upgrade. The watch sees nothing of it but memory that ran out.
Again upgrade_again(const UpgradeLibrary& library, bgp_platform::Device& device, const UpgradeLimits& limits,
                    const Watch& watch);

}  // namespace bgp_rehearse
