// Configuration files as they are read: what lands in which row, and the message of everything that is refused.
#include "xml/config_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "platform/refused_text.h"
#include "platform/schema_node.h"
#include "schema/schema.h"
#include "store/changes.h"
#include "store/configuration.h"

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::Schema;
using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::xml::LoadError;
using bgp_platform::xml::read_config_file;
using bgp_platform::xml::read_config_text;
using bgp_test::document;
using bgp_test::node;
using bgp_test::refusal;
using bgp_test::refusal_of_text;
using bgp_test::router;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

Configuration load(const std::string& elements, const std::shared_ptr<const Schema>& schema = Schema::builtin())
{
    Configuration configuration(schema);
    read_config_text(document(elements), "edge.xml", &configuration);
    return configuration;
}

// The entries of a list, each as "key: leaf=value leaf=value".
std::vector<std::string> rows(const Row& around, const Node& list)
{
    std::vector<std::string> rows;
    around.list(list.slot).for_each([&](const Row& entry) {
        std::string text = bgp_platform::store::key_text(entry) + ":";
        for (std::size_t slot = entry.record().keys; slot < entry.record().values.size(); ++slot) {
            const Node& leaf = *entry.record().values[slot];
            if (const auto& value = entry.value(static_cast<uint16_t>(slot)); !value.absent()) {
                text += " " + leaf.name + "=" + leaf.type->text(value);
            }
        }
        rows.push_back(text);
    });
    return rows;
}

std::vector<std::string> routers(const Configuration& configuration)
{
    return rows(configuration.root(), node(configuration.schema(), {"router", "bgp"}));
}

TEST(ConfigReader, Leaves_LandInTheRowsAroundThem)
{
    const Configuration configuration =
        load(router("<bgp><as-number>65010</as-number><as-size>fourOctet</as-size>"
                    "<bgp><cluster-id>192.0.2.1</cluster-id></bgp></bgp>"));
    EXPECT_THAT(routers(configuration), ElementsAre("65010: as-size=fourOctet cluster-id=192.0.2.1"));
}

TEST(ConfigReader, ListsInAnEntry_BelongToIt)
{
    const Configuration configuration = load(router(
        "<bgp><vrf><neighbor><address>2001:db8::1</address><remote-as>7</remote-as></neighbor>"
        "<name>red</name><neighbor><address>192.0.2.1</address></neighbor></vrf><as-number>1</as-number></bgp>"));
    const Node& bgp = node(configuration.schema(), {"router", "bgp"});
    const Row& entry = *configuration.root().list(bgp.slot).at(0);
    EXPECT_THAT(rows(entry, *bgp.child("vrf")), ElementsAre("red:"));
    const Row& vrf = *entry.list(bgp.child("vrf")->slot).at(0);
    EXPECT_THAT(rows(vrf, *bgp.child("vrf")->child("neighbor")), ElementsAre("192.0.2.1:", "2001:db8::1: remote-as=7"));
}

TEST(ConfigReader, EntriesOutOfOrder_AreSorted)
{
    const Configuration configuration =
        load(router("<bgp><as-number>10</as-number></bgp><bgp><as-number>9</as-number></bgp>"));
    EXPECT_THAT(routers(configuration), ElementsAre("9:", "10:"));
}

TEST(ConfigReader, LeafLists_AreEntriesOfOneValue)
{
    const Configuration configuration = load(
        "<bgp-internal xmlns=\"urn:bgp-update:yang:bgp-internal\"><bgp-vrf><vrf-idx>0</vrf-idx>"
        "<bgp-free-index>7</bgp-free-index><bgp-free-index>3</bgp-free-index></bgp-vrf></bgp-internal>");
    const Node& vrf = node(configuration.schema(), {"bgp-internal", "bgp-vrf"});
    EXPECT_THAT(rows(*configuration.root().list(vrf.slot).at(0), *vrf.child("bgp-free-index")),
                ElementsAre("3:", "7:"));
}

TEST(ConfigReader, TopElementTwice_AddsUp)
{
    const Configuration configuration =
        load(router("<bgp><as-number>1</as-number></bgp>") + router("<bgp><as-number>2</as-number></bgp>"));
    EXPECT_THAT(routers(configuration), ElementsAre("1:", "2:"));
}

TEST(ConfigReader, SecondFile_AddsUpToo)
{
    Configuration configuration = load(router("<bgp><as-number>1</as-number></bgp>"));
    read_config_text(document(router("<bgp><as-number>2</as-number></bgp>")), "more.xml", &configuration);
    EXPECT_THAT(routers(configuration), ElementsAre("1:", "2:"));
}

TEST(ConfigReader, EmptyConfiguration_IsRead)
{
    EXPECT_THAT(routers(load("")), ElementsAre());
    EXPECT_EQ(refusal_of_text("<config xmlns=\"http://tail-f.com/ns/config/1.0\"/>"), "not refused");
}

TEST(ConfigReader, WhiteSpaceAroundAValue_CountsInTextsOnly)
{
    const Configuration configuration = load(
        router("<bgp><as-number>\n 1\t</as-number><as-size> twoOctet </as-size><vrf><name> red </name></vrf></bgp>"));
    EXPECT_THAT(routers(configuration), ElementsAre("1: as-size=twoOctet"));
    const Node& bgp = node(configuration.schema(), {"router", "bgp"});
    EXPECT_THAT(rows(*configuration.root().list(bgp.slot).at(0), *bgp.child("vrf")), ElementsAre("\" red \":"));
}

TEST(ConfigReader, EscapesCdataAndComments_AreReadAsText)
{
    const Configuration configuration = load(
        "<prefix-list xmlns=\"urn:bgp-update:yang:prefix-list\"><name>a&lt;b&amp;<![CDATA[<c>]]>&#x41;<!-- no "
        "-->z</name>"
        "</prefix-list>");
    EXPECT_THAT(rows(configuration.root(), node(configuration.schema(), {"prefix-list"})), ElementsAre("a<b&<c>Az:"));
}

TEST(ConfigReader, PrefixedElements_AreKnownByTheirNamespace)
{
    const Configuration configuration =
        load("<r:router xmlns:r=\"urn:bgp-update:yang:router\"><r:bgp><r:as-number>1</r:as-number></r:bgp></r:router>");
    EXPECT_THAT(routers(configuration), ElementsAre("1:"));
}

TEST(ConfigReader, PresenceContainerAndEmptyLeaf_AreSet)
{
    const auto schema =
        Schema::from_modules({{"small",
                               "module small { namespace \"urn:small\"; prefix s; container c { presence "
                               "here; leaf x { type empty; } } }"}});
    const Configuration configuration = load("<c xmlns=\"urn:small\"><x/></c>", schema);
    EXPECT_TRUE(configuration.root().value(node(*schema, {"c"}).slot));
    EXPECT_TRUE(configuration.root().value(node(*schema, {"c", "x"}).slot));
}

TEST(ConfigReader, LongTextInPieces_IsWhole)
{
    const std::string name(100000, 'x');
    const Configuration configuration =
        load("<prefix-list xmlns=\"urn:bgp-update:yang:prefix-list\"><name>" + name + "</name></prefix-list>");
    EXPECT_THAT(rows(configuration.root(), node(configuration.schema(), {"prefix-list"})), ElementsAre(name + ":"));
}

TEST(ConfigReaderRefusals, ValueOfAnotherType_IsToldWithItsPathAndLine)
{
    EXPECT_EQ(refusal("<bgp>\n<as-number>65010</as-number>\n<as-size>threeOctet</as-size></bgp>"),
              "edge.xml:3: /router/bgp{65010}/as-size: \"threeOctet\" is not one of twoOctet, fourOctet");
    EXPECT_EQ(refusal("<bgp><as-number>-1</as-number></bgp>"),
              "edge.xml:1: /router/bgp/as-number: \"-1\" is not a number from 0 to 4294967295");
    EXPECT_EQ(refusal("<bgp><as-number/></bgp>"),
              "edge.xml:1: /router/bgp/as-number: \"\" is not a number from 0 to 4294967295");
}

TEST(ConfigReaderRefusals, LongOrWildValue_IsQuotedWithinBounds)
{
    const std::string message = refusal("<bgp><as-number>" + std::string(5000, '1') + "</as-number></bgp>");
    EXPECT_THAT(message, StartsWith("edge.xml:1: /router/bgp/as-number: \"" + std::string(200, '1') + "\"... is not"));
    EXPECT_THAT(refusal("<bgp><as-number>1\n2&#x7f;</as-number></bgp>"), HasSubstr("\"1\\n2\\x7f\" is not"));
}

TEST(ConfigReaderRefusals, LineBeyondSixteenBits_IsRight)
{
    EXPECT_THAT(refusal(std::string(70000, '\n') + "<bgp><as-number>x</as-number></bgp>"),
                StartsWith("edge.xml:70001: "));
    EXPECT_THAT(refusal(std::string(70000, '\n') + "<nope/>"), StartsWith("edge.xml:70001: "));
    EXPECT_THAT(refusal(std::string(70000, '\n') + "stray\n\n"), StartsWith("edge.xml:70001: "));
    EXPECT_THAT(refusal(std::string(70000, '\n') + "</bgp>"), StartsWith("edge.xml:70001: "));
}

TEST(ConfigReaderRefusals, UnknownElement_IsNamed)
{
    EXPECT_EQ(refusal("<bgp><as-number>1</as-number>\n<colour>red</colour></bgp>"),
              "edge.xml:2: /router/bgp{1}: element <colour> is not in the data model");
    EXPECT_EQ(refusal_of_text(document("<nothing xmlns=\"urn:bgp-update:yang:router\"/>")),
              "edge.xml:1: /: element <nothing> is not in the data model");
}

TEST(ConfigReaderRefusals, KnownElementOfAnotherNamespace_IsToldWhich)
{
    EXPECT_EQ(refusal_of_text(document("<router/>")),
              "edge.xml:1: /: element <router> has the namespace \"http://tail-f.com/ns/config/1.0\" instead of "
              "\"urn:bgp-update:yang:router\"");
    EXPECT_EQ(
        refusal("<bgp xmlns=\"urn:other\"/>"),
        "edge.xml:1: /router: element <bgp> has the namespace \"urn:other\" instead of \"urn:bgp-update:yang:router\"");
    EXPECT_EQ(refusal("<bgp xmlns=\"\"/>"),
              "edge.xml:1: /router: element <bgp> has no namespace instead of \"urn:bgp-update:yang:router\"");
    EXPECT_THAT(refusal("<bgp><as-number>1</as-number></bgp><bgp xmlns=\"http://tail-f.com/ns/mibs/DC-BGP-MIB\"/>"),
                HasSubstr("instead of"));
}

TEST(ConfigReaderRefusals, EntryWithoutAKey_NamesTheKey)
{
    EXPECT_EQ(refusal("\n<bgp>\n<as-size>twoOctet</as-size></bgp>"),
              "edge.xml:2: /router/bgp: an entry without its key as-number");
    EXPECT_EQ(
        refusal("<bgp><as-number>1</as-number><vrf><name>red</name><address-family><afi>ipv4</afi></address-family>"
                "</vrf></bgp>"),
        "edge.xml:1: /router/bgp{1}/vrf{red}/address-family: an entry without its key safi");
}

TEST(ConfigReaderRefusals, LeafOrEntryTwice_IsToldWithItsLineAndKeys)
{
    EXPECT_EQ(refusal("<bgp><as-number>1</as-number><as-size>twoOctet</as-size>\n<as-size>twoOctet</as-size></bgp>"),
              "edge.xml:2: /router/bgp{1}/as-size: the leaf stands here twice");
    EXPECT_EQ(refusal("<bgp><as-number>1</as-number></bgp>\n<bgp>\n<as-number>1</as-number></bgp>"),
              "edge.xml:2: /router/bgp{1}: the entry stands here twice");
    EXPECT_EQ(refusal_of_text(document("<bgp-internal xmlns=\"urn:bgp-update:yang:bgp-internal\"><bgp-vrf>"
                                       "<vrf-idx>0</vrf-idx><bgp-free-index>7</bgp-free-index>"
                                       "<bgp-free-index> 7</bgp-free-index></bgp-vrf></bgp-internal>")),
              "edge.xml:1: /bgp-internal/bgp-vrf{0}/bgp-free-index: the value \"7\" stands here twice");
}

TEST(ConfigReaderRefusals, TextBetweenElements_IsQuotedWithItsLine)
{
    EXPECT_EQ(refusal("\n\nstray\n\n<bgp><as-number>1</as-number></bgp>"),
              "edge.xml:3: /router: text \"stray\" stands where elements belong");
    EXPECT_EQ(refusal_of_text(document("stray")), "edge.xml:1: /: text \"stray\" stands where elements belong");
}

TEST(ConfigReaderRefusals, ElementInALeaf_IsNamed)
{
    EXPECT_EQ(refusal("<bgp><as-number>1<b/></as-number></bgp>"),
              "edge.xml:1: /router/bgp/as-number: element <b> stands in a leaf");
}

TEST(ConfigReaderRefusals, Attributes_AreNamed)
{
    EXPECT_EQ(refusal("<bgp operation=\"delete\"/>"),
              "edge.xml:1: /router/bgp: the attribute operation is not supported; only xmlns is");
    EXPECT_EQ(refusal("<bgp xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\" nc:operation=\"delete\"/>"),
              "edge.xml:1: /router/bgp: the attribute nc:operation is not supported; only xmlns is");
    EXPECT_EQ(refusal_of_text("<config xmlns=\"http://tail-f.com/ns/config/1.0\" version=\"1\"/>"),
              "edge.xml:1: /: the attribute version is not supported; only xmlns is");
}

TEST(ConfigReaderRefusals, StateData_IsRefused)
{
    const auto schema = Schema::from_modules({{"small",
                                               "module small { namespace \"urn:small\"; prefix s; container c { leaf x "
                                               "{ config false; type string; } } }"}});
    EXPECT_EQ(refusal_of_text(document("<c xmlns=\"urn:small\"><x>1</x></c>"), schema),
              "edge.xml:1: /c: element <x> is state, not configuration");
}

TEST(ConfigReaderRefusals, DoctypeAndEntities_AreRefused)
{
    EXPECT_EQ(refusal_of_text("<!DOCTYPE config [<!ENTITY a \"1\">]>\n" + document("")),
              "edge.xml:1: a DOCTYPE is not allowed");
    EXPECT_EQ(refusal_of_text("<!DOCTYPE config SYSTEM \"file:///etc/hostname\">" + document("")),
              "edge.xml:1: a DOCTYPE is not allowed");
    EXPECT_EQ(refusal("<bgp><as-number>&a;</as-number></bgp>"),
              "edge.xml:1: /router/bgp/as-number: not well-formed: Entity 'a' not defined");
}

TEST(ConfigReaderRefusals, BrokenXml_IsToldInTheParsersWords)
{
    EXPECT_THAT(refusal("\n<bgp></vrf>"),
                StartsWith("edge.xml:2: /router/bgp: not well-formed: Opening and ending tag mismatch: bgp"));
    EXPECT_THAT(refusal_of_text(document(router("")).substr(0, 70)), StartsWith("edge.xml:1: /: not well-formed: "));
    EXPECT_THAT(refusal_of_text(document("") + "<more/>"), StartsWith("edge.xml:1: not well-formed: Extra content"));
    EXPECT_THAT(refusal("<x:bgp/>"), EndsWith("/router: not well-formed: Namespace prefix x on bgp is not defined"));
    EXPECT_THAT(refusal("<bgp><as-number>\x01</as-number></bgp>"),
                StartsWith("edge.xml:1: /router/bgp/as-number: not well-formed: "));
    EXPECT_THAT(refusal("<bgp><as-number>\xff</as-number></bgp>"),
                StartsWith("edge.xml:1: /router/bgp/as-number: not well-formed: "));
}

// The parser stops reading at such octets: behind the document's end, too, they must not pass for its end.
TEST(ConfigReaderRefusals, OctetsThatAreNotInTheStatedEncoding_AreRefusedAndNotPrinted)
{
    std::string utf16 = "\xFF\xFE";
    for (const char letter : "<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + document("")) {
        utf16.append({letter, '\0'});
    }
    EXPECT_EQ(refusal_of_text(utf16), "not refused");
    testing::internal::CaptureStderr();
    EXPECT_THAT(refusal_of_text(utf16 + std::string("\x00\xD8\x05\x00", 4)),
                StartsWith("edge.xml:1: not well-formed: input conversion failed"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

class ConfigReaderFiles : public testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directories(folder_); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string refusal_of_file(const std::string& path)
    {
        try {
            read_config_file(path, &configuration_);
        } catch (const LoadError& error) {
            return error.what();
        }
        return "not refused";
    }

    const std::filesystem::path folder_ =
        std::filesystem::path(testing::TempDir()) / ("config_reader_test." + std::to_string(getpid()));
    Configuration configuration_{Schema::builtin()};
};

TEST_F(ConfigReaderFiles, FileThatCannotBeRead_IsToldInTheSystemsWords)
{
    const std::string missing = (folder_ / "missing.xml").string();
    EXPECT_EQ(refusal_of_file(missing), missing + ": No such file or directory");
    EXPECT_EQ(refusal_of_file(folder_.string()), folder_.string() + ": this is a folder; name a file");
}

TEST_F(ConfigReaderFiles, Progress_EndsWithTheWholeFile)
{
    std::string entries;
    for (int i = 0; i < 60000; ++i) {
        entries += "<bgp><as-number>" + std::to_string(i) + "</as-number></bgp>\n";
    }
    const std::string path = (folder_ / "large.xml").string();
    std::ofstream(path) << document(router(entries));
    std::vector<std::size_t> reported;
    const std::size_t size = std::filesystem::file_size(path);
    read_config_file(path, &configuration_, [&](std::size_t bytes, std::size_t total) {
        EXPECT_EQ(total, size);
        reported.push_back(bytes);
    });
    EXPECT_THAT(routers(configuration_), testing::SizeIs(60000));
    ASSERT_GE(reported.size(), 2U);
    EXPECT_LT(reported.front(), size);
    EXPECT_EQ(reported.back(), size);
}

TEST_F(ConfigReaderFiles, ErrorOfTheProgressFunction_ReachesTheCaller)
{
    const std::string path = (folder_ / "small.xml").string();
    std::ofstream(path) << document("");
    EXPECT_THROW(read_config_file(path, &configuration_, [](std::size_t, std::size_t) { throw std::bad_alloc(); }),
                 std::bad_alloc);
}

TEST_F(ConfigReaderFiles, Examples_AreReadWhole)
{
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(BGP_SOURCE_DIR "/examples")) {
        if (entry.path().extension() == ".xml") {
            Configuration configuration(Schema::builtin());
            EXPECT_NO_THROW(read_config_file(entry.path().string(), &configuration)) << entry.path();
            ++files;
        }
    }
    EXPECT_GT(files, 0U);
}

}  // namespace
