// One router of a fleet: what is known of it, and how to get its full report.
#pragma once

#include <cstdint>
#include <string>

#include "fleet/merge/sqlite.h"
#include "report/page.h"

namespace bgp_rehearse {

// `file` is the database's name, for the commands.
void add_card(const Database& database, int64_t router, const std::string& file, Page* page);

}  // namespace bgp_rehearse
