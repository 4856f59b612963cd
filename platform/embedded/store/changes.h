// What one configuration has that another has not: the changes that a transaction made, in the order of the schema and
// of the keys. Rows and tree nodes that both share are not visited.
#pragma once

#include <string>
#include <vector>

#include "store/configuration.h"

namespace bgp_platform::store {

// Where a change is: the rows from the outermost entry inwards, each the entry's row (of `after` where it is there,
// else of `before`). Empty for the root.
using Trail = std::vector<const Row*>;

class ChangeVisitor {
public:
    virtual ~ChangeVisitor() = default;

    // An entry of a list or leaf-list that only one side has; all below it belongs to it and is not visited again.
    // The trail leads to the row around the list.
    virtual void entry_created(const Trail& around, const Row& entry) = 0;
    virtual void entry_deleted(const Trail& around, const Row& entry) = 0;

    // A leaf or presence container whose value differs (absent where it is not set). The trail ends in its row.
    virtual void leaf_changed(const Trail& row, const schema::Node& leaf, const schema::Value& before,
                              const schema::Value& after) = 0;
};

void walk_changes(const Configuration& before, const Configuration& after, ChangeVisitor& visitor);

// The keypath of a row reached by a trail, "/router/bgp{65010}/vrf{red}"; "" for the root. `entry` may be null.
std::string keypath(const Trail& around, const Row* entry);

// The keypath of a node below a row.
std::string keypath(const Trail& row, const schema::Node& node);

// The way from below a list (null: from the top) down to a node of its entries, "/a/b".
std::string way_below(const schema::Node* list, const schema::Node& node);

// A key tuple as it stands between braces, "5 ipv4 0a:00:00:01"; a text with blanks or braces is quoted.
std::string key_text(const Row& entry);

// One key value as it stands in a keypath: its type's text, quoted with " and backslash escapes when it is empty or
// holds a blank, brace, quote or backslash.
void append_key(const schema::Type& type, const schema::Value& value, std::string* text);

}  // namespace bgp_platform::store
