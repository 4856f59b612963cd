// The text of a printf format and its arguments, for the middleware's reporting calls.
#pragma once

#include <cstdarg>
#include <string>

namespace bgp_platform {

// Formats like vprintf; `args` is left as it was. A format that cannot be printed gives the format itself.
std::string format_text(const char* format, va_list args);

}  // namespace bgp_platform
