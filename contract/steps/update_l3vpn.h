// Adds the IPv4 VPN address family to the first BGP router entity and, disabled, to its peers, on devices without an
// MPLS-VPN entity.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

// An MPLS-VPN entity that is not seen makes the family wanted; its rows are then treated like any other.
inline constexpr Texts kVpnFamilies = {"/DC-BGP-MIB/bgpRmAfiSafiTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable"};

inline constexpr char kVpnUnread[] = "whether MPLS VPN uses BGP cannot be read";

inline constexpr CallSite kUpdateL3vpnCalls[] = {
    {"cdb_exists", "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{}", goes_on().explaining(kVpnFamilies),
     loses("whether MPLS VPN is set up cannot be read: the VPN family is added as if it were not")},
    {"cdb_get", "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{}/mplsVpnUseBgpRouting",
     logs("Failed to read mplsVpnUseBgpRouting, err: "), stops(kVpnUnread)},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
     logs("Failed to read entity index BGP entry: ").explaining(kVpnFamilies), stops(kEntityIndexUnread)},
    {"maapi_create", "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{}",
     logs("Failed to create BGP RM AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: ").explaining(kVpnFamilies),
     expected_where_there("the router has its IPv4 VPN family already",
                          loses("the router's IPv4 VPN family is not made"))},
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", goes_on(),
     loses("the neighbours cannot be counted: they get no IPv4 VPN family")},
    {"cdb_get_objects", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", logs("Could not get peer entries, err: "),
     loses("the neighbours cannot be read: they get no IPv4 VPN family")},
    {"maapi_create", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}",
     logs("Failed to create BGP Peer AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: "),
     expected_where_there("the neighbour has its IPv4 VPN family already",
                          loses("the neighbour gets no IPv4 VPN family"))},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
     logs("Failed to set val 1 to bgpPeerAfiSafiDisable in entry BGP Peer AFI/SAFI "),
     loses("the neighbour's new IPv4 VPN family is not turned off")},
};

inline constexpr Step kUpdateL3vpn = {
    "update_l3vpn",
    Title{"IPv4 VPN family"},
    FirstLine{"Update BGP AfiSafi L3VPN\n"},
    LastLine{"Finishing BGP AfiSafi L3VPN\n"},
    NothingToDo{{"No need to update VpnEntry", "MPLS VPN uses BGP already"}},
    Failed{{"Failed to read mplsVpnUseBgpRouting, ", kVpnUnread},
           {"Failed to read entity index BGP entry: ", kEntityIndexUnread}},
    PassedOver{kNotOneEntity},
    Unread{},
    Conditions{},
    Removes{},
    kUpdateL3vpnCalls,
};

}  // namespace bgp_contract
