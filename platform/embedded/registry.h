// The one global of the stand-in: which devices live in this process, and which socket descriptors are theirs.
// Not thread-safe: a device, its sockets and the code under rehearsal belong to one thread.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "middleware/middleware_state.h"

namespace bgp_platform {

class Device;

namespace capi {
struct Endpoint;  // what a descriptor is to the C API: socket kind, device, session (capi/endpoint.h)
}

class Registry {
public:
    static Registry& instance();

    void add(Device* device);
    void remove(Device* device) noexcept;  // and every descriptor of it
    bool lives(const Device* device) const noexcept;
    Device* current() const noexcept;               // the one added last that still lives, or null
    Device* at_port(uint16_t port) const noexcept;  // the one added last that listens there, or null

    std::unordered_map<int, std::unique_ptr<capi::Endpoint>> endpoints;  // by socket descriptor

private:
    Registry() = default;
    std::vector<Device*> devices_;
};

}  // namespace bgp_platform
