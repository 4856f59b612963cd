// The line of a router: what was put in comes out again.
#include "fleet/shard/result.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace bgp_test {
namespace {

using bgp_rehearse::FleetFinding;
using bgp_rehearse::line_of;
using bgp_rehearse::result_of;
using bgp_rehearse::RouterResult;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// One in which each field has a value of its own.
RouterResult full_result()
{
    RouterResult result;
    result.number = 17;
    result.name = "folder/edge-17.xml";
    result.sha256 = std::string(64, 'a');
    result.bytes = 5'000'000'000;
    result.input_class = "partly";
    result.verdict = "STOP";
    result.sentence = "A neighbour's route map is not there.";
    result.exit_status = 3;
    result.errors = {"line 3: one", "line 4: two"};
    result.findings.push_back({"row-left",
                               "review",
                               "a reason",
                               "a sentence",
                               "an advice",
                               "a_step",
                               12,
                               {{"/router/bgp{65010}", "AS 65010"}, {"/a", "b"}}});
    result.findings.push_back({"left-out", "note", "another", "", "", "", 0, {}});
    result.steps = {{"update", "ran", "0123456789abcdef"}, {"bgp_update", "nothing to do"}};
    result.account = {1, 2, 3, 4, 5, 6, 7, 8};
    result.calls = {11, 12, 13, 14, 15};
    result.seconds_least = 0.1;
    result.seconds_most = 12.000000001;
    return result;
}

TEST(ResultLine, ReadAgain_IsTheSameLine)
{
    const std::string line = line_of(full_result());
    EXPECT_EQ(line_of(result_of(line)), line);
    EXPECT_EQ(line_of(result_of(line_of(RouterResult{}))), line_of(RouterResult{}));
}

TEST(ResultLine, ReadAgain_HasEachField)
{
    const RouterResult result = result_of(line_of(full_result()));
    EXPECT_EQ(result.number, 17U);
    EXPECT_EQ(result.name, "folder/edge-17.xml");
    EXPECT_EQ(result.bytes, 5'000'000'000U);
    EXPECT_EQ(result.input_class, "partly");
    EXPECT_EQ(result.verdict, "STOP");
    EXPECT_EQ(result.exit_status, 3);
    EXPECT_THAT(result.errors, ElementsAre("line 3: one", "line 4: two"));
    ASSERT_EQ(result.findings.size(), 2U);
    const FleetFinding& finding = result.findings[0];
    EXPECT_EQ(finding.id + finding.severity + finding.reason, "row-leftreviewa reason");
    EXPECT_EQ(finding.sentence + finding.advice + finding.step, "a sentencean advicea_step");
    EXPECT_EQ(finding.count, 12U);
    ASSERT_EQ(finding.places.size(), 2U);
    EXPECT_EQ(finding.places[0].path + finding.places[0].text, "/router/bgp{65010}AS 65010");
    ASSERT_EQ(result.steps.size(), 2U);
    EXPECT_EQ(result.steps[1].name + result.steps[1].outcome, "bgp_updatenothing to do");
    EXPECT_EQ(result.steps[0].changes, "0123456789abcdef");
    EXPECT_EQ(result.steps[1].changes, "");
    EXPECT_EQ(result.account.stored, 1U);
    EXPECT_EQ(result.account.moved_and_changed, 5U);
    EXPECT_EQ(result.account.added, 7U);
    EXPECT_EQ(result.account.result, 8U);
    EXPECT_EQ(result.calls.failed_writes, 13U);
    EXPECT_EQ(result.calls.connections, 15U);
    EXPECT_EQ(result.seconds_least, 0.1);
    EXPECT_EQ(result.seconds_most, 12.000000001);
}

TEST(ResultLine, IsOneLineWhateverTheTextsHold)
{
    RouterResult result;
    result.sentence = "a\nb\r\"c\\\x01";
    const std::string line = line_of(result);
    EXPECT_THAT(line, Not(HasSubstr("\n")));
    EXPECT_THAT(line, Not(HasSubstr("\r")));
    EXPECT_EQ(result_of(line).sentence, result.sentence);
}

TEST(ResultLine, BytesThatAreNotUtf8_BecomeTheReplacementCharacter)
{
    RouterResult result;
    result.sentence =
        "a\xff"
        "b";
    EXPECT_EQ(result_of(line_of(result)).sentence,
              "a\xEF\xBF\xBD"
              "b");
}

TEST(ResultLine, ThatIsNone_IsRefused)
{
    for (const char* line : {"", "{}", "[]", "null", "{\"n\":1", "{\"n\":\"x\"}", "\xff"}) {
        EXPECT_THROW(result_of(line), std::invalid_argument) << line;
    }
    std::string without_steps = line_of(full_result());
    without_steps.replace(without_steps.find("\"steps\""), 7, "\"stops\"");
    EXPECT_THROW(result_of(without_steps), std::invalid_argument);
}

}  // namespace
}  // namespace bgp_test
