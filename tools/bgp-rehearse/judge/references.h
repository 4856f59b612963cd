// What a router's rows refer to, as data. Nothing enforces it on the device: a stored configuration may hold references that
// lead nowhere.
#pragma once

#include "device.h"
#include "judge/finding.h"
#include "judge/lists.h"

namespace bgp_rehearse {

// Which values of the referring leaf refer to nothing.
enum class None : uint8_t { Never, Unset, Zero, Empty };  // the last two: or unset

struct Verb {
    const char* one;
    const char* many;
};

// "3 neighbours belong to a router entity that ...: entity 5"
struct Reference {
    constexpr Reference(const char* list, const char* referring, const char* of_those, None none_is, Verb does,
                        const char* row, const char* named, const char* there, const char* or_there = nullptr,
                        Severity when_lost = Severity::Stop)
        : from(list),
          leaf(referring),
          where(of_those),
          verb(does),
          what(row),
          which(named),
          to{there, or_there},
          none(none_is),
          lost(when_lost)
    {
    }

    const char* from;   // the list of the referring rows
    const char* leaf;   // that refers; empty: the row's key does
    const char* where;  // "leaf=value" or "leaf=value|value": only those rows refer; empty: all
    Verb verb;
    const char* what;
    const char* which;  // with one $name, as in the templates
    const char* to[2];  // path templates (path_template.h), one of which has to lead to a row; the second may be null
    None none;
    Severity lost;  // of a reference that held before
};

inline constexpr Verb kBelongsTo = {"belongs to", "belong to"};
inline constexpr Verb kLeadsTo = {"leads to", "lead to"};
inline constexpr Verb kMatches = {"matches", "match"};
inline constexpr Verb kNeeds = {"needs", "need"};
inline constexpr Verb kRefersTo = {"refers to", "refer to"};
inline constexpr Verb kServes = {"serves", "serve"};
inline constexpr Verb kStandsFor = {"stands for", "stand for"};
inline constexpr Verb kUses = {"uses", "use"};
inline constexpr Verb kWorksFor = {"works for", "work for"};

inline constexpr char kRouterEntity[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{$bgpRmEntIndex}";
inline constexpr char kNeighbour[] =
    "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{$bgpRmEntIndex $bgpPeerLocalAddrType $bgpPeerLocalAddr $bgpPeerLocalPort "
    "$bgpPeerRemoteAddrType $bgpPeerRemoteAddr $bgpPeerRemotePort $bgpPeerLocalAddrScopeId}";
inline constexpr char kRouteMap[] = "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{$bgpRmEntIndex $value *}";
inline constexpr char kVrf[] = "/internal/vrf-config/stringTOindex{$value}";

// In the order of the schema's modules; those of one list stand together.
inline constexpr Reference kReferences[] = {
    {kEntities, "bgpRmEntVrfName", "", None::Empty, kServes, "VRF", "VRF $value", kVrf},
    {kRouterFamilies, "", "", None::Never, kBelongsTo, "router entity", "entity $bgpRmEntIndex", kRouterEntity},
    {kJoins, "", "", None::Never, kBelongsTo, "router entity", "entity $bgpRmEntIndex", kRouterEntity},
    {kJoins, "bgpRmAfmPartnerIndex", "bgpRmAfmJoin=1|2", None::Unset, kLeadsTo, "routing table", "routing table $value",
     "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{$value}"},
    {kNetworkManagers, "bgpNmEntRmIndex", "", None::Unset, kWorksFor, "router entity", "entity $value",
     "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{$value}"},
    {kNetworkManagers, "bgpNmEntVrfName", "", None::Empty, kServes, "VRF", "VRF $value", kVrf},
    {"/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry", "", "", None::Never, kBelongsTo, "network manager",
     "network manager $bgpNmEntIndex", "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{$bgpNmEntIndex}"},
    {kNeighbours, "", "", None::Never, kBelongsTo, "router entity", "entity $bgpRmEntIndex", kRouterEntity},
    {kNeighbours, "bgpPeerLocalNm", "", None::Zero, kUses, "network manager", "network manager $value",
     "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{$value}"},
    {kFamilies, "", "", None::Never, kBelongsTo, "neighbour", "$bgpPeerRemoteAddr", kNeighbour},
    {kFamilies, "bgpPeerAfiSafiInMapIndex", "", None::Zero, kRefersTo, "route map", "map $value", kRouteMap},
    {kFamilies, "bgpPeerAfiSafiOutMapIndex", "", None::Zero, kRefersTo, "route map", "map $value", kRouteMap},
    {"/DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry", "", "", None::Never, kBelongsTo, "neighbour",
     "$bgpPeerRemoteAddr", kNeighbour},
    {kRouteMaps, "", "", None::Never, kBelongsTo, "router entity", "entity $bgpRmEntIndex", kRouterEntity},
    {kRouteMaps, "bgpRouteMapMaPrefixList", "", None::Zero, kMatches, "prefix list", "list $value",
     "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry{$value *}",
     "/prefix-list-internal/idx-to-name{$value}"},
    {"/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry", "", "", None::Never, kBelongsTo, "router entity",
     "entity $bgpRmEntIndex", kRouterEntity},
    {kTableJoins, "rtmMjRtmFteIndex", "", None::Never, kBelongsTo, "routing table", "routing table $value",
     "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{$value}"},
    {kTableJoins, "rtmMjSlaveFteId", "rtmMjSlaveType=ariPrtnrRtm", None::Never, kLeadsTo, "routing table",
     "routing table $value", "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{$value}"},
    {kTableJoins, "rtmMjSlaveFteId", "rtmMjSlaveType=ariPrtnrBgp", None::Never, kLeadsTo, "router entity",
     "entity $value", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{$value}"},
    {kRules, "rtmRedistFteIndex", "", None::Never, kBelongsTo, "routing table", "routing table $value",
     "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{$value}"},
    {"/redist-protocol", "", "", None::Never, kStandsFor, "redistribution rule", "rule $entry",
     "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{$rtm-index $entry}"},
    {kRouters, "", "", None::Never, kStandsFor, "router entity", "AS $as-number",
     "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{*}/bgpRmEntLocalAs=$as-number"},
    {"/router/bgp/vrf", "", "", None::Never, kNeeds, "VRF index", "VRF $name",
     "/internal/vrf-config/stringTOindex{$name}"},
    {kPrefixLists, "", "", None::Never, kNeeds, "prefix list index", "$name",
     "/prefix-list-internal/name-to-idx{$name}"},
    {"/prefix-list-internal/name-to-idx", "", "", None::Never, kStandsFor, "prefix list", "$name",
     "/prefix-list{$name}"},
    {"/prefix-list-internal/name-to-idx", "idx", "", None::Unset, kNeeds, "prefix list name", "list $value",
     "/prefix-list-internal/idx-to-name{$value}/val=$name"},
    {"/prefix-list-internal/idx-to-name", "val", "", None::Unset, kNeeds, "prefix list index", "$value",
     "/prefix-list-internal/name-to-idx{$value}/idx=$idx"},
    {"/bgp-internal/bgp-vrf/as-to-bgp-idx", "inst-idx", "", None::Unset, kNeeds, "instance's AS number", "AS $as",
     "/bgp-internal/bgp-vrf{$vrf-idx}/idx-to-bgp-as{$value}/as-number=$as"},
    {"/bgp-internal/bgp-vrf/idx-to-bgp-as", "as-number", "", None::Unset, kNeeds, "AS's instance number", "AS $value",
     "/bgp-internal/bgp-vrf{$vrf-idx}/as-to-bgp-idx{$value}/inst-idx=$idx"},
    {"/internal/vrf-config/stringTOindex", "vrf-idx", "", None::Unset, kNeeds, "VRF name", "VRF $name",
     "/internal/vrf-config/indexTOstring{$value}/vname=$name"},
    {"/internal/vrf-config/indexTOstring", "vname", "", None::Empty, kNeeds, "VRF index", "VRF $value",
     "/internal/vrf-config/stringTOindex{$value}/vrf-idx=$index"},
    // By these the command line finds the rule of an announced network, which goes on working without.
    {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-get", "", "", None::Never, kStandsFor, "redistribution rule",
     "rule $entry", "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{$rtm-index $entry}", nullptr, Severity::Review},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-get", "", "", None::Never, kStandsFor, "route map row",
     "map $map", "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{$entity $map $entry}"},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-set", "", "", None::Never, kStandsFor, "route map row",
     "map $map", "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{$entity $map $entry}"},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-get", "", "", None::Never, kStandsFor, "configuration record",
     "record $index", "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{$entity $index}"},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-set", "", "", None::Never, kStandsFor, "configuration record",
     "record $index", "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{$entity $index}"},
};

// So that judgements find the table compiled, in children too. Throws std::invalid_argument, naming it, when a reference
// does not fit the schema.
void compile_references(const bgp_platform::schema::Schema& schema);

}  // namespace bgp_rehearse
