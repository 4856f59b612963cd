#include "fleet/report/json.h"

#include <fmt/format.h>

#include "report/json_writer.h"

namespace bgp_rehearse {

namespace {

class FleetJson {
public:
    FleetJson(const FleetSummary& summary, const Database& database, int file)
        : summary_(summary), database_(database), json_(file)
    {
    }

    bool write(const Comparison* comparison)
    {
        json_.begin('{', JsonWriter::Lines);
        json_.name("schema").number(std::size_t{1});
        about();
        json_.name("routers").number(summary_.routers);
        counts("verdicts", summary_.verdicts);
        counts("backups", summary_.classes);
        reasons();
        steps();
        compared(comparison);
        results();
        json_.end();
        return json_.finish();
    }

private:
    void about();
    void counts(const char* name, const std::vector<RouterCount>& counts);
    void reasons();
    void reason(const ReasonCount& reason);
    void steps();
    void compared(const Comparison* comparison);
    void shared(const Comparison& comparison);
    void differing(const Comparison& comparison);
    void results();
    void texts(const char* name, const std::vector<std::string>& texts);

    const FleetSummary& summary_;
    const Database& database_;
    JsonWriter json_;
};

void FleetJson::about()
{
    json_.name("about").begin('{', JsonWriter::Lines);
    for (const auto& [key, value] : summary_.about) {
        json_.name(key).text(value);
    }
    json_.end();
}

void FleetJson::counts(const char* name, const std::vector<RouterCount>& counts)
{
    json_.name(name).begin('{');
    for (const RouterCount& each : counts) {
        json_.name(each.what).number(each.routers);
    }
    json_.end();
}

void FleetJson::reasons()
{
    json_.name("reasons").begin('[', JsonWriter::Lines);
    for (const ReasonCount& each : summary_.reasons) {
        reason(each);
    }
    json_.end();
}

void FleetJson::reason(const ReasonCount& reason)
{
    json_.begin('{');
    json_.name("reason").text(fmt::format("{:016x}", reason.id));
    json_.name("severity").text(reason.severity);
    json_.name("finding").text(reason.finding);
    json_.name("text").text(reason.text);
    json_.name("routers").number(reason.routers);
    json_.name("count").number(reason.places);
    texts("examples", reason.examples);
    json_.end();
}

void FleetJson::texts(const char* name, const std::vector<std::string>& texts)
{
    json_.name(name).begin('[');
    for (const std::string& each : texts) {
        json_.text(each);
    }
    json_.end();
}

void FleetJson::steps()
{
    json_.name("steps").begin('[', JsonWriter::Lines);
    for (const StepCount& step : summary_.steps) {
        json_.begin('{').name("name").text(step.name).name("outcomes").begin('{');
        for (const char* outcome : kOutcomes) {
            const auto found = step.outcomes.find(outcome);
            json_.name(outcome).number(found == step.outcomes.end() ? 0 : found->second);
        }
        json_.end().name("not_told").number(step.not_told).end();
    }
    json_.end();
}

void FleetJson::compared(const Comparison* comparison)
{
    json_.name("baseline");
    if (comparison == nullptr) {
        json_.null();
        return;
    }
    json_.begin('{', JsonWriter::Lines);
    json_.name("file").text(comparison->baseline);
    json_.name("routers").begin('{');
    for (std::size_t i = 0; i < kDifferences.size(); ++i) {
        json_.name(kDifferences[i]).number(comparison->routers[i]);
    }
    json_.end();
    shared(*comparison);
    differing(*comparison);
    json_.end();
}

void FleetJson::shared(const Comparison& comparison)
{
    json_.name("differences").begin('[', JsonWriter::Lines);
    for (const SharedDifference& each : comparison.shared) {
        json_.begin('{').name("difference").text(kDifferences[static_cast<std::size_t>(each.difference)]);
        json_.name("why").text(each.why).name("routers").number(each.routers);
        texts("examples", each.examples);
        json_.end();
    }
    json_.end();
}

void FleetJson::differing(const Comparison& comparison)
{
    json_.name("differing").begin('[', JsonWriter::Lines);
    for (const RouterDifference& each : comparison.differing) {
        json_.begin('{').name("name").text(each.name);
        json_.name("difference").text(kDifferences[static_cast<std::size_t>(each.difference)]);
        json_.name("before").text_or_null(each.before).name("after").text_or_null(each.after);
        texts("why", each.why);
        json_.end();
    }
    json_.end();
}

void FleetJson::results()
{
    Statement router(database_,
                     "SELECT number, name, input_class, verdict, sentence, exit_status FROM router "
                     "ORDER BY number");
    Statement reason(database_,
                     "SELECT DISTINCT printf('%016x', reason) FROM finding WHERE router = ? ORDER BY number");
    json_.name("results").begin('[', JsonWriter::Lines);
    while (router.next()) {
        json_.begin('{').name("name").text(router.text(1)).name("backup").text(router.text(2));
        json_.name("verdict").text(router.text(3)).name("sentence").text(router.text(4));
        json_.name("exit_status").number(router.count(5)).name("reasons").begin('[');
        for (reason.with(router.number(0)); reason.next();) {
            json_.text(reason.text(0));
        }
        json_.end().end();
    }
    json_.end();
}

}  // namespace

bool write_fleet_json(const FleetSummary& summary, const Comparison* comparison, const Database& database, int file)
{
    return FleetJson(summary, database, file).write(comparison);
}

}  // namespace bgp_rehearse
