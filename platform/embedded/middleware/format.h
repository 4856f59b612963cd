// The text of a printf format and its arguments, for the middleware's reporting calls.
#pragma once

#include <cstdarg>
#include <new>
#include <string>

namespace bgp_platform {

// Formats like vprintf; `args` is left as it was. A format that cannot be printed gives the format itself.
std::string format_text(const char* format, va_list args);

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
