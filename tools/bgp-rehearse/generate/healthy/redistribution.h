// The rules by which the RTM hands routes on, as its own table and the maps of rules see them.
#pragma once

#include <cstdint>
#include <functional>

#include "generate/healthy/router.h"

namespace bgp_generator::healthy {

constexpr uint32_t kFirstNetwork = 555337809;  // the rule numbers of announced networks go on from here
constexpr uint32_t kNetworkLength = 24;

struct Redistribution {
    uint32_t rtm_index = 0;
    uint32_t entry = 0;
    const char* source = "";
    const char* destination = "bgp";
    bool ipv6 = false;
    uint32_t network = 0;   // an announced network; 0 for all routes of the source
    uint32_t instance = 0;  // of the protocol that is handed the routes
    bool in_vrf = false;

    bool into_bgp() const noexcept;
};

// Those of the global instance, then of the VRFs.
void for_each_redistribution(const Router& router, const std::function<void(const Redistribution&)>& visit);

constexpr uint32_t kOspfProcess = 100;  // of the global instance
constexpr uint32_t kOspfIndex = 1;

}  // namespace bgp_generator::healthy
