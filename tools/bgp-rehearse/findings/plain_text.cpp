#include "findings/plain_text.h"

#include <algorithm>
#include <vector>

#include "base/wrap.h"

namespace bgp_rehearse {

namespace {

constexpr std::string_view kItem = "- ";
constexpr std::string_view kSetIn = "    ";

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

std::string without_marks(std::string_view text)
{
    std::string plain;
    bool code = false;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '`') {
            code = !code;
            ++at;
        } else if (!code && begins_with(text.substr(at), kBold)) {
            at += kBold.size();
        } else if (const std::size_t behind = !code && text[at] == '[' ? take_link(text, at, &plain) : at;
                   behind != at) {
            at = behind;
        } else {
            plain += text[at++];
        }
    }
    return plain;
}

// Lines that belong together: a paragraph, an item of a list, a line that stays as it is.
struct Block {
    enum class Kind { Paragraph, Item, SetIn } kind;
    std::string text;
    bool first;  // of its kind: an empty line stands before it
};

Block::Kind kind_of(std::string_view line)
{
    return begins_with(line, kSetIn)  ? Block::Kind::SetIn
           : begins_with(line, kItem) ? Block::Kind::Item
                                      : Block::Kind::Paragraph;
}

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

std::string lines_of(const Block& block, std::size_t columns)
{
    if (block.kind == Block::Kind::SetIn) {
        return block.text + "\n";
    }
    const std::size_t hanging = block.kind == Block::Kind::Item ? kItem.size() : 0;
    return wrapped(without_marks(block.text), columns, hanging) + "\n";
}

}  // namespace

std::string plain_text(std::string_view markdown, std::size_t columns)
{
    std::string text;
    for (const Block& block : blocks_of(markdown)) {
        text.append(block.first && !text.empty() ? "\n" : "").append(lines_of(block, columns));
    }
    return text;
}

}  // namespace bgp_rehearse
