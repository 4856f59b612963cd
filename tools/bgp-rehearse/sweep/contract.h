// What the upgrade must do when a call fails, site by site: the library's contract on failures, as data.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "sweep/site.h"

namespace bgp_rehearse {

enum class Must {
    GoOn,    // without a line of its own: the failure does not matter, or shows in what follows
    Log,     // the log says so before the next call, in a line that begins with `text`; then it goes on
    Fault,   // the process ends with a fault report by the function `text`
    Assert,  // the process ends with a failed assertion in a function whose signature has `text`
};

// What must happen, and what may.
struct Demand {
    Must must = Must::GoOn;
    const char* text = "";
    const char* source = "";          // of a fault or an assertion
    unsigned int lines[2] = {0, 0};   // of a fault, one of these; 0: the contract names none
    std::vector<const char*> writes;  // beginnings of keypaths: what a run without the failure would not write there

    // The same, and these writes are explained: what was to be read, or to be written and read again, is lost.
    Demand explaining(std::vector<const char*> keypaths) const;
};

// A call site and what is demanded of it.
struct Rule {
    Site site;
    Demand demand;
};

// Every call site that an upgrade can reach, each once.
const std::vector<Rule>& contract();

// The place in contract() of the rule for a site, or contract().size() when there is none.
std::size_t place_of(const Site& site);

}  // namespace bgp_rehearse
