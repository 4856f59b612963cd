#include "fleet/report/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "base/text_escape.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kShown = 50;   // reasons, and ways to differ
constexpr std::size_t kWords = 12;   // columns of a verdict or a severity, its indent with it
constexpr std::size_t kCounts = 10;  // of a count
constexpr std::size_t kTexts = kWords + kCounts + 2;
constexpr std::size_t kOutcome = 15;  // of the count of an outcome

Paint paint_of(std::string_view word)
{
    return word == "STOP" || word == "REFUSED" || word == "stop" ? Paint::Red
           : word == "REVIEW" || word == "review"                ? Paint::Yellow
                                                                 : Paint::Plain;
}

std::string shown(const std::string& severity)
{
    return severity == "stop" ? "STOP" : severity == "review" ? "REVIEW" : severity;
}

// "0.3 %"; not 0 where there is one, and not 100 where one is missing.
std::string share(std::size_t part, std::size_t all)
{
    if (all == 0) {
        return {};
    }
    const double percent = 100.0 * static_cast<double>(part) / static_cast<double>(all);
    if (part > 0 && percent < 0.1) {
        return "< 0.1 %";
    }
    return part < all && percent > 99.9 ? "> 99.9 %" : fmt::format("{:.1f} %", percent);
}

// "a.xml, b.xml, c.xml and 9 more"
std::string examples_of(const std::vector<std::string>& examples, std::size_t routers)
{
    std::string text = escaped(fmt::format("{}", fmt::join(examples, ", ")));
    if (routers > examples.size()) {
        text += fmt::format(" and {} more", grouped(routers - examples.size()));
    }
    return text;
}

constexpr char kNotTold[] = "not told";

std::size_t routers_with(const StepCount& step, const std::string& outcome)
{
    if (outcome == kNotTold) {
        return step.not_told;
    }
    const auto found = step.outcomes.find(outcome);
    return found == step.outcomes.end() ? 0 : found->second;
}

// Those that any router has for any step.
std::vector<std::string> outcomes_of(const std::vector<StepCount>& steps)
{
    std::vector<std::string> outcomes(kOutcomes.begin(), kOutcomes.end());
    outcomes.emplace_back(kNotTold);
    const auto nobody = [&steps](const std::string& outcome) {
        return std::all_of(steps.begin(), steps.end(),
                           [&](const StepCount& step) { return routers_with(step, outcome) == 0; });
    };
    outcomes.erase(std::remove_if(outcomes.begin(), outcomes.end(), nobody), outcomes.end());
    return outcomes;
}

class SummaryText {
public:
    SummaryText(const FleetSummary& summary, const std::string& opens, Page* page)
        : summary_(summary), opens_(opens), page_(page), outcomes_(outcomes_of(summary.steps))
    {
    }

    void add()
    {
        headline();
        counts("Verdicts", summary_.verdicts, "--verdict");
        reasons();
        counts("Backups", summary_.classes, "--class");
        steps();
        page_->line(fmt::format("Each line opens its list: {} with the option at its right", opens_));
    }

private:
    void title(const std::string& text) { page_->line(page_->painted(text, Paint::Bold)); }
    void headline();
    void about();
    void counts(const char* name, const std::vector<RouterCount>& counts, const char* option);
    void count(const RouterCount& count, const char* option);
    void reasons();
    void reason(const ReasonCount& reason);
    void reasons_sum();
    void steps();
    void step(const StepCount& step);

    const FleetSummary& summary_;
    const std::string& opens_;
    Page* page_;
    const std::vector<std::string> outcomes_;  // of the steps
};

void SummaryText::headline()
{
    std::vector<std::string> verdicts;
    for (const RouterCount& each : summary_.verdicts) {
        verdicts.push_back(fmt::format("{} {}", grouped(each.routers), each.what));
    }
    title(fmt::format("Fleet of {}: {}", counted(summary_.routers, {"router", "routers"}), fmt::join(verdicts, ", ")));
    about();
}

void SummaryText::about()
{
    const auto said = [this](const char* key) {
        const auto found = summary_.about.find(key);
        return found == summary_.about.end() ? std::string() : escaped(found->second);
    };
    const std::string library = std::filesystem::path(said("library_path")).filename();
    page_->line({2, "library    ", Paint::Plain, fmt::format("{} {}", library, said("library_version")), 13, {}});
}

void SummaryText::counts(const char* name, const std::vector<RouterCount>& all, const char* option)
{
    title(fmt::format("{:<{}}{:>{}}", name, kWords, "routers", kCounts));
    for (const RouterCount& each : all) {
        count(each, option);
    }
    page_->line(fmt::format("  {:<{}}{:>{}}", "together", kWords - 2, grouped(summary_.routers), kCounts));
}

void SummaryText::count(const RouterCount& count, const char* option)
{
    const std::string mark = fmt::format("{:<{}}{:>{}}  ", count.what, kWords - 2, grouped(count.routers), kCounts);
    const std::string opens = count.routers > 0 ? fmt::format("{} {}", option, count.what) : std::string();
    page_->line({2, mark, count.routers > 0 ? paint_of(count.what) : Paint::Plain,
                 fmt::format("{:>8}", share(count.routers, summary_.routers)), 2, opens});
}

void SummaryText::reasons()
{
    if (summary_.reasons.empty()) {
        title("Reasons: none");
        return;
    }
    title(fmt::format("{:<{}}{:>{}}", "Reasons", kWords, "routers", kCounts));
    for (std::size_t i = 0; i < summary_.reasons.size() && i < kShown; ++i) {
        reason(summary_.reasons[i]);
    }
    if (summary_.reasons.size() > kShown) {
        page_->line(fmt::format("  and {} more reasons: --csv, --json", grouped(summary_.reasons.size() - kShown)));
    }
    reasons_sum();
}

void SummaryText::reason(const ReasonCount& reason)
{
    const std::string mark =
        fmt::format("{:<{}}{:>{}}  ", shown(reason.severity), kWords - 2, grouped(reason.routers), kCounts);
    page_->line({2, mark, paint_of(reason.severity), escaped(reason.text), kTexts, escaped(reason.finding)});
    page_->line({kTexts,
                 {},
                 Paint::Plain,
                 examples_of(reason.examples, reason.routers),
                 kTexts,
                 fmt::format("--reason {} --severity {}", reason.name, reason.severity)});
}

void SummaryText::reasons_sum()
{
    std::size_t sum = 0;
    for (const ReasonCount& each : summary_.reasons) {
        sum += each.routers;
    }
    const std::string mark = fmt::format("{:<{}}{:>{}}  ", "together", kWords - 2, grouped(sum), kCounts);
    page_->line({2,
                 mark,
                 Paint::Plain,
                 fmt::format("{} with reasons, each counted under every one that it has; {} without",
                             counted(summary_.with_reasons, {"router", "routers"}),
                             grouped(summary_.routers - summary_.with_reasons)),
                 kTexts,
                 {}});
}

void SummaryText::steps()
{
    if (summary_.steps.empty()) {
        title("Steps: no router tells of any");
        return;
    }
    std::string names = fmt::format("{:<{}}", "Steps", kStepColumns);
    for (const std::string& outcome : outcomes_) {
        names += fmt::format("{:>{}}", outcome, kOutcome);
    }
    title(names);
    for (const StepCount& each : summary_.steps) {
        step(each);
    }
    page_->line(
        fmt::format("  each line comes to {}   --step NAME --outcome \"nothing to do\"", grouped(summary_.routers)));
}

void SummaryText::step(const StepCount& step)
{
    std::string line = fmt::format("  {:<{}}", escaped(step.name), kStepColumns - 2);
    for (const std::string& outcome : outcomes_) {
        const std::size_t count = routers_with(step, outcome);
        line += fmt::format("{:>{}}", count == 0 ? "-" : grouped(count), kOutcome);
    }
    page_->line(line);
}

Paint paint_of(Difference difference)
{
    return difference == Difference::Worse       ? Paint::Red
           : difference == Difference::Different ? Paint::Yellow
                                                 : Paint::Plain;
}

void add_shared(const SharedDifference& shared, Page* page)
{
    const char* const word = kDifferences[static_cast<std::size_t>(shared.difference)];
    const std::string mark = fmt::format("{:<{}}{:>{}}  ", word, kWords - 2, grouped(shared.routers), kCounts);
    page->line({2, mark, paint_of(shared.difference), escaped(shared.why), kTexts, {}});
    page->line({kTexts, {}, Paint::Plain, examples_of(shared.examples, shared.routers), kTexts, {}});
}

}  // namespace

void add_summary(const FleetSummary& summary, const std::string& opens, Page* page)
{
    SummaryText(summary, opens, page).add();
}

void add_comparison(const Comparison& comparison, const std::string& opens, Page* page)
{
    std::vector<std::string> counts;
    for (std::size_t i = 0; i < kDifferences.size(); ++i) {
        counts.push_back(fmt::format("{} {}", grouped(comparison.routers[i]), kDifferences[i]));
    }
    const std::string text = fmt::format("{}: {}", escaped(comparison.baseline), fmt::join(counts, ", "));
    page->line({0, "Against ", Paint::Bold, text, 2, {}});
    for (std::size_t i = 0; i < comparison.shared.size() && i < kShown; ++i) {
        add_shared(comparison.shared[i], page);
    }
    if (comparison.shared.size() > kShown) {
        page->line(fmt::format("  and {} more ways to differ: --json", grouped(comparison.shared.size() - kShown)));
    }
    if (!comparison.differing.empty()) {
        page->line(
            fmt::format("  {} with --difference worse, different, better, gone or new lists the routers", opens));
    }
}

}  // namespace bgp_rehearse
