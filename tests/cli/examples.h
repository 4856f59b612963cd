// The configurations of examples/.
#pragma once

#include <string>

namespace bgp_test {

// example("edge-router") is its path.
inline std::string example(const std::string& name)
{
    return BGP_SOURCE_DIR "/examples/" + name + ".xml";
}

}  // namespace bgp_test
