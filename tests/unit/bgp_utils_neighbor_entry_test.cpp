// The keys of a neighbour's rows.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "bgp_update/neighbor_entry.h"
#include "device.h"
#include "nz_address.h"
#include "support/show_faults.h"

namespace {

int conversions_left = -1;     // how many conversions of IPv4 addresses succeed; all when negative
std::vector<int> types_found;  // in the values that the conversions were to fill

}  // namespace

// Stands before the platform's conversion, which takes every C_IPV4: here it can fail.
extern "C" int Ipv4TOhexlist(confd_value_t* out, confd_value_t* in, int prefix_length)
{
    types_found.push_back(out->type);
    if (conversions_left == 0) {
        CONFD_SET_NOEXISTS(out);
        return -1;
    }
    --conversions_left;
    using Conversion = int (*)(confd_value_t*, confd_value_t*, int);
    static const auto platform = reinterpret_cast<Conversion>(dlsym(RTLD_NEXT, "Ipv4TOhexlist"));
    return platform(out, in, prefix_length);
}

namespace {

using bgp_platform::Device;
using Entry = BgpUtils::NeighborEntry;
using AfiSafiEntry = BgpUtils::NeighborAfiSafiEntry;

static_assert(std::has_virtual_destructor_v<Entry>);
static_assert(std::is_base_of_v<Entry, AfiSafiEntry>);
static_assert(!std::is_copy_constructible_v<Entry> && !std::is_copy_assignable_v<Entry>, "the values have one owner");

class NeighborKey : public testing::Test {
protected:
    NeighborKey()
    {
        conversions_left = -1;
        types_found.clear();
        in_addr address{};
        inet_pton(AF_INET, "192.0.2.1", &address);
        CONFD_SET_IPV4(&remote_, address);
        inet_pton(AF_INET, "192.0.2.2", &address);
        CONFD_SET_IPV4(&local_, address);
        in6_addr address6{};
        inet_pton(AF_INET6, "2001:db8::1", &address6);
        CONFD_SET_IPV6(&remote6_, address6);
    }

    // The values one behind another, each as its type's number and its printed form.
    static std::vector<std::string> listed(Entry& entry, int count)
    {
        std::vector<std::string> lines;
        for (int i = 0; i < count; ++i) {
            const confd_value_t& value = entry.entry_values()[i];
            char text[128];
            confd_pp_value(text, sizeof text, &value);
            lines.push_back(value.type == C_NOEXISTS ? "-" : std::to_string(value.type) + " " + text);
        }
        return lines;
    }

    static std::string u32(const std::string& number) { return std::to_string(C_UINT32) + " " + number; }
    static std::string enumeration(int number)
    {
        return std::to_string(C_ENUM_VALUE) + " enum<" + std::to_string(number) + ">";
    }
    static std::string binary(const std::string& digits) { return std::to_string(C_BINARY) + " " + digits; }

    // A peer's key of entity 5.
    static std::vector<std::string> key(int local_type, const std::string& local, int remote_type,
                                        const std::string& remote)
    {
        return {u32("5"),
                enumeration(local_type),
                binary(local),
                u32("0"),
                enumeration(remote_type),
                binary(remote),
                u32("0"),
                u32("0")};
    }

    void expect_nothing_left() { EXPECT_TRUE(device_.open_things().none()); }

    Device device_;
    confd_value_t remote_{};
    confd_value_t local_{};
    confd_value_t remote6_{};
};

TEST_F(NeighborKey, PeerOfIpv4_HasItsKeyInTheMibsOrder)
{
    {
        Entry entry(5, &remote_, &local_, 8);
        EXPECT_EQ(listed(entry, 8), key(1, "c0000202", 1, "c0000201"));
    }
    expect_nothing_left();
}

TEST_F(NeighborKey, PeerWithoutLocalAddress_HasTheZeroAddress)
{
    {
        Entry entry(5, &remote_, nullptr, 8);
        EXPECT_EQ(listed(entry, 8), key(1, "00000000", 1, "c0000201"));
    }
    expect_nothing_left();
}

TEST_F(NeighborKey, PeerOfIpv6_HasAnAddressTypeOnEachSide)
{
    {
        Entry entry(5, &remote6_, nullptr, 8);
        EXPECT_EQ(listed(entry, 8), key(1, "00000000", 2, "20010db8000000000000000000000001"));
        Entry both(5, &remote_, &remote6_, 8);
        EXPECT_EQ(listed(both, 8), key(2, "20010db8000000000000000000000001", 1, "c0000201"));
    }
    expect_nothing_left();
}

TEST_F(NeighborKey, LargestEntityIndex_IsKept)
{
    Entry entry(0xFFFFFFFF, &remote_, nullptr, 8);
    EXPECT_EQ(listed(entry, 1), std::vector<std::string>{u32("4294967295")});
}

TEST_F(NeighborKey, FurtherPositions_AreAbsentUntilTheCallerFillsThem)
{
    Entry entry(5, &remote_, &local_, 10);
    std::vector<std::string> expected = key(1, "c0000202", 1, "c0000201");
    expected.insert(expected.end(), {"-", "-"});
    EXPECT_EQ(listed(entry, 10), expected);
    CONFD_SET_UINT32(&entry.entry_values()[9], 7);
    EXPECT_EQ(CONFD_GET_UINT32(&entry.entry_values()[9]), 7U);
}

TEST_F(NeighborKey, CountBelowAPeersKey_StillHasRoomForIt)
{
    {
        Entry entry(5, &remote_, &local_, 1);
        EXPECT_EQ(listed(entry, 8), key(1, "c0000202", 1, "c0000201"));
    }
    expect_nothing_left();
}

TEST_F(NeighborKey, DestroyedThroughItsBase_ReleasesBothAddresses)
{
    std::unique_ptr<Entry> entry = std::make_unique<AfiSafiEntry>(5, &remote_, &local_, nullptr, nullptr);
    EXPECT_EQ(device_.open_things().values, 2U);
    entry.reset();
    expect_nothing_left();
}

TEST_F(NeighborKey, AddressFamilyNotGiven_IsIpv4Unicast)
{
    AfiSafiEntry entry(5, &remote_, &local_, nullptr, nullptr);
    std::vector<std::string> expected = key(1, "c0000202", 1, "c0000201");
    expected.insert(expected.end(), {enumeration(1), enumeration(1)});
    EXPECT_EQ(listed(entry, 10), expected);
}

TEST_F(NeighborKey, AddressFamilyGiven_IsCopied)
{
    confd_value_t afi;
    CONFD_SET_ENUM_VALUE(&afi, 2);
    confd_value_t safi;
    CONFD_SET_ENUM_VALUE(&safi, 128);
    AfiSafiEntry entry(5, &remote6_, nullptr, &afi, &safi);
    CONFD_SET_ENUM_VALUE(&afi, 25);
    EXPECT_EQ(listed(entry, 10)[8], enumeration(2));
    EXPECT_EQ(listed(entry, 10)[9], enumeration(128));
    AfiSafiEntry only_safi(5, &remote_, nullptr, nullptr, &safi);
    EXPECT_EQ(listed(only_safi, 10)[8], enumeration(1));
    EXPECT_EQ(listed(only_safi, 10)[9], enumeration(128));
}

TEST_F(NeighborKey, CopiesThatOwnMemory_AreTheCallersToGiveBack)
{
    confd_value_t text;
    CONFD_SET_CBUF(&text, "vpnv4", 5);
    confd_value_t copy{};
    {
        AfiSafiEntry entry(5, &remote_, &local_, &text, nullptr);
        copy = entry.entry_values()[8];
        EXPECT_NE(CONFD_GET_CBUFPTR(&copy), CONFD_GET_CBUFPTR(&text));
    }
    EXPECT_STREQ(CONFD_GET_CBUFPTR(&copy), "vpnv4");
    confd_free_dup_to_value(&copy);
    expect_nothing_left();
}

// A conversion that fails on a device may leave its value alone: the type check must not find what was there before.
TEST_F(NeighborKey, AddressesBeforeTheirConversion_AreAbsent)
{
    const Entry entry(5, &remote_, &local_, 8);
    EXPECT_EQ(types_found, std::vector<int>(2, C_NOEXISTS));
}

using NeighborKeyDeath = NeighborKey;

constexpr char kSignature[] =
    "src/daemon/bgp_utils:[0-9]+: BgpUtils::NeighborEntry::NeighborEntry\\(uint32_t, confd_value_t\\*, "
    "confd_value_t\\*, int\\): Assertion ";

TEST_F(NeighborKeyDeath, LocalAddressNotConverted_FailsAnAssertion)
{
    conversions_left = 0;
    EXPECT_DEATH(Entry(5, &remote_, &local_, 8),
                 std::string(kSignature) + "`\\(&local_ip_val\\)->type == C_BINARY' failed\\.");
}

TEST_F(NeighborKeyDeath, RemoteAddressNotConverted_FailsAnAssertion)
{
    conversions_left = 1;
    EXPECT_DEATH(Entry(5, &remote_, &local_, 8),
                 std::string(kSignature) + "`\\(&remote_ip\\)->type == C_BINARY' failed\\.");
}

constexpr char kFault[] =
    "^1 backtrace, then 1, NeighborEntry, src/daemon/bgp_utils, [1-9][0-9]*, "
    "<a peer's key needs a remote address and a count above 0>\n$";

TEST_F(NeighborKeyDeath, NoRemoteAddress_ReportsAFaultAndExits)
{
    bgp_test::show_faults(device_);
    EXPECT_EXIT(Entry(5, nullptr, &local_, 8), testing::ExitedWithCode(1), kFault);
    EXPECT_EXIT(AfiSafiEntry(5, nullptr, &local_, nullptr, nullptr), testing::ExitedWithCode(1), kFault);
}

TEST_F(NeighborKeyDeath, CountNotAboveZero_ReportsAFaultAndExits)
{
    bgp_test::show_faults(device_);
    EXPECT_EXIT(Entry(5, &remote_, &local_, 0), testing::ExitedWithCode(1), kFault);
    EXPECT_EXIT(Entry(5, &remote_, &local_, -8), testing::ExitedWithCode(1), kFault);
}

}  // namespace
