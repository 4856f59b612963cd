#include "base/markdown.h"

#include <algorithm>

namespace bgp_rehearse {

namespace {

bool begins_with(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

// Where the rest goes on behind a link that begins at `at`, whose words are added; `at` where there is none.
std::size_t take_link(std::string_view text, std::size_t at, std::string* plain)
{
    const std::size_t middle = text.find("](", at);
    const std::size_t end = text.find(')', middle == std::string_view::npos ? text.size() : middle);
    if (end == std::string_view::npos || text.substr(at + 1, middle - at - 1).find('[') != std::string_view::npos) {
        return at;
    }
    plain->append(text.substr(at + 1, middle - at - 1));
    return end + 1;
}

Block::Kind kind_of(std::string_view line)
{
    return begins_with(line, kSetIn)  ? Block::Kind::SetIn
           : begins_with(line, kItem) ? Block::Kind::Item
                                      : Block::Kind::Paragraph;
}

}  // namespace

std::vector<Block> blocks_of(std::string_view markdown)
{
    std::vector<Block> blocks;
    bool after_empty = true;
    for (std::size_t start = 0; start < markdown.size();) {
        const std::size_t end = std::min(markdown.find('\n', start), markdown.size());
        const std::string_view line = markdown.substr(start, end - start);
        start = end + 1;
        const Block::Kind kind = kind_of(line);
        const bool goes_on = !blocks.empty() && !after_empty && kind == Block::Kind::Paragraph;
        if (goes_on && !line.empty()) {
            blocks.back().text.append(1, ' ').append(line.substr(line.find_first_not_of(' ')));
        } else if (!line.empty()) {
            blocks.push_back({kind, std::string(line), after_empty || blocks.back().kind != kind});
        }
        after_empty = line.empty();
    }
    return blocks;
}

std::vector<Span> spans_of(std::string_view text)
{
    std::vector<Span> spans = {{Span::Kind::Plain, ""}};
    const auto turn = [&spans](Span::Kind kind) {
        spans.push_back({spans.back().kind == kind ? Span::Kind::Plain : kind, ""});
    };
    for (std::size_t at = 0; at < text.size();) {
        const bool code = spans.back().kind == Span::Kind::Code;
        if (text[at] == '`') {
            turn(Span::Kind::Code);
            ++at;
        } else if (!code && begins_with(text.substr(at), kBold)) {
            turn(Span::Kind::Bold);
            at += kBold.size();
        } else if (const std::size_t behind = !code && text[at] == '[' ? take_link(text, at, &spans.back().text) : at;
                   behind != at) {
            at = behind;
        } else {
            spans.back().text += text[at++];
        }
    }
    spans.erase(std::remove_if(spans.begin(), spans.end(), [](const Span& span) { return span.text.empty(); }),
                spans.end());
    return spans;
}

}  // namespace bgp_rehearse
