// The start of an element as the parser tells it.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace bgp_platform::xml {

struct NamespaceDeclaration {
    std::string_view prefix;  // empty: of the default namespace
    std::string_view uri;     // empty: no namespace from here on
};

struct Attribute {
    std::string_view prefix;
    std::string_view name;
    std::string_view value;  // with references resolved
};

struct StartTag {
    const char* name = nullptr;    // without the prefix
    const char* prefix = nullptr;  // null: none
    const char* uri = nullptr;     // of its namespace; null: none
    int line = 0;                  // where the tag ends
    std::vector<NamespaceDeclaration> declarations;
    std::vector<Attribute> attributes;
};

}  // namespace bgp_platform::xml
