// Derives a router id from the IPv4 addresses of the host's interfaces.
#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "bgp_update/bgp_utils.h"
#include "confd/fault.h"
#include "nz_address.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";
constexpr char kLoopback[] = "127.0.0.1";
constexpr std::size_t kHostSize = 128;

struct FreeInterfaces {
    void operator()(ifaddrs* list) const { freeifaddrs(list); }
};

using Interfaces = std::unique_ptr<ifaddrs, FreeInterfaces>;

Interfaces host_interfaces()
{
    ifaddrs* list = nullptr;
    return Interfaces(getifaddrs(&list) == 0 ? list : nullptr);
}

in_addr address_of(const char* text, int fault_line)
{
    in_addr address{};
    if (inet_pton(AF_INET, text, &address) != 1) {
        char said[confd::kFaultTextSize];
        std::snprintf(said, sizeof said, "Could not convert %s to IPv4", text);
        confd::fault("GetRouterIdIp", kSource, fault_line, said);
    }
    return address;
}

}  // namespace

bool BgpUtils::GetRouterIdIp(confd_value* out)
{
    const Interfaces interfaces = host_interfaces();
    // As stored, in network order. The greatest is the greatest of the stored numbers and not of the dotted ones, and
    // the last address alone decides whether there is a router id. Both are deliberate: routers keep the ids they have.
    in_addr best{};
    in_addr last{};
    for (const ifaddrs* interface = interfaces.get(); interface != nullptr; interface = interface->ifa_next) {
        if (interface->ifa_addr == nullptr || interface->ifa_addr->sa_family != AF_INET) {
            continue;
        }
        char text[kHostSize] = {};
        getnameinfo(interface->ifa_addr, sizeof(sockaddr_in), text, sizeof text, nullptr, 0, NI_NUMERICHOST);
        last = address_of(text, 351);
        if (std::strcmp(text, kLoopback) != 0) {
            best.s_addr = std::max(best.s_addr, last.s_addr);
        }
    }
    if (last.s_addr == address_of(kLoopback, 361).s_addr) {
        return false;
    }
    Ipv4InAddrTOhexlist(out, best);
    return true;
}
