#include "fleet/report/shell_words.h"

#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

constexpr char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789%+,-./:@_";

// Each character that ends the quotes, or that they give a meaning, with `before` in front of it.
std::string quoted(std::string_view text, std::string_view special, std::string_view before)
{
    std::string out;
    for (const char byte : text) {
        if (special.find(byte) != std::string_view::npos) {
            out += before;
        }
        out += byte;
    }
    return out;
}

}  // namespace

std::string shell_word(std::string_view bytes)
{
    if (!bytes.empty() && bytes.find_first_not_of(kPlain) == std::string_view::npos) {
        return std::string(bytes);
    }
    if (escaped(bytes) == bytes) {
        return "'" + quoted(bytes, "'", "'\\'") + "'";
    }
    return "$'" + quoted(escaped_name(bytes), "'", "\\") + "'";
}

std::string shell_words(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words) {
        line.append(line.empty() ? "" : " ").append(shell_word(word));
    }
    return line;
}

}  // namespace bgp_rehearse
