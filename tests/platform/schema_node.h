// A node of a schema, found by the names on the way to it.
#pragma once

#include <initializer_list>
#include <string_view>

#include "schema/schema.h"

namespace bgp_test {

// That node must be there.
inline const bgp_platform::schema::Node& node(const bgp_platform::schema::Schema& schema,
                                              std::initializer_list<std::string_view> names)
{
    const bgp_platform::schema::Node* found = nullptr;
    for (const std::string_view name : names) {
        found = found == nullptr ? schema.top_node(name, nullptr) : found->child(name);
    }
    return *found;
}

}  // namespace bgp_test
