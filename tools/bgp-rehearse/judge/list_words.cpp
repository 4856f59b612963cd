#include "judge/list_words.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace bgp_rehearse {

using bgp_platform::schema::Node;

namespace {

constexpr ListWords kLists[] = {
    {"/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", {"router entity", "router entities"}, "router entity $0$served"},
    {"/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry", {"router family", "router families"}, "router $family1"},
    {"/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry", {"join", "joins"}, "join $1"},
    {"/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry", {"network manager", "network managers"}, "network manager $0$served"},
    {"/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry",
     {"listen row", "listen rows"},
     "listen row $1 of network manager $0"},
    {"/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", {"neighbour", "neighbours"}, "neighbour $peer"},
    {"/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry",
     {"neighbour family", "neighbour families"},
     "neighbour $peer $family8"},
    {"/DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry",
     {"neighbour status row", "neighbour status rows"},
     "status of neighbour $peer"},
    {"/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", {"route map row", "route map rows"}, "map $1 entry $2"},
    {"/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry",
     {"configuration record", "configuration records"},
     "configuration record $1"},
    {"/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry", {"routing table", "routing tables"}, "routing table $0"},
    {"/DC-RTM-MIB/rtmMjTable/rtmMjEntry",
     {"routing table join", "routing table joins"},
     "join of routing table $0 with $2 $1"},
    {"/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry",
     {"redistribution rule", "redistribution rules"},
     "redistribution rule $1 of routing table $0"},
    {"/redist-protocol",
     {"redistributed protocol", "redistributed protocols"},
     "protocol of redistribution rule $1 of routing table $0"},
    {"/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry",
     {"access list rule", "access list rules"},
     "access list $0 rule $1"},
    {"/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry", {"OSPF entity", "OSPF entities"}, "OSPF entity $0"},
    {"/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry", {"MPLS VPN entity", "MPLS VPN entities"}, "MPLS VPN entity $0"},
    {"/router/bgp", {"router", "routers"}, "router of AS $0"},
    {"/router/bgp/vrf", {"VRF", "VRFs"}, "VRF $0"},
    {"/router/bgp/vrf/address-family", {"VRF family", "VRF families"}, "VRF $around $family0"},
    {"/router/bgp/vrf/neighbor", {"VRF neighbour", "VRF neighbours"}, "VRF $around neighbour $0"},
    {"/prefix-list", {"prefix list", "prefix lists"}, "prefix list $0"},
    {"/prefix-list/seq", {"prefix list sequence", "prefix list sequences"}, "prefix list $around sequence $0"},
    {"/prefix-list-internal/name-to-idx", {"prefix list index", "prefix list indexes"}, "index of prefix list $0"},
    {"/prefix-list-internal/idx-to-name", {"prefix list name", "prefix list names"}, "name of prefix list $0"},
    {"/bgp-internal/bgp-vrf", {"VRF's index map", "VRFs' index maps"}, "index map of VRF $0"},
    {"/bgp-internal/bgp-vrf/bgp-free-index", {"free instance number", "free instance numbers"}, "free number $0"},
    {"/bgp-internal/bgp-vrf/as-to-bgp-idx",
     {"AS's instance number", "ASs' instance numbers"},
     "instance number of AS $0 in VRF $around"},
    {"/bgp-internal/bgp-vrf/idx-to-bgp-as",
     {"instance's AS number", "instances' AS numbers"},
     "AS number of instance $0 in VRF $around"},
    {"/internal/vrf-config/stringTOindex", {"VRF index", "VRF indexes"}, "index of VRF $0"},
    {"/internal/vrf-config/indexTOstring", {"VRF name", "VRF names"}, "name of VRF $0"},
    {"/internal/vrf-config/route-map/vrf", {"VRF's route map names", "VRFs' route map names"}, "map names of VRF $0"},
    {"/internal/vrf-config/route-map/vrf/stringTOindex",
     {"route map name", "route map names"},
     "route map $0 of VRF $around"},
    {"/internal/vrf-config/route-policy/vrf",
     {"VRF's route policy names", "VRFs' route policy names"},
     "policy names of VRF $0"},
    {"/internal/vrf-config/route-policy/vrf/stringTOindex",
     {"route policy name", "route policy names"},
     "route policy $0 of VRF $around"},
    {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-set",
     {"internal announced network", "internal announced networks"},
     "internal row of network $address2/$3 of routing table $1"},
    {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-get",
     {"internal redistribution row", "internal redistribution rows"},
     "internal row of redistribution rule $2 of routing table $1"},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry",
     {"internal route map row", "internal route map rows"},
     "internal row of map $1 entry $2"},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-get",
     {"internal route map row", "internal route map rows"},
     "internal row of map $1 entry $2"},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-set",
     {"internal route map row", "internal route map rows"},
     "internal row of map $1 entry $2"},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry",
     {"internal configuration row", "internal configuration rows"},
     "internal row of configuration record $1"},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-get",
     {"internal configuration row", "internal configuration rows"},
     "internal row of configuration record $1"},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-set",
     {"internal configuration row", "internal configuration rows"},
     "internal row of configuration record $1"},
    {"/internal/bgpPeerEntry-global",
     {"internal neighbour row", "internal neighbour rows"},
     "internal row of neighbour $1"},
    {"/internal/bgpPeerEntry-prefix-list-hidden",
     {"internal neighbour prefix list row", "internal neighbour prefix list rows"},
     "internal row of neighbour $1's prefix list"},
    {"/internal/match-ip-list-hidden",
     {"internal matched list row", "internal matched list rows"},
     "internal row of matched list $1"},
    {"/internal/neighbor-valid-hidden",
     {"internal neighbour check row", "internal neighbour check rows"},
     "internal check of neighbour $1"},
    {"/internal/route-policy-valid-hidden",
     {"internal route policy check row", "internal route policy check rows"},
     "internal check of route policy $1"},
    {"/internal/router-afi-safi-hidden",
     {"internal router family row", "internal router family rows"},
     "internal row of router $family1"},
    {"/internal/neighbor-afi-safi-hidden",
     {"internal neighbour family row", "internal neighbour family rows"},
     "internal row of neighbour $1 $family2"},
    {"/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry-get",
     {"internal access list name", "internal access list names"},
     "internal name of access list $1"},
    {"/internal/ospf-proc-id-to-index",
     {"OSPF process index", "OSPF process indexes"},
     "index of OSPF process $0 in VRF $1"},
};

// Whether a node has that path. From its end, and without a text of the node's path: a report asks for every row.
bool has_path(const Node* node, std::string_view path)
{
    while (node != nullptr) {
        const std::string& name = node->name;
        if (path.size() <= name.size() || path.substr(path.size() - name.size()) != name ||
            path[path.size() - name.size() - 1] != '/') {
            return false;
        }
        path.remove_suffix(name.size() + 1);
        node = node->parent;
    }
    return path.empty();
}

}  // namespace

const ListWords* find_words(const Node& list)
{
    const auto* const found = std::find_if(std::begin(kLists), std::end(kLists),
                                           [&list](const ListWords& words) { return has_path(&list, words.list); });
    return found == std::end(kLists) ? nullptr : found;
}

Noun noun_of(const Node& list)
{
    const ListWords* const words = find_words(list);
    return words == nullptr ? Noun{"row", "rows"} : words->noun;
}

}  // namespace bgp_rehearse
