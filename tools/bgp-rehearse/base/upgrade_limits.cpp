#include "base/upgrade_limits.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <stdexcept>

namespace bgp_rehearse {

namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr std::size_t kGigabyte = std::size_t{1} << 30;
constexpr std::size_t kMost = kGigabyte << 10;

struct TimeUnit {
    Duration duration;
    const char* name;
};
constexpr TimeUnit kTimeUnits[] = {
    {std::chrono::hours(1), "h"},         {std::chrono::minutes(1), "min"},     {std::chrono::seconds(1), "s"},
    {std::chrono::milliseconds(1), "ms"}, {std::chrono::microseconds(1), "us"}, {std::chrono::nanoseconds(1), "ns"},
};

struct MemoryUnit {
    std::string_view name;
    std::size_t bytes;
};
constexpr MemoryUnit kMemoryUnits[] = {
    {"", kMegabyte}, {"M", kMegabyte}, {"MB", kMegabyte}, {"G", kGigabyte}, {"GB", kGigabyte}};

bool is_none(std::string_view text)
{
    return text == "none" || text == "0";
}

}  // namespace

std::optional<Duration> given_time_limit(const std::string& text)
{
    const std::optional<Duration> limit = is_none(text) ? Duration{} : long_duration_of(text);
    if (!limit) {
        throw std::invalid_argument(
            fmt::format("\"{}\" is not a time up to 24h, such as 90, 90s or 10m, nor none", text));
    }
    return *limit == Duration{} ? std::nullopt : limit;
}

std::optional<std::size_t> given_memory_limit(const std::string& text)
{
    std::size_t number = 0;
    const char* const behind = text.data() + text.size();
    const auto [end, failed] = std::from_chars(text.data(), behind, number);
    const std::string_view name(end, static_cast<std::size_t>(behind - end));
    const auto* const unit = std::find_if(std::begin(kMemoryUnits), std::end(kMemoryUnits),
                                          [name](const MemoryUnit& each) { return each.name == name; });
    const bool fits = failed == std::errc() && unit != std::end(kMemoryUnits) && number <= kMost / unit->bytes;
    if (!fits && !is_none(text)) {
        throw std::invalid_argument(
            fmt::format("\"{}\" is not a size up to 1024G, such as 512 (megabytes), 512M or 2G, nor none", text));
    }
    return !fits || number == 0 ? std::nullopt : std::optional(number * unit->bytes);
}

std::string words_of_time_limit(Duration limit)
{
    const auto* const unit = std::find_if(std::begin(kTimeUnits), std::end(kTimeUnits), [limit](const TimeUnit& each) {
        return limit % each.duration == Duration{};
    });
    return fmt::format("{} {}", limit / unit->duration, unit->name);
}

std::string words_of_memory_limit(std::size_t bytes)
{
    return bytes % kGigabyte == 0 ? fmt::format("{} GB", bytes / kGigabyte) : fmt::format("{} MB", bytes / kMegabyte);
}

}  // namespace bgp_rehearse
