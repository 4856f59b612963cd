// The neighbours of a router and their address families, each computed from its number.
#pragma once

#include <cstdint>
#include <string>

#include "generate/healthy/router.h"

namespace bgp_generator::healthy {

struct Neighbor {
    const NeighborGroup* group = nullptr;
    uint32_t number = 0;  // among all
    uint32_t entity = 0;
    Local local = Local::Any;
    uint32_t local_address = 0;   // IPv4, where it is an own one
    uint32_t remote_address = 0;  // IPv4; the link's number where the session is over IPv6
    bool up = true;

    bool ipv6() const noexcept { return group->ipv6_session; }
    const char* local_type() const noexcept;
    std::string local_octets() const;
    const char* remote_type() const noexcept { return ipv6() ? "ipv6" : "ipv4"; }
    std::string remote_octets() const;
    std::string remote_text() const;
};

struct NeighborFamily {
    const char* afi;
    const char* safi;
    bool on;
    uint32_t in_map;  // 0 for none
    uint32_t out_map;
};

Neighbor neighbor(const Router& router, const NeighborGroup& group, uint32_t position);

// One to three families, IPv4 unicast first.
struct NeighborFamilies {
    NeighborFamily rows[3] = {};
    uint32_t count = 0;

    const NeighborFamily* begin() const noexcept { return rows; }
    const NeighborFamily* end() const noexcept { return rows + count; }
};

NeighborFamilies families(const Router& router, const Neighbor& neighbor);

// Calls visit(const Neighbor&) for all until it returns false.
template <typename Visit>
void for_each_neighbor(const Router& router, Visit&& visit)
{
    for (const NeighborGroup& group : router.groups) {
        for (uint32_t i = 0; i < group.count; ++i) {
            if (!visit(neighbor(router, group, i))) {
                return;
            }
        }
    }
}

}  // namespace bgp_generator::healthy
