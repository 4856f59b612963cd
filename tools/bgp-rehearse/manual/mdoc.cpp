#include "manual/mdoc.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "base/markdown.h"
#include "base/wrap.h"

namespace bgp_rehearse::manual {

namespace {

constexpr std::size_t kColumns = 76;

// Typographic characters stand for these where they are not escaped.
std::string character(char one, bool code)
{
    switch (one) {
        case '\\':
            return "\\e";
        case '\'':
            return code ? "\\(aq" : "'";
        case '`':
            return "\\(ga";
        case '~':
            return "\\(ti";
        case '^':
            return "\\(ha";
        case '-':
            return code ? "\\-" : "-";
        default:
            return {one};
    }
}

std::string as_code(std::string_view text)
{
    std::string escaped;
    for (const char one : text) {
        escaped += character(one, true);
    }
    return escaped;
}

std::string word_of(std::string_view word)
{
    if (!word.empty() && word.find_first_not_of("([") != std::string_view::npos &&
        word[word.find_first_not_of("([")] == '-') {
        return as_code(word);  // an option
    }
    std::string escaped;
    for (const char one : word) {
        escaped += character(one, false);
    }
    return escaped;
}

// A line is no request, whatever it begins with.
std::string shielded(const std::string& line)
{
    return line.empty() || (line.front() != '.' && line.front() != '\'') ? line : "\\&" + line;
}

std::string span_text(const Span& span)
{
    switch (span.kind) {
        case Span::Kind::Code:
        case Span::Kind::Bold:
            return "\\fB" + (span.kind == Span::Kind::Code ? as_code(span.text) : mdoc_words(span.text)) + "\\fR";
        case Span::Kind::Plain:
            break;
    }
    return mdoc_words(span.text);
}

bool ends_sentence(const std::string& word)
{
    return word.back() == '.' || word.back() == '?' || word.back() == '!';
}

std::string set_in(const Block& block)
{
    return shielded(as_code(std::string_view(block.text).substr(kSetIn.size()))) + "\n";
}

// "- `NAME`: what it is" has a tag.
std::string item(const Block& block)
{
    const std::string_view text = std::string_view(block.text).substr(kItem.size());
    const std::size_t end = text.front() == '`' ? text.find("`: ") : std::string_view::npos;
    if (end == std::string_view::npos) {
        return ".It\n" + mdoc_lines(text);
    }
    return ".It Sy " + as_code(text.substr(1, end - 1)) + "\n" + mdoc_lines(text.substr(end + 3));
}

std::string opening(const Block& block)
{
    switch (block.kind) {
        case Block::Kind::Item:
            return block.text.find("`: ") == std::string::npos ? ".Bl -bullet -compact\n" : ".Bl -tag -width Ds\n";
        case Block::Kind::SetIn:
            return ".Bd -literal -offset indent\n";
        case Block::Kind::Paragraph:
            break;
    }
    return ".Pp\n";
}

const char* closing(Block::Kind kind)
{
    return kind == Block::Kind::Item ? ".El\n" : kind == Block::Kind::SetIn ? ".Ed\n" : "";
}

std::string content(const Block& block)
{
    return block.kind == Block::Kind::Item    ? item(block)
           : block.kind == Block::Kind::SetIn ? set_in(block)
                                              : mdoc_lines(block.text);
}

}  // namespace

std::string mdoc_words(std::string_view text)
{
    std::string words;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        words.append(start == 0 ? "" : " ").append(word_of(text.substr(start, end - start)));
        start = end + 1;
    }
    return words;
}

std::string mdoc_lines(std::string_view text)
{
    std::string all;
    for (const Span& span : spans_of(text)) {
        all += span_text(span);
    }
    std::string lines;
    std::string sentence;
    std::istringstream words(all);
    const auto end_sentence = [&] {
        std::istringstream broken(wrapped(sentence, kColumns, 0));
        for (std::string line; std::getline(broken, line);) {
            lines += shielded(line) + "\n";
        }
        sentence.clear();
    };
    for (std::string word; words >> word;) {
        sentence.append(sentence.empty() ? "" : " ").append(word);
        if (ends_sentence(word)) {
            end_sentence();
        }
    }
    end_sentence();
    return lines;
}

std::string mdoc_blocks(std::string_view markdown)
{
    std::string page;
    const std::vector<Block> blocks = blocks_of(markdown);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const Block& block = blocks[i];
        const bool begins = i == 0 || block.first;
        if (begins && (i > 0 || block.kind != Block::Kind::Paragraph)) {
            page += opening(block);
        }
        page += content(block);
        if (i + 1 == blocks.size() || blocks[i + 1].first || blocks[i + 1].kind != block.kind) {
            page += closing(block.kind);
        }
    }
    return page;
}

}  // namespace bgp_rehearse::manual
