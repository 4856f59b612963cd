#include "findings/plain_text.h"

#include "base/markdown.h"
#include "base/wrap.h"

namespace bgp_rehearse {

namespace {

std::string without_marks(std::string_view text)
{
    std::string plain;
    for (const Span& span : spans_of(text)) {
        plain += span.text;
    }
    return plain;
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
