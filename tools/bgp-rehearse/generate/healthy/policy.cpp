#include "generate/healthy/policy.h"

#include <iterator>

namespace bgp_generator::healthy {

namespace {

constexpr uint32_t kEntriesInMap = 3;

// The first is what the last group of neighbours takes in.
constexpr const char* kEdgeMaps[] = {"CUSTOMERS-IN", "CUSTOMERS-OUT", "UPSTREAM-IN",
                                     "UPSTREAM-OUT", "PEERS-IN",      "PEERS-OUT"};
constexpr const char* kProviderEdgeMaps[] = {"INTERNET-IN", "INTERNET-OUT"};
constexpr const char* kReflectorMaps[] = {"CLIENTS-IN"};
constexpr const char* kLeafMaps[] = {"FABRIC-IN", "FABRIC-OUT"};

struct Names {
    const char* const* first;
    uint32_t count;
};

Names names_of_maps(Role role)
{
    switch (role) {
        case Role::ProviderEdge:
            return {kProviderEdgeMaps, std::size(kProviderEdgeMaps)};
        case Role::RouteReflector:
            return {kReflectorMaps, std::size(kReflectorMaps)};
        case Role::Leaf:
            return {kLeafMaps, std::size(kLeafMaps)};
        case Role::Edge:
        case Role::Upgraded:
            break;
    }
    return {kEdgeMaps, std::size(kEdgeMaps)};
}

constexpr const char* kLists[] = {"BOGONS", "CUSTOMERS-IN", "LOOPBACKS", "OWN-PREFIXES", "UPSTREAM-OUT", "DATACENTRES"};

struct Prefix {
    uint32_t address;
    uint32_t length;
};
constexpr Prefix kBogons[] = {{0x00000000, 8},  {0x7F000000, 8},  {0xA9FE0000, 16}, {0xAC100000, 12},
                              {0xC0A80000, 16}, {0xC6120000, 15}, {0xE0000000, 4},  {0xF0000000, 4}};

std::string numbered(const Names& names, uint32_t number)
{
    const std::string name = names.first[(number - 1) % names.count];
    return number <= names.count ? name : name + "-" + std::to_string(number);
}

uint32_t masked(uint32_t address, uint32_t length)
{
    return address & ~uint32_t{0} << (32 - length);
}

}  // namespace

uint32_t named_maps(Role role)
{
    return names_of_maps(role).count;
}

uint32_t route_maps(const Router& router)
{
    return router.sizes.route_maps / kEntriesInMap + (router.sizes.route_maps % kEntriesInMap != 0);
}

uint32_t unused_map(const Router& router)
{
    return route_maps(router) + 1;
}

uint32_t missing_map(const Router& router)
{
    return route_maps(router) + 900;
}

std::string map_name(const Router& router, uint32_t map)
{
    return map == unused_map(router) ? "OLD-POLICY" : numbered(names_of_maps(router.role), map);
}

// The first entry keeps out what the first list names, the second takes what another names, the third takes the rest.
MapEntry map_entry(const Router& router, uint32_t number)
{
    Draw draw = router.draw(Subject::RouteMap, number);
    const uint32_t lists = access_lists(router);
    const uint32_t position = number % kEntriesInMap;
    MapEntry entry{number / kEntriesInMap + 1, 10 * (position + 1), position != 0, 0, 0};
    if (lists > 0 && position == 0) {
        entry.prefix_list = 1;
    } else if (lists > 1 && position == 1) {
        entry.prefix_list = 2 + (entry.map - 1) % (lists - 1);
    }
    if (entry.permit) {
        entry.local_preference = 90 + 10 * draw.below(12);
    }
    return entry;
}

uint32_t access_lists(const Router& router)
{
    return router.sizes.prefix_rules / router.rules_in_list + (router.sizes.prefix_rules % router.rules_in_list != 0);
}

std::string list_name(const Router& router, uint32_t list)
{
    if (router.has(Flaw::CollidingNames) && list == access_lists(router)) {
        list = 1;
    }
    return numbered({kLists, std::size(kLists)}, list);
}

bool is_named(const Router& router, uint32_t list)
{
    return list != 1 || !router.has(Flaw::UnnamedList);
}

AccessRule access_rule(const Router& router, uint32_t number)
{
    Draw draw = router.draw(Subject::PrefixRule, number);
    const uint32_t position = number % router.rules_in_list;
    AccessRule rule{number / router.rules_in_list + 1, 5 * (position + 1), 0, 0, 0, 0, true};
    if (rule.list == 1) {
        const Prefix& bogon = kBogons[position % std::size(kBogons)];
        rule.prefix = bogon.address;
        rule.length = bogon.length;
        rule.at_most = 32;
    } else {
        constexpr uint32_t kLengths[] = {16, 20, 22, 24, 24};
        rule.length = draw.one_of(kLengths);
        rule.prefix = masked(0x0A000000 + (number & 0xFFFF) * 256, rule.length);
        rule.at_least = draw.one_in(4) ? rule.length + 1 + draw.below(2) : 0;
        rule.at_most = draw.one_in(2) ? 26 + draw.below(7) : 0;
        rule.permit = !draw.one_in(6);
    }
    if (router.has(Flaw::HostBits) && number == 0) {
        rule.prefix = 0xCB007105;  // 203.0.113.5
        rule.length = 24;
    }
    return rule;
}

}  // namespace bgp_generator::healthy
