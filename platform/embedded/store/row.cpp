// The memory of rows, and the order of their keys.
#include "store/row.h"

#include <algorithm>
#include <memory>
#include <new>

#include "store/list.h"

namespace bgp_platform::store {

static_assert(alignof(schema::Value) <= alignof(Row) && sizeof(Row) % alignof(schema::Value) == 0);
static_assert(alignof(List) <= alignof(schema::Value) && sizeof(List) == sizeof(void*));

const List& Row::list(uint16_t slot) const noexcept
{
    return reinterpret_cast<const List*>(values() + record_->values.size())[slot];
}

List& Row::list(uint16_t slot) noexcept
{
    return reinterpret_cast<List*>(values() + record_->values.size())[slot];
}

// The head alone; values and lists are still to be made.
Row* Row::make_head(const schema::Record& record)
{
    const std::size_t values = record.values.size() * sizeof(schema::Value);
    const std::size_t lists = record.lists.size() * sizeof(List);
    return new (::operator new(sizeof(Row) + values + lists)) Row(record);
}

Row* Row::make(const schema::Record& record)
{
    Row* row = make_head(record);
    std::uninitialized_default_construct_n(row->values(), record.values.size());
    std::uninitialized_default_construct_n(&row->list(0), record.lists.size());
    return row;
}

Row* Row::copy(const Row& original)
{
    const schema::Record& record = original.record();
    Row* row = make_head(record);
    std::uninitialized_copy_n(original.values(), record.values.size(), row->values());
    std::uninitialized_copy_n(&original.list(0), record.lists.size(), &row->list(0));
    row->set_mark(original.mark());
    return row;
}

void Row::destroy(Row* row) noexcept
{
    std::destroy_n(&row->list(0), row->record().lists.size());
    std::destroy_n(row->values(), row->record().values.size());
    row->~Row();
    ::operator delete(row);
}

int compare_key(const Row& row, const schema::Value* keys, std::size_t count) noexcept
{
    const std::size_t own = row.record().keys;
    for (std::size_t i = 0; i < std::min(own, count); ++i) {
        if (const int order = schema::compare(row.keys()[i], keys[i]); order != 0) {
            return order;
        }
    }
    return own > count ? 1 : 0;
}

}  // namespace bgp_platform::store
