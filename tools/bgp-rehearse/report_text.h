// The report as text for people.
#pragma once

#include <string>

#include "report.h"

namespace bgp_rehearse {

std::string text_report(const Report& report, bool colour);

// Whether a report on standard output is to have colours: a terminal that knows them, and NO_COLOR not set.
bool wants_colour();

}  // namespace bgp_rehearse
