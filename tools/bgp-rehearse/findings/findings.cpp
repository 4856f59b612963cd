#include "findings/findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "base/nearest.h"
#include "base/standard_output.h"
#include "base/terminal.h"
#include "base/text_escape.h"
#include "base/wrap.h"
#include "findings/page.h"
#include "findings/plain_text.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kUsualColumns = 100;  // where standard output is no terminal
constexpr std::size_t kIds = 24;            // room for the longest
constexpr std::size_t kSeverities = 20;     // and for all three

std::string names_of(const std::vector<Severity>& severities)
{
    std::string names;
    for (const Severity severity : severities) {
        names.append(names.empty() ? "" : ", ").append(name_of(severity));
    }
    return names;
}

std::string list_of(const std::vector<FindingSection>& sections, std::size_t columns)
{
    std::string text;
    for (const FindingSection& section : sections) {
        const std::string line = fmt::format("{:<{}}{:<{}}{}", section.id, kIds, names_of(section.severities),
                                             kSeverities, section.sentence);
        text.append(wrapped(line, columns, kIds + kSeverities)).append(1, '\n');
    }
    return text + "bgp-rehearse findings ID tells what each means and what to do.\n";
}

std::string text_of(const std::vector<FindingSection>& sections, const std::string& id, std::size_t columns)
{
    const auto found = std::find_if(sections.begin(), sections.end(),
                                    [&id](const FindingSection& section) { return section.id == id; });
    if (found != sections.end()) {
        return fmt::format("{}\n\n{}", id, plain_text(found->text, columns));
    }
    std::vector<std::string> ids;
    std::transform(sections.begin(), sections.end(), std::back_inserter(ids),
                   [](const FindingSection& section) { return std::string(section.id); });
    const std::string meant = did_you_mean(id, ids);
    throw CommandError(ExitStatus::BadInput, fmt::format("no finding has the id \"{}\"{}", escaped(id),
                                                         meant.empty() ? "; bgp-rehearse findings lists all" : meant));
}

}  // namespace

ExitStatus tell_findings(const FindingsOptions& options)
{
    const std::vector<FindingSection> sections = finding_sections(builtin_page());
    const std::size_t columns = line_columns().value_or(kUsualColumns);
    print_out(options.id.empty() ? list_of(sections, columns) : text_of(sections, options.id, columns));
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse
