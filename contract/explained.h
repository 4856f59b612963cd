// What more than one step's header speaks of: what a lost read or write can bring, as beginnings of keypaths, writes that
// an upgrade without the failure does not make; and, in network words, what is not there or cannot be read.
#pragma once

#include "contract/step.h"

namespace bgp_contract {

inline constexpr char kEntityIndexUnread[] = "the index of the BGP router entity cannot be read";
inline constexpr char kAsNumberUnread[] = "the AS number of the BGP router entity cannot be read";
inline constexpr char kIpv6FlagUnread[] = "whether IPv6 is on cannot be read";
inline constexpr char kNoVrfs[] = "the router has no VRFs";
inline constexpr char kVrfsUnread[] = "the VRFs cannot be read";
inline constexpr char kVrfsUncounted[] = "how many VRFs the router has cannot be read";
inline constexpr char kNamesOutside[] = "the names of the BGP tables are not looked up in their own module";

// A VRF that got no instance from update_vrf gets its joins from update_vrf_ipv6 all the same; and without an entry of
// its own in the command-line model, the VRFs are those of another router.
inline constexpr Texts kVrfJoins = {"/DC-BGP-MIB/bgpRmAfmJoinTable", "/DC-RTM-MIB/rtmMjTable"};

// The neighbours' rows are written under another index of their entity.
inline constexpr Texts kNeighborRows = {"/DC-BGP-MIB/bgpPeerTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable"};

// The closing steps find the rows under the entity's old index.
inline constexpr Texts kWithoutRekeying = {"/DC-BGP-MIB/bgpPeerTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable",
                                           "/DC-BGP-MIB/bgpRmAfmJoinTable"};

// Where update_ipv6 has made no row, another entity's row can move to that key.
inline constexpr Texts kIpv6Rows = {"/internal/router-afi-safi-hidden", "/internal/neighbor-afi-safi-hidden",
                                    "/DC-BGP-MIB/bgpRmAfiSafiTable",    "/DC-BGP-MIB/bgpRmAfmJoinTable",
                                    "/DC-BGP-MIB/bgpNmListenTable",     "/DC-RTM-MIB/rtmMjTable",
                                    "/DC-BGP-MIB/bgpPeerAfiSafiTable"};

}  // namespace bgp_contract
