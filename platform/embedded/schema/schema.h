// The data model: every node of the YANG modules, with its tag, its type and its place in a stored row.
//
// A schema is read once from YANG text through libyang and is immutable after that; that of the built-in modules was read
// when the platform was built, and is compiled in. Nodes live as long as their schema.
// A record is the shape of one row: the root of the tree, a list's entry, or the single value of a leaf-list's entry.
// Containers have no row of their own: their leaves are slots of the record around them.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "schema/type.h"
#include "schema/value.h"

namespace bgp_platform::schema {

struct Module {
    std::string name;
    std::string prefix;
    std::string uri;    // the namespace
    uint32_t hash = 0;  // of the URI
};

enum class NodeKind : uint8_t { Container, Presence, List, Leaf, LeafList };

struct Node;

struct Record {
    const Node* owner = nullptr;      // the list or leaf-list; null for the root
    uint16_t keys = 0;                // the first `keys` value slots are the key, in key order
    std::vector<const Node*> values;  // leaves and presence containers by slot
    std::vector<const Node*> lists;   // lists and leaf-lists by slot
};

struct Node {
    std::string name;
    const Module* module = nullptr;
    uint32_t tag = 0;  // hash of the name
    NodeKind kind = NodeKind::Container;
    const Node* parent = nullptr;       // null for a top node
    std::vector<const Node*> children;  // in schema order; empty for leaf and leaf-list
    const Type* type = nullptr;         // leaf, leaf-list
    Value default_value;                // leaf; absent when it has none
    const Record* record = nullptr;     // the record whose slot this is (containers: the record around them)
    uint16_t slot = 0;                  // leaf, presence: in Record::values; list, leaf-list: in Record::lists
    const Record* entry = nullptr;      // list, leaf-list: the shape of its entries
    bool key = false;                   // a key leaf of the list around it
    bool state = false;                 // config false
    bool secret = false;                // is_secret() of its name
    bool has_namesake = false;          // another module has a node of the same name beside it

    bool is_list() const noexcept { return kind == NodeKind::List || kind == NodeKind::LeafList; }
    bool is_container() const noexcept { return kind == NodeKind::Container || kind == NodeKind::Presence; }

    // The child of that name in that module; null when there is none. Without a module there must be just one.
    const Node* child(std::string_view child_name, const Module* in = nullptr) const noexcept;

    // The child of that tag in the namespace of that hash. Namespace 0 is this node's own, where no child of it has the
    // tag any other, if just one has.
    const Node* child(uint32_t child_tag, uint32_t name_space = 0) const noexcept;

    std::string path() const;  // "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", without keys and prefixes
};

// Whether a leaf's values are kept out of records, messages and reports: its name says password.
bool is_secret(std::string_view leaf_name);
inline bool is_secret(const Node& leaf)
{
    return leaf.secret;
}

// Type::parse() for a value of the leaf. What it says about a text that is none never shows a secret one.
bool parse_value(const Node& leaf, std::string_view text, Value* value, std::string* why);

// Type::from_confd() and to_confd() for a value of the leaf or leaf-list. A leaf of type empty is a C_XMLTAG of its own
// name, which its type does not know.
bool from_confd(const Node& leaf, const confd_value_t& confd, Value* value);
void to_confd(const Node& leaf, const Value& value, confd_value_t* confd);

// A YANG module as text.
struct ModuleText {
    std::string_view name;
    std::string_view text;
};

// The modules that the platform is built with (the folder yang/).
const std::vector<ModuleText>& builtin_modules();

class SchemaError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Schema {
public:
    // Reads the modules; throws SchemaError with libyang's message, or naming the node whose kind or type the platform
    // does not do.
    static std::shared_ptr<const Schema> from_modules(const std::vector<ModuleText>& modules);
    static std::shared_ptr<const Schema> from_folder(const std::string& folder);  // every *.yang in it
    static std::shared_ptr<const Schema> builtin();  // one for the process, made at first use

    ~Schema();
    Schema(const Schema&) = delete;
    Schema& operator=(const Schema&) = delete;

    const Record& root() const noexcept { return *root_; }
    const std::vector<const Node*>& top_nodes() const noexcept { return top_; }
    const Module* module_by_prefix(std::string_view prefix_or_name) const noexcept;
    const Module* module_by_hash(uint32_t hash) const noexcept;
    const Module* module_by_uri(std::string_view uri) const noexcept;

    // The top node of that name in that module (null module: among all modules, null unless just one has it).
    const Node* top_node(std::string_view name, const Module* module) const noexcept;

    // A node name or namespace URI of this schema by its hash; null when no name has it. Owned by the schema.
    const char* name_of(uint32_t hash) const noexcept;

    // Validates a configuration given as XML top elements without a wrapper: libyang's full validation (must, when,
    // leafref, mandatory, unique). Empty: valid; else the first message, with its path.
    std::string validate(const std::string& xml) const;

private:
    Schema();
    friend class CompiledSchema;
    friend class SchemaReader;

    struct Storage;  // what owns nodes, records, types, modules and the libyang context
    std::unique_ptr<Storage> storage_;
    const Record* root_ = nullptr;
    std::vector<const Node*> top_;
};

}  // namespace bgp_platform::schema
