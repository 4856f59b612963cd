#include "run/last_lines.h"

#include <algorithm>

namespace bgp_rehearse {

namespace {

constexpr unsigned int kContinues = 0x80;  // and up to the first that leads a character of two bytes
constexpr unsigned int kLeadsTwo = 0xC0;
constexpr unsigned int kLeadsThree = 0xE0;
constexpr unsigned int kLeadsFour = 0xF0;

// The bytes that a text of UTF-8 can keep when it is cut: no character is left half.
std::size_t whole_characters(std::string_view text)
{
    std::size_t last = text.size();
    unsigned int byte = 0;
    do {
        byte = static_cast<unsigned char>(text[--last]);
    } while (last > 0 && kContinues <= byte && byte < kLeadsTwo);
    const std::size_t bytes = byte >= kLeadsFour ? 4 : byte >= kLeadsThree ? 3 : byte >= kLeadsTwo ? 2 : 1;
    return last + bytes > text.size() ? last : text.size();
}

}  // namespace

void LastLines::add(std::string_view line) noexcept
{
    const uint64_t added = added_.load(std::memory_order_relaxed);
    Line& next = lines_[added % lines_.size()];
    line.copy(next.text.data(), kMostBytes);
    next.size = std::min(line.size(), kMostBytes + 1);
    added_.store(added + 1, std::memory_order_release);
}

std::string LastLines::Line::whole() const
{
    const std::string_view kept(text.data(), std::min(size, kMostBytes));
    return size <= kMostBytes ? std::string(kept) : std::string(kept.substr(0, whole_characters(kept))) + "…";
}

std::vector<std::string> LastLines::all() const
{
    const uint64_t added = added_.load(std::memory_order_acquire);
    std::vector<std::string> lines;
    for (uint64_t i = added - std::min<uint64_t>(added, kLines); i < added; ++i) {
        lines.push_back(lines_[i % lines_.size()].whole());
    }
    return lines;
}

}  // namespace bgp_rehearse
