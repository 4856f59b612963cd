// ConfD's number for a name: the tag of a node, and the number of a namespace.
#pragma once

#include <cstdint>
#include <string_view>

namespace bgp_platform::schema {

// The hash of a node's name or a namespace's URI: Bob Jenkins' 32-bit block hash of 1996 with ConfD's starting values,
// modulo 2^31 - 1. Written apart from the product's, so that a test may hold the one against the other.
uint32_t name_hash(std::string_view name) noexcept;

}  // namespace bgp_platform::schema
