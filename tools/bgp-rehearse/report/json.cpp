#include "report/json.h"

#include <nlohmann/json.hpp>

namespace bgp_rehearse {

namespace {

using Json = nlohmann::ordered_json;
using bgp_platform::capi::Function;

Json ended_json(const Ended& ended)
{
    return {{"kind", name_of(ended.kind)}, {"function", ended.function}, {"source", ended.source}, {"line", ended.line},
            {"text", ended.text},          {"signal", ended.signal},     {"status", ended.status}};
}

Json fault_json(const bgp_platform::Fault& fault)
{
    return {{"function", fault.function}, {"source", fault.source}, {"line", fault.line}, {"text", fault.text}};
}

Json calls_json(const bgp_platform::capi::CallCounts& counts)
{
    Json calls = Json::object();
    for (std::size_t i = 0; i < bgp_platform::capi::kFunctions; ++i) {
        if (counts.calls[i] > 0) {
            calls[bgp_platform::capi::name_of(static_cast<Function>(i))] = {{"calls", counts.calls[i]},
                                                                            {"failures", counts.failures[i]}};
        }
    }
    return calls;
}

Json step_json(const Step& step)
{
    Json json = {{"name", step.name},
                 {"outcome", name_of(step.outcome)},
                 {"text", step.text},
                 {"line", step.line},
                 {"runs", step.runs}};
    json["reads"] = step.calls.reads;
    json["writes"] = step.calls.writes;
    json["failed_writes"] = step.calls.failed_writes;
    return json;
}

Json failed_writes_json(const bgp_platform::capi::CallCounts& counts)
{
    Json failed = Json::array();
    for (const bgp_platform::capi::FailedCall& call : counts.failed_writes) {
        failed.push_back({{"function", bgp_platform::capi::name_of(call.function)},
                          {"error", call.error},
                          {"message", call.message}});
    }
    return failed;
}

Json value_json(const Leaf& leaf, const bgp_platform::schema::Value* value)
{
    if (value == nullptr) {
        return nullptr;
    }
    std::string text;
    append_shown(leaf, *value, &text);
    return text;
}

Json leaves_json(const Change& change)
{
    Json leaves = Json::object();
    for_each_leaf(change, [&](const Leaf& leaf) {
        Json& values = leaves[name_of(leaf)];
        if (change.kind == Change::Kind::Changed) {
            values = {{"before", value_json(leaf, leaf.before)}, {"after", value_json(leaf, leaf.after)}};
        } else {
            values = value_json(leaf, change.kind == Change::Kind::Created ? leaf.after : leaf.before);
        }
    });
    return leaves;
}

// A change, and after it those of the entries below it.
void add_change(const Change& change, const std::string& around, Json* changes)
{
    const std::string list = around.empty() ? *change.list : around + "/" + *change.list;
    std::string path = list;
    append_braced_key(change.entry, &path);
    Json json = {{"path", path.empty() ? "/" : path}, {"change", name_of(change.kind)}};
    if (change.kind == Change::Kind::Moved) {
        std::string from = list;
        append_braced_key(change.from, &from);
        json["from"] = std::move(from);
    }
    json["leaves"] = leaves_json(change);
    changes->push_back(std::move(json));
    for_each_below(change, [&](const Change& below) { add_change(below, path, changes); });
}

Json changes_json(const std::vector<Change>& all)
{
    Json changes = Json::array();
    for (const Change& change : all) {
        add_change(change, "", &changes);
    }
    return changes;
}

Json check_json(const std::optional<std::string>& check)
{
    return check ? Json{{"valid", check->empty()}, {"message", *check}} : Json(nullptr);
}

}  // namespace

std::string json_report(const Report& report)
{
    Json document;
    document["version"] = BGP_REHEARSE_VERSION;
    document["configuration"] = report.configuration;
    document["library"] = report.library;
    document["loaded"] = {{"entries", report.loaded.entries}, {"values", report.loaded.values}};
    document["result"] = report.ended ? Json(nullptr) : Json(report.result);
    document["ended"] = report.ended ? ended_json(*report.ended) : Json(nullptr);
    document["steps"] = Json::array();
    for (const Step& step : report.steps) {
        document["steps"].push_back(step_json(step));
    }
    document["calls"] = calls_json(report.calls);
    document["failed_writes"] = failed_writes_json(report.calls);
    document["faults"] = Json::array();
    for (const bgp_platform::Fault& fault : report.faults) {
        document["faults"].push_back(fault_json(fault));
    }
    document["check"] = check_json(report.check);
    document["changes"] = changes_json(report.changes);
    document["log"] = report.log;
    // In ASCII: a terminal would act on some of the characters beyond it, and on DEL.
    return document.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

}  // namespace bgp_rehearse
