// Addresses as the routing stack's tables hold them (octets) and as people write them.
#pragma once

#include <cstdint>
#include <string>

namespace bgp_generator {

std::string ipv4_octets(uint32_t address);  // "0a:00:00:01"
std::string ipv4_text(uint32_t address);    // "10.0.0.1"

constexpr char kAnyIpv4Octets[] = "00:00:00:00";
constexpr char kAnyIpv6Octets[] = "00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00";

// The far end of a numbered link: 2001:db8:HIGH:LOW::2, HIGH and LOW being the halves of the number.
std::string link_ipv6_octets(uint32_t link);
std::string link_ipv6_text(uint32_t link);

}  // namespace bgp_generator
