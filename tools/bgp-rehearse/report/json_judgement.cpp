#include "report/json_judgement.h"

namespace bgp_rehearse {

namespace {

void add_counts(const RowCounts& rows, JsonWriter* json)
{
    json->name("stored").number(rows.stored).name("kept").number(rows.kept).name("changed").number(rows.changed);
    json->name("moved").number(rows.moved).name("moved_and_changed").number(rows.moved_and_changed);
    json->name("removed").number(rows.removed).name("new").number(rows.added).name("result").number(rows.result);
}

void write_finding(const Finding& finding, JsonWriter* json)
{
    json->begin('{').name("id").text(name_of(finding.id)).name("severity").text(name_of(finding.severity));
    json->name("count").number(finding.count).name("reason").text(finding.reason);
    json->name("sentence").text(finding.sentence);
    json->name("advice").text_or_null(finding.advice).name("step").text_or_null(finding.step);
    json->name("places").begin('[');
    for (const Place& place : finding.places) {
        json->begin('{').name("path").text_or_null(path_of(finding, place));
        json->name("text").text(words_of(finding, place)).end();
    }
    json->end().end();
}

}  // namespace

void write_account(const Report& report, JsonWriter* json)
{
    json->name("account");
    if (report.device == nullptr || !report.judgement) {
        json->null();
        return;
    }
    const Account& account = report.judgement->account;
    json->begin('{', JsonWriter::Lines);
    add_counts(account.total, json);
    json->name("lists").begin('[', JsonWriter::Lines);
    for (const ListAccount& each : account.lists) {
        json->begin('{').name("path").text(each.list->path());
        add_counts(each.rows, json);
        json->end();
    }
    json->end().end();
}

void write_findings(const Report& report, JsonWriter* json)
{
    json->name("findings").begin('[', JsonWriter::Lines);
    if (report.judgement) {
        for (const Finding& each : report.judgement->findings) {
            write_finding(each, json);
        }
    }
    json->end();
}

}  // namespace bgp_rehearse
