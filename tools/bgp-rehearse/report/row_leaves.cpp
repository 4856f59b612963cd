#include "report/row_leaves.h"

#include <algorithm>

#include "calls/recorder.h"
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

const std::string& NamesInRow::of(const bgp_platform::schema::Node& node)
{
    std::string& name = names_[&node];
    name = name.empty() ? name_in_row(node) : name;
    return name;
}

void append_value(const bgp_platform::schema::Node& leaf, const bgp_platform::schema::Value& value, std::string* text)
{
    if (is_secret(leaf)) {
        *text += bgp_platform::capi::kMasked;
    } else if (leaf.kind != bgp_platform::schema::NodeKind::Presence) {
        leaf.type->append_text(value, text);
    }
}

}  // namespace bgp_rehearse
