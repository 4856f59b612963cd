// What the log tells of the upgrade's steps: lines given one by one, and those of real upgrades with calls that fail.
#include "judge/upgrade_steps.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "bgp_update/update.h"
#include "contract/steps.h"
#include "device.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

using bgp_platform::capi::Function;
using bgp_rehearse::CallTotals;
using bgp_rehearse::Step;
using bgp_rehearse::StepOutcome;
using bgp_rehearse::UpgradeSteps;
using testing::HasSubstr;
using testing::IsEmpty;

const Step& step_of(const UpgradeSteps& steps, const std::string& name)
{
    const auto found =
        std::find_if(steps.all().begin(), steps.all().end(), [&name](const Step& step) { return step.name == name; });
    if (found == steps.all().end()) {
        throw std::invalid_argument("no step " + name);
    }
    return *found;
}

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
        const std::optional<CallTotals>& calls = step_of(steps, step).calls;
        ASSERT_TRUE(calls) << step;
        EXPECT_EQ(calls->reads, expected.reads) << step;
        EXPECT_EQ(calls->writes, expected.writes) << step;
        EXPECT_EQ(calls->failed_writes, expected.failed_writes) << step;
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
    EXPECT_EQ(step_of(steps, "update_router_bgp").text, "Failed to configure router bgp: 5, err: no");
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
    line("num bgp: 1, num_bgp_vrs: 2, err: \n");
    EXPECT_EQ(step_of(steps, "update_vrf").text, "num bgp: 1, num_bgp_vrs: 2, err:");
    line("Update BGP VRF\n");
    line("Finishing VRF update\n");
    EXPECT_EQ(step_of(steps, "update_vrf").outcome, StepOutcome::Ran);
    EXPECT_EQ(step_of(steps, "update_vrf").text, "");
}

TEST_F(GivenLines, LinesOfNoStepsBorder_AreNotNeeded)
{
    EXPECT_TRUE(steps.take("Starting BGP update\n"));
    EXPECT_FALSE(steps.take("Found 1 BGP entities"));
    EXPECT_TRUE(steps.take("IPv6 is already enabled for BGP entry : 0"));
    EXPECT_TRUE(steps.take("Update BGP VRF\n"));
    EXPECT_FALSE(steps.take("Found 3 bgp vrfs to update"));
    EXPECT_TRUE(steps.take("Could not allocate memory for vrf names\n"));
    EXPECT_EQ(step_of(steps, "update_vrf").outcome, StepOutcome::Failed);
}

TEST_F(GivenLines, UpgradeThatEndedWithUnknownCalls_LeavesThemOutOfTheStepItEndedInAlone)
{
    line("Starting BGP update\n");
    line("Starting BGP router update\n", {2, 0, 0});
    line("Finishing BGP router update\n", {1, 6, 0});
    line("Update BGP AfiSafi L3VPN\n");
    so_far.writes += 4;
    steps.ended(std::nullopt);
    expect_calls("update", {2, 0, 0});
    expect_calls("update_router_bgp", {1, 6, 0});
    EXPECT_FALSE(step_of(steps, "update_l3vpn").calls);
    EXPECT_EQ(step_of(steps, "update_l3vpn").outcome, StepOutcome::Ended);
    EXPECT_EQ(step_of(steps, "update").outcome, StepOutcome::Ended);
    EXPECT_EQ(step_of(steps, "update_vrf").text, "the upgrade ended before it");
}

// Where the library's source has the text: whole, or with "%s" where the step's own name stands.
bool stands_in(const std::string& source, const std::string& text, const std::string& step)
{
    std::string written;
    for (const char c : text) {
        written += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    if (source.find('"' + written) != std::string::npos) {
        return true;
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
        for (const auto& lines : {step.nothing_to_do, step.failed, step.passed_over}) {
            texts.insert(texts.end(), lines.begin(), lines.end());
        }
        for (const char* text : texts) {
            EXPECT_TRUE(stands_in(source, text, step.name)) << step.name << ": " << text;
            EXPECT_GT(std::strlen(text), 8U) << "take() looks at so many characters first";
        }
    }
    EXPECT_FALSE(stands_in(source, "Starting BGP routers update\n", "update_router_bgp"));
}

// A real upgrade in which calls fail.
struct Failing {
    const char* name;
    const char* example;
    Function function;
    const char* path;
    std::size_t skip;  // calls that do not fail
    const char* step;
    StepOutcome outcome;
    const char* text;  // that the step's begins with
};

constexpr char kIndex[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex";
constexpr char kLocalAs[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs";
constexpr char kSupportIpv6[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntSupportIpv6";

constexpr Failing kFailing[] = {
    {"RouterAs", "edge-router", Function::cdb_get, kLocalAs, 0, "update_router_bgp", StepOutcome::NothingToDo,
     "Failed to read as-number "},
    {"Router", "edge-router", Function::maapi_create, "/router/bgp", 0, "update_router_bgp", StepOutcome::Failed,
     "Failed to configure router bgp: 65010, err: "},
    {"Ipv6Support", "edge-router", Function::cdb_get_enum_value, kSupportIpv6, 0, "update_ipv6", StepOutcome::NotRun,
     "Failed to read IPv6 enable flag for BGP entry: 0, "},
    {"Ipv6Index", "edge-router", Function::cdb_get, kIndex, 0, "update_ipv6", StepOutcome::Failed,
     "Failed to read entity index BGP entry: 0, "},
    {"VpnRouting", "provider-edge", Function::cdb_get, "/MPLS-VPN-MIB", 0, "update_l3vpn", StepOutcome::Failed,
     "Failed to read mplsVpnUseBgpRouting, "},
    {"VpnIndex", "edge-router", Function::cdb_get, kIndex, 1, "update_l3vpn", StepOutcome::Failed,
     "Failed to read entity index BGP entry: 0, "},
    {"PrefixIndex", "edge-router", Function::cdb_get, kIndex, 2, "update_prefix_list", StepOutcome::NotRun,
     "no access list rules are stored, a prefix list is there already, or the entity's index cannot be read"},
    {"RmIndex", "edge-router", Function::cdb_get, kIndex, 2, "update_rm_index", StepOutcome::NotRun,
     "the index of the BGP router entity cannot be read"},
    {"PrefixNextIndex", "edge-router", Function::cdb_get, "/internal/aallPreAccessListEntry-hidden", 0,
     "update_prefix_list", StepOutcome::Failed, "Couldn't read next_free_index. "},
    {"PrefixRules", "edge-router", Function::cdb_get_objects, "/DC-AALL-MIB", 0, "update_prefix_list",
     StepOutcome::Failed, "Could not get prefix list entries, "},
    {"PrefixNewIndex", "edge-router", Function::maapi_set_elem, "/prefix-list-internal/name-next-index", 0,
     "update_prefix_list", StepOutcome::Failed, "Couldn't set internal name-next-index value! "},
    {"RmIndexAs", "edge-router", Function::cdb_get, kLocalAs, 1, "update_rm_index", StepOutcome::Failed,
     "Failed to get local as number, "},
    {"VrfAs", "provider-edge", Function::cdb_get, kLocalAs, 2, "update_vrf", StepOutcome::NotRun,
     "the AS number of the BGP router entity cannot be read"},
    {"Vrfs", "provider-edge", Function::cdb_get_objects, "/router/bgp", 0, "update_vrf", StepOutcome::Failed,
     "Failed to read BGP VRF objects "},
    {"BvmIndex", "provider-edge", Function::cdb_get, kIndex, 1, "update_bgp_bvm_join", StepOutcome::Failed,
     "Failed to read entity index BGP entry: 0, "},
    {"Ipv6Vrfs", "provider-edge", Function::maapi_init_cursor, "/router/bgp{65020}/vrf", 0, "update_vrf_ipv6",
     StepOutcome::Failed, "update_vrf_ipv6:162: "},
};

class FailingUpgrade : public testing::TestWithParam<Failing> {
protected:
    FailingUpgrade() { device.load_file(std::string(BGP_SOURCE_DIR "/examples/") + GetParam().example + ".xml"); }

    // Runs update() and notes in which step each call was made.
    void upgrade()
    {
        device.recorder().start();
        device.log_sink = [this](std::string_view line) {
            note_calls();
            steps.take(line);
        };
        device.fault_plan().fail(GetParam().function, GetParam().path, {}, 1, GetParam().skip);
        const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
        EXPECT_EQ(update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket), 0);
        note_calls();
        steps.returned();
    }

    bgp_platform::Device device;
    UpgradeSteps steps{[this] { return bgp_rehearse::totals_of(device.calls()); }};
    std::map<std::string, std::vector<std::string>> paths;  // by step

private:
    void note_calls()
    {
        const auto& calls = device.recorder().calls();
        for (; noted_ < calls.size(); ++noted_) {
            if (effect_of(calls[noted_].function) != bgp_platform::capi::Effect::Session) {
                paths[steps.current()].push_back(calls[noted_].path);
            }
        }
    }
    std::size_t noted_ = 0;
};

TEST_P(FailingUpgrade, CallThatFails_TellsWhatCameOfItsStep)
{
    upgrade();
    const Step& step = step_of(steps, GetParam().step);
    EXPECT_EQ(step.outcome, GetParam().outcome);
    EXPECT_THAT(step.text, testing::StartsWith(GetParam().text));
}

TEST_P(FailingUpgrade, CallsOfUpdateItself_AreThoseThatDecideOnSteps)
{
    upgrade();
    for (const std::string& path : paths["update"]) {
        EXPECT_THAT(path, testing::AnyOf(kIndex, kLocalAs, kSupportIpv6, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry",
                                         "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry", "/prefix-list",
                                         testing::MatchesRegex("/router/bgp\\{[0-9]+\\}/vrf")));
    }
    EXPECT_LE(paths["update"].size(), 8U);
}

TEST_P(FailingUpgrade, Counts_AreThoseOfTheCallsMadeInTheStep)
{
    upgrade();
    CallTotals sum;
    for (const Step& step : steps.all()) {
        EXPECT_EQ(step.calls->reads + step.calls->writes, paths[step.name].size()) << step.name;
        sum.reads += step.calls->reads;
        sum.writes += step.calls->writes;
        sum.failed_writes += step.calls->failed_writes;
    }
    EXPECT_EQ(sum.reads, device.calls().reads());
    EXPECT_EQ(sum.writes, device.calls().writes());
    EXPECT_EQ(sum.failed_writes, device.calls().failed_write_count());
}

INSTANTIATE_TEST_SUITE_P(Calls, FailingUpgrade, testing::ValuesIn(kFailing),
                         [](const auto& failing) { return failing.param.name; });

}  // namespace
}  // namespace bgp_test
