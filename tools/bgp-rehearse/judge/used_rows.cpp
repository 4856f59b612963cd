#include "judge/used_rows.h"

#include <algorithm>
#include <string_view>

#include "judge/lists.h"
#include "judge/path_template.h"
#include "judge/references.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

}  // namespace

void UsedRows::find_maps()
{
    static const Trail kTop;
    maps_.emplace();
    for (const Reference& reference : kReferences) {
        if (std::string_view(reference.to[0]) != kRouteMap) {
            continue;
        }
        const Node* const from = find_node(stored_.schema(), reference.from);
        const PathTemplate target(stored_.schema(), reference.to[0], from, from->child(reference.leaf));
        Lookup lookup(target, stored_);
        stored_.root().list(from->slot).for_each([&](const Row& row) {
            const Row* const map = lookup.row({kTop, row});
            if (map != nullptr && lookup.fresh()) {
                maps_->push_back(map);
            }
        });
    }
}

bool UsedRows::is_used(const Row& row)
{
    if (row.record().owner->path() != kRouteMaps) {
        return true;
    }
    if (!maps_) {
        find_maps();
    }
    // The entries of a map have all of their key but the last number in common.
    return std::any_of(maps_->begin(), maps_->end(), [&row](const Row* map) {
        return std::equal(map->keys(), map->keys() + map->record().keys - 1, row.keys());
    });
}

}  // namespace bgp_rehearse
