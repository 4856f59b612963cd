// Removes the router entity's dead join with the BVM.
#pragma once

#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateBgpBvmJoinCalls[] = {
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
     logs("Failed to read entity index BGP entry: ")},
    {"cdb_get_enum_value", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus", goes_on()},
    {"maapi_delete", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}", goes_on()},
};

inline constexpr Step kUpdateBgpBvmJoin = {
    "update_bgp_bvm_join",
    FirstLine{"Starting BGP and BVM join update\n"},
    LastLine{"Finishing BGP and BVM join update\n"},
    NothingToDo{"No need to update BGP and BVM join update\n"},
    Failed{"Failed to read entity index BGP entry: "},
    PassedOver{},
    Condition{kStepMissing},
    kUpdateBgpBvmJoinCalls,
};

}  // namespace bgp_contract
