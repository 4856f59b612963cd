#include "base/text_escape.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace bgp_rehearse {

namespace {

// One character at the front of a text. Length 0: the bytes there are not UTF-8.
struct Character {
    uint32_t code = 0;
    std::size_t length = 0;
};

std::size_t sequence_length(unsigned char first)
{
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0) {
        return 2;
    }
    if (first >= 0xE0 && first < 0xF0) {
        return 3;
    }
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

Character front_character(std::string_view text)
{
    constexpr uint32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = sequence_length(first);
    if (length == 0 || length > text.size()) {
        return {};
    }
    uint32_t code = length == 1 ? first : first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) {
            return {};
        }
        code = code << 6 | (next & 0x3Fu);
    }
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    return code < kLowest[length] || code > 0x10FFFF || surrogate ? Character{} : Character{code, length};
}

// Line and paragraph separators, and the marks and isolates that turn the direction of writing.
bool is_layout_mark(uint32_t code)
{
    return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

// The printable ASCII characters at the front; nearly every text is nothing else.
std::size_t plain_length(std::string_view text)
{
    std::size_t length = 0;
    while (length < text.size() && text[length] >= 0x20 && text[length] < 0x7F) {
        ++length;
    }
    return length;
}

void append_escaped(uint32_t code, std::string_view bytes, std::string* out)
{
    if (code == '\n') {
        *out += "\\n";
    } else if (code == '\r') {
        *out += "\\r";
    } else if (code == '\t') {
        *out += "\\t";
    } else if (code < 0x20 || code == 0x7F) {
        *out += fmt::format("\\x{:02x}", code);
    } else if ((code >= 0x80 && code < 0xA0) || is_layout_mark(code)) {
        *out += fmt::format("\\u{{{:04x}}}", code);
    } else {
        *out += bytes;
    }
}

}  // namespace

std::string escaped(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::size_t plain = plain_length(text);
        if (plain > 0) {
            out += text.substr(0, plain);
            text.remove_prefix(plain);
            continue;
        }
        const Character character = front_character(text);
        if (character.length == 0) {
            out += fmt::format("\\x{:02x}", static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            continue;
        }
        append_escaped(character.code, text.substr(0, character.length), &out);
        text.remove_prefix(character.length);
    }
    return out;
}

void escape_from(std::size_t start, std::string* text)
{
    const std::string_view end = std::string_view(*text).substr(start);
    if (plain_length(end) < end.size()) {
        text->replace(start, end.size(), escaped(end));
    }
}

std::string escaped_line(std::string_view line)
{
    if (!line.empty() && line.back() == '\n') {
        line.remove_suffix(1);
    }
    return escaped(line);
}

std::string escaped_name(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size());
    while (!bytes.empty()) {
        const std::size_t length = std::max<std::size_t>(1, front_character(bytes).length);
        const std::string_view front = bytes.substr(0, length);
        if (front == "\\") {
            out += "\\\\";
        } else if (escaped(front) == front) {
            out += front;
        } else {
            for (const char byte : front) {
                out += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
            }
        }
        bytes.remove_prefix(length);
    }
    return out;
}

std::string unescaped_name(std::string_view name)
{
    std::string bytes;
    bytes.reserve(name.size());
    while (!name.empty()) {
        const std::string_view front = name.substr(0, 4);
        unsigned char byte = 0;
        std::size_t length = 1;
        if (front.substr(0, 2) == "\\\\") {
            bytes += '\\';
            length = 2;
        } else if (front.size() == 4 && front.substr(0, 2) == "\\x" &&
                   std::from_chars(front.data() + 2, front.data() + 4, byte, 16).ptr == front.data() + 4) {
            bytes += static_cast<char>(byte);
            length = 4;
        } else {
            bytes += front.front();
        }
        name.remove_prefix(length);
    }
    return bytes;
}

}  // namespace bgp_rehearse
