// The host's interfaces: the device's addresses in its order, whatever the workstation has.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>

#include <string>
#include <vector>

#include "device.h"

namespace {

using bgp_platform::Device;
using testing::ElementsAre;
using testing::IsEmpty;

in_addr address(const char* text)
{
    in_addr result{};
    EXPECT_EQ(inet_pton(AF_INET, text, &result), 1);
    return result;
}

// "name address flags" of each entry, the address printed as a program prints it.
std::vector<std::string> listed()
{
    ifaddrs* list = nullptr;
    EXPECT_EQ(getifaddrs(&list), 0);
    std::vector<std::string> entries;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        char text[NI_MAXHOST] = "";
        EXPECT_EQ(entry->ifa_addr->sa_family, AF_INET);
        EXPECT_EQ(getnameinfo(entry->ifa_addr, sizeof(sockaddr_in), text, sizeof(text), nullptr, 0, NI_NUMERICHOST), 0);
        EXPECT_TRUE((entry->ifa_flags & IFF_UP) != 0);
        const bool loopback = (entry->ifa_flags & IFF_LOOPBACK) != 0;
        entries.push_back(std::string(entry->ifa_name) + " " + text + (loopback ? " loopback" : ""));
    }
    freeifaddrs(list);
    return entries;
}

TEST(Interfaces, WithoutADevice_ThereIsTheLoopbackAlone)
{
    EXPECT_THAT(listed(), ElementsAre("lo 127.0.0.1 loopback"));
}

TEST(Interfaces, AddressesOfTheDevice_ComeInItsOrder)
{
    Device device;
    device.set_interfaces({address("10.1.1.1"), address("127.0.0.1"), address("10.0.0.9"), address("10.1.1.1")});
    EXPECT_THAT(listed(), ElementsAre("eth0 10.1.1.1", "lo 127.0.0.1 loopback", "eth1 10.0.0.9", "eth2 10.1.1.1"));
}

TEST(Interfaces, DeviceWithoutAddresses_ListsNothing)
{
    Device device;
    device.set_interfaces({});
    EXPECT_THAT(listed(), IsEmpty());
}

}  // namespace
