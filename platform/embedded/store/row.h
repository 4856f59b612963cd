// A row: one instance of a record - the root of a configuration, a list entry, or the single value of a leaf-list
// entry.
//
// A row is one block of memory: a head, then a dense array of its values (the key first), then its lists. Rows are
// shared between configurations by reference count and are changed only while unshared; List and Configuration see to
// that.
#pragma once

#include <cstddef>
#include <cstdint>

#include "schema/schema.h"
#include "schema/value.h"
#include "store/counted_ref.h"

namespace bgp_platform::store {

class List;

class Row : public Counted {
public:
    const schema::Record& record() const noexcept { return *record_; }

    const schema::Value& value(uint16_t slot) const noexcept { return values()[slot]; }
    schema::Value& value(uint16_t slot) noexcept { return values()[slot]; }
    const List& list(uint16_t slot) const noexcept;
    List& list(uint16_t slot) noexcept;

    // By which a history (history.h) knows a row that was written; 0 for one that was not. Copies have it too. It stands
    // where the head has room, and is no part of what the row holds.
    uint32_t mark() const noexcept { return mark_; }
    void set_mark(uint32_t mark) const noexcept { mark_ = mark; }

    // The key: record().keys values from the first.
    const schema::Value* keys() const noexcept { return values(); }

    // What RowRef makes and ends rows with: a new row with every value absent and every list empty; a new row that
    // shares what the lists of another hold, which costs a count each.
    static Row* make(const schema::Record& record);
    static Row* copy(const Row& original);
    static void destroy(Row* row) noexcept;

private:
    explicit Row(const schema::Record& record) noexcept : record_(&record) {}
    static Row* make_head(const schema::Record& record);
    ~Row() = default;
    schema::Value* values() noexcept { return reinterpret_cast<schema::Value*>(this + 1); }
    const schema::Value* values() const noexcept { return reinterpret_cast<const schema::Value*>(this + 1); }

    mutable uint32_t mark_ = 0;
    const schema::Record* record_;
};

static_assert(sizeof(Row) <= 16);

// A counted reference to a row. A copy shares the row; edit() hands it out for writing, copied first when it is shared.
class RowRef : public CountedRef<Row> {
public:
    RowRef() noexcept = default;
    explicit RowRef(const schema::Record& record) : CountedRef(Row::make(record)) {}
    explicit RowRef(const Row& original) : CountedRef(Row::copy(original)) {}
};

// Compares a row's key with the first `count` values at `keys`; a shorter tuple lies before every row that begins with
// it.
int compare_key(const Row& row, const schema::Value* keys, std::size_t count) noexcept;

}  // namespace bgp_platform::store
