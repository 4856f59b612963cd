// Gives each VRF of the BGP router its instance in the routing stack's tables. The instances are made by code that the
// BGP daemon shares: a write that fails there ends the process.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr char kVrfSource[] = "src/config_update/bgp_update_vrf";
inline constexpr char kUtilsSource[] = "src/daemon/bgp_utils";
inline constexpr char kRouterMgrSource[] = "src/daemon/bgp_router_mgr";

inline constexpr Meaning kNoNumber = stops("the VRF's BGP instance cannot be given a number");

inline constexpr CallSite kUpdateVrfCalls[] = {
    {"cdb_num_instances", "/router/bgp{}/vrf", faults("update_vrf", kVrfSource, 203),
     stops("the VRFs cannot be counted")},
    {"cdb_get_objects", "/router/bgp{}/vrf", logs("Failed to read BGP VRF objects [").explaining(kVrfJoins),
     stops(kVrfsUnread)},
    {"cdb_get", "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/vrf-idx",
     logs("Trying to update a non existent VRF: ").explaining(kVrfJoins),
     left("the VRF gets no BGP instance: it has no VRF index")},
    {"maapi_exists", "/bgp-internal/bgp-vrf{}", goes_on(),
     loses("whether the VRF has BGP instances already cannot be read")},
    {"maapi_create", "/bgp-internal/bgp-vrf{}", faults("CreateBgpCompoundIdx", kUtilsSource), kNoNumber},
    {"cdb_exists", "/bgp-internal/bgp-vrf{}", goes_on(),
     loses("which numbers of BGP instances are free in the VRF cannot be read")},
    {"maapi_get_elem", "/bgp-internal/bgp-vrf{}/bgp-free-index",
     goes_on().explaining({"/bgp-internal/bgp-vrf", "/DC-BGP-MIB/", "/DC-RTM-MIB/"}),
     expected_where_missing("the VRF has no freed number of a BGP instance",
                            loses("a freed number of a BGP instance is not used again"))},
    {"maapi_delete", "/bgp-internal/bgp-vrf{}/bgp-free-index{}", faults("CreateBgpCompoundIdx", kUtilsSource),
     kNoNumber},
    {"maapi_get_u_int16_elem", "/bgp-internal/bgp-vrf{}/bgp-next-index", faults("CreateBgpCompoundIdx", kUtilsSource),
     kNoNumber},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/bgp-next-index", faults("CreateBgpCompoundIdx", kUtilsSource),
     kNoNumber},
    {"maapi_create", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}", faults("CreateBgpCompoundIdx", kUtilsSource),
     where_there(stops("the VRF has a BGP instance already"), kNoNumber)},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}/inst-idx", faults("CreateBgpCompoundIdx", kUtilsSource),
     kNoNumber},
    {"maapi_create", "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}", faults("CreateBgpCompoundIdx", kUtilsSource),
     where_there(stops("the number of the VRF's BGP instance is in use already"), kNoNumber)},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}/as-number",
     faults("CreateBgpCompoundIdx", kUtilsSource), kNoNumber},
    {"maapi_set_values", "/DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable/rtmEntityEntry",
     faults("ForceCreateRtmEntries", kRouterMgrSource, 147), stops("the VRF's routing tables cannot be made")},
    {"maapi_get_elem", "/router/bgp{}/vrf{}/administrative-status", faults("Create", kRouterMgrSource),
     where_missing(stops("the VRF has no administrative status"),
                   stops("the VRF's administrative status cannot be read"))},
    {"maapi_set_elem", "/internal/router-id-default-hidden", faults("Create", kRouterMgrSource),
     stops("that the router id is a default cannot be noted")},
    {"maapi_get_elem", "/router/bgp{}/router-id", goes_on().explaining({"/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry"}),
     loses("the VRF's router id is 0.0.0.0: the router has none of its own")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", faults("Create", kRouterMgrSource, 392),
     stops("the VRF's BGP entity cannot be made")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry",
     faults("CreateBgpAfiSafiEntries", kRouterMgrSource, 168, 196), stops("the VRF's address families cannot be made")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry", faults("Create", kRouterMgrSource, 414),
     stops("the VRF's network manager cannot be made")},
    {"maapi_set_values", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry", faults("CreateJoinEntries", kRouterMgrSource),
     stops("the VRF's routing tables cannot be joined with BGP")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry",
     faults("CreateJoinEntries", kRouterMgrSource),
     stops("the VRF's BGP entity cannot be joined with the routing tables")},
    {"maapi_set_values", "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry",
     faults("CreateBgpListenEntries", kRouterMgrSource, 312), stops("the VRF's listening sockets cannot be made")},
    {"maapi_exists", "/router/bgp{}/vrf{}/address-family{}", goes_on(),
     loses("whether the VRF has IPv4 unicast cannot be read: it stays off")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{}/bgpRmAfiSafiAdminStatus", goes_on(),
     loses("the VRF's IPv4 unicast family is not turned on")},
    {"maapi_exists", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}", goes_on(),
     loses("the VRF's IPv4 join is not turned on")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus", goes_on(),
     loses("the VRF's IPv4 join is not turned on")},
    {"maapi_get_elem", "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/rtmIndex", goes_on(),
     expected_where_missing("the VRF's routing table is looked up in what is stored",
                            loses("the VRF's routing table is looked up in what is stored"))},
    {"cdb_connect", "", goes_on(),
     loses("the VRF gets no redistribution into BGP: its routing table cannot be looked up")},
    {"cdb_start_session", "", goes_on(),
     loses("the VRF gets no redistribution into BGP: its routing table cannot be looked up")},
    {"cdb_get", "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/rtmIndex", goes_on(),
     where_missing(loses("the VRF gets no redistribution into BGP: it has no routing table"),
                   loses("the VRF gets no redistribution into BGP: its routing table cannot be looked up"))},
    {"cdb_end_session", "", goes_on(), loses("the session that looks up the VRF's routing table stays open")},
    {"cdb_close", "", goes_on(), loses("the session that looks up the VRF's routing table stays open")},
    {"maapi_set_values", "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry", goes_on(),
     loses("the VRF gets no redistribution into BGP")},
};

inline constexpr Step kUpdateVrf = {
    "update_vrf",
    Title{"VRF instances"},
    FirstLine{"Update BGP VRF\n"},
    LastLine{"Finishing VRF update\n"},
    NothingToDo{{"No VRFs to update", kNoVrfs}},
    Failed{{"Could not allocate memory for vrf names\n", "there is no memory for the names of the VRFs"},
           {"Failed to read BGP VRF objects ", kVrfsUnread}},
    PassedOver{kNotOneEntity, {"num bgp: 1, num_bgp_vrs: 0,", kNoVrfs}},
    Unread{{"num bgp: 1, num_bgp_vrs: -1,", kVrfsUncounted}, {"num bgp: -1,", kEntitiesUncounted}},
    Conditions{needs_value("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs", kAsNumberUnread)},
    Removes{"/bgp-internal/bgp-vrf/bgp-free-index", "the freed number goes to the VRF's new BGP instance"},
    kUpdateVrfCalls,
};

}  // namespace bgp_contract
