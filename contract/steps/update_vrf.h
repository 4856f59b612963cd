// Gives each VRF of the BGP router its instance in the routing stack's tables. The instances are made by code that the
// BGP daemon shares: a write that fails there ends the process.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr char kVrfSource[] = "src/config_update/bgp_update_vrf";
inline constexpr char kUtilsSource[] = "src/daemon/bgp_utils";
inline constexpr char kRouterMgrSource[] = "src/daemon/bgp_router_mgr";

inline constexpr CallSite kUpdateVrfCalls[] = {
    {"cdb_num_instances", "/router/bgp{}/vrf", faults("update_vrf", kVrfSource, 203)},
    {"cdb_get_objects", "/router/bgp{}/vrf", logs("Failed to read BGP VRF objects [").explaining(kVrfJoins)},
    {"cdb_get", "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/vrf-idx",
     logs("Trying to update a non existent VRF: ").explaining(kVrfJoins)},
    {"maapi_exists", "/bgp-internal/bgp-vrf{}", goes_on()},
    {"maapi_create", "/bgp-internal/bgp-vrf{}", faults("CreateBgpCompoundIdx", kUtilsSource)},
    {"cdb_exists", "/bgp-internal/bgp-vrf{}", goes_on()},
    {"maapi_get_elem", "/bgp-internal/bgp-vrf{}/bgp-free-index",
     goes_on().explaining({"/bgp-internal/bgp-vrf", "/DC-BGP-MIB/", "/DC-RTM-MIB/"})},
    {"maapi_delete", "/bgp-internal/bgp-vrf{}/bgp-free-index{}", faults("CreateBgpCompoundIdx", kUtilsSource)},
    {"maapi_get_u_int16_elem", "/bgp-internal/bgp-vrf{}/bgp-next-index", faults("CreateBgpCompoundIdx", kUtilsSource)},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/bgp-next-index", faults("CreateBgpCompoundIdx", kUtilsSource)},
    {"maapi_create", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}", faults("CreateBgpCompoundIdx", kUtilsSource)},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}/inst-idx",
     faults("CreateBgpCompoundIdx", kUtilsSource)},
    {"maapi_create", "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}", faults("CreateBgpCompoundIdx", kUtilsSource)},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}/as-number",
     faults("CreateBgpCompoundIdx", kUtilsSource)},
    {"maapi_set_values", "/DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable/rtmEntityEntry",
     faults("ForceCreateRtmEntries", kRouterMgrSource, 147)},
    {"maapi_get_elem", "/router/bgp{}/vrf{}/administrative-status", faults("Create", kRouterMgrSource)},
    {"maapi_set_elem", "/internal/router-id-default-hidden", faults("Create", kRouterMgrSource)},
    {"maapi_get_elem", "/router/bgp{}/router-id", goes_on().explaining({"/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry"})},
    {"maapi_set_values", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", faults("Create", kRouterMgrSource, 392)},
    {"maapi_set_values", "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry",
     faults("CreateBgpAfiSafiEntries", kRouterMgrSource, 168, 196)},
    {"maapi_set_values", "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry", faults("Create", kRouterMgrSource, 414)},
    {"maapi_set_values", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry", faults("CreateJoinEntries", kRouterMgrSource)},
    {"maapi_set_values", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry",
     faults("CreateJoinEntries", kRouterMgrSource)},
    {"maapi_set_values", "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry",
     faults("CreateBgpListenEntries", kRouterMgrSource, 312)},
    {"maapi_exists", "/router/bgp{}/vrf{}/address-family{}", goes_on()},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{}/bgpRmAfiSafiAdminStatus", goes_on()},
    {"maapi_exists", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}", goes_on()},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus", goes_on()},
    {"maapi_get_elem", "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/rtmIndex", goes_on()},
    {"cdb_connect", "", goes_on()},
    {"cdb_start_session", "", goes_on()},
    {"cdb_get", "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/rtmIndex", goes_on()},
    {"cdb_end_session", "", goes_on()},
    {"cdb_close", "", goes_on()},
    {"maapi_set_values", "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry", goes_on()},
};

inline constexpr Step kUpdateVrf = {
    "update_vrf",
    FirstLine{"Update BGP VRF\n"},
    LastLine{"Finishing VRF update\n"},
    NothingToDo{"No VRFs to update"},
    Failed{"Could not allocate memory for vrf names\n", "Failed to read BGP VRF objects "},
    PassedOver{kNotOneEntity, "num bgp: "},
    Condition{"the AS number of the BGP router entity cannot be read"},
    kUpdateVrfCalls,
};

}  // namespace bgp_contract
