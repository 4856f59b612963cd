// What a fuzz target expects of every input. Unlike an assertion it holds in every build.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace bgp_fuzz {

// Ends the run, as a finding, when something does not hold. `shown` is what it was looked at in.
inline void require(bool holds, const char* what, const std::string& shown)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s, in: %s\n", what, shown.c_str());
        std::abort();
    }
}

}  // namespace bgp_fuzz
