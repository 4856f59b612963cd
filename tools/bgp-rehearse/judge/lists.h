// Lists of the data model that the judgement speaks of in more than one place, by their schema paths.
#pragma once

namespace bgp_rehearse {

inline constexpr char kEntities[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry";
inline constexpr char kRouterFamilies[] = "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry";
inline constexpr char kJoins[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry";
inline constexpr char kNetworkManagers[] = "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry";
inline constexpr char kNeighbours[] = "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry";
inline constexpr char kFamilies[] = "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry";  // of neighbours
inline constexpr char kRouteMaps[] = "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry";
inline constexpr char kTableJoins[] = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry";  // of routing tables
inline constexpr char kRules[] = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
inline constexpr char kAccessListRules[] = "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry";
inline constexpr char kRouters[] = "/router/bgp";
inline constexpr char kPrefixLists[] = "/prefix-list";

}  // namespace bgp_rehearse
