// Writes that single elements and arrays of tagged values share.
#pragma once

#include "capi/call.h"
#include "store/list.h"

namespace bgp_platform::capi {

// The entries that a C_LIST gives a leaf-list; BADTYPE, and ALREADY_EXISTS for a value that stands in it twice.
int read_entries(Call& call, const schema::Node& leaf_list, const confd_value_t& given, store::List* entries);

}  // namespace bgp_platform::capi
