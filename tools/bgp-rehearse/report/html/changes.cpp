// The changes of a page: every changed row as data, of which the script makes a tree to search and to filter. README.md in
// this folder tells how the data is laid out.
#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>

#include "base/text_escape.h"
#include "calls/recorder.h"
#include "judge/evidence.h"
#include "judge/row_changes.h"
#include "judge/words.h"
#include "report/html/island.h"
#include "report/html/parts.h"
#include "report/json_writer.h"
#include "report/row_leaves.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

constexpr std::size_t kMostChangeBytes = std::size_t{3} << 27;  // of changes in a page
constexpr std::size_t kRowsInLine = 500;                        // rows in a line of the data

constexpr Fate kFates[] = {Fate::AsItWas, Fate::Changed, Fate::Moved, Fate::MovedAndChanged, Fate::Removed, Fate::New};

// A value as the page shows it; a leaf-list as its values.
std::string shown_value(const Node& leaf, const Value* value, const List* entries)
{
    if (entries == nullptr) {
        return words_of_value(leaf, value);
    }
    std::string text;
    entries->for_each(
        [&](const Row& entry) { text.append(text.empty() ? "" : ", ").append(words_of_value(leaf, &entry.value(0))); });
    return text;
}

// Writes the rows as they are visited, until there are too many.
class Rows : public RowVisitor {
public:
    Rows(const std::unordered_map<const Node*, std::size_t>& lists, Island* island, JsonWriter* json)
        : lists_(lists), island_(*island), json_(*json)
    {
    }

    void kept(const Node& /*list*/, std::size_t /*rows*/) override {}

    void row(const RowChange& change) override
    {
        if (change.fate != Fate::AsItWas) {
            add(change, lists_.at(&change.list()) + 1);
        }
    }

    void outside(const RowChange& change) override { add(change, 0); }

    // Returns how many were left out.
    std::size_t finish()
    {
        end_chunk();
        return left_out_;
    }

private:
    void add(const RowChange& change, std::size_t list);
    std::size_t place(const RowChange& change, std::size_t list);
    void begin_chunk();
    void end_chunk();
    void write_text(const RowChange& change, const RowLeaves& of);
    void write_steps(const RowLeaves& of);
    void add_line(std::string_view text) { text_.append(text_.empty() ? "" : "\n").append(escaped(text)); }
    const std::string& name_of(const Node& leaf);

    const std::unordered_map<const Node*, std::size_t>& lists_;
    Island& island_;
    JsonWriter& json_;
    std::size_t in_chunk_ = 0;
    std::size_t left_out_ = 0;
    Trail told_;  // the row that was written last, and those around it
    std::string text_;
    std::unordered_map<const Node*, std::string> names_;
};

void Rows::add(const RowChange& change, std::size_t list)
{
    if (island_.size() >= kMostChangeBytes) {
        ++left_out_;
        return;
    }
    begin_chunk();
    const RowLeaves of(change);
    json_.begin('[', JsonWriter::Dense).number(list).number(static_cast<std::size_t>(change.fate));
    json_.number(std::size_t{of.writer}).number(place(change, list));
    write_text(change, of);
    write_steps(of);
    json_.end();
    if (++in_chunk_ == kRowsInLine) {
        end_chunk();
    }
}

// How many of the rows around it are changed themselves.
std::size_t Rows::place(const RowChange& change, std::size_t list)
{
    if (list == 0) {
        return 0;
    }
    const auto is_around = [&](const Row* row) {
        return std::find(change.around->begin(), change.around->end(), row) != change.around->end();
    };
    while (!told_.empty() && !is_around(told_.back())) {
        told_.pop_back();
    }
    told_.push_back(&change.row());
    return told_.size() - 1;
}

void Rows::begin_chunk()
{
    if (in_chunk_ == 0) {
        json_.begin('[', JsonWriter::Dense);
    }
}

void Rows::end_chunk()
{
    if (in_chunk_ > 0) {
        json_.end();
        in_chunk_ = 0;
    }
}

// A line each: the rows around it as a keypath, its key, the key that it came from, its words; then of each leaf the name
// and the values before and after.
void Rows::write_text(const RowChange& change, const RowLeaves& of)
{
    const bool moved = change.fate == Fate::Moved || change.fate == Fate::MovedAndChanged;
    text_.clear();
    text_ = change.around == nullptr ? "" : escaped(bgp_platform::store::keypath(*change.around, nullptr));
    text_ += "\n" + escaped(bgp_platform::store::key_text(change.row()));
    text_ += "\n" + (moved ? escaped(bgp_platform::store::key_text(*change.before)) : std::string());
    text_ += "\n" + escaped(words_of_row(change.around == nullptr ? Trail{} : *change.around, change.row()));
    for (const LeafChange& leaf : of.leaves) {
        text_ += "\n" + name_of(*leaf.node) + "\n";
        text_ += change.fate == Fate::New ? "" : escaped(shown_value(*leaf.node, leaf.before, leaf.entries_before));
        text_ += "\n";
        text_ += change.fate == Fate::Removed ? "" : escaped(shown_value(*leaf.node, leaf.after, leaf.entries_after));
    }
    json_.text(text_);
}

// Only where a leaf was written by another step than the row's.
void Rows::write_steps(const RowLeaves& of)
{
    const bool alike = std::all_of(of.leaves.begin(), of.leaves.end(),
                                   [&of](const LeafChange& leaf) { return leaf.writer == of.writer; });
    if (alike) {
        return;
    }
    json_.begin('[', JsonWriter::Dense);
    for (const LeafChange& leaf : of.leaves) {
        json_.number(std::size_t{leaf.writer});
    }
    json_.end();
}

const std::string& Rows::name_of(const Node& leaf)
{
    std::string& name = names_[&leaf];
    name = name.empty() ? escaped(name_in_row(leaf)) : name;
    return name;
}

// What the numbers of the rows stand for.
void write_names(const Report& report, const RowNumbers& numbers, JsonWriter* json)
{
    json->begin('{', JsonWriter::Dense).name("lists").begin('[', JsonWriter::Dense);
    json->begin('[', JsonWriter::Dense).text("/").text("values outside of all lists").text("").end();
    for (const ListAccount& each : report.judgement->account.lists) {
        const std::string noun = noun_of(*each.list).many;
        json->begin('[', JsonWriter::Dense).text(each.list->path()).text(noun == "rows" ? each.list->name : noun);
        json->text(bgp_platform::store::way_below(each.list->record->owner, *each.list)).end();
    }
    json->end().name("fates").begin('[', JsonWriter::Dense);
    for (const Fate fate : kFates) {
        json->text(bgp_rehearse::name_of(fate));
    }
    json->end().name("steps").begin('[', JsonWriter::Dense);
    json->begin('[', JsonWriter::Dense).text("").text("").number(std::size_t{0}).end();
    for (std::size_t i = 0; i < report.steps.size(); ++i) {
        std::size_t line = 0;
        for (const LogPart& part : report.log_parts) {
            line = line == 0 && part.step == i + 1 ? part.first : line;
        }
        json->begin('[', JsonWriter::Dense).text(report.steps[i].name).text(report.steps[i].title).number(line).end();
    }
    json->end().name("findings").begin('[', JsonWriter::Dense);
    for (const Finding& finding : report.judgement->findings) {
        json->begin('[', JsonWriter::Dense);
        for (const std::size_t number : numbers.of(finding)) {
            json->number(number);
        }
        json->end();
    }
    json->end().end();
}

// Returns how many rows were left out.
std::size_t write_data(const Report& report, const RowNumbers& numbers, Markup* page)
{
    std::unordered_map<const Node*, std::size_t> lists;
    for (const ListAccount& each : report.judgement->account.lists) {
        lists.emplace(each.list, lists.size());
    }
    Island island("changes-data", page);
    JsonWriter json([&island](std::string_view text) {
        island.add(text);
        return true;
    });
    write_names(report, numbers, &json);
    Rows rows(lists, &island, &json);
    walk_rows(*report.device, rows);
    const std::size_t left_out = rows.finish();
    static_cast<void>(json.finish());
    island.finish();
    return left_out;
}

void begin_choice(const char* id, const char* name, Markup* page)
{
    page->open("div", {{"class", "choice"}}).line("label", name, {{"for", id}});
    page->open("select", {{"id", id}}).line("option", "all", {{"value", ""}});
}

void write_option(std::size_t value, const std::string& text, Markup* page)
{
    const std::string number = std::to_string(value);
    page->line("option", text, {{"value", number}});
}

void write_choices(const Report& report, const RowNumbers& numbers, Markup* page)
{
    begin_choice("filter-fate", "Fate", page);
    for (const Fate fate : {Fate::Moved, Fate::MovedAndChanged, Fate::Changed, Fate::Removed, Fate::New}) {
        write_option(static_cast<std::size_t>(fate), bgp_rehearse::name_of(fate), page);
    }
    page->close().close();
    begin_choice("filter-step", "Step", page);
    for (std::size_t i = 0; i < report.steps.size(); ++i) {
        if (report.steps[i].calls.writes > 0) {
            write_option(i + 1, fmt::format("{}. {}", i + 1, report.steps[i].title), page);
        }
    }
    page->close().close();
    begin_choice("filter-finding", "Finding", page);
    for (std::size_t i = 0; i < report.judgement->findings.size(); ++i) {
        const Finding& finding = report.judgement->findings[i];
        if (!numbers.of(finding).empty()) {
            write_option(i + 1, fmt::format("{}: {}", name_of(finding.id), finding.sentence), page);
        }
    }
    page->close().close();
}

// Shown by the script, which fills it.
void write_view(const Report& report, const RowNumbers& numbers, Markup* page)
{
    page->open("div", {{"id", "changes-view"}, {"hidden", ""}});
    page->open("div", {{"class", "tools"}, {"role", "search"}, {"aria-label", "Changes"}});
    page->open("div", {{"class", "choice"}}).open("label", {{"for", "search"}}).text("Search ");
    page->line("kbd", "/").close();
    page->element("input", {{"id", "search"},
                            {"type", "search"},
                            {"autocomplete", "off"},
                            {"spellcheck", "false"},
                            {"placeholder", "address, name, value or keypath"}});
    page->close();
    write_choices(report, numbers, page);
    page->line("button", "Clear", {{"id", "clear"}, {"type", "button"}});
    page->line("button", "Open all", {{"id", "open-all"}, {"type", "button"}});
    page->line("button", "Close all", {{"id", "close-all"}, {"type", "button"}});
    page->close();
    page->open("p", {{"id", "matches"}, {"role", "status"}}).text("Loading the changes.").close();
    page->open("div", {{"class", "panes"}});
    page->open("div", {{"id", "tree"}, {"role", "tree"}, {"aria-label", "Changes"}}).close();
    page->open("section", {{"id", "detail"}, {"aria-label", "The chosen change"}}).close();
    page->close().close();
}

}  // namespace

void write_changes(const Report& report, const RowNumbers& numbers, Markup* page)
{
    page->open("section", {{"id", "changes"}, {"aria-labelledby", "changes-title"}});
    page->line("h2", "Changes", {{"id", "changes-title"}});
    if (report.device == nullptr) {
        page->line("p", "Not known: what the upgrade had done is gone with its process.").close();
        return;
    }
    page->open("noscript").open("p").text("The tree of changes, its search and its filters need JavaScript; ");
    page->line("code", "bgp-rehearse run CONFIG --changes").text(" lists the same.").close().close();
    write_view(report, numbers, page);
    if (const std::size_t left_out = write_data(report, numbers, page); left_out > 0) {
        page->open("p", {{"class", "left-out"}});
        page->text(fmt::format("The last {} are not in this page, which would be too large for a browser: ",
                               counted(left_out, {"changed row", "changed rows"})));
        page->line("code", "--changes=PATH").text(" lists those below a keypath, ").line("code", "--json");
        page->text(" has all.").close();
    }
    page->close();
}

}  // namespace bgp_rehearse
