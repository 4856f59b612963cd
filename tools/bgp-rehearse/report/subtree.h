// A part of a configuration by its keypath: what lies at it and below.
#pragma once

#include <string>
#include <string_view>

#include "judge/row_changes.h"

namespace bgp_rehearse {

class Subtree {
public:
    // "/DC-BGP-MIB", "/router/bgp{65010}/vrf"; "/": all. Throws std::invalid_argument where the data model has no such
    // names, saying what was meant.
    Subtree(const bgp_platform::schema::Schema& schema, std::string_view keypath);

    const std::string& keypath() const noexcept { return keypath_; }  // "" for all
    bool is_all() const noexcept { return keypath_.empty(); }

    // Whether a row lies in it, where it was stored or where it is now.
    bool holds(const RowChange& change) const;

    // Whether a leaf of a row does that is not in it as a whole.
    bool holds(const RowChange& change, const LeafChange& leaf) const;

private:
    bool holds(std::string_view keypath) const;

    std::string keypath_;
};

// The keypath of a row as it was stored, beside the rows around it as they are now.
std::string stored_path(const RowChange& change);

}  // namespace bgp_rehearse
