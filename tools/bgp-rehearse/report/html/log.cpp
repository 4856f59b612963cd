// The log of a page: its lines as data, which the script shows as they come into view. Each line has an anchor.
#include <fmt/format.h>

#include "base/text_escape.h"
#include "judge/words.h"
#include "report/html/island.h"
#include "report/html/parts.h"
#include "report/json_writer.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kMostLogBytes = std::size_t{1} << 27;  // of a log in a page
constexpr std::size_t kLinesInArray = 1000;                  // lines in an array

// Which step wrote which lines: [first line, number of the step], then arrays of lines.
std::size_t write_lines(const Report& report, Markup* page)
{
    Island island("log-data", page);
    JsonWriter json([&island](std::string_view text) {
        island.add(text);
        return true;
    });
    json.begin('{', JsonWriter::Dense).name("parts").begin('[', JsonWriter::Dense);
    for (const LogPart& part : report.log_parts) {
        json.begin('[', JsonWriter::Dense).number(part.first).number(part.step).end();
    }
    json.end().end();
    std::size_t written = 0;
    while (written < report.log.size() && island.size() < kMostLogBytes) {
        json.begin('[', JsonWriter::Dense);
        for (std::size_t i = 0; i < kLinesInArray && written < report.log.size(); ++i) {
            json.text(escaped_line(report.log[written++]));
        }
        json.end();
    }
    static_cast<void>(json.finish());
    island.finish();
    return written;
}

void write_view(Markup* page)
{
    page->open("div", {{"id", "log-view"}, {"hidden", ""}});
    page->open("div", {{"class", "tools"}}).line("label", "Lines with", {{"for", "log-search"}});
    page->element("input",
                  {{"id", "log-search"}, {"type", "search"}, {"autocomplete", "off"}, {"spellcheck", "false"}});
    page->open("p", {{"id", "log-matches"}, {"role", "status"}}).close().close();
    page->open("div", {{"id", "log-lines"}, {"role", "list"}, {"tabindex", "0"}, {"aria-label", "Lines of the log"}});
    page->close();
    page->open("p", {{"id", "log-line"}, {"aria-live", "polite"}}).close().close();
}

}  // namespace

void write_log(const Report& report, Markup* page)
{
    page->open("section", {{"id", "log"}, {"aria-labelledby", "log-title"}});
    page->line("h2", "Log", {{"id", "log-title"}});
    if (report.log.empty()) {
        page->line("p", "Empty.").close();
        return;
    }
    page->open("noscript").open("p").text("The log needs JavaScript; ").line("code", "--log FILE");
    page->text(" writes it to a file.").close().close();
    write_view(page);
    if (const std::size_t written = write_lines(report, page); written < report.log.size()) {
        page->open("p", {{"class", "left-out"}});
        page->text(fmt::format("The last {} lines are not in this page: ", grouped(report.log.size() - written)));
        page->line("code", "--log FILE").text(" writes all.").close();
    }
    page->close();
}

}  // namespace bgp_rehearse
