// Limits as people write them and read them.
#include "base/upgrade_limits.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace bgp_test {
namespace {

using bgp_rehearse::given_memory_limit;
using bgp_rehearse::given_time_limit;
using bgp_rehearse::UpgradeLimits;
using bgp_rehearse::words_of_memory_limit;
using bgp_rehearse::words_of_time_limit;
using namespace std::chrono_literals;

constexpr std::size_t kMegabyte = 1048576;

TEST(UpgradeLimits, AreTenMinutesAndNoMemory)
{
    EXPECT_EQ(UpgradeLimits().time, 10min);
    EXPECT_EQ(UpgradeLimits().memory, std::nullopt);
}

TEST(UpgradeLimits, Time_IsInSecondsWhereItHasNoUnit)
{
    EXPECT_EQ(given_time_limit("90"), 90s);
    EXPECT_EQ(given_time_limit("0.5"), 500ms);
    EXPECT_EQ(given_time_limit("200ms"), 200ms);
    EXPECT_EQ(given_time_limit("90s"), 90s);
    EXPECT_EQ(given_time_limit("10m"), 10min);
    EXPECT_EQ(given_time_limit("1.5h"), 90min);
    EXPECT_EQ(given_time_limit("24h"), 24h);
}

TEST(UpgradeLimits, Memory_IsInMegabytesWhereItHasNoUnit)
{
    EXPECT_EQ(given_memory_limit("512"), 512 * kMegabyte);
    EXPECT_EQ(given_memory_limit("512M"), 512 * kMegabyte);
    EXPECT_EQ(given_memory_limit("512MB"), 512 * kMegabyte);
    EXPECT_EQ(given_memory_limit("2G"), 2048 * kMegabyte);
    EXPECT_EQ(given_memory_limit("1024GB"), 1048576 * kMegabyte);
}

TEST(UpgradeLimits, NoneAndZero_AreNoLimit)
{
    for (const char* text : {"none", "0"}) {
        EXPECT_EQ(given_time_limit(text), std::nullopt);
        EXPECT_EQ(given_memory_limit(text), std::nullopt);
    }
    EXPECT_EQ(given_time_limit("0s"), std::nullopt);
    EXPECT_EQ(given_memory_limit("0G"), std::nullopt);
}

TEST(UpgradeLimits, OtherTexts_AreRefused)
{
    for (const char* text : {"", "s", "-1", "10min", "1 m", "25h", "100us", "1M", "None", "99999999999999999999"}) {
        EXPECT_THROW(given_time_limit(text), std::invalid_argument) << text;
    }
    for (const char* text : {"", "M", "-1", "1.5G", "512K", "512 M", "1025G", "99999999999999999999", "10m"}) {
        EXPECT_THROW(given_memory_limit(text), std::invalid_argument) << text;
    }
}

TEST(UpgradeLimits, InWords_AreExact)
{
    EXPECT_EQ(words_of_time_limit(10min), "10 min");
    EXPECT_EQ(words_of_time_limit(90s), "90 s");
    EXPECT_EQ(words_of_time_limit(1500ms), "1500 ms");
    EXPECT_EQ(words_of_time_limit(24h), "24 h");
    EXPECT_EQ(words_of_time_limit(1ns), "1 ns");
    EXPECT_EQ(words_of_memory_limit(512 * kMegabyte), "512 MB");
    EXPECT_EQ(words_of_memory_limit(1536 * kMegabyte), "1536 MB");
    EXPECT_EQ(words_of_memory_limit(2048 * kMegabyte), "2 GB");
}

}  // namespace
}  // namespace bgp_test
