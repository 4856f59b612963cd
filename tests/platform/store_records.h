// Records built by hand, and rows of them, for the tests of rows and lists, which need no YANG text.
#pragma once

#include <deque>
#include <string>
#include <string_view>

#include "schema/schema.h"
#include "store/row.h"

namespace store_test {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Record;
using bgp_platform::schema::Value;
using bgp_platform::store::RowRef;

inline Value num(uint64_t number)
{
    return Value::of_uint(number);
}

inline Value text(std::string_view characters)
{
    return Value::of_text(characters);
}

// The record of a list: its keys come first among the leaves.
class ListModel {
public:
    ListModel(uint16_t keys, uint16_t leaves)
    {
        list_.name = "entry";
        list_.kind = NodeKind::List;
        list_.entry = &record_;
        record_.owner = &list_;
        record_.keys = keys;
        for (uint16_t slot = 0; slot < leaves; ++slot) {
            record_.values.push_back(&add_node(NodeKind::Leaf, slot));
        }
    }
    ListModel(const ListModel&) = delete;
    ListModel& operator=(const ListModel&) = delete;

    // Gives every entry a list of entries of another model.
    void add_list(const ListModel& inner)
    {
        Node& node = add_node(NodeKind::List, static_cast<uint16_t>(record_.lists.size()));
        node.entry = &inner.record();
        record_.lists.push_back(&node);
    }

    const Record& record() const { return record_; }

    // A row with its first values set.
    template <typename... Values>
    RowRef row(Values... values) const
    {
        RowRef made(record_);
        uint16_t slot = 0;
        ((made.edit().value(slot++) = values), ...);
        return made;
    }

private:
    Node& add_node(NodeKind kind, uint16_t slot)
    {
        Node& node = nodes_.emplace_back();
        node.name = "node" + std::to_string(nodes_.size());
        node.kind = kind;
        node.parent = &list_;
        node.record = &record_;
        node.slot = slot;
        node.key = kind == NodeKind::Leaf && slot < record_.keys;
        list_.children.push_back(&node);
        return node;
    }

    Node list_;
    std::deque<Node> nodes_;
    Record record_;
};

}  // namespace store_test
