// The findings of a page, the severest first, each with its places. A place that is a changed row leads to it, a call that
// failed to the log.
#include <fmt/format.h>

#include <algorithm>

#include "judge/words.h"
#include "report/html/parts.h"

namespace bgp_rehearse {

namespace {

// More would make a page of a large router slow to open; the changes show all rows.
constexpr std::size_t kMostPlaces = 100;

const char* word_of(Severity severity) noexcept
{
    return severity == Severity::Note ? "note" : severity == Severity::Review ? "REVIEW" : "STOP";
}

class Findings {
public:
    Findings(const Report& report, const RowNumbers& numbers, Markup* page)
        : report_(report), numbers_(numbers), page_(*page)
    {
    }

    void write();

private:
    void write(const Finding& finding, std::size_t number);
    void step(const Finding& finding);
    void places(const Finding& finding, std::size_t rows);
    void place(const Finding& finding, const Place& place);
    void to_changes(std::size_t number, std::size_t rows);

    const Report& report_;
    const RowNumbers& numbers_;
    Markup& page_;
};

void Findings::write()
{
    page_.open("section", {{"id", "findings"}, {"aria-labelledby", "findings-title"}});
    page_.line("h2", "Findings", {{"id", "findings-title"}});
    const std::vector<Finding>& findings = report_.judgement->findings;
    if (findings.empty()) {
        page_.line("p", "None: nothing needs a look.");
    } else {
        page_.open("p", {{"class", "hint"}}).line("code", "bgp-rehearse findings ID");
        page_.text(" tells what a finding means and what to do.").close();
    }
    for (std::size_t i = 0; i < findings.size(); ++i) {
        write(findings[i], i + 1);
    }
    page_.close();
}

void Findings::write(const Finding& finding, std::size_t number)
{
    const std::string id = fmt::format("finding-{}", number);
    const std::string title = id + "-title";
    page_.open("article", {{"id", id}, {"class", name_of(finding.severity)}, {"aria-labelledby", title}});
    page_.open("h3", {{"id", title}}).line("span", word_of(finding.severity), {{"class", "severity"}});
    page_.text(" ").foreign(finding.sentence).close();
    if (!finding.advice.empty()) {
        page_.open("p", {{"class", "advice"}}).foreign(finding.advice).close();
    }
    page_.open("p", {{"class", "about"}}).line("code", name_of(finding.id));
    step(finding);
    if (finding.id == FindingId::Ended && !report_.log.empty()) {
        page_.text(" \xc2\xb7 ").line("a", "the last line of the log", {{"href", link_to_line(report_.log.size())}});
    }
    const std::size_t rows = numbers_.of(finding).size();
    to_changes(number, rows);
    page_.close();
    places(finding, rows);
    page_.close();
}

void Findings::step(const Finding& finding)
{
    const auto step = std::find_if(report_.steps.begin(), report_.steps.end(),
                                   [&finding](const Step& each) { return each.name == finding.step; });
    if (step != report_.steps.end()) {
        page_.text(" in ").line("a", step->title, {{"href", link_to_step(report_, finding.step)}});
    }
}

void Findings::to_changes(std::size_t number, std::size_t rows)
{
    if (rows > 0) {
        const std::string finding = std::to_string(number);
        page_.text(" \xc2\xb7 ")
            .line("a", fmt::format("show {} among the changes", counted(rows, {"row", "rows"})),
                  {{"href", "#changes"}, {"data-finding", finding}});
    }
}

void Findings::places(const Finding& finding, std::size_t rows)
{
    if (finding.places.empty()) {
        return;
    }
    const std::size_t shown = std::min(finding.places.size(), kMostPlaces);
    page_.open("details").line("summary", counted(finding.places.size(), {"place", "places"}));
    page_.open("ul", {{"class", "places"}});
    for (std::size_t i = 0; i < shown; ++i) {
        place(finding, finding.places[i]);
    }
    page_.close();
    if (shown < finding.places.size()) {
        page_.line("p",
                   fmt::format("{} more are not listed here: {}--json has all.", grouped(finding.places.size() - shown),
                               rows > 0 ? "the changes show the rows, and " : ""));
    }
    page_.close();
}

void Findings::place(const Finding& finding, const Place& place)
{
    const std::string words = words_of(finding, place);
    const std::string path = path_of(finding, place);
    const std::size_t number = numbers_.of(place);
    page_.open("li");
    if (number > 0) {
        page_.open("a", {{"href", link_to_row(number)}}).foreign(words).close();
    } else if (!words.empty() && words != path) {
        page_.foreign(words);
    }
    if (!path.empty()) {
        page_.text(" ").open("code").foreign(path).close();
    }
    if (place.log_line > 0 && !report_.log.empty()) {
        page_.text(" ").line("a", fmt::format("failed after line {} of the log", grouped(place.log_line)),
                             {{"href", link_to_line(place.log_line)}});
    }
    page_.close();
}

}  // namespace

void write_findings(const Report& report, const RowNumbers& numbers, Markup* page)
{
    Findings(report, numbers, page).write();
}

std::string link_to_line(std::size_t line)
{
    return fmt::format("#log-{}", line);
}

}  // namespace bgp_rehearse
