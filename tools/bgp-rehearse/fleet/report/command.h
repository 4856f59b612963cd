// The commands that make the full reports of a fleet's routers, for a shell.
#pragma once

#include <cstdint>
#include <string>

#include "fleet/merge/sqlite.h"
#include "fleet/plan/plan.h"

namespace bgp_rehearse {

// The options that the fleet was rehearsed with.
FleetOptions options_of_fleet(const Database& database);

// The input that a router's result is of, as the plan had it.
PlannedInput planned_input(const Database& database, int64_t router);

class FullReportCommands {
public:
    // `file` is the database's name: a member of an archive is asked from it.
    FullReportCommands(const Database& database, std::string file);

    // What is a router's own, and the options behind it, which all have.
    std::string head(int64_t router);
    const std::string& tail() const noexcept { return tail_; }

    std::string whole(int64_t router) { return head(router) + " " + tail_; }

private:
    Statement router_;
    std::string file_;
    FleetOptions options_;
    std::string tail_;
};

}  // namespace bgp_rehearse
