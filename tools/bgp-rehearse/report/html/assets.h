// Styles and scripts of the pages, from the files beside them.
#pragma once

#include "report/html/frame.h"

namespace bgp_rehearse {

Assets report_assets();  // of the report on a rehearsal
Assets fleet_assets();   // of that on a fleet

}  // namespace bgp_rehearse
