#include "xml/row_builder.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "schema/quote.h"
#include "store/changes.h"

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

std::size_t RowBuilder::NameHash::operator()(const Name& name) const noexcept
{
    return std::hash<const void*>()(name.parent) * 31 + std::hash<const void*>()(name.name);
}

RowBuilder::RowBuilder(store::Configuration* into, const Limits& limits) : limits_(limits), schema_(into->schema())
{
    Open outside;
    outside.row = &into->edit_root();
    outside.next = &first_;
    open_.push_back(std::move(outside));
}

void RowBuilder::start_element(const StartTag& tag)
{
    try {
        open(tag);
    } catch (const Refusal&) {
        spoil();
        throw;
    }
    if (!tag.attributes.empty()) {
        refuse_attribute(tag);
    }
}

void RowBuilder::open(const StartTag& tag)
{
    const Open& around = open_.back();
    if (holds_text(around.node)) {
        refuse_in_leaf(tag);
    }
    Known& known = find(tag);
    const Node& node = *known.node;
    store::Row* const row = around.row;
    if (node.kind == NodeKind::List) {
        count_entry(tag.line);
    } else if (node.kind == NodeKind::Presence) {
        row->value(node.slot) = Value::present();
    }
    Open& opened = open_.emplace_back();
    opened.node = &node;
    opened.row = row;
    opened.next = &known.inside;
    opened.line = tag.line;
    if (node.kind == NodeKind::List) {
        opened.entry = store::RowRef(*node.entry);
        opened.row = &opened.entry.edit();
    }
    text_.clear();
}

Refusal RowBuilder::refused_attribute(const StartTag& tag) const
{
    const Attribute& attribute = tag.attributes.front();
    const std::string prefix = attribute.prefix.empty() ? "" : std::string(attribute.prefix) + ":";
    return refusal(tag.line, "the attribute " + shortened(prefix + std::string(attribute.name)) +
                                 " is not supported; only xmlns is");
}

RowBuilder::Known& RowBuilder::find(const StartTag& tag)
{
    Open& around = open_.back();
    Known*& next = *around.next;
    if (next == nullptr || next->name != tag.name || next->uri != tag.uri) {
        next = &find_known(tag);
    }
    around.next = &next->behind;
    return *next;
}

RowBuilder::Known& RowBuilder::find_known(const StartTag& tag)
{
    const Name name{open_.back().node, tag.name, tag.uri};
    const auto at = known_.find(name);
    if (at != known_.end()) {
        return at->second;
    }
    return known_.emplace(name, Known{tag.name, tag.uri, &find_node(tag)}).first->second;
}

const Node& RowBuilder::find_node(const StartTag& tag) const
{
    const Node* const node = look_up(open_.back().node, tag.name, tag.uri);
    if (node == nullptr) {
        refuse_name(tag);
    }
    if (node->state) {
        refuse(tag.line, element(tag.name) + " is state, not configuration");
    }
    return *node;
}

// Null when the schema has no such node there, or in another namespace.
const Node* RowBuilder::look_up(const Node* parent, const char* name, const char* uri) const
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

void RowBuilder::end_element()
{
    const Open& closed = open_.back();
    if (closed.spoilt && holds_text(closed.node)) {
        drop_spoilt();
        return;
    }
    try {
        close(closed);
    } catch (const Refusal&) {
        drop_spoilt();
        throw;
    }
    open_.pop_back();
}

// The innermost element is no part of the one around it, which lacks it.
void RowBuilder::drop_spoilt()
{
    open_.pop_back();
    spoil();
}

void RowBuilder::close(const Open& closed)
{
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

void RowBuilder::close_leaf(const Open& leaf)
{
    Value& slot = leaf.row->value(leaf.node->slot);
    if (!slot.absent()) {
        refuse(leaf.line, "the leaf stands here twice");
    }
    read_value(leaf, &slot);
}

void RowBuilder::close_leaf_list_entry(const Open& entry)
{
    count_entry(entry.line);
    store::RowRef row(*entry.node->entry);
    read_value(entry, &row.edit().value(0));
    if (!entry.row->list(entry.node->slot).insert(std::move(row))) {
        refuse(entry.line, "the value " + in_quotes(trimmed(text_)) + " stands here twice");
    }
}

void RowBuilder::count_entry(int line)
{
    if (entries_ == limits_.entries) {
        refuse_entry(line);
    }
    ++entries_;
}

void RowBuilder::close_list_entry(const Open& entry)
{
    if (const Node* const key = missing_key(*entry.entry)) {
        if (entry.spoilt) {
            return;
        }
        refuse(entry.line, "an entry without its key " + key->name);
    }
    const Open& around = open_[open_.size() - 2];
    if (!around.row->list(entry.node->slot).insert(entry.entry)) {
        refuse(entry.line, "the entry stands here twice");
    }
}

// What is no value leaves none.
void RowBuilder::read_value(const Open& leaf, Value* value) const
{
    const schema::Type& type = *leaf.node->type;
    const std::string_view given = type.base == schema::BaseType::Text ? std::string_view(text_) : trimmed(text_);
    if (!type.parse(given, value)) {
        refuse_value(leaf, given);
    }
}

void RowBuilder::text(std::string_view piece, int line)
{
    const Open& around = open_.back();
    if (!holds_text(around.node)) {
        pass_white(piece, line);
    } else if (!around.spoilt) {
        add_to_value(piece);
    }
}

void RowBuilder::pass_white(std::string_view piece, int line)
{
    Open& around = open_.back();
    const auto first = std::find_if_not(piece.begin(), piece.end(), is_blank);
    if (first == piece.end() || around.stray) {
        return;
    }
    around.stray = true;
    const auto lines_behind = std::count(first, piece.end(), '\n');
    refuse(line - static_cast<int>(lines_behind),
           "text " + in_quotes(trimmed(piece)) + " stands where elements belong");
}

void RowBuilder::add_to_value(std::string_view piece)
{
    if (piece.size() > limits_.value_bytes - text_.size()) {
        refuse_size();
    }
    text_ += piece;
}

bool RowBuilder::in_secret() const
{
    const Node* const around = open_.back().node;
    return around != nullptr && is_secret(*around);
}

Refusal RowBuilder::refusal(int line, std::string_view what) const
{
    return {line, path().append(": ").append(what)};
}

void RowBuilder::refuse(int line, std::string_view what) const
{
    throw refusal(line, what);
}

void RowBuilder::refuse_attribute(const StartTag& tag)
{
    const Refusal refusal = refused_attribute(tag);
    drop_spoilt();
    throw refusal;
}

void RowBuilder::refuse_in_leaf(const StartTag& tag) const
{
    refuse(tag.line, (is_secret(*open_.back().node) ? "an element" : element(tag.name)) + " stands in a leaf");
}

void RowBuilder::refuse_value(const Open& leaf, std::string_view text) const
{
    Value none;
    std::string why;
    parse_value(*leaf.node, text, &none, &why);
    refuse(leaf.line, why);
}

void RowBuilder::refuse_size()
{
    spoil();
    refuse(open_.back().line, "a value of more than " + std::to_string(limits_.value_bytes) + " bytes");
}

void RowBuilder::refuse_entry(int line) const
{
    Refusal last = refusal(line, "an entry beyond the " + std::to_string(limits_.entries) + " that are allowed");
    last.final = true;
    throw last;
}

void RowBuilder::refuse_name(const StartTag& tag) const
{
    const Node* const parent = open_.back().node;
    const Node* const namesake = parent == nullptr ? schema_.top_node(tag.name, nullptr) : parent->child(tag.name);
    if (namesake == nullptr) {
        refuse(tag.line, element(tag.name) + " is not in the data model");
    }
    const std::string found = tag.uri == nullptr ? "no namespace" : "the namespace " + in_quotes(tag.uri);
    refuse(tag.line, element(tag.name) + " has " + found + " instead of " + in_quotes(namesake->module->uri));
}

std::string RowBuilder::path() const
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
