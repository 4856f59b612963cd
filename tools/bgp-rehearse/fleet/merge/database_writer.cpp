#include "fleet/merge/database_writer.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <variant>

#include "base/given_value.h"
#include "base/sha256.h"
#include "base/text_escape.h"
#include "fleet/merge/schema.h"
#include "fleet/plan/lines.h"

namespace bgp_rehearse {

namespace {

constexpr char kQuick[] =
    "PRAGMA journal_mode = off; PRAGMA synchronous = off; PRAGMA locking_mode = exclusive; PRAGMA cache_size = -65536";

// Where the bytes of an input are, as the table has it.
struct SourceColumns {
    std::string_view source;
    std::string path;
    std::optional<std::size_t> member;
    std::optional<std::string> object;
};

SourceColumns columns_of(const InputSource& source)
{
    if (const auto* const member = std::get_if<ArchiveMember>(&source)) {
        return {"archive", escaped_name(member->archive), member->index, std::nullopt};
    }
    if (const auto* const object = std::get_if<RepositoryObject>(&source)) {
        return {"repository", escaped_name(object->repository), std::nullopt, object->object};
    }
    return {"file", escaped_name(std::get<StoredFile>(source).path), std::nullopt, std::nullopt};
}

// All that a plan says of the fleet as a whole, but for its shards.
void tell_about(const Database& database, const Plan& plan)
{
    Statement about(database, "INSERT INTO about VALUES (?, ?)");
    about.run("bytes", std::to_string(plan.bytes));
    about.run("command_version", BGP_REHEARSE_VERSION);
    about.run("inputs", std::to_string(plan.inputs));
    about.run("library_path", escaped_name(plan.library.path));
    about.run("library_sha256", plan.library.sha256);
    about.run("library_version", plan.library.version);
    about.run("options", line_of(plan.options));
    about.run("passed_over", nlohmann::json(plan.passed_over).dump());
    about.run("plan", plan.id);
}

// What a text is known by: it depends on nothing else.
int64_t id_of(const std::string& text)
{
    Sha256 sum;
    sum.add(text);
    const Sha256::Digest digest = sum.digest();
    uint64_t id = 0;
    for (std::size_t i = 0; i < sizeof id; ++i) {
        id = id << 8 | digest[i];
    }
    return static_cast<int64_t>(id >> 1);
}

Database made(const std::string& file)
{
    Database database(file, Database::Access::Write);
    database.execute(kQuick);
    make_tables(database);
    database.execute("BEGIN");
    return database;
}

}  // namespace

DatabaseWriter::DatabaseWriter(const std::string& file, const Plan& plan)
    : database_(made(file)),
      router_(database_,
              "INSERT INTO router VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
              "?, ?, ?, ?, ?, ?)"),
      reason_(database_, "INSERT INTO reason VALUES (?, ?, ?)"),
      finding_(database_, "INSERT INTO finding VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
      place_(database_, "INSERT INTO place VALUES (?, ?, ?, ?, ?)"),
      course_(database_, "INSERT INTO course VALUES (?)"),
      course_step_(database_, "INSERT INTO course_step VALUES (?, ?, ?, ?)"),
      change_(database_, "INSERT INTO change VALUES (?, ?, ?)"),
      error_(database_, "INSERT INTO error VALUES (?, ?, ?)")
{
    tell_about(database_, plan);
}

void DatabaseWriter::add(const PlannedInput& input, const RouterResult& result)
{
    add_router(input, result);
    for (std::size_t i = 0; i < result.findings.size(); ++i) {
        add_finding(result, i);
    }
    for (std::size_t i = 0; i < result.steps.size(); ++i) {
        if (const std::string& changes = result.steps[i].changes; !changes.empty()) {
            change_.run(result.number, i, changes);
        }
    }
    for (std::size_t i = 0; i < result.errors.size(); ++i) {
        error_.run(result.number, i, result.errors[i]);
    }
}

void DatabaseWriter::add_router(const PlannedInput& input, const RouterResult& result)
{
    const RowCounts& rows = result.account;
    const SourceColumns source = columns_of(input.source);
    std::optional<std::string> interfaces;
    if (input.facts.interfaces) {
        interfaces = words_of_addresses(*input.facts.interfaces);
    }
    router_.run(result.number, result.name, result.sha256, result.bytes, result.input_class, result.verdict,
                result.sentence, result.exit_status, rows.stored, rows.kept, rows.changed, rows.moved,
                rows.moved_and_changed, rows.removed, rows.added, rows.result, result.calls.reads, result.calls.writes,
                result.calls.failed_writes, result.seconds_least, result.seconds_most, course_of(result), source.source,
                source.path, source.member, source.object, interfaces, input.facts.user_profile);
}

void DatabaseWriter::add_finding(const RouterResult& result, std::size_t number)
{
    const FleetFinding& finding = result.findings[number];
    finding_.run(result.number, number, reason_of(finding), finding.severity, finding.count, finding.sentence,
                 finding.advice, finding.step);
    for (std::size_t i = 0; i < finding.places.size(); ++i) {
        place_.run(result.number, number, i, finding.places[i].path, finding.places[i].text);
    }
}

int64_t DatabaseWriter::reason_of(const FleetFinding& finding)
{
    const int64_t id = id_of(finding.id + "\n" + finding.reason);
    if (reasons_.insert(id).second) {
        reason_.run(id, finding.id, finding.reason);
    }
    return id;
}

// None for a router that tells of no step.
std::optional<int64_t> DatabaseWriter::course_of(const RouterResult& result)
{
    if (result.steps.empty()) {
        return std::nullopt;
    }
    std::string text;
    for (const FleetStep& step : result.steps) {
        text.append(step.name).append("\t").append(step.outcome).append("\n");
    }
    const int64_t id = id_of(text);
    if (courses_.insert(id).second) {
        course_.run(id);
        for (std::size_t i = 0; i < result.steps.size(); ++i) {
            course_step_.run(id, i, result.steps[i].name, result.steps[i].outcome);
        }
    }
    return id;
}

void DatabaseWriter::finish()
{
    database_.execute("COMMIT");
    make_indexes(database_);
}

}  // namespace bgp_rehearse
