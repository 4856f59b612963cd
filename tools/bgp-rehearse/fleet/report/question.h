// Finds the routers of a fleet that a question asks for.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/merge/sqlite.h"
#include "fleet/report/show.h"

namespace bgp_rehearse {

struct FoundRouter {
    std::string_view name;
    std::string_view verdict;
    std::string_view sentence;  // of the finding that was asked for, else the verdict's
};

// Gives each router that has what the options ask for to `take`, in the order of names. Throws CommandError (BadInput)
// for a reason, finding or step that no router of the database has.
void find_routers(const Database& database, const FleetShowOptions& options,
                  const std::function<void(const FoundRouter&)>& take);

// The number of the one router that has the name or, from a "/" on, ends so. Throws CommandError (BadInput) where there is
// none, or several.
int64_t router_named(const Database& database, const std::string& name);

}  // namespace bgp_rehearse
