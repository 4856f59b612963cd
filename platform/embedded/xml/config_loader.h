// Turns the elements of a configuration file, as they come, into rows: finds each element's node in the schema, checks
// its value and its place, and puts an entry into its list once it is complete.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "store/configuration.h"
#include "xml/config_reader.h"

namespace bgp_platform::xml {

// The parts of a document in the order in which they stand there. Every function throws LoadError (config_reader.h) for
// what the schema does not allow. `line` is where the part stands.
class ConfigLoader {
public:
    ConfigLoader(std::string file, store::Configuration* into, const Limits& limits);

    // An element's name and namespace (null: none) are interned by the caller: the same text has the same address.
    void start_element(const char* name, const char* uri, int line);
    void end_element();

    // Text comes in pieces of any size. The line is that of the piece's end.
    void text(std::string_view piece, int line);

    // Attributes mean nothing here: the one just opened has one.
    [[noreturn]] void refuse_attribute(std::string_view attribute) const;

    // What the parser itself finds wrong, or is not allowed. Nothing of it is shown where a password stands.
    [[noreturn]] void refuse_markup(int line, const std::string& what) const;

private:
    // An element that is open.
    struct Open {
        const schema::Node* node = nullptr;  // null: the outermost element
        store::RowRef entry;                 // of a list entry: its row, not yet in the list
        store::Row* row = nullptr;           // the row around, or the entry's: holds the slots of what stands inside
        int line = 0;
    };

    struct Name {
        const schema::Node* parent;
        const char* name;
        bool operator==(const Name& other) const noexcept { return parent == other.parent && name == other.name; }
    };
    struct NameHash {
        std::size_t operator()(const Name& name) const noexcept;
    };
    struct Known {
        const char* uri;
        const schema::Node* node;
    };

    void open_document(const char* name, const char* uri, int line);
    const schema::Node& find_node(const char* name, const char* uri, int line);
    const schema::Node* look_up(const schema::Node* parent, const char* name, const char* uri) const;
    void close_leaf(const Open& leaf);
    void close_leaf_list_entry(const Open& entry);
    void close_list_entry(const Open& entry);
    schema::Value value_of(const Open& leaf) const;

    void count_entry(int line);

    [[noreturn]] void refuse_document(int line, const std::string& what) const;
    [[noreturn]] void refuse(int line, const std::string& what) const;  // at the innermost open element
    [[noreturn]] void refuse_name(const char* name, const char* uri, int line) const;
    std::string path() const;

    std::string file_;
    Limits limits_;
    std::size_t entries_ = 0;
    const schema::Schema& schema_;
    store::Row& root_;
    std::vector<Open> open_;
    std::string text_;  // of the leaf that is open
    std::unordered_map<Name, Known, NameHash> known_;
};

}  // namespace bgp_platform::xml
