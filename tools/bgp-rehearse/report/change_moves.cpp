// The entries that a list lost and those that it gained come in the order of its keys. They are compared one key leaf after
// the other being left out; what has the same place in the order of the rest, and of what it holds, is alike. A change of
// the first leaf, where an index mostly stands, leaves that order nearly as it was.
#include "report/change_moves.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Record;
using bgp_platform::schema::Value;
using bgp_platform::store::List;
using bgp_platform::store::Row;

int order(const Row& left, const Row& right, uint16_t first);

int order(const List& left, const List& right)
{
    const int by_size = bgp_platform::schema::order(left.size(), right.size());
    if (by_size != 0) {
        return by_size;
    }
    List::Iterator other = right.begin();
    for (List::Iterator entry = left.begin(); entry; ++entry, ++other) {
        if (const int by_entry = order(**entry, **other, 0); by_entry != 0) {
            return by_entry;
        }
    }
    return 0;
}

// Orders rows of one list by what they hold from a value slot on, the key leaves first; 0 when that is the same.
int order(const Row& left, const Row& right, uint16_t first)
{
    const Record& record = left.record();
    for (uint16_t slot = first; slot < slots(record.values); ++slot) {
        if (const int by_value = compare(left.value(slot), right.value(slot)); by_value != 0) {
            return by_value;
        }
    }
    for (uint16_t slot = 0; slot < slots(record.lists); ++slot) {
        if (const int by_list = order(left.list(slot), right.list(slot)); by_list != 0) {
            return by_list;
        }
    }
    return 0;
}

// Two entries without content, told apart by their only key leaf, are alike only in being empty.
bool can_move(const Row& row)
{
    const Record& record = row.record();
    if (record.keys > 1) {
        return true;
    }
    for (uint16_t slot = record.keys; slot < slots(record.values); ++slot) {
        if (!row.value(slot).absent()) {
            return true;
        }
    }
    for (uint16_t slot = 0; slot < slots(record.lists); ++slot) {
        if (!row.list(slot).empty()) {
            return true;
        }
    }
    return false;
}

using Entries = std::vector<Change*>;

struct Span {
    Entries::iterator first;
    Entries::iterator end;

    bool empty() const { return first == end; }
};

bool joined(const Change* change)
{
    return change->from != nullptr;
}

// A deleted entry that is taken for the source of a move leaves a change without an entry that came from one.
void join(Change* one, Change* other)
{
    if (one->kind == other->kind || !can_move(*one->entry)) {
        return;
    }
    Change* const created = one->kind == Change::Kind::Created ? one : other;
    Change* const deleted = one->kind == Change::Kind::Created ? other : one;
    created->kind = Change::Kind::Moved;
    created->from = deleted->entry;
    std::swap(deleted->from, deleted->entry);
}

// Brings entries in order that lie in runs that are, by merging neighbouring runs.
template <typename Before>
void merge_runs(Entries* entries, const Before& before)
{
    std::vector<Entries::iterator> borders{entries->begin()};
    while (borders.back() != entries->end()) {
        borders.push_back(std::is_sorted_until(borders.back(), entries->end(), before));
    }
    while (borders.size() > 2) {
        std::vector<Entries::iterator> wider{entries->begin()};
        for (std::size_t i = 2; i < borders.size(); i += 2) {
            std::inplace_merge(borders[i - 2], borders[i - 1], borders[i], before);
            wider.push_back(borders[i]);
        }
        if (wider.back() != entries->end()) {
            wider.push_back(entries->end());
        }
        borders.swap(wider);
    }
}

// Joins the entries, alike in the key leaves before `position`, that have one other that is alike in all but that leaf.
void join_alike(uint16_t position, const Span& created, const Span& deleted)
{
    const auto before = [rest = static_cast<uint16_t>(position + 1)](const Change* left, const Change* right) {
        return order(*left->entry, *right->entry, rest) < 0;
    };
    Entries all(created.first, created.end);
    all.insert(all.end(), deleted.first, deleted.end);
    merge_runs(&all, before);
    for (auto first = all.begin(); first != all.end();) {
        const auto end = std::find_if(first + 1, all.end(), [&](const Change* each) { return before(*first, each); });
        if (end - first == 2) {
            join(*first, *(first + 1));
        }
        first = end;
    }
}

// Takes from the front the entries that have that value.
Span take_those_with(const Value& value, uint16_t position, Span* entries)
{
    const auto end = std::find_if(entries->first, entries->end,
                                  [&](const Change* each) { return each->entry->value(position) != value; });
    return {std::exchange(entries->first, end), end};
}

// Finds the moves among entries, in the order of their keys, that are alike in the key leaves before `position`: first
// those in which that leaf differs.
void find_from(uint16_t position, Span created, Span deleted)
{
    if (created.empty() || deleted.empty() || position == (*created.first)->entry->record().keys) {
        return;
    }
    join_alike(position, created, deleted);
    created.end = std::remove_if(created.first, created.end, joined);
    deleted.end = std::remove_if(deleted.first, deleted.end, joined);
    while (!created.empty() && !deleted.empty()) {
        const Value& least =
            std::min((*created.first)->entry->value(position), (*deleted.first)->entry->value(position));
        const Span gained = take_those_with(least, position, &created);
        const Span lost = take_those_with(least, position, &deleted);
        find_from(static_cast<uint16_t>(position + 1), gained, lost);
    }
}

}  // namespace

void find_moves(std::vector<Change>* changes)
{
    struct Sides {
        Entries created;
        Entries deleted;
    };
    std::unordered_map<const std::string*, Sides> lists;
    for (Change& change : *changes) {
        if (change.kind == Change::Kind::Created) {
            lists[change.list.get()].created.push_back(&change);
        } else if (change.kind == Change::Kind::Deleted) {
            lists[change.list.get()].deleted.push_back(&change);
        }
    }
    for (auto& [list, sides] : lists) {
        find_from(0, {sides.created.begin(), sides.created.end()}, {sides.deleted.begin(), sides.deleted.end()});
    }
    const auto taken = [](const Change& change) { return change.entry == nullptr && change.from != nullptr; };
    changes->erase(std::remove_if(changes->begin(), changes->end(), taken), changes->end());
}

}  // namespace bgp_rehearse
