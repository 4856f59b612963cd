// Durations as people write them.
#include "base/duration.h"

#include <gtest/gtest.h>

namespace bgp_test {
namespace {

using bgp_rehearse::duration_of;
using bgp_rehearse::long_duration_of;
using namespace std::chrono_literals;

TEST(Duration, NumberAndUnit_IsTaken)
{
    EXPECT_EQ(duration_of("7ns"), 7ns);
    EXPECT_EQ(duration_of("100us"), 100us);
    EXPECT_EQ(duration_of("2ms"), 2ms);
    EXPECT_EQ(duration_of("1s"), 1s);
    EXPECT_EQ(duration_of("0s"), 0s);
}

TEST(Duration, Fraction_IsExactToTheNanosecond)
{
    EXPECT_EQ(duration_of("2.5ms"), 2500us);
    EXPECT_EQ(duration_of("0.1s"), 100ms);
    EXPECT_EQ(duration_of("0.000000001s"), 1ns);
    EXPECT_EQ(duration_of("1.2345678us"), 1234ns);
    EXPECT_EQ(duration_of("0.00000000000000000000000001s"), 0ns);
}

TEST(Duration, LongestIsAMinute)
{
    EXPECT_EQ(duration_of("60s"), 60s);
    EXPECT_EQ(duration_of("60000000000ns"), 60s);
    for (const char* text : {"61s", "60.000000001s", "60000000001ns", "99999999999999999999999999s"}) {
        EXPECT_EQ(duration_of(text), std::nullopt) << text;
    }
}

TEST(Duration, LongOnes_AreInSecondsWhereTheyHaveNoUnit)
{
    EXPECT_EQ(long_duration_of("90"), 90s);
    EXPECT_EQ(long_duration_of("0.25"), 250ms);
    EXPECT_EQ(long_duration_of("1.5m"), 90s);
    EXPECT_EQ(long_duration_of("24h"), 24h);
    for (const char* text : {"", "m", "24.1h", "86401", "1us", "10min", "1 s", "-1"}) {
        EXPECT_EQ(long_duration_of(text), std::nullopt) << text;
    }
}

TEST(Duration, OtherText_IsNone)
{
    for (const char* text : {"", "5", "s", ".5s", "1.s", "1..5s", "-1s", "+1s", "1 s", " 1s", "1s ", "1S", "1m", "1h",
                             "1e3us", "0x1s", "1.5.5s"}) {
        EXPECT_EQ(duration_of(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace bgp_test
