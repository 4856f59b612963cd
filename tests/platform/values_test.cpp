// Values of the program: printed, copied, given back; tags, and the texts of errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "addresses.h"
#include "capi_device.h"
#include "values/owned_values.h"

namespace {

using namespace capi_test;
using bgp_platform::values::live_owned_values;
using bgp_test::ipv4;
using bgp_test::ipv6;

// The text of a value that a setter macro makes: PRINTED(CONFD_SET_UINT8, &value, 255).
#define PRINTED(set, ...)      \
    [&] {                      \
        confd_value_t value;   \
        set(__VA_ARGS__);      \
        return printed(value); \
    }()

TEST(PrintedValue, Numbers_AreDecimal)
{
    EXPECT_EQ(PRINTED(CONFD_SET_INT8, &value, -128), "-128");
    EXPECT_EQ(PRINTED(CONFD_SET_INT16, &value, -32768), "-32768");
    EXPECT_EQ(PRINTED(CONFD_SET_INT32, &value, -2147483647), "-2147483647");
    EXPECT_EQ(PRINTED(CONFD_SET_INT64, &value, -9000000000000000000), "-9000000000000000000");
    EXPECT_EQ(PRINTED(CONFD_SET_UINT8, &value, 255), "255");
    EXPECT_EQ(PRINTED(CONFD_SET_UINT16, &value, 65535), "65535");
    EXPECT_EQ(PRINTED(CONFD_SET_UINT32, &value, 4294967295U), "4294967295");
    EXPECT_EQ(PRINTED(CONFD_SET_UINT64, &value, 18446744073709551615U), "18446744073709551615");
    EXPECT_EQ(PRINTED(CONFD_SET_DOUBLE, &value, 1.5), "1.500000");
}

TEST(PrintedValue, Enumeration_IsItsNumber)
{
    EXPECT_EQ(PRINTED(CONFD_SET_ENUM_VALUE, &value, 2), "enum<2>");
    EXPECT_EQ(PRINTED(CONFD_SET_ENUM_VALUE, &value, -1), "enum<-1>");
}

TEST(PrintedValue, Octets_AreARunOfHexDigits)
{
    const std::string_view bytes("\x0a\x00\xff\x1B", 4);
    EXPECT_EQ(PRINTED(CONFD_SET_BINARY, &value, bytes.data(), bytes.size()), "0a00ff1b");
    EXPECT_EQ(PRINTED(CONFD_SET_HEXSTR, &value, bytes.data(), bytes.size()), "0a00ff1b");
    EXPECT_EQ(PRINTED(CONFD_SET_BINARY, &value, bytes.data(), 0), "");
}

TEST(PrintedValue, Text_IsAsItIs)
{
    EXPECT_EQ(PRINTED(CONFD_SET_STR, &value, "a {b}"), "a {b}");
    EXPECT_EQ(PRINTED(CONFD_SET_CBUF, &value, "abcdef", 3), "abc");
}

TEST(PrintedValue, Addresses_AreInTheirUsualForm)
{
    EXPECT_EQ(PRINTED(CONFD_SET_IPV4, &value, ipv4("192.0.2.1")), "192.0.2.1");
    EXPECT_EQ(PRINTED(CONFD_SET_IPV6, &value, ipv6("2001:db8:0:0::1")), "2001:db8::1");
    const confd_ipv4_prefix network{ipv4("192.0.2.0"), 24};
    EXPECT_EQ(PRINTED(CONFD_SET_IPV4PREFIX, &value, network), "192.0.2.0/24");
    const confd_ipv6_prefix network6{ipv6("2001:db8::"), 32};
    EXPECT_EQ(PRINTED(CONFD_SET_IPV6PREFIX, &value, network6), "2001:db8::/32");
}

TEST(PrintedValue, OtherTypes_SayWhatTheyAre)
{
    EXPECT_EQ(PRINTED(CONFD_SET_BOOL, &value, 1), "true");
    EXPECT_EQ(PRINTED(CONFD_SET_BOOL, &value, 0), "false");
    EXPECT_EQ(PRINTED(CONFD_SET_NOEXISTS, &value), "no value");
    EXPECT_EQ(PRINTED(CONFD_SET_DEFAULT, &value), "value of type 42");
    confd_value_t entries[] = {u32(1), text_value("x")};
    EXPECT_EQ(PRINTED(CONFD_SET_LIST, &value, entries, 2), "[1 x]");
    EXPECT_EQ(PRINTED(CONFD_SET_LIST, &value, entries, 0), "[]");
}

TEST(PrintedValue, LongerThanItsBuffer_IsCutAndItsWholeLengthTold)
{
    char out[4] = "???";
    const confd_value_t number = u32(65010);
    EXPECT_EQ(confd_pp_value(out, sizeof out, &number), 5);
    EXPECT_STREQ(out, "650");
    EXPECT_EQ(confd_pp_value(out, 1, &number), 5);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(confd_pp_value(nullptr, 0, &number), 5);
    const confd_value_t with_nul = buffer(std::string_view("a\0bc", 4));
    char whole[8];
    EXPECT_EQ(confd_pp_value(whole, sizeof whole, &with_nul), 4);
    EXPECT_EQ(std::string_view(whole, 5), std::string_view("a\0bc\0", 5));
}

// A value of each type that owns memory, over memory of the caller.
std::vector<confd_value_t> owning_values(unsigned char* bytes, unsigned int size)
{
    std::vector<confd_value_t> values;
    for (const confd_vtype type : {C_BUF, C_BINARY, C_HEXSTR, C_QNAME, C_OBJECTREF, C_OID, C_BITBIG}) {
        confd_value_t value;
        CONFD_SET_BUF(&value, bytes, size);
        value.type = type;
        values.push_back(value);
    }
    return values;
}

TEST(CopiedValue, OfEachOwningType_HasMemoryOfItsOwnUntilGivenBack)
{
    unsigned char bytes[] = {'a', 0, 'b'};
    for (const confd_value_t& original : owning_values(bytes, sizeof bytes)) {
        const std::size_t before = live_owned_values();
        confd_value_t copy;
        ASSERT_EQ(confd_value_dup_to(&original, &copy), &copy);
        EXPECT_EQ(copy.type, original.type);
        ASSERT_EQ(copy.val.buf.size, sizeof bytes);
        EXPECT_NE(copy.val.buf.ptr, original.val.buf.ptr);
        EXPECT_EQ(std::memcmp(copy.val.buf.ptr, "a\0b\0", 4), 0) << "octets, and a NUL beyond them";
        EXPECT_EQ(live_owned_values(), before + 1);
        confd_free_dup_to_value(&copy);
        EXPECT_EQ(live_owned_values(), before);
    }
}

TEST(CopiedValue, FreeValue_GivesBackEachOwningType)
{
    unsigned char bytes[] = {1, 2};
    const std::size_t before = live_owned_values();
    for (const confd_value_t& original : owning_values(bytes, sizeof bytes)) {
        confd_value_t copy;
        ASSERT_NE(confd_value_dup_to(&original, &copy), nullptr);
        confd_free_value(&copy);
        EXPECT_EQ(live_owned_values(), before) << "type " << original.type;
        EXPECT_EQ(copy.val.buf.ptr, nullptr);
        confd_free_value(&copy);  // owns nothing any more
    }
}

TEST(CopiedValue, OfText_IsGivenBackByTheCallForCopiesOnly)
{
    const std::size_t before = live_owned_values();
    const confd_value_t original = text_value("hello");
    confd_value_t copy;
    ASSERT_NE(confd_value_dup_to(&original, &copy), nullptr);
    EXPECT_EQ(copy.type, C_STR);
    EXPECT_NE(CONFD_GET_STR(&copy), CONFD_GET_STR(&original));
    EXPECT_STREQ(CONFD_GET_STR(&copy), "hello");
    confd_free_value(&copy);
    EXPECT_STREQ(CONFD_GET_STR(&copy), "hello") << "not what that call frees";
    confd_free_dup_to_value(&copy);
    EXPECT_EQ(live_owned_values(), before);
}

TEST(CopiedValue, OfAList_IsDeep)
{
    const std::size_t before = live_owned_values();
    confd_value_t entries[] = {text_value("one"), buffer("two"), u32(3)};
    confd_value_t original;
    CONFD_SET_LIST(&original, entries, 3);
    confd_value_t copy;
    ASSERT_NE(confd_value_dup_to(&original, &copy), nullptr);
    EXPECT_EQ(live_owned_values(), before + 3) << "the array and two texts";
    EXPECT_NE(CONFD_GET_LIST(&copy), entries);
    EXPECT_EQ(printed(copy), "[one two 3]");
    confd_free_dup_to_value(&copy);
    EXPECT_EQ(live_owned_values(), before);
}

TEST(CopiedValue, OntoItself_TakesItsOwnMemory)
{
    char letters[] = "abc";
    confd_value_t value = buffer(letters);
    ASSERT_EQ(confd_value_dup_to(&value, &value), &value);
    letters[0] = 'X';
    EXPECT_EQ(printed(value), "abc");
    confd_free_dup_to_value(&value);
}

TEST(CopiedValue, OfTypesThatOwnNothing_IsTheValue)
{
    const std::size_t before = live_owned_values();
    for (const confd_value_t& original : {u32(7), enumeration(2), no_value()}) {
        confd_value_t copy;
        ASSERT_NE(confd_value_dup_to(&original, &copy), nullptr);
        EXPECT_EQ(printed(copy), printed(original));
        EXPECT_EQ(live_owned_values(), before);
        confd_free_value(&copy);
        confd_free_dup_to_value(&copy);
        EXPECT_EQ(printed(copy), printed(original));
    }
    confd_free_value(nullptr);
    confd_free_dup_to_value(nullptr);
}

TEST(CopiedValue, MemoryOfTheProgram_IsFreedToo)
{
    const std::size_t before = live_owned_values();
    confd_value_t value;
    CONFD_SET_BUF(&value, std::calloc(4, 1), 3);
    confd_free_value(&value);
    EXPECT_EQ(live_owned_values(), before);
}

TEST(PrintedValue, Tag_IsItsNodesNameWhereTheModulesHaveOne)
{
    confd_value_t tag;
    CONFD_SET_XMLTAG(&tag, 0x6553535E, 0);
    EXPECT_EQ(printed(tag), "tag<1699959646>") << "no device, no modules";
    const Device device(depot_options());
    EXPECT_EQ(printed(tag), "bgpRmEntIndex");
    CONFD_SET_XMLTAG(&tag, 17, 0);
    EXPECT_EQ(printed(tag), "tag<17>");
}

TEST(PrintedValue, Bits_AreAHexNumber)
{
    confd_value_t bits;
    CONFD_SET_BIT32(&bits, 0xA5U);
    EXPECT_EQ(printed(bits), "bits<a5>");
    CONFD_SET_BIT64(&bits, 0x1000000000ULL);
    EXPECT_EQ(printed(bits), "bits<1000000000>");
    CONFD_SET_BIT32(&bits, 0);
    EXPECT_EQ(printed(bits), "bits<0>");
    unsigned char many[] = {0xA5, 0x01, 0x00};  // the lowest bits first
    CONFD_SET_BUF(&bits, many, sizeof many);
    bits.type = C_BITBIG;
    EXPECT_EQ(printed(bits), "bits<0001a5>");
}

TEST(Tags, AreTheHashesOfNamesThatTheModulesHave)
{
    EXPECT_EQ(confd_str2hash("bgpRmEntIndex"), 0U) << "no device, no modules";
    const Device device(depot_options());
    EXPECT_EQ(confd_str2hash("foo"), 0U) << "no node is called that";
    EXPECT_EQ(confd_str2hash(""), 0U);
    EXPECT_EQ(confd_str2hash("bgpRmEntIndex"), 0x6553535EU);
    EXPECT_EQ(confd_str2hash("bgpRmEntLocalIdentifier"), 0x037C186DU);
    EXPECT_EQ(confd_str2hash("bgpPeerAfiSafiEntry"), 633450320U);
    EXPECT_EQ(confd_str2hash("http://tail-f.com/ns/mibs/DC-BGP-MIB"), 82011741U);
}

TEST(Tags, LeadBackToNamesThatTheModulesHave)
{
    EXPECT_EQ(confd_hash2str(0x6553535E), nullptr) << "no device, no modules";
    const Device device(depot_options());
    EXPECT_STREQ(confd_hash2str(0x6553535E), "bgpRmEntIndex");
    EXPECT_STREQ(confd_hash2str(82011741), "http://tail-f.com/ns/mibs/DC-BGP-MIB");
    EXPECT_STREQ(confd_hash2str(confd_str2hash("crate")), "crate");
    EXPECT_EQ(confd_hash2str(161968632), nullptr) << "no node is called foo";
}

TEST(ErrorTexts, EveryCodeHasOneOfItsOwn)
{
    std::vector<std::string> texts;
    for (const int code : {CONFD_ERR_NOEXISTS,      CONFD_ERR_ALREADY_EXISTS,
                           CONFD_ERR_ACCESS_DENIED, CONFD_ERR_NOT_WRITABLE,
                           CONFD_ERR_BADTYPE,       CONFD_ERR_NOTCREATABLE,
                           CONFD_ERR_NOTDELETABLE,  CONFD_ERR_BADPATH,
                           CONFD_ERR_LOCKED,        CONFD_ERR_INUSE,
                           CONFD_ERR_NOTSET,        CONFD_ERR_BADSTATE,
                           CONFD_ERR_INTERNAL,      CONFD_ERR_EXTERNAL,
                           CONFD_ERR_MALLOC,        CONFD_ERR_PROTOUSAGE,
                           CONFD_ERR_NOSESSION,     CONFD_ERR_OS,
                           CONFD_ERR_UNAVAILABLE,   CONFD_ERR_EOF,
                           CONFD_ERR_NOTMOVABLE,    CONFD_ERR_TIMEOUT,
                           CONFD_ERR_NOTRANS}) {
        const std::string text = confd_strerror(code);
        EXPECT_EQ(text.find("unknown"), std::string::npos) << code;
        EXPECT_EQ(std::count(texts.begin(), texts.end(), text), 0) << code << ": " << text;
        texts.push_back(text);
    }
    EXPECT_STREQ(confd_strerror(4711), "unknown error 4711");
}

TEST_F(CapiTest, LastError_StaysUntilTheNextFailure)
{
    open();
    confd_value_t value;
    ASSERT_EQ(cdb_get(cdb, &value, "/depot/label"), CONFD_ERR);
    ASSERT_EQ(cdb_exists(cdb, "/depot/label"), 0);
    EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
    EXPECT_STREQ(confd_lasterr(), "cdb_get: item does not exist: /depot/label");
    ASSERT_EQ(cdb_exists(cdb, "/depot/lable"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
    EXPECT_STREQ(confd_lasterr(), "cdb_exists: bad path: /depot/lable: there is no lable below /depot");
}

TEST_F(CapiTest, OwnedValues_AreCountedUntilTheyAreGivenBack)
{
    stored("<label>west</label><free>1</free><free>2</free>" +
           bay(1, "left", "<tag>a text that is longer than fifteen</tag>"));
    open();
    confd_value_t label;
    confd_value_t tags;
    confd_value_t number;
    ASSERT_EQ(cdb_get(cdb, &label, "/depot/label"), CONFD_OK);
    ASSERT_EQ(cdb_get(cdb, &tags, "/depot/bay{1 left}/tag"), CONFD_OK);
    ASSERT_EQ(cdb_get(cdb, &number, "/depot/bay{1 left}/number"), CONFD_OK);
    EXPECT_EQ(device.open_things().values, 3U) << "a text, an array and its text; a number owns nothing";
    confd_free_value(&tags);
    EXPECT_EQ(device.open_things().values, 1U);
    confd_free_value(&label);
    expect_nothing_open();
}

}  // namespace
