// A step of an upgrade, by its name.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>

#include "judge/upgrade_steps.h"

namespace bgp_test {

inline const bgp_rehearse::Step& step_of(const bgp_rehearse::UpgradeSteps& steps, const std::string& name)
{
    const auto found = std::find_if(steps.all().begin(), steps.all().end(),
                                    [&name](const bgp_rehearse::Step& step) { return step.name == name; });
    if (found == steps.all().end()) {
        throw std::invalid_argument("no step " + name);
    }
    return *found;
}

}  // namespace bgp_test
