// Rows that do something only where another row refers to them.
#pragma once

#include <optional>
#include <vector>

#include "device.h"

namespace bgp_rehearse {

class UsedRows {
public:
    // Of the stored configuration, which must not change meanwhile.
    explicit UsedRows(const bgp_platform::store::Configuration& stored) : stored_(stored) {}

    // Whether a row is of a list whose rows work by themselves, or one that another row refers to: of a route map with all
    // of its entries.
    bool is_used(const bgp_platform::store::Row& row);

private:
    void find_maps();

    const bgp_platform::store::Configuration& stored_;
    std::optional<std::vector<const bgp_platform::store::Row*>> maps_;  // the first entries of those in use
};

}  // namespace bgp_rehearse
