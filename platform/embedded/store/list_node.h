// A node of a list's tree. Leaf nodes hold rows, inner nodes hold nodes; all leaf nodes lie equally deep.
//
// A node is one block: the head, then as many references as it has room for. The room grows with the node, so that the
// many lists of one or two entries stay small.
#pragma once

#include <cstddef>
#include <cstdint>

#include "store/row.h"

namespace bgp_platform::store {

struct ListNode;
using ListNodeRef = CountedRef<ListNode>;

struct ListNode : Counted {
    static constexpr std::size_t kFanOut = 64;
    static constexpr std::size_t kDeepest = 16;  // levels; a tree needs more rows than memory holds to be deeper

    const bool leaf;
    const uint8_t room;              // references it has memory for, at most kFanOut
    uint8_t count = 0;               // references in use
    mutable uint8_t last_place = 0;  // where a search came to last, from which the next one begins
    std::size_t size = 0;            // rows below
    const Row* lowest = nullptr;     // the first of them

    RowRef* rows() noexcept { return reinterpret_cast<RowRef*>(this + 1); }
    const RowRef* rows() const noexcept { return reinterpret_cast<const RowRef*>(this + 1); }
    ListNodeRef* children() noexcept { return reinterpret_cast<ListNodeRef*>(this + 1); }
    const ListNodeRef* children() const noexcept { return reinterpret_cast<const ListNodeRef*>(this + 1); }

    // The first row below the reference at a position.
    const Row& lowest_at(std::size_t position) const noexcept
    {
        // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn): a node below another one holds rows
        return leaf ? *rows()[position] : *children()[position]->lowest;
    }

    std::size_t block_bytes() const noexcept { return block_bytes(room); }

    // What ListNodeRef makes and ends nodes with.
    static ListNode* make(bool leaf, std::size_t room);
    static ListNode* copy(const ListNode& original);
    static void destroy(ListNode* node) noexcept;

private:
    ListNode(bool is_leaf, std::size_t references) noexcept : leaf(is_leaf), room(static_cast<uint8_t>(references)) {}
    ~ListNode() = default;
    static std::size_t block_bytes(std::size_t references) noexcept
    {
        return sizeof(ListNode) + references * sizeof(ListNodeRef);
    }
};

static_assert(sizeof(RowRef) == sizeof(ListNodeRef));

}  // namespace bgp_platform::store
