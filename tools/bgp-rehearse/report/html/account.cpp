// The account of rows as a table with a bar for each list: what was stored, what becomes of it, and what the result holds.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "judge/words.h"
#include "report/html/parts.h"

namespace bgp_rehearse {

namespace {

// In the order in which they stand in a bar; the class is also that of the legend.
struct Share {
    const char* kind;
    const char* words;
    std::size_t RowCounts::*count;
};

constexpr Share kShares[] = {
    {"moved", "moved", &RowCounts::moved},
    {"moved-and-changed", "moved and changed", &RowCounts::moved_and_changed},
    {"changed", "changed", &RowCounts::changed},
    {"kept", "as they were", &RowCounts::kept},
    {"removed", "removed", &RowCounts::removed},
    {"new", "new", &RowCounts::added},
};

// "53 moved, 29 as they were; 50 new"
std::string words_of(const RowCounts& rows)
{
    std::string text;
    for (const Share& share : kShares) {
        if (const std::size_t count = rows.*share.count; count > 0) {
            const char* const between = text.empty() ? "" : share.count == &RowCounts::added ? "; " : ", ";
            text += fmt::format("{}{} {}", between, grouped(count), share.words);
        }
    }
    return text;
}

// Patterns tell the shares apart where colours do not.
void write_patterns(Markup* page)
{
    page->open("svg", {{"class", "patterns"}, {"width", "0"}, {"height", "0"}, {"aria-hidden", "true"}}).open("defs");
    constexpr std::pair<const char*, const char*> kPatterns[] = {{"stripes", "M-2,2 l4,-4 M0,8 l8,-8 M6,10 l4,-4"},
                                                                 {"dots", "M3,4 h2 M-1,0 h2 M7,8 h2"},
                                                                 {"crosses", "M0,0 l8,8 M8,0 l-8,8"},
                                                                 {"bars", "M2,0 v8 M6,0 v8"}};
    for (const auto& [id, path] : kPatterns) {
        page->open("pattern", {{"id", id}, {"width", "8"}, {"height", "8"}, {"patternUnits", "userSpaceOnUse"}});
        page->open("path", {{"d", path}}).close().close();
    }
    page->close().close();
}

// One rectangle in the colour, one in the pattern of a share.
void write_rectangle(const Share& share, double from, double width, const std::string& title, Markup* page)
{
    const std::string x = fmt::format("{:.3f}%", from);
    const std::string wide = fmt::format("{:.3f}%", width);
    page->open("g", {{"class", share.kind}});
    if (!title.empty()) {
        page->line("title", title);
    }
    for (const char* const layer : {"colour", "pattern"}) {
        page->open("rect", {{"class", layer}, {"x", x}, {"y", "0"}, {"width", wide}, {"height", "100%"}}).close();
    }
    page->close();
}

// What was stored and what is new, as shares of all.
void write_bar(const RowCounts& rows, const std::string& words, Markup* page)
{
    constexpr double kWhole = 100;
    const auto all = static_cast<double>(rows.stored + rows.added);
    page->open("svg", {{"class", "bar"}, {"role", "img"}, {"width", "100%"}, {"height", "14"}, {"aria-label", words}});
    double from = 0;
    for (const Share& share : kShares) {
        if (const std::size_t count = rows.*share.count; count > 0) {
            const double width = kWhole * static_cast<double>(count) / all;
            write_rectangle(share, from, width, fmt::format("{} {}", grouped(count), share.words), page);
            from += width;
        }
    }
    page->close();
}

void write_legend(Markup* page)
{
    page->open("ul", {{"class", "legend"}, {"aria-label", "The parts of the bars"}});
    for (const Share& share : kShares) {
        page->open("li").open("svg", {{"class", "swatch"}, {"width", "22"}, {"height", "12"}, {"aria-hidden", "true"}});
        write_rectangle(share, 0, 100, {}, page);
        page->close().text(share.words).close();
    }
    page->close();
}

void write_number(const char* what, std::size_t number, Markup* page)
{
    page->open("td", {{"class", "number"}, {"role", "cell"}, {"data-label", what}}).text(grouped(number)).close();
}

void write_row(const std::string& name, const std::string& path, const RowCounts& rows, Markup* page)
{
    const std::string words = words_of(rows);
    page->open("tr", {{"role", "row"}}).open("th", {{"scope", "row"}, {"role", "rowheader"}}).text(name);
    if (!path.empty()) {
        page->text(" ").line("code", path);
    }
    page->close();
    write_number("stored", rows.stored, page);
    page->open("td", {{"role", "cell"}});
    write_bar(rows, words, page);
    page->line("span", words, {{"class", "fates"}}).close();
    write_number("in the result", rows.result, page);
    page->close();
}

// A table's name stands for a list that has none in words.
std::string name_of(const bgp_platform::schema::Node& list)
{
    const std::string noun = noun_of(list).many;
    return noun == "rows" ? list.name : noun;
}

void write_head(Markup* page)
{
    page->open("thead", {{"role", "rowgroup"}}).open("tr", {{"role", "row"}});
    for (const char* const name : {"List", "Stored", "What becomes of them", "Result"}) {
        page->line("th", name, {{"scope", "col"}, {"role", "columnheader"}});
    }
    page->close().close();
}

void write_table(const Account& account, Markup* page)
{
    page->open("table", {{"id", "account-table"}, {"role", "table"}, {"aria-labelledby", "account-title"}});
    write_head(page);
    page->open("tbody", {{"role", "rowgroup"}});
    write_row("All lists", {}, account.total, page);
    for (const ListAccount& each : account.lists) {
        if (!each.rows.untouched()) {
            write_row(name_of(*each.list), each.list->path(), each.rows, page);
        }
    }
    page->close().close();
}

void write_untouched(const Account& account, Markup* page)
{
    const auto untouched = static_cast<std::size_t>(std::count_if(
        account.lists.begin(), account.lists.end(), [](const auto& each) { return each.rows.untouched(); }));
    if (untouched == 0) {
        return;
    }
    page->open("details", {{"id", "untouched"}});
    page->line("summary", counted(untouched, {"list stays as it was", "lists stay as they were"})).open("ul");
    for (const ListAccount& each : account.lists) {
        if (each.rows.untouched()) {
            page->open("li").text(counted(each.rows.stored, noun_of(*each.list))).text(" ");
            page->line("code", each.list->path()).close();
        }
    }
    page->close().close();
}

}  // namespace

void write_account(const Report& report, Markup* page)
{
    page->open("section", {{"id", "account"}, {"aria-labelledby", "account-title"}});
    page->line("h2", "Rows", {{"id", "account-title"}});
    if (report.device == nullptr) {
        page->line("p", "Not counted: what the upgrade had done is gone with its process.").close();
        return;
    }
    const Account& account = report.judgement->account;
    page->line("p", fmt::format("{} stored become {}.", counted(account.total.stored, {"row", "rows"}),
                                grouped(account.total.result)));
    write_patterns(page);
    write_legend(page);
    write_table(account, page);
    write_untouched(account, page);
    page->close();
}

}  // namespace bgp_rehearse
