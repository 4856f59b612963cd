// The one global of the stand-in: which devices live in this process, and which socket descriptors are theirs.
//
// One thread at a time for the whole process: the first that calls the C API has it until no device is left, and calls of
// another are refused.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>
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

    bool several() const noexcept { return devices_.size() > 1; }

    std::unordered_map<int, Endpoint> endpoints;  // by socket descriptor

    // Whether the calling thread may call; the first that asks while a device lives has the platform from then on.
    bool admits_this_thread() noexcept;

    // Calls that were refused since there was no device, and the name of the first.
    void note_refused(const char* function) noexcept;
    std::size_t refused() const noexcept { return refused_; }
    const char* first_refused() const noexcept { return first_refused_; }

private:
    Registry() = default;
    std::vector<DeviceState*> devices_;
    std::atomic<std::thread::id> owner_{};
    std::atomic<std::size_t> refused_{0};
    std::atomic<const char*> first_refused_{nullptr};
};

}  // namespace bgp_platform
