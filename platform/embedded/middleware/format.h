// The text of a printf format and its arguments, for the middleware's reporting calls.
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <new>
#include <string>
#include <string_view>

namespace bgp_platform {

// Formats like vprintf; `args` is left as it was. A format that cannot be printed gives the format itself. A text of usual
// length needs no memory.
class FormattedText {
public:
    FormattedText(const char* format, va_list args);

    std::string_view view() const noexcept { return long_.empty() ? std::string_view(piece_.data(), length_) : long_; }

private:
    std::array<char, 512> piece_;  // longer than nearly every text
    std::size_t length_ = 0;
    std::string long_;
};

// Makes a report whose function has no way to say that it failed: what there is no memory for is lost.
template <typename Report>
void report_or_lose(Report&& report) noexcept
{
    try {
        report();
    } catch (const std::bad_alloc&) {  // a program that runs out of memory must not end by telling of it
    }
}

}  // namespace bgp_platform
