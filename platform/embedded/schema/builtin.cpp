// The schema that the platform is built with.
#include "schema/compiled_schema.h"

namespace bgp_platform::schema {

std::shared_ptr<const Schema> Schema::builtin()
{
    static const std::shared_ptr<const Schema> schema = CompiledSchema::read(builtin_schema());
    return schema;
}

}  // namespace bgp_platform::schema
