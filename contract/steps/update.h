// The entry point: what update() reads itself to decide which steps run. It writes nothing. A read that fails passes
// steps over, and the closing steps then meet rows that have not been carried to the new model.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

// The closing steps work on rows that none of the entity's steps has been at.
inline constexpr Texts kWithoutEntitySteps = {"/DC-BGP-MIB/bgpPeerTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable",
                                              "/DC-BGP-MIB/bgpRmAfmJoinTable", "/DC-RTM-MIB/rtmMjTable"};

inline constexpr CallSite kUpdateCalls[] = {
    {"cdb_set_namespace", "", goes_on()},
    {"cdb_num_instances", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", goes_on().explaining(kWithoutEntitySteps)},
    {"cdb_get_enum_value", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntSupportIpv6",
     logs("Failed to read IPv6 enable flag for BGP entry: ").explaining(kIpv6Rows)},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex", goes_on().explaining(kWithoutRekeying)},
    {"cdb_num_instances", "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry", goes_on()},
    {"cdb_num_instances", "/prefix-list", goes_on().explaining({"/prefix-list"})},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs", goes_on().explaining(kVrfJoins)},
    {"cdb_num_instances", "/router/bgp{}/vrf", goes_on().explaining(kVrfJoins)},
};

inline constexpr Step kUpdate = {
    "update",
    FirstLine{"Starting BGP update\n"},
    LastLine{"Finishing BGP update\n"},
    NothingToDo{},
    Failed{},
    PassedOver{},
    Condition{kStepMissing},
    kUpdateCalls,
};

// Where an allocation of the library is refused and the process does not end: without room for the names of the VRFs the
// upgrade goes on without their instances.
inline constexpr Demand kWithoutMemory = goes_on().explaining(kVrfJoins);

}  // namespace bgp_contract
