// What became of each row: the rows of the stored configuration and those of the result, brought together by the moves that
// the platform carried out. A row is an entry of a list, at any depth; its content is what hangs below it but for the entries
// of lists. A leaf that is not set and one that holds its default are the same.
#pragma once

#include <cstddef>

#include "device.h"

namespace bgp_rehearse {

// Of a stored row, all but the last; of a row of the result, all but Removed.
enum class Fate { AsItWas, Changed, Moved, MovedAndChanged, Removed, New };

// "as it was", "changed", "moved", "moved and changed", "removed", "new"
const char* name_of(Fate fate) noexcept;

struct RowChange {
    Fate fate = Fate::AsItWas;
    const bgp_platform::store::Row* before = nullptr;    // null for a new row
    const bgp_platform::store::Row* after = nullptr;     // null for one that was removed
    const bgp_platform::store::Trail* around = nullptr;  // the rows around it, of the result where they are in it
    bgp_platform::store::Writer writer = 0;              // who made, moved or removed it; 0: nobody
    const bgp_platform::store::History& history;         // of the result

    // Who wrote a leaf of it last, and who moved the row that has one in its key; 0: nobody, or the row was removed.
    bgp_platform::store::Writer writer_of(const bgp_platform::schema::Node& leaf) const noexcept
    {
        return after == nullptr ? bgp_platform::store::Writer{} : history.writer_of(*after, leaf);
    }

    const bgp_platform::store::Row& row() const noexcept { return after != nullptr ? *after : *before; }
    const bgp_platform::schema::Node& list() const noexcept { return *row().record().owner; }
};

// A leaf, presence container or leaf-list that differs; of a new row one that is set, of a removed one that was.
struct LeafChange {
    const bgp_platform::schema::Node* node = nullptr;
    const bgp_platform::schema::Value* before = nullptr;  // null where it is not set, and for a leaf-list
    const bgp_platform::schema::Value* after = nullptr;
    const bgp_platform::store::List* entries_before = nullptr;  // of a leaf-list; null where it has none
    const bgp_platform::store::List* entries_after = nullptr;
    bgp_platform::store::Writer writer = 0;  // who wrote it last
};

void for_each_leaf_change(const RowChange& change, const std::function<void(const LeafChange&)>& visit);

// Whether two rows of one list hold the same, whatever their keys.
bool same_content(const bgp_platform::store::Row& left, const bgp_platform::store::Row& right);

class RowVisitor {
public:
    virtual ~RowVisitor() = default;

    // Rows of a list that stayed as they were, and are not visited one by one.
    virtual void kept(const bgp_platform::schema::Node& list, std::size_t rows) = 0;

    // A row that was written, or is no longer there. Those below it follow.
    virtual void row(const RowChange& change) = 0;

    // What lies outside of all lists, when it differs: `before` and `after` are the roots.
    virtual void outside(const RowChange& change) = 0;
};

// Visits the rows in the order of the schema and of the keys, a removed one where it stood. The device's upgrade is
// open and keeps a history: a moved row is known by its moves, never by its looks.
void walk_rows(const bgp_platform::Device& device, RowVisitor& visitor);

}  // namespace bgp_rehearse
