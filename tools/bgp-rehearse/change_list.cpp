#include "change_list.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>
#include <utility>

#include "capi/recorder.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Value;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

constexpr char kPresent[] = "(present)";

// A node's path from the entry it is in, "bgp/cluster-id".
std::string name_in_entry(const Node& node)
{
    std::string name = node.name;
    for (const Node* above = node.parent; above != nullptr && above != node.record->owner; above = above->parent) {
        name.insert(0, above->name + "/");
    }
    return name;
}

std::optional<std::string> value_text(const Node& node, const Value& value)
{
    if (value.absent()) {
        return std::nullopt;
    }
    return node.kind == NodeKind::Presence ? kPresent : node.type->text(value);
}

Leaf make_leaf(const Node& node, const Value& before, const Value& after)
{
    return {name_in_entry(node), value_text(node, before), value_text(node, after), is_secret(node)};
}

std::vector<std::string> key_of(const Row& entry)
{
    std::vector<std::string> key(entry.record().keys);
    for (uint16_t slot = 0; slot < entry.record().keys; ++slot) {
        const Node& leaf = *entry.record().values[slot];
        bgp_platform::store::append_key(*leaf.type, entry.value(slot), &key[slot]);
    }
    return key;
}

// An entry that only one side has, with all below it.
Change whole_entry(Change::Kind kind, std::string list, const Row& entry)
{
    Change change;
    change.kind = kind;
    change.list = std::move(list);
    change.key = key_of(entry);
    const auto& record = entry.record();
    for (std::size_t slot = record.keys; slot < record.values.size(); ++slot) {
        const Value& value = entry.value(static_cast<uint16_t>(slot));
        if (value.absent()) {
            continue;
        }
        const bool created = kind == Change::Kind::Created;
        change.leaves.push_back(make_leaf(*record.values[slot], created ? Value() : value, created ? value : Value()));
    }
    for (std::size_t slot = 0; slot < record.lists.size(); ++slot) {
        const Node& list_below = *record.lists[slot];
        entry.list(static_cast<uint16_t>(slot)).for_each([&](const Row& below) {
            change.below.push_back(whole_entry(kind, name_in_entry(list_below), below));
        });
    }
    return change;
}

class Collector : public bgp_platform::store::ChangeVisitor {
public:
    explicit Collector(std::vector<Change>* changes) : changes_(changes) {}

    void entry_created(const Trail& around, const Row& entry) override { add(Change::Kind::Created, around, entry); }
    void entry_deleted(const Trail& around, const Row& entry) override { add(Change::Kind::Deleted, around, entry); }

    void leaf_changed(const Trail& row, const Node& leaf, const Value& before, const Value& after) override
    {
        // A row's leaves may come with changes of its lists between them.
        const auto [place, first] = rows_.try_emplace(row.empty() ? nullptr : row.back(), changes_->size());
        if (first) {
            start_row(row);
        }
        (*changes_)[place->second].leaves.push_back(make_leaf(leaf, before, after));
    }

private:
    void add(Change::Kind kind, const Trail& around, const Row& entry)
    {
        changes_->push_back(whole_entry(kind, bgp_platform::store::keypath(around, *entry.record().owner), entry));
    }

    void start_row(const Trail& row)
    {
        Change change;
        if (!row.empty()) {
            const Trail around(row.begin(), row.end() - 1);
            change.list = bgp_platform::store::keypath(around, *row.back()->record().owner);
            change.key = key_of(*row.back());
        }
        changes_->push_back(std::move(change));
    }

    std::vector<Change>* changes_;
    std::unordered_map<const Row*, std::size_t> rows_;  // where the change of a row's leaves is; null: the root
};

// Everything in an entry but its key, as one text; equal for entries that hold the same.
void append_content(const Change& entry, std::string* text)
{
    constexpr char kBetween = '\0';
    for (const Leaf& leaf : entry.leaves) {
        *text += leaf.name + kBetween + (leaf.before ? *leaf.before : *leaf.after) + kBetween;
    }
    for (const Change& below : entry.below) {
        *text += below.list + braced(below.key) + kBetween;
        append_content(below, text);
        *text += kBetween;
    }
}

// The created and the deleted entries that are alike, as positions in the list of changes.
struct Alike {
    std::vector<std::size_t> created;
    std::vector<std::size_t> deleted;
};

// Two entries without content, told apart by their only key leaf, are alike only in being empty.
bool can_move(const Change& change)
{
    const bool whole = change.kind == Change::Kind::Created || change.kind == Change::Kind::Deleted;
    return whole && (change.key.size() > 1 || !change.leaves.empty() || !change.below.empty());
}

// Numbers texts: equal ones alike.
class Numbering {
public:
    uint32_t of(const std::string& text)
    {
        return numbers_.try_emplace(text, static_cast<uint32_t>(numbers_.size())).first->second;
    }

private:
    std::unordered_map<std::string, uint32_t> numbers_;
};

// What has to be alike for a move, in numbers: the list, the content, and then the key leaves but the one that differs.
using Fingerprint = std::basic_string<char32_t>;

// Empty for a change that is no part of a move.
std::vector<Fingerprint> take_fingerprints(const std::vector<Change>& changes)
{
    Numbering texts;
    std::vector<Fingerprint> fingerprints(changes.size());
    for (std::size_t i = 0; i < changes.size(); ++i) {
        if (!can_move(changes[i])) {
            continue;
        }
        std::string content;
        append_content(changes[i], &content);
        fingerprints[i] = {texts.of(changes[i].list), texts.of(content)};
        for (const std::string& leaf : changes[i].key) {
            fingerprints[i].push_back(texts.of(leaf));
        }
    }
    return fingerprints;
}

// Marks the moves in which the key leaf at `position` differs, leaving the deleted entries with an empty list name.
void find_moves_in_key(std::size_t position, const std::vector<Fingerprint>& fingerprints, std::vector<Change>* changes)
{
    constexpr std::size_t kKey = 2;  // list and content stand before it
    std::unordered_map<Fingerprint, Alike> groups;
    for (std::size_t i = 0; i < changes->size(); ++i) {
        const Change& change = (*changes)[i];
        if (change.list.empty() || !can_move(change) || change.key.size() <= position) {
            continue;
        }
        Fingerprint rest = fingerprints[i];
        rest[kKey + position] = std::numeric_limits<char32_t>::max();
        Alike& alike = groups[rest];
        (change.kind == Change::Kind::Created ? alike.created : alike.deleted).push_back(i);
    }
    for (const auto& [fingerprint, alike] : groups) {
        if (alike.created.size() != 1 || alike.deleted.size() != 1) {
            continue;
        }
        Change& moved = (*changes)[alike.created.front()];
        Change& source = (*changes)[alike.deleted.front()];
        moved.kind = Change::Kind::Moved;
        moved.from = std::move(source.key);
        moved.leaves.clear();
        moved.below.clear();
        source.list.clear();
    }
}

void count_change(const Change& change, ChangeTotals* totals)
{
    totals->created += change.kind == Change::Kind::Created;
    totals->deleted += change.kind == Change::Kind::Deleted;
    totals->moved += change.kind == Change::Kind::Moved;
    for (const Leaf& leaf : change.leaves) {
        totals->leaves_set += leaf.after.has_value();
        totals->leaves_removed += change.kind == Change::Kind::Changed && !leaf.after.has_value();
    }
    for (const Change& below : change.below) {
        count_change(below, totals);
    }
}

}  // namespace

std::string shown(const Leaf& leaf, const std::string& value)
{
    return leaf.secret ? "********" : value;
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

std::string braced(const std::vector<std::string>& key)
{
    std::string text;
    for (const std::string& value : key) {
        text += (text.empty() ? "{" : " ") + value;
    }
    return text.empty() ? text : text + "}";
}

std::vector<Change> collect_changes(const bgp_platform::Device& device)
{
    std::vector<Change> changes;
    Collector collector(&changes);
    device.walk_changes(collector);
    find_moves(&changes);
    return changes;
}

void find_moves(std::vector<Change>* changes)
{
    const std::vector<Fingerprint> fingerprints = take_fingerprints(*changes);
    std::size_t longest_key = 0;
    for (const Change& change : *changes) {
        longest_key = std::max(longest_key, change.key.size());
    }
    for (std::size_t position = 0; position < longest_key; ++position) {
        find_moves_in_key(position, fingerprints, changes);
    }
    const auto taken = [](const Change& change) { return change.kind == Change::Kind::Deleted && change.list.empty(); };
    changes->erase(std::remove_if(changes->begin(), changes->end(), taken), changes->end());
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
