// The report of a fleet as a page for a browser: one file of HTML with its style, its scripts and its data, in the style
// of that of a rehearsal (report/html/).
//
// The ids in it: `verdict`, `counts` (links with data-verdict that filter the routers), `reasons`, `reason-search`,
// `reason-severity`, `reason-matches`, `reasons-table` (a row `reason-N` for each, from 1; links with data-reason),
// `routers`, `routers-view` (hidden until the script shows it), `search`, `filter-verdict`, `filter-class`,
// `filter-reason`, `clear`, `matches`, `router-lines`, `detail`, `steps`, `steps-table`, and `fleet-data`, the data of the
// scripts.
//
// The data are JSON lines, compressed by gzip, in base64. The first one has `verdicts`, `classes`, `reasons` (severity,
// finding, text) and `tail`, the options behind each router's command. Each other line is an array of routers, and a router
// is an array: its verdict and its class as places among those; its name, the verdict's sentence and the command that makes
// its full report, without the tail, in lines; the places of its reasons, from 1.
#pragma once

#include <string>

#include "fleet/merge/sqlite.h"
#include "fleet/report/summary.h"

namespace bgp_rehearse {

// `name` is the database's, for the page's title and for commands. False, with errno set, when not all of it could be
// written. Throws DatabaseError.
[[nodiscard]] bool write_fleet_page(const FleetSummary& summary, const Database& database, const std::string& name,
                                    int file);

}  // namespace bgp_rehearse
