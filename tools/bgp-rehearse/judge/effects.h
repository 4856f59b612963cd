// What an upgrade does to rows that stay, in network words, as data: a leaf whose change is told, one line each.
#pragma once

#include <cstdint>

#include "judge/finding.h"
#include "judge/lists.h"

namespace bgp_rehearse {

// How rows are told that had no value and have one.
enum class HadNone : uint8_t {
    Silent,
    Apart,  // behind the others, and not counted among them
    Alike,  // as a change like any other
};

struct Effect {
    constexpr Effect(FindingId is, Severity how_severe, const char* of_list, const char* of_leaf, const char* from,
                     const char* to, HadNone without, const char* does, const char* do_many, const char* row_has)
        : id(is),
          severity(how_severe),
          had_none(without),
          list(of_list),
          leaf(of_leaf),
          before(from),
          after(to),
          one(does),
          many(do_many),
          what(row_has)
    {
    }

    FindingId id;
    Severity severity;
    HadNone had_none;
    const char* list;
    const char* leaf;    // its way from the list, "bgp/cluster-id"; a key leaf shows in rows that have moved
    const char* before;  // the value that it had, "!up" for any but that one; empty: any
    const char* after;
    const char* one;   // "1 neighbour gets another prefix limit: 100 -> 0"
    const char* many;  // "2 neighbours get another prefix limit: 100 -> 0"
    const char* what;  // "2 neighbours had no prefix limit and get one: 0"
};

// A neighbour's family that is turned off stands in family_off.cpp: what it had to do with depends on other rows.
inline constexpr Effect kEffects[] = {
    {FindingId::LimitRewritten, Severity::Note, kNeighbours, "bgpPeerConfigMaxPrfx", "", "", HadNone::Apart,
     "gets another prefix limit", "get another prefix limit", "prefix limit"},
    {FindingId::ActionRewritten, Severity::Note, kNeighbours, "bgpPeerConfigDropWarn", "", "", HadNone::Apart,
     "gets another action past the prefix limit", "get another action past the prefix limit",
     "action past the prefix limit"},
    {FindingId::ActionRewritten, Severity::Note, kFamilies, "bgpPeerAfiSafiConfigDropWarn", "", "", HadNone::Apart,
     "gets another action past the prefix limit", "get another action past the prefix limit",
     "action past the prefix limit"},
    {FindingId::FamilyOff, Severity::Review, kRouterFamilies, "bgpRmAfiSafiAdminStatus", "up", "!up", HadNone::Silent,
     "is turned off", "are turned off", ""},
    {FindingId::FamilyOff, Severity::Review, kEntities, "bgpRmEntSupportIpv6", "true", "!true", HadNone::Silent,
     "no longer supports IPv6", "no longer support IPv6", ""},
    {FindingId::IdentityChanged, Severity::Review, kEntities, "bgpRmEntLocalIdentifier", "", "", HadNone::Silent,
     "gets another router id", "get another router id", ""},
    {FindingId::IdentityChanged, Severity::Review, kEntities, "bgpRmEntClusterId", "", "", HadNone::Silent,
     "gets another cluster id", "get another cluster id", ""},
    {FindingId::IdentityChanged, Severity::Review, kRouters, "router-id", "", "", HadNone::Silent,
     "gets another router id", "get another router id", ""},
    {FindingId::IdentityChanged, Severity::Review, kRouters, "bgp/cluster-id", "", "", HadNone::Silent,
     "gets another cluster id", "get another cluster id", ""},
    {FindingId::RedistributionChanged, Severity::Review, kRules, "rtmRedistInfoSrc", "", "", HadNone::Alike,
     "gets another source", "get another source", ""},
    {FindingId::RedistributionChanged, Severity::Review, kRules, "rtmRedistInfoDest", "", "", HadNone::Alike,
     "gets another destination", "get another destination", ""},
    {FindingId::RedistributionChanged, Severity::Review, kRules, "rtmRedistAddrFilterType", "", "", HadNone::Alike,
     "filters another kind of address", "filter another kind of address", ""},
    {FindingId::RedistributionChanged, Severity::Review, kRules, "rtmRedistAddrFilter", "", "", HadNone::Alike,
     "filters another address", "filter another address", ""},
    {FindingId::RedistributionChanged, Severity::Review, kRules, "rtmRedistAddrFilterLen", "", "", HadNone::Alike,
     "filters by another prefix length", "filter by another prefix length", ""},
    {FindingId::RedistributionChanged, Severity::Review, kRules, "rtmRedistRedistFlag", "", "", HadNone::Alike,
     "does something else with its routes", "do something else with their routes", ""},
    {FindingId::RedistributionChanged, Severity::Review, kRules, "rtmRedistAdminStat", "", "", HadNone::Alike,
     "gets another status", "get another status", ""},
    {FindingId::IndexChanged, Severity::Review, kRouteMaps, "bgpRouteMapIndex", "", "", HadNone::Silent,
     "gets another map number", "get another map number", ""},
    {FindingId::IndexChanged, Severity::Review, kRouteMaps, "bgpRouteMapEntryIndex", "", "", HadNone::Silent,
     "gets another entry number", "get another entry number", ""},
    {FindingId::IndexChanged, Severity::Review, "/internal/vrf-config/route-map/vrf/stringTOindex", "map-idx", "", "",
     HadNone::Silent, "stands for another route map", "stand for another route map", ""},
    {FindingId::IndexChanged, Severity::Review, "/internal/vrf-config/route-policy/vrf/stringTOindex", "pol-idx", "",
     "", HadNone::Silent, "stands for another route policy", "stand for another route policy", ""},
    {FindingId::RouteMapRewritten, Severity::Note, kRouteMaps, "bgpRouteMapMaAfiDef", "", "", HadNone::Apart,
     "gets another default address family", "get another default address family", "default address family"},
    {FindingId::RouteMapRewritten, Severity::Note, kRouteMaps, "bgpRouteMapMaSafiDef", "", "", HadNone::Apart,
     "gets another default subsequent family", "get another default subsequent family", "default subsequent family"},
};

// So that judgements find the table compiled, in children too. Throws std::invalid_argument, naming it, when an effect does
// not fit the schema.
void compile_effects(const bgp_platform::schema::Schema& schema);

}  // namespace bgp_rehearse
