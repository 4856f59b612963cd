#include "base/wrap.h"

#include <algorithm>

namespace bgp_rehearse {

namespace {

constexpr std::string_view kBetweenWords = " \n";

constexpr unsigned int kLeading = 0xC0;    // of a byte of UTF-8: the two bits that tell its place
constexpr unsigned int kContinues = 0x80;  // their value behind a character's first byte

}  // namespace

std::size_t columns_of(std::string_view text) noexcept
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & kLeading) != kContinues;
    }));
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    while ((start = text.find_first_not_of(kBetweenWords, start)) != std::string_view::npos) {
        const std::size_t end = std::min(text.find_first_of(kBetweenWords, start), text.size());
        const std::string_view word = text.substr(start, end - start);
        if (lines.empty() || columns_of(lines.back()) + 1 + columns_of(word) > columns) {
            lines.emplace_back(word);
        } else {
            lines.back().append(1, ' ').append(word);
        }
        start = end;
    }
    return lines;
}

}  // namespace bgp_rehearse
