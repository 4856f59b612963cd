// What a stored configuration holds of modules that the schema does not know: carried along, and looked at by nobody.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bgp_platform::store {

// One top element of such a module, with all that stands in it.
struct ForeignPart {
    std::string name;               // of the element, without its prefix
    std::string name_space;         // the URI of the module
    int line = 0;                   // where it stands in the file that it came from
    std::size_t elements = 0;       // it and those in it
    std::size_t bytes = 0;          // of its text
    std::vector<std::string> text;  // in pieces: XML that declares every namespace that was in scope
};

}  // namespace bgp_platform::store
