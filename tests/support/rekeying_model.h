// What the re-keying of the global instance does to each of its tables, modelled for tests without a line of the step.
#pragma once

#include <map>

#include "support/table_rows.h"

namespace bgp_test {

constexpr uint32_t kGlobalIndex = 1;  // the component of VRF 0

// How a table's rows carry the entity's index.
enum class Carries {
    First,          // as their first key
    Partner,        // as their second key, when the third says BGP
    Redistributed,  // within their second key, when the rule's destination is BGP
    Protocol,       // within their second key, when the rule's protocol is BGP
    Listen,         // as their first key, and as their second one, as it is or one more
};

struct TableKind {
    const char* path;
    Carries carries = Carries::First;
};

inline constexpr TableKind kTables[] = {
    {"redist-protocol", Carries::Protocol},
    {"internal/rtmRedistEntry-hidden/rtmRedistEntry-set"},
    {"internal/rtmRedistEntry-hidden/rtmRedistEntry-get"},
    {"internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry"},
    {"internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-get"},
    {"internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-set"},
    {"internal/bgpConfigEntry-hidden/bgpConfigEntry"},
    {"internal/bgpConfigEntry-hidden/bgpConfigEntry-get"},
    {"internal/bgpConfigEntry-hidden/bgpConfigEntry-set"},
    {"internal/bgpPeerEntry-global"},
    {"internal/bgpPeerEntry-prefix-list-hidden"},
    {"internal/match-ip-list-hidden"},
    {"internal/neighbor-valid-hidden"},
    {"internal/route-policy-valid-hidden"},
    {"internal/router-afi-safi-hidden"},
    {"internal/neighbor-afi-safi-hidden"},
    {"DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry"},
    {"DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry"},
    {"DC-BGP-MIB/bgpPeerTable/bgpPeerEntry"},
    {"DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry"},
    {"DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry"},
    {"DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry"},
    {"DC-BGP-MIB/bgpConfigTable/bgpConfigEntry"},
    {"DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry"},
    {"DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry"},
    {"DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry", Carries::Listen},
    {"DC-RTM-MIB/rtmRedistTable/rtmRedistEntry", Carries::Redistributed},
    {"DC-RTM-MIB/rtmMjTable/rtmMjEntry", Carries::Partner},
};

// Where each row goes, by the key that it has: to its new key, one row after the other, or nowhere when another row is
// there at that moment.
std::map<Key, Key> places(Carries carries, const Table& rows, uint32_t old_index);

// The same where nothing is re-keyed.
std::map<Key, Key> at_home(const Table& rows);

}  // namespace bgp_test
