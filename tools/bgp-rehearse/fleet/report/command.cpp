#include "fleet/report/command.h"

#include <fmt/format.h>

#include <chrono>
#include <utility>
#include <variant>
#include <vector>

#include "base/given_value.h"
#include "base/text_escape.h"
#include "fleet/plan/lines.h"
#include "fleet/report/shell_words.h"

namespace bgp_rehearse {

namespace {

constexpr double kMegabyte = 1 << 20;

std::string about(const Database& database, const char* key)
{
    Statement statement(database, "SELECT value FROM about WHERE key = ?");
    return statement.with(key).next() ? std::string(statement.text(0)) : std::string();
}

InputSource source_of(const Statement& router)
{
    const std::string path = unescaped_name(router.text(3));
    if (router.text(2) == "archive") {
        return ArchiveMember{path, router.count(4), std::nullopt};
    }
    if (router.text(2) == "repository") {
        return RepositoryObject{path, std::string(router.text(5))};
    }
    return StoredFile{path};
}

constexpr char kInput[] =
    "SELECT number, name, source, path, member, object, bytes, sha256, interfaces, user_profile FROM router "
    "WHERE number = ?";

PlannedInput next_input(Statement& router)
{
    router.next();
    PlannedInput input;
    input.number = router.count(0);
    input.name = router.text(1);
    input.source = source_of(router);
    input.bytes = router.count(6);
    input.sha256 = router.text(7);
    if (!router.null(8)) {
        input.facts.interfaces = given_addresses(std::string(router.text(8)), ",");
    }
    if (!router.null(9)) {
        input.facts.user_profile = static_cast<uint32_t>(router.number(9));
    }
    return input;
}

class Words {
public:
    void add(const char* option, const std::string& value) { words_.insert(words_.end(), {option, value}); }
    std::string shell() const { return shell_words(words_); }

private:
    std::vector<std::string> words_;
};

// Those of `bgp-rehearse run` that all routers have.
std::string words_of(const FleetOptions& options, const std::string& library)
{
    Words words;
    words.add("--library", library);
    if (options.device.interfaces_known) {
        words.add("--interfaces", words_of_addresses(options.device.interfaces));
    }
    if (options.device.user_profile_known) {
        words.add("--user-profile", std::to_string(options.device.user_profile));
    }
    if (options.device.max_entries != DeviceOptions().max_entries) {
        words.add("--max-entries", std::to_string(options.device.max_entries));
    }
    const double seconds = std::chrono::duration<double>(options.time_limit).count();
    words.add("--time-limit", seconds > 0 ? fmt::format("{}s", seconds) : "none");
    if (options.memory_limit > 0) {
        words.add("--memory-limit", fmt::format("{}M", static_cast<double>(options.memory_limit) / kMegabyte));
    }
    for (const auto& [id, level] : options.severities) {
        words.add("--severity", fmt::format("{}={}", id, level));
    }
    return words.shell();
}

}  // namespace

FleetOptions options_of_fleet(const Database& database)
{
    return fleet_options_of(about(database, "options"));
}

PlannedInput planned_input(const Database& database, int64_t router)
{
    Statement statement(database, kInput);
    return next_input(statement.with(router));
}

FullReportCommands::FullReportCommands(const Database& database, std::string file)
    : router_(database, kInput),
      file_(std::move(file)),
      options_(options_of_fleet(database)),
      tail_(words_of(options_, unescaped_name(about(database, "library_path"))))
{
}

std::string FullReportCommands::head(int64_t router)
{
    const PlannedInput input = next_input(router_.with(router));
    std::vector<std::string> run = {"bgp-rehearse", "run", "-"};
    std::string before;
    if (const auto* const stored = std::get_if<StoredFile>(&input.source)) {
        run.back() = stored->path;
    } else if (const auto* const object = std::get_if<RepositoryObject>(&input.source)) {
        before = shell_words({"git", "-C", object->repository, "cat-file", "blob", object->object}) + " | ";
    } else {
        before = shell_words({"bgp-rehearse", "fleet", "show", file_, "--router", input.name, "--backup"}) + " | ";
    }
    if (input.facts.interfaces && !options_.device.interfaces_known) {
        run.insert(run.end(), {"--interfaces", words_of_addresses(*input.facts.interfaces)});
    }
    if (input.facts.user_profile && !options_.device.user_profile_known) {
        run.insert(run.end(), {"--user-profile", std::to_string(*input.facts.user_profile)});
    }
    return before + shell_words(run);
}

}  // namespace bgp_rehearse
