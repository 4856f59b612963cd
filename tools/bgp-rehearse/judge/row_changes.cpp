#include "judge/row_changes.h"

#include <algorithm>
#include <vector>

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Record;
using bgp_platform::schema::Value;
using bgp_platform::store::History;
using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

const List kNoEntries;

const Value& effective(const Node& node, const Value& value)
{
    return value.absent() ? node.default_value : value;
}

bool same_entries(const List& left, const List& right)
{
    bool same = left.size() == right.size();
    if (same) {
        List::walk_differences(left, right, [&same](const Row* before, const Row* after) {
            same = same && before != nullptr && after != nullptr;
        });
    }
    return same;
}

bool has_lists_below(const Record& record)
{
    return std::any_of(record.lists.begin(), record.lists.end(),
                       [](const Node* list) { return list->kind == NodeKind::List; });
}

bool same_key(const Row& left, const Row& right)
{
    return bgp_platform::store::compare_key(left, right.keys(), right.record().keys) == 0;
}

class Walk {
public:
    Walk(const History& history, RowVisitor& visitor) : history_(history), visitor_(visitor) {}

    void run(const Row& before, const Row& after)
    {
        // First, which of the moved rows are in the result: the others were taken away later.
        there_.assign(history_.size(), false);
        find_moved(before, after);
        if (!same_content(before, after)) {
            visitor_.outside(change(Fate::Changed, &before, &after));
        }
        lists_below(&before, &after);
    }

private:
    RowChange change(Fate fate, const Row* before, const Row* after) const
    {
        RowChange change{fate, before, after, &trail_, 0, history_};
        if (fate != Fate::Changed) {
            change.writer = history_.writer_of(change.row());
        }
        return change;
    }

    // Calls visit(list, entries before, entries after) for the lists of a row; either row may be null.
    template <typename Visit>
    static void for_each_list(const Row* before, const Row* after, Visit&& visit)
    {
        for (const Node* list : (after != nullptr ? after : before)->record().lists) {
            if (list->kind == NodeKind::List) {
                visit(*list, before == nullptr ? kNoEntries : before->list(list->slot),
                      after == nullptr ? kNoEntries : after->list(list->slot));
            }
        }
    }

    void find_moved(const Row& before, const Row& after)
    {
        for_each_list(&before, &after, [this](const Node& /*list*/, const List& old_list, const List& new_list) {
            List::walk_differences(old_list, new_list, [&](const Row* /*before*/, const Row* entry) {
                if (entry == nullptr) {
                    return;
                }
                if (history_.origin(*entry) != nullptr) {
                    there_[history_.number(*entry)] = true;
                }
                const Row* const stored = history_.stored_entry(*entry, &old_list);
                if (stored != nullptr && has_lists_below(entry->record())) {
                    find_moved(*stored, *entry);
                }
            });
        });
    }

    void lists_below(const Row* before, const Row* after)
    {
        for_each_list(before, after, [this](const Node& list, const List& old_list, const List& new_list) {
            const auto visit = [&](const Row* old_row, const Row* new_row) { entries(old_list, old_row, new_row); };
            if (has_lists_below(*list.entry)) {
                List::walk_both(old_list, new_list, visit);
                return;
            }
            if (const std::size_t shared = List::walk_differences(old_list, new_list, visit); shared > 0) {
                visitor_.kept(list, shared);
            }
        });
    }

    // The rows of one key, before and after.
    void entries(const List& old_list, const Row* old_row, const Row* new_row)
    {
        const Row* const stored = new_row == nullptr ? nullptr : history_.stored_entry(*new_row, &old_list);
        if (old_row != nullptr && old_row != stored && !moved_away(*old_row)) {
            removed(*old_row);
        }
        if (new_row != nullptr && stored == nullptr) {
            visitor_.row(change(Fate::New, nullptr, new_row));
            below(*new_row, nullptr, new_row);
        } else if (new_row != nullptr) {
            stayed(*stored, *new_row);
        }
    }

    bool moved_away(const Row& stored) const
    {
        const std::size_t number = history_.number(stored);
        return number != History::kNone && there_[number];
    }

    void removed(const Row& row)
    {
        visitor_.row(change(Fate::Removed, &row, nullptr));
        below(row, &row, nullptr);
    }

    void stayed(const Row& stored, const Row& row)
    {
        if (&stored == &row) {
            visitor_.kept(*row.record().owner, 1);
        } else {
            const bool same = same_content(stored, row);
            const bool moved = !same_key(stored, row);
            visitor_.row(
                change(moved ? (same ? Fate::Moved : Fate::MovedAndChanged) : (same ? Fate::AsItWas : Fate::Changed),
                       &stored, &row));
        }
        below(row, &stored, &row);
    }

    // What lies below a row, which is one of the two others.
    void below(const Row& row, const Row* before, const Row* after)
    {
        if (has_lists_below(row.record())) {
            trail_.push_back(&row);
            lists_below(before, after);
            trail_.pop_back();
        }
    }

    const History& history_;
    RowVisitor& visitor_;
    std::vector<bool> there_;
    Trail trail_;
};

const Value* set_value(const Value& value)
{
    return value.absent() ? nullptr : &value;
}

}  // namespace

bool same_content(const Row& left, const Row& right)
{
    const Record& record = left.record();
    for (std::size_t slot = record.keys; slot < record.values.size(); ++slot) {
        const auto at = static_cast<uint16_t>(slot);
        if (effective(*record.values[slot], left.value(at)) != effective(*record.values[slot], right.value(at))) {
            return false;
        }
    }
    return std::all_of(record.lists.begin(), record.lists.end(), [&](const Node* list) {
        return list->kind != NodeKind::LeafList || same_entries(left.list(list->slot), right.list(list->slot));
    });
}

const char* name_of(Fate fate) noexcept
{
    switch (fate) {
        case Fate::AsItWas:
            return "as it was";
        case Fate::Changed:
            return "changed";
        case Fate::Moved:
            return "moved";
        case Fate::MovedAndChanged:
            return "moved and changed";
        case Fate::Removed:
            return "removed";
        case Fate::New:
            break;
    }
    return "new";
}

void for_each_leaf_change(const RowChange& change, const std::function<void(const LeafChange&)>& visit)
{
    static const Value kAbsent;
    const Record& record = change.row().record();
    for (std::size_t slot = record.keys; slot < record.values.size(); ++slot) {
        const Node& node = *record.values[slot];
        const auto at = static_cast<uint16_t>(slot);
        const Value& before = change.before == nullptr ? kAbsent : change.before->value(at);
        const Value& after = change.after == nullptr ? kAbsent : change.after->value(at);
        const bool whole = change.before == nullptr || change.after == nullptr;
        if (whole ? before || after : effective(node, before) != effective(node, after)) {
            visit({&node, set_value(before), set_value(after), nullptr, nullptr, change.writer_of(node)});
        }
    }
    for (const Node* list : record.lists) {
        const List& before = change.before == nullptr ? kNoEntries : change.before->list(list->slot);
        const List& after = change.after == nullptr ? kNoEntries : change.after->list(list->slot);
        if (list->kind == NodeKind::LeafList && !same_entries(before, after)) {
            visit({list, nullptr, nullptr, before.empty() ? nullptr : &before, after.empty() ? nullptr : &after,
                   change.writer_of(*list)});
        }
    }
}

void walk_rows(const bgp_platform::Device& device, RowVisitor& visitor)
{
    Walk(*device.history(), visitor)
        .run(device.configuration(Datastore::Stored).root(), device.configuration(Datastore::Transaction).root());
}

}  // namespace bgp_rehearse
