// What a mistyped word was meant to be.
#include "base/nearest.h"

#include <gtest/gtest.h>

namespace bgp_test {
namespace {

using bgp_rehearse::nearest;

const std::vector<std::string> kKnown = {"run", "generate", "sweep", "--interfaces", "--user-profile"};

TEST(Nearest, OneSlip_IsForgivenInAShortWord)
{
    EXPECT_EQ(nearest("rn", kKnown), "run");
    EXPECT_EQ(nearest("rune", kKnown), "run");
    EXPECT_EQ(nearest("rum", kKnown), "run");
    EXPECT_EQ(nearest("rnu", kKnown), "run") << "two neighbours exchanged are one slip";
    EXPECT_EQ(nearest("urn", kKnown), "run");
    EXPECT_EQ(nearest("swep", kKnown), "sweep");
}

TEST(Nearest, MoreSlips_AreForgivenInALongWord)
{
    EXPECT_EQ(nearest("--intefacs", kKnown), "--interfaces");
    EXPECT_EQ(nearest("--userprofiel", kKnown), "--user-profile");
}

TEST(Nearest, WordTooFarOff_MeansNone)
{
    EXPECT_EQ(nearest("tun1", kKnown), "");
    EXPECT_EQ(nearest("--frobnicate", kKnown), "");
    EXPECT_EQ(nearest("run", {}), "");
}

TEST(Nearest, OfTwo_IsTheOneWithFewerSlips)
{
    EXPECT_EQ(nearest("--jsonlog", {"--json", "--json-log"}), "--json-log");
}

}  // namespace
}  // namespace bgp_test
