// Makes the platform's types of libyang's compiled ones. Leaves of the same type share one.
#pragma once

#include <libyang/libyang.h>

#include <deque>
#include <unordered_map>

#include "schema/type.h"

namespace bgp_platform::schema {

class TypeReader {
public:
    // Types are added to `types`. Octets and addresses are known by the typedef they come from, in the module
    // bgp-update-types of the context, which may be absent.
    TypeReader(const ly_ctx* context, std::deque<Type>* types);

    // The type of a leaf or leaf-list, leafrefs followed. Throws SchemaError naming the node for a type that the
    // platform does not do.
    const Type* type_of(const lysc_node& node);

private:
    const Type* share(Type type);

    std::deque<Type>* types_;
    std::unordered_map<const lysc_type*, Type> known_typedefs_;  // by what libyang compiled the typedef to
};

// "/DC-BGP-MIB:DC-BGP-MIB/bgpRmEntTable", for messages about a node that cannot be taken.
std::string schema_path(const lysc_node& node);

}  // namespace bgp_platform::schema
