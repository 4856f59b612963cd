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
constexpr int64_t kSecond = 1000000000;
constexpr Unit kUnits[] = {{"ns", 1}, {"us", 1000}, {"ms", 1000000}, {"s", kSecond}};
constexpr Unit kLongUnits[] = {
    {"", kSecond}, {"ms", 1000000}, {"s", kSecond}, {"m", 60 * kSecond}, {"h", 3600 * kSecond}};
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

// A number and one of the units, up to the longest.
template <typename Units>
std::optional<Duration> read_duration(std::string_view text, const Units& units, Duration longest) noexcept
{
    const std::string_view whole = take_digits(&text);
    const bool point = !whole.empty() && text.substr(0, 1) == ".";
    text.remove_prefix(point ? 1 : 0);
    const std::string_view part = point ? take_digits(&text) : std::string_view();
    const Unit* const unit =
        std::find_if(std::begin(units), std::end(units), [text](const Unit& each) { return each.name == text; });
    if (whole.empty() || (point && part.empty()) || unit == std::end(units)) {
        return std::nullopt;
    }
    int64_t nanoseconds = number_of(whole, longest.count() / unit->nanoseconds + 1) * unit->nanoseconds;
    int64_t digit_worth = unit->nanoseconds;
    for (const char digit : part) {
        digit_worth /= 10;
        nanoseconds += (digit - '0') * digit_worth;
    }
    const Duration duration(nanoseconds);
    return duration <= longest ? std::optional(duration) : std::nullopt;
}

}  // namespace

std::optional<Duration> duration_of(std::string_view text) noexcept
{
    return read_duration(text, kUnits, kLongestDuration);
}

std::optional<Duration> long_duration_of(std::string_view text) noexcept
{
    return read_duration(text, kLongUnits, kLongestLongDuration);
}

}  // namespace bgp_rehearse
