#include "report/change.h"

#include "calls/recorder.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Record;
using bgp_platform::schema::Value;
using bgp_platform::store::Row;

// A node's path from the entry it is in, "bgp/cluster-id".
std::string name_in_entry(const Node& node)
{
    std::string name = node.name;
    for (const Node* above = node.parent; above != nullptr && above != node.record->owner; above = above->parent) {
        name.insert(0, above->name + "/");
    }
    return name;
}

void count_leaf(Change::Kind kind, const Leaf& leaf, ChangeTotals* totals)
{
    totals->leaves_set += leaf.after != nullptr;
    totals->leaves_removed += kind == Change::Kind::Changed && leaf.after == nullptr;
}

void count_change(const Change& change, ChangeTotals* totals)
{
    totals->created += change.kind == Change::Kind::Created;
    totals->deleted += change.kind == Change::Kind::Deleted;
    totals->moved += change.kind == Change::Kind::Moved;
    for_each_leaf(change, [&](const Leaf& leaf) { count_leaf(change.kind, leaf, totals); });
    for_each_below(change, [&](const Change& below) { count_change(below, totals); });
}

bool is_whole(const Change& change)
{
    return change.kind == Change::Kind::Created || change.kind == Change::Kind::Deleted;
}

}  // namespace

void for_each_leaf(const Change& change, const std::function<void(const Leaf&)>& visit)
{
    for (const Leaf& leaf : change.leaves) {
        visit(leaf);
    }
    if (!is_whole(change)) {
        return;
    }
    const Record& record = change.entry->record();
    const bool created = change.kind == Change::Kind::Created;
    for (uint16_t slot = record.keys; slot < slots(record.values); ++slot) {
        if (const Value* const value = set_value(change.entry->value(slot))) {
            visit({record.values[slot], created ? nullptr : value, created ? value : nullptr});
        }
    }
}

void for_each_below(const Change& change, const std::function<void(const Change&)>& visit)
{
    if (!is_whole(change)) {
        return;
    }
    const Record& record = change.entry->record();
    for (uint16_t slot = 0; slot < slots(record.lists); ++slot) {
        if (change.entry->list(slot).empty()) {
            continue;
        }
        const auto name = std::make_shared<const std::string>(name_in_entry(*record.lists[slot]));
        change.entry->list(slot).for_each([&](const Row& below) { visit({change.kind, name, &below, nullptr, {}}); });
    }
}

std::string name_of(const Leaf& leaf)
{
    return name_in_entry(*leaf.node);
}

void append_shown(const Leaf& leaf, const Value& value, std::string* text)
{
    if (is_secret(*leaf.node)) {
        *text += bgp_platform::capi::kMasked;
    } else if (leaf.node->kind == NodeKind::Presence) {
        *text += "(present)";
    } else {
        leaf.node->type->append_text(value, text);
    }
}

const char* name_of(Change::Kind kind) noexcept
{
    switch (kind) {
        case Change::Kind::Created:
            return "created";
        case Change::Kind::Deleted:
            return "deleted";
        case Change::Kind::Moved:
            return "moved";
        case Change::Kind::Changed:
            break;
    }
    return "changed";
}

void append_braced_key(const Row* entry, std::string* text)
{
    if (entry == nullptr) {
        return;
    }
    const Record& record = entry->record();
    *text += '{';
    for (uint16_t slot = 0; slot < record.keys; ++slot) {
        *text += slot > 0 ? " " : "";
        bgp_platform::store::append_key(*record.values[slot]->type, entry->value(slot), text);
    }
    *text += '}';
}

ChangeTotals count_changes(const std::vector<Change>& changes)
{
    ChangeTotals totals;
    for (const Change& change : changes) {
        count_change(change, &totals);
    }
    return totals;
}

}  // namespace bgp_rehearse
