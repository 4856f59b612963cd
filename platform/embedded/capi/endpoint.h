// A socket descriptor as the C API knows it.
#pragma once

#include "schema/schema.h"

namespace bgp_platform {
class Device;
}

namespace bgp_platform::capi {

struct Endpoint {
    enum class Kind { Cdb, Maapi };

    Endpoint(Kind kind_, Device* device_, bool private_socket_)
        : kind(kind_), device(device_), private_socket(private_socket_)
    {
    }

    Kind kind;
    Device* device;
    bool private_socket;                         // connected by the program, not by the framework
    bool session = false;                        // CDB: a read session is open
    const schema::Module* name_space = nullptr;  // under which the first element of a path is looked up
};

}  // namespace bgp_platform::capi
