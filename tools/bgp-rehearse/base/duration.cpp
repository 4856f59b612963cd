#include "base/duration.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace bgp_rehearse {

namespace {

struct Unit {
    std::string_view name;
    int64_t nanoseconds;
};
constexpr Unit kUnits[] = {{"ns", 1}, {"us", 1000}, {"ms", 1000000}, {"s", 1000000000}};
constexpr std::string_view kDigits = "0123456789";

std::string_view take_digits(std::string_view* text)
{
    const std::string_view digits = text->substr(0, text->find_first_not_of(kDigits));
    text->remove_prefix(digits.size());
    return digits;
}

// The number that the digits make, or the limit where it is more.
int64_t number_of(std::string_view digits, int64_t limit)
{
    int64_t number = 0;
    for (const char digit : digits) {
        number = std::min<int64_t>(10 * number + (digit - '0'), limit);
    }
    return number;
}

}  // namespace

std::optional<Duration> duration_of(std::string_view text) noexcept
{
    const std::string_view whole = take_digits(&text);
    const bool point = !whole.empty() && text.substr(0, 1) == ".";
    text.remove_prefix(point ? 1 : 0);
    const std::string_view part = point ? take_digits(&text) : std::string_view();
    const Unit* const unit =
        std::find_if(std::begin(kUnits), std::end(kUnits), [text](const Unit& each) { return each.name == text; });
    if (whole.empty() || (point && part.empty()) || unit == std::end(kUnits)) {
        return std::nullopt;
    }
    int64_t nanoseconds = number_of(whole, kLongestDuration.count() / unit->nanoseconds + 1) * unit->nanoseconds;
    int64_t digit_worth = unit->nanoseconds;
    for (const char digit : part) {
        digit_worth /= 10;
        nanoseconds += (digit - '0') * digit_worth;
    }
    const Duration duration(nanoseconds);
    return duration <= kLongestDuration ? std::optional(duration) : std::nullopt;
}

}  // namespace bgp_rehearse
