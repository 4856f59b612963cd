// What a report tells of a rehearsal before it begins.
#pragma once

#include "report/model.h"
#include "run/request.h"

namespace bgp_rehearse {

Report blank_report(const RunOptions& options);

}  // namespace bgp_rehearse
