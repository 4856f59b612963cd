// What a schema owns. Deques, so that nodes, records, types and modules stay where they are while others join them.
#pragma once

#include <deque>
#include <string>
#include <unordered_map>

#include "schema/libyang_context.h"
#include "schema/schema.h"

namespace bgp_platform::schema {

struct Schema::Storage {
    Context context;  // null for a compiled schema, until it validates
    std::deque<Module> modules;
    std::deque<Type> types;
    std::deque<Record> records;
    std::deque<Node> nodes;
    std::unordered_map<uint32_t, const std::string*> names;  // by hash
};

}  // namespace bgp_platform::schema
