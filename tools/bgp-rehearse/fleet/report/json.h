// The report of a fleet as one JSON document; docs/fleet.schema.json describes it.
#pragma once

#include "fleet/merge/sqlite.h"
#include "fleet/report/comparison.h"
#include "fleet/report/summary.h"

namespace bgp_rehearse {

// Without a comparison where there is none. False, with errno set, when not everything could be written. Throws
// DatabaseError.
[[nodiscard]] bool write_fleet_json(const FleetSummary& summary, const Comparison* comparison, const Database& database,
                                    int file);

}  // namespace bgp_rehearse
