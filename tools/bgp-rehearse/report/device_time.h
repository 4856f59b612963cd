// What an upgrade would take on the device, where each call is a message to the configuration's server and an answer: a
// model, as the workstation answers at once.
#pragma once

#include <string>

#include "base/duration.h"
#include "judge/upgrade_steps.h"

namespace bgp_rehearse {

struct DurationRange {
    Duration least{};
    Duration most{};

    bool exact() const noexcept { return least == most; }
};

struct DeviceTimes {
    DurationRange call{std::chrono::microseconds(50), std::chrono::milliseconds(1)};
    DurationRange connection{std::chrono::microseconds(200), std::chrono::milliseconds(5)};
    bool calls_given = false;  // by --call-time
};

DurationRange time_of(const CallTotals& calls, const DeviceTimes& times) noexcept;

// "50 us", "0.6 s", "24 s", "8 min": what one remembers of it.
std::string words_of(Duration duration);

// "50 us to 1 ms", "0.2 s"
std::string words_of(const DurationRange& range);

}  // namespace bgp_rehearse
