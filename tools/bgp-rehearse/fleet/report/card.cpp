#include "fleet/report/card.h"

#include <fmt/format.h>

#include <cmath>
#include <string_view>

#include "base/text_escape.h"
#include "fleet/report/command.h"
#include "fleet/report/text.h"
#include "judge/words.h"
#include "report/device_time.h"
#include "report/text.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kFacts = 13;
constexpr std::size_t kSentences = 10;
constexpr std::size_t kPlaces = kSentences + 2;

Duration duration_of(double seconds)
{
    return Duration(std::llround(seconds * 1e9));
}

class Card {
public:
    Card(const Database& database, int64_t router, Page* page) : database_(database), router_(router), page_(page) {}

    void add()
    {
        summary();
        errors();
        findings();
        steps();
    }

private:
    void title(std::string_view text) { page_->line(page_->painted(text, Paint::Bold)); }
    void fact(std::string_view name, const std::string& text)
    {
        page_->line({2, fmt::format("{:<{}}", name, kFacts - 2), Paint::Plain, text, kFacts, {}});
    }
    void summary();
    void rows(const Statement& router);
    void device(const Statement& router);
    void errors();
    void findings();
    void finding(const Statement& finding);
    std::string places_of(int64_t finding);
    void steps();

    const Database& database_;
    int64_t router_;
    Page* page_;
};

void Card::summary()
{
    Statement router(
        database_,
        "SELECT name, verdict, sentence, input_class, bytes, sha256, stored, kept, changed, moved, "
        "moved_and_changed, removed, new, result, reads, writes, failed_writes, seconds_least, seconds_most "
        "FROM router WHERE number = ?");
    router.with(router_).next();
    page_->line({0,
                 escaped(router.text(0)),
                 Paint::Bold,
                 fmt::format(": {}. {}", router.text(1), escaped(router.text(2))),
                 2,
                 {}});
    fact("backup", fmt::format("{}, {}, SHA-256 {}", router.text(3), counted(router.count(4), {"byte", "bytes"}),
                               router.text(5).empty() ? "not known" : router.text(5)));
    if (router.text(3) != "refused") {
        rows(router);
        device(router);
    }
}

void Card::rows(const Statement& router)
{
    RowCounts rows;
    int column = 6;
    for (std::size_t* const each : {&rows.stored, &rows.kept, &rows.changed, &rows.moved, &rows.moved_and_changed,
                                    &rows.removed, &rows.added, &rows.result}) {
        *each = router.count(column++);
    }
    fact("rows", fmt::format("{} stored: {}; {} new", grouped(rows.stored), fates_of(rows), grouped(rows.added)));
}

void Card::device(const Statement& router)
{
    fact("device", fmt::format("{}, {} ({} failed): {}", counted(router.count(14), {"read", "reads"}),
                               counted(router.count(15), {"write", "writes"}), grouped(router.count(16)),
                               words_of(DurationRange{duration_of(router.real(17)), duration_of(router.real(18))})));
}

void Card::errors()
{
    Statement error(database_, "SELECT text FROM error WHERE router = ? ORDER BY number");
    bool any = false;
    for (error.with(router_); error.next();) {
        if (!any) {
            title("Errors");
        }
        any = true;
        page_->line({2, {}, Paint::Plain, escaped(error.text(0)), 4, {}});
    }
}

void Card::findings()
{
    Statement each(database_,
                   "SELECT number, severity, sentence, step, advice FROM finding WHERE router = ? ORDER BY number");
    bool any = false;
    for (each.with(router_); each.next();) {
        if (!any) {
            title("Findings");
        }
        any = true;
        finding(each);
    }
    if (!any) {
        title("Findings: none");
    }
}

void Card::finding(const Statement& finding)
{
    const std::string_view severity = finding.text(1);
    const std::string word = severity == "stop" ? "STOP" : severity == "review" ? "REVIEW" : "note";
    const Paint paint = severity == "stop" ? Paint::Red : severity == "review" ? Paint::Yellow : Paint::Plain;
    page_->line({2, fmt::format("{:<{}}", word, kSentences - 2), paint, escaped(finding.text(2)), kSentences,
                 escaped(finding.text(3))});
    for (const std::string& text : {places_of(finding.number(0)), std::string(finding.text(4))}) {
        if (!text.empty()) {
            page_->line({kPlaces, {}, Paint::Plain, escaped(text), kPlaces, {}});
        }
    }
}

std::string Card::places_of(int64_t finding)
{
    Statement place(database_, "SELECT text FROM place WHERE router = ? AND finding = ? ORDER BY number");
    std::string text;
    for (place.with(router_, finding); place.next();) {
        text.append(text.empty() || place.text(0).empty() ? "" : "; ").append(place.text(0));
    }
    return text;
}

void Card::steps()
{
    Statement step(database_, "SELECT name, outcome FROM step WHERE router = ? ORDER BY number");
    bool any = false;
    for (step.with(router_); step.next();) {
        if (!any) {
            title("Steps");
        }
        any = true;
        page_->line(fmt::format("  {:<{}}{}", escaped(step.text(0)), kStepColumns - 2, escaped(step.text(1))));
    }
}

}  // namespace

void add_card(const Database& database, int64_t router, const std::string& file, Page* page)
{
    Card(database, router, page).add();
    page->line(page->painted("Full report", Paint::Bold));
    page->line("  " + FullReportCommands(database, file).whole(router));
}

}  // namespace bgp_rehearse
