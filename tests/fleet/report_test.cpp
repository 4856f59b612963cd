// bgp-rehearse fleet report: the reasons to look at a router, worst first, in sums that add up.
#include "fleet/report/report.h"

#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <regex>

#include "base/text_escape.h"
#include "fleet/report/csv.h"
#include "made_up_fleet.h"
#include "run/csv.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using bgp_rehearse::csv_field;
using bgp_rehearse::CsvReader;
using bgp_rehearse::CsvRecord;
using Json = nlohmann::json;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const FleetFinding kFamily = finding_of("family-off", "review", "an address family is off");

std::vector<RouterResult> routers()
{
    RouterResult partly = safe_router("edge-6.xml");
    partly.input_class = "partly";
    return {refused_router("core-1.xml"),
            router_with("edge-1.xml", "REVIEW", {kLeft}),
            router_with("edge-2.xml", "REVIEW", {kLeft, kFamily}),
            router_with("edge-3.xml", "STOP", {kLost, kLeft, kLeft}),
            router_with("edge-4.xml", "REVIEW", {kLeft}),
            router_with("edge-5.xml", "SAFE", {kLeftUnused}),
            partly};
}

// A hostile text in every place that a backup's owner or content can write to.
std::vector<RouterResult> hostile_routers(const std::string& text)
{
    RouterResult router = router_with(text, "STOP", {finding_of("row-lost", "stop", text)});
    router.findings[0].sentence = text;
    router.findings[0].advice = text;
    router.findings[0].step = text;
    router.sentence = text;
    router.steps[0].name = text;
    return {router};
}

class Report : public testing::Test {
protected:
    std::string report(const std::string& database, std::vector<std::string> more = {}) const
    {
        const std::vector<std::string> start = {"fleet", "report", database};
        more.insert(more.begin(), start.begin(), start.end());
        const CommandResult result = rehearse(more);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    std::vector<CsvRecord> csv(const std::string& database) const
    {
        report(database, {"--csv", folder_ / "report.csv"});
        const std::string text = content_of(folder_ / "report.csv");
        CsvReader reader(text);
        std::vector<CsvRecord> records;
        while (auto record = reader.next()) {
            records.push_back(*record);
        }
        return records;
    }

    Json json(const std::string& database, std::vector<std::string> more = {}) const
    {
        more.insert(more.end(), {"--json", folder_ / "report.json"});
        report(database, more);
        return Json::parse(content_of(folder_ / "report.json"));
    }

    // What the published schema says against a document; empty when it takes it.
    std::string against_schema(const std::string& document) const
    {
        return run_command({BGP_SOURCE_DIR "/tests/fleet/hold_to_schema.py", BGP_SOURCE_DIR "/docs/fleet.schema.json",
                            folder_.file("document.json", document)})
            .out;
    }

    ScratchFolder folder_;
};

TEST_F(Report, Text_RanksTheReasonsAndAddsUp)
{
    const std::string database = MadeUpFleet(routers()).merged(folder_);
    EXPECT_EQ(
        report(database),
        "Fleet of 7 routers: 1 STOP, 1 REFUSED, 3 REVIEW, 2 SAFE\n"
        "  library    libbgp_update.so 0.2.0\n"
        "Verdicts       routers\n"
        "  STOP               1    14.3 %                                                      --verdict STOP\n"
        "  REFUSED            1    14.3 %                                                   --verdict REFUSED\n"
        "  REVIEW             3    42.9 %                                                    --verdict REVIEW\n"
        "  SAFE               2    28.6 %                                                      --verdict SAFE\n"
        "  together           7\n"
        "Reasons        routers\n"
        "  STOP               1  an odd leaf                                                          refused\n"
        "                        core-1.xml                                   --reason 320fb1 --severity stop\n"
        "  STOP               1  rows are lost                                                       row-lost\n"
        "                        edge-3.xml                                   --reason 4b6a9b --severity stop\n"
        "  REVIEW             4  rows stay behind                                                    row-left\n"
        "                        edge-1.xml, edge-2.xml, edge-3.xml and 1 more  --reason 2954e0 --severity review\n"
        "  REVIEW             1  an address family is off                                          family-off\n"
        "                        edge-2.xml                                 --reason 29504d --severity review\n"
        "  note               1  rows stay behind                                                    row-left\n"
        "                        edge-5.xml                                   --reason 2954e0 --severity note\n"
        "  together           8  6 routers with reasons, each counted under every one that it has; 1 without\n"
        "Backups        routers\n"
        "  whole              5    71.4 %                                                       --class whole\n"
        "  partly             1    14.3 %                                                      --class partly\n"
        "  refused            1    14.3 %                                                     --class refused\n"
        "  together           7\n"
        "Steps                                         ran    did not run       not told\n"
        "  update                                        6              -              1\n"
        "  update_vrf                                    -              6              1\n"
        "  each line comes to 7   --step NAME --outcome \"nothing to do\"\n"
        "Each line opens its list: bgp-rehearse fleet show " +
            database + " with the option at its right\n");
}

// The options at the right of a line list as many routers as it counts.
TEST_F(Report, EachCount_OpensItsList)
{
    const std::string database = MadeUpFleet(routers()).merged(folder_);
    const std::regex counted("  [A-Za-z]+ +([0-9]+)  .*");
    const std::regex opens(".* --(verdict|class|reason) (\\S+)(?: --severity (\\S+))?");
    std::size_t opened = 0;
    std::string count;
    for (const std::string& line : lines_of(report(database))) {
        std::smatch match;
        count = std::regex_match(line, match, counted) ? match[1].str() : count;
        if (std::regex_match(line, match, opens)) {
            std::vector<std::string> show = {"fleet",       "show", database, "--names", "--" + match[1].str(),
                                             match[2].str()};
            if (match[3].matched) {
                show.insert(show.end(), {"--severity", match[3].str()});
            }
            EXPECT_EQ(std::to_string(lines_of(rehearse(show).out).size()), count) << line;
            ++opened;
        }
    }
    EXPECT_EQ(opened, 4U + 5U + 3U);
}

TEST_F(Report, Csv_HasALineForEachFindingAndForEachRouterWithout)
{
    const std::vector<CsvRecord> records = csv(MadeUpFleet(routers()).merged(folder_));
    EXPECT_THAT(records, SizeIs(1 + 1 + 1 + 2 + 3 + 1 + 1 + 1));
    EXPECT_THAT(records[0], ElementsAre("router", "backup", "verdict", "severity", "finding", "reason", "count",
                                        "sentence", "step", "advice"));
    EXPECT_THAT(records[2], ElementsAre("edge-1.xml", "whole", "REVIEW", "review", "row-left", "rows stay behind", "2",
                                        "2 of rows stay behind", "update_vrf", "look at it"));
    EXPECT_THAT(records.back(), ElementsAre("edge-6.xml", "partly", "SAFE", "", "", "", "", "", "", ""));
}

TEST_F(Report, CsvOfHostileTexts_RunsNoFormulaAndKeepsItsFields)
{
    for (const std::string text : {"=1+1", "+1", "-1", "@SUM(1)", "=HYPERLINK(\"http://x\",\"y\")", "a\",\"b", "a,b"}) {
        const std::vector<CsvRecord> records = csv(MadeUpFleet(hostile_routers(text)).merged(folder_));
        ASSERT_THAT(records, SizeIs(2)) << text;
        EXPECT_THAT(records[1], SizeIs(10)) << text;
        EXPECT_THAT(records[1], Each(Not(testing::MatchesRegex("[=+@-].*")))) << text;
        EXPECT_THAT(records[1][0], testing::EndsWith(text));
    }
}

TEST(CsvField, FormulaOrControlCharacter_IsMadeAText)
{
    EXPECT_EQ(csv_field("plain"), "plain");
    EXPECT_EQ(csv_field(""), "");
    EXPECT_EQ(csv_field("a \"b\", c"), "\"a \"\"b\"\", c\"");
    EXPECT_EQ(csv_field("two\nlines"), "\"two\nlines\"");
    for (const std::string start : {"=", "+", "-", "@", "\t", "\r"}) {
        EXPECT_EQ(csv_field(start + "1"), "\"'" + start + "1\"");
    }
}

TEST_F(Report, HostileTexts_DoNothingToATerminal)
{
    const std::string hostile = "a\x1b[2J\xE2\x80\xAE\nb";
    std::vector<RouterResult> fleet = hostile_routers(hostile);
    fleet[0].name = bgp_rehearse::escaped_name(hostile);
    const std::string text = report(MadeUpFleet(fleet).merged(folder_, 1));
    EXPECT_THAT(text, AllOf(HasSubstr("\\x1b[2J"), Not(HasSubstr("\x1b")), Not(HasSubstr("\xE2\x80\xAE"))));
}

TEST_F(Report, Json_IsWhatTheSchemaSays)
{
    const std::string before = MadeUpFleet(routers()).merged(folder_, 1, "before.db");
    std::vector<RouterResult> changed = routers();
    changed[1].verdict = "STOP";
    changed.pop_back();
    const std::string database = MadeUpFleet(changed).merged(folder_);
    for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--baseline", before}}) {
        EXPECT_EQ(against_schema(json(database, more).dump()), "");
    }
    Json wrong = json(database);
    wrong["reasons"][0]["severity"] = "odd";
    EXPECT_NE(against_schema(wrong.dump()), "") << "the schema takes anything";
}

TEST_F(Report, Json_CountsWhatItLists)
{
    const Json document = json(MadeUpFleet(routers()).merged(folder_));
    EXPECT_EQ(document["routers"], 7);
    EXPECT_EQ(document["verdicts"], Json::parse(R"({"STOP": 1, "REFUSED": 1, "REVIEW": 3, "SAFE": 2})"));
    EXPECT_EQ(document["backups"], Json::parse(R"({"whole": 5, "partly": 1, "refused": 1})"));
    EXPECT_THAT(document["results"], SizeIs(7));
    std::map<std::string, std::size_t> routers;
    for (const Json& router : document["results"]) {
        for (const Json& reason : router["reasons"]) {
            ++routers[reason];
        }
    }
    for (const Json& reason : document["reasons"]) {
        const std::size_t unused = reason["text"] == "rows stay behind" ? (reason["severity"] == "note" ? 4 : 1) : 0;
        EXPECT_EQ(reason["routers"].get<std::size_t>() + unused, routers[reason["reason"]]) << reason;
    }
    for (const Json& step : document["steps"]) {
        std::size_t sum = step["not_told"];
        for (const Json& count : step["outcomes"]) {
            sum += count.get<std::size_t>();
        }
        EXPECT_EQ(sum, 7U) << step;
    }
}

TEST_F(Report, FileThatIsRead_IsNotWrittenTo)
{
    const std::string database = MadeUpFleet(routers()).merged(folder_);
    const std::string before = content_of(database);
    for (const char* option : {"--csv", "--json"}) {
        const CommandResult result = rehearse({"fleet", "report", database, option, database});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.err, HasSubstr("this is the database to report on"));
    }
    EXPECT_TRUE(content_of(database) == before);
}

TEST_F(Report, FullStandardOutput_IsTold)
{
    const std::string database = MadeUpFleet(routers()).merged(folder_);
    const CommandResult result =
        run_command({"/bin/sh", "-c", BGP_REHEARSE " fleet report " + database + " >/dev/full"});
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.err, HasSubstr("standard output: No space left on device"));
}

}  // namespace
}  // namespace bgp_test
