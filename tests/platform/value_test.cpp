// Stored values: what each kind holds, where the bytes of texts and octets lie, and the order that list keys have.
#include "schema/value.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "addresses.h"

namespace {

using bgp_platform::schema::compare;
using bgp_platform::schema::Value;
using bgp_test::ipv4;

Value stored_ipv6(const char* text)
{
    return Value::of_ipv6(bgp_test::ipv6(text));
}

TEST(Value, NothingSet_IsAbsent)
{
    const Value value;
    EXPECT_TRUE(value.absent());
    EXPECT_FALSE(value);
    EXPECT_EQ(value.kind(), Value::Kind::Absent);
    EXPECT_EQ(value, Value());
}

TEST(Value, EveryKind_GivesBackWhatItWasMadeOf)
{
    EXPECT_EQ(Value::present().kind(), Value::Kind::Present);
    EXPECT_EQ(Value::of_int(std::numeric_limits<int64_t>::min()).as_int(), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(Value::of_uint(std::numeric_limits<uint64_t>::max()).as_uint(), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(Value::of_enum(-7).as_enum(), -7);
    EXPECT_TRUE(Value::of_bool(true).as_bool());
    EXPECT_FALSE(Value::of_bool(false).as_bool());
    EXPECT_EQ(Value::of_ipv4(ipv4("192.0.2.1")).as_ipv4().s_addr, ipv4("192.0.2.1").s_addr);
    const Value prefix = Value::of_ipv4_prefix(ipv4("192.0.2.0"), 24);
    EXPECT_EQ(prefix.as_ipv4().s_addr, ipv4("192.0.2.0").s_addr);
    EXPECT_EQ(prefix.prefix_length(), 24);
    char printed[INET6_ADDRSTRLEN];
    const in6_addr address = stored_ipv6("2001:db8::1").as_ipv6();
    EXPECT_STREQ(inet_ntop(AF_INET6, &address, printed, sizeof printed), "2001:db8::1");
}

TEST(Value, FlatCopy_IsTheValueAgain)
{
    for (const Value& value :
         {Value(), Value::present(), Value::of_int(-5), Value::of_uint(5), Value::of_enum(2), Value::of_bool(true),
          Value::of_ipv4(ipv4("192.0.2.1")), stored_ipv6("2001:db8::1"), Value::of_ipv4_prefix(ipv4("192.0.2.0"), 24),
          Value::of_text("short"), Value::of_text(std::string(44, 'x')), Value::of_octets(std::string("\0\1", 2)),
          Value::of_octets(std::string(30, '\xFF'))}) {
        Value::Flat flat;
        value.flatten(&flat);
        EXPECT_EQ(Value::of_flat(flat), value);
        EXPECT_FALSE(flat.cut());
    }
}

TEST(Value, FlatCopyOfALongText_HasItsBeginning)
{
    Value::Flat flat;
    Value::of_text(std::string(44, 'x') + "y").flatten(&flat);
    EXPECT_EQ(Value::of_flat(flat), Value::of_text(std::string(44, 'x')));
    EXPECT_TRUE(flat.cut());
}

TEST(Value, BytesThatAreNoValue_AreAbsent)
{
    Value::Flat flat;
    std::memset(&flat, 0xD5, sizeof flat);
    EXPECT_TRUE(Value::of_flat(flat).absent());
    std::memset(&flat, 0xAA, sizeof flat);  // a long text of more bytes than there are
    EXPECT_EQ(Value::of_flat(flat), Value::of_text(std::string(44, '\xAA')));
}

TEST(Value, EqualValues_HaveEqualHashes)
{
    const std::string text(40, 'x');
    EXPECT_EQ(Value::of_text(text).hash(), Value::of_text(text).hash());
    EXPECT_EQ(Value::of_text("red").hash(), Value::of_text("red").hash());
    EXPECT_NE(Value::of_text("red").hash(), Value::of_text("green").hash());
    EXPECT_NE(Value::of_uint(7).hash(), Value::of_int(7).hash());
    Value left = Value::of_text("a text of 15 by");
    left = Value::of_uint(7);
    EXPECT_EQ(left.hash(), Value::of_uint(7).hash());
    const Value taken = std::move(left);
    EXPECT_EQ(left.hash(), Value().hash());
    EXPECT_EQ(taken.hash(), Value::of_uint(7).hash());
}

TEST(Value, NoFalseZeroOrEmptyValue_IsAbsent)
{
    const std::vector<Value> values{
        Value::present(),      Value::of_int(0),    Value::of_uint(0),  Value::of_enum(0),
        Value::of_bool(false), Value::of_ipv4({}),  Value::of_ipv6({}), Value::of_ipv4_prefix({}, 0),
        Value::of_text(""),    Value::of_octets("")};
    for (const Value& value : values) {
        EXPECT_TRUE(value) << static_cast<int>(value.kind());
        EXPECT_NE(value, Value()) << static_cast<int>(value.kind());
    }
}

TEST(Value, TextUpToFifteenBytes_LiesInPlace)
{
    const Value value = Value::of_text("123456789012345");
    EXPECT_EQ(value.kind(), Value::Kind::Text);
    EXPECT_EQ(value.bytes(), "123456789012345");
    EXPECT_EQ(value.block_bytes(), 0U);
    EXPECT_TRUE(value.is_text());
}

TEST(Value, TextOfSixteenBytes_LiesInABlock)
{
    const Value value = Value::of_text("1234567890123456");
    EXPECT_EQ(value.kind(), Value::Kind::LongText);
    EXPECT_EQ(value.bytes(), "1234567890123456");
    EXPECT_GE(value.block_bytes(), 16U);
    EXPECT_TRUE(value.is_text());
    EXPECT_FALSE(value.is_octets());
}

TEST(Value, OctetsWithZeros_KeepThemAll)
{
    const std::string few(15, '\0');
    const std::string many(16, '\0');
    EXPECT_EQ(Value::of_octets(few).kind(), Value::Kind::Octets);
    EXPECT_EQ(Value::of_octets(few).bytes(), few);
    EXPECT_EQ(Value::of_octets(many).kind(), Value::Kind::LongOctets);
    EXPECT_EQ(Value::of_octets(many).bytes(), many);
    EXPECT_TRUE(Value::of_octets(many).is_octets());
}

TEST(Value, CopiesOfALongText_ShareItsBytes)
{
    const Value first = Value::of_text("a text longer than fifteen bytes");
    const Value second = first;
    Value third;
    third = second;
    EXPECT_EQ(first.bytes().data(), second.bytes().data());
    EXPECT_EQ(first.bytes().data(), third.bytes().data());
}

TEST(Value, CopyOfALongText_OutlivesTheOriginal)
{
    Value copy;
    {
        const Value original = Value::of_text("a text longer than fifteen bytes");
        copy = original;
    }
    EXPECT_EQ(copy.bytes(), "a text longer than fifteen bytes");
}

TEST(Value, MovedFrom_IsAbsent)
{
    Value from = Value::of_text("a text longer than fifteen bytes");
    const Value to = std::move(from);
    EXPECT_TRUE(from.absent());  // NOLINT(bugprone-use-after-move): what a move leaves is the subject
    EXPECT_EQ(to.bytes(), "a text longer than fifteen bytes");
    from = Value::of_uint(3);
    EXPECT_EQ(from.as_uint(), 3U);
}

TEST(Value, AssignedToItself_StaysWhatItIs)
{
    Value value = Value::of_text("a text longer than fifteen bytes");
    const Value& same = value;
    value = same;
    EXPECT_EQ(value.bytes(), "a text longer than fifteen bytes");
}

// Each value of a rising row lies before every later one, and is equal only to itself.
void expect_rising(const std::vector<Value>& values)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (std::size_t j = 0; j < values.size(); ++j) {
            const int expected = (i > j ? 1 : 0) - (i < j ? 1 : 0);
            EXPECT_EQ(compare(values[i], values[j]), expected) << i << " and " << j;
            EXPECT_EQ(values[i] == values[j], i == j) << i << " and " << j;
            EXPECT_EQ(values[i] < values[j], i < j) << i << " and " << j;
        }
    }
}

TEST(ValueOrder, Numbers_GoByValue)
{
    expect_rising({Value::of_int(std::numeric_limits<int64_t>::min()), Value::of_int(-1), Value::of_int(0),
                   Value::of_int(256), Value::of_int(std::numeric_limits<int64_t>::max())});
    expect_rising({Value::of_uint(0), Value::of_uint(2), Value::of_uint(256), Value::of_uint(65536),
                   Value::of_uint(std::numeric_limits<uint64_t>::max())});
    expect_rising({Value::of_enum(-1), Value::of_enum(0), Value::of_enum(2), Value::of_enum(0x20000)});
    expect_rising({Value::of_bool(false), Value::of_bool(true)});
}

TEST(ValueOrder, Texts_GoByBytesWithAPrefixFirst)
{
    expect_rising({Value::of_text(""), Value::of_text("10"), Value::of_text("9"), Value::of_text("B"),
                   Value::of_text("a"), Value::of_text("aa"), Value::of_text("aaaaaaaaaaaaaaa"),
                   Value::of_text("aaaaaaaaaaaaaaaa"), Value::of_text("aaaaaaaaaaaaaaab"), Value::of_text("ab"),
                   Value::of_text("\xC3\xA4")});
}

TEST(ValueOrder, Octets_GoByUnsignedBytesWithAPrefixFirst)
{
    expect_rising({Value::of_octets(""), Value::of_octets(std::string("\x00", 1)), Value::of_octets("\x0a"),
                   Value::of_octets("\x0a\x01"), Value::of_octets("\x7f"),
                   Value::of_octets("\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f"),
                   Value::of_octets("\x80"), Value::of_octets("\xff")});
}

TEST(ValueOrder, Addresses_GoByOctets)
{
    expect_rising({Value::of_ipv4(ipv4("9.0.0.0")), Value::of_ipv4(ipv4("10.0.0.0")), Value::of_ipv4(ipv4("10.0.0.1")),
                   Value::of_ipv4(ipv4("192.0.2.1"))});
    expect_rising({stored_ipv6("::"), stored_ipv6("::1"), stored_ipv6("2001:db8::1"), stored_ipv6("fe80::1")});
    expect_rising({Value::of_ipv4_prefix(ipv4("10.0.0.0"), 8), Value::of_ipv4_prefix(ipv4("10.0.0.0"), 24),
                   Value::of_ipv4_prefix(ipv4("10.0.1.0"), 8)});
}

TEST(ValueOrder, MembersOfAUnion_GoByKindFirst)
{
    expect_rising({Value(), Value::of_ipv4(ipv4("255.255.255.255")), stored_ipv6("::")});
}

}  // namespace
