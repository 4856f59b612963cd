#include "base/wrap.h"

namespace bgp_rehearse {

namespace {

constexpr char kEscape = '\033';

// The text up to where blanks begin, or end; the rest stays.
std::string_view take(std::string_view* text, bool blanks)
{
    const std::size_t end = blanks ? text->find_first_not_of(' ') : text->find(' ');
    const std::string_view taken = text->substr(0, end);
    text->remove_prefix(taken.size());
    return taken;
}

}  // namespace

std::size_t columns_of(std::string_view text) noexcept
{
    std::size_t columns = 0;
    bool in_colour = false;
    for (const char byte : text) {
        const bool continues = (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
        in_colour = in_colour || byte == kEscape;
        columns += continues || in_colour ? 0 : 1;
        in_colour = in_colour && byte != 'm';
    }
    return columns;
}

std::string wrapped(std::string_view text, std::optional<std::size_t> columns, std::size_t hanging)
{
    if (!columns) {
        return std::string(text);
    }
    std::string out;
    std::size_t used = 0;  // columns of the line at hand
    bool begun = false;    // it has a word
    while (!text.empty()) {
        const std::string_view blanks = take(&text, true);
        const std::string_view word = take(&text, false);
        const std::size_t width = columns_of(word);
        if (begun && used + blanks.size() + width > *columns) {
            out.append("\n").append(hanging, ' ');
            used = hanging;
        } else {
            out += blanks;
            used += blanks.size();
        }
        out += word;
        used += width;
        begun = true;
    }
    return out;
}

}  // namespace bgp_rehearse
