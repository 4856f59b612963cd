// Where the project's sources lie.
#pragma once

#include <filesystem>

namespace bgp_test {

inline const std::filesystem::path kHome = BGP_SOURCE_DIR;

}  // namespace bgp_test
