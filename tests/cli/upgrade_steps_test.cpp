// What the log tells of the upgrade's steps, by lines that are given one by one.
#include "judge/upgrade_steps.h"

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>
#include <regex>

#include "cli/step_of.h"
#include "contract/steps.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

using bgp_rehearse::CallTotals;
using bgp_rehearse::Step;
using bgp_rehearse::StepOutcome;
using bgp_rehearse::UpgradeSteps;
using testing::IsEmpty;

// Steps that are given lines, with calls between them.
class GivenLines : public testing::Test {
protected:
    // The calls, and then the line.
    void line(const char* text, CallTotals before = {})
    {
        so_far.reads += before.reads;
        so_far.writes += before.writes;
        so_far.failed_writes += before.failed_writes;
        steps.take(text);
    }

    void expect_calls(const char* step, CallTotals expected) const
    {
        const CallTotals& calls = step_of(steps, step).calls;
        EXPECT_EQ(calls.reads, expected.reads) << step;
        EXPECT_EQ(calls.writes, expected.writes) << step;
        EXPECT_EQ(calls.failed_writes, expected.failed_writes) << step;
    }

    void expect_told(const char* step, StepOutcome outcome, const char* text, const char* line) const
    {
        EXPECT_EQ(step_of(steps, step).outcome, outcome) << step;
        EXPECT_EQ(step_of(steps, step).text, text) << step;
        EXPECT_EQ(step_of(steps, step).line, line) << step;
    }

    CallTotals so_far;
    UpgradeSteps steps{[this] { return so_far; }};
};

TEST_F(GivenLines, NoLineOfTheUpgrade_NoSteps)
{
    line("a line of some other library\n", {3, 1, 0});
    steps.returned();
    EXPECT_THAT(steps.all(), IsEmpty());
}

TEST_F(GivenLines, StepThatRunsTwice_HasTheSumAndTheNumberOfRuns)
{
    line("Starting BGP router update\n");
    line("Finishing BGP router update\n", {2, 3, 1});
    line("Starting BGP router update\n", {7, 0, 0});
    line("Finishing BGP router update\n", {4, 5, 0});
    steps.returned();
    expect_calls("update_router_bgp", {6, 8, 1});
    expect_calls("update", {7, 0, 0});
    EXPECT_EQ(step_of(steps, "update_router_bgp").runs, 2U);
}

TEST_F(GivenLines, RunsOfDifferentOutcome_TellTheOneThatMattersMost)
{
    line("Starting BGP router update\n");
    line("Finishing BGP router update\n");
    line("Starting BGP router update\n");
    line("Failed to configure router bgp: 5, err: no\n");
    line("Starting BGP router update\n");
    line("Router BGP high-level already exists  err:");
    steps.returned();
    EXPECT_EQ(step_of(steps, "update_router_bgp").outcome, StepOutcome::Failed);
    EXPECT_EQ(step_of(steps, "update_router_bgp").text, "the router's entry cannot be made");
    EXPECT_EQ(step_of(steps, "update_router_bgp").line, "Failed to configure router bgp: 5, err: no");
    EXPECT_EQ(step_of(steps, "update_router_bgp").runs, 3U);
}

TEST_F(GivenLines, Current_IsTheStepThatRunsAndUpdateBetweenThem)
{
    EXPECT_STREQ(steps.current(), "update");
    line("Starting BGP update\n");
    EXPECT_STREQ(steps.current(), "update");
    line("enter update_neigh_config_afi_safi\n");
    EXPECT_STREQ(steps.current(), "update_neigh_config_afi_safi");
    line("enter update_neigh_config_unused_AFs\n");
    line("exit update_neigh_config_unused_AFs\n");
    EXPECT_STREQ(steps.current(), "update_neigh_config_afi_safi");
    line("exit update_neigh_config_afi_safi\n");
    EXPECT_STREQ(steps.current(), "update");
}

TEST_F(GivenLines, LineThatIsTheEndOfAnotherStep_EndsNothing)
{
    line("enter update_neigh_config_drop_warn\n");
    line("Failed to get local as number, err: no\n");
    EXPECT_STREQ(steps.current(), "update_neigh_config_drop_warn");
}

TEST_F(GivenLines, StepWithoutLastLine_EndsWhereTheNextBegins)
{
    line("Update BGP Ipv6\n");
    line("Update BGP AfiSafi L3VPN\n", {1, 2, 0});
    steps.returned();
    EXPECT_EQ(step_of(steps, "update_ipv6").outcome, StepOutcome::Ran);
    expect_calls("update_ipv6", {1, 2, 0});
}

TEST_F(GivenLines, StepThatRunsAfterAReasonNotTo_HasRun)
{
    line("num bgp: 1, num_bgp_vrs: -1, err: no\n");
    expect_told("update_vrf", StepOutcome::CannotRun, "how many VRFs the router has cannot be read",
                "num bgp: 1, num_bgp_vrs: -1, err: no");
    line("Update BGP VRF\n");
    line("No VRFs to update");
    expect_told("update_vrf", StepOutcome::NothingToDo, "the router has no VRFs", "No VRFs to update");
}

TEST_F(GivenLines, StepThatRunsAfterAReasonNotTo_LosesItWhenItHasNothingToSay)
{
    line("num bgp: 1, num_bgp_vrs: -1, err: no\n");
    line("Update BGP VRF\n");
    line("Finishing VRF update\n");
    expect_told("update_vrf", StepOutcome::Ran, "", "");
}

TEST_F(GivenLines, ErrorOfAnotherCallBehindAReason_StandsInTheLineAlone)
{
    line("num bgp: 1, num_bgp_vrs: 0, err: cdb_get: item does not exist: /elsewhere\n");
    expect_told("update_vrf", StepOutcome::NotRun, "the router has no VRFs",
                "num bgp: 1, num_bgp_vrs: 0, err: cdb_get: item does not exist: /elsewhere");
}

TEST_F(GivenLines, VrfsFound_AreNoReasonForTheirStepNotToRun)
{
    EXPECT_FALSE(steps.take("num bgp: 1, num_bgp_vrs: 12, err: \n"));
}

constexpr char kNoneRan[] = "No need to update others config";

TEST_F(GivenLines, NoRouterEntity_LeavesItsStepsNothingToDo)
{
    line("Starting BGP update\n");
    line("Found 0 BGP entities");
    line("No need to update others config\n");
    expect_told("update_rm_index", StepOutcome::NothingToDo, "the device has no BGP router entity", kNoneRan);
}

TEST_F(GivenLines, SeveralRouterEntities_TheirStepsCannotRun)
{
    line("Starting BGP update\n");
    line("Found 12 BGP entities");
    line("No need to update others config\n");
    for (const char* step : {"update_router_bgp", "update_ipv6", "update_l3vpn", "update_prefix_list", "update_vrf"}) {
        expect_told(step, StepOutcome::CannotRun, "12 BGP router entities are stored: which one is meant is not known",
                    kNoneRan);
    }
}

TEST_F(GivenLines, RouterEntitiesThatCannotBeCounted_TheirStepsCannotRun)
{
    line("Starting BGP update\n");
    line("Found -1 BGP entities");
    line("No need to update others config\n");
    expect_told("update_router_bgp", StepOutcome::CannotRun, "how many BGP router entities are stored cannot be read",
                kNoneRan);
}

TEST_F(GivenLines, RouterEntitiesOfAnUnknownNumber_AreNotJustOne)
{
    line("No need to update others config\n");
    expect_told("update_router_bgp", StepOutcome::NotRun, "the device has not just one BGP router entity", kNoneRan);
}

// A condition that is told by its words.
class GivenConditions : public testing::Test {
protected:
    void returned_without(const char* words)
    {
        unmet = words;
        steps.take("Starting BGP update\n");
        steps.returned();
    }

    std::string unmet;
    UpgradeSteps steps{[] { return CallTotals{}; },
                       [this](const bgp_contract::Condition& condition) { return unmet != condition.words; }};
};

TEST_F(GivenConditions, ValueThatCannotBeRead_TheStepsThatNeedItCannotRun)
{
    returned_without("the index of the BGP router entity cannot be read");
    EXPECT_EQ(step_of(steps, "update_rm_index").outcome, StepOutcome::CannotRun);
    EXPECT_EQ(step_of(steps, "update_rm_index").text, unmet);
    EXPECT_EQ(step_of(steps, "update_prefix_list").outcome, StepOutcome::CannotRun);
    EXPECT_EQ(step_of(steps, "update_vrf").outcome, StepOutcome::NotRun);
}

TEST_F(GivenConditions, FirstConditionThatIsNotMet_IsTheReason)
{
    for (const char* words : {"no access list rules are stored", "a prefix list is there already"}) {
        returned_without(words);
        EXPECT_EQ(step_of(steps, "update_prefix_list").outcome, StepOutcome::NotRun);
        EXPECT_EQ(step_of(steps, "update_prefix_list").text, words);
        steps = UpgradeSteps{[] { return CallTotals{}; },
                             [this](const bgp_contract::Condition& condition) { return unmet != condition.words; }};
    }
}

TEST_F(GivenConditions, AllMetAndYetTheStepDidNotRun_NobodySaysWhy)
{
    returned_without("");
    EXPECT_EQ(step_of(steps, "update_prefix_list").outcome, StepOutcome::NotRun);
    EXPECT_EQ(step_of(steps, "update_prefix_list").text, "the log does not tell of it");
}

TEST_F(GivenLines, LinesOfNoStepsBorder_AreNotNeeded)
{
    EXPECT_TRUE(steps.take("Starting BGP update\n"));
    EXPECT_TRUE(steps.take("Found 1 BGP entities"));
    EXPECT_FALSE(steps.take("Found 2 BGP Peer entries"));
    EXPECT_TRUE(steps.take("IPv6 is already enabled for BGP entry : 0"));
    EXPECT_TRUE(steps.take("Update BGP VRF\n"));
    EXPECT_FALSE(steps.take("Found 3 bgp vrfs to update"));
    EXPECT_TRUE(steps.take("Could not allocate memory for vrf names\n"));
    EXPECT_EQ(step_of(steps, "update_vrf").outcome, StepOutcome::Failed);
}

TEST_F(GivenLines, FormatOfALineThatIsNeeded_MayBeKnown)
{
    for (const char* format : {"Starting BGP router update\n", "Starting %s update\n", "Found %d BGP entities",
                               "Found 1 BGP entities", "enter %s\n", "%s"}) {
        EXPECT_TRUE(steps.may_know(format)) << format;
    }
    for (const char* format : {"", "\n", "Peer number %d has no row", "Creating %s", "Start"}) {
        EXPECT_FALSE(steps.may_know(format)) << format;
    }
}

TEST_F(GivenLines, UpgradeThatEnded_HasItsLastCallsInTheStepItEndedIn)
{
    line("Starting BGP update\n");
    line("Starting BGP router update\n", {2, 0, 0});
    line("Finishing BGP router update\n", {1, 6, 0});
    line("Update BGP AfiSafi L3VPN\n");
    so_far.writes += 4;
    steps.ended(so_far);
    expect_calls("update", {2, 0, 0});
    expect_calls("update_router_bgp", {1, 6, 0});
    expect_calls("update_l3vpn", {0, 4, 0});
    EXPECT_EQ(step_of(steps, "update_l3vpn").outcome, StepOutcome::Ended);
    EXPECT_EQ(step_of(steps, "update").outcome, StepOutcome::Ended);
    EXPECT_EQ(step_of(steps, "update_vrf").text, "the upgrade ended before it");
}

// Where the library's source has the text: whole, with "%d" where a number stands, or with "%s" for the step's own name.
bool stands_in(const std::string& source, const std::string& text, const std::string& step)
{
    std::string written;
    for (const char c : text) {
        written += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    static const std::regex number("-?[0-9]+");
    for (const std::string& each : {written, std::regex_replace(written, number, "%d")}) {
        if (source.find('"' + each) != std::string::npos) {
            return true;
        }
    }
    if (written == "update_vrf_ipv6:162: ") {
        return source.find("\"%s:%d: %s\", __func__, 162,") != std::string::npos;
    }
    const std::size_t name = written.find(step);
    return name != std::string::npos &&
           source.find('"' + written.replace(name, step.size(), "%s") + "\", __func__") != std::string::npos;
}

TEST(StepLines, EachText_StandsInTheSourcesOfTheSteps)
{
    std::string source;
    for (const auto& file : std::filesystem::directory_iterator(BGP_SOURCE_DIR "/src/config_update")) {
        source += content_of(file.path());
    }
    for (const bgp_contract::Step& step : bgp_contract::kSteps) {
        std::vector<const char*> texts = {step.first_line, step.last_line};
        for (const auto& lines : {step.nothing_to_do, step.failed, step.passed_over, step.unread}) {
            for (const bgp_contract::Line& line : lines) {
                texts.push_back(line.beginning);
            }
        }
        for (const char* text : texts) {
            EXPECT_TRUE(stands_in(source, text, step.name)) << step.name << ": " << text;
            EXPECT_GT(std::strlen(text), 8U) << "take() looks at so many characters first";
            EXPECT_TRUE(UpgradeSteps([] { return CallTotals{}; }).may_know(text)) << text;
        }
    }
    EXPECT_FALSE(stands_in(source, "Starting BGP routers update\n", "update_router_bgp"));
    EXPECT_TRUE(
        stands_in(source, std::string(bgp_contract::kEntitiesFound) + "3" + bgp_contract::kEntitiesFoundEnd, ""));
}

}  // namespace
}  // namespace bgp_test
