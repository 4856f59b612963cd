// Completes the neighbours' unicast address families with disabled rows of the other family.
#pragma once

#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateNeighConfigAfiSafiCalls[] = {
    {"cdb_num_instances", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on(),
     loses("the neighbours' families cannot be counted, which only the log tells of")},
    {"maapi_init_cursor", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on(),
     stops("the neighbours' families cannot be read")},
    {"maapi_get_next", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on(),
     stops("the neighbours' families cannot be read to the end")},
    {"maapi_get_elem", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable", goes_on(),
     expected_where_missing(
         "whether the neighbour's family is on is not stored",
         loses("whether the neighbour's family is on cannot be read: its other family is not added"))},
    {"maapi_exists", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}", goes_on(),
     loses("whether the neighbour has its other family cannot be read")},
    {"maapi_create", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}",
     logs("Failed to create the disabled entry"), loses("the neighbour's other family is not added")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
     logs("Update FAILED"), loses("the neighbour's added family is not turned off")},
};

inline constexpr Step kUpdateNeighConfigAfiSafi = {
    "update_neigh_config_afi_safi",
    Title{"neighbour family pairs"},
    FirstLine{"enter update_neigh_config_afi_safi\n"},
    LastLine{"exit update_neigh_config_afi_safi\n"},
    NothingToDo{{"No need to update config - exit update_neigh_config_afi_safi\n", kNoEntity},
                {"No afi table entries to update\n", "no address families of neighbours are stored"}},
    Failed{},
    PassedOver{},
    Unread{},
    Conditions{},
    Removes{},
    kUpdateNeighConfigAfiSafiCalls,
};

}  // namespace bgp_contract
