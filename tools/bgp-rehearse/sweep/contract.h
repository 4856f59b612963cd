// What the upgrade must do when a call fails, site by site: the call sites of contract/steps.h and rekeyed_tables.h.
#pragma once

#include <cstddef>
#include <vector>

#include "contract/step.h"
#include "sweep/site.h"

namespace bgp_rehearse {

using bgp_contract::Demand;
using bgp_contract::Must;

// A call site and what is demanded of it.
struct SiteRule {
    Site site;
    Demand demand;
};

// Every call site that an upgrade can reach, each once.
const std::vector<SiteRule>& contract();

// The place in contract() of the rule for a site, or contract().size() when there is none.
std::size_t place_of(const Site& site);

}  // namespace bgp_rehearse
