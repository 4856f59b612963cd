// Says of each OSPF entity whether it applies the PE-CE procedures.
#pragma once

#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateOspfPeCeCalls[] = {
    {"maapi_init_cursor", "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry", goes_on()},
    {"maapi_get_next", "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry", goes_on()},
    {"maapi_get_elem", "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{}/ospfPmEntVpnPeCeSupport",
     goes_on().explaining({"/DC-OSPF-MIB/ospfPmEntTable"})},
    {"maapi_set_elem", "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{}/ospfPmEntVpnPeCeSupport",
     logs("Failed to set the PE-CE support, err: ")},
};

inline constexpr Step kUpdateOspfPeCe = {
    "update_ospf_pe_ce",
    FirstLine{"Starting OSPF PE-CE update\n"},
    LastLine{"Finishing OSPF PE-CE update\n"},
    NothingToDo{},
    Failed{},
    PassedOver{},
    Condition{kStepMissing},
    kUpdateOspfPeCeCalls,
};

}  // namespace bgp_contract
