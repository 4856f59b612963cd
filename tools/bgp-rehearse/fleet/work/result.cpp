#include "fleet/work/result.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

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

template <typename Counts, typename Fields>
Json counts_json(const Counts& counts, const Fields& fields)
{
    Json json = Json::object();
    for (const auto& field : fields) {
        json[field.name] = counts.*field.count;
    }
    return json;
}

template <typename Counts, typename Fields>
Counts counts_of(const Json& json, const Fields& fields)
{
    Counts counts;
    for (const auto& field : fields) {
        counts.*field.count = json.at(field.name).template get<std::size_t>();
    }
    return counts;
}

template <typename Item, typename ToJson>
Json array_of(const std::vector<Item>& items, ToJson to_json)
{
    Json array = Json::array();
    for (const Item& item : items) {
        array.push_back(to_json(item));
    }
    return array;
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

Json place_json(const FleetPlace& place)
{
    return {{"path", place.path}, {"text", place.text}};
}

FleetPlace place_of(const Json& json)
{
    return {text_of(json, "path"), text_of(json, "text")};
}

Json finding_json(const FleetFinding& finding)
{
    return {{"id", finding.id},         {"severity", finding.severity},
            {"reason", finding.reason}, {"sentence", finding.sentence},
            {"advice", finding.advice}, {"step", finding.step},
            {"count", finding.count},   {"places", array_of(finding.places, place_json)}};
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

Json step_json(const FleetStep& step)
{
    return {{"name", step.name}, {"outcome", step.outcome}};
}

FleetStep step_of(const Json& json)
{
    return {text_of(json, "name"), text_of(json, "outcome")};
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
    const Json json = {{"n", result.number},
                       {"name", result.name},
                       {"sha256", result.sha256},
                       {"bytes", result.bytes},
                       {"class", result.input_class},
                       {"verdict", result.verdict},
                       {"sentence", result.sentence},
                       {"exit_status", result.exit_status},
                       {"errors", result.errors},
                       {"findings", array_of(result.findings, finding_json)},
                       {"steps", array_of(result.steps, step_json)},
                       {"rows", counts_json(result.account, kRows)},
                       {"calls", counts_json(result.calls, kCalls)},
                       {"seconds", {{"least", result.seconds_least}, {"most", result.seconds_most}}}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
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
