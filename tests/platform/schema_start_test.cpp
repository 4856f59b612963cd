// When libyang is asked: the built-in schema is there without it. (A program of its own, as it replaces a function of
// libyang's.)
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "schema/schema.h"

namespace {

int contexts = 0;

}  // namespace

extern "C" int ly_ctx_new(const char* folder, uint16_t options, void** context)
{
    ++contexts;
    const auto next = reinterpret_cast<int (*)(const char*, uint16_t, void**)>(dlsym(RTLD_NEXT, "ly_ctx_new"));
    return next(folder, options, context);
}

namespace {

using bgp_platform::schema::Schema;

TEST(SchemaStart, BuiltInModules_AreReadByLibyangToValidateAlone)
{
    const auto schema = Schema::builtin();
    EXPECT_EQ(schema->module_by_prefix("router")->name, "router");
    EXPECT_EQ(contexts, 0);
    EXPECT_EQ(schema->validate(""), "");
    EXPECT_NE(schema->validate("<router xmlns=\"urn:bgp-update:yang:router\"><nothing/></router>"), "");
    EXPECT_EQ(contexts, 1);
}

TEST(SchemaStart, OtherModules_AreReadByLibyangAtOnce)
{
    contexts = 0;
    const auto schema = Schema::from_modules({{"one", "module one { namespace \"urn:1\"; prefix o; container top; }"}});
    EXPECT_EQ(contexts, 1);
    EXPECT_EQ(schema->validate("<top xmlns=\"urn:1\"/>"), "");
    EXPECT_EQ(contexts, 1);
}

}  // namespace
