#include "report/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "base/text_escape.h"
#include "judge/words.h"
#include "report/change_listing.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kFactNames = 13;
constexpr std::size_t kStepNames = 31;  // room for the longest
constexpr std::size_t kStepCalls = 9;   // room for "1,000,000"
constexpr std::size_t kSentences = 10;  // where those of findings begin
constexpr std::size_t kPlaces = kSentences + 2;
constexpr std::size_t kShownPlaces = 3;

Paint paint_of(Severity severity) noexcept
{
    return severity == Severity::Stop ? Paint::Red : severity == Severity::Review ? Paint::Yellow : Paint::Plain;
}

class TextReport {
public:
    TextReport(const Report& report, const Look& look, int file) : report_(report), page_(look, file) {}

    bool write()
    {
        summary();
        steps();
        findings();
        if (report_.device != nullptr && report_.listed) {
            list_changes(*report_.device, *report_.listed, &page_);
        }
        if (report_.show_log) {
            log();
        }
        verdict();
        return page_.finish();
    }

private:
    void title(std::string_view text) { page_.line(page_.painted(text, Paint::Bold)); }
    void fact(std::string_view name, std::string_view text, Paint paint = Paint::Plain)
    {
        page_.line({2, fmt::format("{:<{}}", name, kFactNames - 2), Paint::Plain, text, kFactNames, {}, paint});
    }

    void summary();
    void assumed();
    void rows();
    void device();
    void ending(const Ended& ended);
    void last_seen(const LastSeen& last);
    void steps();
    void step(const Step& step);
    void findings();
    void finding(const Finding& finding);
    void places(const Finding& finding);
    void log();
    void verdict();

    const Report& report_;
    Page page_;
};

void TextReport::summary()
{
    page_.line({0,
                "Rehearsal of ",
                Paint::Bold,
                fmt::format("{}, {}", escaped(report_.inputs.configuration), words_of_library(report_.inputs.library)),
                2,
                {},
                Paint::Bold});
    assumed();
    if (report_.ended) {
        ending(*report_.ended);
    } else {
        rows();
        device();
    }
    for (const bgp_platform::Fault& fault : report_.faults) {
        fact("fault",
             fmt::format("{} ({}:{}): {}", escaped(fault.function), escaped(fault.source), fault.line,
                         escaped(fault.text)),
             Paint::Red);
    }
    if (report_.check) {
        fact("check",
             report_.check->empty() ? "the result is valid" : "the result is not valid: " + escaped(*report_.check),
             report_.check->empty() ? Paint::Plain : Paint::Red);
    }
}

void TextReport::assumed()
{
    std::string text;
    for (const Assumption& each : report_.judgement->assumptions) {
        if (!each.given) {
            text.append(text.empty() ? "" : ", ")
                .append(fmt::format("{} {} ({})", each.name, escaped(each.value), each.option));
        }
    }
    if (!text.empty()) {
        fact("assumed", text);
    }
}

void TextReport::rows()
{
    const RowCounts& rows = report_.judgement->account.total;
    fact("rows", fmt::format("{} stored: {}; {} new{}", grouped(rows.stored), fates_of(rows), grouped(rows.added),
                             rows.untouched() || report_.listed ? "" : "   (--changes)"));
}

void TextReport::device()
{
    const CallTotals calls = totals_of(report_.calls);
    std::string text = counted(calls.reads + calls.writes + calls.sessions, {"call", "calls"});
    if (calls.connections > 0) {
        text += fmt::format(", {}", counted(calls.connections, {"connection", "connections"}));
    }
    fact("device", fmt::format("{}: {} (round trips of {}{})", text, words_of(time_of(calls, report_.times)),
                               words_of(report_.times.call), report_.times.calls_given ? "" : "; --call-time"));
}

void TextReport::ending(const Ended& ended)
{
    const bool reported = !ended.function.empty() || !ended.text.empty();
    fact("update",
         "did not return: " +
             (ended.kind == Ended::Kind::Signal || !reported ? describe(ended) : std::string(name_of(ended.kind))),
         Paint::Red);
    if (!ended.function.empty()) {
        fact("", "function  " + escaped(ended.function));
        fact("", fmt::format("source    {}:{}", escaped(ended.source), ended.line));
    }
    if (!ended.text.empty()) {
        fact("", "text      " + escaped(ended.text));
    }
    last_seen(ended.last);
}

// Where it had come to: the row that was being worked on, and what the log said last.
void TextReport::last_seen(const LastSeen& last)
{
    fact("", fmt::format("step      {}", last.step));
    if (!last.reading.empty()) {
        fact("", "last read " + escaped(last.reading));
    }
    if (!last.writing.empty()) {
        fact("", "written   " + escaped(last.writing));
    }
    if (!last.function.empty()) {
        fact("", fmt::format("last call {}{}", last.function, last.under_way ? ", which had not returned" : ""));
    }
    fact("", fmt::format("calls     {}, {} ({} failed)", counted(last.calls.reads, {"read", "reads"}),
                         counted(last.calls.writes, {"write", "writes"}), grouped(last.calls.failed_writes)));
    for (std::size_t i = 0; i < last.log.size(); ++i) {
        fact("", (i == 0 ? "log       " : "          ") + escaped_line(last.log[i]));
    }
}

void TextReport::steps()
{
    if (report_.steps.empty()) {
        title("Steps: the log tells of none");
        return;
    }
    title(fmt::format("{:<{}}{:>{}}{:>{}}", "Steps", kStepNames, "reads", kStepCalls, "writes", kStepCalls));
    for (const Step& each : report_.steps) {
        step(each);
    }
}

// A step that did not run made no calls.
void TextReport::step(const Step& step)
{
    std::string reads;
    std::string writes;
    if (step.runs > 0) {
        reads = grouped(step.calls.reads);
        writes = grouped(step.calls.writes);
    }
    std::string time;
    if (report_.times.calls_given && step.runs > 0) {
        time = words_of(time_of(step.calls, report_.times));
    }
    const bool bad = step.outcome == StepOutcome::CannotRun || step.outcome >= StepOutcome::Failed;
    const std::string mark =
        fmt::format("{:<{}}{:>{}}{:>{}}  ", step.name, kStepNames - 2, reads, kStepCalls, writes, kStepCalls);
    page_.line({2, mark, Paint::Plain, what_came_of(step), mark.size() + 2, time, bad ? Paint::Red : Paint::Plain});
}

void TextReport::findings()
{
    title(report_.judgement->findings.empty() ? "Findings: none" : "Findings");
    for (const Finding& each : report_.judgement->findings) {
        finding(each);
    }
}

void TextReport::finding(const Finding& finding)
{
    const std::string word = finding.severity == Severity::Note     ? "note"
                             : finding.severity == Severity::Review ? "REVIEW"
                                                                    : "STOP";
    page_.line({2, fmt::format("{:<{}}", word, kSentences - 2), paint_of(finding.severity), escaped(finding.sentence),
                kSentences, finding.step});
    places(finding);
    if (!finding.advice.empty()) {
        page_.line({kPlaces, {}, Paint::Plain, escaped(finding.advice), kPlaces, {}});
    }
}

// The first few in words; without words the sentence says all.
void TextReport::places(const Finding& finding)
{
    std::vector<std::string> words;
    const std::size_t places = finding.places.size();
    const std::size_t shown =
        places <= kShownPlaces + 1 ? places : kShownPlaces;  // "and 1 more" is as long as the place
    for (std::size_t i = 0; i < shown; ++i) {
        words.push_back(escaped(words_of(finding, finding.places[i])));
        if (words.back().empty()) {
            return;
        }
    }
    const bool commas = std::any_of(words.begin(), words.end(),
                                    [](const std::string& each) { return each.find(", ") != std::string::npos; });
    const char* const between = commas ? "; " : ", ";
    std::string text = fmt::format("{}", fmt::join(words, between));
    if (places > shown) {
        text += fmt::format("{}and {} more", between, grouped(places - shown));
    }
    if (!text.empty()) {
        page_.line({kPlaces, {}, Paint::Plain, text, kPlaces, {}});
    }
}

void TextReport::log()
{
    title(report_.log.empty() ? "Log: empty" : "Log");
    for (const std::string& each : report_.log) {
        page_.line("  " + escaped_line(each));
    }
}

void TextReport::verdict()
{
    const Verdict& verdict = report_.judgement->verdict;
    const Paint paint = verdict.severity == Severity::Note ? Paint::Green : paint_of(verdict.severity);
    page_.line({0, fmt::format("Verdict: {}. ", verdict.word()), paint, escaped(verdict.sentence), 2, {}});
}

}  // namespace

std::string fates_of(const RowCounts& rows)
{
    std::string text;
    const auto add = [&text](std::size_t count, const char* fate) {
        text.append(text.empty() ? "" : ", ").append(fmt::format("{} {}", grouped(count), fate));
    };
    for (const auto& [count, fate] :
         {std::pair{rows.moved, "moved"}, {rows.moved_and_changed, "moved and changed"}, {rows.changed, "changed"}}) {
        if (count > 0) {
            add(count, fate);
        }
    }
    add(rows.kept, "as they were");
    add(rows.removed, "removed");
    return text;
}

bool write_text_report(const Report& report, const Look& look, int file)
{
    return TextReport(report, look, file).write();
}

}  // namespace bgp_rehearse
