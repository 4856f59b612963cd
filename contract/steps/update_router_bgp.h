// Gives the BGP router entity its entry in the command-line model. Without that entry there is no router whose VRFs the
// later steps could walk; an attribute that cannot be carried is missing there, and nothing else.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr char kNoRouterEntry[] = "the router's entry cannot be made";

inline constexpr CallSite kUpdateRouterBgpCalls[] = {
    {"cdb_set_namespace", "", goes_on(), loses(kNamesOutside)},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
     logs("Failed to read as-number  err: ").explaining(kVrfJoins), stops(kAsNumberUnread)},
    {"cdb_exists", "/router/bgp{}", goes_on(),
     loses("whether the router is in the command-line model already cannot be read")},
    {"maapi_create", "/router/bgp{}", logs("Failed to configure router bgp: ").explaining(kVrfJoins),
     stops(kNoRouterEntry)},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalIdentifier",
     logs("Failed to get bgpRmEntLocalIdentifier, err: "),
     expected_where_missing("no router id is stored", loses("the router id is not carried over"))},
    {"maapi_set_elem2", "/router/bgp{}/router-id", logs("Failed to configure router-id: "),
     loses("the router id is not carried over")},
    {"cdb_get_enum_value", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntAsSize",
     logs("Failed to get bgpRmEntAsSize, err: "),
     expected_where_missing("no AS number size is stored", loses("the AS number size is not carried over"))},
    {"maapi_set_elem", "/router/bgp{}/as-size", logs("Failed to configure as-size: "),
     loses("the AS number size is not carried over")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntAdminStatus",
     logs("Failed to get bgpRmEntAdminStatus, err: "),
     expected_where_missing("no administrative status is stored",
                            loses("the administrative status is not carried over"))},
    {"maapi_set_elem", "/router/bgp{}/administrative-status", logs("Failed to configure administrative-status: "),
     loses("the administrative status is not carried over")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntDefLocalPref",
     logs("Failed to get bgpRmEntDefLocalPref, err: "),
     expected_where_missing("no default local preference is stored",
                            loses("the default local preference is not carried over"))},
    {"maapi_set_elem", "/router/bgp{}/bgp/default-local-preference",
     logs("Failed to configure default-local-preference: "), loses("the default local preference is not carried over")},
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntClusterId",
     logs("Failed to get bgpRmEntClusterId, err: "),
     expected_where_missing("the router has no cluster id", loses("the cluster id is not carried over"))},
    {"maapi_set_elem2", "/router/bgp{}/bgp/cluster-id", logs("Failed to configure bgp cluster-id: "),
     loses("the cluster id is not carried over")},
};

inline constexpr Step kUpdateRouterBgp = {
    "update_router_bgp",
    Title{"router entry in the command-line model"},
    FirstLine{"Starting BGP router update\n"},
    LastLine{"Finishing BGP router update\n"},
    NothingToDo{{"Router BGP high-level already exists ", "the router is in the command-line model already"}},
    Failed{{"Failed to read as-number ", kAsNumberUnread}, {"Failed to configure router bgp: ", kNoRouterEntry}},
    PassedOver{kNotOneEntity},
    Unread{},
    Conditions{},
    Removes{},
    kUpdateRouterBgpCalls,
};

}  // namespace bgp_contract
