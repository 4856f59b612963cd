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
    {"cdb_set_namespace", "", goes_on(), loses(kNamesOutside)},
    {"cdb_num_instances", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", goes_on().explaining(kWithoutEntitySteps),
     stops(kEntitiesUncounted)},
    {"cdb_get_enum_value", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntSupportIpv6",
     logs("Failed to read IPv6 enable flag for BGP entry: ").explaining(kIpv6Rows), stops(kIpv6FlagUnread)},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex", goes_on().explaining(kWithoutRekeying),
     stops(kEntityIndexUnread)},
    {"cdb_num_instances", "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry", goes_on(),
     stops("how many access list rules are stored cannot be read")},
    {"cdb_num_instances", "/prefix-list", goes_on().explaining({"/prefix-list"}),
     loses("whether there are prefix lists already cannot be read: the access lists are converted even so")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs", goes_on().explaining(kVrfJoins),
     stops(kAsNumberUnread)},
    {"cdb_num_instances", "/router/bgp{}/vrf", goes_on().explaining(kVrfJoins),
     expected_where_missing(kNoVrfs, stops(kVrfsUncounted))},
};

inline constexpr Step kUpdate = {
    "update",
    Title{"choice of steps"},
    FirstLine{"Starting BGP update\n"},
    LastLine{"Finishing BGP update\n"},
    NothingToDo{},
    Failed{},
    PassedOver{},
    Unread{},
    Conditions{},
    Removes{},
    kUpdateCalls,
};

// Where an allocation of the library is refused and the process does not end: without room for the names of the VRFs the
// upgrade goes on without their instances.
inline constexpr Demand kWithoutMemory = goes_on().explaining(kVrfJoins);

}  // namespace bgp_contract
