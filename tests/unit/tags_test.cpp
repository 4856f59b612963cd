// The table of tags: each is the number of a node of the data model. The product and the platform have a hash each, which
// must agree with what ConfD publishes and with one another.
#include "confd/tags.h"

#include <gtest/gtest.h>

#include <string>

#include "schema/name_hash.h"
#include "schema/schema.h"

namespace {

using bgp_platform::schema::Schema;
namespace platform = bgp_platform::schema;

struct Tag {
    const char* name;
    uint32_t number;
};

constexpr Tag kTags[] = {
#define BGP_UPDATE_TAG(name, number) {#name, tag::name},
    BGP_UPDATE_TAGS(BGP_UPDATE_TAG)
#undef BGP_UPDATE_TAG
};

constexpr Tag kPublished[] = {
    {"foo", 161968632},
    {"bad", 1265139696},
    {"tiny", 1046642021},
    {"http://tail-f.com/ns/blaster", 670579579},
    {"bgpRmEntIndex", 0x6553535E},
    {"bgpRmEntLocalIdentifier", 0x037C186D},
    {"bgpPeerAfiSafiEntry", 633450320},
    {"http://tail-f.com/ns/mibs/DC-BGP-MIB", 82011741},
};

TEST(Tags, Each_NamesANodeOfTheDataModel)
{
    const auto schema = Schema::builtin();
    for (const Tag& tag : kTags) {
        const char* const name = schema->name_of(tag.number);
        ASSERT_NE(name, nullptr) << tag.name;
        EXPECT_STREQ(name, tag.name);
    }
}

TEST(Tags, Each_IsWhatThePlatformComputes)
{
    for (const Tag& tag : kTags) {
        EXPECT_EQ(platform::name_hash(tag.name), tag.number) << tag.name;
    }
}

TEST(Tags, BothHashes_ComputeThePublishedNumbers)
{
    for (const Tag& tag : kPublished) {
        EXPECT_EQ(bgp_update::name_hash(tag.name), tag.number) << tag.name;
        EXPECT_EQ(platform::name_hash(tag.name), tag.number) << tag.name;
    }
}

TEST(Tags, BothHashes_AgreeOnTextsOfEveryLength)
{
    std::string text;
    for (int length = 0; length < 64; ++length) {
        EXPECT_EQ(platform::name_hash(text), bgp_update::name_hash(text)) << text;
        text += static_cast<char>(0xFF - 37 * length % 256);
    }
}

TEST(Tags, Namespace_IsThatOfTheBgpMib)
{
    const auto* const module = Schema::builtin()->module_by_hash(static_cast<uint32_t>(tag::kBgpMibNamespace));
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->name, "DC-BGP-MIB");
}

}  // namespace
