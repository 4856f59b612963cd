// What an upgrade changed, as plain text and plain structs that a report can show in any form.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "device.h"

namespace bgp_rehearse {

// One leaf: its name as seen from its entry ("router-id", "bgp/cluster-id"), and its values as text, empty where it is
// not set. A secret one (its name speaks of a password) is never shown, only compared.
struct Leaf {
    std::string name;
    std::optional<std::string> before;
    std::optional<std::string> after;
    bool secret = false;
};

// An entry of a list or leaf-list that was created, deleted, moved to another key, or changed in its leaves. Leaves
// that lie outside any list make one change with an empty key.
struct Change {
    enum class Kind { Created, Deleted, Moved, Changed };

    Kind kind = Kind::Changed;
    std::string list;  // keypath of the list; in `below` relative to the entry around; "" at the root
    std::vector<std::string>
        key;  // one text a key leaf, as it stands in a keypath; of an entry that moved, the new one
    std::vector<std::string> from;  // of an entry that moved: the old key
    std::vector<Leaf> leaves;       // Created: with `after` only, Deleted: with `before` only; without the key leaves
    std::vector<Change> below;      // Created, Deleted: the entries below it
};

// A value of that leaf as a report may show it: "********" for a secret one.
std::string shown(const Leaf& leaf, const std::string& value);

// "created", "deleted", "moved", "changed"
const char* name_of(Change::Kind kind) noexcept;

// A key tuple in its braces, "{5 ipv4}"; "" for an empty one.
std::string braced(const std::vector<std::string>& key);

// The changes of the open transaction in the order of the schema and of the keys, moves found.
std::vector<Change> collect_changes(const bgp_platform::Device& device);

// Turns a deleted and a created entry of one list into one that moved, where the two hold the same and differ in one
// key leaf, and no other entry fits either of them. The move stands where the created entry stood.
void find_moves(std::vector<Change>* changes);

struct ChangeTotals {
    std::size_t created = 0;  // entries, those below a created entry included
    std::size_t deleted = 0;  // likewise
    std::size_t moved = 0;
    std::size_t leaves_set = 0;      // of created entries, and those that changed to another value
    std::size_t leaves_removed = 0;  // of entries that stay
};

ChangeTotals count_changes(const std::vector<Change>& changes);

}  // namespace bgp_rehearse
