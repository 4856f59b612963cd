// Whether a run with failures kept the library's contract.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "device.h"
#include "sweep/trail.h"

namespace bgp_rehearse {

// What the run without failures tells the others.
struct Baseline {
    std::vector<Site> sites;       // of its calls, in order
    std::set<std::string> names;   // of the sites
    std::set<std::string> writes;  // those that were done, as text
    std::size_t allocations = 0;   // inside the library

    // The calls that fail even so, as text, and which of their repetitions (0: the first time) do.
    std::map<std::string, std::set<std::size_t>> failures;
};

Baseline baseline_of(const Trail& trail, std::size_t allocations);

enum class Outcome { Returned, Faulted, Asserted, Died };

struct RunVerdict {
    Outcome outcome = Outcome::Died;
    std::vector<std::size_t> failed;  // places in contract() of the sites where a call failed
    std::vector<std::string> breaks;  // of the contract; empty: it was kept

    // Calls, counted from 1, that the run without failures has not, each at the first call of its site.
    std::vector<std::pair<std::size_t, Site>> found;
};

// A run with failures, held against the one without.
struct SweptRun {
    const Baseline& baseline;
    const Trail& trail;
    bool refused_allocation;
};

// A run that returned, and one that ended in a fault report or an assertion.
RunVerdict judge_returned(const SweptRun& run, int result, const bgp_platform::OpenThings& open);
RunVerdict judge_ended(const SweptRun& run, const bgp_platform::Fault& fault);

}  // namespace bgp_rehearse
