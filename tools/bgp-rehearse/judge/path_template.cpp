#include "judge/path_template.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace bgp_rehearse {

using bgp_platform::schema::BaseType;
using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Schema;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Row;

namespace {

// The list whose entries hold a node; null for what stands in none.
const Node* list_around(const Node& node)
{
    const Node* around = node.parent;
    while (around != nullptr && around->kind != NodeKind::List) {
        around = around->parent;
    }
    return around;
}

// The next piece up to a character, which goes too.
std::string_view take_until(std::string_view* text, std::string_view any_of)
{
    const std::size_t end = std::min(text->find_first_of(any_of), text->size());
    const std::string_view piece = text->substr(0, end);
    text->remove_prefix(end);
    return piece;
}

const Node* child_of(const Schema& schema, const Node* parent, std::string_view name)
{
    return parent == nullptr ? schema.top_node(name, nullptr) : parent->child(name);
}

const Node& known_child(const Schema& schema, const Node* parent, std::string_view name)
{
    const Node* const child = child_of(schema, parent, name);
    if (child == nullptr) {
        throw std::invalid_argument(fmt::format("there is no node {}", name));
    }
    return *child;
}

// A leaf by its name, among those of a list's entries; null when it has none.
const Node* leaf_named(const Node& list, std::string_view name)
{
    const auto& leaves = list.entry->values;
    const auto found =
        std::find_if(leaves.begin(), leaves.end(), [name](const Node* leaf) { return leaf->name == name; });
    return found == leaves.end() ? nullptr : *found;
}

bool begins_with(const Row& row, const Value* keys, std::size_t count)
{
    return std::equal(keys, keys + count, row.keys());
}

}  // namespace

const Node* find_node(const Schema& schema, std::string_view path)
{
    const Node* node = nullptr;
    while (!path.empty()) {
        path.remove_prefix(1);
        node = child_of(schema, node, take_until(&path, "/"));
        if (node == nullptr) {
            return nullptr;
        }
    }
    return node;
}

const Value* value_in(const Row& row, const Node& leaf) noexcept
{
    const Value& value = row.value(leaf.slot);
    const Value& effective = value.absent() ? leaf.default_value : value;
    return effective.absent() ? nullptr : &effective;
}

Operand::Operand(std::string_view text, const Node* list, const Node* value, const Node& target) : target_(target.type)
{
    if (text.empty() || text.front() != '$') {
        std::string why;
        if (!target.type->parse(text, &literal_, &why)) {
            throw std::invalid_argument(fmt::format("\"{}\" is no {}: {}", text, target.name, why));
        }
        return;
    }
    text.remove_prefix(1);
    if (text == "value") {
        node_ = value;
    }
    for (const Node* around = list; node_ == nullptr && around != nullptr; around = list_around(*around)) {
        node_ = leaf_named(*around, text);
        outwards_ += node_ == nullptr ? 1 : 0;
    }
    if (node_ == nullptr) {
        throw std::invalid_argument(fmt::format("the row looked from has no {}", text));
    }
}

const Value& Operand::source(const RowPlace& place) const noexcept
{
    if (node_ == nullptr) {
        return literal_;
    }
    const Row& row = outwards_ == 0 ? place.row : *place.around[place.around.size() - outwards_];
    const Value& value = row.value(node_->slot);
    return value.absent() ? node_->default_value : value;
}

// Between a signed number and one without sign; another kind of value stands as it is, and is found nowhere.
Value Operand::converted(const Value& source) const
{
    if (target_->base == BaseType::Int && source.kind() == Value::Kind::Uint) {
        return source.as_uint() > INT64_MAX ? Value() : Value::of_int(static_cast<int64_t>(source.as_uint()));
    }
    if (target_->base == BaseType::Uint && source.kind() == Value::Kind::Int) {
        return source.as_int() < 0 ? Value() : Value::of_uint(static_cast<uint64_t>(source.as_int()));
    }
    return source;
}

PathTemplate::PathTemplate(const Schema& schema, std::string_view text, const Node* list, const Node* value)
{
    try {
        compile(schema, text, list, value);
    } catch (const std::invalid_argument& error) {
        throw std::invalid_argument(fmt::format("{}: {}", text, error.what()));
    }
}

void PathTemplate::compile(const Schema& schema, std::string_view text, const Node* list, const Node* value)
{
    const Node* node = nullptr;
    while (!text.empty() && text.front() == '/') {
        text.remove_prefix(1);
        node = &known_child(schema, node, take_until(&text, "/{="));
        if (node->kind == NodeKind::List) {
            if (text.empty() || text.front() != '{') {
                throw std::invalid_argument(fmt::format("{} has no keys", node->name));
            }
            text.remove_prefix(1);
            take_keys(*node, take_until(&text, "}"), list, value);
            text.remove_prefix(text.empty() ? 0 : 1);
        }
    }
    if (node != nullptr && node->kind == NodeKind::Leaf) {
        leaf_ = node;
    } else if (node == nullptr || node->kind != NodeKind::List) {
        throw std::invalid_argument("it leads neither to an entry nor to a leaf");
    }
    if (!text.empty()) {
        if (leaf_ == nullptr || text.front() != '=') {
            throw std::invalid_argument(fmt::format("\"{}\" at the end is too much", text));
        }
        operands_.emplace_back(text.substr(1), list, value, *leaf_);
        compares_ = true;
    }
}

void PathTemplate::take_keys(const Node& of, std::string_view keys, const Node* list, const Node* value)
{
    Step step{&of, operands_.size(), 0, false};
    while (!keys.empty() && !step.any) {
        const std::string_view key = take_until(&keys, " ");
        keys.remove_prefix(keys.empty() ? 0 : 1);
        step.any = key == "*";
        if (!step.any) {
            if (step.count == of.entry->keys) {
                throw std::invalid_argument(fmt::format("{} has {} keys", of.name, of.entry->keys));
            }
            operands_.emplace_back(key, list, value, *of.entry->values[step.count]);
            ++step.count;
        }
    }
    if (!keys.empty() || (!step.any && step.count < of.entry->keys)) {
        throw std::invalid_argument(fmt::format("{} has {} keys", of.name, of.entry->keys));
    }
    steps_.push_back(step);
}

// Takes the values to look for. Most of them are those of the last look-up.
void Lookup::take(const RowPlace& from)
{
    fresh_ = !known_;
    for (std::size_t i = 0; i < last_.size(); ++i) {
        const Value& source = path_.operands_[i].source(from);
        if (last_[i] == nullptr || (last_[i] != &source && *last_[i] != source)) {
            converted_[i] = path_.operands_[i].converted(source);
            fresh_ = true;
        }
        last_[i] = &source;
    }
}

const Row* Lookup::row(const RowPlace& from)
{
    take(from);
    if (fresh_) {
        found_ = find(root_, 0);
        known_ = true;
    }
    return found_;
}

const Value* Lookup::value(const RowPlace& from)
{
    const Row* const entry = row(from);
    return entry == nullptr || path_.leaf_ == nullptr ? nullptr : value_in(*entry, *path_.leaf_);
}

const Row* Lookup::find(const Row& around, std::size_t step)
{
    if (step == path_.steps_.size()) {
        return fits(around) ? &around : nullptr;
    }
    const PathTemplate::Step& next = path_.steps_[step];
    const List& list = around.list(next.list->slot);
    const Value* const keys = converted_.data() + next.first;
    if (!next.any) {
        const Row* const entry = step == 0 ? find_entry(list, keys, next.count) : list.find(keys, next.count);
        return entry == nullptr ? nullptr : find(*entry, step + 1);
    }
    for (const Row* entry = list.find_from(keys, next.count); entry != nullptr && begins_with(*entry, keys, next.count);
         entry = list.find_after(entry->keys(), entry->record().keys)) {
        if (const Row* const found = find(*entry, step + 1); found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

// The families of a neighbour stand as the neighbours do: the next one is near.
const Row* Lookup::find_entry(const List& list, const Value* keys, std::size_t count)
{
    constexpr int kMostTrust = 16;
    constexpr int kSteps = 4;
    int order = near_ ? bgp_platform::store::compare_key(**near_, keys, count) : 1;
    for (int step = 0; step < kSteps && order < 0; ++step) {
        ++near_;
        order = near_ ? bgp_platform::store::compare_key(**near_, keys, count) : 1;
    }
    if (order == 0) {
        trust_in_near_ = std::min(trust_in_near_ + 1, kMostTrust);
        return *near_;
    }
    if (trust_in_near_ > 0) {
        --trust_in_near_;
        near_ = list.iterate_after(keys, count);
    }
    return list.find(keys, count);
}

bool Lookup::fits(const Row& row) const
{
    if (!path_.compares_) {
        return true;
    }
    const Value* const there = value_in(row, *path_.leaf_);
    return there != nullptr && *there == converted_.back();
}

}  // namespace bgp_rehearse
