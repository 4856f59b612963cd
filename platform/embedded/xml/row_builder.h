// Turns the elements of the modules that the schema knows into rows: finds each element's node, checks its value and its
// place, and puts an entry into its list once it is complete.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "store/configuration.h"
#include "xml/limits.h"
#include "xml/start_tag.h"

namespace bgp_platform::xml {

// Why an element is refused.
struct Refusal {
    int line;
    std::string what;    // with the path
    bool final = false;  // the rest is not to be read
};

// Every function throws a Refusal for what the schema does not allow; what was read before stays. The elements around
// the top ones (wrappers) are the caller's. What would only follow from a refusal is not refused: an entry without the key
// whose value was.
class RowBuilder {
public:
    RowBuilder(store::Configuration* into, const Limits& limits);
    RowBuilder(const RowBuilder&) = delete;
    RowBuilder& operator=(const RowBuilder&) = delete;

    // Opens an element. One that is refused is not open. The texts of name and namespace are interned by the caller:
    // the same text has the same address.
    void start_element(const StartTag& tag);

    // Closes the innermost one, also where it throws.
    void end_element();

    // Text comes in pieces of any size. The line is that of the piece's end. What is refused is refused once for its
    // element.
    void text(std::string_view piece, int line);

    // What is said about an element with an attribute, which mean nothing here, at the innermost open one.
    Refusal refused_attribute(const StartTag& tag) const;

    // Whether an element is open.
    bool any_open() const noexcept { return open_.size() > 1; }

    // Whether the innermost open element holds what must not be shown.
    bool in_secret() const;

    // "/router/bgp{65010}/as-size" of the innermost open element; "/" where none is. Entries whose key is not whole stand
    // without it.
    std::string path() const;

private:
    // An element that was found in the schema. One that comes again mostly comes where it did: each knows which came
    // first inside it, and which came behind it, the last time.
    struct Known {
        const char* name;
        const char* uri;
        const schema::Node* node;
        Known* inside = nullptr;
        Known* behind = nullptr;
    };

    struct Open {
        const schema::Node* node = nullptr;  // null: what is around the top elements
        store::RowRef entry{};               // of a list entry: its row, not yet in the list
        store::Row* row = nullptr;           // the row around, or the entry's: holds the slots of what stands inside
        Known** next = nullptr;              // where it is kept which element came next inside
        int line = 0;
        bool spoilt = false;  // something in it was refused
        bool stray = false;   // text in it was refused
    };

    struct Name {
        const schema::Node* parent;
        const char* name;
        const char* uri;
        bool operator==(const Name& other) const noexcept
        {
            return parent == other.parent && name == other.name && uri == other.uri;
        }
    };
    struct NameHash {
        std::size_t operator()(const Name& name) const noexcept;
    };

    void open(const StartTag& tag);
    Known& find(const StartTag& tag);
    Known& find_known(const StartTag& tag);
    const schema::Node& find_node(const StartTag& tag) const;
    const schema::Node* look_up(const schema::Node* parent, const char* name, const char* uri) const;
    void close(const Open& closed);
    void close_leaf(const Open& leaf);
    void close_leaf_list_entry(const Open& entry);
    void close_list_entry(const Open& entry);
    void read_value(const Open& leaf, schema::Value* value) const;
    void add_to_value(std::string_view piece);
    void pass_white(std::string_view piece, int line);
    void spoil() noexcept { open_.back().spoilt = true; }
    void drop_spoilt();

    void count_entry(int line);

    Refusal refusal(int line, std::string_view what) const;  // at the innermost open element
    [[noreturn]] void refuse(int line, std::string_view what) const;
    [[noreturn]] void refuse_name(const StartTag& tag) const;
    [[noreturn]] void refuse_attribute(const StartTag& tag);
    [[noreturn]] void refuse_in_leaf(const StartTag& tag) const;
    [[noreturn]] void refuse_value(const Open& leaf, std::string_view text) const;
    [[noreturn]] void refuse_size();
    [[noreturn]] void refuse_entry(int line) const;

    Limits limits_;
    std::size_t entries_ = 0;
    const schema::Schema& schema_;
    std::vector<Open> open_;
    std::string text_;  // of the leaf that is open
    std::unordered_map<Name, Known, NameHash> known_;
    Known* first_ = nullptr;  // the top element that came first the last time
};

}  // namespace bgp_platform::xml
