// What the upgrade must do when a call fails, site by site: the library's contract on failures, as data.
#pragma once

#include <cstddef>
#include <vector>

#include "sweep/contract_data.h"
#include "sweep/site.h"

namespace bgp_rehearse {

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
