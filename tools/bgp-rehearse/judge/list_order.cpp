#include "judge/list_order.h"

namespace bgp_rehearse {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;

ListOrder::ListOrder(const bgp_platform::schema::Schema& schema)
{
    add(schema.top_nodes());
}

void ListOrder::add(const std::vector<const Node*>& nodes)
{
    for (const Node* node : nodes) {
        if (node->kind == NodeKind::List) {
            places_.emplace(node, lists_.size());
            lists_.push_back(node);
        }
        add(node->children);
    }
}

}  // namespace bgp_rehearse
