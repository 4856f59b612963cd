#include "report/json.h"

#include <unistd.h>

#include <algorithm>
#include <vector>

#include "base/sha256.h"
#include "contract/step.h"
#include "report/json_changes.h"
#include "report/json_writer.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::capi::Function;

constexpr std::size_t kSchema = 2;
constexpr std::size_t kPiece = 1 << 16;

class Document {
public:
    Document(const Report& report, int file) : report_(report), json_(file) {}

    bool write(const Ending& ending);

private:
    void inputs();
    void assumption(const Assumption& assumption);
    void account();
    void findings();
    void finding(const Finding& finding);
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

// All that another ending makes different.
void begin_document(const Ending& ending, JsonWriter* json)
{
    json->begin('{', JsonWriter::Lines).name("schema").number(kSchema).name("version").text(BGP_REHEARSE_VERSION);
    json->name("exit_status").signed_number(ending.status).name("error").text_or_null(ending.error);
}

std::string beginning(const Ending& ending)
{
    JsonWriter json(-1);
    begin_document(ending, &json);
    return json.written_so_far();
}

bool Document::write(const Ending& ending)
{
    begin_document(ending, &json_);
    const std::optional<Judgement>& judgement = report_.judgement;
    json_.name("verdict").text_or_null(judgement ? judgement->verdict.word() : "");
    json_.name("reason").text_or_null(judgement ? judgement->verdict.sentence : "");
    inputs();
    account();
    findings();
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
    json_.name("commit_check").truth(inputs.commit_check).name("again").truth(inputs.again).end();
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

void add_counts(const RowCounts& rows, JsonWriter* json)
{
    json->name("stored").number(rows.stored).name("kept").number(rows.kept).name("changed").number(rows.changed);
    json->name("moved").number(rows.moved).name("moved_and_changed").number(rows.moved_and_changed);
    json->name("removed").number(rows.removed).name("new").number(rows.added).name("result").number(rows.result);
}

void Document::account()
{
    json_.name("account");
    if (report_.device == nullptr || !report_.judgement) {
        json_.null();
        return;
    }
    const Account& account = report_.judgement->account;
    json_.begin('{', JsonWriter::Lines);
    add_counts(account.total, &json_);
    json_.name("lists").begin('[', JsonWriter::Lines);
    for (const ListAccount& each : account.lists) {
        json_.begin('{').name("path").text(each.list->path());
        add_counts(each.rows, &json_);
        json_.end();
    }
    json_.end().end();
}

void Document::findings()
{
    json_.name("findings").begin('[', JsonWriter::Lines);
    if (report_.judgement) {
        for (const Finding& each : report_.judgement->findings) {
            finding(each);
        }
    }
    json_.end();
}

void Document::finding(const Finding& finding)
{
    json_.begin('{').name("id").text(name_of(finding.id)).name("severity").text(name_of(finding.severity));
    json_.name("count").number(finding.count).name("sentence").text(finding.sentence);
    json_.name("advice").text_or_null(finding.advice).name("step").text_or_null(finding.step);
    json_.name("places").begin('[');
    for (const Place& place : finding.places) {
        json_.begin('{').name("path").text_or_null(path_of(finding, place));
        json_.name("text").text(words_of(finding, place)).end();
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

double seconds(Duration duration)
{
    return std::chrono::duration<double>(duration).count();
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

bool write_at(int file, const std::string& text, off_t place)
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t size = pwrite(file, text.data() + done, text.size() - done, place + static_cast<off_t>(done));
        if (size < 0) {
            return false;
        }
        done += static_cast<std::size_t>(size);
    }
    return true;
}

// Moves all from a place on to another place further on, the last part first.
bool move_on(int file, off_t from, off_t to)
{
    std::string piece;
    for (off_t end = lseek(file, 0, SEEK_END); end > from;) {
        const off_t start = std::max(from, end - static_cast<off_t>(kPiece));
        piece.resize(static_cast<std::size_t>(end - start));
        if (pread(file, piece.data(), piece.size(), start) != end - start ||
            !write_at(file, piece, start + to - from)) {
            return false;
        }
        end = start;
    }
    return true;
}

}  // namespace

bool write_json_report(const Report& report, const Ending& ending, int file)
{
    return Document(report, file).write(ending);
}

bool replace_ending(const Ending& written, const Ending& ending, int file)
{
    const auto old_size = beginning(written).size();
    std::string now = beginning(ending);
    if (now.size() < old_size) {
        now.append(old_size - now.size(), ' ');
    }
    return (now.size() == old_size || move_on(file, static_cast<off_t>(old_size), static_cast<off_t>(now.size()))) &&
           write_at(file, now, 0);
}

}  // namespace bgp_rehearse
