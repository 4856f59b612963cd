// One router of a fleet: what is known of it, and how to get its full report.
#pragma once

#include <cstdint>
#include <string>

#include "fleet/merge/sqlite.h"
#include "fleet/plan/plan.h"
#include "report/page.h"

namespace bgp_rehearse {

// `file` is the database's name, for the commands.
void add_card(const Database& database, int64_t router, const std::string& file, Page* page);

// The input that the router's result is of, as the plan had it.
PlannedInput planned_input(const Database& database, int64_t router);

// The commands that make the router's full report, for a shell.
std::string full_report_command(const Database& database, int64_t router, const std::string& file);

}  // namespace bgp_rehearse
