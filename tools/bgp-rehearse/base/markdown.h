// The Markdown of the pages in docs/, as far as the command shows them: paragraphs, items of lists, lines that are set in.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace bgp_rehearse {

inline constexpr std::string_view kBold = "**";  // before bold text, and behind it
inline constexpr std::string_view kItem = "- ";
inline constexpr std::string_view kSetIn = "    ";

// Lines that belong together: a paragraph or an item of a list, whose lines become one; a line that stays as it is.
struct Block {
    enum class Kind { Paragraph, Item, SetIn } kind;
    std::string text;  // with the marks that it begins with
    bool first;        // of its kind: an empty line stands before it
};

std::vector<Block> blocks_of(std::string_view markdown);

// A piece of text in one form.
struct Span {
    enum class Kind { Plain, Code, Bold } kind;
    std::string text;
};

// Without the marks of code, of bold text and of links, of which the words stay.
std::vector<Span> spans_of(std::string_view text);

}  // namespace bgp_rehearse
