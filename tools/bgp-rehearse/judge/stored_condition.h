// Whether a stored configuration meets what the contract demands for a step to run.
#pragma once

#include "contract/step.h"
#include "device.h"
#include "judge/upgrade_steps.h"

namespace bgp_rehearse {

// Throws std::logic_error for a path that the device's schema does not have: the contract is wrong then.
bool holds(const bgp_contract::Condition& condition, const bgp_platform::Device& device);

// The same, as UpgradeSteps asks for it. The device outlives it.
UpgradeSteps::Holds conditions_on(const bgp_platform::Device& device);

}  // namespace bgp_rehearse
