// `bgp-rehearse --version`: which command this is, and what it would rehearse with.
#pragma once

#include <string>

namespace bgp_rehearse {

// Lines "name: value" behind the first: the upgrade library that is taken without --library, its SHA-256, that of the YANG
// modules that are compiled in, and whose zlog writes the upgrade log. Empty values where a library cannot be told.
std::string version_text();

}  // namespace bgp_rehearse
