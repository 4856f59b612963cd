// Removes the router entity's dead join with the BVM.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateBgpBvmJoinCalls[] = {
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
     logs("Failed to read entity index BGP entry: "), stops(kEntityIndexUnread)},
    {"cdb_get_enum_value", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus", goes_on(),
     expected_where_missing("the router has no BVM join under its stored index",
                            loses("whether the BVM join is down cannot be read: it stays"))},
    {"maapi_delete", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}", goes_on(),
     expected_where_missing("the BVM join has moved to the global index and stays there",
                            loses("the BVM join that is down stays"))},
};

inline constexpr Step kUpdateBgpBvmJoin = {
    "update_bgp_bvm_join",
    Title{"BVM join"},
    FirstLine{"Starting BGP and BVM join update\n"},
    LastLine{"Finishing BGP and BVM join update\n"},
    NothingToDo{{"No need to update BGP and BVM join update\n", kNoEntity}},
    Failed{{"Failed to read entity index BGP entry: ", kEntityIndexUnread}},
    PassedOver{},
    Unread{},
    Conditions{},
    Removes{"/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry", "a join with the BVM that is down does nothing"},
    kUpdateBgpBvmJoinCalls,
};

}  // namespace bgp_contract
