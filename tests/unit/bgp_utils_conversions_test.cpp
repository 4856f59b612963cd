// Addresses, passwords, durations, keypath search and regular expressions.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "bgp_update/bgp_utils.h"
#include "confd/value.h"
#include "device.h"
#include "support/show_faults.h"

namespace {

std::vector<std::string> wiped;  // what was overwritten before its memory was released

}  // namespace

// These stand before libc's, to see what they overwrite. The second is what a build with _FORTIFY_SOURCE calls.
extern "C" {

void explicit_bzero(void* memory, size_t size) noexcept
{
    wiped.emplace_back(static_cast<const char*>(memory), size);
    using Wipe = void (*)(void*, size_t);
    static const auto libc = reinterpret_cast<Wipe>(dlsym(RTLD_NEXT, "explicit_bzero"));
    libc(memory, size);
}

void __explicit_bzero_chk(void* memory, size_t size, size_t /*room*/) noexcept
{
    explicit_bzero(memory, size);
}
}

namespace {

using bgp_platform::Device;
using bgp_test::show_faults;

confd_value_t ipv4(const char* text)
{
    in_addr address{};
    EXPECT_EQ(inet_pton(AF_INET, text, &address), 1);
    confd_value_t value{};
    CONFD_SET_IPV4(&value, address);
    return value;
}

confd_value_t ipv6(const char* text)
{
    in6_addr address{};
    EXPECT_EQ(inet_pton(AF_INET6, text, &address), 1);
    confd_value_t value{};
    CONFD_SET_IPV6(&value, address);
    return value;
}

confd_value_t text_value(const char* text)
{
    confd_value_t value{};
    CONFD_SET_CBUF(&value, text, strlen(text));
    return value;
}

// A value as confd_pp_value prints it, with its type's number before it.
std::string printed(const confd_value_t& value)
{
    char text[256];
    confd_pp_value(text, sizeof text, &value);
    return std::to_string(value.type) + " " + text;
}

std::string binary(const std::string& digits)
{
    return std::to_string(C_BINARY) + " " + digits;
}

TEST(IsIPv6, Two_IsIPv6)
{
    confd_value_t type;
    CONFD_SET_ENUM_VALUE(&type, 2);
    EXPECT_TRUE(BgpUtils::is_IPv6(&type));
}

TEST(IsIPv6, OtherNumbers_AreNot)
{
    for (const int number : {1, 0, 3, -2, 16}) {
        confd_value_t type;
        CONFD_SET_ENUM_VALUE(&type, number);
        EXPECT_FALSE(BgpUtils::is_IPv6(&type)) << number;
    }
}

TEST(IsIPv6Death, OtherType_FailsAnAssertion)
{
    confd_value_t number;
    CONFD_SET_INT32(&number, 2);
    EXPECT_DEATH(BgpUtils::is_IPv6(&number),
                 "src/daemon/bgp_utils:[0-9]+: static bool BgpUtils::is_IPv6\\(confd_value_t\\*\\): "
                 "Assertion `\\(val\\)->type == C_ENUM_VALUE' failed\\.");
}

// What IpToHexlist makes of an address: its result, the address type, and the hex list.
std::string hex_list_of(confd_value_t* address)
{
    confd::Value hex_list;
    int type = -1;
    const int result = BgpUtils::IpToHexlist(address, &hex_list, &type);
    return std::to_string(result) + ", " + std::to_string(type) + ", " + printed(hex_list);
}

TEST(IpToHexlist, Ipv4_IsTypeOneWithAllItsOctets)
{
    Device device;
    confd_value_t address = ipv4("192.0.2.129");
    EXPECT_EQ(hex_list_of(&address), "0, 1, " + binary("c0000281"));
    EXPECT_TRUE(device.open_things().none());
}

TEST(IpToHexlist, Ipv6_IsTypeTwo)
{
    Device device;
    confd_value_t address = ipv6("2001:db8::1");
    EXPECT_EQ(hex_list_of(&address), "0, 2, " + binary("20010db8000000000000000000000001"));
    EXPECT_TRUE(device.open_things().none());
}

TEST(IpToHexlist, EverythingElse_IsTheZeroAddressOfTypeOne)
{
    Device device;
    confd_value_t text = text_value("192.0.2.1");
    EXPECT_EQ(hex_list_of(&text), "0, 1, " + binary("00000000"));
    confd_value_t absent;
    CONFD_SET_NOEXISTS(&absent);
    EXPECT_EQ(hex_list_of(&absent), "0, 1, " + binary("00000000"));
    EXPECT_EQ(hex_list_of(nullptr), "0, 1, " + binary("00000000"));
    EXPECT_TRUE(device.open_things().none());
}

bool valid(std::string pattern)
{
    return BgpUtils::regexp_valid(pattern.data());
}

TEST(RegexpValid, ExtendedExpression_IsValid)
{
    EXPECT_TRUE(valid("^65[0-9]+$"));
    EXPECT_TRUE(valid("(_100_|_200_){1,2}"));
    EXPECT_TRUE(valid(""));
}

TEST(RegexpValid, UnbalancedExpression_IsNot)
{
    EXPECT_FALSE(valid("("));
    EXPECT_FALSE(valid("^(65[0-9]+$"));
    EXPECT_FALSE(valid("[0-9"));
    EXPECT_FALSE(valid("a{2,1}")) << "no bounds in basic expressions: this one is refused only as an extended one";
}

class PwdTOhexliststr : public testing::Test {
protected:
    PwdTOhexliststr() { wiped.clear(); }

    // A stored text as a read gives it: owning its octets, NUL-terminated.
    static confd_value_t stored(const char* text)
    {
        const confd_value_t borrowed = text_value(text);
        confd_value_t value{};
        EXPECT_EQ(confd_value_dup_to(&borrowed, &value), &value);
        return value;
    }

    Device device_;
};

TEST_F(PwdTOhexliststr, EncryptedText_BecomesTheOctetsOfItsPlainForm)
{
    confd_value_t in = stored("$test$terces");
    confd::Value out;
    BgpUtils::pwdTOhexliststr(&out, &in);
    EXPECT_EQ(printed(out), binary("736563726574"));
    EXPECT_EQ(CONFD_GET_BINARY_SIZE(&out), 6U) << "no terminator";
    EXPECT_EQ(device_.open_things().values, 2U) << "the stored text stays the caller's";
    EXPECT_STREQ(CONFD_GET_CBUFPTR(&in), "$test$terces");
    confd_free_value(&in);
}

TEST_F(PwdTOhexliststr, OtherText_IsTakenAsItIsAndReleased)
{
    confd_value_t in = stored("plain");
    confd::Value out;
    BgpUtils::pwdTOhexliststr(&out, &in);
    EXPECT_EQ(printed(out), binary("706c61696e"));
    EXPECT_EQ(device_.open_things().values, 1U) << "of the two values only the result is left";
}

TEST_F(PwdTOhexliststr, EmptyText_GivesNoOctets)
{
    confd_value_t in = stored("");
    confd::Value out;
    BgpUtils::pwdTOhexliststr(&out, &in);
    EXPECT_EQ(printed(out), binary(""));
    EXPECT_EQ(device_.open_things().values, 1U);
}

TEST_F(PwdTOhexliststr, OctetsBehindATerminator_AreLeftOut)
{
    confd_value_t borrowed;
    CONFD_SET_CBUF(&borrowed, "ab\0cd", 5);
    confd_value_t in{};
    confd_value_dup_to(&borrowed, &in);
    confd::Value out;
    BgpUtils::pwdTOhexliststr(&out, &in);
    EXPECT_EQ(printed(out), binary("6162"));
}

TEST_F(PwdTOhexliststr, PlainForm_IsWipedBeforeItIsReleased)
{
    confd_value_t in = stored("$test$terces");
    confd::Value out;
    BgpUtils::pwdTOhexliststr(&out, &in);
    EXPECT_EQ(wiped, std::vector<std::string>{"secret"});
    confd_free_value(&in);
}

TEST_F(PwdTOhexliststr, PlainForm_IsReportedNowhere)
{
    device_.recorder().start();
    confd_value_t in = stored("$test$terces");
    confd::Value out;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    BgpUtils::pwdTOhexliststr(&out, &in);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(device_.log().empty());
    EXPECT_TRUE(device_.trace().empty());
    EXPECT_TRUE(device_.faults().empty());
    EXPECT_TRUE(device_.recorder().calls().empty());
    confd_free_value(&in);
}

using PwdTOhexliststrDeath = PwdTOhexliststr;

TEST_F(PwdTOhexliststrDeath, OtherType_FailsAnAssertionWithoutThePassword)
{
    char secret[] = "$test$terces";
    confd_value_t in;
    CONFD_SET_STR(&in, secret);
    confd::Value out;
    EXPECT_DEATH(BgpUtils::pwdTOhexliststr(&out, &in),
                 "^[^\n]*src/daemon/bgp_utils:[0-9]+: static void BgpUtils::pwdTOhexliststr\\(confd_value_t\\*, "
                 "confd_value_t\\*\\): Assertion `\\(val_in\\)->type == C_BUF' failed\\.\n$");
}

std::string duration(confd_value_t in)
{
    Device device;
    confd_value_t out{};
    EXPECT_EQ(BgpUtils::SecondsToDuration(&out, &in), &out);
    EXPECT_EQ(out.type, C_BUF);
    std::string text(CONFD_GET_CBUFPTR(&out), CONFD_GET_BUFSIZE(&out));
    confd_free_dup_to_value(&out);
    EXPECT_TRUE(device.open_things().none());
    return text;
}

std::string duration(uint32_t seconds)
{
    confd_value_t in{};
    CONFD_SET_UINT32(&in, seconds);
    return duration(in);
}

TEST(SecondsToDuration, BelowADay_ShowsHoursMinutesSeconds)
{
    EXPECT_EQ(duration(0), "00:00:00");
    EXPECT_EQ(duration(59), "00:00:59");
    EXPECT_EQ(duration(60), "00:01:00");
    EXPECT_EQ(duration(3661), "01:01:01");
    EXPECT_EQ(duration(86399), "23:59:59");
}

TEST(SecondsToDuration, Days_ShowDaysHoursMinutes)
{
    EXPECT_EQ(duration(86400), "01d00h00m");
    EXPECT_EQ(duration(604799), "06d23h59m");
}

TEST(SecondsToDuration, Weeks_ShowWeeksDaysHours)
{
    EXPECT_EQ(duration(604800), "01w00d00h");
    EXPECT_EQ(duration(2591999), "04w01d23h");
}

TEST(SecondsToDuration, Months_ShowMonthsWeeksDays)
{
    EXPECT_EQ(duration(2592000), "01m00w00d");
    EXPECT_EQ(duration(31103999), "11m04w01d");
}

TEST(SecondsToDuration, Years_ShowYearsMonthsWeeks)
{
    EXPECT_EQ(duration(31104000), "01y00m00w");
    EXPECT_EQ(duration(31536000), "01y00m00w") << "365 days: five days are no week";
    EXPECT_EQ(duration(31104000 + 604800), "01y00m01w");
}

TEST(SecondsToDuration, LargestNumber_TakesAThirdDigit)
{
    EXPECT_EQ(duration(4294967295), "138y01m00w");
}

TEST(SecondsToDuration, SignedNumber_IsTakenAsUnsigned)
{
    confd_value_t in{};
    CONFD_SET_INT32(&in, 3661);
    EXPECT_EQ(duration(in), "01:01:01");
    CONFD_SET_INT32(&in, -1);
    EXPECT_EQ(duration(in), "138y01m00w");
}

TEST(SecondsToDuration, OtherTypes_CountAsZero)
{
    char text[] = "3661";
    confd_value_t in{};
    CONFD_SET_STR(&in, text);
    EXPECT_EQ(duration(in), "00:00:00");
    CONFD_SET_UINT64(&in, 3661);
    EXPECT_EQ(duration(in), "00:00:00");
    CONFD_SET_UINT16(&in, 3661);
    EXPECT_EQ(duration(in), "00:00:00");
}

constexpr unsigned int kNotFound = 0xFFFFFFFF;
constexpr unsigned int kLeaf = 11;
constexpr unsigned int kList = 22;
constexpr unsigned int kTop = 33;

// "/kTop/kList{kTop}/kLeaf": element 1 is the list's key, a number like the tag of the top node.
confd_hkeypath_t leaf_path()
{
    confd_hkeypath_t path{};
    for (auto& element : path.v) {
        for (confd_value_t& value : element) {
            CONFD_SET_NOEXISTS(&value);
        }
    }
    CONFD_SET_XMLTAG(&path.v[0][0], kLeaf, 1);
    CONFD_SET_UINT32(&path.v[1][0], kTop);
    CONFD_SET_XMLTAG(&path.v[2][0], kList, 1);
    CONFD_SET_XMLTAG(&path.v[3][0], kTop, 1);
    path.len = 4;
    return path;
}

unsigned int found(unsigned int tag, int lower, int upper)
{
    confd_hkeypath_t path = leaf_path();
    return BgpUtils::Krfind(&path, tag, lower, upper);
}

TEST(Krfind, TagInTheKeypath_GivesItsIndex)
{
    EXPECT_EQ(found(kLeaf, 0, -1), 0U);
    EXPECT_EQ(found(kList, 0, -1), 2U);
    EXPECT_EQ(found(kTop, 0, -1), 3U) << "a key that is the same number is no name";
    EXPECT_EQ(found(kTop, 0, 4), 3U);
}

TEST(Krfind, TagOutsideTheRange_IsNotFound)
{
    EXPECT_EQ(found(kLeaf, 1, -1), kNotFound);
    EXPECT_EQ(found(kTop, 0, 3), kNotFound);
    EXPECT_EQ(found(44, 0, -1), kNotFound);
}

TEST(Krfind, RangeOfOneElement_IsSearched)
{
    EXPECT_EQ(found(kList, 2, 3), 2U);
}

TEST(Krfind, EmptyRangeUpToTheLength_FindsNothing)
{
    EXPECT_EQ(found(kLeaf, 4, -1), kNotFound);
    EXPECT_EQ(found(kLeaf, 77, -1), kNotFound);
    confd_hkeypath_t empty{};
    EXPECT_EQ(BgpUtils::Krfind(&empty, kLeaf, 0, -1), kNotFound);
}

TEST(Krfind, FirstOfSeveral_IsTaken)
{
    confd_hkeypath_t path = leaf_path();
    CONFD_SET_XMLTAG(&path.v[3][0], kList, 2);
    EXPECT_EQ(BgpUtils::Krfind(&path, kList, 0, -1), 2U);
    EXPECT_EQ(BgpUtils::Krfind(&path, kList, 3, -1), 3U) << "whatever its namespace";
}

class KrfindDeath : public testing::Test {
protected:
    KrfindDeath() { show_faults(device_); }

    Device device_;
};

TEST_F(KrfindDeath, LowerBelowZero_ReportsAFaultAndExits)
{
    for (const int upper : {-1, 2, -7}) {
        EXPECT_EXIT(found(kLeaf, -1, upper), testing::ExitedWithCode(1),
                    "^1 backtrace, then 1, Krfind, src/daemon/bgp_utils, [1-9][0-9]*, "
                    "<lower index should be gt > -1>\n$");
    }
}

TEST_F(KrfindDeath, RangeThatMakesNoSense_ReportsAFaultAndExits)
{
    const std::vector<std::pair<int, int>> ranges = {{2, 2}, {3, 2}, {0, 0}, {0, 5}, {0, -2}};
    for (const auto& [lower, upper] : ranges) {
        EXPECT_EXIT(found(kLeaf, lower, upper), testing::ExitedWithCode(1),
                    "^1 backtrace, then 1, Krfind, src/daemon/bgp_utils, [1-9][0-9]*, "
                    "<invalid lower and upper range, len 4>\n$")
            << lower << " to " << upper;
    }
}

}  // namespace
