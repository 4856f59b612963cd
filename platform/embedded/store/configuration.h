// A configuration: the typed tree of one datastore, and the operations that a management API needs on it.
//
// A copy of a configuration shares everything with the original until either is written. Absent is not failed: look-ups
// return null or an absent value, and only writes answer with a Result.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "schema/schema.h"
#include "store/foreign_part.h"
#include "store/history.h"
#include "store/last_entries.h"
#include "store/list.h"
#include "store/row.h"

namespace bgp_platform::store {

// One list on the way of a path, and which entry of it is meant.
struct Selector {
    const schema::Node* list = nullptr;  // list or leaf-list
    std::vector<schema::Value> keys;     // the whole key, or empty when `position` is given
    std::ptrdiff_t position = -1;        // the n-th entry from 0
};

// A place in the tree: a node below the entries that the selectors pick, outermost first. A path whose last selector is
// of `node` itself names that entry; otherwise a list or leaf-list node names the whole list.
struct Path {
    const schema::Node* node = nullptr;  // null: the root
    std::vector<Selector> entries;

    bool names_entry() const noexcept { return !entries.empty() && entries.back().list == node; }
};

enum class Result {
    Ok,
    NotFound,       // the thing asked for, or an entry on the way to it
    AlreadyExists,  //
    NotDeletable,   // a key leaf
    NotCreatable,   // a leaf that takes a value, or a container without presence
    NotMovable,     // not a list entry
    NotWritable,    // a key leaf with another value than the entry's, or a node that cannot be set
};

// What a leaf, a presence container or a leaf-list is given.
struct NodeValue {
    const schema::Node* node;
    schema::Value value;
    List entries{};  // of a leaf-list, whose value stays absent
};

class Configuration {
public:
    explicit Configuration(std::shared_ptr<const schema::Schema> schema);

    // Notes in a history, which is of the configuration that this one is a copy of, what is written from now on; null:
    // nothing. A copy of this configuration notes nothing.
    void note_in(History* history) noexcept { notes_.history = history; }

    const schema::Schema& schema() const noexcept { return *schema_; }
    const std::shared_ptr<const schema::Schema>& schema_ref() const noexcept { return schema_; }
    const Row& root() const noexcept { return *root_; }
    const RowRef& root_ref() const noexcept
    {
        last_.share();
        return root_;
    }

    // The row whose slots hold the path's node; for a path that names an entry, that entry. Null when an entry on the
    // way is not there.
    const Row* find_row(const Path& path) const noexcept;

    // The entry that a selector picks in a list that lies below so many others; null when it is not there.
    const Row* find_entry(const List& list, const Selector& selector, std::size_t depth) const noexcept;

    // A leaf's value: its default when nothing is set and the entry and presence containers around it are there; absent
    // otherwise.
    schema::Value get(const Path& leaf) const noexcept;

    // The entries of a list or leaf-list; null when an entry on the way is not there.
    const List* find_list(const Path& list) const noexcept;
    std::size_t count(const Path& list) const noexcept;  // 0 below an entry that is not there

    // Whether the list that a path names, or the innermost it goes through, lies below an entry that is not there.
    bool hangs(const Path& path) const noexcept;

    // An entry; a leaf that is set or has a default; a presence container; a container whose row is there; a list or
    // leaf-list with at least one entry.
    bool exists(const Path& path) const noexcept;

    // The writes. One that is not Ok changes nothing, and unshares nothing; one that finds no memory throws
    // std::bad_alloc and has changed nothing. All answer NotFound when an entry or a presence container around the path's
    // node is not there.

    // Creates an entry with nothing but its key, a leaf-list entry, a presence container, or a leaf of type empty.
    // AlreadyExists; NotCreatable for other nodes, and for an entry whose selector has not the whole key.
    [[nodiscard]] Result create(const Path& path);

    // Takes away an entry with all below it, a leaf-list entry, a leaf's value, or the whole content of a list or
    // container (of a presence container the container too). NotFound when there is nothing, a default does not count;
    // NotDeletable for a key leaf and the root.
    [[nodiscard]] Result remove(const Path& path);

    // Sets a leaf; it never creates the entry. A key leaf takes its entry's own value (Ok) and no other (NotWritable);
    // NotWritable also for a node that is no leaf, and for an absent value.
    [[nodiscard]] Result set(const Path& leaf, schema::Value value);

    // Gives leaves, presence containers and leaf-lists of the row at `row` their values, in order; an absent value takes
    // one away that is there, of a presence container with all in it. For each what set() answers, and the first that is
    // not Ok ends it: those before it stay.
    [[nodiscard]] Result set_all(const Path& row, std::vector<NodeValue> values);

    // Gives a list entry another key, keeping all below it. Onto its own key it is Ok and nothing changes;
    // AlreadyExists when another entry has the key; NotMovable for what is not a list entry, and for a part of a key.
    [[nodiscard]] Result move(const Path& entry, const std::vector<schema::Value>& to_key);

    // The root row for a loader that builds a configuration from nothing (unshared).
    Row& edit_root()
    {
        ++openings_;
        last_.forget_from(0);
        return root_.edit();
    }

    // What it holds of modules that the schema does not know, in the order in which it was added.
    const std::vector<ForeignPart>& foreign() const noexcept { return *foreign_; }
    void add_foreign(std::vector<ForeignPart> parts);

    // How often something was opened for writing: while it stays, rows and iterators of lists stay as they are.
    uint64_t openings() const noexcept { return openings_; }

    // The row of the path for writing, every row and node on the way unshared; null when an entry on the way is not
    // there. To be written before the configuration is asked for anything else.
    Row* edit_row(const Path& path);

private:
    // Stays behind when the configuration is copied or moved.
    struct Notes {
        History* history = nullptr;

        Notes() = default;
        Notes(const Notes& /*other*/) noexcept {}
        // NOLINTBEGIN(bugprone-unhandled-self-assignment): nothing is assigned
        // cppcheck-suppress operatorEqVarError
        Notes& operator=(const Notes& /*other*/) noexcept { return *this; }
        // NOLINTEND(bugprone-unhandled-self-assignment)
        ~Notes() = default;
    };

    class FoundRow;
    Result set_in(FoundRow* row, NodeValue* given);
    Result take_entry(const Path& entry);
    void room_for_note() const;
    void note_written(const Row& row, const schema::Node& node) const noexcept;
    void note_cleared(const Row& row, const Row* stored, const schema::Node& node);

    const Row* follow(const Path& path, std::size_t count) const noexcept;
    Row& open_entry(List* list, const Selector& selector, std::size_t depth);
    Row& open_row(const Path& path, std::size_t count);
    const Row* find_place(const Path& path) const noexcept;
    Row& edit_place(const Path& path);  // what find_place() finds, unshared with every row and node on the way

    std::shared_ptr<const schema::Schema> schema_;
    RowRef root_;
    std::shared_ptr<const std::vector<ForeignPart>> foreign_;
    uint64_t openings_ = 0;
    Notes notes_;
    mutable LastEntries last_;
};

}  // namespace bgp_platform::store
