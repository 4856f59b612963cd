#include "report/row_leaves.h"

#include <algorithm>

#include "store/changes.h"

namespace bgp_rehearse {

RowLeaves::RowLeaves(const RowChange& change) : writer(change.writer)
{
    for_each_leaf_change(change, [this](const LeafChange& leaf) { leaves.push_back(leaf); });
    if (writer == 0 && !leaves.empty()) {
        writer = leaves.front().writer;
        const bool alike =
            std::all_of(leaves.begin(), leaves.end(), [this](const LeafChange& leaf) { return leaf.writer == writer; });
        writer = alike ? writer : bgp_platform::store::Writer{};
    }
    for (LeafChange& leaf : leaves) {
        leaf.writer = leaf.writer == 0 ? writer : leaf.writer;  // who removed the row is known of the row alone
    }
}

std::string name_in_row(const bgp_platform::schema::Node& node)
{
    return bgp_platform::store::way_below(node.record->owner, node).substr(1);
}

}  // namespace bgp_rehearse
