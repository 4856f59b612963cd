// What is drawn, and who takes it.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace bgp_generator {

constexpr uint32_t kMostNeighbors = 100'000'000;
constexpr uint32_t kMostVrfs = 65'534;  // VRF 0 is the global one, and 16 bits of an RTM index name a VRF
constexpr uint32_t kMostPrefixRules = 100'000'000;
constexpr uint32_t kMostRouteMaps = 100'000'000;
constexpr uint32_t kMostEntities = 3;

struct Settings {
    uint32_t neighbors = 0;     // rows of bgpPeerTable
    uint32_t vrfs = 0;          // VRFs below /router/bgp; some of them are missing from the VRF maps
    uint32_t prefix_rules = 0;  // rows of aallPreAccessListTable
    uint32_t route_maps = 0;    // rows of bgpRouteMapTable
    uint32_t entities = 1;      // rows of bgpRmEntTable
    uint64_t seed = 0;          // draws all else
};

// Takes the next piece of the text; false: it could not, and the rest is not made.
using Sink = std::function<bool(std::string_view)>;

}  // namespace bgp_generator
