// Walks through one list, and through two lists at once for their differences.
#include "store/list.h"

#include <algorithm>

namespace bgp_platform::store {

List::Iterator::Iterator(const ListNode* root) noexcept
{
    if (root == nullptr) {
        return;
    }
    depth_ = 1;
    for (const ListNode* node = root; !node->leaf; node = node->children()[0].get()) {
        ++depth_;
    }
    levels_[0] = {root, 0};
    descend(0);
}

void List::Iterator::descend(std::size_t level) noexcept
{
    for (; level + 1 < depth_; ++level) {
        levels_[level + 1] = {levels_[level].node->children()[levels_[level].index].get(), 0};
    }
}

void List::Iterator::step(std::size_t level) noexcept
{
    while (++levels_[level].index == levels_[level].node->count) {
        if (level == 0) {
            depth_ = 0;
            return;
        }
        --level;
    }
    descend(level);
}

void List::Iterator::leave(std::size_t height) noexcept
{
    if (height + 1 == depth_) {
        depth_ = 0;  // the root
    } else {
        step(depth_ - 2 - height);
    }
}

std::size_t List::Iterator::begun() const noexcept
{
    std::size_t nodes = 0;
    while (nodes < depth_ && levels_[depth_ - 1 - nodes].index == 0) {
        ++nodes;
    }
    return nodes;
}

std::size_t List::Iterator::skip_shared(Iterator* left, Iterator* right) noexcept
{
    // All leaf nodes lie equally deep, so a shared node has the same height in both trees.
    for (std::size_t height = std::min(left->begun(), right->begun()); height-- > 0;) {
        if (const ListNode* const node = left->node_at(height); node == right->node_at(height)) {
            left->leave(height);
            right->leave(height);
            return node->size;
        }
    }
    return 0;
}

namespace {

// Walks two lists side by side. skip() steps over entries that need no visit, and says whether it did.
template <typename Skip, typename Visit>
void walk_side_by_side(const List& before, const List& after, const Skip& skip, const Visit& visit)
{
    List::Iterator old_entry = before.begin();
    List::Iterator new_entry = after.begin();
    while (old_entry && new_entry) {
        if (skip(&old_entry, &new_entry)) {
            continue;
        }
        const Row* const old_row = *old_entry;
        const Row* const new_row = *new_entry;
        const int order = old_row == new_row ? 0 : compare_key(*old_row, new_row->keys(), new_row->record().keys);
        visit(order <= 0 ? old_row : nullptr, order >= 0 ? new_row : nullptr);
        if (order <= 0) {
            ++old_entry;
        }
        if (order >= 0) {
            ++new_entry;
        }
    }
    for (; old_entry; ++old_entry) {
        visit(*old_entry, nullptr);
    }
    for (; new_entry; ++new_entry) {
        visit(nullptr, *new_entry);
    }
}

}  // namespace

std::size_t List::walk_differences(const List& before, const List& after,
                                   const std::function<void(const Row*, const Row*)>& visit)
{
    std::size_t shared = 0;
    const auto skip = [&shared](Iterator* left, Iterator* right) {
        std::size_t skipped = Iterator::skip_shared(left, right);
        if (skipped == 0 && **left == **right) {
            skipped = 1;
            ++*left;
            ++*right;
        }
        shared += skipped;
        return skipped > 0;
    };
    walk_side_by_side(before, after, skip, visit);
    return shared;
}

void List::walk_both(const List& before, const List& after, const std::function<void(const Row*, const Row*)>& visit)
{
    walk_side_by_side(before, after, [](Iterator*, Iterator*) { return false; }, visit);
}

}  // namespace bgp_platform::store
