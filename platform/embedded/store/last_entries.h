// The entries that a configuration's paths led to last, one for each list on the way: who goes through a table asks for
// each of its rows several times, and all but the first time no list is searched.
//
// What is known here must be forgotten before the rows below it are written. Copies of a configuration know nothing, and
// with a copy the original no longer knows what is its own alone.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "store/list.h"
#include "store/row.h"

namespace bgp_platform::store {

class LastEntries {
public:
    LastEntries() = default;
    LastEntries(const LastEntries& other) noexcept { other.share(); }
    LastEntries& operator=(const LastEntries& other) noexcept
    {
        other.share();
        forget_from(0);
        return *this;
    }
    ~LastEntries() = default;

    // The entry of the list with that key, if the way at that depth led to it last.
    const Row* find(std::size_t depth, const List& list, const schema::Value* keys, std::size_t count) const noexcept
    {
        const Entry* const known = at(depth, list);
        return known != nullptr && is(*known->row, keys, count) ? known->row : nullptr;
    }

    // The same for writing: only an entry that is unshared, with all on the way to it.
    Row* find_own(std::size_t depth, const List& list, const schema::Value* keys, std::size_t count) const noexcept
    {
        const Entry* const known = at(depth, list);
        return known != nullptr && known->own != nullptr && is(*known->row, keys, count) ? known->own : nullptr;
    }

    void set(std::size_t depth, const List& list, const Row& row) noexcept { put(depth, {&list, &row, nullptr}); }
    void set_own(std::size_t depth, const List& list, Row* row) noexcept { put(depth, {&list, row, row}); }

    void forget_from(std::size_t depth) noexcept
    {
        std::fill(entries_.begin() + static_cast<std::ptrdiff_t>(std::min(depth, kDepths)), entries_.end(), Entry{});
    }

    // From now on another configuration may have the same rows.
    void share() const noexcept
    {
        for (Entry& entry : entries_) {
            entry.own = nullptr;
        }
    }

private:
    static constexpr std::size_t kDepths = 4;  // lists in lists; of deeper ones nothing is known

    struct Entry {
        const List* list = nullptr;
        const Row* row = nullptr;
        Row* own = nullptr;
    };

    const Entry* at(std::size_t depth, const List& list) const noexcept
    {
        return depth < kDepths && entries_[depth].list == &list ? &entries_[depth] : nullptr;
    }
    static bool is(const Row& row, const schema::Value* keys, std::size_t count) noexcept
    {
        return row.record().keys == count && compare_key(row, keys, count) == 0;
    }
    void put(std::size_t depth, const Entry& entry) noexcept
    {
        if (depth < kDepths) {
            entries_[depth] = entry;
        }
    }

    mutable std::array<Entry, kDepths> entries_;
};

}  // namespace bgp_platform::store
