// Re-keys the global BGP instance and makes the maps between AS numbers and instances. The calls that each re-keyed table
// has alike are in rekeyed_tables.h; here are those that the class of a row adds, and the maps. A row that has moved must
// not keep a leaf with the index that it had: where that leaf cannot be set, the process ends.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr char kRmIndexSource[] = "src/config_update/bgp_update_default_rm_index";

// An instance that is not seen to be re-keyed already is re-keyed once more.
inline constexpr Texts kOnceMore = {"/redist-protocol", "/internal/", "/DC-BGP-MIB/", "/DC-RTM-MIB/", "/bgp-internal/"};

inline constexpr CallSite kUpdateRmIndexCalls[] = {
    {"cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
     logs("Failed to get local as number, err: ").explaining(kWithoutRekeying), stops(kAsNumberUnread)},
    {"cdb_exists", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}", goes_on().explaining(kOnceMore),
     loses("whether the router is re-keyed already cannot be read: it is re-keyed once more")},
    {"maapi_get_elem", "/redist-protocol{}/protocol-xmltag", logs("Failed to get protocol-xmltag for path: "),
     where_missing(left("which protocol the redistribution is for is not stored"),
                   left("which protocol the redistribution is for cannot be read"))},
    {"maapi_set_elem", "/redist-protocol{}/protocol-index",
     asserts("RtmRedistProtocolHiddenEntry::MoveEntry(", kRmIndexSource),
     stops("a moved redistribution cannot be given the new index")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{}/bgpPeerLocalNm",
     asserts("BgpPeerEntry::MoveEntry(", kRmIndexSource),
     stops("a moved neighbour cannot be given its new network manager")},
    {"maapi_set_elem", "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{}/bgpNmEntRmIndex",
     asserts("BgpNmEntityEntry::MoveEntry(", kRmIndexSource),
     stops("the moved network manager cannot be given its new router entity")},
    {"maapi_get_elem", "/internal/bgpPeerEntry-global{}/keys", logs("Failed read path "),
     expected_where_missing("the neighbour has no hidden keys",
                            loses("the neighbour's hidden keys still name the old index"))},
    {"maapi_set_elem2", "/internal/bgpPeerEntry-global{}/keys", logs("Failed set val "),
     loses("the neighbour's hidden keys still name the old index")},
    {"maapi_get_elem", "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{}/rtmRedistInfoDest",
     logs("Failed to get rtmRedistInfoDest for path: "),
     where_missing(left("which protocol the redistribution feeds is not stored"),
                   left("which protocol the redistribution feeds cannot be read"))},
    {"maapi_create", "/bgp-internal/bgp-vrf{}", logs("Failed Create /bgp-internal/bgp-vrf{"),
     loses("the AS number gets no BGP instance in the index maps")},
    {"maapi_create", "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}",
     logs("Failed to create BGP internal map for inst-idx: "),
     loses("the AS number gets no BGP instance in the index maps")},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}/as-number", logs("Failed to set val "),
     loses("the BGP instance is not tied to its AS number")},
    {"maapi_create", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}",
     logs("Failed to create BGP internal map for as-number: "), loses("the AS number is not tied to its BGP instance")},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}/inst-idx", logs("Failed to set val "),
     loses("the AS number is not tied to its BGP instance")},
    {"maapi_set_elem", "/bgp-internal/bgp-vrf{}/bgp-next-index", logs("Failed to set val "),
     loses("the number of the next BGP instance is not set")},
};

inline constexpr Step kUpdateRmIndex = {
    "update_rm_index",
    Title{"re-keying to the global index"},
    FirstLine{"Starting BGP RM index update\n"},
    LastLine{"Finishing BGP RM index update\n"},
    NothingToDo{{"No need to update rm index!\n", "the router is re-keyed already"}},
    Failed{{"Failed to get local as number, ", kAsNumberUnread}},
    PassedOver{kNotOneEntity},
    Unread{},
    Conditions{needs_value("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex", kEntityIndexUnread)},
    Removes{},
    kUpdateRmIndexCalls,
};

}  // namespace bgp_contract
