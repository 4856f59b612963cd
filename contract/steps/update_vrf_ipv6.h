// Joins the BGP instance of each VRF to the VRF's IPv6 routing table manager. Its failures are logged with the function
// and a fixed line in front.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateVrfIpv6Calls[] = {
    {"maapi_init_cursor", "/router/bgp", logs("get_local_as:136: ")},
    {"maapi_get_next", "/router/bgp", goes_on()},
    {"maapi_init_cursor", "/router/bgp{}/vrf", logs("update_vrf_ipv6:162: ")},
    {"maapi_get_next", "/router/bgp{}/vrf", goes_on()},
    {"maapi_get_elem", "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/vrf-idx",
     logs("update_vrf_ipv6:171: ")},
    {"maapi_exists", "/router/bgp{}/vrf{}/address-family{}", goes_on().explaining(kVrfJoins)},
    {"maapi_create", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}", logs("update_bgpRmAfmJoinTable:80: ")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmPartnerIndex",
     logs("update_bgpRmAfmJoinTable:87: ")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAfi",
     logs("update_bgpRmAfmJoinTable:94: ")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus",
     logs("update_bgpRmAfmJoinTable:101: ")},
    {"maapi_create", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}", logs("update_rtmMjEntry:117: ")},
    {"maapi_set_elem", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}/rtmMjSafi", logs("update_rtmMjEntry:124: ")},
};

inline constexpr Step kUpdateVrfIpv6 = {
    "update_vrf_ipv6",
    FirstLine{"Update BGP VRF IPv6\n"},
    LastLine{"Finishing VRF IPv6 update\n"},
    NothingToDo{"No BGP config to update"},
    Failed{"update_vrf_ipv6:162: "},
    PassedOver{},
    Condition{kStepMissing},
    kUpdateVrfIpv6Calls,
};

}  // namespace bgp_contract
