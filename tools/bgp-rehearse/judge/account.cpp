#include "judge/account.h"

#include <fmt/format.h>

#include "judge/compiled_for.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Record;
using bgp_platform::store::Configuration;
using bgp_platform::store::Row;

// Calls visit(list, entries) for each list below a row, at any depth.
template <typename Visit>
void for_each_list_below(const Row& row, const Visit& visit)
{
    for (const Node* list : row.record().lists) {
        if (list->kind != NodeKind::List) {
            continue;
        }
        visit(*list, row.list(list->slot).size());
        const Record& entry = *list->entry;
        if (!entry.lists.empty()) {
            row.list(list->slot).for_each([&](const Row& below) { for_each_list_below(below, visit); });
        }
    }
}

void add(const RowCounts& rows, RowCounts* total)
{
    total->stored += rows.stored;
    total->kept += rows.kept;
    total->changed += rows.changed;
    total->moved += rows.moved;
    total->moved_and_changed += rows.moved_and_changed;
    total->removed += rows.removed;
    total->added += rows.added;
    total->result += rows.result;
}

}  // namespace

std::string Account::mistake() const
{
    for (const ListAccount& list : lists) {
        const RowCounts& rows = list.rows;
        if (!rows.closes()) {
            return fmt::format(
                "{}: {} stored rows became {} kept, {} changed, {} moved, {} moved and changed, {} removed; with {} "
                "new ones {} are in the result",
                list.list->path(), rows.stored, rows.kept, rows.changed, rows.moved, rows.moved_and_changed,
                rows.removed, rows.added, rows.result);
        }
    }
    return {};
}

AccountKeeper::AccountKeeper(const Configuration& stored, const Configuration& result)
    : order_(compiled_for<ListOrder>(stored.schema()))
{
    for (const Node* list : order_->lists()) {
        account_.lists.push_back({list, {}});
    }
    for_each_list_below(stored.root(), [this](const Node& list, std::size_t rows) { of(list).stored += rows; });
    for_each_list_below(result.root(), [this](const Node& list, std::size_t rows) { of(list).result += rows; });
}

RowCounts& AccountKeeper::of(const Node& list)
{
    return account_.lists[order_->place(list)].rows;
}

void AccountKeeper::kept(const Node& list, std::size_t rows)
{
    of(list).kept += rows;
}

void AccountKeeper::row(const RowChange& change)
{
    RowCounts& rows = of(change.list());
    switch (change.fate) {
        case Fate::AsItWas:
            ++rows.kept;
            break;
        case Fate::Changed:
            ++rows.changed;
            break;
        case Fate::Moved:
            ++rows.moved;
            break;
        case Fate::MovedAndChanged:
            ++rows.moved_and_changed;
            break;
        case Fate::Removed:
            ++rows.removed;
            break;
        case Fate::New:
            ++rows.added;
            break;
    }
}

// It is no row.
void AccountKeeper::outside(const RowChange& /*change*/) {}

Account AccountKeeper::take()
{
    Account account;
    for (const ListAccount& list : account_.lists) {
        add(list.rows, &account.total);
        if (list.rows.stored + list.rows.result > 0) {
            account.lists.push_back(list);
        }
    }
    return account;
}

}  // namespace bgp_rehearse
