#include "keypath/last_calls.h"

#include <algorithm>

#include "calls/recorder.h"
#include "store/changes.h"

namespace bgp_platform::capi {

namespace {

constexpr char kCut[] = "…";

// The process that wrote may have written anything anywhere.
bool knows(const std::vector<const schema::Node*>& nodes, const schema::Node* wanted)
{
    return std::any_of(nodes.begin(), nodes.end(),
                       [wanted](const schema::Node* node) { return node == wanted || knows(node->children, wanted); });
}

std::vector<const schema::Node*> nodes_to(const schema::Node* node)
{
    std::vector<const schema::Node*> nodes;
    for (; node != nullptr; node = node->parent) {
        nodes.push_back(node);
    }
    std::reverse(nodes.begin(), nodes.end());
    return nodes;
}

// The entry of a list that is picked by its position, by its key where it is there.
void append_position(const store::List* list, std::size_t position, std::string* text)
{
    const store::Row* const row = list == nullptr ? nullptr : list->at(position);
    *text += row == nullptr ? "[" + std::to_string(position) + "]" : "{" + store::key_text(*row) + "}";
}

}  // namespace

void LastPlace::note(const store::Path& path, const std::vector<schema::Value>& below) noexcept
{
    node_ = path.node;
    positions_ = 0;
    key_count_ = 0;
    text_size_ = 0;
    for (const store::Selector& selector : path.entries) {
        if (selector.position >= 0) {
            positions_ |= key_count_ < kMostKeys ? 1U << key_count_ : 0;
            add(schema::Value::of_int(selector.position));
        }
        for (const schema::Value& key : selector.keys) {
            add(key);
        }
    }
    for (const schema::Value& key : below) {
        add(key);
    }
}

void LastPlace::note(std::string_view text) noexcept
{
    node_ = nullptr;
    text.copy(text_.data(), kMostText);
    text_size_ = static_cast<uint8_t>(std::min(text.size(), kMostText + 1));
}

store::Selector LastPlace::selector(const schema::Node& list, std::size_t first) const
{
    store::Selector selector{&list, {}};
    const schema::Value position = schema::Value::of_flat(keys_[first]);
    if (is_position(first) && position.kind() == schema::Value::Kind::Int) {
        selector.position = std::max<std::ptrdiff_t>(0, position.as_int());
        return selector;
    }
    const std::size_t behind = std::min(first + list.entry->keys, kMostKeys);
    for (std::size_t i = first; i < behind; ++i) {
        selector.keys.push_back(schema::Value::of_flat(keys_[i]));
    }
    return selector;
}

// The keys of a selector, of which the first is that one of the place.
void LastPlace::append_keys(const store::Selector& selector, std::size_t first, std::string* text) const
{
    *text += "{";
    for (std::size_t i = 0; i < selector.list->entry->keys; ++i) {
        *text += i == 0 ? "" : " ";
        const schema::Node& leaf = *selector.list->entry->values[i];
        const bool kept = i < selector.keys.size();
        if (kept && !is_secret(leaf)) {
            store::append_key(*leaf.type, selector.keys[i], text);
        } else if (kept) {
            *text += kMasked;
        }
        *text += kept && !keys_[first + i].cut() ? "" : kCut;
    }
    *text += "}";
}

std::string LastPlace::text(const store::Configuration& stored) const
{
    if (node_ == nullptr || !knows(stored.schema().top_nodes(), node_)) {
        const std::string text(text_.data(), std::min<std::size_t>(text_size_, kMostText));
        return text_size_ > kMostText ? text + kCut : text;
    }
    std::string text;
    std::size_t next = 0;  // key
    store::Path path;
    for (const schema::Node* const node : nodes_to(node_)) {
        text.append("/").append(node->name);
        path.node = node;
        if (!node->is_list() || next >= std::min<std::size_t>(key_count_, kMostKeys)) {
            continue;
        }
        const store::Selector entry = selector(*node, next);
        if (entry.position < 0) {
            append_keys(entry, next, &text);
        } else {
            append_position(stored.find_list(path), static_cast<std::size_t>(entry.position), &text);
        }
        next += entry.position < 0 ? node->entry->keys : 1;
        path.entries.push_back(entry);
    }
    return text;
}

const char* LastCalls::function() const noexcept
{
    return function_ < kFunctions ? name_of(static_cast<Function>(function_)) : "";
}

std::size_t LastCalls::sum_of(const Counts& counts, Effect effect) noexcept
{
    std::size_t sum = 0;
    for (std::size_t i = 0; i < kFunctions; ++i) {
        sum += effect_of(static_cast<Function>(i)) == effect ? counts[i] : 0;
    }
    return sum;
}

}  // namespace bgp_platform::capi
