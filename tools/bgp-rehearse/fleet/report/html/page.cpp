#include "fleet/report/html/page.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

#include "fleet/report/html/data.h"
#include "judge/words.h"
#include "report/html/assets.h"
#include "report/html/markup.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kMostReasons = 1000;  // in the table; more would be slow to open

std::string percent(std::size_t part, std::size_t all)
{
    return fmt::format("{:.2f}%", all == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(all));
}

class FleetPage {
public:
    FleetPage(const FleetSummary& summary, const Database& database, std::string name, int file)
        : summary_(summary), database_(database), name_(std::move(name)), page_(file)
    {
    }

    bool write();

private:
    const RouterCount& worst() const;
    std::string about(const char* key) const;
    void section(const char* id, const char* title);
    void verdict();
    void counts();
    void reasons();
    void reason_tools();
    void reason_row(std::size_t number);
    void reason_sum();
    void routers();
    void choice(const char* id, const char* label, const std::vector<std::pair<std::string, std::string>>& choices);
    void steps();
    void step(const StepCount& step);
    void inputs();

    const FleetSummary& summary_;
    const Database& database_;
    const std::string name_;
    Markup page_;
};

// The worst verdict that any router has.
const RouterCount& FleetPage::worst() const
{
    const auto found = std::find_if(summary_.verdicts.begin(), summary_.verdicts.end(),
                                    [](const RouterCount& each) { return each.routers > 0; });
    return found == summary_.verdicts.end() ? summary_.verdicts.back() : *found;
}

std::string FleetPage::about(const char* key) const
{
    const auto found = summary_.about.find(key);
    return found == summary_.about.end() ? std::string() : found->second;
}

void FleetPage::section(const char* id, const char* title)
{
    const std::string label = std::string(id) + "-title";
    page_.open("section", {{"id", id}, {"aria-labelledby", label}}).line("h2", title, {{"id", label}});
}

void FleetPage::verdict()
{
    const std::string word = worst().what;
    const char* const kind = word == "REVIEW" ? "review" : word == "SAFE" ? "safe" : "stop";
    page_.open("header", {{"id", "verdict"}, {"class", kind}});
    const std::string library = std::filesystem::path(about("library_path")).filename();
    page_.open("p", {{"class", "about"}}).text("Rehearsal of the upgrade of a fleet with ");
    page_.foreign(library + " " + about("library_version")).close();
    page_.open("h1").line("span", fmt::format("{} {}", grouped(worst().routers), word), {{"class", "word"}});
    page_.text(fmt::format("of {}", counted(summary_.routers, {"router", "routers"}))).close();
    page_.open("p", {{"class", "reason"}});
    page_.text(fmt::format("{}, {} without any reason to look.",
                           counted(summary_.reasons.size(), {"reason to look", "reasons to look"}),
                           grouped(summary_.routers - summary_.with_reasons)));
    page_.close();
    counts();
    page_.close();
}

// Each leads to the routers that it counts.
void FleetPage::counts()
{
    page_.open("ul", {{"class", "counts"}, {"aria-label", "Verdicts"}});
    for (const RouterCount& each : summary_.verdicts) {
        page_.open("li").open("a", {{"href", "#routers"}, {"data-verdict", each.what}});
        page_.line("strong", grouped(each.routers)).text(each.what).close().close();
    }
    page_.close().open("p", {{"class", "hint"}}).text("Backups: ");
    for (const RouterCount& each : summary_.classes) {
        page_.text(&each == &summary_.classes.front() ? "" : ", ").text(grouped(each.routers) + " ");
        page_.line("a", each.what, {{"href", "#routers"}, {"data-kind", each.what}});
    }
    page_.close();
}

void FleetPage::reasons()
{
    section("reasons", "Reasons to look, the worst first");
    if (summary_.reasons.empty()) {
        page_.line("p", "None: no router needs a look.").close();
        return;
    }
    reason_tools();
    page_.open("table", {{"id", "reasons-table"}}).open("thead").open("tr");
    for (const char* head : {"Severity", "Routers", "Reason"}) {
        page_.line("th", head, {{"scope", "col"}});
    }
    page_.close().close().open("tbody");
    for (std::size_t i = 0; i < summary_.reasons.size() && i < kMostReasons; ++i) {
        reason_row(i + 1);
    }
    page_.close();
    reason_sum();
    page_.close().close();
}

void FleetPage::reason_tools()
{
    page_.open("div", {{"id", "reason-tools"}, {"class", "tools"}, {"hidden", ""}});
    page_.open("label", {{"class", "choice"}}).text("Search reasons ");
    page_.element("input", {{"id", "reason-search"}, {"type", "search"}, {"autocomplete", "off"}}).close();
    choice("reason-severity", "Severity", {{"", "any"}, {"stop", "stop"}, {"review", "review"}, {"note", "note"}});
    page_.close().open("p", {{"id", "reason-matches"}, {"role", "status"}}).close();
}

// The bar is the part of the fleet that has the reason.
void FleetPage::reason_row(std::size_t number)
{
    const ReasonCount& reason = summary_.reasons[number - 1];
    page_.open("tr", {{"id", fmt::format("reason-{}", number)}, {"class", reason.severity}});
    page_.open("td").line("span",
                          reason.severity == "note"   ? "note"
                          : reason.severity == "stop" ? "STOP"
                                                      : "REVIEW",
                          {{"class", "severity"}});
    page_.close().open("td", {{"class", "number"}, {"data-label", "routers"}});
    page_.line("a", grouped(reason.routers), {{"href", "#routers"}, {"data-reason", std::to_string(number)}});
    page_.open("svg", {{"class", "bar"}, {"width", "100%"}, {"height", "10"}, {"aria-hidden", "true"}});
    page_.open("rect", {{"width", percent(reason.routers, summary_.routers)}, {"height", "10"}}).close().close();
    page_.close().open("td").foreign(reason.text).text(" ").line("code", reason.finding);
    page_.open("span", {{"class", "examples"}});
    for (const std::string& each : reason.examples) {
        page_.text(&each == &reason.examples.front() ? "" : ", ").foreign(each);
    }
    const std::size_t more = reason.routers - reason.examples.size();
    page_.text(more > 0 ? fmt::format(" and {} more", grouped(more)) : "").close().close().close();
}

void FleetPage::reason_sum()
{
    std::size_t sum = 0;
    for (const ReasonCount& each : summary_.reasons) {
        sum += each.routers;
    }
    page_.open("tfoot")
        .open("tr")
        .line("th", "Together", {{"scope", "row"}})
        .line("td", grouped(sum), {{"class", "number"}});
    std::string text = fmt::format("{} with reasons, each counted under every one that it has; {} without",
                                   counted(summary_.with_reasons, {"router", "routers"}),
                                   grouped(summary_.routers - summary_.with_reasons));
    if (summary_.reasons.size() > kMostReasons) {
        text +=
            fmt::format("; {} reasons of fewer routers are not shown", grouped(summary_.reasons.size() - kMostReasons));
    }
    page_.line("td", text).close().close();
}

// Of pairs of a value and its words.
void FleetPage::choice(const char* id, const char* label,
                       const std::vector<std::pair<std::string, std::string>>& choices)
{
    page_.open("label", {{"class", "choice"}}).text(std::string(label) + " ").open("select", {{"id", id}});
    for (const auto& [value, text] : choices) {
        page_.line("option", text, {{"value", value}});
    }
    page_.close().close();
}

void FleetPage::routers()
{
    section("routers", "Routers");
    page_.open("noscript").line("p", "The list needs a browser that runs this page's script.").close();
    page_.open("div", {{"id", "routers-view"}, {"hidden", ""}}).open("div", {{"class", "tools"}});
    page_.open("label", {{"class", "choice"}}).text("Search ");
    page_.element("input", {{"id", "search"}, {"type", "search"}, {"autocomplete", "off"}}).close();
    std::vector<std::pair<std::string, std::string>> verdicts = {{"", "any"}};
    for (const char* each : kVerdicts) {
        verdicts.emplace_back(std::to_string(verdicts.size()), each);
    }
    choice("filter-verdict", "Verdict", verdicts);
    std::vector<std::pair<std::string, std::string>> classes = {{"", "any"}};
    for (const char* each : kInputClasses) {
        classes.emplace_back(std::to_string(classes.size()), each);
    }
    choice("filter-kind", "Backup", classes);
    std::vector<std::pair<std::string, std::string>> reasons = {{"", "any"}};
    for (const ReasonCount& each : summary_.reasons) {
        reasons.emplace_back(std::to_string(reasons.size()), each.severity + ": " + each.text);
    }
    choice("filter-reason", "Reason", reasons);
    page_.line("button", "Clear", {{"id", "clear"}, {"type", "button"}}).close();
    page_.open("p", {{"id", "matches"}, {"role", "status"}}).close().open("div", {{"class", "panes"}});
    page_.open("div", {{"id", "router-lines"}, {"role", "listbox"}, {"aria-label", "Routers"}}).close();
    page_.open("div", {{"id", "detail"}, {"aria-label", "The chosen router"}}).close().close().close().close();
}

void FleetPage::steps()
{
    section("steps", "Steps of the upgrade");
    if (summary_.steps.empty()) {
        page_.line("p", "No router tells of any.").close();
        return;
    }
    page_.open("table", {{"id", "steps-table"}}).open("thead").open("tr").line("th", "Step", {{"scope", "col"}});
    for (const char* outcome : kOutcomes) {
        page_.line("th", outcome, {{"scope", "col"}});
    }
    page_.line("th", "not told", {{"scope", "col"}}).close().close().open("tbody");
    for (const StepCount& each : summary_.steps) {
        step(each);
    }
    page_.close().close().close();
}

void FleetPage::step(const StepCount& step)
{
    page_.open("tr").open("th", {{"scope", "row"}}).line("code", step.name).close();
    const auto count = [this](std::size_t number, const char* label) {
        page_.line("td", number == 0 ? "" : grouped(number), {{"class", "number"}, {"data-label", label}});
    };
    for (const char* outcome : kOutcomes) {
        const auto found = step.outcomes.find(outcome);
        count(found == step.outcomes.end() ? 0 : found->second, outcome);
    }
    count(step.not_told, "not told");
    page_.close();
}

// What made this report, so that it can be made again.
void FleetPage::inputs()
{
    page_.open("footer").line("h2", "Made from").open("dl");
    page_.line("dt", "Database").open("dd").foreign(name_).close();
    page_.line("dt", "Plan").open("dd").line("code", about("plan")).close();
    page_.line("dt", "Library").open("dd").foreign(about("library_path")).text(" SHA-256 ");
    page_.line("code", about("library_sha256")).close();
    page_.line("dt", "Options").open("dd").line("code", about("options")).close();
    page_.line("dt", "Command").line("dd", "bgp-rehearse " + about("command_version")).close().close();
}

bool FleetPage::write()
{
    const Assets assets = fleet_assets();
    write_head(fmt::format("{} {} of {} - upgrade rehearsal", grouped(worst().routers), worst().what,
                           counted(summary_.routers, {"router", "routers"})),
               assets, &page_);
    page_.open("body").line("a", "Skip to the reasons", {{"class", "skip"}, {"href", "#reasons"}});
    write_navigation({{"#reasons", "Reasons"}, {"#routers", "Routers"}, {"#steps", "Steps"}}, &page_);
    page_.open("main");
    verdict();
    reasons();
    routers();
    steps();
    page_.close();
    inputs();
    write_fleet_data(summary_, database_, name_, &page_);
    write_scripts(assets, &page_);
    page_.close().close();
    return page_.finish();
}

}  // namespace

bool write_fleet_page(const FleetSummary& summary, const Database& database, const std::string& name, int file)
{
    return FleetPage(summary, database, name, file).write();
}

}  // namespace bgp_rehearse
