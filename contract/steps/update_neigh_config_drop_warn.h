// Gives the neighbours and their address families the new model's settings for the prefix limit, a table in one read and
// one write.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateNeighConfigDropWarnCalls[] = {
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", goes_on()},
    {"cdb_get_values", "/DC-BGP-MIB/bgpPeerTable", logs("Failed to get bgpPeerTable err: ")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpPeerTable", logs("Failed to set bgpPeerTable err: ")},
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on()},
    {"cdb_get_values", "/DC-BGP-MIB/bgpPeerAfiSafiTable", logs("Failed to get BgpPeerAfiSafiTable err: ")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpPeerAfiSafiTable", logs("Failed to set BgpPeerAfiSafiTable err: ")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
     logs("Failed to get local as number, err: ").explaining(kNeighborRows)},
    {"cdb_exists", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}", goes_on().explaining(kNeighborRows)},
    {"maapi_exists", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{}", goes_on().explaining(kNeighborRows)},
};

inline constexpr Step kUpdateNeighConfigDropWarn = {
    "update_neigh_config_drop_warn",
    FirstLine{"enter update_neigh_config_drop_warn\n"},
    LastLine{"exit update_neigh_config_drop_warn\n"},
    NothingToDo{"No need to update config - exit update_neigh_config_drop_warn\n"},
    Failed{},
    PassedOver{},
    Condition{kStepMissing},
    kUpdateNeighConfigDropWarnCalls,
};

}  // namespace bgp_contract
