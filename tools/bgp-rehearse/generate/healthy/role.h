// What a router does in its network: it decides which tables are filled, and how far.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace bgp_generator::healthy {

enum class Role { Edge, ProviderEdge, RouteReflector, Leaf, Upgraded };

// A set of roles.
class Roles {
public:
    constexpr Roles(std::initializer_list<Role> roles)
    {
        for (const Role role : roles) {
            bits_ |= bit(role);
        }
    }
    static constexpr Roles all()
    {
        return {Role::Edge, Role::ProviderEdge, Role::RouteReflector, Role::Leaf, Role::Upgraded};
    }

    constexpr bool has(Role role) const { return (bits_ & bit(role)) != 0; }
    constexpr Roles common(Roles other) const
    {
        Roles both{};
        both.bits_ = bits_ & other.bits_;
        return both;
    }
    constexpr bool empty() const { return bits_ == 0; }

private:
    static constexpr uint32_t bit(Role role) { return uint32_t{1} << static_cast<uint32_t>(role); }

    uint32_t bits_ = 0;
};

// How many rows of a kind: neighbours, VRFs, rules of prefix access lists, route map entries.
struct Sizes {
    uint32_t neighbors = 0;
    uint32_t vrfs = 0;
    uint32_t prefix_rules = 0;
    uint32_t route_maps = 0;
};

struct KnownRole {
    Role role;
    const char* name;
    const char* what;
    Sizes least;  // where nothing is asked for, a number from here
    Sizes most;   // to here
};

constexpr KnownRole kRoles[] = {
    {Role::Edge,
     "edge",
     "transit, peers and customers behind route maps and prefix access lists; not converted yet",
     {6, 0, 12, 6},
     {30, 0, 60, 18}},
    {Role::ProviderEdge,
     "provider-edge",
     "VRFs of customers below /router/bgp, an MPLS VPN entity, VPN neighbours",
     {4, 2, 4, 2},
     {16, 8, 20, 6}},
    {Role::RouteReflector,
     "route-reflector",
     "many internal neighbours, a cluster id, few policies",
     {20, 0, 0, 0},
     {120, 0, 6, 2}},
    {Role::Leaf,
     "leaf",
     "a switch of a data centre: few neighbours, all of them spines, and connected routes",
     {2, 0, 2, 1},
     {8, 0, 6, 3}},
    {Role::Upgraded, "upgraded", "a router that an earlier upgrade has converted", {4, 0, 4, 3}, {20, 0, 24, 9}},
};

constexpr const KnownRole& known(Role role)
{
    return kRoles[static_cast<std::size_t>(role)];
}

}  // namespace bgp_generator::healthy
