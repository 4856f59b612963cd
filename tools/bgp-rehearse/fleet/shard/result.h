// What a rehearsal of one router of a fleet came to, summarised in a line of JSON. It says nothing of where or when it was
// made: the same backup, library and options give the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "judge/account.h"
#include "judge/upgrade_steps.h"

namespace bgp_rehearse {

struct FleetPlace {
    std::string path;  // as a keypath
    std::string text;  // in network words
};

struct FleetFinding {
    std::string id;        // "row-left"; "refused" of a backup that was not rehearsed, "own-fault" of a mistake of ours
    std::string severity;  // "note", "review", "stop"
    std::string reason;    // the same text for all routers that have it: no counts, keys, addresses or values
    std::string sentence;
    std::string advice;  // may be empty
    std::string step;    // its function's name; empty where no one step is meant
    uint64_t count = 0;
    std::vector<FleetPlace> places;  // the first of them
};

struct FleetStep {
    std::string name;  // of its function
    std::string outcome;
    std::string changes = {};  // a digest of all that it wrote, in hexadecimal; empty where it changed nothing
};

struct RouterResult {
    static constexpr std::size_t kMostPlaces = 3;  // of a finding
    static constexpr std::size_t kMostErrors = 20;

    std::size_t number = 0;           // in the plan
    std::string name;                 // of the input, escaped as in the plan
    std::string sha256;               // of its bytes, as the plan has it
    uint64_t bytes = 0;               // likewise
    std::string input_class;          // "whole", "partly" (parts of other modules left out), "refused"
    std::string verdict;              // "SAFE", "REVIEW", "STOP"; "REFUSED" where nothing was rehearsed
    std::string sentence;             // why
    int exit_status = 0;              // that `bgp-rehearse run` has for it
    std::vector<std::string> errors;  // of a backup that was refused, the first of them, without its name
    std::vector<FleetFinding> findings;
    std::vector<FleetStep> steps;
    RowCounts account;
    CallTotals calls;
    double seconds_least = 0;  // that the upgrade takes on the device, by the model
    double seconds_most = 0;
};

// The result as a line, without its line end.
std::string line_of(const RouterResult& result);

// The result that a line tells. Throws std::invalid_argument, saying what is wrong, for one that tells none.
RouterResult result_of(std::string_view line);

}  // namespace bgp_rehearse
