// What an upgrade did to one entry, for a report in any form. A change points to the rows it is about, which may be many:
// it holds for as long as the device's two configurations stay as they are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "device.h"

namespace bgp_rehearse {

// One leaf or presence container, and its values; null where it is not set.
struct Leaf {
    const bgp_platform::schema::Node* node = nullptr;
    const bgp_platform::schema::Value* before = nullptr;
    const bgp_platform::schema::Value* after = nullptr;
};

// An entry of a list or leaf-list that was created, deleted, moved to another key, or changed in its leaves. Leaves
// that lie outside any list make one change without an entry.
struct Change {
    enum class Kind { Created, Deleted, Moved, Changed };

    Kind kind = Kind::Changed;
    std::shared_ptr<const std::string> list;  // keypath of the list, one text for all its changes; of an entry below
                                              // another one relative to that; "" at the root
    const bgp_platform::store::Row* entry = nullptr;  // Deleted: as it was, else as it is; null: the root
    const bgp_platform::store::Row* from = nullptr;   // Moved: the entry as it was
    std::vector<Leaf> leaves;                         // Changed: those that differ
};

// The value, or null when it is absent.
inline const bgp_platform::schema::Value* set_value(const bgp_platform::schema::Value& value)
{
    return value.absent() ? nullptr : &value;
}

// The leaves of an entry that was created or deleted, without the key, or those of one that changed.
void for_each_leaf(const Change& change, const std::function<void(const Leaf&)>& visit);

// The entries below one that was created or deleted.
void for_each_below(const Change& change, const std::function<void(const Change&)>& visit);

// How many slots of a record those nodes have: as many as a slot's number can tell apart.
inline uint16_t slots(const std::vector<const bgp_platform::schema::Node*>& nodes)
{
    return static_cast<uint16_t>(nodes.size());
}

// A leaf's name as seen from its entry: "router-id", "bgp/cluster-id".
std::string name_of(const Leaf& leaf);

// Appends a value of that leaf as a report may show it: "********" for a secret one (its name speaks of a password).
void append_shown(const Leaf& leaf, const bgp_platform::schema::Value& value, std::string* text);

// "created", "deleted", "moved", "changed"
const char* name_of(Change::Kind kind) noexcept;

// Appends an entry's key in its braces, "{5 ipv4}"; nothing for no entry.
void append_braced_key(const bgp_platform::store::Row* entry, std::string* text);

struct ChangeTotals {
    std::size_t created = 0;  // entries, those below a created entry included
    std::size_t deleted = 0;  // likewise
    std::size_t moved = 0;
    std::size_t leaves_set = 0;      // of created entries, and those that changed to another value
    std::size_t leaves_removed = 0;  // of entries that stay
};

ChangeTotals count_changes(const std::vector<Change>& changes);

}  // namespace bgp_rehearse
