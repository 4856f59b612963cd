// How large a stored configuration is.
#pragma once

#include <cstddef>

#include "store/configuration.h"

namespace bgp_rehearse {

struct ConfigurationSize {
    std::size_t entries = 0;  // of lists
    std::size_t values = 0;   // leaves that are set, and entries of leaf-lists
};

ConfigurationSize size_of(const bgp_platform::store::Configuration& configuration);

}  // namespace bgp_rehearse
