#include "middleware/format.h"

#include <cstddef>
#include <cstdio>

namespace bgp_platform {

std::string format_text(const char* format, va_list args)
{
    char piece[512];  // longer than nearly every text
    va_list measured;
    va_copy(measured, args);
    const int length = std::vsnprintf(piece, sizeof piece, format, measured);
    va_end(measured);
    if (length < 0) {
        return format;
    }
    if (static_cast<std::size_t>(length) < sizeof piece) {
        return {piece, static_cast<std::size_t>(length)};
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    va_list printed;
    va_copy(printed, args);
    std::vsnprintf(text.data(), text.size() + 1, format, printed);
    va_end(printed);
    return text;
}

}  // namespace bgp_platform
