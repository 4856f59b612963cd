// What is told of an upgrade that did not return.
#pragma once

#include "base/child.h"
#include "judge/judgement.h"
#include "report/model.h"
#include "run/messages.h"
#include "run/watch.h"

namespace bgp_rehearse {

// How it ended, by the end of its process, what that had told, and what was seen of it.
Ended explain_end(const ChildEnd& end, const Told& told, const Watch& watch, const UpgradeLimits& limits);

// The same, and where it had come to: its steps end there, too. The device is loaded as it was.
Ended ended_upgrade(const ChildEnd& end, const Watch& watch, const UpgradeLimits& limits,
                    const bgp_platform::Device& device, Told* told);

// The one finding, and the verdict.
Judgement judge_ended(const Ended& ended, const SeverityChoices& choices);

}  // namespace bgp_rehearse
