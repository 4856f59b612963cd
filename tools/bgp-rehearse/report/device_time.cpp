#include "report/device_time.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace bgp_rehearse {

namespace {

struct Unit {
    double nanoseconds;
    const char* name;
};
constexpr Unit kUnits[] = {{60e9, "min"}, {1e9, "s"}, {1e6, "ms"}, {1e3, "us"}, {1, "ns"}};
constexpr double kLeastOfUnit[] = {120e9, 0.02e9, 1e6, 1e3, 0};  // a tenth of a second is 0.1 s

// To two digits, from ten on to whole ones: "0.58", "5.8", "58", "582".
std::string rounded(double number)
{
    if (number >= 10) {
        return fmt::format("{:.0f}", number);
    }
    const double step = std::pow(10, std::floor(std::log10(number)) - (number >= 1 ? 1 : 0));
    return fmt::format("{:g}", std::round(number / step) * step);
}

}  // namespace

DurationRange time_of(const CallTotals& calls, const DeviceTimes& times) noexcept
{
    const std::size_t rounds = calls.reads + calls.writes + calls.sessions;
    return {rounds * times.call.least + calls.connections * times.connection.least,
            rounds * times.call.most + calls.connections * times.connection.most};
}

std::string words_of(Duration duration)
{
    const auto nanoseconds = static_cast<double>(duration.count());
    if (nanoseconds <= 0) {
        return "0 s";
    }
    std::size_t unit = 0;
    while (nanoseconds < kLeastOfUnit[unit]) {
        ++unit;
    }
    return fmt::format("{} {}", rounded(nanoseconds / kUnits[unit].nanoseconds), kUnits[unit].name);
}

std::string words_of(const DurationRange& range)
{
    const std::string least = words_of(range.least);
    const std::string most = words_of(range.most);
    return least == most ? least : fmt::format("{} to {}", least, most);
}

}  // namespace bgp_rehearse
