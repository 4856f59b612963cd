// The tables whose rows update_rm_index moves from the router entity's old index to the base component of the global VRF,
// in the order in which it walks them: this order shows in the log, and decides which of two rows gets a key that both are
// to have. A table that cannot be walked keeps its rows where they are; so does a row that cannot be moved, which is
// logged. Where no row has come, another entity's row can.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

// Which keys of a row carry the index, and the class of the library that moves them so.
enum class Carries {
    First,          // the first one (BaseEntry and the classes that add a leaf)
    Listen,         // the first and the second one, the latter as it is or one more (BgpNmListenEntry)
    Partner,        // the second one, when the third says BGP (RtmMjEntry)
    Redistributed,  // the second one is counted from it, when the rule's destination is BGP (RtmRedistEntry)
    Protocol,       // the same, when the rule's protocol is BGP (RtmRedistProtocolHiddenEntry)
};

struct RekeyedTable {
    constexpr RekeyedTable(const char* list, Carries keys, const char* following, const Texts& left_behind)
        : path(list), carries(keys), leaf(following), explains(left_behind.with(list))
    {
    }

    const char* path;
    Carries carries;
    const char* leaf;  // which has to follow the keys of a moved row; empty: none
    Texts explains;    // the table and others: where rows that stay behind may bring writes
};

inline constexpr RekeyedTable kRekeyedTables[] = {
    {"/redist-protocol", Carries::Protocol, "protocol-index", {}},
    {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-set", Carries::First, "", {}},
    {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-get", Carries::First, "", {}},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry", Carries::First, "", {}},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-get", Carries::First, "", {}},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-set", Carries::First, "", {}},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry", Carries::First, "", {}},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-get", Carries::First, "", {}},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-set", Carries::First, "", {}},
    {"/internal/bgpPeerEntry-global", Carries::First, "keys", {}},
    {"/internal/bgpPeerEntry-prefix-list-hidden", Carries::First, "", {}},
    {"/internal/match-ip-list-hidden", Carries::First, "", {}},
    {"/internal/neighbor-valid-hidden", Carries::First, "", {}},
    {"/internal/route-policy-valid-hidden", Carries::First, "", {}},
    {"/internal/router-afi-safi-hidden", Carries::First, "", {}},
    {"/internal/neighbor-afi-safi-hidden", Carries::First, "", {}},
    {"/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", Carries::First, "", kNeighborRows},
    {"/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry", Carries::First, "", {}},
    {"/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", Carries::First, "bgpPeerLocalNm", kNeighborRows},
    {"/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", Carries::First, "", kNeighborRows},
    {"/DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry", Carries::First, "", {}},
    {"/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", Carries::First, "", {}},
    {"/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry", Carries::First, "", {}},
    {"/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry", Carries::First, "", {}},
    {"/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry", Carries::First, "bgpNmEntRmIndex", {}},
    {"/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry", Carries::Listen, "", {}},
    {"/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry", Carries::Redistributed, "", {}},
    {"/DC-RTM-MIB/rtmMjTable/rtmMjEntry", Carries::Partner, "", {}},
};

// The calls that update_rm_index makes for each of the tables alike; their paths follow the table's.
inline constexpr CallSite kCallsOfEachTable[] = {
    {"maapi_init_cursor", "", goes_on(), left("the table cannot be read")},
    {"maapi_get_next", "", goes_on(), left("the table cannot be read to its end")},
    {"maapi_move", "{}", logs("Failed to move path: "), left("its place is taken")},
};

}  // namespace bgp_contract
