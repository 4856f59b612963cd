// The steps of the upgrade: on a line by their calls, and as a table with what came of each and which writes failed.
#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "judge/words.h"
#include "report/html/parts.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::Class;

constexpr std::size_t kMostFailures = 100;  // told of a step; the JSON report has all
constexpr double kWhole = 100;
constexpr double kNarrowestNumbered = 2.5;  // of the whole line: a part that has room for its number

// The writes of a step that failed.
struct Failures {
    std::size_t unexpected = 0;
    std::size_t all = 0;
    std::vector<FailedCalls::Call> told;  // the first of them
};

bool is_usual(const Failures& failures)
{
    return failures.all > 0 && failures.unexpected == 0;
}

std::size_t calls_of(const Step& step)
{
    return step.calls.reads + step.calls.writes;
}

bool is_bad(StepOutcome outcome)
{
    return outcome == StepOutcome::CannotRun || outcome == StepOutcome::Failed || outcome == StepOutcome::Ended;
}

class Steps {
public:
    Steps(const Report& report, Markup* page);

    void write();

private:
    void line();
    void part(std::size_t number, double from, double width);
    void table();
    void row(std::size_t number);
    void what_came_of(const Step& step);
    void failed_writes(const Failures& failures);
    void failed_write(const FailedCalls::Call& call);
    void number(const char* what, std::size_t count, bool ran);
    std::string failed_words(std::size_t number) const;
    std::size_t log_line_of(std::size_t number) const;

    const Report& report_;
    Markup& page_;
    std::vector<Failures> failures_;  // by step
};

Steps::Steps(const Report& report, Markup* page) : report_(report), page_(*page), failures_(report.steps.size())
{
    if (report.failed_calls == nullptr) {
        return;
    }
    report.failed_calls->for_each([&](const FailedCalls::Call& call) {
        const auto step = std::find_if(report.steps.begin(), report.steps.end(),
                                       [&call](const Step& each) { return std::string_view(each.name) == call.step; });
        if (!call.is_write() || step == report.steps.end()) {
            return;
        }
        Failures& failures = failures_[static_cast<std::size_t>(step - report.steps.begin())];
        ++failures.all;
        failures.unexpected += !call.known || call.kind != Class::Expected ? 1 : 0;
        if (failures.told.size() < kMostFailures) {
            failures.told.push_back(call);
        }
    });
}

void Steps::write()
{
    page_.open("section", {{"id", "steps"}, {"aria-labelledby", "steps-title"}});
    page_.line("h2", "Steps", {{"id", "steps-title"}});
    if (report_.steps.empty()) {
        page_.line("p", "The log tells of none.");
    } else {
        line();
        table();
    }
    page_.close();
}

// "9 of 39 writes failed, as on every such router"
std::string Steps::failed_words(std::size_t number) const
{
    const CallTotals& calls = report_.steps[number].calls;
    const Failures& failures = failures_[number];
    const char* const as_usual = is_usual(failures) ? ", as on every such router" : "";
    return fmt::format("{} of {} failed{}", grouped(calls.failed_writes), counted(calls.writes, {"write", "writes"}),
                       as_usual);
}

void Steps::line()
{
    std::size_t all = 0;
    for (const Step& step : report_.steps) {
        all += calls_of(step);
    }
    if (all == 0) {
        return;
    }
    const std::string words = fmt::format("The {} of the upgrade, step by step; the table has the numbers",
                                          counted(all, {"read or write", "reads and writes"}));
    page_.open("figure").open(
        "svg", {{"class", "line"}, {"role", "img"}, {"width", "100%"}, {"height", "44"}, {"aria-label", words}});
    double from = 0;
    for (std::size_t i = 0; i < report_.steps.size(); ++i) {
        const double width = kWhole * static_cast<double>(calls_of(report_.steps[i])) / static_cast<double>(all);
        if (width > 0) {
            part(i, from, width);
        }
        from += width;
    }
    page_.close().open("figcaption");
    page_.text(fmt::format("{} from the first to the last, by the numbers of the steps below. ",
                           counted(all, {"read or write", "reads and writes"})));
    const auto any = [this](bool usual) {
        bool found = false;
        for (std::size_t i = 0; i < report_.steps.size(); ++i) {
            found = found || (report_.steps[i].calls.failed_writes > 0 && is_usual(failures_[i]) == usual);
        }
        return found;
    };
    if (any(false)) {
        page_.line("span", "▼ writes failed", {{"class", "unexpected"}}).text(" ");
    }
    if (any(true)) {
        page_.line("span", "▽ writes failed as on every such router", {{"class", "expected"}});
    }
    page_.close().close();
}

void Steps::part(std::size_t number, double from, double width)
{
    const Step& step = report_.steps[number];
    const Failures& failures = failures_[number];
    const std::string middle = fmt::format("{:.3f}%", from + width / 2);
    const bool failed = step.calls.failed_writes > 0;
    page_.open("g", {{"class", is_bad(step.outcome) ? "step bad" : number % 2 == 0 ? "step" : "step odd"}});
    page_.line("title", fmt::format("{}. {}: {}{}{}", number + 1, step.title,
                                    counted(calls_of(step), {"read or write", "reads and writes"}), failed ? "; " : "",
                                    failed ? failed_words(number) : ""));
    page_
        .open("rect", {{"x", fmt::format("{:.3f}%", from)},
                       {"y", "16"},
                       {"width", fmt::format("{:.3f}%", width)},
                       {"height", "28"}})
        .close();
    if (width >= kNarrowestNumbered) {
        page_.line("text", std::to_string(number + 1), {{"x", middle}, {"y", "35"}, {"text-anchor", "middle"}});
    }
    if (failed) {
        const bool usual = is_usual(failures);
        page_.line(
            "text", usual ? "▽" : "▼",
            {{"class", usual ? "expected" : "unexpected"}, {"x", middle}, {"y", "12"}, {"text-anchor", "middle"}});
    }
    page_.close();
}

void Steps::table()
{
    page_.open("table", {{"id", "steps-table"}, {"role", "table"}, {"aria-labelledby", "steps-title"}});
    page_.open("thead", {{"role", "rowgroup"}}).open("tr", {{"role", "row"}});
    for (const char* const name : {"#", "Step", "What came of it", "Reads", "Writes"}) {
        page_.line("th", name, {{"scope", "col"}, {"role", "columnheader"}});
    }
    page_.close().close().open("tbody", {{"role", "rowgroup"}});
    for (std::size_t i = 0; i < report_.steps.size(); ++i) {
        row(i);
    }
    page_.close().close();
}

void Steps::row(std::size_t number)
{
    const Step& step = report_.steps[number];
    const std::string id = fmt::format("step-{}", number + 1);
    page_.open("tr", {{"id", id},
                      {"role", "row"},
                      {"class", step.runs == 0         ? "idle"
                                : is_bad(step.outcome) ? "bad"
                                                       : "ran"}});
    page_.open("td", {{"class", "number"}, {"role", "cell"}}).text(std::to_string(number + 1)).close();
    page_.open("th", {{"scope", "row"}, {"role", "rowheader"}}).text(step.title).text(" ");
    page_.line("code", step.name).close();
    page_.open("td", {{"role", "cell"}});
    what_came_of(step);
    if (const std::size_t line = log_line_of(number + 1); line > 0) {
        page_.text(" ").line("a", "its log", {{"href", link_to_line(line)}});
    }
    failed_writes(failures_[number]);
    page_.close();
    this->number("reads", step.calls.reads, step.runs > 0);
    this->number("writes", step.calls.writes, step.runs > 0);
    page_.close();
}

void Steps::what_came_of(const Step& step)
{
    page_.line("span", name_of(step.outcome), {{"class", "outcome"}});
    if (step.runs > 1) {
        page_.text(fmt::format(" {} times", grouped(step.runs)));
    }
    if (report_.times.calls_given && step.runs > 0) {
        page_.text(fmt::format(", {}", words_of(time_of(step.calls, report_.times))));
    }
    if (!step.text.empty()) {
        page_.text(" - ").foreign(step.text);
    }
}

void Steps::failed_writes(const Failures& failures)
{
    if (failures.all == 0) {
        return;
    }
    const char* const usual = is_usual(failures) ? ", as on every such router" : "";
    page_.open("details").line("summary",
                               fmt::format("{} failed{}", counted(failures.all, {"write", "writes"}), usual));
    page_.open("ul", {{"class", "places"}});
    for (const FailedCalls::Call& call : failures.told) {
        failed_write(call);
    }
    page_.close();
    if (failures.told.size() < failures.all) {
        page_.line("p", fmt::format("{} more are not listed here: --json has all.",
                                    grouped(failures.all - failures.told.size())));
    }
    page_.close();
}

void Steps::failed_write(const FailedCalls::Call& call)
{
    page_.open("li").text(call.sentence);
    if (!call.message.empty()) {
        page_.text(*call.sentence == '\0' ? "" : ": ").foreign(call.message);
    }
    page_.text(" ").open("code").foreign(call.path).close();
    if (call.log_line > 0 && !report_.log.empty()) {
        page_.text(" ").line("a", fmt::format("after line {} of the log", grouped(call.log_line)),
                             {{"href", link_to_line(call.log_line)}});
    }
    page_.close();
}

// Of a step that did not run there is nothing to count.
void Steps::number(const char* what, std::size_t count, bool ran)
{
    page_.open("td", {{"class", "number"}, {"role", "cell"}, {"data-label", what}});
    page_.text(ran ? grouped(count) : "").close();
}

// Where its part of the log begins; 0 where it has none.
std::size_t Steps::log_line_of(std::size_t number) const
{
    const auto part = std::find_if(report_.log_parts.begin(), report_.log_parts.end(),
                                   [number](const LogPart& each) { return each.step == number; });
    return part == report_.log_parts.end() ? 0 : part->first;
}

}  // namespace

void write_steps(const Report& report, Markup* page)
{
    Steps(report, page).write();
}

std::string link_to_step(const Report& report, const std::string& name)
{
    for (std::size_t i = 0; i < report.steps.size(); ++i) {
        if (report.steps[i].name == name) {
            return fmt::format("#step-{}", i + 1);
        }
    }
    return {};
}

}  // namespace bgp_rehearse
