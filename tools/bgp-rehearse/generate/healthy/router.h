// One router, drawn before anything is written: few numbers from which each table computes its rows, so that tables that
// name the same thing name it alike, and nothing grows with the number of rows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "generate/draw.h"
#include "generate/healthy/flaw.h"
#include "generate/healthy/role.h"

namespace bgp_generator::healthy {

constexpr uint32_t kMostNeighbors = 16'000'000;  // as many as 10.0.0.0/8 has addresses for

// What is asked for; the seed draws all else.
struct Request {
    std::optional<Role> role;
    std::vector<Flaw> flaws;
    std::optional<uint32_t> neighbors;
    std::optional<uint32_t> vrfs;
    std::optional<uint32_t> prefix_rules;
    std::optional<uint32_t> route_maps;
    uint64_t seed = 0;
};

enum class Local { Any, Own, Unknown };

// Neighbours that are alike, numbered on from `first` among all.
struct NeighborGroup {
    const char* what;       // in descriptions
    uint32_t weight;        // the group's share of all neighbours
    bool internal;          // of the same AS
    bool ipv6_session;      // drawn where the router supports IPv6
    bool vpn;               // exchanges VPN routes where the router does
    uint32_t network;       // the first `room` neighbours have addresses from here, `step` apart;
    uint32_t step;          // the others have theirs in 10.0.0.0/8
    uint32_t room;          //
    uint32_t as;            // the neighbours' AS numbers, from here on; 0 for internal ones
    uint32_t as_numbers;    //
    uint32_t in_map;        // route maps, where the router has as many; 0 for none
    uint32_t out_map;       //
    uint32_t prefix_limit;  // 0 for none
    uint32_t hold_time;     //
    uint32_t first = 0;
    uint32_t count = 0;
};

struct Router {
    Role role = Role::Edge;
    uint64_t seed = 0;
    std::vector<Flaw> flaws;
    Sizes sizes;

    uint32_t entity = 1;  // the router entity's index
    uint32_t as = 0;
    uint32_t identifier = 0;    // the router id, an IPv4 address
    bool ipv6 = false;          // the entity supports IPv6
    bool planned_ipv6 = false;  // it does not, and neighbours are configured for it all the same
    bool model = false;         // /router/bgp is there
    bool mpls = false;          // the MPLS VPN entity is
    bool vpn = false;           // VPN routes are exchanged
    bool policies = false;      // a route policy is named
    bool spare_map = false;     // a route map has been removed, and its number is free
    bool reflects = false;      // a cluster id is set
    bool ospf = false;          // an OSPF process runs beside BGP
    Local internal_local = Local::Any;
    uint32_t rules_in_list = 1;
    uint32_t networks = 0;  // announced
    std::vector<NeighborGroup> groups;

    bool has(Flaw flaw) const;
    Draw draw(Subject subject, uint64_t number = 0) const { return {seed, subject, number}; }
};

// Throws std::invalid_argument where the wishes do not fit together, saying how.
Router draw_router(const Request& request);

}  // namespace bgp_generator::healthy
