// The host's interfaces as the device has them, in place of libc's: one entry for each IPv4 address of the device, in
// the device's order, and the loopback address alone when there is no device. Names are "lo" for loopback addresses and
// "eth0", "eth1", ... for the others; netmasks and the like are left out.
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "registry.h"

namespace {

// An interface with what its fields point to; a list is one array of these, freed by its first element.
struct Interface {
    ifaddrs entry;  // first: a pointer to it is a pointer to the whole
    sockaddr_in address;
    char name[IF_NAMESIZE];
};

bool is_loopback(in_addr address)
{
    return ntohl(address.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
}

// Without a device, what a device has at first.
struct Addresses {
    const in_addr* first;
    std::size_t count;
};

Addresses addresses() noexcept
{
    static const in_addr kLoopback{htonl(INADDR_LOOPBACK)};
    const bgp_platform::DeviceState* const device = bgp_platform::Registry::instance().current();
    if (device == nullptr) {
        return {&kLoopback, 1};
    }
    return {device->settings.interfaces.data(), device->settings.interfaces.size()};
}

void fill(Interface* interface, in_addr address, unsigned int* ethernets)
{
    interface->address.sin_family = AF_INET;
    interface->address.sin_addr = address;
    interface->entry.ifa_addr = reinterpret_cast<sockaddr*>(&interface->address);
    interface->entry.ifa_name = interface->name;
    interface->entry.ifa_flags = IFF_UP | IFF_RUNNING;
    if (is_loopback(address)) {
        interface->entry.ifa_flags |= IFF_LOOPBACK;
        std::snprintf(interface->name, sizeof(interface->name), "lo");
    } else {
        std::snprintf(interface->name, sizeof(interface->name), "eth%u", (*ethernets)++);
    }
}

}  // namespace

extern "C" {

int getifaddrs(ifaddrs** list) noexcept
{
    const auto [all, count] = addresses();
    *list = nullptr;
    if (count == 0) {
        return 0;
    }
    auto* const interfaces = static_cast<Interface*>(std::calloc(count, sizeof(Interface)));
    if (interfaces == nullptr) {
        return -1;
    }
    unsigned int ethernets = 0;
    for (std::size_t i = 0; i < count; ++i) {
        fill(&interfaces[i], all[i], &ethernets);
        interfaces[i].entry.ifa_next = i + 1 < count ? &interfaces[i + 1].entry : nullptr;
    }
    *list = &interfaces->entry;
    return 0;
}

void freeifaddrs(ifaddrs* list) noexcept
{
    std::free(list);
}

}  // extern "C"
