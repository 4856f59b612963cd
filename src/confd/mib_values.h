// The numbers of the data model that several sources read or write: its truth values, statuses, address families and
// the like. They are int32_t, as enumerations are, save where a number is a key or a leaf of type uint32.
#pragma once

#include <cstdint>

namespace mib {

// Truth values.
constexpr int32_t kTrue = 1;
constexpr int32_t kFalse = 2;

// Administrative statuses.
constexpr int32_t kUp = 1;
constexpr int32_t kDown = 2;

// Address families, and the types of addresses.
constexpr int32_t kIpv4 = 1;
constexpr int32_t kIpv6 = 2;

// Subsequent address families.
constexpr int32_t kUnicast = 1;
constexpr int32_t kVpn = 128;  // "mplsBgpVpn"

// Partners of a routing table manager (RTM), in its joins.
constexpr int32_t kPartnerRtm = 1;
constexpr int32_t kPartnerBgp = 4;

// Numbers of BGP's joins with the routing table managers (bgpRmAfmJoin).
constexpr uint32_t kJoinIpv4Unicast = 1;
constexpr uint32_t kJoinIpv6Unicast = 2;

// The destination of redistribution rules that lead into BGP.
constexpr int32_t kRedistIntoBgp = 0xE0000;

// The VRF of the global BGP instance.
constexpr uint32_t kGlobalVrf = 0;

}  // namespace mib
