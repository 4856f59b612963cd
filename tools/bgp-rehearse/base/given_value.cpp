#include "base/given_value.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "base/nearest.h"

namespace bgp_rehearse {

uint64_t given_number(const std::string& text, uint64_t least, uint64_t most)
{
    uint64_t number = 0;
    const char* const behind = text.data() + text.size();
    const auto [end, failed] = std::from_chars(text.data(), behind, number);
    if (failed != std::errc() || end != behind || number < least || number > most) {
        throw std::invalid_argument(fmt::format("\"{}\" is not a number from {} to {}", text, least, most));
    }
    return number;
}

Duration given_duration(const std::string& text)
{
    const std::optional<Duration> duration = duration_of(text);
    if (!duration) {
        throw std::invalid_argument(
            fmt::format("\"{}\" is not a duration from 0s to 60s, such as 100us or 2.5ms", text));
    }
    return *duration;
}

std::size_t given_word(const std::string& text, const std::vector<std::string>& words)
{
    const auto found = std::find(words.begin(), words.end(), text);
    if (found == words.end()) {
        throw std::invalid_argument(
            fmt::format("\"{}\" is none of {}{}", text, fmt::join(words, ", "), did_you_mean(text, words)));
    }
    return static_cast<std::size_t>(found - words.begin());
}

std::vector<in_addr> given_addresses(const std::string& text, const char* separators)
{
    std::vector<in_addr> addresses;
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
        end = text.find_first_of(separators, start);
        const std::string part = text.substr(start, end - start);
        in_addr address{};
        if (inet_pton(AF_INET, part.c_str(), &address) != 1) {
            throw std::invalid_argument(fmt::format("\"{}\" is not an IPv4 address", part));
        }
        addresses.push_back(address);
    }
    return addresses;
}

std::string words_of_addresses(const std::vector<in_addr>& addresses)
{
    std::string words;
    for (const in_addr& address : addresses) {
        char text[INET_ADDRSTRLEN] = "";
        inet_ntop(AF_INET, &address, text, sizeof text);
        words.append(words.empty() ? "" : ",").append(text);
    }
    return words;
}

}  // namespace bgp_rehearse
