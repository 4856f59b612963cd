// What the database of a fleet comes to: how many routers have which verdict, and for which reasons.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "fleet/merge/sqlite.h"

namespace bgp_rehearse {

// How many routers share something that each has exactly one of.
struct RouterCount {
    std::string what;
    std::size_t routers = 0;
};

// A finding in words that fit all routers which have it. A router counts once under each reason that it has.
struct ReasonCount {
    int64_t id = 0;
    std::string name;  // the beginning of its id in hexadecimal, as much as tells it from the others
    std::string finding;
    std::string text;
    std::string severity;  // one reason of two severities is counted at each
    std::size_t routers = 0;
    std::size_t places = 0;
    std::vector<std::string> examples;  // the first routers that have it
};

// What came of a step in how many routers.
struct StepCount {
    std::string name;
    std::map<std::string, std::size_t> outcomes;
    std::size_t not_told = 0;  // routers that say nothing of it: refused, or the log is silent
};

struct FleetSummary {
    std::map<std::string, std::string> about;
    std::size_t routers = 0;
    std::vector<RouterCount> verdicts;  // the worst first; each word, also where nobody has it
    std::vector<RouterCount> classes;   // of the inputs, likewise
    std::vector<ReasonCount> reasons;   // the severest first, then those of most routers
    std::vector<StepCount> steps;       // in their order
    std::size_t with_reasons = 0;       // routers that have any
};

inline constexpr std::size_t kExamples = 3;  // of what routers share
inline constexpr std::array kVerdicts = {"STOP", "REFUSED", "REVIEW", "SAFE"};
inline constexpr std::array kInputClasses = {"whole", "partly", "refused"};
inline constexpr std::array kOutcomes = {"ran", "nothing to do", "did not run", "could not run", "failed", "ended"};

// Throws DatabaseError.
FleetSummary summary_of(const Database& database);

}  // namespace bgp_rehearse
