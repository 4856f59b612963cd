// Gives the BGP router entity its entry in the command-line model. Without that entry there is no router whose VRFs the
// later steps could walk; an attribute that cannot be carried is missing there, and nothing else.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateRouterBgpCalls[] = {
    {"cdb_set_namespace", "", goes_on()},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
     logs("Failed to read as-number  err: ").explaining(kVrfJoins)},
    {"cdb_exists", "/router/bgp{}", goes_on()},
    {"maapi_create", "/router/bgp{}", logs("Failed to configure router bgp: ").explaining(kVrfJoins)},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalIdentifier",
     logs("Failed to get bgpRmEntLocalIdentifier, err: ")},
    {"maapi_set_elem2", "/router/bgp{}/router-id", logs("Failed to configure router-id: ")},
    {"cdb_get_enum_value", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntAsSize",
     logs("Failed to get bgpRmEntAsSize, err: ")},
    {"maapi_set_elem", "/router/bgp{}/as-size", logs("Failed to configure as-size: ")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntAdminStatus",
     logs("Failed to get bgpRmEntAdminStatus, err: ")},
    {"maapi_set_elem", "/router/bgp{}/administrative-status", logs("Failed to configure administrative-status: ")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntDefLocalPref",
     logs("Failed to get bgpRmEntDefLocalPref, err: ")},
    {"maapi_set_elem", "/router/bgp{}/bgp/default-local-preference",
     logs("Failed to configure default-local-preference: ")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntClusterId",
     logs("Failed to get bgpRmEntClusterId, err: ")},
    {"maapi_set_elem2", "/router/bgp{}/bgp/cluster-id", logs("Failed to configure bgp cluster-id: ")},
};

inline constexpr Step kUpdateRouterBgp = {
    "update_router_bgp",
    FirstLine{"Starting BGP router update\n"},
    LastLine{"Finishing BGP router update\n"},
    NothingToDo{"Router BGP high-level already exists ", "Failed to read as-number "},
    Failed{"Failed to configure router bgp: "},
    PassedOver{kNotOneEntity},
    Condition{kStepMissing},
    kUpdateRouterBgpCalls,
};

}  // namespace bgp_contract
