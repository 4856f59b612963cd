// The one global of the stand-in: which devices live in this process, and which socket descriptors are theirs.
// Not thread-safe: a device, its sockets and the code under rehearsal belong to one thread.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "state.h"

namespace bgp_platform {

// A socket descriptor as the C API knows it.
struct Endpoint {
    enum class Kind { Cdb, Maapi };

    Kind kind;
    DeviceState* device;
    bool private_socket;                         // connected by the program, not by the framework
    uint64_t socket;                             // socket_behind() the descriptor when it was connected
    bool session = false;                        // CDB: a read session is open
    const schema::Module* name_space = nullptr;  // under which the first element of a path is looked up
};

// What tells the open socket behind a descriptor from one that gets its number later; 0 when the descriptor is closed.
uint64_t socket_behind(int descriptor) noexcept;

class Registry {
public:
    static Registry& instance();

    void add(DeviceState* device);
    void remove(DeviceState* device) noexcept;  // and every descriptor of it
    bool lives(const DeviceState* device) const noexcept;
    DeviceState* current() const noexcept;               // the one added last that still lives, or null
    DeviceState* at_port(uint16_t port) const noexcept;  // the one added last that listens there, or null

    std::unordered_map<int, Endpoint> endpoints;  // by socket descriptor

private:
    Registry() = default;
    std::vector<DeviceState*> devices_;
};

}  // namespace bgp_platform
