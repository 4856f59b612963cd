// The worker says of each router what `bgp-rehearse run` says of it, and lives on whatever one of them does.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "cli/fake_library.h"
#include "fleet/shard/part.h"
#include "fleet/shard/result.h"
#include "generate/configuration.h"
#include "support/run_command.h"
#include "support/sanitized.h"
#include "support/scratch_folder.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using bgp_rehearse::FleetFinding;
using bgp_rehearse::RouterResult;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class FleetWork : public testing::Test {
protected:
    FleetWork() { std::filesystem::create_directory(folder_ / "in"); }

    std::string input(const std::string& name, const std::string& content) const
    {
        return folder_.file("in/" + name, content);
    }

    CommandResult plan(std::vector<std::string> more = {}) const
    {
        std::vector<std::string> arguments = {"fleet", "plan", folder_ / "in", "-o", folder_ / "plan", "--shards", "1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return rehearse(arguments);
    }

    CommandResult work(std::vector<std::string> more = {}, std::vector<std::string> environment = {}) const
    {
        std::vector<std::string> arguments = {"fleet", "work", folder_ / "plan", "--shard",
                                              "0",     "-o",   folder_ / "part"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return rehearse(arguments, std::move(environment));
    }

    std::vector<RouterResult> results() const
    {
        std::vector<RouterResult> results;
        bgp_rehearse::PartReader(folder_ / "part").each([&](std::string_view line, uint64_t) {
            results.push_back(bgp_rehearse::result_of(line));
        });
        return results;
    }

    // Of all inputs, planned and worked with these options.
    std::vector<RouterResult> worked(const std::vector<std::string>& options = {}) const
    {
        const CommandResult planned = plan(options);
        EXPECT_EQ(planned.status, 0) << planned.err;
        const CommandResult done = work();
        EXPECT_EQ(done.status, 0) << done.err;
        EXPECT_EQ(done.out, "");
        return results();
    }

    // Each is what `bgp-rehearse run` says of the same file with the same options.
    void expect_as_run(const std::vector<std::string>& options = {}) const;

    ScratchFolder folder_;
};

json finding_json(const FleetFinding& finding)
{
    json places = json::array();
    for (const auto& place : finding.places) {
        places.push_back({{"path", place.path}, {"text", place.text}});
    }
    return {{"id", finding.id},         {"severity", finding.severity}, {"sentence", finding.sentence},
            {"advice", finding.advice}, {"step", finding.step},         {"count", finding.count},
            {"places", places}};
}

std::string text_or_empty(const json& text)
{
    return text.is_null() ? std::string() : text.get<std::string>();
}

// The same of a report.
json finding_of_report(const json& finding)
{
    json places = json::array();
    for (std::size_t i = 0; i < std::min<std::size_t>(finding["places"].size(), RouterResult::kMostPlaces); ++i) {
        const json& place = finding["places"][i];
        places.push_back({{"path", text_or_empty(place["path"])}, {"text", place["text"]}});
    }
    return {{"id", finding["id"]},
            {"severity", finding["severity"]},
            {"sentence", finding["sentence"]},
            {"advice", text_or_empty(finding["advice"])},
            {"step", text_or_empty(finding["step"])},
            {"count", finding["count"]},
            {"places", places}};
}

// The steps that changed something, by their digests and by a report's changes.
std::set<std::string> changed_by(const RouterResult& result)
{
    std::set<std::string> steps;
    for (const auto& step : result.steps) {
        if (!step.changes.empty()) {
            steps.insert(step.name);
        }
    }
    return steps;
}

std::set<std::string> changed_by(const json& report)
{
    std::set<std::string> steps;
    const auto take = [&steps](const json& step) {
        if (!step.is_null()) {
            steps.insert(step.get<std::string>());
        }
    };
    for (const json& row : report["changes"]) {
        if (row["fate"] != "changed") {
            take(row["step"]);
        }
        for (const json& leaf : row["fate"] == "removed" ? json::array() : row["leaves"]) {
            take(leaf["step"]);
        }
    }
    return steps;
}

// What a line tells of a router that was rehearsed, and a report of the same.
json told(const RouterResult& result)
{
    json findings = json::array();
    for (const FleetFinding& finding : result.findings) {
        findings.push_back(finding_json(finding));
    }
    json steps = json::array();
    for (const auto& step : result.steps) {
        steps.push_back({step.name, step.outcome});
    }
    return {{"verdict", result.verdict}, {"sentence", result.sentence},      {"status", result.exit_status},
            {"findings", findings},      {"changed by", changed_by(result)}, {"steps", steps}};
}

json told(const json& report)
{
    json findings = json::array();
    for (const json& finding : report["findings"]) {
        findings.push_back(finding_of_report(finding));
    }
    json steps = json::array();
    for (const json& step : report["steps"]) {
        steps.push_back({step["name"], step["outcome"]});
    }
    return {{"verdict", report["verdict"]}, {"sentence", report["reason"]},     {"status", report["exit_status"]},
            {"findings", findings},         {"changed by", changed_by(report)}, {"steps", steps}};
}

void expect_same_sums(const RouterResult& result, const json& report)
{
    const json& account = report["account"];
    EXPECT_EQ(result.account.stored, account["stored"]);
    EXPECT_EQ(result.account.moved_and_changed, account["moved_and_changed"]);
    EXPECT_EQ(result.account.added, account["new"]);
    EXPECT_EQ(result.account.result, account["result"]);
    const json& predicted = report["predicted"];
    EXPECT_EQ(result.calls.reads + result.calls.writes + result.calls.sessions, predicted["calls"]);
    EXPECT_EQ(result.calls.connections, predicted["connections"]);
    EXPECT_EQ(result.seconds_least, predicted["seconds"]["least"]);
    EXPECT_EQ(result.seconds_most, predicted["seconds"]["most"]);
}

// The errors of a refused configuration are those of the message.
void expect_same_errors(const RouterResult& result, const std::string& file, const CommandResult& run)
{
    Lines lines = lines_of(run.err);
    ASSERT_THAT(lines, testing::Not(IsEmpty()));
    lines.front().erase(0, std::string("bgp-rehearse: ").size());
    ASSERT_GE(lines.size(), result.errors.size());
    for (std::size_t i = 0; i < result.errors.size(); ++i) {
        const std::string error =
            result.errors[i].rfind("line ", 0) == 0 ? ":" + result.errors[i].substr(5) : ": " + result.errors[i];
        EXPECT_EQ(file + error, lines[i]);
    }
}

void FleetWork::expect_as_run(const std::vector<std::string>& options) const
{
    const std::vector<RouterResult> all = worked(options);
    EXPECT_THAT(all, SizeIs(std::distance(std::filesystem::directory_iterator(folder_ / "in"), {})));
    for (const RouterResult& result : all) {
        SCOPED_TRACE(result.name);
        std::vector<std::string> arguments = {"run", result.name, "--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const CommandResult run = rehearse(arguments);
        EXPECT_EQ(result.exit_status, run.status);
        if (result.verdict == "REFUSED") {
            expect_same_errors(result, result.name, run);
            continue;
        }
        const json report = json::parse(run.out);
        EXPECT_EQ(told(result), told(report));
        if (!report["account"].is_null()) {
            expect_same_sums(result, report);
        }
    }
}

TEST_F(FleetWork, OfDrawnRouters_SaysWhatRunSays)
{
    for (const auto& role : bgp_generator::healthy::kRoles) {
        for (uint64_t seed = 0; seed < 3; ++seed) {
            bgp_generator::healthy::Request request;
            request.role = role.role;
            request.seed = seed;
            input(fmt::format("{}-{}.xml", role.name, seed), bgp_generator::configuration_text(request));
        }
    }
    for (const auto& flaw : bgp_generator::healthy::known_flaws()) {
        bgp_generator::healthy::Request request;
        request.flaws.push_back(flaw.flaw);
        request.seed = 7;
        input(fmt::format("flaw-{}.xml", flaw.name), bgp_generator::configuration_text(request));
    }
    for (uint64_t seed = 0; seed < 10; ++seed) {
        bgp_generator::Settings settings;
        settings.neighbors = 20;
        settings.vrfs = 5;
        settings.seed = seed;
        input(fmt::format("odd-{}.xml", seed), bgp_generator::configuration_text(settings));
    }
    expect_as_run();
}

TEST_F(FleetWork, OfFilesThatAreNoConfigurations_SaysWhatRunSays)
{
    const std::string whole = content_of(BGP_SOURCE_DIR "/examples/edge-router.xml");
    for (const std::size_t size : {std::size_t{0}, std::size_t{10}, whole.size() / 2, whole.size() - 3}) {
        input(fmt::format("cut-{}.xml", size), whole.substr(0, size));
    }
    input("words.xml", "no XML at all\n");
    input("other.xml", "<html/>");
    input("damaged.xml.gz", "\x1f\x8b\x08 and no more");
    input("twice.xml", R"(<config xmlns="http://tail-f.com/ns/config/1.0">
  <prefix-list xmlns="urn:bgp-update:yang:prefix-list"><name>a</name></prefix-list>
  <prefix-list xmlns="urn:bgp-update:yang:prefix-list"><name>a</name></prefix-list>
</config>)");
    expect_as_run();
}

TEST_F(FleetWork, OfUpgradesThatEnd_SaysWhatRunSays)
{
    small_configuration(folder_);
    std::filesystem::rename(folder_ / "small.xml", folder_ / "in/small.xml");
    for (const char* const body :
         {"raise(SIGSEGV);", "exit(7);", "throw std::runtime_error(\"went\\nwrong\");", "assert(maapi == -5);",
          "maapi_delete(maapi, th, \"/router/bgp{65010}\"); abort();", "return 1;"}) {
        SCOPED_TRACE(body);
        expect_as_run({"--library", fake_library(folder_, std::string(body) + " return 0;")});
    }
    const std::string endless = fake_library(folder_, "log(\"Update BGP router\\n\"); for (;;) {}");
    expect_as_run({"--library", endless, "--time-limit", "300ms"});
}

TEST_F(FleetWork, WithOptions_SaysWhatRunSaysWithThem)
{
    bgp_generator::healthy::Request request;
    request.role = bgp_generator::healthy::role_named("edge");
    input("edge.xml", bgp_generator::configuration_text(request));
    expect_as_run({"--user-profile", "7", "--interfaces", "192.0.2.1,198.51.100.1"});
    expect_as_run({"--severity", "limit-rewritten=stop", "--severity", "action-rewritten=review"});
    expect_as_run({"--max-entries", "10"});
}

TEST_F(FleetWork, UpgradeOfOneRouterThatCrashes_LeavesTheOthersAsTheyAre)
{
    for (const char* const name : {"a.xml", "b.xml", "c.xml"}) {
        std::filesystem::copy(small_configuration(folder_), folder_ / ("in/" + std::string(name)));
    }
    const std::string count = folder_ / "count";
    const std::string library = fake_library(folder_, R"(
        std::ofstream(")" + count + R"(", std::ios::app) << 'x';
        if (std::ifstream(")" + count + R"(").seekg(0, std::ios::end).tellg() == 2) { raise(SIGKILL); }
        return 0;)");
    const std::vector<RouterResult> all = worked({"--library", library});
    ASSERT_THAT(all, SizeIs(3));
    EXPECT_EQ(all[0].verdict, all[2].verdict);
    EXPECT_EQ(all[1].sentence, "The upgrade ended in SIGKILL.");
    EXPECT_EQ(all[1].exit_status, 1);
}

TEST_F(FleetWork, MemoryBeyondTheLimit_IsAFinding)
{
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer maps more than any limit has";
    }
    std::filesystem::rename(small_configuration(folder_), folder_ / "in/small.xml");
    const std::string library = fake_library(folder_, "for (;;) { new char[1 << 20]{}; } return 0;");
    const std::vector<RouterResult> all = worked({"--library", library, "--memory-limit", "64M"});
    ASSERT_THAT(all, SizeIs(1));
    EXPECT_EQ(all[0].sentence, "The upgrade needed more than 64 MB (--memory-limit).");
}

TEST_F(FleetWork, Redone_WritesTheSameBytes)
{
    std::filesystem::copy(BGP_SOURCE_DIR "/examples/edge-router.xml", folder_ / "in/edge.xml");
    input("cut.xml", "<config");
    worked();
    const std::string first = content_of(folder_ / "part");
    std::filesystem::remove(folder_ / "part");
    ASSERT_EQ(work().status, 0);
    EXPECT_EQ(content_of(folder_ / "part"), first);
}

TEST_F(FleetWork, BackupThatIsAnotherOneNow_IsRefused)
{
    const std::string file = input("small.xml", content_of(small_configuration(folder_)));
    ASSERT_EQ(plan().status, 0);
    input("small.xml", content_of(file) + " ");
    ASSERT_EQ(work().status, 0);
    const std::vector<RouterResult> all = results();
    ASSERT_THAT(all, SizeIs(1));
    EXPECT_EQ(all[0].verdict, "REFUSED");
    EXPECT_EQ(all[0].input_class, "refused");
    EXPECT_THAT(all[0].errors, ElementsAre(HasSubstr("changed since the plan was made")));
}

TEST_F(FleetWork, LibraryThatIsAnotherThanThePlans_IsRefused)
{
    std::filesystem::rename(small_configuration(folder_), folder_ / "in/small.xml");
    ASSERT_EQ(plan().status, 0);
    const CommandResult result = work({"--library", fake_library(folder_, "return 0;")});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("is not the one that the plan was made for"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "part"));
}

TEST_F(FleetWork, ShardThatThePlanHasNot_IsRefused)
{
    std::filesystem::rename(small_configuration(folder_), folder_ / "in/small.xml");
    ASSERT_EQ(plan().status, 0);
    const CommandResult result = rehearse({"fleet", "work", folder_ / "plan", "--shard", "1", "-o", folder_ / "part"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "bgp-rehearse: --shard 1: the plan has 1, from 0 to 0\n");
}

TEST_F(FleetWork, DiskThatIsFull_LeavesNoPart)
{
    std::filesystem::rename(small_configuration(folder_), folder_ / "in/small.xml");
    ASSERT_EQ(plan().status, 0);
    std::filesystem::create_directory(folder_ / "full");
    const CommandResult result =
        rehearse({"fleet", "work", folder_ / "plan", "--shard", "0", "-o", folder_ / "full/part"},
                 {"LD_PRELOAD=" BGP_FILE_ATTACK, "ASAN_OPTIONS=verify_asan_link_order=0", "BGP_ATTACK_AT=2",
                  "BGP_ATTACK_HOW=full", "BGP_ATTACK_ERRNO=28", "BGP_ATTACK_FOLDER=" + (folder_ / "full"),
                  "BGP_ATTACK_TRACE=" + (folder_ / "trace")});
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.err, HasSubstr("/full/part could not be written: No space left on device"));
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "full"));
}

TEST_F(FleetWork, Interrupted_LeavesNoPart)
{
    std::filesystem::rename(small_configuration(folder_), folder_ / "in/small.xml");
    ASSERT_EQ(plan({"--library", fake_library(folder_, "kill(getppid(), SIGTERM); for (;;) { pause(); }")}).status, 0);
    std::filesystem::create_directory(folder_ / "out");
    const CommandResult result =
        rehearse({"fleet", "work", folder_ / "plan", "--shard", "0", "-o", folder_ / "out/part"});
    EXPECT_EQ(result.signal, SIGTERM);
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "out"));
}

}  // namespace
}  // namespace bgp_test
