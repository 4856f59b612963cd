// Paths as data: which row another one refers to, said once and looked up for every row.
//
//     PathTemplate maps(schema, "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{$bgpRmEntIndex $value *}", families, in_map);
//     Lookup lookup(maps, device.configuration(Datastore::Transaction));
//     for each family row:  if (lookup.row({{}, row}) == nullptr) ...
//
// Between braces stand the entry's keys in their order, a blank between two: `$name` is the value of that key or leaf of the
// row looked from or of one around it, the nearest; `$value` that of the referring leaf; all else is the value itself
// ("ipv6", "1"). `*` at the end means any entry whose key begins with those before it. Behind the last entry may stand the
// way to one of its leaves, and `=$name` or a value that the leaf has to have.
#pragma once

#include <string_view>
#include <vector>

#include "device.h"

namespace bgp_rehearse {

// A row, and the rows around it from the outermost inwards.
struct RowPlace {
    const bgp_platform::store::Trail& around;
    const bgp_platform::store::Row& row;
};

// One of the values in a template.
class Operand {
public:
    // `list` is that of the row looked from, `value` the referring leaf (may be null). Throws std::invalid_argument where a
    // name is not known, or a value is none of `target`'s.
    Operand(std::string_view text, const bgp_platform::schema::Node* list, const bgp_platform::schema::Node* value,
            const bgp_platform::schema::Node& target);

    // As it stands in the row, or the value itself; absent where the row has none.
    const bgp_platform::schema::Value& source(const RowPlace& place) const noexcept;

    const bgp_platform::schema::Node* leaf() const noexcept { return node_; }  // null: it is the value itself

    // A source as a value of the target's type; absent where it can be none.
    bgp_platform::schema::Value converted(const bgp_platform::schema::Value& source) const;

private:
    bgp_platform::schema::Value literal_;
    const bgp_platform::schema::Node* node_ = nullptr;  // null: the value itself
    std::size_t outwards_ = 0;                          // how many rows around the one looked from
    const bgp_platform::schema::Type* target_;
};

class PathTemplate {
public:
    // Throws std::invalid_argument, naming the template, when it does not fit the schema.
    PathTemplate(const bgp_platform::schema::Schema& schema, std::string_view text,
                 const bgp_platform::schema::Node* list, const bgp_platform::schema::Node* value = nullptr);

    const bgp_platform::schema::Node* leaf() const noexcept { return leaf_; }  // null: it leads to an entry

private:
    friend class Lookup;
    struct Step {
        const bgp_platform::schema::Node* list;
        std::size_t first;  // of operands_
        std::size_t count;
        bool any;  // entries that begin with these keys
    };
    void compile(const bgp_platform::schema::Schema& schema, std::string_view text,
                 const bgp_platform::schema::Node* list, const bgp_platform::schema::Node* value);
    void take_keys(const bgp_platform::schema::Node& of, std::string_view keys, const bgp_platform::schema::Node* list,
                   const bgp_platform::schema::Node* value);

    std::vector<Step> steps_;
    std::vector<Operand> operands_;  // of all steps, then what the leaf has to be
    const bgp_platform::schema::Node* leaf_ = nullptr;
    bool compares_ = false;  // the leaf with the last operand
};

// Looks a template up in a configuration, which must not change meanwhile, nor the rows looked from. The last answer is
// kept: rows that follow one another mostly refer to the same.
class Lookup {
public:
    Lookup(const PathTemplate& path, const bgp_platform::store::Configuration& configuration)
        : path_(path),
          root_(configuration.root()),
          last_(path.operands_.size()),
          converted_(path.operands_.size())
    {
    }

    // The entry that the template leads to, the first where it may be any; null when there is none, or when the leaf is
    // not as it has to be.
    const bgp_platform::store::Row* row(const RowPlace& from);

    // The leaf's value, its default where it is not set; null when there is no entry or no value.
    const bgp_platform::schema::Value* value(const RowPlace& from);

    // Whether the last look-up was for other values than the one before it.
    bool fresh() const noexcept { return fresh_; }

private:
    void take(const RowPlace& from);
    const bgp_platform::store::Row* find(const bgp_platform::store::Row& around, std::size_t step);
    const bgp_platform::store::Row* find_entry(const bgp_platform::store::List& list,
                                               const bgp_platform::schema::Value* keys, std::size_t count);
    bool fits(const bgp_platform::store::Row& row) const;

    const PathTemplate& path_;
    const bgp_platform::store::Row& root_;
    std::vector<const bgp_platform::schema::Value*> last_;  // sources of the last look-up; null before the first
    std::vector<bgp_platform::schema::Value> converted_;    // the same as values of their targets
    const bgp_platform::store::Row* found_ = nullptr;
    bool known_ = false;
    bool fresh_ = false;

    // Behind the entry found last, for rows that refer to one entry after the other; no longer tried where they do not.
    bgp_platform::store::List::Iterator near_;
    int trust_in_near_ = 16;
};

// The list or leaf of that path, names alone; null when there is none.
const bgp_platform::schema::Node* find_node(const bgp_platform::schema::Schema& schema, std::string_view path);

// A leaf's value in a row, its default where it is not set; null when there is neither.
const bgp_platform::schema::Value* value_in(const bgp_platform::store::Row& row,
                                            const bgp_platform::schema::Node& leaf) noexcept;

}  // namespace bgp_rehearse
