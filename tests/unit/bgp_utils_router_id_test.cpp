// The router id that is derived from the host's interfaces: which address is the greatest, what the last one decides,
// and the ends of the process at an address that cannot be converted.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <netdb.h>

#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "bgp_update/bgp_utils.h"
#include "device.h"
#include "support/router_mgr_fixture.h"

namespace {

// The host that the library sees in a test: its own list of interfaces, conversions that fail, and how many lists are
// given out and not freed.
struct Host {
    ifaddrs* list = nullptr;  // null: the device's list
    bool listing_fails = false;
    bool names_fail = false;
    std::string unreadable;  // a text that inet_pton() does not take
    int lists_open = 0;
};

Host host;

template <typename Function>
Function next_of(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" int getifaddrs(ifaddrs** list) noexcept
{
    if (host.listing_fails) {
        return -1;
    }
    const int result = host.list != nullptr ? 0 : next_of<int (*)(ifaddrs**)>("getifaddrs")(list);
    if (host.list != nullptr) {
        *list = host.list;
    }
    host.lists_open += *list != nullptr ? 1 : 0;
    return result;
}

extern "C" void freeifaddrs(ifaddrs* list) noexcept
{
    --host.lists_open;
    if (list != host.list) {
        next_of<void (*)(ifaddrs*)>("freeifaddrs")(list);
    }
}

extern "C" int getnameinfo(const sockaddr* address, socklen_t size, char* name, socklen_t name_size, char* service,
                           socklen_t service_size, int flags)
{
    using Call = int (*)(const sockaddr*, socklen_t, char*, socklen_t, char*, socklen_t, int);
    return host.names_fail ? EAI_FAIL
                           : next_of<Call>("getnameinfo")(address, size, name, name_size, service, service_size, flags);
}

extern "C" int inet_pton(int family, const char* text, void* address) noexcept
{
    return text == host.unreadable ? 0 : next_of<int (*)(int, const char*, void*)>("inet_pton")(family, text, address);
}

namespace {

using bgp_platform::Device;

// A list of interfaces of any family.
class InterfaceList {
public:
    InterfaceList& ipv4(const char* text)
    {
        sockaddr_in& address = ipv4_.emplace_back();
        address.sin_family = AF_INET;
        inet_pton(AF_INET, text, &address.sin_addr);
        return add(reinterpret_cast<sockaddr*>(&address));
    }
    InterfaceList& ipv6(const char* text)
    {
        sockaddr_in6& address = ipv6_.emplace_back();
        address.sin6_family = AF_INET6;
        inet_pton(AF_INET6, text, &address.sin6_addr);
        return add(reinterpret_cast<sockaddr*>(&address));
    }
    InterfaceList& without_address() { return add(nullptr); }
    ifaddrs* first() { return &entries_.front(); }

private:
    InterfaceList& add(sockaddr* address)
    {
        ifaddrs& entry = entries_.emplace_back();
        entry.ifa_addr = address;
        if (entries_.size() > 1) {
            entries_[entries_.size() - 2].ifa_next = &entry;
        }
        return *this;
    }

    std::deque<ifaddrs> entries_;  // deques: nothing moves
    std::deque<sockaddr_in> ipv4_;
    std::deque<sockaddr_in6> ipv6_;
};

class GetRouterIdIp : public testing::Test {
protected:
    ~GetRouterIdIp() override { host = Host(); }

    // The id derived, as dotted text; "none" where none is.
    std::string derived()
    {
        confd_value_t id;
        CONFD_SET_UINT32(&id, 42);
        std::string text;
        if (!BgpUtils::GetRouterIdIp(&id)) {
            EXPECT_EQ(id.type, C_UINT32) << "the value must be left alone";
            EXPECT_EQ(id.val.u32, 42U);
            text = "none";
        } else if (id.type != C_BINARY || id.val.buf.size != 4) {
            text = "no hex list of four octets";
        } else {
            char dotted[INET_ADDRSTRLEN];
            text = inet_ntop(AF_INET, id.val.buf.ptr, dotted, sizeof dotted);
            confd_free_value(&id);
        }
        EXPECT_EQ(host.lists_open, 0);
        EXPECT_TRUE(device_.open_things().none());
        return text;
    }

    std::string derivedFrom(const std::vector<const char*>& addresses)
    {
        bgp_test::interfaces(device_, addresses);
        return derived();
    }

    Device device_;
};

using GetRouterIdIpDeath = GetRouterIdIp;

TEST_F(GetRouterIdIp, OneAddress_IsTheId)
{
    EXPECT_EQ(derivedFrom({"127.0.0.1", "192.0.2.1"}), "192.0.2.1");
}

TEST_F(GetRouterIdIp, SeveralAddresses_GiveTheGreatestStoredNumberAndNotTheGreatestDottedOne)
{
    // The last octet weighs most where the host's order is the other one.
    const bool little_endian = htonl(1) != 1;
    EXPECT_EQ(derivedFrom({"203.0.113.1", "10.0.0.9", "192.0.2.2"}), little_endian ? "10.0.0.9" : "203.0.113.1");
    EXPECT_EQ(derivedFrom({"10.0.0.9", "192.0.2.2", "203.0.113.1"}), little_endian ? "10.0.0.9" : "203.0.113.1");
    EXPECT_EQ(derivedFrom({"1.0.0.255", "255.0.0.1"}), little_endian ? "1.0.0.255" : "255.0.0.1");
}

TEST_F(GetRouterIdIp, LoopbackLast_DerivesNone)
{
    EXPECT_EQ(derivedFrom({"127.0.0.1"}), "none");
    EXPECT_EQ(derivedFrom({"192.0.2.1", "127.0.0.1"}), "none");
}

TEST_F(GetRouterIdIp, LoopbackBeforeTheLast_IsPassedOver)
{
    EXPECT_EQ(derivedFrom({"192.0.2.1", "127.0.0.1", "10.0.0.1"}), "192.0.2.1");
    EXPECT_EQ(derivedFrom({"127.0.0.1", "1.0.0.1"}), "1.0.0.1");
}

TEST_F(GetRouterIdIp, OtherAddressOfTheLoopbackNetwork_IsAnAddressLikeAnother)
{
    EXPECT_EQ(derivedFrom({"10.0.0.1", "127.0.0.2"}), "127.0.0.2");
}

TEST_F(GetRouterIdIp, NoAddressAtAll_GivesZero)
{
    EXPECT_EQ(derivedFrom({}), "0.0.0.0");
}

TEST_F(GetRouterIdIp, InterfacesThatCannotBeListed_GiveZero)
{
    host.listing_fails = true;
    EXPECT_EQ(derived(), "0.0.0.0");
}

TEST_F(GetRouterIdIp, InterfacesWithoutAnIpv4Address_ArePassedOver)
{
    InterfaceList list;
    list.without_address().ipv6("2001:db8::1").ipv4("192.0.2.1").ipv6("::1").without_address();
    host.list = list.first();
    EXPECT_EQ(derived(), "192.0.2.1");
}

TEST_F(GetRouterIdIp, OnlyOtherFamilies_GiveZero)
{
    InterfaceList list;
    list.without_address().ipv6("::1");
    host.list = list.first();
    EXPECT_EQ(derived(), "0.0.0.0");
}

TEST_F(GetRouterIdIp, LoopbackLastAmongIpv4_DerivesNoneWhateverComesBehind)
{
    InterfaceList list;
    list.ipv4("192.0.2.1").ipv4("127.0.0.1").ipv6("2001:db8::1").without_address();
    host.list = list.first();
    EXPECT_EQ(derived(), "none");
}

TEST_F(GetRouterIdIpDeath, AddressThatCannotBeReadBack_EndsTheProcess)
{
    bgp_test::interfaces(device_, {"10.0.0.1", "192.0.2.1"});
    bgp_test::show_faults_and_writes(device_);
    host.unreadable = "192.0.2.1";
    EXPECT_EXIT(derived(), testing::ExitedWithCode(1),
                "^fault 1 GetRouterIdIp src/daemon/bgp_utils:351 <Could not convert 192\\.0\\.2\\.1 to IPv4> "
                "backtraces 1, writes 0\nwrites 0 at exit\n$");
}

TEST_F(GetRouterIdIpDeath, AddressWithoutAText_EndsTheProcess)
{
    bgp_test::interfaces(device_, {"10.0.0.1"});
    bgp_test::show_faults_and_writes(device_);
    host.names_fail = true;
    EXPECT_EXIT(derived(), testing::ExitedWithCode(1),
                "^fault 1 GetRouterIdIp src/daemon/bgp_utils:351 <Could not convert  to IPv4> ");
}

TEST_F(GetRouterIdIpDeath, LoopbackTextThatCannotBeRead_EndsTheProcess)
{
    bgp_test::interfaces(device_, {"192.0.2.1"});
    bgp_test::show_faults_and_writes(device_);
    host.unreadable = "127.0.0.1";
    EXPECT_EXIT(derived(), testing::ExitedWithCode(1),
                "^fault 1 GetRouterIdIp src/daemon/bgp_utils:361 <Could not convert 127\\.0\\.0\\.1 to IPv4> "
                "backtraces 1, writes 0\n");
}

}  // namespace
