#include "generate/healthy/router.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "generate/settings.h"

namespace bgp_generator::healthy {

namespace {

// The first `room` neighbours of a group have addresses of these; 192.0.2.1 to .9 are routers' own.
constexpr uint32_t kLoopbacks = 0xC000020B;      // 192.0.2.11
constexpr uint32_t kTransitLinks = 0xC6336402;   // 198.51.100.2
constexpr uint32_t kPeerLinks = 0xC6336482;      // 198.51.100.130
constexpr uint32_t kCustomerLinks = 0xCB007102;  // 203.0.113.2
constexpr uint32_t kLoopbackRoom = 200;
constexpr uint32_t kHalfRoom = 31;  // links of four addresses in half a network
constexpr uint32_t kFullRoom = 63;

constexpr uint32_t kTransitAs = 64496;
constexpr uint32_t kPeerAs = 64501;
constexpr uint32_t kCustomerAs = 65300;
constexpr uint32_t kSpineAs = 65000;
constexpr uint32_t kCustomerAsNumbers = 200;

//   what, weight, internal, IPv6 session, VPN, addresses, AS numbers, in map, out map, prefix limit, hold time
// The last group of each role is behind map 1.
constexpr NeighborGroup kEdgeGroups[] = {
    {"core", 2, true, false, false, kLoopbacks, 1, kLoopbackRoom, 0, 1, 0, 0, 0, 180},
    {"transit", 1, false, false, false, kTransitLinks, 4, kHalfRoom, kTransitAs, 4, 3, 4, 1000000, 90},
    {"peer", 2, false, false, false, kPeerLinks, 4, kHalfRoom, kPeerAs, 8, 5, 6, 20000, 90},
    {"customer, IPv6", 2, false, true, false, 0, 0, 0, kCustomerAs, kCustomerAsNumbers, 1, 2, 100, 180},
    {"customer", 4, false, false, false, kCustomerLinks, 4, kFullRoom, kCustomerAs, kCustomerAsNumbers, 1, 2, 500, 180},
};
constexpr NeighborGroup kProviderEdgeGroups[] = {
    {"reflector", 2, true, false, true, kLoopbacks, 1, kLoopbackRoom, 0, 1, 0, 0, 0, 180},
    {"internet, IPv6", 1, false, true, false, 0, 0, 0, kTransitAs, 4, 1, 2, 200000, 90},
    {"internet", 1, false, false, false, kTransitLinks, 4, kHalfRoom, kTransitAs, 4, 1, 2, 1000000, 90},
};
constexpr NeighborGroup kReflectorGroups[] = {
    {"reflector", 1, true, false, false, kLoopbacks, 1, kLoopbackRoom, 0, 1, 0, 0, 0, 180},
    {"client", 9, true, false, false, 0, 0, 0, 0, 1, 1, 0, 0, 180},
};
constexpr NeighborGroup kLeafGroups[] = {
    {"spine, IPv6", 1, false, true, false, 0, 0, 0, kSpineAs, 1, 1, 2, 12000, 9},
    {"spine", 1, false, false, false, kTransitLinks, 4, kHalfRoom, kSpineAs, 1, 1, 2, 12000, 9},
};

struct Groups {
    const NeighborGroup* first;
    std::size_t count;
};

Groups groups_of(Role role)
{
    switch (role) {
        case Role::ProviderEdge:
            return {kProviderEdgeGroups, std::size(kProviderEdgeGroups)};
        case Role::RouteReflector:
            return {kReflectorGroups, std::size(kReflectorGroups)};
        case Role::Leaf:
            return {kLeafGroups, std::size(kLeafGroups)};
        case Role::Edge:
        case Role::Upgraded:
            break;
    }
    return {kEdgeGroups, std::size(kEdgeGroups)};
}

Roles fitting_roles(const Request& request)
{
    Roles fitting = Roles::all();
    for (const Flaw flaw : request.flaws) {
        const KnownFlaw& wanted = known(flaw);
        if (request.role && !wanted.roles.has(*request.role)) {
            throw std::invalid_argument("--flaw " + std::string(wanted.name) + " is not one of " +
                                        known(*request.role).name + ": give --role " + names_of(wanted.roles));
        }
        fitting = fitting.common(wanted.roles);
        if (fitting.empty()) {
            throw std::invalid_argument("no role can have all of these flaws: --flaw " + std::string(wanted.name) +
                                        " is one of " + names_of(wanted.roles));
        }
    }
    return fitting;
}

Role draw_role(const Request& request, Draw& draw)
{
    const Roles fitting = fitting_roles(request);
    Role role = Role::Edge;
    do {
        role = draw.one_of(kRoles).role;
    } while (!fitting.has(role));
    return request.role.value_or(role);
}

struct SizeKind {
    uint32_t Sizes::*size;
    std::optional<uint32_t> Request::*asked;
    const char* option;
    uint32_t most;
};
constexpr SizeKind kSizes[] = {
    {&Sizes::neighbors, &Request::neighbors, "--neighbors", kMostNeighbors},
    {&Sizes::vrfs, &Request::vrfs, "--vrfs", kMostVrfs},
    {&Sizes::prefix_rules, &Request::prefix_rules, "--prefix-rules", kMostPrefixRules},
    {&Sizes::route_maps, &Request::route_maps, "--route-maps", kMostRouteMaps},
};

uint32_t settled(const Request& request, Role role, const SizeKind& kind, Draw& draw)
{
    const uint32_t least = known(role).least.*kind.size;
    uint32_t number = least + draw.below(known(role).most.*kind.size - least + 1);
    const std::optional<uint32_t>& asked = request.*kind.asked;
    if (asked && *asked > kind.most) {
        throw std::invalid_argument(std::string(kind.option) + ": a healthy router has at most " +
                                    std::to_string(kind.most));
    }
    for (const Flaw flaw : request.flaws) {
        const uint32_t needed = known(flaw).needs.*kind.size;
        if (asked && *asked < needed) {
            throw std::invalid_argument("--flaw " + std::string(known(flaw).name) + " needs " + kind.option + " of " +
                                        std::to_string(needed) + " or more");
        }
        number = std::max(number, needed);
    }
    return asked.value_or(number);
}

// Not converted yet, an entity may have any index: most often it is one that the first release gave.
uint32_t draw_entity(const Router& router, Draw& draw)
{
    constexpr uint32_t kIndexes[] = {5, 5, 5, 10, 100, 2};
    const bool other =
        std::any_of(router.flaws.begin(), router.flaws.end(), [](Flaw flaw) { return known(flaw).other_index; });
    const uint32_t index = draw.one_of(kIndexes);
    const bool converted = router.role == Role::Upgraded;
    return converted || (draw.one_in(4) && !other) ? 1 : index;
}

bool draw_ipv6(const Router& router, Draw& draw)
{
    const bool supported = router.role == Role::ProviderEdge ? !draw.one_in(4) : draw.one_in(2);
    return router.role == Role::Upgraded || (supported && !router.has(Flaw::MissingIpv6Flag));
}

void draw_features(Router* router, Draw& draw)
{
    const bool provider = router->role == Role::ProviderEdge;
    const bool upgraded = router->role == Role::Upgraded;
    router->ipv6 = draw_ipv6(*router, draw);
    router->planned_ipv6 = draw.one_in(3) && !router->ipv6 && router->role == Role::Edge;
    router->model = provider || upgraded || router->sizes.vrfs > 0;
    router->vpn = provider || (upgraded && draw.one_in(2));
    router->mpls = provider || upgraded || router->has(Flaw::NoMplsAnswer);
    router->policies = router->role == Role::Edge || upgraded;
    router->spare_map = draw.one_in(4);
    router->reflects = router->role == Role::RouteReflector || draw.one_in(4);
    router->ospf = (router->role == Role::Edge && draw.one_in(2)) || router->has(Flaw::TakenRedistribution);
    router->internal_local = draw.one_in(2) ? Local::Own : draw.one_in(4) ? Local::Unknown : Local::Any;
    router->rules_in_list = 3 + draw.below(6);
    if (router->has(Flaw::CollidingNames)) {
        router->rules_in_list = std::min(router->rules_in_list, router->sizes.prefix_rules / 2);
    }
    const uint32_t networks = draw.below(4);
    if (router->has(Flaw::AnnouncedNetworks)) {
        router->networks = std::max(networks, 1U);
    } else if (router->entity == 1 && !provider) {
        router->networks = networks;
    }
}

// Each group's share of the neighbours by its weight.
void share_out(Router* router)
{
    const Groups groups = groups_of(router->role);
    std::copy_if(groups.first, groups.first + groups.count, std::back_inserter(router->groups),
                 [router](const NeighborGroup& group) { return router->ipv6 || !group.ipv6_session; });
    uint64_t left = 0;
    for (const NeighborGroup& group : router->groups) {
        left += group.weight;
    }
    uint32_t first = 0;
    for (NeighborGroup& group : router->groups) {
        const uint64_t neighbors = router->sizes.neighbors - first;
        group.first = first;
        group.count = static_cast<uint32_t>(left > group.weight ? neighbors * group.weight / left : neighbors);
        left -= group.weight;
        first += group.count;
    }
}

}  // namespace

bool Router::has(Flaw flaw) const
{
    return std::find(flaws.begin(), flaws.end(), flaw) != flaws.end();
}

Router draw_router(const Request& request)
{
    constexpr uint32_t kLeafAs = 65001;
    constexpr uint32_t kAs = 64512;
    constexpr uint32_t kOwnAddress = 0xC0000201;  // 192.0.2.1
    Router router;
    router.seed = request.seed;
    router.flaws = request.flaws;
    Draw draw = router.draw(Subject::Router);
    router.role = draw_role(request, draw);
    for (const SizeKind& kind : kSizes) {
        router.sizes.*kind.size = settled(request, router.role, kind, draw);
    }
    router.entity = draw_entity(router, draw);
    router.as = (router.role == Role::Leaf ? kLeafAs : kAs) + draw.below(200);
    router.identifier = kOwnAddress + draw.below(9);
    draw_features(&router, draw);
    share_out(&router);
    return router;
}

}  // namespace bgp_generator::healthy
