// Says of each OSPF entity whether it applies the PE-CE procedures.
#pragma once

#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateOspfPeCeCalls[] = {
    {"maapi_init_cursor", "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry", goes_on(),
     stops("the OSPF entities cannot be read")},
    {"maapi_get_next", "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry", goes_on(),
     stops("the OSPF entities cannot be read to the end")},
    {"maapi_get_elem", "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{}/ospfPmEntVpnPeCeSupport",
     goes_on().explaining({"/DC-OSPF-MIB/ospfPmEntTable"}),
     expected_where_missing("the OSPF entity does not say whether it supports PE-CE",
                            loses("whether the OSPF entity supports PE-CE cannot be read: it is said anew"))},
    {"maapi_set_elem", "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{}/ospfPmEntVpnPeCeSupport",
     logs("Failed to set the PE-CE support, err: "), loses("the OSPF entity does not say whether it supports PE-CE")},
};

inline constexpr Step kUpdateOspfPeCe = {
    "update_ospf_pe_ce",
    Title{"OSPF PE-CE support"},
    FirstLine{"Starting OSPF PE-CE update\n"},
    LastLine{"Finishing OSPF PE-CE update\n"},
    NothingToDo{},
    Failed{},
    PassedOver{},
    Unread{},
    Conditions{},
    Removes{},
    kUpdateOspfPeCeCalls,
};

}  // namespace bgp_contract
