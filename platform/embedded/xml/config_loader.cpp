// From elements to rows.
#include "xml/config_loader.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "schema/quote.h"
#include "store/changes.h"
#include "xml/config_reader.h"
#include "xml/load_format.h"

namespace bgp_platform::xml {

using schema::in_quotes;
using schema::Node;
using schema::NodeKind;
using schema::shortened;
using schema::Value;

namespace {

bool is_blank(char letter)
{
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && is_blank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && is_blank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool holds_text(const Node* node)
{
    return node != nullptr && (node->kind == NodeKind::Leaf || node->kind == NodeKind::LeafList);
}

std::string element(std::string_view name)
{
    return "element <" + shortened(name) + ">";
}

const Node* missing_key(const store::Row& entry)
{
    for (uint16_t slot = 0; slot < entry.record().keys; ++slot) {
        if (entry.value(slot).absent()) {
            return entry.record().values[slot];
        }
    }
    return nullptr;
}

}  // namespace

std::size_t ConfigLoader::NameHash::operator()(const Name& name) const noexcept
{
    return std::hash<const void*>()(name.parent) * 31 + std::hash<const void*>()(name.name);
}

ConfigLoader::ConfigLoader(std::string file, store::Configuration* into, const Limits& limits)
    : file_(std::move(file)), limits_(limits), schema_(into->schema()), root_(into->edit_root())
{
}

void ConfigLoader::start_element(const char* name, const char* uri, int line)
{
    if (open_.empty()) {
        open_document(name, uri, line);
        return;
    }
    const Open& around = open_.back();
    if (holds_text(around.node)) {
        refuse(line, (is_secret(*around.node) ? "an element" : element(name)) + " stands in a leaf");
    }
    const Node& node = find_node(name, uri, line);
    Open opened{&node, {}, around.row, line};
    if (node.kind == NodeKind::List) {
        count_entry(line);
        opened.entry = store::RowRef(*node.entry);
        opened.row = &opened.entry.edit();
    } else if (node.kind == NodeKind::Presence) {
        opened.row->value(node.slot) = Value::present();
    }
    open_.push_back(std::move(opened));
    text_.clear();
}

void ConfigLoader::open_document(const char* name, const char* uri, int line)
{
    if (name != std::string_view(kConfigElement) || uri == nullptr || uri != std::string_view(kConfigNamespace)) {
        refuse_document(line, "the outermost element is <" + shortened(name) + ">; a configuration stands in <" +
                                  kConfigElement + " xmlns=\"" + kConfigNamespace + "\">");
    }
    open_.push_back({nullptr, {}, &root_, line});
}

const Node& ConfigLoader::find_node(const char* name, const char* uri, int line)
{
    const Name key{open_.back().node, name};
    const auto at = known_.find(key);
    if (at != known_.end() && at->second.uri == uri) {
        return *at->second.node;
    }
    const Node* const node = look_up(key.parent, name, uri);
    if (node == nullptr) {
        refuse_name(name, uri, line);
    }
    if (node->state) {
        refuse(line, element(name) + " is state, not configuration");
    }
    known_.insert_or_assign(key, Known{uri, node});
    return *node;
}

// Null when the schema has no such node there, or in another namespace.
const Node* ConfigLoader::look_up(const Node* parent, const char* name, const char* uri) const
{
    if (uri == nullptr) {
        return nullptr;
    }
    const schema::Module* const module = schema_.module_by_uri(uri);
    if (module == nullptr) {
        return nullptr;
    }
    return parent == nullptr ? schema_.top_node(name, module) : parent->child(name, module);
}

void ConfigLoader::end_element()
{
    const Open& closed = open_.back();
    if (closed.node != nullptr) {
        switch (closed.node->kind) {
            case NodeKind::Leaf:
                close_leaf(closed);
                break;
            case NodeKind::LeafList:
                close_leaf_list_entry(closed);
                break;
            case NodeKind::List:
                close_list_entry(closed);
                break;
            case NodeKind::Container:
            case NodeKind::Presence:
                break;
        }
    }
    open_.pop_back();
}

void ConfigLoader::close_leaf(const Open& leaf)
{
    Value& slot = leaf.row->value(leaf.node->slot);
    if (!slot.absent()) {
        refuse(leaf.line, "the leaf stands here twice");
    }
    slot = value_of(leaf);
}

void ConfigLoader::close_leaf_list_entry(const Open& entry)
{
    count_entry(entry.line);
    store::RowRef row(*entry.node->entry);
    row.edit().value(0) = value_of(entry);
    if (!entry.row->list(entry.node->slot).insert(std::move(row))) {
        refuse(entry.line, "the value " + in_quotes(trimmed(text_)) + " stands here twice");
    }
}

void ConfigLoader::count_entry(int line)
{
    if (entries_ == limits_.entries) {
        refuse(line, "an entry beyond the " + std::to_string(limits_.entries) + " that are allowed");
    }
    ++entries_;
}

void ConfigLoader::close_list_entry(const Open& entry)
{
    if (const Node* const key = missing_key(*entry.entry)) {
        refuse(entry.line, "an entry without its key " + key->name);
    }
    const Open& around = open_[open_.size() - 2];
    if (!around.row->list(entry.node->slot).insert(entry.entry)) {
        refuse(entry.line, "the entry stands here twice");
    }
}

Value ConfigLoader::value_of(const Open& leaf) const
{
    const bool is_text = leaf.node->type->base == schema::BaseType::Text;
    Value value;
    std::string why;
    if (!parse_value(*leaf.node, is_text ? std::string_view(text_) : trimmed(text_), &value, &why)) {
        refuse(leaf.line, why);
    }
    return value;
}

void ConfigLoader::text(std::string_view piece, int line)
{
    if (!open_.empty() && holds_text(open_.back().node)) {
        if (piece.size() > limits_.value_bytes - text_.size()) {
            refuse(open_.back().line, "a value of more than " + std::to_string(limits_.value_bytes) + " bytes");
        }
        text_ += piece;
        return;
    }
    const auto first = std::find_if_not(piece.begin(), piece.end(), is_blank);
    if (first != piece.end()) {
        const auto lines_behind = std::count(first, piece.end(), '\n');
        refuse(line - static_cast<int>(lines_behind),
               "text " + in_quotes(trimmed(piece)) + " stands where elements belong");
    }
}

void ConfigLoader::refuse_attribute(std::string_view attribute) const
{
    refuse(open_.back().line, "the attribute " + shortened(attribute) + " is not supported; only xmlns is");
}

void ConfigLoader::refuse_markup(int line, const std::string& what) const
{
    if (open_.empty()) {
        refuse_document(line, what);
    }
    const Node* const around = open_.back().node;
    refuse(line, around != nullptr && is_secret(*around) ? "not well-formed; what stands here is not shown" : what);
}

void ConfigLoader::refuse_document(int line, const std::string& what) const
{
    throw LoadError(file_ + ":" + std::to_string(line) + ": " + what);
}

void ConfigLoader::refuse(int line, const std::string& what) const
{
    refuse_document(line, path() + ": " + what);
}

void ConfigLoader::refuse_name(const char* name, const char* uri, int line) const
{
    const Node* const parent = open_.back().node;
    const Node* const namesake = parent == nullptr ? schema_.top_node(name, nullptr) : parent->child(name);
    if (namesake == nullptr) {
        refuse(line, element(name) + " is not in the data model");
    }
    const std::string found = uri == nullptr ? "no namespace" : "the namespace " + in_quotes(uri);
    refuse(line, element(name) + " has " + found + " instead of " + in_quotes(namesake->module->uri));
}

// "/router/bgp{65010}/as-size" of the innermost open element; "/" of the outermost. Entries whose key is not whole
// stand without it.
std::string ConfigLoader::path() const
{
    std::string path;
    for (const Open& open : open_) {
        if (open.node == nullptr) {
            continue;
        }
        path += "/" + open.node->name;
        if (open.entry && missing_key(*open.entry) == nullptr) {
            path += "{" + shortened(store::key_text(*open.entry)) + "}";
        }
    }
    return path.empty() ? "/" : path;
}

}  // namespace bgp_platform::xml
