// The table of tags: each is the number of a node of the data model.
#include "confd/tags.h"

#include <gtest/gtest.h>

#include <string_view>

#include "confd_lib.h"
#include "schema/schema.h"

namespace {

using bgp_platform::schema::Schema;

struct Tag {
    const char* name;
    uint32_t number;
};

constexpr Tag kTags[] = {
#define BGP_UPDATE_TAG(name, number) {#name, tag::name},
    BGP_UPDATE_TAGS(BGP_UPDATE_TAG)
#undef BGP_UPDATE_TAG
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

TEST(Tags, Each_IsWhatTheConfdLibraryComputes)
{
    for (const Tag& tag : kTags) {
        EXPECT_EQ(confd_str2hash(tag.name), tag.number) << tag.name;
    }
}

TEST(Tags, Namespace_IsThatOfTheBgpMib)
{
    const auto* const module = Schema::builtin()->module_by_hash(static_cast<uint32_t>(tag::kBgpMibNamespace));
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->name, "DC-BGP-MIB");
}

}  // namespace
