// Whether a stored configuration meets what the contract demands for a step to run.
#pragma once

#include "contract/step.h"
#include "judge/upgrade_steps.h"
#include "store/configuration.h"

namespace bgp_rehearse {

// Throws std::logic_error for a path that the configuration's schema does not have: the contract is wrong then.
bool holds(const bgp_contract::Condition& condition, const bgp_platform::store::Configuration& stored);

// The same, as UpgradeSteps asks for it.
UpgradeSteps::Holds conditions_on(const bgp_platform::store::Configuration& stored);

}  // namespace bgp_rehearse
