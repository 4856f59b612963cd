#include "fleet/report/summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace bgp_rehearse {

namespace {

constexpr std::size_t kFewestDigits = 6;  // of a reason's name

std::map<std::string, std::string> about_of(const Database& database)
{
    std::map<std::string, std::string> about;
    for (Statement each(database, "SELECT key, value FROM about"); each.next();) {
        about.emplace(each.text(0), each.text(1));
    }
    return about;
}

// In the order of the words.
template <typename Words>
std::vector<RouterCount> counts_of(const Database& database, const char* column, const Words& words)
{
    std::vector<RouterCount> counts;
    counts.reserve(std::size(words));
    for (const char* word : words) {
        counts.push_back({word, 0});
    }
    Statement each(database, fmt::format("SELECT {0}, count(*) FROM router GROUP BY {0}", column));
    while (each.next()) {
        const auto same = [&](const RouterCount& count) { return count.what == each.text(0); };
        std::find_if(counts.begin(), counts.end(), same)->routers = each.count(1);
    }
    return counts;
}

std::size_t common_start(std::string_view one, std::string_view other)
{
    return static_cast<std::size_t>(std::mismatch(one.begin(), one.end(), other.begin()).first - one.begin());
}

// As many digits for all as tell them apart.
void name_reasons(std::vector<ReasonCount>* reasons)
{
    std::vector<std::string> names;
    for (const ReasonCount& reason : *reasons) {
        names.push_back(fmt::format("{:016x}", reason.id));
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    std::size_t digits = kFewestDigits;
    for (std::size_t i = 1; i < names.size(); ++i) {
        digits = std::max(digits, common_start(names[i - 1], names[i]) + 1);
    }
    for (ReasonCount& reason : *reasons) {
        reason.name = fmt::format("{:016x}", reason.id).substr(0, digits);
    }
}

void add_examples(const Database& database, std::vector<ReasonCount>* reasons)
{
    Statement example(
        database,
        "SELECT name FROM router WHERE number IN (SELECT DISTINCT router FROM finding WHERE reason = ? AND "
        "severity = ? ORDER BY router LIMIT ?) ORDER BY number");
    for (ReasonCount& reason : *reasons) {
        for (example.with(reason.id, reason.severity, kExamples); example.next();) {
            reason.examples.emplace_back(example.text(0));
        }
    }
}

std::vector<ReasonCount> reasons_of(const Database& database)
{
    std::vector<ReasonCount> reasons;
    Statement each(database,
                   "SELECT id, reason.finding, text, severity, routers, places FROM (SELECT reason AS of, severity, "
                   "count(DISTINCT router) AS routers, sum(count) AS places FROM finding GROUP BY reason, severity) "
                   "JOIN reason ON id = of ORDER BY CASE severity WHEN 'stop' THEN 0 WHEN 'review' THEN 1 ELSE 2 END, "
                   "routers DESC, reason.finding, text");
    while (each.next()) {
        reasons.push_back({each.number(0),
                           {},
                           std::string(each.text(1)),
                           std::string(each.text(2)),
                           std::string(each.text(3)),
                           each.count(4),
                           each.count(5),
                           {}});
    }
    name_reasons(&reasons);
    add_examples(database, &reasons);
    return reasons;
}

std::vector<StepCount> steps_of(const Database& database, std::size_t routers)
{
    std::vector<StepCount> steps;
    Statement each(database,
                   "SELECT name, outcome, sum(routers), min(min(number)) OVER (PARTITION BY name) AS first "
                   "FROM course_step JOIN (SELECT course AS taken, count(*) AS routers FROM router GROUP BY course) "
                   "ON taken = course GROUP BY name, outcome ORDER BY first, name");
    while (each.next()) {
        if (steps.empty() || steps.back().name != each.text(0)) {
            steps.push_back({std::string(each.text(0)), {}, routers});
        }
        steps.back().outcomes.emplace(each.text(1), each.count(2));
        steps.back().not_told -= each.count(2);
    }
    return steps;
}

std::size_t number_of(const Database& database, const char* query)
{
    Statement statement(database, query);
    statement.next();
    return statement.count(0);
}

}  // namespace

FleetSummary summary_of(const Database& database)
{
    FleetSummary summary;
    summary.about = about_of(database);
    summary.routers = number_of(database, "SELECT count(*) FROM router");
    summary.verdicts = counts_of(database, "verdict", kVerdicts);
    summary.classes = counts_of(database, "input_class", kInputClasses);
    summary.reasons = reasons_of(database);
    summary.steps = steps_of(database, summary.routers);
    summary.with_reasons = number_of(database, "SELECT count(DISTINCT router) FROM finding");
    return summary;
}

}  // namespace bgp_rehearse
