// Entries that are alike are brought together by a hash of what has to be alike, list, content and the key leaves but one,
// and then compared for certain.
#include "change_moves.h"

#include <algorithm>
#include <cstdint>

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Record;
using bgp_platform::store::List;
using bgp_platform::store::Row;

uint64_t mixed(uint64_t seed, uint64_t hash)
{
    const uint64_t product = (seed ^ hash) * 0x9E3779B97F4A7C15U;
    return product ^ product >> 32U;
}

uint64_t hash_values(const Row& row, uint16_t first, uint64_t seed)
{
    const Record& record = row.record();
    for (uint16_t slot = first; slot < slots(record.values); ++slot) {
        seed = mixed(seed, row.value(slot).hash());
    }
    for (uint16_t slot = 0; slot < slots(record.lists); ++slot) {
        seed = mixed(seed, row.list(slot).size());
        row.list(slot).for_each([&](const Row& below) { seed = hash_values(below, 0, seed); });
    }
    return seed;
}

uint64_t hash_key_leaf(const Row& entry, uint16_t position)
{
    return mixed(position, entry.value(position).hash());
}

// Of list, content and key; the key leaves are added, so that one of them can be taken off.
uint64_t hash_whole(const Change& change)
{
    const uint16_t keys = change.entry->record().keys;
    uint64_t hash = hash_values(*change.entry, keys, mixed(0, reinterpret_cast<uintptr_t>(change.list.get())));
    for (uint16_t position = 0; position < keys; ++position) {
        hash += hash_key_leaf(*change.entry, position);
    }
    return hash;
}

bool alike(const Row& left, const Row& right, uint16_t first);

bool alike_lists(const List& left, const List& right)
{
    if (left.size() != right.size()) {
        return false;
    }
    List::Iterator other = right.begin();
    for (List::Iterator entry = left.begin(); entry; ++entry, ++other) {
        if (!alike(**entry, **other, 0)) {
            return false;
        }
    }
    return true;
}

// Whether two rows of one list hold the same from a value slot on.
bool alike(const Row& left, const Row& right, uint16_t first)
{
    const Record& record = left.record();
    for (uint16_t slot = first; slot < slots(record.values); ++slot) {
        if (left.value(slot) != right.value(slot)) {
            return false;
        }
    }
    for (uint16_t slot = 0; slot < slots(record.lists); ++slot) {
        if (!alike_lists(left.list(slot), right.list(slot))) {
            return false;
        }
    }
    return true;
}

// Whether two entries are one that moved, or would be if they were not both created or both deleted.
bool alike_but_for(uint16_t position, const Change& left, const Change& right)
{
    if (left.list != right.list) {
        return false;
    }
    const uint16_t keys = left.entry->record().keys;
    for (uint16_t other = 0; other < keys; ++other) {
        if (other != position && left.entry->value(other) != right.entry->value(other)) {
            return false;
        }
    }
    return alike(*left.entry, *right.entry, keys);
}

// Two entries without content, told apart by their only key leaf, are alike only in being empty.
bool can_move(const Change& change)
{
    if (change.kind != Change::Kind::Created && change.kind != Change::Kind::Deleted) {
        return false;
    }
    const Row& row = *change.entry;
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

struct Candidate {
    uint64_t hash;  // of all, or of all but the key leaf in question
    std::size_t change;
};
using Candidates = std::vector<Candidate>;

class Moves {
public:
    explicit Moves(std::vector<Change>* changes) : changes_(*changes)
    {
        for (std::size_t i = 0; i < changes_.size(); ++i) {
            if (can_move(changes_[i])) {
                candidates_.push_back({hash_whole(changes_[i]), i});
                longest_key_ = std::max(longest_key_, changes_[i].entry->record().keys);
            }
        }
    }

    void find()
    {
        for (uint16_t position = 0; position < longest_key_; ++position) {
            find_in_key(position);
        }
        const auto taken = [](const Change& change) { return change.entry == nullptr && change.from != nullptr; };
        changes_.erase(std::remove_if(changes_.begin(), changes_.end(), taken), changes_.end());
    }

private:
    // The moves in which the key leaf at `position` differs.
    void find_in_key(uint16_t position)
    {
        Candidates same_hash;
        for (const Candidate& each : candidates_) {
            const Change& change = changes_[each.change];
            const bool free = change.entry != nullptr && change.kind != Change::Kind::Moved;
            if (free && change.entry->record().keys > position) {
                same_hash.push_back({each.hash - hash_key_leaf(*change.entry, position), each.change});
            }
        }
        std::sort(same_hash.begin(), same_hash.end(),
                  [](const Candidate& left, const Candidate& right) { return left.hash < right.hash; });
        for (auto first = same_hash.begin(); first != same_hash.end();) {
            const auto end =
                std::find_if(first, same_hash.end(), [&](const Candidate& each) { return each.hash != first->hash; });
            settle(position, first, end);
            first = end;
        }
    }

    // Candidates of one hash, of which nearly always all are alike.
    void settle(uint16_t position, Candidates::iterator first, Candidates::iterator end)
    {
        while (end - first > 1) {
            const Change& like = changes_[first->change];
            const auto others = std::partition(first + 1, end, [&](const Candidate& each) {
                return alike_but_for(position, like, changes_[each.change]);
            });
            if (others - first == 2) {
                join(changes_[first->change], changes_[(first + 1)->change]);
            }
            first = others;
        }
    }

    // A deleted entry that is taken for the source of a move leaves a change without an entry that came from one.
    static void join(Change& one, Change& other)
    {
        if (one.kind == other.kind) {
            return;
        }
        Change& created = one.kind == Change::Kind::Created ? one : other;
        Change& deleted = one.kind == Change::Kind::Created ? other : one;
        created.kind = Change::Kind::Moved;
        created.from = deleted.entry;
        std::swap(deleted.from, deleted.entry);
    }

    std::vector<Change>& changes_;
    Candidates candidates_;
    uint16_t longest_key_ = 0;
};

}  // namespace

void find_moves(std::vector<Change>* changes)
{
    Moves(changes).find();
}

}  // namespace bgp_rehearse
