// Schemas of one small module, written in a test.
#pragma once

#include <memory>
#include <string>

#include "schema/schema.h"

namespace schema_test {

using bgp_platform::schema::ModuleText;
using bgp_platform::schema::Schema;

// Of that module and the shared types.
inline std::shared_ptr<const Schema> small(const std::string& body)
{
    static const std::string types = [] {
        for (const ModuleText& module : bgp_platform::schema::builtin_modules()) {
            if (module.name == "bgp-update-types") {
                return std::string(module.text);
            }
        }
        return std::string();
    }();
    const std::string text =
        "module small { yang-version 1.1; namespace \"urn:small\"; prefix s;"
        " import bgp-update-types { prefix t; } " +
        body + " }";
    return Schema::from_modules({{"small", text}, {"bgp-update-types", types}});
}

// What is said of it; "not refused" when it is read.
inline std::string refusal(const std::string& body)
{
    try {
        small(body);
    } catch (const bgp_platform::schema::SchemaError& error) {
        return error.what();
    }
    return "not refused";
}

}  // namespace schema_test
