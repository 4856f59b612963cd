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
    : schema_(std::move(schema)), root_(schema_->root()), foreign_(std::make_shared<const std::vector<ForeignPart>>())
{
}

void Configuration::add_foreign(std::vector<ForeignPart> parts)
{
    if (!foreign_->empty()) {
        parts.insert(parts.begin(), foreign_->begin(), foreign_->end());
    }
    foreign_ = std::make_shared<const std::vector<ForeignPart>>(std::move(parts));
}

const Row* Configuration::find_entry(const List& list, const Selector& selector, std::size_t depth) const noexcept
{
    if (selector.position >= 0) {
        return list.at(static_cast<std::size_t>(selector.position));
    }
    const Row* row = last_.find(depth, list, selector.keys.data(), selector.keys.size());
    if (row == nullptr) {
        row = list.find(selector.keys.data(), selector.keys.size());
        if (row != nullptr) {
            last_.set(depth, list, *row);
        }
    }
    return row;
}

// The row that the first `count` selectors of a path lead to; null when one of the entries is not there.
const Row* Configuration::follow(const Path& path, std::size_t count) const noexcept
{
    const Row* row = root_.get();
    for (std::size_t i = 0; row != nullptr && i < count; ++i) {
        row = find_entry(row->list(path.entries[i].list->slot), path.entries[i], i);
    }
    return row;
}

// The same for writing; every entry is there.
Row& Configuration::open_row(const Path& path, std::size_t count)
{
    ++openings_;
    Row* row = &root_.edit();
    for (std::size_t i = 0; i < count; ++i) {
        row = &open_entry(&row->list(path.entries[i].list->slot), path.entries[i], i);
    }
    last_.forget_from(count);
    return *row;
}

Row& Configuration::open_entry(List* list, const Selector& selector, std::size_t depth)
{
    const Row* const at = selector.position < 0 ? nullptr : find_entry(*list, selector, depth);
    const Value* const keys = at == nullptr ? selector.keys.data() : at->keys();
    const std::size_t count = at == nullptr ? selector.keys.size() : at->record().keys;
    if (Row* const own = last_.find_own(depth, *list, keys, count)) {
        return *own;
    }
    last_.forget_from(depth);
    Row& row = list->edit_known(keys, count);
    last_.set_own(depth, *list, &row);
    return row;
}

const Row* Configuration::find_row(const Path& path) const noexcept
{
    return follow(path, path.entries.size());
}

// The row around the path's node, where a value or entry of it can stand; null when something on the way is not there.
const Row* Configuration::find_place(const Path& path) const noexcept
{
    const Row* row = follow(path, selectors_around(path));
    return row != nullptr && (path.node == nullptr || place_exists(*row, *path.node)) ? row : nullptr;
}

Row& Configuration::edit_place(const Path& path)
{
    return open_row(path, selectors_around(path));
}

Row* Configuration::edit_row(const Path& path)
{
    return find_row(path) == nullptr ? nullptr : &open_row(path, path.entries.size());
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
    return follow(path, innermost) == nullptr;
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
    room_for_note();
    if (!path.names_entry()) {
        Row& row = edit_place(path);
        row.value(path.node->slot) = Value::present();
        note_written(row, *path.node);
        return Result::Ok;
    }
    const std::vector<Value>& keys = path.entries.back().keys;
    if (keys.size() != path.node->entry->keys) {
        return Result::NotCreatable;  // by position or with a part of the key: no entry could be told from others
    }
    RowRef entry(*path.node->entry);
    Row& made = entry.edit();
    set_key(made, keys);
    Row& place = edit_place(path);
    List& list = place.list(path.node->slot);
    list.insert_new(std::move(entry));
    last_.set_own(path.entries.size() - 1, list, &made);
    if (path.node->kind == NodeKind::LeafList) {
        note_written(place, *path.node);
    } else if (notes_.history != nullptr) {
        notes_.history->note_made(made);
    }
    return Result::Ok;
}

void Configuration::room_for_note() const
{
    if (notes_.history != nullptr) {
        notes_.history->room_for(1);
    }
}

void Configuration::note_written(const Row& row, const Node& node) const noexcept
{
    if (notes_.history != nullptr) {
        notes_.history->note_written(row, node);
    }
}

// Of a node that is about to lose its content: what is set in it, and the entries of its lists. `stored` is the row's own.
void Configuration::note_cleared(const Row& row, const Row* stored, const Node& node)
{
    History& history = *notes_.history;
    if (node.kind == NodeKind::List) {
        const List* const before = stored == nullptr ? nullptr : &stored->list(node.slot);
        history.room_for(row.list(node.slot).size());
        row.list(node.slot).for_each(
            [&](const Row& entry) { history.note_left(entry, history.stored_entry(entry, before)); });
        return;
    }
    if (node.kind != NodeKind::Container && has_content(row, node)) {
        history.room_for(1);
        history.note_written(row, node);
    }
    for (const Node* child : node.children) {
        note_cleared(row, stored, *child);
    }
}

// An entry that is there.
Result Configuration::take_entry(const Path& path)
{
    const Row& entry = *find_row(path);
    room_for_note();
    History* const history = notes_.history;
    const Row* const stored = history == nullptr ? nullptr : history->stored_row(*this, path.entries);
    Row& place = edit_place(path);
    const RowRef taken = place.list(path.node->slot).take_known(entry.keys(), entry.record().keys);
    if (path.node->kind == NodeKind::LeafList) {
        note_written(place, *path.node);
    } else if (history != nullptr) {
        history->note_left(*taken, stored);
    }
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
        return find_row(path) == nullptr ? Result::NotFound : take_entry(path);
    }
    if (path.node->key) {
        return Result::NotDeletable;
    }
    if (!has_content(*place, *path.node)) {
        return Result::NotFound;
    }
    Row& open = edit_place(path);
    if (notes_.history != nullptr) {
        note_cleared(open, notes_.history->stored_row(*this, path.entries), *path.node);
    }
    clear_content(open, *path.node);
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
            row_ = open_ = &configuration_.open_row(path_, path_.entries.size());
        }
        return *open_;
    }
    const Row* stored(const History& history) const noexcept
    {
        return history.stored_row(configuration_, path_.entries);
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
    room_for_note();
    Row& open = row->edit();
    if (takes_away && notes_.history != nullptr && node.is_container()) {
        note_cleared(open, row->stored(*notes_.history), node);
    }
    if (node.is_list()) {
        open.list(node.slot) = std::move(given->entries);
    } else if (takes_away) {
        clear_content(open, node);
    } else {
        open.value(node.slot) = std::move(given->value);
    }
    note_written(open, node);
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
    room_for_note();
    const Row* const stored = notes_.history == nullptr ? nullptr : notes_.history->stored_row(*this, entry.entries);
    RowRef moved(*row);
    Row& moved_row = moved.edit();
    set_key(moved_row, to_key);
    List& list = edit_place(entry).list(entry.node->slot);
    list.insert_new(std::move(moved));
    try {
        list.take_known(row->keys(), row->record().keys);
    } catch (const std::bad_alloc&) {
        list.take_known(to_key.data(), to_key.size());  // which its insertion has made ready for
        throw;
    }
    last_.set_own(entry.entries.size() - 1, list, &moved_row);
    if (notes_.history != nullptr) {
        notes_.history->note_left(moved_row, stored);
    }
    return Result::Ok;
}

}  // namespace bgp_platform::store
