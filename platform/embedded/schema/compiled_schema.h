// A schema in the form that the build compiles into the platform: a text of what a schema holds, a line for each part of
// it, which a schema is made of without libyang.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "schema/schema.h"

namespace bgp_platform::schema {

class CompiledSchema {
public:
    // Each field of the schema: schemas with the same text are the same.
    static std::string text_of(const Schema& schema);

    // The schema that the text was made of. Its validate() is that of the built-in modules. Throws SchemaError for what is
    // no such text.
    static std::shared_ptr<const Schema> read(std::string_view text);
};

// The text of the schema of the built-in modules, which the build made of them (platform/compile_schema.cpp).
std::string_view builtin_schema();

}  // namespace bgp_platform::schema
