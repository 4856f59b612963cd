// Durations as people write them: a number and its unit.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace bgp_rehearse {

using Duration = std::chrono::nanoseconds;

constexpr Duration kLongestDuration = std::chrono::seconds(60);
constexpr Duration kLongestLongDuration = std::chrono::hours(24);

// "100us", "2.5ms" or "1s", from 0 to kLongestDuration; digits below a nanosecond are cut. Nothing for any other text.
std::optional<Duration> duration_of(std::string_view text) noexcept;

// "90", "200ms", "90s", "1.5m" or "2h", from 0 to kLongestLongDuration; seconds where there is no unit.
std::optional<Duration> long_duration_of(std::string_view text) noexcept;

}  // namespace bgp_rehearse
