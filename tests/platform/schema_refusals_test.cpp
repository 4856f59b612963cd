// Modules that the platform refuses to read, and what it says of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "small_schema.h"

namespace {

using bgp_platform::schema::Schema;
using bgp_platform::schema::SchemaError;
using schema_test::refusal;
using testing::HasSubstr;

TEST(SchemaRefusals, TypesThatThePlatformDoesNotDo_NameTheNode)
{
    EXPECT_EQ(refusal("container c { leaf x { type decimal64 { fraction-digits 2; } } }"),
              "/small:c/x: type decimal64 is not supported (its base is decimal64)");
    EXPECT_EQ(refusal("typedef flags { type bits { bit a; } } leaf x { type flags; }"),
              "/small:x: type flags is not supported (its base is bits)");
    EXPECT_EQ(refusal("leaf-list x { type binary; }"), "/small:x: type binary is not supported (its base is binary)");
    EXPECT_EQ(refusal("identity i; leaf x { type identityref { base i; } }"),
              "/small:x: type identityref is not supported (its base is identityref)");
    EXPECT_EQ(refusal("leaf x { type instance-identifier; }"),
              "/small:x: type instance-identifier is not supported (its base is instance-identifier)");
    EXPECT_EQ(refusal("leaf x { type union { type int8; type string; } }"),
              "/small:x: type union is not supported (its base is union)");
}

TEST(SchemaRefusals, Pattern_IsRefusedOutsideTheSharedTypes)
{
    const char* const expected =
        "/small:x: type string is a string with a pattern, which only the typedefs of bgp-update-types may have";
    EXPECT_EQ(refusal("leaf x { type string { pattern 'a*'; } }"), expected);
    EXPECT_THAT(refusal("leaf x { type t:hex-list { length \"0..5\"; } }"), HasSubstr("a string with a pattern"));
}

TEST(SchemaRefusals, NodesThatThePlatformDoesNotDo_AreNamed)
{
    EXPECT_EQ(refusal("container c { choice x { leaf a { type string; } } }"),
              "/small:c/x: a node of kind choice is not supported");
    EXPECT_EQ(refusal("anydata x;"), "/small:x: a node of kind anydata is not supported");
    EXPECT_EQ(refusal("list x { config false; leaf a { type string; } }"),
              "/small:x: a list without keys is not supported");
    EXPECT_EQ(refusal("list x { key a; ordered-by user; leaf a { type string; } }"),
              "/small:x: a list ordered by the user is not supported");
    EXPECT_EQ(refusal("leaf-list x { ordered-by user; type string; }"),
              "/small:x: a leaf-list ordered by the user is not supported");
    EXPECT_EQ(refusal("leaf-list x { type string; default a; }"),
              "/small:x: a leaf-list with defaults is not supported");
}

TEST(SchemaRefusals, BrokenModule_IsToldWithItsLine)
{
    EXPECT_EQ(refusal("\n\nleaf x { typo string; }"),
              "module small: Invalid character sequence \"typo\", expected a keyword. (Line number 3.)");
    EXPECT_THAT(refusal("leaf x { type none:such; }"), HasSubstr("none:such"));
}

TEST(SchemaRefusals, MissingImport_NamesTheModule)
{
    try {
        Schema::from_modules({{"one", "module one { namespace \"urn:1\"; prefix o; import two { prefix t; } }"}});
        FAIL() << "not refused";
    } catch (const SchemaError& error) {
        EXPECT_THAT(error.what(), HasSubstr("two"));
    }
}

TEST(SchemaRefusals, FolderWithoutModules_IsNamed)
{
    EXPECT_THROW(Schema::from_folder(BGP_SOURCE_DIR "/no-such-folder"), SchemaError);
    try {
        Schema::from_folder(BGP_SOURCE_DIR "/tests");
        FAIL() << "not refused";
    } catch (const SchemaError& error) {
        EXPECT_STREQ(error.what(), BGP_SOURCE_DIR "/tests: no *.yang file in it");
    }
}

}  // namespace
