#include "report/html/page.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <tuple>
#include <utility>
#include <vector>

#include "base/file_piece.h"
#include "base/sha256.h"
#include "judge/words.h"
#include "report/html/assets.h"
#include "report/html/frame.h"
#include "report/html/markup.h"
#include "report/html/parts.h"

namespace bgp_rehearse {

namespace {

constexpr std::string_view kEndingBegins = "<p id=\"ending\">";
constexpr std::string_view kEndingEnds = "</p>";

const char* word_of(const Report& report)
{
    return report.judgement ? report.judgement->verdict.word() : "REFUSED";
}

// The name without its folder.
std::string short_name(const Report& report)
{
    return std::filesystem::path(report.inputs.configuration).filename();
}

std::string library_words(const Report& report)
{
    const LibraryVersion version = version_of(report.inputs.library);
    return version.version.empty() ? report.inputs.library : version.name + " " + version.version;
}

// What stands in the element of the ending.
std::string ending_words(const Ending& ending)
{
    return ending.error.empty() ? fmt::format("The command exits with status {}.", ending.status)
                                : fmt::format("The command exits with status {}: {}", ending.status, ending.error);
}

void write_assumptions(const Report& report, Markup* page)
{
    std::vector<const Assumption*> assumed;
    for (const Assumption& each : report.judgement->assumptions) {
        if (!each.given) {
            assumed.push_back(&each);
        }
    }
    if (assumed.empty()) {
        return;
    }
    page->open("p", {{"class", "assumed"}}).text("Assumed of the device: ");
    for (const Assumption* each : assumed) {
        page->text(each == assumed.front() ? "" : ", ").text(each->name + " ").foreign(each->value).text(" (");
        page->open("code").text(each->option).close().text(")");
    }
    page->text(".").close();
}

void write_device_time(const Report& report, Markup* page)
{
    const CallTotals calls = totals_of(report.calls);
    page->open("p", {{"class", "device"}});
    page->text(fmt::format("On the device: {} in {}, with round trips of {}.",
                           counted(calls.reads + calls.writes + calls.sessions, {"call", "calls"}),
                           words_of(time_of(calls, report.times)), words_of(report.times.call)));
    page->close();
}

void write_fates(const RowCounts& rows, Markup* page)
{
    const std::tuple<const char*, std::size_t, const char*> kShown[] = {
        {"moved", rows.moved, "to move"},
        {"moved and changed", rows.moved_and_changed, "to move and change"},
        {"changed", rows.changed, "to change"},
        {"removed", rows.removed, "to remove"},
        {"new", rows.added, "new"}};
    page->open("ul", {{"class", "counts"}, {"aria-label", "What becomes of the rows"}});
    for (const auto& [fate, count, words] : kShown) {
        page->open("li").open("a", {{"href", "#changes"}, {"data-fate", fate}});
        page->line("strong", grouped(count)).text(" ").text(words).close().close();
    }
    page->open("li").open("span").line("strong", grouped(rows.kept)).text(rows.kept == 1 ? " stays" : " stay").close();
    page->close().close();
}

// Those that did not end the upgrade, what validation said, and what was called when the upgrade ended.
void write_faults(const Report& report, Markup* page)
{
    const auto fact = [page](const std::string& text) { page->open("p", {{"class", "fault"}}).foreign(text).close(); };
    for (const bgp_platform::Fault& fault : report.faults) {
        fact(fmt::format("Fault in {} ({}:{}): {}", fault.function, fault.source, fault.line, fault.text));
    }
    if (report.check) {
        fact(report.check->empty() ? "The result is valid." : "The result is not valid: " + *report.check);
    }
    if (report.ended && !report.ended->last.function.empty()) {
        const LastSeen& last = report.ended->last;
        fact(fmt::format("The last call was {}{}, after {} and {}.", last.function,
                         last.under_way ? ", which had not returned" : "", counted(last.calls.reads, {"read", "reads"}),
                         counted(last.calls.writes, {"write", "writes"})));
    }
}

void write_verdict(const Report& report, const Ending& ending, Markup* page)
{
    const std::string word = word_of(report);
    const char* const kind = !report.judgement ? "stop"
                             : report.judgement->verdict.severity == Severity::Note
                                 ? "safe"
                                 : name_of(report.judgement->verdict.severity);
    page->open("header", {{"id", "verdict"}, {"class", kind}});
    page->open("p", {{"class", "about"}}).text("Rehearsal of the upgrade with ").foreign(library_words(report)).close();
    page->open("h1").line("span", word, {{"class", "word"}}).text(" ").foreign(report.inputs.configuration).close();
    page->open("p", {{"class", "reason"}});
    report.judgement ? page->foreign(report.judgement->verdict.sentence) : page->text("Nothing was rehearsed.");
    page->close();
    if (report.judgement) {
        write_assumptions(report, page);
    }
    if (report.device != nullptr) {
        write_device_time(report, page);
    }
    write_faults(report, page);
    page->raw(kEndingBegins).text(ending_words(ending)).raw(kEndingEnds).raw("\n");
    if (report.device != nullptr && report.judgement) {
        write_fates(report.judgement->account.total, page);
    }
    page->close();
}

// What made this report, so that it can be made again.
void write_inputs(const Report& report, Markup* page)
{
    const Inputs& inputs = report.inputs;
    const auto sum = [page](const char* what, const std::string& name, const std::string& digest) {
        page->line("dt", what).open("dd").foreign(name);
        if (!digest.empty()) {
            page->text(" SHA-256 ").line("code", digest);
        }
        page->close();
    };
    page->open("footer").line("h2", "Made from").open("dl");
    sum("Configuration", inputs.configuration, inputs.configuration_sha256);
    sum("Library", inputs.library, sha256_of_file(inputs.library));
    sum("Command", "bgp-rehearse " BGP_REHEARSE_VERSION, {});
    page->close().close();
}

// The errors of what was refused, one a line.
void write_errors(const std::string& errors, Markup* page)
{
    page->open("section", {{"id", "errors"}, {"aria-labelledby", "errors-title"}});
    page->line("h2", "Why", {{"id", "errors-title"}}).open("ul");
    for (std::size_t at = 0; at < errors.size();) {
        const std::size_t end = std::min(errors.find('\n', at), errors.size());
        page->open("li").foreign(std::string_view(errors).substr(at, end - at)).close();
        at = end + 1;
    }
    page->close().close();
}

void write_parts(const Report& report, Markup* page)
{
    const RowNumbers numbers(report);
    write_findings(report, numbers, page);
    write_account(report, page);
    write_steps(report, page);
    write_changes(report, numbers, page);
    write_log(report, page);
}

}  // namespace

bool write_html_report(const Report& report, const Ending& ending, int file)
{
    Markup page(file);
    const Assets assets = report_assets();
    write_head(fmt::format("{}: {} - upgrade rehearsal", word_of(report), short_name(report)), assets, &page);
    page.open("body");
    if (report.judgement) {
        page.line("a", "Skip to the findings", {{"class", "skip"}, {"href", "#findings"}});
        write_navigation({{"#findings", "Findings"},
                          {"#account", "Rows"},
                          {"#steps", "Steps"},
                          {"#changes", "Changes"},
                          {"#log", "Log"}},
                         &page);
    }
    page.open("main");
    write_verdict(report, report.judgement ? ending : Ending{ending.status, {}}, &page);
    report.judgement ? write_parts(report, &page) : write_errors(ending.error, &page);
    page.close();
    write_inputs(report, &page);
    if (report.judgement) {
        write_scripts(assets, &page);
    }
    page.close().close();
    return page.finish();
}

// The element is found by its tag, which no text of the page can hold.
bool replace_page_ending(const Ending& ending, int file)
{
    constexpr std::size_t kHead = 1 << 20;  // the ending stands in the first lines behind style
    std::string head(kHead, '\0');
    const ssize_t size = pread(file, head.data(), head.size(), 0);
    head.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    const std::size_t begin = head.find(kEndingBegins);
    const std::size_t end = head.find(kEndingEnds, begin);
    if (begin == std::string::npos || end == std::string::npos) {
        return false;
    }
    const std::size_t words = begin + kEndingBegins.size();
    return replace_in_file(file, words, end - words, html_text(ending_words(ending)));
}

}  // namespace bgp_rehearse
