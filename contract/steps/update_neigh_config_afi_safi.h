// Completes the neighbours' unicast address families with disabled rows of the other family.
#pragma once

#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateNeighConfigAfiSafiCalls[] = {
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on()},
    {"maapi_init_cursor", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on()},
    {"maapi_get_next", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on()},
    {"maapi_get_elem", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable", goes_on()},
    {"maapi_exists", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}", goes_on()},
    {"maapi_create", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}",
     logs("Failed to create the disabled entry")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
     logs("Update FAILED")},
};

inline constexpr Step kUpdateNeighConfigAfiSafi = {
    "update_neigh_config_afi_safi",
    FirstLine{"enter update_neigh_config_afi_safi\n"},
    LastLine{"exit update_neigh_config_afi_safi\n"},
    NothingToDo{"No need to update config - exit update_neigh_config_afi_safi\n", "No afi table entries to update\n"},
    Failed{},
    PassedOver{},
    Condition{kStepMissing},
    kUpdateNeighConfigAfiSafiCalls,
};

}  // namespace bgp_contract
