// Reports on a fleet from its database: `bgp-rehearse fleet report`.
#pragma once

#include <string>

#include "base/exit_status.h"
#include "base/terminal.h"

namespace bgp_rehearse {

struct FleetReportOptions {
    std::string database;
    std::string baseline;  // the database to compare with; empty: none
    std::string csv;       // files to write beside the text; empty: none
    std::string json;
    std::string html;
    Colour colour = Colour::Auto;
};

ExitStatus report_fleet(const FleetReportOptions& options);

}  // namespace bgp_rehearse
