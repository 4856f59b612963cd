// Arrays of tagged values: walking them against the schema.
#pragma once

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
        const schema::Node* const node = parent.child(at_->tag.tag);
        return node != nullptr && (at_->tag.ns == 0 || at_->tag.ns == node->module->hash) ? node : nullptr;
    }

private:
    Value* at_;
    Value* end_;
};

// "tag 123 (bgpRmEntIndex)", for messages.
std::string tag_text(const schema::Schema& schema, const xml_tag& tag);

}  // namespace bgp_platform::capi
