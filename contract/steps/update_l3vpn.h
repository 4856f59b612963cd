// Adds the IPv4 VPN address family to the first BGP router entity and, disabled, to its peers, on devices without an
// MPLS-VPN entity.
#pragma once

#include "contract/step.h"

namespace bgp_contract {

// An MPLS-VPN entity that is not seen makes the family wanted; its rows are then treated like any other.
inline constexpr Texts kVpnFamilies = {"/DC-BGP-MIB/bgpRmAfiSafiTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable"};

inline constexpr CallSite kUpdateL3vpnCalls[] = {
    {"cdb_exists", "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{}", goes_on().explaining(kVpnFamilies)},
    {"cdb_get", "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{}/mplsVpnUseBgpRouting",
     logs("Failed to read mplsVpnUseBgpRouting, err: ")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
     logs("Failed to read entity index BGP entry: ").explaining(kVpnFamilies)},
    {"maapi_create", "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{}",
     logs("Failed to create BGP RM AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: ").explaining(kVpnFamilies)},
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", goes_on()},
    {"cdb_get_objects", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", logs("Could not get peer entries, err: ")},
    {"maapi_create", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}",
     logs("Failed to create BGP Peer AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: ")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
     logs("Failed to set val 1 to bgpPeerAfiSafiDisable in entry BGP Peer AFI/SAFI ")},
};

inline constexpr Step kUpdateL3vpn = {
    "update_l3vpn",
    FirstLine{"Update BGP AfiSafi L3VPN\n"},
    LastLine{"Finishing BGP AfiSafi L3VPN\n"},
    NothingToDo{"No need to update VpnEntry"},
    Failed{"Failed to read mplsVpnUseBgpRouting, ", "Failed to read entity index BGP entry: "},
    PassedOver{kNotOneEntity},
    Condition{kStepMissing},
    kUpdateL3vpnCalls,
};

}  // namespace bgp_contract
