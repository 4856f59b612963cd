// The compiled form of a schema: the one that the platform is built with is what libyang reads, and nothing is left out.
#include "schema/compiled_schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "small_schema.h"

namespace {

using bgp_platform::schema::builtin_modules;
using bgp_platform::schema::builtin_schema;
using bgp_platform::schema::CompiledSchema;
using bgp_platform::schema::Module;
using bgp_platform::schema::ModuleText;
using bgp_platform::schema::Node;
using bgp_platform::schema::Schema;
using bgp_platform::schema::SchemaError;
using schema_test::small;

std::vector<std::string> lines_of(std::string_view text)
{
    std::vector<std::string> lines;
    std::istringstream stream{std::string(text)};
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> lines_of(const Schema& schema)
{
    return lines_of(CompiledSchema::text_of(schema));
}

TEST(BuiltInSchema, IsWhatLibyangReadsInItsModules)
{
    const std::vector<std::string> read = lines_of(*Schema::from_modules(builtin_modules()));
    EXPECT_GT(read.size(), 300U);
    EXPECT_EQ(lines_of(builtin_schema()), read);
    EXPECT_EQ(lines_of(*Schema::builtin()), read);
}

void expect_names(const Schema& schema, const std::vector<const Node*>& nodes)
{
    for (const Node* node : nodes) {
        EXPECT_STREQ(schema.name_of(node->tag), node->name.c_str());
        expect_names(schema, node->children);
    }
}

TEST(BuiltInSchema, KnowsEveryNameByItsHash)
{
    expect_names(*Schema::builtin(), Schema::builtin()->top_nodes());
    for (const ModuleText& text : builtin_modules()) {
        const Module* const module = Schema::builtin()->module_by_prefix(text.name);
        ASSERT_NE(module, nullptr);
        EXPECT_STREQ(Schema::builtin()->name_of(module->hash), module->uri.c_str());
    }
}

constexpr char kAllKinds[] =
    "container c { presence here; leaf s { config false; type string { length \"1..4|6\"; } }"
    " list l { key \"b a\"; leaf a { type int8 { range \"-5..-3|7\"; } } leaf b { type uint64; }"
    " leaf e { type enumeration { enum \"of two words\"; enum up { value 7; } } default \"of two words\"; }"
    " leaf d { type string; default \"a default that is longer than fifteen bytes\"; }"
    " leaf n { type empty; } leaf empty-text { type string; default \"\"; }"
    " leaf six { type t:ipv6-address; default \"2001:db8::1\"; } leaf prefix { type t:ipv4-prefix; }"
    " leaf-list m { type t:hex-list; } leaf password { type string; } } }";

TEST(CompiledSchemas, ReadAgain_AreWhatTheyWere)
{
    const auto schema = small(kAllKinds);
    const std::string text = CompiledSchema::text_of(*schema);
    const auto again = CompiledSchema::read(text);
    EXPECT_EQ(lines_of(*again), lines_of(text));
    const Node* const list = again->top_node("c", nullptr)->child("l");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->entry->owner, list);
    EXPECT_EQ(list->child("d")->default_value.bytes(), "a default that is longer than fifteen bytes");
    EXPECT_EQ(list->child("d")->module, again->module_by_prefix("s"));
    EXPECT_TRUE(list->child("prefix")->default_value.absent());
    EXPECT_FALSE(list->child("empty-text")->default_value.absent());
    EXPECT_EQ(list->child("e")->type->find_enum("up")->number, 7);
    EXPECT_EQ(&again->root(), again->top_node("c", nullptr)->record);
    expect_names(*again, again->top_nodes());
}

std::string with(const std::string& text, const std::string& part, const std::string& in_its_place)
{
    std::string changed = text;
    const std::size_t at = changed.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return at == std::string::npos ? changed : changed.replace(at, part.size(), in_its_place);
}

TEST(CompiledSchemas, OfModulesThatDiffer_Differ)
{
    const std::string one = kAllKinds;
    std::set<std::string> texts;
    const std::vector<std::string> modules = {
        one,
        with(one, "presence here;", ""),
        with(one, "config false;", ""),
        with(one, "1..4|6", "1..4|5"),
        with(one, "1..4|6", "2..4|6"),
        with(one, "1..4|6", "1..4"),
        with(one, "\"b a\"", "\"a b\""),
        with(one, "\"b a\"", "\"b\""),
        with(one, "leaf b { type uint64", "leaf b { type uint32"),
        with(one, "leaf b", "leaf B { type string; } leaf b"),
        with(one, "leaf password", "leaf passWord"),
        with(one, "value 7", "value 8"),
        with(one, "enum up", "enum UP"),
        with(one, "default \"of two words\"", "default up"),
        with(one, "fifteen", "sixteen"),
        with(one, " default \"\";", ""),
        with(one, "2001:db8::1", "2001:db8::2"),
        with(one, "type t:hex-list", "type t:ipv4-address"),
        with(one, "leaf-list m", "leaf m"),
        one + " container top;",
    };
    for (const std::string& module : modules) {
        EXPECT_TRUE(texts.insert(CompiledSchema::text_of(*small(module))).second) << module;
    }
    EXPECT_FALSE(texts.insert(CompiledSchema::text_of(*small(one))).second) << "read twice";
}

TEST(CompiledSchemas, CutOff_AreRefused)
{
    const std::string text = CompiledSchema::text_of(*small(kAllKinds));
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_THROW(CompiledSchema::read(std::string_view(text).substr(0, size)), SchemaError) << size;
    }
    EXPECT_THROW(CompiledSchema::read(text + "1 "), SchemaError);
}

TEST(CompiledSchemas, WithAPartThatIsNotThere_AreRefused)
{
    const std::string text = CompiledSchema::text_of(*small("container c;"));
    EXPECT_NO_THROW(CompiledSchema::read(text));
    EXPECT_THROW(CompiledSchema::read(with(text, "1 c ", "1 c 9")), SchemaError) << "no such module";
}

}  // namespace
