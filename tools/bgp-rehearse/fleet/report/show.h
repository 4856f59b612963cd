// The routers of a fleet that a question asks for, and one router whole: `bgp-rehearse fleet show`.
#pragma once

#include <string>

#include "base/exit_status.h"
#include "base/terminal.h"

namespace bgp_rehearse {

// What is empty asks for nothing. A router is listed when it has all that is asked for; finding, reason and severity are
// those of one of its findings, step and outcome of one of its steps.
struct FleetShowOptions {
    std::string database;
    std::string finding;   // an id
    std::string reason;    // a text, or the beginning of an id
    std::string severity;  // "note", "review", "stop"
    std::string verdict;   // "STOP"
    std::string input_class;
    std::string step;
    std::string outcome;
    std::string router;      // a name or the end of one, from a "/" on: the router is shown whole
    std::string baseline;    // a database; with it
    std::string difference;  // what became of a router since
    bool names = false;      // nothing but names
    bool backup = false;     // of the one router: its backup's bytes
    Colour colour = Colour::Auto;
};

ExitStatus show_fleet(const FleetShowOptions& options);

}  // namespace bgp_rehearse
