// Configurations as they are written: the document's form, what cannot be written, and that reading gives the same
// back.
#include "xml/config_writer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/schema_node.h"
#include "schema/schema.h"
#include "store/configuration.h"
#include "xml/config_reader.h"

namespace {

using bgp_platform::schema::BaseType;
using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Schema;
using bgp_platform::schema::Type;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::RowRef;
using bgp_platform::xml::config_text;
using bgp_platform::xml::read_config_text;
using bgp_platform::xml::write_config;
using bgp_platform::xml::WriteError;
using bgp_test::node;
using testing::HasSubstr;

constexpr char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n";

Row& add_entry(Row& around, const Node& list, std::vector<Value> keys)
{
    RowRef entry(*list.entry);
    Row& row = entry.edit();
    for (std::size_t slot = 0; slot < keys.size(); ++slot) {
        row.value(static_cast<uint16_t>(slot)) = keys[slot];
    }
    EXPECT_TRUE(around.list(list.slot).insert(std::move(entry)));
    return *around.list(list.slot).edit(keys.data(), keys.size());
}

// A configuration with one prefix list of that name.
Configuration prefix_list(const std::string& name)
{
    Configuration configuration(Schema::builtin());
    add_entry(configuration.edit_root(), node(configuration.schema(), {"prefix-list"}), {Value::of_text(name)});
    return configuration;
}

TEST(ConfigWriter, Document_IsIndentedWithKeysFirstAndNamespacesOnTop)
{
    Configuration configuration(Schema::builtin());
    const Node& bgp = node(configuration.schema(), {"router", "bgp"});
    Row& router = add_entry(configuration.edit_root(), bgp, {Value::of_uint(65010)});
    router.value(bgp.child("as-size")->slot) = Value::of_enum(2);
    router.value(bgp.child("bgp")->child("default-local-preference")->slot) = Value::of_uint(100);
    add_entry(router, *bgp.child("vrf"), {Value::of_text("red")});
    EXPECT_EQ(config_text(configuration), std::string(kHead) +
                                              "  <router xmlns=\"urn:bgp-update:yang:router\">\n"
                                              "    <bgp>\n"
                                              "      <as-number>65010</as-number>\n"
                                              "      <as-size>fourOctet</as-size>\n"
                                              "      <bgp>\n"
                                              "        <default-local-preference>100</default-local-preference>\n"
                                              "      </bgp>\n"
                                              "      <vrf>\n"
                                              "        <name>red</name>\n"
                                              "      </vrf>\n"
                                              "    </bgp>\n"
                                              "  </router>\n"
                                              "</config>\n");
}

TEST(ConfigWriter, EntriesOfATopList_EachCarryTheNamespace)
{
    Configuration configuration = prefix_list("b");
    add_entry(configuration.edit_root(), node(configuration.schema(), {"prefix-list"}), {Value::of_text("a")});
    EXPECT_EQ(config_text(configuration, false),
              "<prefix-list xmlns=\"urn:bgp-update:yang:prefix-list\">\n  <name>a</name>\n</prefix-list>\n"
              "<prefix-list xmlns=\"urn:bgp-update:yang:prefix-list\">\n  <name>b</name>\n</prefix-list>\n");
}

TEST(ConfigWriter, EmptyConfiguration_IsAnEmptyWrapper)
{
    EXPECT_EQ(config_text(Configuration(Schema::builtin())),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<config xmlns=\"http://tail-f.com/ns/config/1.0\"/>\n");
    EXPECT_EQ(config_text(Configuration(Schema::builtin()), false), "");
}

TEST(ConfigWriter, LeafThatOnlyHasItsDefault_IsNotWritten)
{
    Configuration configuration(Schema::builtin());
    const Node& list =
        node(configuration.schema(), {"DC-AALL-MIB", "aallPreAccessListTable", "aallPreAccessListEntry"});
    Row& rule = add_entry(configuration.edit_root(), list, {Value::of_int(1), Value::of_uint(2)});
    rule.value(list.child("aallPreAccessListAddrPrefLe")->slot) = Value::of_int(0);
    const std::string text = config_text(configuration);
    EXPECT_THAT(text, testing::Not(HasSubstr("aallPreAccessListAddrPrefGe")));
    EXPECT_THAT(text, HasSubstr("<aallPreAccessListAddrPrefLe>0</aallPreAccessListAddrPrefLe>"));
}

TEST(ConfigWriter, NodeOfAnotherModule_CarriesItsNamespace)
{
    const auto schema = Schema::from_modules(
        {{"base", "module base { namespace \"urn:base\"; prefix b; container c { leaf own { type string; } } }"},
         {"more",
          "module more { namespace \"urn:more\"; prefix m; import base { prefix b; } augment /b:c { container d { "
          "leaf added { type int8; } } } }"}});
    Configuration configuration(schema);
    configuration.edit_root().value(node(*schema, {"c", "own"}).slot) = Value::of_text("x");
    configuration.edit_root().value(node(*schema, {"c", "d", "added"}).slot) = Value::of_int(1);
    EXPECT_EQ(config_text(configuration, false),
              "<c xmlns=\"urn:base\">\n  <own>x</own>\n  <d xmlns=\"urn:more\">\n    <added>1</added>\n  </d>\n</c>\n");
    Configuration back(schema);
    read_config_text(config_text(configuration), "back.xml", &back);
    EXPECT_EQ(config_text(back), config_text(configuration));
}

TEST(ConfigWriter, PresenceContainerAndEmptyLeaf_AreWrittenWithoutContent)
{
    const auto schema =
        Schema::from_modules({{"small",
                               "module small { namespace \"urn:small\"; prefix s; container c { presence "
                               "here; } leaf x { type empty; } leaf t { type string; } }"}});
    Configuration configuration(schema);
    configuration.edit_root().value(node(*schema, {"c"}).slot) = Value::present();
    configuration.edit_root().value(node(*schema, {"x"}).slot) = Value::present();
    configuration.edit_root().value(node(*schema, {"t"}).slot) = Value::of_text("");
    EXPECT_EQ(config_text(configuration, false),
              "<c xmlns=\"urn:small\"/>\n<x xmlns=\"urn:small\"/>\n<t xmlns=\"urn:small\"/>\n");
}

TEST(ConfigWriter, CharactersOfMarkup_AreEscaped)
{
    EXPECT_THAT(config_text(prefix_list("a<b>&\"c\"\r")), HasSubstr("<name>a&lt;b&gt;&amp;"));
    EXPECT_THAT(config_text(prefix_list("\xC3\xA4")), HasSubstr("<name>\xC3\xA4</name>"));
}

TEST(ConfigWriter, AnyTextThatXmlCanHold_ComesBackAsItWas)
{
    for (const std::string name :
         {"", " ", "\n", "\t a \r\n b \r", "]]>", "a<b>&\"'", "&amp;", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"}) {
        const Configuration configuration = prefix_list(name);
        Configuration back(Schema::builtin());
        read_config_text(config_text(configuration), "back.xml", &back);
        const Row* const entry = back.root().list(node(back.schema(), {"prefix-list"}).slot).at(0);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->value(0).bytes(), name);
    }
}

TEST(ConfigWriter, TextThatXmlCannotHold_IsRefusedWithItsPath)
{
    for (const std::string& name : {std::string("a\x01"), std::string("a\0", 2), std::string("a\xff"),
                                    std::string("a\xC3"), std::string("a\xEF\xBF\xBF"), std::string("a\xED\xA0\x80")}) {
        EXPECT_THROW(config_text(prefix_list(name)), WriteError) << name;
    }
    Configuration configuration(Schema::builtin());
    const Node& bgp = node(configuration.schema(), {"router", "bgp"});
    Row& vrf = add_entry(add_entry(configuration.edit_root(), bgp, {Value::of_uint(1)}), *bgp.child("vrf"),
                         {Value::of_text("red")});
    Row& neighbor = add_entry(vrf, *bgp.child("vrf")->child("neighbor"), {Value::of_ipv4({0x010200C0})});
    neighbor.value(bgp.child("vrf")->child("neighbor")->child("description")->slot) = Value::of_text("bell\x07");
    try {
        config_text(configuration);
        FAIL() << "not refused";
    } catch (const WriteError& error) {
        EXPECT_STREQ(
            error.what(),
            "/router/bgp{1}/vrf{red}/neighbor{192.0.2.1}/description: \"bell\\x07\" holds a character that XML "
            "cannot hold");
    }
}

TEST(ConfigWriter, FullDevice_IsToldInTheSystemsWords)
{
    const int descriptor = open("/dev/full", O_WRONLY);
    ASSERT_GE(descriptor, 0);
    try {
        write_config(prefix_list("a"), descriptor);
        ADD_FAILURE() << "not refused";
    } catch (const WriteError& error) {
        EXPECT_STREQ(error.what(), "cannot write the configuration: No space left on device");
    }
    EXPECT_EQ(close(descriptor), 0);
    EXPECT_THROW(write_config(prefix_list("a"), -1), WriteError);
}

// Everything that arrives at the other end of a pipe.
std::string drain(int descriptor)
{
    std::string text;
    std::array<char, 512> piece{};
    for (ssize_t count = 0; (count = read(descriptor, piece.data(), piece.size())) > 0;) {
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return text;
}

TEST(ConfigWriter, WholeDocument_ReachesADescriptorThatStaysOpen)
{
    Configuration configuration(Schema::builtin());
    const Node& bgp = node(configuration.schema(), {"router", "bgp"});
    for (uint64_t as = 0; as < 60000; ++as) {
        add_entry(configuration.edit_root(), bgp, {Value::of_uint(as)});
    }
    std::array<int, 2> pipe_ends{};
    ASSERT_EQ(pipe(pipe_ends.data()), 0);
    std::string arrived;
    std::thread reader([&] { arrived = drain(pipe_ends[0]); });
    std::vector<std::size_t> reported;
    write_config(configuration, pipe_ends[1], [&](std::size_t bytes, std::size_t total) {
        EXPECT_EQ(total, 0U);
        reported.push_back(bytes);
    });
    EXPECT_EQ(close(pipe_ends[1]), 0);
    reader.join();
    close(pipe_ends[0]);
    EXPECT_EQ(arrived, config_text(configuration));
    ASSERT_GE(reported.size(), 2U);
    EXPECT_EQ(reported.back(), arrived.size());
}

// Random configurations: every node of the schema may be set, with any value of its type.
class RandomConfiguration {
public:
    explicit RandomConfiguration(unsigned seed) : random_(seed) {}

    Configuration make()
    {
        Configuration configuration(Schema::builtin());
        fill(configuration.edit_root());
        return configuration;
    }

private:
    uint64_t number(uint64_t below) { return random_() % below; }

    void fill(Row& row)
    {
        for (std::size_t slot = 0; slot < row.record().values.size(); ++slot) {
            if (slot < row.record().keys || number(2) == 0) {
                row.value(static_cast<uint16_t>(slot)) = value(*row.record().values[slot]->type);
            }
        }
        for (const Node* list : row.record().lists) {
            for (uint64_t count = number(4); count > 0; --count) {
                RowRef entry(*list->entry);
                fill(entry.edit());
                row.list(list->slot).insert(std::move(entry));  // or not, when the key is there already
            }
        }
    }

    Value value(const Type& type)
    {
        switch (type.base) {
            case BaseType::Int:
                return Value::of_int(static_cast<int32_t>(random_()));
            case BaseType::Uint:
                return Value::of_uint(number(type.vtype == C_UINT16 ? 1U << 16 : 1ULL << 32));
            case BaseType::Enum:
                return Value::of_enum(type.enums[number(type.enums.size())].number);
            case BaseType::Bool:
                return Value::of_bool(number(2) == 0);
            case BaseType::Text:
                return Value::of_text(text());
            case BaseType::Octets:
                return Value::of_octets(octets());
            case BaseType::Ipv4:
                return Value::of_ipv4({static_cast<uint32_t>(random_())});
            case BaseType::Ipv6:
                return ipv6();
            case BaseType::Ip:
                return number(2) == 0 ? ipv6() : Value::of_ipv4({static_cast<uint32_t>(random_())});
            case BaseType::Ipv4Prefix:
                return Value::of_ipv4_prefix({static_cast<uint32_t>(random_())}, static_cast<uint8_t>(number(33)));
            case BaseType::Empty:
                return Value::present();
        }
        return {};
    }

    std::string text()
    {
        static constexpr std::string_view kPieces[] = {"a", "B",  "<",  "&",  ">",        "\"",
                                                       " ", "\n", "\r", "\t", "\xC3\xA4", "]]>"};
        std::string text;
        for (uint64_t pieces = number(20); pieces > 0; --pieces) {
            text += kPieces[number(std::size(kPieces))];
        }
        return text;
    }

    std::string octets()
    {
        std::string octets(number(20), '\0');
        for (char& octet : octets) {
            octet = static_cast<char>(number(256));
        }
        return octets;
    }

    Value ipv6()
    {
        in6_addr address{};
        for (unsigned char& octet : address.s6_addr) {
            octet = static_cast<unsigned char>(number(3) == 0 ? random_() : 0);
        }
        return Value::of_ipv6(address);
    }

    std::mt19937_64 random_;
};

// Whether two rows and all below them are equal; counts the values compared.
bool equal(const Row& left, const Row& right, std::size_t* values)
{
    for (std::size_t i = 0; i < left.record().values.size(); ++i) {
        const auto slot = static_cast<uint16_t>(i);
        *values += left.value(slot).absent() ? 0 : 1;
        if (left.value(slot) != right.value(slot)) {
            return false;
        }
    }
    for (const Node* list : left.record().lists) {
        const List& mine = left.list(list->slot);
        const List& other = right.list(list->slot);
        if (mine.size() != other.size()) {
            return false;
        }
        for (std::size_t i = 0; i < mine.size(); ++i) {
            if (!equal(*mine.at(i), *other.at(i), values)) {
                return false;
            }
        }
    }
    return true;
}

class ConfigRoundTrip : public testing::TestWithParam<unsigned> {};

TEST_P(ConfigRoundTrip, RandomConfiguration_IsReadBackAsItWas)
{
    const Configuration configuration = RandomConfiguration(GetParam()).make();
    const std::string text = config_text(configuration);
    Configuration back(Schema::builtin());
    read_config_text(text, "back.xml", &back);
    std::size_t values = 0;
    EXPECT_TRUE(equal(configuration.root(), back.root(), &values)) << text;
    EXPECT_GT(values, 20U);
    EXPECT_EQ(config_text(back), text);
    EXPECT_EQ(Schema::builtin()->validate(config_text(back, false)), "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, ConfigRoundTrip, testing::Range(1U, 101U));

}  // namespace
