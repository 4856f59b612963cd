// The routers of a fleet as data for the scripts of its page.
#pragma once

#include <string>

#include "fleet/merge/sqlite.h"
#include "fleet/report/summary.h"
#include "report/html/markup.h"

namespace bgp_rehearse {

// Throws DatabaseError.
void write_fleet_data(const FleetSummary& summary, const Database& database, const std::string& name, Markup* page);

}  // namespace bgp_rehearse
