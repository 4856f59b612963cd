// What is told of an upgrade that did not return.
#pragma once

#include "base/child.h"
#include "judge/judgement.h"
#include "report/model.h"
#include "run/messages.h"

namespace bgp_rehearse {

// How it ended, by the end of its process and what that had told.
Ended explain_end(const ChildEnd& end, const Told& told);

// The one finding, and the verdict.
Judgement judge_ended(const Ended& ended, const SeverityChoices& choices);

}  // namespace bgp_rehearse
