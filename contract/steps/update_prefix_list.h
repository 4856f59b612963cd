// Turns numbered prefix access lists into named prefix lists. update() passes it over in silence.
#pragma once

#include "contract/step.h"

namespace bgp_contract {

inline constexpr CallSite kUpdatePrefixListCalls[] = {
    {"cdb_get", "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry_next_free_index",
     logs("Couldn't read next_free_index. err: ")},
    {"cdb_num_instances", "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry", goes_on()},
    {"cdb_get_objects", "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry",
     logs("Could not get prefix list entries, ret: ")},
    {"cdb_get", "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry-get{}/name",
     logs("Could not get name for prefix list (rm_index: ")},
    {"maapi_exists", "/prefix-list/{}", goes_on()},
    {"maapi_create", "/prefix-list/{}", logs("Failed to create prefix-list entry named ")},
    {"maapi_create", "/prefix-list-internal/name-to-idx{}", logs("Failed to create name-to-idx map for name ")},
    {"maapi_set_elem", "/prefix-list-internal/name-to-idx{}/idx", logs("Could not set idx ")},
    {"maapi_create", "/prefix-list-internal/idx-to-name{}", logs("Failed to create idx-to-name map for idx ")},
    {"maapi_set_elem", "/prefix-list-internal/idx-to-name{}/val", logs("Could not set name ")},
    {"maapi_create", "/prefix-list/{}/seq{}", logs("Failed to create prefix-list seq ")},
    {"maapi_set_elem", "/prefix-list/{}/seq{}/address", logs("Could not set address for prefix list (pfx_name: ")},
    {"maapi_set_elem", "/prefix-list/{}/seq{}/ge", logs("Could not set address for prefix list (pfx_name: ")},
    {"maapi_set_elem", "/prefix-list/{}/seq{}/le", logs("Could not set address for prefix list (pfx_name: ")},
    {"maapi_set_elem", "/prefix-list/{}/seq{}/action", logs("Could not set address for prefix list (pfx_name: ")},
    {"maapi_set_elem", "/prefix-list-internal/name-next-index",
     logs("Couldn't set internal name-next-index value! err: ")},
};

inline constexpr Step kUpdatePrefixList = {
    "update_prefix_list",
    FirstLine{"Update Prefix List\n"},
    LastLine{"Finishing Prefix List update\n"},
    NothingToDo{},
    Failed{"Couldn't read next_free_index. ", "Could not get prefix list entries, ",
           "Couldn't set internal name-next-index value! "},
    PassedOver{kNotOneEntity},
    Condition{"no access list rules are stored, a prefix list is there already, or the entity's index cannot be read"},
    kUpdatePrefixListCalls,
};

}  // namespace bgp_contract
