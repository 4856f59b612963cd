// Turns numbered prefix access lists into named prefix lists. update() passes it over in silence.
#pragma once

#include "contract/explained.h"
#include "contract/step.h"

namespace bgp_contract {

inline constexpr char kNextFreeUnread[] = "the next free index of the access lists cannot be read";
inline constexpr char kRulesUnread[] = "the access list rules cannot be read";
inline constexpr char kNextFreeUnset[] = "the next free index of the prefix lists cannot be set";

inline constexpr CallSite kUpdatePrefixListCalls[] = {
    {"cdb_get", "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry_next_free_index",
     logs("Couldn't read next_free_index. err: "), stops(kNextFreeUnread)},
    {"cdb_num_instances", "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry", goes_on(),
     stops("the access list rules cannot be counted")},
    {"cdb_get_objects", "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry",
     logs("Could not get prefix list entries, ret: "), stops(kRulesUnread)},
    {"cdb_get", "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry-get{}/name",
     logs("Could not get name for prefix list (rm_index: "),
     expected_at_first_try("the list's name is looked up under the next index",
                           left("the rule goes into no prefix list: its list has no name"))},
    {"maapi_exists", "/prefix-list/{}", goes_on(), loses("whether the prefix list is there already cannot be read")},
    {"maapi_create", "/prefix-list/{}", logs("Failed to create prefix-list entry named "),
     loses("the prefix list is not made")},
    {"maapi_create", "/prefix-list-internal/name-to-idx{}", logs("Failed to create name-to-idx map for name "),
     loses("the prefix list's name and index are not tied together")},
    {"maapi_set_elem", "/prefix-list-internal/name-to-idx{}/idx", logs("Could not set idx "),
     loses("the prefix list's name and index are not tied together")},
    {"maapi_create", "/prefix-list-internal/idx-to-name{}", logs("Failed to create idx-to-name map for idx "),
     loses("the prefix list's index is not tied to its name")},
    {"maapi_set_elem", "/prefix-list-internal/idx-to-name{}/val", logs("Could not set name "),
     loses("the prefix list's index is not tied to its name")},
    {"maapi_create", "/prefix-list/{}/seq{}", logs("Failed to create prefix-list seq "),
     where_there(left("the prefix list has a rule of that number already"),
                 left("the rule cannot be put into its prefix list"))},
    {"maapi_set_elem", "/prefix-list/{}/seq{}/address", logs("Could not set address for prefix list (pfx_name: "),
     loses("the rule gets no prefix, no bounds and no action")},
    {"maapi_set_elem", "/prefix-list/{}/seq{}/ge", logs("Could not set address for prefix list (pfx_name: "),
     loses("the rule gets no bounds and no action")},
    {"maapi_set_elem", "/prefix-list/{}/seq{}/le", logs("Could not set address for prefix list (pfx_name: "),
     loses("the rule gets no upper bound and no action")},
    {"maapi_set_elem", "/prefix-list/{}/seq{}/action", logs("Could not set address for prefix list (pfx_name: "),
     loses("the rule gets no action")},
    {"maapi_set_elem", "/prefix-list-internal/name-next-index",
     logs("Couldn't set internal name-next-index value! err: "), stops(kNextFreeUnset)},
};

inline constexpr Step kUpdatePrefixList = {
    "update_prefix_list",
    Title{"prefix lists"},
    FirstLine{"Update Prefix List\n"},
    LastLine{"Finishing Prefix List update\n"},
    NothingToDo{},
    Failed{{"Couldn't read next_free_index. ", kNextFreeUnread},
           {"Could not get prefix list entries, ", kRulesUnread},
           {"Couldn't set internal name-next-index value! ", kNextFreeUnset}},
    PassedOver{kNotOneEntity},
    Unread{},
    Conditions{
        needs_value("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex", kEntityIndexUnread),
        needs_rows("/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry", "no access list rules are stored"),
        needs_no_rows("/prefix-list", "a prefix list is there already")},
    Removes{},
    kUpdatePrefixListCalls,
};

}  // namespace bgp_contract
