// Types of leaves: what each takes from text and from a program, what it gives back, and what it says about the rest.
#include "schema/type.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "confd_lib.h"
#include "schema/quote.h"
#include "values/owned_values.h"

namespace {

using bgp_platform::schema::BaseType;
using bgp_platform::schema::in_quotes;
using bgp_platform::schema::Interval;
using bgp_platform::schema::Type;
using bgp_platform::schema::Value;

Type type_of(BaseType base, confd_vtype vtype, std::vector<Interval> intervals = {})
{
    Type type;
    type.base = base;
    type.vtype = vtype;
    type.intervals = std::move(intervals);
    return type;
}

Type as_size()
{
    Type type = type_of(BaseType::Enum, C_ENUM_VALUE);
    type.enums = {{"twoOctet", 1}, {"fourOctet", 2}};
    return type;
}

const Type kText = type_of(BaseType::Text, C_BUF);
const Type kOctets = type_of(BaseType::Octets, C_BINARY);
const Type kBool = type_of(BaseType::Bool, C_BOOL);
const Type kIpv4 = type_of(BaseType::Ipv4, C_IPV4);
const Type kIpv6 = type_of(BaseType::Ipv6, C_IPV6);
const Type kIp = type_of(BaseType::Ip, C_UNION);
const Type kPrefix = type_of(BaseType::Ipv4Prefix, C_IPV4PREFIX);
const Type kEmpty = type_of(BaseType::Empty, C_XMLTAG);
const Type kUint32 = type_of(BaseType::Uint, C_UINT32);
const Type kInt32 = type_of(BaseType::Int, C_INT32);

// The canonical text of a text, or "refused".
std::string through(const Type& type, std::string_view text)
{
    Value value;
    return type.parse(text, &value) ? type.text(value) : "refused";
}

std::string why(const Type& type, std::string_view text)
{
    Value value;
    std::string why;
    EXPECT_FALSE(type.parse(text, &value, &why)) << text;
    EXPECT_TRUE(value.absent()) << "a refused text leaves the value alone";
    return why;
}

struct Width {
    BaseType base;
    confd_vtype vtype;
    const char* lowest;
    const char* highest;
    const char* below;
    const char* above;
};

class NumberOfEveryWidth : public testing::TestWithParam<Width> {};

TEST_P(NumberOfEveryWidth, TakesItsLimitsAndNothingBeyond)
{
    const Width& width = GetParam();
    const Type type = type_of(width.base, width.vtype);
    EXPECT_EQ(through(type, width.lowest), width.lowest);
    EXPECT_EQ(through(type, width.highest), width.highest);
    EXPECT_EQ(through(type, width.below), "refused");
    EXPECT_EQ(through(type, width.above), "refused");
}

TEST_P(NumberOfEveryWidth, GoesToTheProgramAndBack)
{
    const Width& width = GetParam();
    const Type type = type_of(width.base, width.vtype);
    for (const char* text : {width.lowest, width.highest}) {
        Value value;
        ASSERT_TRUE(type.parse(text, &value));
        confd_value_t confd;
        type.to_confd(value, &confd);
        EXPECT_EQ(confd.type, width.vtype);
        Value back;
        ASSERT_TRUE(type.from_confd(confd, &back));
        EXPECT_EQ(back, value) << text;
    }
}

TEST_P(NumberOfEveryWidth, RefusesAProgramsValueOfAnotherWidth)
{
    const Width& width = GetParam();
    const Type type = type_of(width.base, width.vtype);
    for (const confd_vtype other :
         {C_INT8, C_INT16, C_INT32, C_INT64, C_UINT8, C_UINT16, C_UINT32, C_UINT64, C_ENUM_VALUE, C_NOEXISTS}) {
        confd_value_t confd{};
        confd.type = other;
        Value value;
        EXPECT_EQ(type.from_confd(confd, &value), other == width.vtype) << other;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Type, NumberOfEveryWidth,
    testing::Values(Width{BaseType::Int, C_INT8, "-128", "127", "-129", "128"},
                    Width{BaseType::Int, C_INT16, "-32768", "32767", "-32769", "32768"},
                    Width{BaseType::Int, C_INT32, "-2147483648", "2147483647", "-2147483649", "2147483648"},
                    Width{BaseType::Int, C_INT64, "-9223372036854775808", "9223372036854775807", "-9223372036854775809",
                          "9223372036854775808"},
                    Width{BaseType::Uint, C_UINT8, "0", "255", "-1", "256"},
                    Width{BaseType::Uint, C_UINT16, "0", "65535", "-1", "65536"},
                    Width{BaseType::Uint, C_UINT32, "0", "4294967295", "-1", "4294967296"},
                    Width{BaseType::Uint, C_UINT64, "0", "18446744073709551615", "-1", "18446744073709551616"}));

TEST(TypeNumber, AnythingButDecimalDigits_IsRefused)
{
    for (const char* text : {"", " ", "1 ", " 1", "+1", "-", "--1", "0x10", "1.0", "1e3", "x", "1\n"}) {
        EXPECT_EQ(through(kInt32, text), "refused") << text;
        EXPECT_EQ(through(kUint32, text), "refused") << text;
    }
    EXPECT_EQ(through(kUint32, std::string_view("1\0", 2)), "refused");
    EXPECT_EQ(through(kUint32, "007"), "7");
}

TEST(TypeNumber, Refusal_TellsTheRange)
{
    EXPECT_EQ(why(kUint32, "x"), "\"x\" is not a number from 0 to 4294967295");
    EXPECT_EQ(why(kInt32, "2147483648"), "\"2147483648\" is not a number from -2147483648 to 2147483647");
    const Type ports = type_of(BaseType::Uint, C_UINT16, {{1, 5}, {8, 9}});
    EXPECT_EQ(why(ports, "7"), "\"7\" is not a number from 1 to 5 or 8 to 9");
}

TEST(TypeNumber, Intervals_BindTextAndProgramAlike)
{
    const Type type = type_of(BaseType::Int, C_INT32, {{-5, static_cast<uint64_t>(-3)}, {2, 4}});
    EXPECT_EQ(through(type, "-5"), "-5");
    EXPECT_EQ(through(type, "-3"), "-3");
    EXPECT_EQ(through(type, "-2"), "refused");
    EXPECT_EQ(through(type, "4"), "4");
    EXPECT_EQ(through(type, "5"), "refused");
    confd_value_t confd;
    Value value;
    CONFD_SET_INT32(&confd, -4);
    EXPECT_TRUE(type.from_confd(confd, &value));
    CONFD_SET_INT32(&confd, 0);
    EXPECT_FALSE(type.from_confd(confd, &value));
}

TEST(TypeEnum, NamesAndNumbers_AreTheTypesOwn)
{
    const Type type = as_size();
    Value value;
    ASSERT_TRUE(type.parse("fourOctet", &value));
    EXPECT_EQ(value.as_enum(), 2);
    EXPECT_EQ(type.text(value), "fourOctet");
    EXPECT_EQ(why(type, "threeOctet"), "\"threeOctet\" is not one of twoOctet, fourOctet");
    EXPECT_EQ(through(type, "2"), "refused");
    EXPECT_EQ(through(type, "fouroctet"), "refused");
    EXPECT_EQ(through(type, ""), "refused");
    EXPECT_EQ(type.find_enum(1)->name, "twoOctet");
    EXPECT_EQ(type.find_enum(3), nullptr);
    EXPECT_EQ(type.find_enum("zzz"), nullptr);
}

TEST(TypeEnum, ProgramsNumber_MustBeOneOfTheType)
{
    const Type type = as_size();
    confd_value_t confd;
    Value value;
    CONFD_SET_ENUM_VALUE(&confd, 2);
    ASSERT_TRUE(type.from_confd(confd, &value));
    EXPECT_EQ(value.as_enum(), 2);
    CONFD_SET_ENUM_VALUE(&confd, 3);
    EXPECT_FALSE(type.from_confd(confd, &value));
    CONFD_SET_UINT32(&confd, 2);
    EXPECT_FALSE(type.from_confd(confd, &value));
    type.to_confd(Value::of_enum(1), &confd);
    EXPECT_EQ(CONFD_GET_ENUM_VALUE(&confd), 1);
}

TEST(TypeBool, OnlyTrueAndFalse_AreTaken)
{
    EXPECT_EQ(through(kBool, "true"), "true");
    EXPECT_EQ(through(kBool, "false"), "false");
    EXPECT_EQ(why(kBool, "TRUE"), "\"TRUE\" is not one of true, false");
    EXPECT_EQ(through(kBool, "1"), "refused");
    confd_value_t confd;
    kBool.to_confd(Value::of_bool(true), &confd);
    EXPECT_EQ(CONFD_GET_BOOL(&confd), 1);
    Value value;
    EXPECT_TRUE(kBool.from_confd(confd, &value));
    EXPECT_TRUE(value.as_bool());
}

TEST(TypeText, AnyText_IsKeptAsItStands)
{
    for (const char* text : {"", " red ", "a\nb", "{x}", "\xC3\xA4"}) {
        EXPECT_EQ(through(kText, text), text);
    }
}

TEST(TypeText, Lengths_CountCharacters)
{
    const Type type = type_of(BaseType::Text, C_BUF, {{1, 2}});
    EXPECT_EQ(through(type, "\xC3\xA4\xC3\xB6"), "\xC3\xA4\xC3\xB6");
    EXPECT_EQ(why(type, ""), "\"\" is not a text of 1 to 2 characters");
    EXPECT_EQ(through(type, "abc"), "refused");
    confd_value_t confd;
    Value value;
    CONFD_SET_STR(&confd, const_cast<char*>("abc"));
    EXPECT_FALSE(type.from_confd(confd, &value));
}

TEST(TypeText, ProgramsText_IsTakenAsBufferOrString)
{
    confd_value_t confd;
    Value value;
    CONFD_SET_STR(&confd, const_cast<char*>("red"));
    ASSERT_TRUE(kText.from_confd(confd, &value));
    EXPECT_EQ(value.bytes(), "red");
    CONFD_SET_BUF(&confd, reinterpret_cast<unsigned char*>(const_cast<char*>("blue-green")), 4);
    ASSERT_TRUE(kText.from_confd(confd, &value));
    EXPECT_EQ(value.bytes(), "blue");
    CONFD_SET_BUF(&confd, nullptr, 0);
    ASSERT_TRUE(kText.from_confd(confd, &value));
    EXPECT_EQ(value.bytes(), "");
    CONFD_SET_STR(&confd, nullptr);
    EXPECT_FALSE(kText.from_confd(confd, &value));
    CONFD_SET_BINARY(&confd, reinterpret_cast<unsigned char*>(const_cast<char*>("red")), 3);
    EXPECT_FALSE(kText.from_confd(confd, &value));
}

TEST(TypeText, ReadText_IsAnOwnedBufferWithANulBehindIt)
{
    const std::size_t before = bgp_platform::values::live_owned_values();
    confd_value_t confd;
    kText.to_confd(Value::of_text("a text longer than fifteen bytes"), &confd);
    EXPECT_EQ(confd.type, C_BUF);
    EXPECT_STREQ(CONFD_GET_CBUFPTR(&confd), "a text longer than fifteen bytes");
    EXPECT_EQ(CONFD_GET_BUFSIZE(&confd), 32U);
    EXPECT_EQ(bgp_platform::values::live_owned_values(), before + 1);
    bgp_platform::values::forget(CONFD_GET_BUFPTR(&confd));
    std::free(CONFD_GET_BUFPTR(&confd));
}

TEST(TypeOctets, HexPairs_AreReadInEitherCaseAndPrintedInLowerCase)
{
    EXPECT_EQ(through(kOctets, "0a:00:ff"), "0a:00:ff");
    EXPECT_EQ(through(kOctets, "0A:fF"), "0a:ff");
    EXPECT_EQ(through(kOctets, "7f"), "7f");
    EXPECT_EQ(through(kOctets, ""), "");
    const std::string sixteen = "00:01:02:03:04:05:06:07:08:09:0a:0b:0c:0d:0e:0f";
    EXPECT_EQ(through(kOctets, sixteen), sixteen);
    for (const char* text : {"0", "0a:", ":0a", "0a:0", "0a0b", "0a-0b", "0a::0b", "0g", "0a: b", " 0a", "0a ", "0x"}) {
        EXPECT_EQ(through(kOctets, text), "refused") << text;
    }
    EXPECT_EQ(why(kOctets, "10.0.0.1"),
              "\"10.0.0.1\" is not octets in hex with colons between them, as in 0a:00:00:01");
}

TEST(TypeOctets, ProgramsOctets_AreBinaryOnly)
{
    unsigned char octets[] = {10, 0, 0, 1};
    confd_value_t confd;
    Value value;
    CONFD_SET_BINARY(&confd, octets, 4);
    ASSERT_TRUE(kOctets.from_confd(confd, &value));
    EXPECT_EQ(kOctets.text(value), "0a:00:00:01");
    CONFD_SET_BUF(&confd, octets, 4);
    EXPECT_FALSE(kOctets.from_confd(confd, &value));
    CONFD_SET_HEXSTR(&confd, octets, 4);
    EXPECT_FALSE(kOctets.from_confd(confd, &value));
    kOctets.to_confd(value, &confd);
    EXPECT_EQ(CONFD_GET_BINARY_SIZE(&confd), 4U);
    EXPECT_EQ(std::memcmp(CONFD_GET_BINARY_PTR(&confd), octets, 4), 0);
    EXPECT_EQ(CONFD_GET_BINARY_PTR(&confd)[4], 0);
    bgp_platform::values::forget(CONFD_GET_BINARY_PTR(&confd));
    std::free(CONFD_GET_BINARY_PTR(&confd));
}

TEST(TypeAddress, Ipv4_IsFourDecimalNumbers)
{
    EXPECT_EQ(through(kIpv4, "192.0.2.1"), "192.0.2.1");
    for (const char* text :
         {"", "192.0.2", "192.0.2.256", "192.0.2.01", "192.0.2.1 ", "192.0.2.1/32", "::1", "a.b.c.d"}) {
        EXPECT_EQ(through(kIpv4, text), "refused") << text;
    }
    EXPECT_EQ(through(kIpv4, std::string_view("192.0.2.1\0", 10)), "refused");
    EXPECT_EQ(why(kIpv4, "x"), "\"x\" is not an IPv4 address, as in 192.0.2.1");
}

TEST(TypeAddress, Ipv6_IsPrintedShortened)
{
    EXPECT_EQ(through(kIpv6, "2001:0DB8:0:0:0:0:0:1"), "2001:db8::1");
    EXPECT_EQ(through(kIpv6, "::"), "::");
    EXPECT_EQ(through(kIpv6, "::ffff:192.0.2.1"), "::ffff:192.0.2.1");
    for (const char* text : {"", "192.0.2.1", "2001:db8::1::2", "fe80::1%eth0", "2001:db8::1/64"}) {
        EXPECT_EQ(through(kIpv6, text), "refused") << text;
    }
    EXPECT_EQ(why(kIpv6, "x"), "\"x\" is not an IPv6 address, as in 2001:db8::1");
}

TEST(TypeAddress, EitherKind_IsToldByItsValue)
{
    Value four;
    Value six;
    ASSERT_TRUE(kIp.parse("192.0.2.1", &four));
    ASSERT_TRUE(kIp.parse("2001:db8::1", &six));
    EXPECT_EQ(kIp.text(four), "192.0.2.1");
    EXPECT_EQ(kIp.text(six), "2001:db8::1");
    EXPECT_EQ(why(kIp, "x"), "\"x\" is not an IPv4 or IPv6 address, as in 192.0.2.1 or 2001:db8::1");
    confd_value_t confd;
    Value back;
    kIp.to_confd(four, &confd);
    EXPECT_EQ(confd.type, C_IPV4);
    ASSERT_TRUE(kIp.from_confd(confd, &back));
    EXPECT_EQ(back, four);
    EXPECT_FALSE(kIpv6.from_confd(confd, &back));
    kIp.to_confd(six, &confd);
    EXPECT_EQ(confd.type, C_IPV6);
    ASSERT_TRUE(kIp.from_confd(confd, &back));
    EXPECT_EQ(back, six);
    EXPECT_FALSE(kIpv4.from_confd(confd, &back));
}

TEST(TypeAddress, Prefix_IsAddressAndLength)
{
    EXPECT_EQ(through(kPrefix, "192.0.2.0/24"), "192.0.2.0/24");
    EXPECT_EQ(through(kPrefix, "0.0.0.0/0"), "0.0.0.0/0");
    EXPECT_EQ(through(kPrefix, "192.0.2.1/32"), "192.0.2.1/32");
    for (const char* text : {"", "192.0.2.0", "192.0.2.0/", "192.0.2.0/33", "192.0.2.0/024", "192.0.2.0/-1", "/24",
                             "192.0.2.0/24 ", "192.0.2.0/2x", "192.0.2.0/257", "2001:db8::/32"}) {
        EXPECT_EQ(through(kPrefix, text), "refused") << text;
    }
    EXPECT_EQ(why(kPrefix, "x"), "\"x\" is not an IPv4 prefix, as in 192.0.2.0/24");
}

TEST(TypeAddress, ProgramsPrefix_HasAtMostThirtyTwoBits)
{
    Value value;
    ASSERT_TRUE(kPrefix.parse("192.0.2.0/24", &value));
    confd_value_t confd;
    kPrefix.to_confd(value, &confd);
    EXPECT_EQ(CONFD_GET_IPV4PREFIX(&confd).len, 24);
    Value back;
    ASSERT_TRUE(kPrefix.from_confd(confd, &back));
    EXPECT_EQ(back, value);
    confd.val.ipv4prefix.len = 33;
    EXPECT_FALSE(kPrefix.from_confd(confd, &back));
}

TEST(TypeEmpty, OnlyTheEmptyText_IsTaken)
{
    Value value;
    ASSERT_TRUE(kEmpty.parse("", &value));
    EXPECT_EQ(value, Value::present());
    EXPECT_EQ(why(kEmpty, "x"), "\"x\" stands in a leaf that takes no text");
    confd_value_t confd;
    kEmpty.to_confd(value, &confd);
    EXPECT_EQ(confd.type, C_XMLTAG);
    Value back;
    EXPECT_TRUE(kEmpty.from_confd(confd, &back));
    EXPECT_EQ(back, value);
}

TEST(Type, AbsentValue_IsNoexistsForTheProgram)
{
    confd_value_t confd;
    kUint32.to_confd(Value(), &confd);
    EXPECT_EQ(confd.type, C_NOEXISTS);
}

TEST(InQuotes, LongText_IsCutAtTwoHundredBytes)
{
    EXPECT_EQ(in_quotes(std::string(200, 'x')), "\"" + std::string(200, 'x') + "\"");
    EXPECT_EQ(in_quotes(std::string(201, 'x')), "\"" + std::string(200, 'x') + "\"...");
    EXPECT_EQ(in_quotes(std::string(199, 'x') + "\xC3\xA4"), "\"" + std::string(199, 'x') + "\"...");
    EXPECT_EQ(why(kUint32, std::string(1000, '9')).size(),
              std::strlen("\"\"... is not a number from 0 to 4294967295") + 200);
}

TEST(InQuotes, ControlCharactersQuotesAndBackslashes_AreEscaped)
{
    EXPECT_EQ(in_quotes(std::string_view("a\0b", 3)), "\"a\\x00b\"");
    EXPECT_EQ(in_quotes("\t\n\r\x1b[0m\x7f"), "\"\\t\\n\\r\\x1b[0m\\x7f\"");
    EXPECT_EQ(in_quotes("say \"no\" \\"), "\"say \\\"no\\\" \\\\\"");
    EXPECT_EQ(in_quotes("\xC3\xA4"), "\"\xC3\xA4\"");
}

}  // namespace
