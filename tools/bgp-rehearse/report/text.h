// The report as text for people.
#pragma once

#include "report/model.h"
#include "report/page.h"

namespace bgp_rehearse {

// False, with errno set, when not all of it could be written.
[[nodiscard]] bool write_text_report(const Report& report, const Look& look, int file);

}  // namespace bgp_rehearse
