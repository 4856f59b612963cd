// What a configuration file may hold at most.
#pragma once

#include <cstddef>

namespace bgp_platform::xml {

struct Limits {
    std::size_t value_bytes = 1 << 20;    // of one value, white space around it included
    std::size_t entries = 50'000'000;     // of all lists and leaf-lists together
    std::size_t levels = 1000;            // of elements in one another
    std::size_t foreign_bytes = 1 << 30;  // of modules that the schema does not know, together
    std::size_t errors = 20;              // that are told; the others are counted
};

}  // namespace bgp_platform::xml
