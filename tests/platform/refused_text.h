// Configurations as text, and what is said about one that is refused.
#pragma once

#include <memory>
#include <string>

#include "schema/schema.h"
#include "store/configuration.h"
#include "xml/config_reader.h"

namespace bgp_test {

// The top elements stand in line 1 of the document.
inline std::string document(const std::string& elements)
{
    return "<config xmlns=\"http://tail-f.com/ns/config/1.0\">" + elements + "</config>";
}

inline std::string router(const std::string& content)
{
    return "<router xmlns=\"urn:bgp-update:yang:router\">" + content + "</router>";
}

inline std::string refusal_of_text(
    const std::string& text,
    const std::shared_ptr<const bgp_platform::schema::Schema>& schema = bgp_platform::schema::Schema::builtin(),
    const bgp_platform::xml::Limits& limits = {})
{
    bgp_platform::store::Configuration configuration(schema);
    try {
        bgp_platform::xml::read_config_text(text, "edge.xml", &configuration, limits);
    } catch (const bgp_platform::xml::LoadError& error) {
        return error.what();
    }
    return "not refused";
}

// What is said about a router's content.
inline std::string refusal(const std::string& content)
{
    return refusal_of_text(document(router(content)));
}

}  // namespace bgp_test
