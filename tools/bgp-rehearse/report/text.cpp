#include "report/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <unordered_map>

#include "base/line_writer.h"
#include "base/output_file.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::Value;

constexpr char kPlain[] = "0";
constexpr char kBold[] = "1";
constexpr char kRed[] = "31";
constexpr char kGreen[] = "32";
constexpr char kYellow[] = "33";
constexpr std::size_t kPiece = 1 << 16;
constexpr std::size_t kShownFailures = 5;
constexpr std::size_t kStepNames = 29;       // room for the longest
constexpr std::size_t kStepCalls = 13;       // room for "9,999 writes"
constexpr std::size_t kNarrowestNames = 28;  // so that values of neighbouring entries stand under each other

class TextReport : LineWriter {
public:
    TextReport(const Report& report, bool colour, int file) : report_(report), colour_(colour), file_(file) {}

    bool write()
    {
        summary();
        steps();
        if (!report_.ended) {
            changes();
        }
        if (report_.show_log) {
            log();
        }
        flush(0);
        errno = error_;
        return error_ == 0;
    }

private:
    // What makes a terminal go on in a colour; nothing for a report without.
    std::string in(const char* colour) const { return colour_ ? fmt::format("\033[{}m", colour) : std::string(); }
    std::string painted(std::string_view text, const char* colour) const
    {
        return in(colour).append(text) + in(kPlain);
    }
    std::string bold(std::string_view text) const { return painted(text, kBold); }
    std::string red(std::string_view text) const { return painted(text, kRed); }

    void fact(std::string_view name, std::string_view text) { line("  {:<10}{}", name, text); }
    void more(std::string_view text) { fact("", text); }

    void summary();
    void ending(const Ended& ended);
    void last_seen(const LastSeen& last);
    void returned();
    void failures();
    void steps();
    void step(const Step& step);
    std::string what_came_of(const Step& step) const;
    void changes();
    void totals(const ChangeTotals& totals);
    void change(const Change& change, std::size_t indent);
    void entry(std::string_view mark, const Change& change, const char* colour, std::size_t indent);
    void value(const Leaf& leaf, const Value* value);
    void leaf(const Leaf& leaf, bool changed, std::size_t indent, std::size_t width);
    void leaves(const Change& change, std::size_t indent);
    void log();
    void flush(std::size_t at_least);
    const std::string& name_in_entry(const Leaf& leaf);

    const Report& report_;
    bool colour_;
    int file_;
    int error_ = 0;                                       // of the first write that failed
    std::unordered_map<const Node*, std::string> names_;  // escaped
};

// A report of many changes goes out in pieces.
void TextReport::flush(std::size_t at_least)
{
    if (out_.size() < at_least) {
        return;
    }
    if (error_ == 0 && !write_all(file_, out_.data(), out_.size())) {
        error_ = errno;
    }
    out_.clear();
}

const std::string& TextReport::name_in_entry(const Leaf& leaf)
{
    const auto [name, fresh] = names_.try_emplace(leaf.node);
    if (fresh) {
        name->second = escaped(name_of(leaf));
    }
    return name->second;
}

std::string grouped(std::size_t number)
{
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3) {
        text.insert(place - 3, ",");
    }
    return text;
}

// "1 entry", "2,000 entries"
std::string counted(std::size_t number, std::string_view one, std::string_view many)
{
    return fmt::format("{} {}", grouped(number), number == 1 ? one : many);
}

void TextReport::summary()
{
    line("{}", bold("Rehearsal of " + escaped(report_.configuration)));
    fact("library", escaped(report_.library));
    fact("loaded", fmt::format("{}, {}", counted(report_.loaded.entries, "entry", "entries"),
                               counted(report_.loaded.values, "value", "values")));
    if (report_.ended) {
        ending(*report_.ended);
    } else {
        returned();
    }
}

void TextReport::ending(const Ended& ended)
{
    const bool reported = !ended.function.empty() || !ended.text.empty();
    fact("update",
         red(fmt::format("did not return: {}",
                         ended.kind == Ended::Kind::Signal || !reported ? describe(ended) : name_of(ended.kind))));
    if (!ended.function.empty()) {
        more("function  " + escaped(ended.function));
        more(fmt::format("source    {}:{}", escaped(ended.source), ended.line));
    }
    if (!ended.text.empty()) {
        more("text      " + escaped(ended.text));
    }
    last_seen(ended.last);
}

// Where it had come to: the row that was being worked on, and what the log said last.
void TextReport::last_seen(const LastSeen& last)
{
    more(fmt::format("step      {}", last.step));
    if (!last.reading.empty()) {
        more("last read " + escaped(last.reading));
    }
    if (!last.writing.empty()) {
        more("written   " + escaped(last.writing));
    }
    if (!last.function.empty()) {
        more(fmt::format("last call {}{}", last.function, last.under_way ? ", which had not returned" : ""));
    }
    more(fmt::format("calls     {}, {} ({} failed)", counted(last.calls.reads, "read", "reads"),
                     counted(last.calls.writes, "write", "writes"), grouped(last.calls.failed_writes)));
    for (std::size_t i = 0; i < last.log.size(); ++i) {
        more((i == 0 ? "log       " : "          ") + escaped_line(last.log[i]));
    }
}

void TextReport::returned()
{
    const std::size_t failed = report_.calls.failed_write_count();
    const std::string failed_text = fmt::format("({} failed)", grouped(failed));
    fact("update",
         fmt::format("returned {}: {}, {}, {} {}", report_.result, counted(report_.log_lines, "log line", "log lines"),
                     counted(report_.calls.reads(), "read", "reads"),
                     counted(report_.calls.writes(), "write", "writes"), failed > 0 ? red(failed_text) : failed_text));
    failures();
    if (report_.check) {
        fact("check", report_.check->empty() ? std::string("the result is valid")
                                             : red("the result is not valid: " + escaped(*report_.check)));
    }
}

void TextReport::failures()
{
    const auto& kept = report_.calls.failed_writes;
    const std::size_t shown = std::min(kept.size(), kShownFailures);
    for (std::size_t i = 0; i < shown; ++i) {
        // The text of the API names the function and the path.
        fact(i == 0 ? "failed" : "", escaped(kept[i].message));
    }
    if (report_.calls.failed_write_count() > shown) {
        more(fmt::format("and {} more", grouped(report_.calls.failed_write_count() - shown)));
    }
    for (const bgp_platform::Fault& fault : report_.faults) {
        fact("fault", red(fmt::format("{} ({}:{}): {}", escaped(fault.function), escaped(fault.source), fault.line,
                                      escaped(fault.text))));
    }
}

void TextReport::steps()
{
    line("{}", bold(report_.steps.empty() ? "Steps: the log tells of none" : "Steps:"));
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
        reads = counted(step.calls.reads, "read", "reads");
        writes = counted(step.calls.writes, "write", "writes");
    }
    line("  {:<{}}  {:>{}}  {:>{}}  {}", step.name, kStepNames, reads, kStepCalls, writes, kStepCalls,
         what_came_of(step));
}

std::string TextReport::what_came_of(const Step& step) const
{
    std::string what = name_of(step.outcome);
    if (step.runs > 1) {
        what += fmt::format(" {} times", grouped(step.runs));
    }
    if (!step.text.empty()) {
        what += ": " + escaped(step.text);
    }
    if (step.outcome == StepOutcome::CannotRun || step.outcome >= StepOutcome::Failed) {
        what = red(what);
    }
    if (step.calls.failed_writes > 0) {
        what += " " + red(fmt::format("({} failed)", counted(step.calls.failed_writes, "write", "writes")));
    }
    return what;
}

void TextReport::changes()
{
    if (report_.changes.empty()) {
        line("{}", bold("Changes: none"));
        return;
    }
    totals(count_changes(report_.changes));
    const std::string* list = nullptr;
    for (const Change& each : report_.changes) {
        if (list != each.list.get()) {
            list = each.list.get();
            line("  {}", bold(list->empty() ? "/" : escaped(*list)));
        }
        change(each, 4);
        flush(kPiece);
    }
}

void TextReport::totals(const ChangeTotals& totals)
{
    std::string text = fmt::format("Changes: {} created, {} deleted", counted(totals.created, "entry", "entries"),
                                   grouped(totals.deleted));
    if (totals.moved > 0) {
        text += fmt::format(", {} moved", grouped(totals.moved));
    }
    text += fmt::format(", {} set", counted(totals.leaves_set, "leaf", "leaves"));
    if (totals.leaves_removed > 0) {
        text += fmt::format(", {} removed", grouped(totals.leaves_removed));
    }
    line("{}", bold(text));
}

void TextReport::entry(std::string_view mark, const Change& change, const char* colour, std::size_t indent)
{
    out_.append(indent, ' ').append(in(colour));
    const std::size_t start = out_.size();
    out_ += mark;
    if (change.from != nullptr) {
        append_braced_key(change.from, &out_);
        out_ += " -> ";
    }
    append_braced_key(change.entry, &out_);
    escape_from(start, &out_);
    out_.append(in(kPlain)) += '\n';
}

// An entry on a line of its own, and below it its leaves and the entries in it. An entry below a created one is led by
// the name of its list instead of a mark.
void TextReport::change(const Change& change, std::size_t indent)
{
    switch (change.kind) {
        case Change::Kind::Created:
            entry("+ ", change, kGreen, indent);
            break;
        case Change::Kind::Deleted:
            entry("- ", change, kRed, indent);
            return;
        case Change::Kind::Moved:
            entry("~ ", change, kYellow, indent);
            return;
        case Change::Kind::Changed:
            if (change.entry != nullptr) {
                entry("~ ", change, kYellow, indent);
            }
            break;
    }
    leaves(change, indent + (change.entry == nullptr ? 0 : 4));
}

void TextReport::leaves(const Change& change, std::size_t indent)
{
    std::size_t width = kNarrowestNames;
    for_each_leaf(change, [&](const Leaf& each) { width = std::max(width, name_in_entry(each).size()); });
    for_each_leaf(change, [&](const Leaf& each) { leaf(each, change.kind == Change::Kind::Changed, indent, width); });
    for_each_below(change, [&](const Change& below) {
        entry(*below.list + " ", below, kGreen, indent);
        leaves(below, indent + 4);
    });
}

void TextReport::value(const Leaf& leaf, const Value* value)
{
    if (value == nullptr) {
        out_ += "(not set)";
        return;
    }
    const std::size_t start = out_.size();
    append_shown(leaf, *value, &out_);
    escape_from(start, &out_);
}

void TextReport::leaf(const Leaf& leaf, bool changed, std::size_t indent, std::size_t width)
{
    const std::string& name = name_in_entry(leaf);
    out_.append(indent, ' ').append(name).append(width - name.size() + 2, ' ');
    if (changed) {
        value(leaf, leaf.before);
        out_ += " -> ";
    }
    value(leaf, leaf.after);
    out_ += '\n';
}

void TextReport::log()
{
    line("{}", bold(report_.log.empty() ? "Log: empty" : "Log:"));
    for (const std::string& each : report_.log) {
        line("  {}", escaped_line(each));
        flush(kPiece);
    }
}

}  // namespace

bool write_text_report(const Report& report, bool colour, int file)
{
    return TextReport(report, colour, file).write();
}

}  // namespace bgp_rehearse
