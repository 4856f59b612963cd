#include "registry.h"

#include <sys/stat.h>

#include <algorithm>

namespace bgp_platform {

uint64_t socket_behind(int descriptor) noexcept
{
    struct stat status {};
    return fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

Registry& Registry::instance()
{
    static auto* const registry = new Registry;  // outlives every static object that may still call the API
    return *registry;
}

void Registry::add(DeviceState* device)
{
    devices_.push_back(device);
}

void Registry::remove(DeviceState* device) noexcept
{
    devices_.erase(std::remove(devices_.begin(), devices_.end(), device), devices_.end());
    for (auto endpoint = endpoints.begin(); endpoint != endpoints.end();) {
        endpoint = endpoint->second.device == device ? endpoints.erase(endpoint) : std::next(endpoint);
    }
    if (devices_.empty()) {
        owner_ = std::thread::id();
        refused_ = 0;
        first_refused_ = nullptr;
    }
}

bool Registry::admits_this_thread() noexcept
{
    const std::thread::id self = std::this_thread::get_id();
    std::thread::id owner = owner_.load(std::memory_order_relaxed);
    if (owner != std::thread::id()) {
        return owner == self;
    }
    return devices_.empty() || owner_.compare_exchange_strong(owner, self) || owner == self;
}

void Registry::note_refused(const char* function) noexcept
{
    const char* none = nullptr;
    first_refused_.compare_exchange_strong(none, function);
    ++refused_;
}

bool Registry::lives(const DeviceState* device) const noexcept
{
    return std::find(devices_.begin(), devices_.end(), device) != devices_.end();
}

DeviceState* Registry::current() const noexcept
{
    return devices_.empty() ? nullptr : devices_.back();
}

DeviceState* Registry::at_port(uint16_t port) const noexcept
{
    const auto found = std::find_if(devices_.rbegin(), devices_.rend(),
                                    [port](const DeviceState* device) { return device->port == port; });
    return found == devices_.rend() ? nullptr : *found;
}

}  // namespace bgp_platform
