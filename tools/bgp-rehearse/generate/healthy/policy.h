// Route maps, prefix access lists and the names of both, each computed from its number.
#pragma once

#include <cstdint>
#include <string>

#include "generate/healthy/router.h"

namespace bgp_generator::healthy {

uint32_t named_maps(Role role);              // route maps 1 to this one are those of the groups of neighbours
uint32_t route_maps(const Router& router);   // route maps; one has up to three entries
uint32_t unused_map(const Router& router);   // a number behind them
uint32_t missing_map(const Router& router);  // one that no row has
std::string map_name(const Router& router, uint32_t map);

struct MapEntry {
    uint32_t map;
    uint32_t entry;
    bool permit;
    uint32_t prefix_list;  // 0 for none
    uint32_t local_preference;
};

MapEntry map_entry(const Router& router, uint32_t number);

uint32_t access_lists(const Router& router);
std::string list_name(const Router& router, uint32_t list);
bool is_named(const Router& router, uint32_t list);

struct AccessRule {
    uint32_t list;
    uint32_t rule;
    uint32_t prefix;
    uint32_t length;
    uint32_t at_least;  // bounds of the length, 0 for none
    uint32_t at_most;
    bool permit;
};

AccessRule access_rule(const Router& router, uint32_t number);

}  // namespace bgp_generator::healthy
