#include "fleet/report/question.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/exit_status.h"
#include "base/nearest.h"
#include "base/text_escape.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kShownNames = 5;
constexpr std::size_t kDigits = 16;  // of a whole id

[[noreturn]] void refuse_question(const std::string& why)
{
    throw CommandError(ExitStatus::BadInput, why);
}

std::vector<std::string> texts(const Database& database, const char* query)
{
    std::vector<std::string> all;
    for (Statement each(database, query); each.next();) {
        all.emplace_back(each.text(0));
    }
    return all;
}

// Refuses a word that is in none of the rows that a query gives.
void check_known(const Database& database, const char* option, const std::string& word, const char* query)
{
    if (word.empty()) {
        return;
    }
    const std::vector<std::string> known = texts(database, query);
    if (std::find(known.begin(), known.end(), word) == known.end()) {
        refuse_question(fmt::format("{} {}: no router has that{}", option, escaped(word), did_you_mean(word, known)));
    }
}

bool is_beginning_of_id(const std::string& text)
{
    return text.size() <= kDigits && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// The ids of the reasons that a text or the beginning of an id stands for, between commas.
std::string reasons_named(const Database& database, const std::string& name)
{
    std::vector<int64_t> ids;
    Statement same(database, "SELECT id FROM reason WHERE text = ?");
    for (same.with(name); same.next();) {
        ids.push_back(same.number(0));
    }
    if (ids.empty() && is_beginning_of_id(name)) {
        Statement begins(database, "SELECT id FROM reason WHERE substr(printf('%016x', id), 1, length(?1)) = ?1");
        for (begins.with(name); begins.next();) {
            ids.push_back(begins.number(0));
        }
        if (ids.size() > 1) {
            refuse_question(fmt::format("--reason {}: {} reasons begin so; give more digits", name, ids.size()));
        }
    }
    if (ids.empty()) {
        refuse_question(
            fmt::format("--reason {}: no router has that; bgp-rehearse fleet report lists the reasons", escaped(name)));
    }
    return fmt::format("{}", fmt::join(ids, ","));
}

// A query that is put together of conditions, each with the value of its parameter.
class Query {
public:
    Query(const Database& database, const FleetShowOptions& asked);

    Statement statement(const Database& database) const
    {
        Statement statement(database, text_);
        statement.with_texts(values_);
        return statement;
    }

private:
    // " AND column = ?": nothing where nothing is asked for.
    std::string condition(const char* column, const std::string& value)
    {
        if (value.empty()) {
            return {};
        }
        values_.push_back(value);
        return fmt::format(" AND {} = ?{}", column, values_.size());
    }

    std::string text_;
    std::vector<std::string> values_;
};

Query::Query(const Database& database, const FleetShowOptions& asked)
{
    std::string finding = condition("reason.finding", asked.finding) + condition("severity", asked.severity);
    if (!asked.reason.empty()) {
        finding += fmt::format(" AND reason IN ({})", reasons_named(database, asked.reason));
    }
    const std::string step = condition("step.name", asked.step) + condition("outcome", asked.outcome);
    const std::string findings = "FROM finding JOIN reason ON id = reason WHERE router = router.number" + finding;
    text_ = fmt::format(
        "SELECT name, verdict, {} FROM router WHERE 1{}{}{}{} ORDER BY number",
        finding.empty() ? "sentence" : fmt::format("(SELECT finding.sentence {} LIMIT 1)", findings),
        condition("verdict", asked.verdict), condition("input_class", asked.input_class),
        finding.empty() ? "" : fmt::format(" AND EXISTS (SELECT 1 {})", findings),
        step.empty() ? "" : fmt::format(" AND EXISTS (SELECT 1 FROM step WHERE router = router.number{})", step));
}

}  // namespace

void find_routers(const Database& database, const FleetShowOptions& options,
                  const std::function<void(const FoundRouter&)>& take)
{
    check_known(database, "--finding", options.finding, "SELECT DISTINCT finding FROM reason");
    check_known(database, "--step", options.step, "SELECT DISTINCT name FROM step");
    for (Statement each = Query(database, options).statement(database); each.next();) {
        take({each.text(0), each.text(1), each.text(2)});
    }
}

int64_t router_named(const Database& database, const std::string& name)
{
    Statement exact(database, "SELECT number FROM router WHERE name = ?");
    if (exact.with(name).next()) {
        return exact.number(0);
    }
    Statement ends(database,
                   "SELECT number, name FROM router WHERE substr(name, -length(?1)) = ?1 ORDER BY number LIMIT ?2");
    std::vector<std::string> names;
    int64_t number = 0;
    for (ends.with("/" + name, kShownNames + 1); ends.next();) {
        number = ends.number(0);
        names.emplace_back(ends.text(1));
    }
    if (names.empty()) {
        refuse_question(
            fmt::format("--router {}: no router has the name, and none's ends so behind a /", escaped(name)));
    }
    if (names.size() > 1) {
        const bool more = names.size() > kShownNames;
        names.resize(std::min(names.size(), kShownNames));
        refuse_question(fmt::format("--router {}: several routers' names end so: {}{}", escaped(name),
                                    escaped(fmt::format("{}", fmt::join(names, ", "))), more ? " and more" : ""));
    }
    return number;
}

}  // namespace bgp_rehearse
