// The entries of a list, in key order: an ordered tree of rows that also answers "the n-th entry".
//
// A B+ tree whose nodes carry the number of rows below them. Find, n-th, insert and erase are logarithmic. Copying a
// list shares its nodes; a write copies only the nodes on its road that are shared, so two lists that were one differ
// just where one of them was written, and walk_differences() can skip what they share. A write that finds no memory throws
// std::bad_alloc and leaves the entries as they were.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <utility>

#include "store/list_node.h"
#include "store/row.h"

namespace bgp_platform::store {

class List {
public:
    std::size_t size() const noexcept { return root_ ? root_->size : 0; }
    bool empty() const noexcept { return !root_; }

    // The entry with that key (all of it), or null.
    const Row* find(const schema::Value* keys, std::size_t count) const noexcept;

    // The n-th entry from 0, or null past the end.
    const Row* at(std::size_t position) const noexcept;

    // The first entry whose key is not before (find_from) or is behind (find_after) the tuple; null when there is none.
    // A tuple shorter than the key lies before every entry that begins with it.
    const Row* find_from(const schema::Value* keys, std::size_t count) const noexcept;
    const Row* find_after(const schema::Value* keys, std::size_t count) const noexcept;

    // The entry for writing, unshared; null when there is none. Its key must stay as it is.
    Row* edit(const schema::Value* keys, std::size_t count);
    Row& edit_known(const schema::Value* keys, std::size_t count);  // an entry that is there

    // Adds a row whose key is set. False when the key is there already: the entries stay as they are, but no longer share
    // the nodes on the way. Rows that come in key order are appended and fill the nodes.
    bool insert(RowRef row);
    void insert_new(RowRef row);  // one whose key is not there

    // Takes the entry out and returns it; empty when there is none. The keys may be the entry's own.
    RowRef take(const schema::Value* keys, std::size_t count);
    RowRef take_known(const schema::Value* keys, std::size_t count);  // an entry that is there

    void clear() noexcept { root_ = ListNodeRef(); }

    // Calls visit(const Row&) for every entry in order; the list must not change meanwhile.
    template <typename Visit>
    void for_each(Visit&& visit) const
    {
        if (root_) {
            walk(*root_, visit);
        }
    }

    // A position that walks the list in order, entry by entry, in constant time a step; false at the end. The list must
    // not change meanwhile.
    //
    //     for (List::Iterator entry = list.begin(); entry; ++entry) { use(**entry); }
    class Iterator;
    Iterator begin() const noexcept;
    Iterator iterate_after(const schema::Value* keys, std::size_t count) const noexcept;  // from find_after()'s entry

    // Calls visit(before, after) in key order for every entry that is in one list only (the other pointer is null) or
    // that is another row in each, and returns how many entries the two lists share: whole nodes of those are skipped
    // unseen. walk_both() skips nothing: an entry that both share is visited as (row, row).
    static std::size_t walk_differences(const List& before, const List& after,
                                        const std::function<void(const Row*, const Row*)>& visit);
    static void walk_both(const List& before, const List& after,
                          const std::function<void(const Row*, const Row*)>& visit);

    // Bytes taken by the tree's nodes, without the rows (shared ones count here too).
    std::size_t node_bytes() const noexcept;

private:
    template <typename Visit>
    static void walk(const ListNode& node, Visit& visit)
    {
        for (std::size_t i = 0; i < node.count; ++i) {
            if (node.leaf) {
                visit(*node.rows()[i]);
            } else {
                walk(*node.children()[i], visit);
            }
        }
    }

    bool ends_before(const schema::Value* keys, std::size_t count) const noexcept;

    ListNodeRef root_;  // none for an empty list
};

class List::Iterator {
public:
    Iterator() noexcept = default;  // at the end
    explicit operator bool() const noexcept { return depth_ > 0; }
    const Row* operator*() const noexcept
    {
        const Level& leaf = levels_[depth_ - 1];
        return leaf.node->rows()[leaf.index].get();
    }
    Iterator& operator++() noexcept
    {
        step(depth_ - 1);
        return *this;
    }

    // Steps over the largest node at whose beginning both iterators stand, and returns its rows; 0, and no step, when there
    // is none.
    static std::size_t skip_shared(Iterator* left, Iterator* right) noexcept;

private:
    friend class List;
    struct Level {
        const ListNode* node;
        std::size_t index;
    };

    explicit Iterator(const ListNode* root) noexcept;
    void step(std::size_t level) noexcept;     // to the next reference of that level's node, and down to its first row
    void descend(std::size_t level) noexcept;  // fills the levels below with their first references
    void leave(std::size_t height) noexcept;   // steps over the node at that height above the leaf nodes
    std::size_t begun() const noexcept;        // nodes, from the leaf node up, at whose beginning this stands
    const ListNode* node_at(std::size_t height) const noexcept { return levels_[depth_ - 1 - height].node; }

    std::array<Level, ListNode::kDeepest> levels_;  // from the root to a leaf node; those up to depth_ are set
    std::size_t depth_ = 0;                         // 0 at the end
};

inline List::Iterator List::begin() const noexcept
{
    return Iterator(root_.get());
}

}  // namespace bgp_platform::store
