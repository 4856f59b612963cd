#include "fleet/shard/result.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "report/json_writer.h"

namespace bgp_rehearse {

namespace {

using Json = nlohmann::ordered_json;

struct RowField {
    const char* name;
    std::size_t RowCounts::*count;
};
constexpr RowField kRows[] = {
    {"stored", &RowCounts::stored},
    {"kept", &RowCounts::kept},
    {"changed", &RowCounts::changed},
    {"moved", &RowCounts::moved},
    {"moved_and_changed", &RowCounts::moved_and_changed},
    {"removed", &RowCounts::removed},
    {"new", &RowCounts::added},
    {"result", &RowCounts::result},
};

struct CallField {
    const char* name;
    std::size_t CallTotals::*count;
};
constexpr CallField kCalls[] = {
    {"reads", &CallTotals::reads},
    {"writes", &CallTotals::writes},
    {"failed_writes", &CallTotals::failed_writes},
    {"sessions", &CallTotals::sessions},
    {"connections", &CallTotals::connections},
};

// A line put together: the library's own document would take a tenth of the time that a small router does.
class Line {
public:
    Line& field(const char* name)
    {
        separate().append("\"").append(name).append("\":");
        return *this;
    }
    Line& text(const std::string& text)
    {
        append_json(text, &line_);
        return *this;
    }
    Line& number(uint64_t number)
    {
        line_ += std::to_string(number);
        return *this;
    }
    Line& seconds(double seconds)
    {
        line_ += Json(seconds).dump();
        return *this;
    }
    template <typename Counts, typename Fields>
    Line& counts(const Counts& counts, const Fields& fields)
    {
        line_ += '{';
        for (const auto& each : fields) {
            field(each.name).number(counts.*each.count);
        }
        line_ += '}';
        return *this;
    }
    template <typename Item, typename Write>
    Line& array(const std::vector<Item>& items, Write write)
    {
        line_ += '[';
        for (const Item& item : items) {
            separate();
            write(item, this);
        }
        line_ += ']';
        return *this;
    }
    Line& begin()
    {
        line_ += '{';
        return *this;
    }
    Line& end()
    {
        line_ += '}';
        return *this;
    }
    std::string take() { return std::move(line_); }

private:
    std::string& separate()
    {
        const char last = line_.empty() ? '{' : line_.back();
        return last == '{' || last == '[' ? line_ : line_.append(",");
    }

    std::string line_;
};

template <typename Counts, typename Fields>
Counts counts_of(const Json& json, const Fields& fields)
{
    Counts counts;
    for (const auto& field : fields) {
        counts.*field.count = json.at(field.name).template get<std::size_t>();
    }
    return counts;
}

template <typename Item, typename OfJson>
std::vector<Item> items_of(const Json& array, OfJson of_json)
{
    std::vector<Item> items;
    for (const Json& item : array.get_ref<const Json::array_t&>()) {
        items.push_back(of_json(item));
    }
    return items;
}

std::string text_of(const Json& json, const char* name)
{
    return json.at(name).get<std::string>();
}

void write_place(const FleetPlace& place, Line* line)
{
    line->begin().field("path").text(place.path).field("text").text(place.text).end();
}

FleetPlace place_of(const Json& json)
{
    return {text_of(json, "path"), text_of(json, "text")};
}

void write_finding(const FleetFinding& finding, Line* line)
{
    line->begin().field("id").text(finding.id).field("severity").text(finding.severity);
    line->field("reason").text(finding.reason).field("sentence").text(finding.sentence);
    line->field("advice").text(finding.advice).field("step").text(finding.step);
    line->field("count").number(finding.count).field("places").array(finding.places, write_place).end();
}

FleetFinding finding_of(const Json& json)
{
    return {text_of(json, "id"),
            text_of(json, "severity"),
            text_of(json, "reason"),
            text_of(json, "sentence"),
            text_of(json, "advice"),
            text_of(json, "step"),
            json.at("count").get<uint64_t>(),
            items_of<FleetPlace>(json.at("places"), place_of)};
}

void write_step(const FleetStep& step, Line* line)
{
    line->begin().field("name").text(step.name).field("outcome").text(step.outcome);
    line->field("changes").text(step.changes).end();
}

void write_error(const std::string& error, Line* line)
{
    line->text(error);
}

FleetStep step_of(const Json& json)
{
    return {text_of(json, "name"), text_of(json, "outcome"), text_of(json, "changes")};
}

RouterResult result_of(const Json& json)
{
    RouterResult result;
    result.number = json.at("n").get<std::size_t>();
    result.name = text_of(json, "name");
    result.sha256 = text_of(json, "sha256");
    result.bytes = json.at("bytes").get<uint64_t>();
    result.input_class = text_of(json, "class");
    result.verdict = text_of(json, "verdict");
    result.sentence = text_of(json, "sentence");
    result.exit_status = json.at("exit_status").get<int>();
    result.errors = json.at("errors").get<std::vector<std::string>>();
    result.findings = items_of<FleetFinding>(json.at("findings"), finding_of);
    result.steps = items_of<FleetStep>(json.at("steps"), step_of);
    result.account = counts_of<RowCounts>(json.at("rows"), kRows);
    result.calls = counts_of<CallTotals>(json.at("calls"), kCalls);
    result.seconds_least = json.at("seconds").at("least").get<double>();
    result.seconds_most = json.at("seconds").at("most").get<double>();
    return result;
}

}  // namespace

std::string line_of(const RouterResult& result)
{
    Line line;
    line.begin().field("n").number(result.number).field("name").text(result.name);
    line.field("sha256").text(result.sha256).field("bytes").number(result.bytes);
    line.field("class").text(result.input_class).field("verdict").text(result.verdict);
    line.field("sentence").text(result.sentence);
    line.field("exit_status").number(static_cast<uint64_t>(result.exit_status));
    line.field("errors").array(result.errors, write_error);
    line.field("findings").array(result.findings, write_finding).field("steps").array(result.steps, write_step);
    line.field("rows").counts(result.account, kRows).field("calls").counts(result.calls, kCalls);
    line.field("seconds").begin().field("least").seconds(result.seconds_least);
    line.field("most").seconds(result.seconds_most).end().end();
    return line.take();
}

RouterResult result_of(std::string_view line)
{
    try {
        return result_of(Json::parse(line));
    } catch (const Json::exception& error) {
        throw std::invalid_argument(fmt::format("this line is no result: {}", error.what()));
    }
}

}  // namespace bgp_rehearse
