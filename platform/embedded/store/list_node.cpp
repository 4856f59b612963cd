// The memory of list nodes.
#include "store/list_node.h"

#include <algorithm>
#include <memory>
#include <new>

namespace bgp_platform::store {

static_assert(alignof(RowRef) <= alignof(ListNode) && alignof(ListNodeRef) <= alignof(ListNode));

ListNode* ListNode::make(bool leaf, std::size_t room)
{
    ListNode* node = new (::operator new(block_bytes(room))) ListNode(leaf, room);
    if (leaf) {
        std::uninitialized_default_construct_n(node->rows(), room);
    } else {
        std::uninitialized_default_construct_n(node->children(), room);
    }
    return node;
}

ListNode* ListNode::copy(const ListNode& original)
{
    ListNode* node = make(original.leaf, original.room);
    if (original.leaf) {
        std::copy_n(original.rows(), original.count, node->rows());
    } else {
        std::copy_n(original.children(), original.count, node->children());
    }
    node->count = original.count;
    node->size = original.size;
    node->lowest = original.lowest;
    return node;
}

void ListNode::destroy(ListNode* node) noexcept
{
    if (node->leaf) {
        std::destroy_n(node->rows(), node->room);
    } else {
        std::destroy_n(node->children(), node->room);
    }
    node->~ListNode();
    ::operator delete(node);
}

}  // namespace bgp_platform::store
