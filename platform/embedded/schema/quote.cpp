// How messages show a text that came from outside: it must neither flood the terminal nor send it control characters.
#include "schema/quote.h"

namespace bgp_platform::schema {

namespace {

constexpr std::size_t kShown = 200;

bool continues_character(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string_view shown_part(std::string_view text)
{
    if (text.size() <= kShown) {
        return text;
    }
    std::size_t end = kShown;
    while (end > kShown - 3 && continues_character(text[end])) {
        --end;
    }
    return text.substr(0, end);
}

void append_escaped(char byte, std::string* text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(byte);
    switch (byte) {
        case '\n':
            *text += "\\n";
            return;
        case '\r':
            *text += "\\r";
            return;
        case '\t':
            *text += "\\t";
            return;
        case '"':
        case '\\':
            *text += '\\';
            *text += byte;
            return;
        default:
            break;
    }
    if (code < 0x20 || code == 0x7F) {
        *text += "\\x";
        *text += kDigits[code >> 4];
        *text += kDigits[code & 0x0F];
    } else {
        *text += byte;
    }
}

}  // namespace

std::string in_quotes(std::string_view text)
{
    const std::string_view shown = shown_part(text);
    std::string result = "\"";
    for (const char byte : shown) {
        append_escaped(byte, &result);
    }
    result += shown.size() < text.size() ? "\"..." : "\"";
    return result;
}

std::string shortened(std::string_view text)
{
    const std::string_view shown = shown_part(text);
    return std::string(shown) + (shown.size() < text.size() ? "..." : "");
}

}  // namespace bgp_platform::schema
