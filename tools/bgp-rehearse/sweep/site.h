// A call site of the upgrade: where it makes a call of the C API, told by what a reader of the library knows the place
// by.
#pragma once

#include <string>

#include "calls/function.h"

namespace bgp_rehearse {

struct Site {
    std::string step;  // "update_l3vpn"; "update" for what the entry point does itself
    bgp_platform::capi::Function function = bgp_platform::capi::Function::cdb_get;
    std::string path;  // the keypath without its keys, "/router/bgp{}/as-size"; empty where the call names none

    // "update_router_bgp: maapi_set_elem /router/bgp{}/as-size"
    std::string name() const;
};

}  // namespace bgp_rehearse
