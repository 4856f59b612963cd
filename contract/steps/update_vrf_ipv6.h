// Joins the BGP instance of each VRF to the VRF's IPv6 routing table manager. Its failures are logged with the function
// and a fixed line in front.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdateVrfIpv6Calls[] = {
    {"maapi_init_cursor", "/router/bgp", logs("get_local_as:136: "), stops("the router's AS number cannot be read")},
    {"maapi_get_next", "/router/bgp", goes_on(), stops("the router's AS number cannot be read")},
    {"maapi_init_cursor", "/router/bgp{}/vrf", logs("update_vrf_ipv6:162: "), stops(kVrfsUnread)},
    {"maapi_get_next", "/router/bgp{}/vrf", goes_on(), stops("the VRFs cannot be read to the end")},
    {"maapi_get_elem", "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/vrf-idx",
     logs("update_vrf_ipv6:171: "), left("the VRF gets no IPv6 join: it has no VRF index")},
    {"maapi_exists", "/router/bgp{}/vrf{}/address-family{}", goes_on().explaining(kVrfJoins),
     loses("whether the VRF has IPv6 unicast cannot be read: its IPv6 join is off")},
    {"maapi_create", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}", logs("update_bgpRmAfmJoinTable:80: "),
     expected_where_there("the VRF's IPv6 join is there already", loses("the VRF's IPv6 join is not made"))},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmPartnerIndex",
     logs("update_bgpRmAfmJoinTable:87: "), loses("the VRF's IPv6 join names no routing table")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAfi",
     logs("update_bgpRmAfmJoinTable:94: "), loses("the VRF's IPv6 join names no address family")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus",
     logs("update_bgpRmAfmJoinTable:101: "), loses("the VRF's IPv6 join is not turned on or off")},
    {"maapi_create", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}", logs("update_rtmMjEntry:117: "),
     expected_where_there("the VRF's IPv6 routing table is joined with BGP already",
                          loses("the VRF's IPv6 routing table is not joined with BGP"))},
    {"maapi_set_elem", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}/rtmMjSafi", logs("update_rtmMjEntry:124: "),
     loses("the join of the VRF's IPv6 routing table is not set to unicast")},
};

inline constexpr Step kUpdateVrfIpv6 = {
    "update_vrf_ipv6",
    Title{"VRF IPv6 joins"},
    FirstLine{"Update BGP VRF IPv6\n"},
    LastLine{"Finishing VRF IPv6 update\n"},
    NothingToDo{{"No BGP config to update", kNoEntity}},
    Failed{{"update_vrf_ipv6:162: ", kVrfsUnread}},
    PassedOver{},
    Unread{},
    Conditions{},
    Removes{},
    kUpdateVrfIpv6Calls,
};

}  // namespace bgp_contract
