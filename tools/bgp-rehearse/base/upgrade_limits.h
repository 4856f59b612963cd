// What an upgrade may take of the machine that it is rehearsed on, so that a library that loops or eats memory without end
// ends as a finding.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/duration.h"

namespace bgp_rehearse {

struct UpgradeLimits {
    std::optional<Duration> time = std::chrono::minutes(10);  // until update() has returned; none: as long as it takes
    std::optional<std::size_t> memory;                        // bytes that it may map besides what was mapped before
};

// As a person writes them: "90", "90s", "1.5m" or "2h" (seconds where there is no unit), "512", "512M" or "2G" (megabytes
// of 1,048,576 bytes where there is no unit); "0" and "none" are no limit. A text that is none throws
// std::invalid_argument with what it should have been.
std::optional<Duration> given_time_limit(const std::string& text);
std::optional<std::size_t> given_memory_limit(const std::string& text);

// "10 min", "90 s", "1500 ms": exact
std::string words_of_time_limit(Duration limit);

// "512 MB", "2 GB"
std::string words_of_memory_limit(std::size_t bytes);

}  // namespace bgp_rehearse
