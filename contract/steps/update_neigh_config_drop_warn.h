// Gives the neighbours and their address families the new model's settings for the prefix limit, a table in one read and
// one write.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateNeighConfigDropWarnCalls[] = {
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", goes_on(),
     loses("the neighbours cannot be counted: their limits and actions stay as they are")},
    {"cdb_get_values", "/DC-BGP-MIB/bgpPeerTable", logs("Failed to get bgpPeerTable err: "),
     loses("the neighbours cannot be read: their limits and actions stay as they are")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpPeerTable", logs("Failed to set bgpPeerTable err: "),
     loses("the neighbours' limits and actions stay as they are")},
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on(),
     loses("the neighbours' families cannot be counted: their actions stay as they are")},
    {"cdb_get_values", "/DC-BGP-MIB/bgpPeerAfiSafiTable", logs("Failed to get BgpPeerAfiSafiTable err: "),
     loses("the neighbours' families cannot be read: their actions stay as they are")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpPeerAfiSafiTable", logs("Failed to set BgpPeerAfiSafiTable err: "),
     loses("the actions of the neighbours' families stay as they are")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
     logs("Failed to get local as number, err: ").explaining(kNeighborRows),
     loses("the AS number cannot be read: limits and actions are written under the old index")},
    {"cdb_exists", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}", goes_on().explaining(kNeighborRows),
     loses(
         "whether the router is re-keyed already cannot be read: limits and actions are written under the new index")},
    {"maapi_exists", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{}", goes_on().explaining(kNeighborRows),
     loses("whether the router has its new index cannot be read: limits and actions are written under another")},
};

inline constexpr Step kUpdateNeighConfigDropWarn = {
    "update_neigh_config_drop_warn",
    Title{"neighbour limits"},
    FirstLine{"enter update_neigh_config_drop_warn\n"},
    LastLine{"exit update_neigh_config_drop_warn\n"},
    NothingToDo{{"No need to update config - exit update_neigh_config_drop_warn\n", kNoEntity}},
    Failed{},
    PassedOver{},
    Unread{},
    Conditions{},
    Removes{},
    kUpdateNeighConfigDropWarnCalls,
};

}  // namespace bgp_contract
