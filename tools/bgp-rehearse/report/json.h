// The report as one JSON document for programs; docs/rehearse.md tells its members.
#pragma once

#include <string>

#include "report/model.h"

namespace bgp_rehearse {

std::string json_report(const Report& report);

}  // namespace bgp_rehearse
