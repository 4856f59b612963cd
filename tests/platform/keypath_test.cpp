// Keypaths: templates and their arguments as places of the tree, as text, and the errors of both.
#include <gtest/gtest.h>

#include <cstdarg>
#include <random>
#include <string>

#include "capi_device.h"
#include "store/changes.h"

namespace {

using namespace capi_test;
using bgp_platform::capi::keypath_text;
using bgp_platform::capi::KeypathCache;
using bgp_platform::capi::PathError;
using bgp_platform::schema::Module;
using bgp_platform::store::Path;

class Keypath : public CapiTest {
protected:
    // What a template means, as text: "<the place>", or "<code>: <why>".
    std::string place(const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        Path path;
        const PathError error = cache.resolve(format, arguments, name_space, &path);
        va_end(arguments);
        return error ? confd_strerror(error.code) + (": " + error.detail) : keypath_text(path);
    }

    KeypathCache cache{*depot_schema()};
    const Module* name_space = nullptr;
    confd_value_t three = u32(3);
    confd_value_t right = enumeration(2);
};

TEST_F(Keypath, Names_LeadToTheNode)
{
    EXPECT_EQ(place("/depot/label"), "/depot/label");
    EXPECT_EQ(place("/depot"), "/depot");
}

TEST_F(Keypath, EachConversion_MakesAKey)
{
    EXPECT_EQ(place("/depot/bay{%u left}", 4000000000U), "/depot/bay{4000000000 left}");
    EXPECT_EQ(place("/depot/bay{%d left}", 7), "/depot/bay{7 left}");
    EXPECT_EQ(place("/depot/bay{%hu left}", static_cast<unsigned short>(65535)), "/depot/bay{65535 left}");
    EXPECT_EQ(place("/depot/bay{3 %s}/note", "right"), "/depot/bay{3 right}/note");
    EXPECT_EQ(place("/depot/bay{%x %x}", &three, &right), "/depot/bay{3 right}");
    EXPECT_EQ(place("/prefix-list-internal/idx-to-name{%d}", -5), "/prefix-list-internal/idx-to-name{-5}");
}

TEST_F(Keypath, KeyTuple_FillsSeveralKeysAndMixesWithOthers)
{
    const confd_value_t both[] = {three, right};
    EXPECT_EQ(place("/depot/bay{%*x}/door/width", 2, both), "/depot/bay{3 right}/door/width");
    EXPECT_EQ(place("/depot/bay{%*x left}", 1, both), "/depot/bay{3 left}");
    EXPECT_EQ(place("/depot/bay{%*x %s}/crate{%u}", 1, both, "left", 9U), "/depot/bay{3 left}/crate{9}");
}

TEST_F(Keypath, BlanksNextToBraces_AreNoKeys)
{
    EXPECT_EQ(place("/depot/bay{ %x %x }", &three, &right), "/depot/bay{3 right}");
    EXPECT_EQ(place("/depot/bay{  3   left }/note"), "/depot/bay{3 left}/note");
}

TEST_F(Keypath, SlashBeforeTheBrace_StandsForNothing)
{
    EXPECT_EQ(place("/prefix-list/{%s}", "north"), "/prefix-list{north}");
    EXPECT_EQ(place("/prefix-list/{%s}/seq/{%u}/ge", "north", 5U), "/prefix-list{north}/seq{5}/ge");
}

TEST_F(Keypath, QuotedText_IsOneKey)
{
    EXPECT_EQ(place("/depot/shelf{\"a b\"}"), "/depot/shelf{\"a b\"}");
    EXPECT_EQ(place("/depot/shelf{\"a \\\"}\\\\ b\"}/depth"), "/depot/shelf{\"a \\\"}\\\\ b\"}/depth");
    EXPECT_EQ(place("/depot/shelf{\"\"}"), "/depot/shelf{\"\"}");
    EXPECT_EQ(place("/depot/shelf{\"plain\"}"), "/depot/shelf{plain}");
}

TEST_F(Keypath, TextArgument_IsTakenWholeAndUnquoted)
{
    EXPECT_EQ(place("/depot/shelf{%s}", "a b} \"c\""), "/depot/shelf{\"a b} \\\"c\\\"\"}");
    EXPECT_EQ(place("/depot/shelf{%s}", ""), "/depot/shelf{\"\"}");
    EXPECT_EQ(place("/depot/shelf{%s}", "100%d"), "/depot/shelf{100%d}");
    const confd_value_t name = buffer("x{y");
    EXPECT_EQ(place("/depot/shelf{%x}", &name), "/depot/shelf{\"x{y\"}");
}

TEST_F(Keypath, TextOutsideBraces_IsAPathOrAName)
{
    const confd_value_t both[] = {three, right};
    EXPECT_EQ(place("%s{%*x}", "/depot/bay", 2, both), "/depot/bay{3 right}");
    EXPECT_EQ(place("%s{%x %x}/note", "/depot/bay", &three, &right), "/depot/bay{3 right}/note");
    EXPECT_EQ(place("%s/status", "/depot/bay{3 left}"), "/depot/bay{3 left}/status");
    EXPECT_EQ(place("/depot/bay{3 left}/%s", "status"), "/depot/bay{3 left}/status");
    EXPECT_EQ(place("/depot/%s/width", "bay{3 left}/door"), "/depot/bay{3 left}/door/width");
    EXPECT_EQ(place("%s", "/depot/shelf{\"50% off\"}"), "/depot/shelf{\"50% off\"}");
}

TEST_F(Keypath, PathAsText_MeansTheSameBesideOthersOfItsTable)
{
    EXPECT_EQ(place("%s", "/depot/bay{3 left}"), "/depot/bay{3 left}");
    EXPECT_EQ(place("%s/note", "/depot/bay{4 right}"), "/depot/bay{4 right}/note");
    EXPECT_EQ(place("%s", "/depot/bay"), "/depot/bay");
    EXPECT_EQ(place("%s", "/depot/bay[2]"), "/depot/bay[2]");
    EXPECT_EQ(place("%s", "/depot/bay{3 left}/crate{9}"), "/depot/bay{3 left}/crate{9}");
    EXPECT_EQ(place("%s", "/prefix-list/{north}/seq/{5}"), "/prefix-list{north}/seq{5}");
}

TEST_F(Keypath, PathAsTextWithoutAnOuterKey_IsBadPath)
{
    constexpr char no_key[] = "bad path: no key for the list bay";
    EXPECT_EQ(place("%s", "/depot/bay/crate{9}"), no_key);
    EXPECT_EQ(place("%s", "/depot/bay/crate"), no_key);
    EXPECT_EQ(place("/depot%s", "/bay/crate{9}"), no_key);
}

TEST_F(Keypath, MalformedPathAsText_IsToldBeforeWhatItNames)
{
    EXPECT_EQ(place("%s", "/depot/bay{3 nowhere}/nothing{"), "bad path: a brace is not closed");
    EXPECT_EQ(place("%s", "/nothing/depot["), "bad path: a position is a number in square brackets");
    EXPECT_EQ(place("%s", "/depot/bay{3 left}//"), "bad path: a slash without a name behind it");
}

TEST_F(Keypath, Prefix_ChoosesTheModuleForItsElementAlone)
{
    EXPECT_EQ(place("/dp:depot/label"), "/depot/label");
    EXPECT_EQ(place("/depot:depot/dp:label"), "/depot/label") << "the module's name serves as its prefix";
    EXPECT_EQ(place("/annex:shared/from-annex"), "/shared/from-annex");
    EXPECT_EQ(place("/DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable"), "/DC-RTM-MIB/rtmEntityTable");
    EXPECT_EQ(place("/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{%s}/%s", "red", "vrf-idx"),
              "/internal/vrf-config/stringTOindex{red}/vrf-idx");
    EXPECT_EQ(place("/dp:depot/annex:label"), "bad path: there is no label below /depot");
    EXPECT_EQ(place("/nowhere:depot"), "bad path: there is no depot below the root");
}

TEST_F(Keypath, NameThatTwoModulesHave_NeedsPrefixOrNamespace)
{
    EXPECT_EQ(place("/shared/from-annex"), "bad path: more than one module has a shared below the root");
    name_space = depot_schema()->module_by_uri("urn:test:annex");
    EXPECT_EQ(place("/shared/from-annex"), "/shared/from-annex");
    name_space = depot_schema()->module_by_uri("urn:test:depot");
    EXPECT_EQ(place("/shared/from-depot"), "/shared/from-depot") << "the same template under another namespace";
    EXPECT_EQ(place("/shared/from-annex"), "bad path: there is no from-annex below /shared");
    EXPECT_EQ(place("/router"), "/router") << "only one module has it";
}

TEST_F(Keypath, LeafListEntry_IsAddressedByItsValue)
{
    EXPECT_EQ(place("/depot/free{%hu}", static_cast<unsigned short>(7)), "/depot/free{7}");
    EXPECT_EQ(place("/depot/bay{1 left}/tag{%s}", "two words"), "/depot/bay{1 left}/tag{\"two words\"}");
    EXPECT_EQ(place("/bgp-internal/bgp-vrf{1}/bgp-free-index{7}"), "/bgp-internal/bgp-vrf{1}/bgp-free-index{7}");
}

TEST_F(Keypath, Position_PicksTheEntry)
{
    EXPECT_EQ(place("/depot/bay[%d]/note", 2), "/depot/bay[2]/note");
    EXPECT_EQ(place("/depot/bay[%u]", 3U), "/depot/bay[3]");
    EXPECT_EQ(place("/depot/bay[0]/crate[%d]/id", 1), "/depot/bay[0]/crate[1]/id");
    EXPECT_EQ(place("/depot/bay[%d]", -1), "bad path: not a position: -1");
}

TEST_F(Keypath, Position_IsTakenByCdbAlone)
{
    stored(bay(1, "left", "<note>n</note>"));
    open();
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay[%d]/note", 0), 1);
    confd_value_t value = text_value("x");
    const auto refused = [](int result, const char* function, const char* path) {
        return fails(result, CONFD_ERR_BADPATH, function, std::string(path) + ": a position, which CDB alone takes");
    };
    EXPECT_TRUE(refused(maapi_exists(maapi, th, "/depot/bay[%d]/note", 0), "maapi_exists", "/depot/bay[0]/note"));
    EXPECT_TRUE(refused(maapi_get_elem(maapi, th, &value, "/depot/bay[0]/crate{1}/id"), "maapi_get_elem",
                        "/depot/bay[0]/crate{1}/id"));
    EXPECT_TRUE(
        refused(maapi_set_elem(maapi, th, &value, "/depot/bay[0]/note"), "maapi_set_elem", "/depot/bay[0]/note"));
    EXPECT_TRUE(refused(maapi_delete(maapi, th, "%s", "/depot/bay[7]"), "maapi_delete", "/depot/bay[7]"));
}

TEST_F(Keypath, KeyOfAnotherType_IsBadType)
{
    const confd_value_t unknown = enumeration(3);
    EXPECT_EQ(place("/depot/bay{%x left}", &right), "bad type: key number is no uint32");
    EXPECT_EQ(place("/depot/bay{1 %x}", &unknown), "bad type: key side is no enumeration");
    EXPECT_EQ(place("/depot/bay{-1 left}"), "bad type: key number: \"-1\" is not a number from 0 to 4294967295");
    EXPECT_EQ(place("/depot/bay{1 %s}", "middle"), "bad type: key side: \"middle\" is not one of left, right");
    EXPECT_EQ(place("/depot/free{%u}", 65536U), "bad type: key free: \"65536\" is not a number from 0 to 65535");
}

TEST_F(Keypath, WrongCountOfKeys_IsBadPath)
{
    const confd_value_t many[] = {three, right, three};
    EXPECT_EQ(place("/depot/bay{1}"), "bad path: the list bay has 2 keys, not 1");
    EXPECT_EQ(place("/depot/bay{}"), "bad path: the list bay has 2 keys, not 0");
    EXPECT_EQ(place("/depot/bay{1 left 2}"), "bad path: the list bay has only 2 keys");
    EXPECT_EQ(place("/depot/bay{%*x}", 3, many), "bad path: the list bay has only 2 keys");
    EXPECT_EQ(place("/depot/bay/note"), "bad path: no key for the list bay");
    EXPECT_EQ(place("/depot/door{1}"), "bad path: there is no door below /depot");
    EXPECT_EQ(place("/depot{1}"), "bad path: a key where no list is");
    EXPECT_EQ(place("/depot/bay{1 left}{2 right}"), "bad path: a key where no list is");
}

TEST_F(Keypath, MalformedTemplate_IsBadPath)
{
    EXPECT_EQ(place("depot"), "bad path: a keypath begins with a slash");
    EXPECT_EQ(place(""), "bad path: an empty path");
    EXPECT_EQ(place(nullptr), "bad path: an empty path");
    EXPECT_EQ(place("%s", ""), "bad path: an empty path");
    EXPECT_EQ(place("/"), "bad path: a slash without a name behind it");
    EXPECT_EQ(place("/depot//label"), "bad path: a slash without a name behind it");
    EXPECT_EQ(place("/depot/shelf{a"), "bad path: a brace is not closed");
    EXPECT_EQ(place("/depot/shelf{\"a}"), "bad path: a quote is not closed");
    EXPECT_EQ(place("/depot/shelf{\"%s\"}", "a"),
              "bad path: a conversion between quotes: a text key is quoted by itself");
    EXPECT_EQ(place("/depot/shelf{x%d}", 1), "bad path: a key is made of two pieces");
    EXPECT_EQ(place("/depot/bay{%ld left}", 1L), "bad path: a conversion that keypaths do not have: %ld");
    EXPECT_EQ(place("/depot/bay[x]"), "bad path: a position is a number in square brackets");
    EXPECT_EQ(place("/depot/bay[%s]", "1"), "bad path: a position is a number in square brackets");
    EXPECT_EQ(place("/depot/bay[%x20]", &three), "bad path: a position is a number in square brackets");
    EXPECT_EQ(place("/depot/bay[%d0]", 2), "bad path: a position is a number in square brackets");
    EXPECT_EQ(place("/depot/label!"), "bad path: unexpected '!'");
    EXPECT_EQ(place("%s", static_cast<const char*>(nullptr)), "bad path: no text for a %s");
    EXPECT_EQ(place("/depot/lab%s", "el"), "bad path: there is no lab below /depot");
}

TEST_F(Keypath, FailedCall_NamesThePathAsItWasMeant)
{
    open();
    confd_value_t value;
    EXPECT_TRUE(fails(cdb_get(cdb, &value, "/depot/bay{%u %s}/nothing", 1U, "left"), CONFD_ERR_BADPATH, "cdb_get",
                      "/depot/bay{1 left}/nothing: there is no nothing below /depot/bay"));
    EXPECT_TRUE(fails(maapi_create(maapi, th, "/depot/bay{%x %x}", &right, &right), CONFD_ERR_BADTYPE, "maapi_create",
                      "/depot/bay{enum<2> right}: key number is no uint32"));
}

TEST_F(Keypath, MoreTemplatesThanAreKept_StillResolve)
{
    for (int i = 0; i < 10000; ++i) {
        const std::string built = "/depot/bay{" + std::to_string(i) + " left}";
        ASSERT_EQ(place(built.c_str()), built);
    }
}

// Formatting.

template <typename... Arguments>
std::string formatted(const char* format, Arguments... arguments)
{
    char out[512];
    const int length = confd_format_keypath(out, sizeof out, format, arguments...);
    EXPECT_EQ(static_cast<std::size_t>(length), std::string(out).size());
    return out;
}

TEST_F(Keypath, FormattedKeys_PrintAsTheirTypesDo)
{
    const confd_value_t address = octets(std::string_view("\x0a\x00\x00\x01", 4));
    EXPECT_EQ(formatted("/depot/bay{%x %x}/note", &three, &right), "/depot/bay{3 right}/note");
    EXPECT_EQ(formatted("/depot/port{%x}/speed", &address), "/depot/port{0a:00:00:01}/speed");
    const confd_value_t peer[] = {u32(5), enumeration(1), address, u32(0), enumeration(1), address, u32(179), u32(0)};
    const std::string keys = "5 ipv4 0a:00:00:01 0 ipv4 0a:00:00:01 179 0";
    EXPECT_EQ(formatted("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{%*x}", 8, peer),
              "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{" + keys + "}");
    EXPECT_EQ(formatted("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{%*x ipv6 unicast}", 8, peer),
              "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{" + keys + " ipv6 unicast}");
    EXPECT_EQ(formatted("%s{%*x}", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", 8, peer),
              "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{" + keys + "}");
}

TEST_F(Keypath, FormattedKeysTheSchemaDoesNotKnow_PrintAsPlainValues)
{
    const confd_value_t address = octets(std::string_view("\x0a\x00\x00\x01", 4));
    EXPECT_EQ(formatted("bay{%x %x}", &three, &right), "bay{3 enum<2>}") << "a relative path";
    EXPECT_EQ(formatted("/depot/dock{%x}", &address), "/depot/dock{0a000001}") << "no such list";
    EXPECT_EQ(formatted("/annex:depot/bay{3 %x}", &right), "/annex:depot/bay{3 enum<2>}") << "of another module";
    EXPECT_EQ(formatted("/depot/bay{3 %x}", &three), "/depot/bay{3 3}") << "a value its key does not take";
    EXPECT_EQ(formatted("/depot/bay{3 left %x}", &right), "/depot/bay{3 left enum<2>}") << "a key too many";
}

TEST(KeypathWithoutADevice, FormattedKeys_PrintAsPlainValues)
{
    const confd_value_t side = enumeration(2);
    EXPECT_EQ(formatted("/depot/bay{%u %x}", 3U, &side), "/depot/bay{3 enum<2>}");
}

TEST_F(Keypath, FormattedOtherConversions_PrintAsPrintfDoes)
{
    EXPECT_EQ(formatted("/router/bgp{%u}/vrf{%s}", 65010U, "red"), "/router/bgp{65010}/vrf{red}");
    EXPECT_EQ(formatted("/depot/bay[%d]/x{%d %hu}", 4, -2, static_cast<unsigned short>(9)), "/depot/bay[4]/x{-2 9}");
    EXPECT_EQ(formatted("/depot/bay{ %x %x }", &three, &right), "/depot/bay{ 3 right }");
    EXPECT_EQ(formatted("/prefix-list/{%s}/seq{%u}", "a b", 1U), "/prefix-list/{\"a b\"}/seq{1}");
    EXPECT_EQ(formatted("/depot/shelf{\"a } \\\" b\"}/bay{%x %x}", &three, &right),
              "/depot/shelf{\"a } \\\" b\"}/bay{3 enum<2>}")
        << "a brace between quotes closes nothing";
}

// Only the start of a key opens a quote, and only a name is followed by an opening brace.
TEST_F(Keypath, FormattedKeyWithAQuoteOrABraceInIt_EndsWhereItIsReadToEnd)
{
    EXPECT_EQ(formatted("/depot/shelf{9\"}%s/depth", ""), "/depot/shelf{9\"}/depth");
    EXPECT_EQ(formatted("/depot/bay{3\" %x}", &right), "/depot/bay{3\" right}");
    EXPECT_EQ(formatted("/depot/bay{{ %x}", &right), "/depot/bay{{ right}");
    EXPECT_EQ(formatted("/depot/bay{%*x %x %x}", 0, &three, &three, &right), "/depot/bay{ 3 right}");
    EXPECT_EQ(place("%s", formatted("/depot/shelf{9\"}%s/depth", "").c_str()), "/depot/shelf{\"9\\\"\"}/depth");
}

TEST_F(Keypath, FormattedTextKey_IsQuotedWhereItMustBe)
{
    EXPECT_EQ(formatted("/depot/shelf{%s}", "a b"), "/depot/shelf{\"a b\"}");
    EXPECT_EQ(formatted("/depot/shelf{%s}", "{}"), "/depot/shelf{\"{}\"}");
    EXPECT_EQ(formatted("/depot/shelf{%s}", "say \"x\\y\""), "/depot/shelf{\"say \\\"x\\\\y\\\"\"}");
    const confd_value_t name = buffer("c d");
    EXPECT_EQ(formatted("/depot/shelf{%x}/depth", &name), "/depot/shelf{\"c d\"}/depth");
    EXPECT_EQ(formatted("shelf{%x}", &name), "shelf{\"c d\"}") << "without the schema too";
}

TEST_F(Keypath, FormattedPathLongerThanItsBuffer_IsCutAndItsWholeLengthTold)
{
    char small[8] = "xxxxxxx";
    EXPECT_EQ(confd_format_keypath(small, sizeof small, "/router/bgp{%u}", 65010U), 18);
    EXPECT_STREQ(small, "/router");
    EXPECT_EQ(confd_format_keypath(small, 1, "/router"), 7);
    EXPECT_STREQ(small, "");
    EXPECT_EQ(confd_format_keypath(nullptr, 0, "/router"), 7);
    EXPECT_EQ(confd_format_keypath(small, sizeof small, "/router"), 7);
    EXPECT_STREQ(small, "/router") << "one that just fits is whole";
    EXPECT_EQ(confd_format_keypath(small, sizeof small, ""), 0);
}

TEST_F(Keypath, FormattedPath_IsReadBackAsTheSamePlace)
{
    std::mt19937 random(20261121);  // the same paths every time
    const auto bytes = [&random](std::string_view letters) {
        std::string out(random() % 20, ' ');
        for (char& c : out) {
            c = letters.empty() ? static_cast<char>(random()) : letters[random() % letters.size()];
        }
        return out;
    };
    for (int i = 0; i < 2000; ++i) {
        const confd_value_t keys[] = {u32(static_cast<uint32_t>(random())),
                                      enumeration(1 + static_cast<int>(random() % 2))};
        const std::string name = bytes("aZ09 {}\"\\%[]/:\t\n\xc3\xa9");
        const std::string address = bytes({});
        const confd_value_t shelf = buffer(name);
        const confd_value_t port = octets(address);
        EXPECT_EQ(place("%s", formatted("/depot/bay{%*x}/note", 2, keys).c_str()),
                  place("/depot/bay{%*x}/note", 2, keys));
        EXPECT_EQ(place("%s", formatted("/depot/shelf{%x}", &shelf).c_str()), place("/depot/shelf{%x}", &shelf));
        EXPECT_EQ(place("%s", formatted("/depot/shelf{%s}", name.c_str()).c_str()),
                  place("/depot/shelf{%s}", name.c_str()));
        EXPECT_EQ(place("%s", formatted("/depot/port{%x}", &port).c_str()), place("/depot/port{%x}", &port));
    }
}

}  // namespace
