// The VRFs of a router, each computed from its number.
#pragma once

#include <cstdint>
#include <string>

#include "generate/healthy/router.h"

namespace bgp_generator::healthy {

struct Vrf {
    std::string name;
    uint32_t index = 0;
    uint32_t rtm_index = 0;  // of IPv4; that of IPv6 is the next number
    bool numbered = true;    // in the maps of names and indexes
    bool has_status = true;
    bool up = true;
    bool ipv4 = true;
    bool ipv6 = false;
    uint32_t neighbors = 0;
    uint32_t ospf_process = 0;  // 0 for none
    uint32_t ospf_index = 0;
};

Vrf vrf(const Router& router, uint32_t position);

template <typename Visit>
void for_each_vrf(const Router& router, Visit&& visit)
{
    for (uint32_t i = 0; i < router.sizes.vrfs; ++i) {
        visit(vrf(router, i));
    }
}

}  // namespace bgp_generator::healthy
