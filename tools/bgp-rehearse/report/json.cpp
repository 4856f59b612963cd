#include "report/json.h"

#include <chrono>

#include "base/sha256.h"
#include "contract/step.h"
#include "report/json_changes.h"
#include "report/json_ending.h"
#include "report/json_judgement.h"
#include "report/json_writer.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::capi::Function;

double seconds(Duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

class Document {
public:
    Document(const Report& report, int file) : report_(report), json_(file) {}

    bool write(const Ending& ending);

private:
    void inputs();
    void assumption(const Assumption& assumption);
    void steps();
    void calls();
    void predicted();
    void prediction(const CallTotals& calls);
    void range(const char* name, const DurationRange& range);
    void failed_writes();
    void faults();
    void outcome();
    void last_seen(const LastSeen& last);

    const Report& report_;
    JsonWriter json_;
};

bool Document::write(const Ending& ending)
{
    begin_document(ending, &json_);
    const std::optional<Judgement>& judgement = report_.judgement;
    json_.name("verdict").text_or_null(judgement ? judgement->verdict.word() : "");
    json_.name("reason").text_or_null(judgement ? judgement->verdict.sentence : "");
    inputs();
    write_account(report_, &json_);
    write_findings(report_, &json_);
    steps();
    calls();
    predicted();
    failed_writes();
    faults();
    outcome();
    json_.name("changes");
    if (report_.device != nullptr) {
        write_changes(*report_.device, &json_);
    } else {
        json_.begin('[').end();
    }
    if (report_.log_in_json) {
        json_.name("log").begin('[', JsonWriter::Lines);
        for (const std::string& line : report_.log) {
            json_.text(line);
        }
        json_.end();
    }
    json_.end();
    return json_.finish();
}

void Document::inputs()
{
    const Inputs& inputs = report_.inputs;
    json_.name("inputs").begin('{', JsonWriter::Lines);
    json_.name("configuration").begin('{').name("name").text(inputs.configuration);
    json_.name("sha256").text_or_null(inputs.configuration_sha256).end();
    json_.name("library").begin('{').name("path").text(inputs.library);
    json_.name("version").text_or_null(version_of(inputs.library).version);
    json_.name("sha256").text_or_null(sha256_of_file(inputs.library)).end();
    json_.name("options").begin('{').name("fail_on").text(inputs.fail_on).name("severities").begin('[');
    for (const auto& [id, level] : inputs.severities) {
        json_.begin('{').name("id").text(id).name("severity").text(level).end();
    }
    json_.end().name("max_entries").number(inputs.max_entries);
    json_.name("commit_check").truth(inputs.commit_check).name("again").truth(inputs.again);
    json_.name("time_limit");
    inputs.limits.time ? json_.number(seconds(*inputs.limits.time)) : json_.null();
    json_.name("memory_limit");
    inputs.limits.memory ? json_.number(*inputs.limits.memory) : json_.null();
    json_.end();
    json_.name("assumptions").begin('[', JsonWriter::Lines);
    if (report_.judgement) {
        for (const Assumption& each : report_.judgement->assumptions) {
            assumption(each);
        }
    }
    json_.end().end();
}

void Document::assumption(const Assumption& assumption)
{
    json_.begin('{').name("name").text(assumption.name).name("value").text(assumption.value);
    json_.name("option").text(assumption.option).name("given").truth(assumption.given);
    json_.name("decided").begin('[');
    for (const Assumption::Leaf& each : assumption.decided) {
        const bgp_platform::schema::Node* const list = each.row->record().owner;
        const std::string row = list == nullptr ? std::string() : bgp_platform::store::keypath({}, each.row);
        json_.text(row + bgp_platform::store::way_below(list, *each.leaf));
    }
    json_.end().end();
}

void Document::steps()
{
    json_.name("steps").begin('[', JsonWriter::Lines);
    for (const Step& step : report_.steps) {
        json_.begin('{').name("name").text(step.name).name("title").text(step.title);
        json_.name("outcome").text(name_of(step.outcome)).name("text").text(step.text);
        json_.name("line").text(step.line).name("runs").number(step.runs);
        json_.name("reads").number(step.calls.reads).name("writes").number(step.calls.writes);
        json_.name("failed_writes").number(step.calls.failed_writes);
        json_.end();
    }
    json_.end();
}

void Document::calls()
{
    json_.name("calls").begin('{', JsonWriter::Lines);
    for (std::size_t i = 0; i < bgp_platform::capi::kFunctions; ++i) {
        if (report_.calls.calls[i] > 0) {
            json_.name(bgp_platform::capi::name_of(static_cast<Function>(i))).begin('{');
            json_.name("calls").number(report_.calls.calls[i]).name("failures").number(report_.calls.failures[i]).end();
        }
    }
    json_.end();
}

void Document::range(const char* name, const DurationRange& range)
{
    json_.name(name)
        .begin('{')
        .name("least")
        .number(seconds(range.least))
        .name("most")
        .number(seconds(range.most))
        .end();
}

void Document::prediction(const CallTotals& calls)
{
    json_.name("calls").number(calls.reads + calls.writes + calls.sessions);
    json_.name("connections").number(calls.connections);
    range("seconds", time_of(calls, report_.times));
}

void Document::predicted()
{
    json_.name("predicted");
    if (report_.device == nullptr) {
        json_.null();
        return;
    }
    json_.begin('{', JsonWriter::Lines);
    range("call_seconds", report_.times.call);
    range("connection_seconds", report_.times.connection);
    prediction(totals_of(report_.calls));
    json_.name("steps").begin('[', JsonWriter::Lines);
    for (const Step& step : report_.steps) {
        json_.begin('{').name("name").text(step.name);
        prediction(step.calls);
        json_.end();
    }
    json_.end().end();
}

const char* name_of(bgp_contract::Class kind) noexcept
{
    switch (kind) {
        case bgp_contract::Class::Expected:
            return "expected";
        case bgp_contract::Class::Left:
            return "left";
        case bgp_contract::Class::Loses:
            return "loses";
        case bgp_contract::Class::Stops:
            break;
    }
    return "stops";
}

void Document::failed_writes()
{
    json_.name("failed_writes").begin('[', JsonWriter::Lines);
    if (report_.failed_calls != nullptr) {
        report_.failed_calls->for_each([this](const FailedCalls::Call& call) {
            if (!call.is_write()) {
                return;
            }
            json_.begin('{').name("step").text(call.step);
            json_.name("function").text(bgp_platform::capi::name_of(call.function));
            json_.name("error").signed_number(call.error).name("path").text_or_null(call.path);
            json_.name("class").text_or_null(call.known ? name_of(call.kind) : "");
            json_.name("sentence").text_or_null(call.sentence).end();
        });
    }
    json_.end();
}

void Document::faults()
{
    json_.name("faults").begin('[', JsonWriter::Lines);
    for (const bgp_platform::Fault& fault : report_.faults) {
        json_.begin('{').name("function").text(fault.function).name("source").text(fault.source);
        json_.name("line").number(std::size_t{fault.line}).name("text").text(fault.text).end();
    }
    json_.end();
}

void Document::outcome()
{
    json_.name("returned");
    report_.returned ? json_.signed_number(*report_.returned) : json_.null();
    json_.name("ended");
    if (report_.ended) {
        const Ended& ended = *report_.ended;
        json_.begin('{').name("kind").text(name_of(ended.kind)).name("function").text(ended.function);
        json_.name("source").text(ended.source).name("line").number(std::size_t{ended.line});
        json_.name("text").text(ended.text).name("signal").signed_number(ended.signal);
        json_.name("status").signed_number(ended.status);
        last_seen(ended.last);
        json_.end();
    } else {
        json_.null();
    }
    json_.name("check");
    if (report_.check) {
        json_.begin('{').name("valid").truth(report_.check->empty()).name("message").text(*report_.check).end();
    } else {
        json_.null();
    }
}

void Document::last_seen(const LastSeen& last)
{
    json_.name("last").begin('{').name("step").text(last.step).name("reading").text_or_null(last.reading);
    json_.name("writing").text_or_null(last.writing).name("function").text_or_null(last.function);
    json_.name("under_way").truth(last.under_way).name("reads").number(last.calls.reads);
    json_.name("writes").number(last.calls.writes).name("failed_writes").number(last.calls.failed_writes);
    json_.name("log").begin('[');
    for (const std::string& line : last.log) {
        json_.text(line);
    }
    json_.end().end();
}

}  // namespace

bool write_json_report(const Report& report, const Ending& ending, int file)
{
    return Document(report, file).write(ending);
}

}  // namespace bgp_rehearse
