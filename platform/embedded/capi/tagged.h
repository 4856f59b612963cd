// Arrays of tagged values: walking them against the schema.
#pragma once

#include <string>
#include <vector>

#include "capi/call.h"

namespace bgp_platform::capi {

// A walk over the array of one call. Elements name nodes below a container or row by tag (and namespace, unless it is
// 0).
template <typename Value>
class TagCursor {
public:
    TagCursor(Value* values, int n) : at_(values), end_(values + (n < 0 ? 0 : n)) {}

    bool at_end() const noexcept { return at_ == end_; }
    Value& operator*() const noexcept { return *at_; }
    Value* operator->() const noexcept { return at_; }
    void next() noexcept { ++at_; }

    bool closes(const schema::Node& node) const noexcept
    {
        return !at_end() && at_->v.type == C_XMLEND && at_->tag.tag == node.tag;
    }

    // The node that the element at hand names among the children of `parent`; null when there is none.
    const schema::Node* node_below(const schema::Node& parent) const noexcept
    {
        return parent.child(at_->tag.tag, at_->tag.ns);
    }

private:
    Value* at_;
    Value* end_;
};

// Takes the keys of an entry of the list, which stand at hand in the schema's order.
template <typename Value>
PathError take_keys(const schema::Node& list, TagCursor<Value>* at, std::vector<schema::Value>* keys)
{
    keys->reserve(list.entry->keys);
    for (std::size_t i = 0; i < list.entry->keys; ++i, at->next()) {
        const schema::Node& key = *list.entry->values[i];
        if (at->at_end() || at->node_below(list) != &key) {
            return {CONFD_ERR_BADTYPE, "the key " + key.name + " of " + list.name + " is missing"};
        }
        keys->emplace_back();
        if (!schema::from_confd(key, (*at)->v, &keys->back())) {
            return {CONFD_ERR_BADTYPE, key.name + " is a " + key.type->name};
        }
    }
    return {};
}

// "tag 123 (bgpRmEntIndex)", for messages.
std::string tag_text(const schema::Schema& schema, const xml_tag& tag);

}  // namespace bgp_platform::capi
