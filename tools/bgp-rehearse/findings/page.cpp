#include "findings/page.h"

#include <algorithm>
#include <optional>

#include "base/markdown.h"

namespace bgp_rehearse {

namespace {

constexpr std::string_view kChapter = "\n## Findings\n";
constexpr std::string_view kNextChapter = "\n## ";
constexpr std::string_view kHeading = "\n### ";

// From `at` up to `end`, or to the text's end where that is not.
std::string_view up_to(std::string_view text, std::size_t at, std::string_view end)
{
    return text.substr(at, std::min(text.find(end, at), text.size()) - at);
}

std::string_view without_line_ends(std::string_view text)
{
    const std::size_t first = std::min(text.find_first_not_of('\n'), text.size());
    return text.substr(first, text.find_last_not_of('\n') + 1 - first);
}

std::string on_one_line(std::string_view text)
{
    std::string line(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

// What stands between the first marks and the next ones.
std::string_view marked(std::string_view text, std::string_view mark)
{
    const std::size_t first = text.find(mark);
    return first == std::string_view::npos ? std::string_view() : up_to(text, first + mark.size(), mark);
}

std::vector<Severity> severities_in(std::string_view text)
{
    std::vector<Severity> severities;
    for (std::size_t at = 0; (at = text.find('`', at)) != std::string_view::npos;) {
        const std::string_view code = up_to(text, at + 1, "`");
        if (const std::optional<Severity> severity = severity_named(code)) {
            severities.push_back(*severity);
        }
        at = std::min(at + code.size() + 2, text.size());
    }
    return severities;
}

FindingSection section(std::string_view id, std::string_view text)
{
    const std::string_view first = up_to(text, 0, "\n\n");
    const std::string_view sentence = marked(first, kBold);
    return {id, on_one_line(up_to(sentence, 0, ".")), severities_in(first), text};
}

}  // namespace

std::vector<FindingSection> finding_sections(std::string_view page)
{
    std::vector<FindingSection> sections;
    const std::size_t start = page.find(kChapter);
    if (start == std::string_view::npos) {
        return sections;
    }
    const std::string_view chapter = up_to(page, start + kChapter.size() - 1, kNextChapter);
    for (std::size_t at = chapter.find(kHeading); at != std::string_view::npos; at = chapter.find(kHeading, at)) {
        at += kHeading.size();
        const std::string_view whole = up_to(chapter, at, kHeading);
        const std::string_view id = up_to(whole, 0, "\n");
        sections.push_back(section(id, without_line_ends(whole.substr(id.size()))));
    }
    return sections;
}

}  // namespace bgp_rehearse
