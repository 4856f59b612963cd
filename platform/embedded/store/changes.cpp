// Compares two configurations row by row, going only where they are not shared.
#include "store/changes.h"

#include <algorithm>
#include <cstddef>

namespace bgp_platform::store {
namespace {

using schema::Node;
using schema::NodeKind;

class Comparison {
public:
    explicit Comparison(ChangeVisitor& visitor) : visitor_(visitor) {}

    // Compares what the nodes hold in two rows; the trail ends in `after`.
    void compare(const std::vector<const Node*>& nodes, const Row& before, const Row& after)
    {
        for (const Node* node : nodes) {
            if (node->is_list()) {
                compare_lists(before.list(node->slot), after.list(node->slot));
                continue;
            }
            if (node->kind != NodeKind::Container && before.value(node->slot) != after.value(node->slot)) {
                visitor_.leaf_changed(trail_, *node, before.value(node->slot), after.value(node->slot));
            }
            compare(node->children, before, after);
        }
    }

private:
    void compare_lists(const List& before, const List& after)
    {
        List::walk_differences(before, after, [this](const Row* old_entry, const Row* new_entry) {
            if (new_entry == nullptr) {
                visitor_.entry_deleted(trail_, *old_entry);
            } else if (old_entry == nullptr) {
                visitor_.entry_created(trail_, *new_entry);
            } else {
                trail_.push_back(new_entry);
                compare(new_entry->record().owner->children, *old_entry, *new_entry);
                trail_.pop_back();
            }
        });
    }

    ChangeVisitor& visitor_;
    Trail trail_;
};

// Whether a value's text can need quotes: that of numbers, addresses and octets never does.
bool may_need_quotes(const schema::Value& value)
{
    return value.is_text() || value.kind() == schema::Value::Kind::Enum;
}

// What a key cannot hold without quotes.
bool is_special(char c)
{
    switch (c) {
        case ' ':
        case '\t':
        case '\r':
        case '\n':
        case '{':
        case '}':
        case '"':
        case '\\':
            return true;
        default:
            return false;
    }
}

// Appends the way from below `around` (null: from the top) down to the node, "/a/b".
void append_way(const Node* around, const Node* node, std::string* path)
{
    if (node != around && node != nullptr) {
        append_way(around, node->parent, path);
        path->append("/").append(node->name);
    }
}

// Appends the way from one row down to an entry below it, "/a/b{key}".
void append_entry(const Node* around, const Row& entry, std::string* path)
{
    append_way(around, entry.record().owner, path);
    path->append("{").append(key_text(entry)).append("}");
}

}  // namespace

void walk_changes(const Configuration& before, const Configuration& after, ChangeVisitor& visitor)
{
    if (&before.root() != &after.root()) {
        Comparison(visitor).compare(after.schema().top_nodes(), before.root(), after.root());
    }
}

std::string keypath(const Trail& around, const Row* entry)
{
    std::string path;
    const Node* owner = nullptr;
    for (const Row* row : around) {
        append_entry(owner, *row, &path);
        owner = row->record().owner;
    }
    if (entry != nullptr) {
        append_entry(owner, *entry, &path);
    }
    return path;
}

std::string keypath(const Trail& row, const schema::Node& node)
{
    std::string path = keypath(row, nullptr);
    append_way(row.empty() ? nullptr : row.back()->record().owner, &node, &path);
    return path;
}

std::string way_below(const Node* list, const Node& node)
{
    std::string path;
    append_way(list, &node, &path);
    return path;
}

std::string key_text(const Row& entry)
{
    const schema::Record& record = entry.record();
    std::string text;
    for (uint16_t i = 0; i < record.keys; ++i) {
        if (i > 0) {
            text += ' ';
        }
        append_key(*record.values[i]->type, entry.value(i), &text);
    }
    return text;
}

void append_key(const schema::Type& type, const schema::Value& value, std::string* text)
{
    const std::size_t start = text->size();
    type.append_text(value, text);
    if (text->size() > start &&
        (!may_need_quotes(value) ||
         std::none_of(text->begin() + static_cast<std::ptrdiff_t>(start), text->end(), is_special))) {
        return;
    }
    const std::string plain = text->substr(start);
    text->resize(start);
    text->push_back('"');
    for (const char c : plain) {
        if (c == '"' || c == '\\') {
            text->push_back('\\');
        }
        text->push_back(c);
    }
    text->push_back('"');
}

}  // namespace bgp_platform::store
