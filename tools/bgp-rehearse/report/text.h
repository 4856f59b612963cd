// The report as text for people.
#pragma once

#include "report/model.h"

namespace bgp_rehearse {

// False, with errno set, when not all of it could be written.
[[nodiscard]] bool write_text_report(const Report& report, bool colour, int file);

// Whether a report on standard output is to have colours: a terminal that knows them, and NO_COLOR not set.
bool wants_colour();

}  // namespace bgp_rehearse
