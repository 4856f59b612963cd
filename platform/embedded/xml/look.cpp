#include "xml/look.h"

#include <strings.h>

#include <algorithm>
#include <array>

#include "xml/load_format.h"
#include "xml/source.h"

namespace bgp_platform::xml {

namespace {

bool begins_with(std::string_view text, std::string_view with)
{
    return text.substr(0, with.size()) == with;
}

// In small or capital letters.
bool begins_with_tag(std::string_view text, std::string_view tag)
{
    return text.size() >= tag.size() && strncasecmp(text.data(), tag.data(), tag.size()) == 0;
}

// By the marks and first letters that XML tells its encodings by: UTF-16, UTF-32, EBCDIC.
bool is_wide_xml(std::string_view head)
{
    using namespace std::string_view_literals;
    constexpr std::array kBeginnings = {"\xFF\xFE"sv, "\xFE\xFF"sv, "\0\0\xFE\xFF"sv,    "<\0"sv,
                                        "\0<"sv,      "\0\0\0<"sv,  "\x4C\x6F\xA7\x94"sv};
    return std::any_of(kBeginnings.begin(), kBeginnings.end(),
                       [&](std::string_view beginning) { return begins_with(head, beginning); });
}

bool is_control(char letter)
{
    const auto byte = static_cast<unsigned char>(letter);
    return byte < 0x20 && std::string_view("\t\n\v\f\r\x1B").find(letter) == std::string_view::npos;
}

// Behind the byte order mark and white space.
std::string_view first_words(std::string_view head)
{
    if (begins_with(head, "\xEF\xBB\xBF")) {
        head.remove_prefix(3);
    }
    head.remove_prefix(std::min(head.find_first_not_of(" \t\r\n"), head.size()));
    return head;
}

bool is_html(std::string_view words)
{
    if (begins_with(words, "<?xml")) {
        const std::size_t end = words.find("?>");
        words = end == std::string_view::npos ? "" : first_words(words.substr(end + 2));
    }
    return begins_with_tag(words, "<!doctype html") || begins_with_tag(words, "<html");
}

bool looks_like_text(std::string_view head)
{
    return is_wide_xml(head) || (!begins_with(head, "BZh") && std::none_of(head.begin(), head.end(), is_control));
}

}  // namespace

bool may_be_packed(std::string_view head)
{
    return !looks_like_text(head) && head.find_first_not_of('\0') != std::string_view::npos;
}

std::string why_no_xml(std::string_view head)
{
    const std::string_view words = first_words(head);
    std::string looks;
    const bool white_so_far = words.empty() && head.size() == PeekedSource::kHead;
    if (white_so_far || is_wide_xml(head)) {
        return {};
    }
    if (head.empty()) {
        looks = "the file is empty";
    } else if (is_html(words)) {
        looks = "this is an HTML page";
    } else if (words.empty()) {
        looks = "the file holds only white space";
    } else if (words.front() == '<') {
        return {};
    } else if (!looks_like_text(head)) {
        looks = "this is a binary file";
    } else if (words.front() == '{' || words.front() == '[') {
        looks = "this begins like JSON";
    } else {
        looks = "this is plain text, perhaps of a command line, and no XML";
    }
    return looks + "; " + kWhereItStands;
}

}  // namespace bgp_platform::xml
