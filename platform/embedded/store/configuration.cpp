// Look-ups and writes by path. A write first looks whether it can be done, and unshares the road to its place only
// then, so that a refused write leaves everything shared.
#include "store/configuration.h"

#include <algorithm>
#include <new>

namespace bgp_platform::store {
namespace {

using schema::Node;
using schema::NodeKind;
using schema::Value;

const Row* find_entry(const Row& around, const Selector& selector) noexcept
{
    const List& list = around.list(selector.list->slot);
    return selector.position >= 0 ? list.at(static_cast<std::size_t>(selector.position))
                                  : list.find(selector.keys.data(), selector.keys.size());
}

// The row that the first `count` selectors lead to; null when one of the entries is not there.
const Row* follow(const Row& root, const std::vector<Selector>& selectors, std::size_t count) noexcept
{
    const Row* row = &root;
    for (std::size_t i = 0; row != nullptr && i < count; ++i) {
        row = find_entry(*row, selectors[i]);
    }
    return row;
}

// The same for writing; every entry is there.
Row& follow_for_edit(Row& root, const std::vector<Selector>& selectors, std::size_t count)
{
    Row* row = &root;
    for (std::size_t i = 0; i < count; ++i) {
        List& list = row->list(selectors[i].list->slot);
        const Row* const at = selectors[i].position < 0 ? nullptr : find_entry(*row, selectors[i]);
        row = at == nullptr ? &list.edit_known(selectors[i].keys.data(), selectors[i].keys.size())
                            : &list.edit_known(at->keys(), at->record().keys);
    }
    return *row;
}

// How many selectors lead to the row whose slot is the path's node: without the one that picks an entry of it.
std::size_t selectors_around(const Path& path) noexcept
{
    return path.names_entry() ? path.entries.size() - 1 : path.entries.size();
}

// Whether every presence container between the node and its row is there.
bool place_exists(const Row& row, const Node& node) noexcept
{
    for (const Node* around = node.parent; around != nullptr && !around->is_list(); around = around->parent) {
        if (around->kind == NodeKind::Presence && row.value(around->slot).absent()) {
            return false;
        }
    }
    return true;
}

bool has_content(const Row& row, const Node& node) noexcept
{
    if (node.is_list()) {
        return !row.list(node.slot).empty();
    }
    if (node.kind != NodeKind::Container && row.value(node.slot)) {
        return true;
    }
    return std::any_of(node.children.begin(), node.children.end(),
                       [&](const Node* child) { return has_content(row, *child); });
}

void clear_content(Row& row, const Node& node) noexcept
{
    if (node.is_list()) {
        row.list(node.slot).clear();
        return;
    }
    if (node.kind != NodeKind::Container) {
        row.value(node.slot) = Value();
    }
    for (const Node* child : node.children) {
        clear_content(row, *child);
    }
}

void set_key(Row& row, const std::vector<Value>& keys) noexcept
{
    for (std::size_t i = 0; i < keys.size(); ++i) {
        row.value(static_cast<uint16_t>(i)) = keys[i];
    }
}

// Whether the node is there or not and has no more to tell: a presence container, a leaf of type empty.
bool is_mark(const Node& node) noexcept
{
    return node.kind == NodeKind::Presence ||
           (node.kind == NodeKind::Leaf && node.type->base == schema::BaseType::Empty);
}

bool same_entries(const List& left, const List& right) noexcept
{
    List::Iterator other = right.begin();
    for (List::Iterator entry = left.begin(); entry; ++entry, ++other) {
        if (!other || (*entry)->value(0) != (*other)->value(0)) {
            return false;
        }
    }
    return !other;
}

// Whether the row has what it shall be given, so that nothing is to be written.
bool has_already(const Row& row, const NodeValue& given) noexcept
{
    return given.node->is_list() ? same_entries(row.list(given.node->slot), given.entries)
                                 : row.value(given.node->slot) == given.value;
}

}  // namespace

Configuration::Configuration(std::shared_ptr<const schema::Schema> schema)
    : schema_(std::move(schema)), root_(schema_->root())
{
}

const Row* Configuration::find_row(const Path& path) const noexcept
{
    return follow(*root_, path.entries, path.entries.size());
}

// The row around the path's node, where a value or entry of it can stand; null when something on the way is not there.
const Row* Configuration::find_place(const Path& path) const noexcept
{
    const Row* row = follow(*root_, path.entries, selectors_around(path));
    return row != nullptr && (path.node == nullptr || place_exists(*row, *path.node)) ? row : nullptr;
}

Row& Configuration::edit_place(const Path& path)
{
    return follow_for_edit(edit_root(), path.entries, selectors_around(path));
}

Row* Configuration::edit_row(const Path& path)
{
    return find_row(path) == nullptr ? nullptr : &follow_for_edit(edit_root(), path.entries, path.entries.size());
}

Value Configuration::get(const Path& leaf) const noexcept
{
    const Row* row = find_place(leaf);
    if (row == nullptr || leaf.node == nullptr || leaf.node->is_list() || leaf.node->kind == NodeKind::Container) {
        return Value();
    }
    const Value& value = row->value(leaf.node->slot);
    return value ? value : leaf.node->default_value;
}

const List* Configuration::find_list(const Path& list) const noexcept
{
    const Row* row = find_place(list);
    return row != nullptr && list.node != nullptr && list.node->is_list() ? &row->list(list.node->slot) : nullptr;
}

std::size_t Configuration::count(const Path& list) const noexcept
{
    const List* entries = find_list(list);
    return entries == nullptr ? 0 : entries->size();
}

bool Configuration::hangs(const Path& path) const noexcept
{
    const bool whole_list = path.node != nullptr && path.node->is_list() && !path.names_entry();
    const std::size_t innermost = path.entries.size() - (whole_list || path.entries.empty() ? 0 : 1);
    return follow(*root_, path.entries, innermost) == nullptr;
}

bool Configuration::exists(const Path& path) const noexcept
{
    if (path.names_entry()) {
        return find_row(path) != nullptr;
    }
    if (path.node == nullptr || path.node->kind == NodeKind::Container) {
        return find_place(path) != nullptr;
    }
    return path.node->is_list() ? count(path) > 0 : !get(path).absent();
}

Result Configuration::create(const Path& path)
{
    if (!path.names_entry() && (path.node == nullptr || !is_mark(*path.node))) {
        return Result::NotCreatable;
    }
    if (find_place(path) == nullptr) {
        return Result::NotFound;
    }
    if (exists(path)) {
        return Result::AlreadyExists;
    }
    if (!path.names_entry()) {
        edit_place(path).value(path.node->slot) = Value::present();
        return Result::Ok;
    }
    const std::vector<Value>& keys = path.entries.back().keys;
    if (keys.size() != path.node->entry->keys) {
        return Result::NotCreatable;  // by position or with a part of the key: no entry could be told from others
    }
    RowRef entry(*path.node->entry);
    set_key(entry.edit(), keys);
    edit_place(path).list(path.node->slot).insert_new(std::move(entry));
    return Result::Ok;
}

Result Configuration::remove(const Path& path)
{
    if (path.node == nullptr) {
        return Result::NotDeletable;
    }
    const Row* place = find_place(path);
    if (place == nullptr) {
        return Result::NotFound;
    }
    if (path.names_entry()) {
        const Row* entry = find_row(path);
        if (entry == nullptr) {
            return Result::NotFound;
        }
        edit_place(path).list(path.node->slot).take_known(entry->keys(), entry->record().keys);
        return Result::Ok;
    }
    if (path.node->key) {
        return Result::NotDeletable;
    }
    if (!has_content(*place, *path.node)) {
        return Result::NotFound;
    }
    clear_content(edit_place(path), *path.node);
    return Result::Ok;
}

// The row that a path's entries lead to, looked for once; opened for writing when something changes.
class Configuration::FoundRow {
public:
    FoundRow(Configuration* configuration, const Path& path)
        : configuration_(*configuration), path_(path), row_(configuration->find_row(path))
    {
    }
    explicit operator bool() const noexcept { return row_ != nullptr; }
    const Row& operator*() const noexcept { return *row_; }
    Row& edit()
    {
        if (open_ == nullptr) {
            row_ = open_ = &follow_for_edit(configuration_.edit_root(), path_.entries, path_.entries.size());
        }
        return *open_;
    }

private:
    Configuration& configuration_;
    const Path& path_;
    const Row* row_;
    Row* open_ = nullptr;
};

Result Configuration::set_in(FoundRow* row, NodeValue* given)
{
    const Node& node = *given->node;
    const bool takes_away = given->value.absent() && given->entries.empty();
    if (!place_exists(**row, node)) {
        return takes_away ? Result::Ok : Result::NotFound;
    }
    if (has_already(**row, *given)) {
        return Result::Ok;
    }
    if (node.key) {
        return Result::NotWritable;
    }
    Row& open = row->edit();
    if (node.is_list()) {
        open.list(node.slot) = std::move(given->entries);
    } else if (takes_away) {
        clear_content(open, node);
    } else {
        open.value(node.slot) = std::move(given->value);
    }
    return Result::Ok;
}

Result Configuration::set(const Path& leaf, Value value)
{
    if (leaf.node == nullptr || leaf.node->kind != NodeKind::Leaf || value.absent()) {
        return Result::NotWritable;
    }
    FoundRow row(this, leaf);
    NodeValue given{leaf.node, std::move(value), {}};
    return row ? set_in(&row, &given) : Result::NotFound;
}

Result Configuration::set_all(const Path& path, std::vector<NodeValue> values)
{
    FoundRow row(this, path);
    if (!row) {
        return Result::NotFound;
    }
    for (NodeValue& given : values) {
        if (const Result result = set_in(&row, &given); result != Result::Ok) {
            return result;
        }
    }
    return Result::Ok;
}

Result Configuration::move(const Path& entry, const std::vector<Value>& to_key)
{
    if (!entry.names_entry() || entry.node->kind != NodeKind::List || to_key.size() != entry.node->entry->keys) {
        return Result::NotMovable;
    }
    const Row* row = find_row(entry);
    if (row == nullptr || find_place(entry) == nullptr) {
        return Result::NotFound;
    }
    const Row* there = find_list(entry)->find(to_key.data(), to_key.size());
    if (there != nullptr) {
        return there == row ? Result::Ok : Result::AlreadyExists;
    }
    RowRef moved(*row);
    set_key(moved.edit(), to_key);
    List& list = edit_place(entry).list(entry.node->slot);
    list.insert_new(std::move(moved));
    try {
        list.take_known(row->keys(), row->record().keys);
    } catch (const std::bad_alloc&) {
        list.take_known(to_key.data(), to_key.size());  // which its insertion has made ready for
        throw;
    }
    return Result::Ok;
}

}  // namespace bgp_platform::store
