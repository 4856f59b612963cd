// Address conversions: what a hex list looks like, what comes back from one, and what is refused.
#include "nz_address.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "addresses.h"
#include "values/owned_values.h"

namespace {

// A value that a conversion filled, released at the end.
class Converted {
public:
    Converted() { CONFD_SET_EMPTY(&value_); }
    ~Converted() { confd_free_value(&value_); }
    Converted(const Converted&) = delete;
    Converted& operator=(const Converted&) = delete;

    confd_value_t* operator&() { return &value_; }
    confd_vtype type() const { return value_.type; }

    std::string bytes() const { return {reinterpret_cast<const char*>(value_.val.buf.ptr), value_.val.buf.size}; }

    // Whether a NUL follows the bytes, so that the program may read them as text.
    bool terminated() const { return value_.val.buf.ptr[value_.val.buf.size] == 0; }

private:
    confd_value_t value_;
};

confd_value_t ipv4_value(const char* text)
{
    confd_value_t value;
    CONFD_SET_IPV4(&value, bgp_test::ipv4(text));
    return value;
}

confd_value_t ipv6_value(const char* text)
{
    confd_value_t value;
    CONFD_SET_IPV6(&value, bgp_test::ipv6(text));
    return value;
}

confd_value_t hexlist(std::vector<unsigned char>& octets)
{
    confd_value_t value;
    CONFD_SET_BINARY(&value, octets.data(), octets.size());
    return value;
}

const std::string kIpv6Octets{"\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x0a", 16};

TEST(Address, Ipv4Value_BecomesBinaryOfItsFourOctets)
{
    confd_value_t in = ipv4_value("10.0.200.1");
    Converted out;
    EXPECT_EQ(Ipv4TOhexlist(&out, &in, 32), 0);
    EXPECT_EQ(out.type(), C_BINARY);
    EXPECT_EQ(out.bytes(), std::string("\x0a\x00\xc8\x01", 4));
}

TEST(Address, Ipv4ValueWithPrefixLength_LosesItsHostBits)
{
    const std::vector<std::pair<int, std::string>> kept = {{31, {"\xff\xff\xff\xfe", 4}},
                                                           {20, {"\xff\xff\xf0\x00", 4}},
                                                           {8, {"\xff\x00\x00\x00", 4}},
                                                           {0, {"\x00\x00\x00\x00", 4}}};
    for (const auto& [length, octets] : kept) {
        confd_value_t in = ipv4_value("255.255.255.255");
        Converted out;
        EXPECT_EQ(Ipv4TOhexlist(&out, &in, length), 0);
        EXPECT_EQ(out.bytes(), octets) << length;
    }
}

TEST(Address, PrefixLengthOutsideAnAddress_IsRefused)
{
    for (const int length : {-1, 33}) {
        confd_value_t in = ipv4_value("10.0.0.1");
        Converted out;
        EXPECT_LT(Ipv4TOhexlist(&out, &in, length), 0);
        EXPECT_EQ(out.type(), C_NOEXISTS);
    }
}

TEST(Address, Ipv6Value_BecomesBinaryOfItsSixteenOctets)
{
    confd_value_t in = ipv6_value("2001:db8::a");
    Converted out;
    EXPECT_EQ(Ipv6TOhexlist(&out, &in), 0);
    EXPECT_EQ(out.type(), C_BINARY);
    EXPECT_EQ(out.bytes(), kIpv6Octets);
}

TEST(Address, Ipv4Text_BecomesBinaryToo)
{
    Converted out;
    EXPECT_EQ(Ipv4strTOhexlist(&out, "192.168.1.254"), 0);
    EXPECT_EQ(out.type(), C_BINARY);
    EXPECT_EQ(out.bytes(), "\xc0\xa8\x01\xfe");
}

TEST(Address, Ipv6TextInFull_BecomesSixteenZeroOctets)
{
    Converted out;
    EXPECT_EQ(Ipv6strTOhexlist(&out, "0000:0000:0000:0000:0000:0000:0000:0000"), 0);
    EXPECT_EQ(out.type(), C_BINARY);
    EXPECT_EQ(out.bytes(), std::string(16, '\0'));
}

TEST(Address, Ipv6TextInShort_IsReadToo)
{
    Converted out;
    EXPECT_EQ(Ipv6strTOhexlist(&out, "2001:db8::a"), 0);
    EXPECT_EQ(out.bytes(), kIpv6Octets);
}

TEST(Address, TextThatIsNoAddress_IsRefused)
{
    for (const char* text : {"", "10.0.0", "10.0.0.256", "host", "::1"}) {
        Converted out;
        EXPECT_LT(Ipv4strTOhexlist(&out, text), 0) << text;
        EXPECT_EQ(out.type(), C_NOEXISTS) << text;
    }
    for (const char* text : {"", "10.0.0.1", "2001:db8", "g::"}) {
        Converted out;
        EXPECT_LT(Ipv6strTOhexlist(&out, text), 0) << text;
        EXPECT_EQ(out.type(), C_NOEXISTS) << text;
    }
}

TEST(Address, SocketAddress_KeepsItsNetworkOrder)
{
    Converted out;
    EXPECT_EQ(Ipv4InAddrTOhexlist(&out, in_addr{htonl(0x0a000001)}), 0);
    EXPECT_EQ(out.type(), C_BINARY);
    EXPECT_EQ(out.bytes(), std::string("\x0a\x00\x00\x01", 4));
}

TEST(Address, HexlistText_IsLowerCasePairsJoinedByColons)
{
    confd_value_t v4 = ipv4_value("10.0.0.255");
    Converted text4;
    EXPECT_EQ(Ipv4TOhexliststr(&text4, &v4), 0);
    EXPECT_EQ(text4.type(), C_BUF);
    EXPECT_EQ(text4.bytes(), "0a:00:00:ff");
    EXPECT_TRUE(text4.terminated());

    confd_value_t v6 = ipv6_value("2001:db8::a");
    Converted text6;
    EXPECT_EQ(Ipv6TOhexliststr(&text6, &v6), 0);
    EXPECT_EQ(text6.type(), C_BUF);
    EXPECT_EQ(text6.bytes(), "20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:0a");
}

TEST(Address, ValueOfTheOtherFamily_IsRefused)
{
    confd_value_t v4 = ipv4_value("10.0.0.1");
    confd_value_t v6 = ipv6_value("::1");
    Converted from_v6;
    EXPECT_LT(Ipv4TOhexlist(&from_v6, &v6, 32), 0);
    EXPECT_EQ(from_v6.type(), C_NOEXISTS);
    Converted from_v4;
    EXPECT_LT(Ipv6TOhexlist(&from_v4, &v4), 0);
    EXPECT_EQ(from_v4.type(), C_NOEXISTS);
    Converted text_from_v6;
    EXPECT_LT(Ipv4TOhexliststr(&text_from_v6, &v6), 0);
    EXPECT_EQ(text_from_v6.type(), C_NOEXISTS);
    Converted text_from_v4;
    EXPECT_LT(Ipv6TOhexliststr(&text_from_v4, &v4), 0);
    EXPECT_EQ(text_from_v4.type(), C_NOEXISTS);
}

TEST(Address, HexlistOfFourOctets_GivesDottedText)
{
    std::vector<unsigned char> octets = {10, 0, 200, 1};
    confd_value_t in = hexlist(octets);
    Converted out;
    EXPECT_EQ(HexlistTOipv4str(&in, &out), 0);
    EXPECT_EQ(out.type(), C_BUF);
    EXPECT_EQ(out.bytes(), "10.0.200.1");
    EXPECT_TRUE(out.terminated());
}

TEST(Address, HexlistOfAnotherLength_IsCutAtFourAndFilledWithZeros)
{
    const std::vector<std::pair<std::vector<unsigned char>, std::string>> cases = {
        {{}, "0.0.0.0"}, {{10}, "10.0.0.0"}, {{10, 1}, "10.1.0.0"}, {{10, 1, 2, 3, 4, 5}, "10.1.2.3"}};
    for (auto [octets, text] : cases) {
        confd_value_t in = hexlist(octets);
        Converted out;
        EXPECT_EQ(HexlistTOipv4str(&in, &out), 0);
        EXPECT_EQ(out.bytes(), text);
        in_addr address{};
        EXPECT_EQ(HexlistTOipv4InAddr(&in, &address), 0);
        EXPECT_EQ(inet_ntoa(address), text);
    }
}

TEST(Address, HexlistOfAnotherLength_FillsAnIpv6AddressWithZeros)
{
    std::vector<unsigned char> octets = {0x20, 0x01, 0x0d, 0xb8};
    confd_value_t in = hexlist(octets);
    in6_addr address;
    std::fill(std::begin(address.s6_addr), std::end(address.s6_addr), uint8_t{0xff});
    EXPECT_EQ(HexlistTOipv6In6Addr(&in, &address), 0);
    char text[INET6_ADDRSTRLEN];
    EXPECT_STREQ(inet_ntop(AF_INET6, &address, text, sizeof(text)), "2001:db8::");
}

TEST(Address, ValueThatIsNoHexlist_ReadsAsZeroAndIsReported)
{
    confd_value_t in;
    CONFD_SET_UINT32(&in, 5);
    Converted text;
    EXPECT_LT(HexlistTOipv4str(&in, &text), 0);
    EXPECT_EQ(text.type(), C_BUF);
    EXPECT_EQ(text.bytes(), "0.0.0.0");
    in_addr v4{1};
    EXPECT_LT(HexlistTOipv4InAddr(&in, &v4), 0);
    EXPECT_EQ(v4.s_addr, 0U);
    in6_addr v6 = in6addr_loopback;
    EXPECT_LT(HexlistTOipv6In6Addr(&in, &v6), 0);
    EXPECT_TRUE(IN6_IS_ADDR_UNSPECIFIED(&v6));
}

TEST(Address, EveryConversion_ComesBackAsItWas)
{
    for (const char* text : {"0.0.0.0", "127.0.0.1", "255.255.255.255", "1.2.3.4"}) {
        Converted octets;
        ASSERT_EQ(Ipv4strTOhexlist(&octets, text), 0);
        Converted back;
        ASSERT_EQ(HexlistTOipv4str(&octets, &back), 0);
        EXPECT_EQ(back.bytes(), text);
    }
}

TEST(Address, ConvertedValues_CountAsOwnedUntilReleased)
{
    const std::size_t before = bgp_platform::values::live_owned_values();
    {
        Converted octets;
        Converted text;
        Ipv4strTOhexlist(&octets, "10.0.0.1");
        HexlistTOipv4str(&octets, &text);
        EXPECT_EQ(bgp_platform::values::live_owned_values(), before + 2);
    }
    EXPECT_EQ(bgp_platform::values::live_owned_values(), before);
}

}  // namespace
