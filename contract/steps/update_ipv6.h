// Switches IPv6 unicast on for the first BGP router entity. Every row that cannot be made is told of, and the others are
// made all the same; only without the entity's index or its support flag nothing is written.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

// Where no hidden row of a neighbour is made, another entity's row can move to that key; a second neighbour with the
// address then is the first to get one.
inline constexpr Texts kNeighborFamilies = {"/internal/neighbor-afi-safi-hidden", "/DC-BGP-MIB/bgpPeerAfiSafiTable"};

inline constexpr char kNoIpv6Support[] = "the router cannot be told to support IPv6";

inline constexpr CallSite kUpdateIpv6Calls[] = {
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
     logs("Failed to read entity index BGP entry: ").explaining(kIpv6Rows), stops(kEntityIndexUnread)},
    {"maapi_set_namespace", "", goes_on(), loses(kNamesOutside)},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{}/bgpRmEntSupportIpv6",
     logs("Failed to enable IPv6 for BGP entity id: ").explaining(kIpv6Rows), stops(kNoIpv6Support)},
    {"maapi_create", "/internal/router-afi-safi-hidden{}",
     logs("Failed to create BGP RM AFI/SAFI ipv4 unicast internal hidden entry for BGP entity id: ")
         .explaining(kIpv6Rows),
     where_there(loses("the router's IPv6 unicast family is not made: its IPv4 family is on record already"),
                 loses("the router's IPv6 unicast family is not made: its IPv4 family cannot be put on record"))},
    {"maapi_create", "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{}",
     logs("Failed to create BGP RM AFI/SAFI ipv6 unicast entry for BGP entity id: ").explaining(kIpv6Rows),
     expected_where_there("the router has its IPv6 unicast family already",
                          loses("the router's IPv6 unicast family is not made"))},
    {"maapi_create", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}",
     logs("Failed to create BGP RM AFM JOIN ipv6 entry for BGP entity id: ").explaining(kIpv6Rows),
     expected_where_there("the router's IPv6 join is there already", loses("the router's IPv6 join is not made"))},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmPartnerIndex",
     logs("Failed to set val "), loses("the router's IPv6 join names no routing table")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAfi", logs("Failed to set val "),
     loses("the router's IPv6 join names no address family")},
    {"maapi_exists", "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{}", logs("Path /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{"),
     loses("the network manager's BFD entity is not set to none")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{}/bgpNmEntBfdEntityIndex",
     logs("Failed to set val 0 to bgpNmEntBfdEntityIndex in entry BGP NM entity id: "),
     loses("the network manager's BFD entity is not set to none")},
    {"maapi_create", "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{}",
     logs("Failed to create BGP NM LISTEN ipv6 entry for BGP NM entity id: ").explaining(kIpv6Rows),
     expected_where_there("the IPv6 listening socket is there already",
                          loses("the IPv6 listening socket is not made"))},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{}/bgpNmListenAdminStatus",
     logs("Failed to set val 1 to bgpNmListenAdminStatus in entry BGP NM entity id: "),
     loses("the IPv6 listening socket is not set to up")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{}/bgpNmListenAddrType",
     logs("Failed to set val 2 to bgpNmListenAddrType in entry NM entity id: "),
     loses("the IPv6 listening socket has no address type")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{}/bgpNmListenAddr",
     logs("Failed to set val 0000"), loses("the IPv6 listening socket has no address")},
    {"maapi_create", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}",
     logs("Failed to create RTM JOIN ipv6 ariPrtnrBgp entry for BGP entity id: ").explaining(kIpv6Rows),
     expected_where_there("the IPv6 routing table's join with BGP is there already",
                          loses("the IPv6 routing table's join with BGP is not made"))},
    {"maapi_set_elem", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}/rtmMjSafi",
     logs("Failed to set val 1 to rtmMjSafi in entry RTM JOIN BGP entity id: "),
     loses("the IPv6 routing table's join with BGP is not set to unicast")},
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", goes_on().explaining(kNeighborFamilies),
     loses("the neighbours cannot be counted: their IPv6 families stay as they are")},
    {"cdb_get_objects", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry",
     logs("Could not get peer entries, err: ").explaining(kNeighborFamilies),
     loses("the neighbours cannot be read: their IPv6 families stay as they are")},
    {"maapi_create", "/internal/neighbor-afi-safi-hidden{}",
     logs("Failed to create BGP Peer AFI/SAFI ipv4 unicast internal hidden entry for BGP entity id: ")
         .explaining(kNeighborFamilies),
     expected_where_there("the neighbour's IPv4 family is on record already, its IPv6 family stays as it is",
                          loses("the neighbour's IPv4 family is not put on record, its IPv6 family stays as it is"))},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
     logs("Failed to set val 1 to bgpPeerAfiSafiDisable in entry BGP Peer AFI/SAFI ").explaining(kNeighborFamilies),
     expected_where_missing("the peer has no IPv6 row yet", loses("the neighbour's IPv6 family is not turned off"))},
    {"cdb_num_instances", "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", goes_on(),
     loses("the route maps cannot be counted: they get no IPv6 defaults")},
    {"cdb_get_objects", "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", logs("Could not get RouteMap entries, err: "),
     loses("the route maps cannot be read: they get no IPv6 defaults")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{}/bgpRouteMapMaAfiDef",
     logs("Failed to set val 2 to bgpRouteMapMaAfiDef in entry BGP RouteMap "),
     loses("the route map's default address family is not set to IPv6")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{}/bgpRouteMapMaSafiDef",
     logs("Failed to set val 2 to bgpRouteMapMaSafiDef in entry BGP RouteMap "),
     loses("the route map's default subsequent address family is not set")},
};

inline constexpr Step kUpdateIpv6 = {
    "update_ipv6",
    Title{"IPv6 unicast"},
    FirstLine{"Update BGP Ipv6\n"},
    LastLine{"Finishing BGP Ipv6 update\n"},
    NothingToDo{},
    Failed{{"Failed to read entity index BGP entry: ", kEntityIndexUnread},
           {"Failed to enable IPv6 for BGP entity id: ", kNoIpv6Support}},
    PassedOver{kNotOneEntity, {"IPv6 is already enabled for BGP entry : ", "IPv6 is on already"}},
    Unread{{"Failed to read IPv6 enable flag for BGP entry: ", kIpv6FlagUnread}},
    Conditions{},
    Removes{},
    kUpdateIpv6Calls,
};

}  // namespace bgp_contract
