// The report as text for people.
#pragma once

#include <string>

#include "judge/account.h"
#include "report/model.h"
#include "report/page.h"

namespace bgp_rehearse {

// False, with errno set, when not all of it could be written.
[[nodiscard]] bool write_text_report(const Report& report, const Look& look, int file);

// "52 moved, 42 moved and changed, 29 as they were, 0 removed": all fates, but not those of no row that are seldom.
std::string fates_of(const RowCounts& rows);

}  // namespace bgp_rehearse
