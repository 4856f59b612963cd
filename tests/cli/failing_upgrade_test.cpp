// What is told of the steps of real upgrades in which calls fail.
#include <gmock/gmock.h>

#include <map>
#include <tuple>

#include "bgp_update/update.h"
#include "cli/step_of.h"
#include "contract/steps.h"
#include "device.h"
#include "judge/call_site.h"
#include "judge/stored_condition.h"

namespace bgp_test {
namespace {

using bgp_platform::capi::Function;
using bgp_rehearse::CallTotals;
using bgp_rehearse::Step;
using bgp_rehearse::StepOutcome;
using bgp_rehearse::UpgradeSteps;

// A real upgrade in which calls fail.
struct Failing {
    const char* name;
    const char* example;
    Function function;
    const char* path;
    std::size_t skip;  // calls that do not fail
    const char* step;
    StepOutcome outcome;
    const char* text;
    const char* line = "";  // that the step's begins with
};

constexpr char kIndex[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex";
constexpr char kLocalAs[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs";
constexpr char kSupportIpv6[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntSupportIpv6";

constexpr Failing kFailing[] = {
    {"RouterAs", "edge-router", Function::cdb_get, kLocalAs, 0, "update_router_bgp", StepOutcome::Failed,
     "the AS number of the BGP router entity cannot be read", "Failed to read as-number "},
    {"Router", "edge-router", Function::maapi_create, "/router/bgp", 0, "update_router_bgp", StepOutcome::Failed,
     "the router's entry cannot be made", "Failed to configure router bgp: 65010, err: "},
    {"Ipv6Support", "edge-router", Function::cdb_get_enum_value, kSupportIpv6, 0, "update_ipv6", StepOutcome::CannotRun,
     "whether IPv6 is on cannot be read", "Failed to read IPv6 enable flag for BGP entry: 0, "},
    {"Ipv6Index", "edge-router", Function::cdb_get, kIndex, 0, "update_ipv6", StepOutcome::Failed,
     "the index of the BGP router entity cannot be read", "Failed to read entity index BGP entry: 0, "},
    {"Ipv6Flag", "edge-router", Function::maapi_set_elem,
     "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}/bgpRmEntSupportIpv6", 0, "update_ipv6", StepOutcome::Failed,
     "the router cannot be told to support IPv6", "Failed to enable IPv6 for BGP entity id: 5, "},
    {"VpnRouting", "provider-edge", Function::cdb_get, "/MPLS-VPN-MIB", 0, "update_l3vpn", StepOutcome::Failed,
     "whether MPLS VPN uses BGP cannot be read", "Failed to read mplsVpnUseBgpRouting, "},
    {"VpnIndex", "edge-router", Function::cdb_get, kIndex, 1, "update_l3vpn", StepOutcome::Failed,
     "the index of the BGP router entity cannot be read", "Failed to read entity index BGP entry: 0, "},
    {"PrefixIndex", "edge-router", Function::cdb_get, kIndex, 2, "update_prefix_list", StepOutcome::NotRun,
     "the log does not tell of it"},
    {"PrefixNextIndex", "edge-router", Function::cdb_get, "/internal/aallPreAccessListEntry-hidden", 0,
     "update_prefix_list", StepOutcome::Failed, "the next free index of the access lists cannot be read",
     "Couldn't read next_free_index. "},
    {"PrefixRules", "edge-router", Function::cdb_get_objects, "/DC-AALL-MIB", 0, "update_prefix_list",
     StepOutcome::Failed, "the access list rules cannot be read", "Could not get prefix list entries, "},
    {"PrefixNewIndex", "edge-router", Function::maapi_set_elem, "/prefix-list-internal/name-next-index", 0,
     "update_prefix_list", StepOutcome::Failed, "the next free index of the prefix lists cannot be set",
     "Couldn't set internal name-next-index value! "},
    {"RmIndexAs", "edge-router", Function::cdb_get, kLocalAs, 1, "update_rm_index", StepOutcome::Failed,
     "the AS number of the BGP router entity cannot be read", "Failed to get local as number, "},
    {"VrfCount", "provider-edge", Function::cdb_num_instances, "/router/bgp", 0, "update_vrf", StepOutcome::CannotRun,
     "how many VRFs the router has cannot be read", "num bgp: 1, num_bgp_vrs: -1, err: "},
    {"Vrfs", "provider-edge", Function::cdb_get_objects, "/router/bgp", 0, "update_vrf", StepOutcome::Failed,
     "the VRFs cannot be read", "Failed to read BGP VRF objects "},
    {"BvmIndex", "provider-edge", Function::cdb_get, kIndex, 1, "update_bgp_bvm_join", StepOutcome::Failed,
     "the index of the BGP router entity cannot be read", "Failed to read entity index BGP entry: 0, "},
    {"Ipv6Vrfs", "provider-edge", Function::maapi_init_cursor, "/router/bgp{65020}/vrf", 0, "update_vrf_ipv6",
     StepOutcome::Failed, "the VRFs cannot be read", "update_vrf_ipv6:162: "},
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
    UpgradeSteps steps{[this] { return bgp_rehearse::totals_of(device.calls()); }, bgp_rehearse::conditions_on(device)};
    std::map<std::string, std::vector<std::string>> paths;  // by step
    std::vector<std::tuple<std::string, Function, std::string>> failed;

private:
    void note_calls()
    {
        const auto& calls = device.recorder().calls();
        for (; noted_ < calls.size(); ++noted_) {
            if (effect_of(calls[noted_].function) != bgp_platform::capi::Effect::Session) {
                paths[steps.current()].push_back(calls[noted_].path);
            }
            if (calls[noted_].result < 0) {
                failed.emplace_back(steps.current(), calls[noted_].function, calls[noted_].path);
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
    EXPECT_EQ(step.text, GetParam().text);
    EXPECT_THAT(step.line, testing::StartsWith(GetParam().line));
}

// The failed call's own site in the contract says the same of it.
TEST_P(FailingUpgrade, CallThatFails_StopsItsStepByTheContract)
{
    upgrade();
    for (const auto& [step, function, path] : failed) {
        const auto* const site =
            bgp_rehearse::find_call_site(step, name_of(function), bgp_rehearse::without_keys(path));
        ASSERT_NE(site, nullptr) << step << ": " << path;
        if (function == GetParam().function && path.rfind(GetParam().path, 0) == 0) {
            const bgp_rehearse::FailureMeaning meaning = bgp_rehearse::meaning_of(site->meaning, CONFD_ERR_INTERNAL);
            EXPECT_EQ(meaning.kind, bgp_contract::Class::Stops) << path;
            if (!step_of(steps, GetParam().step).line.empty()) {
                EXPECT_EQ(meaning.sentence, step_of(steps, GetParam().step).text);
            }
            return;
        }
    }
    FAIL() << "no call failed as it should";
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
        EXPECT_EQ(step.calls.reads + step.calls.writes, paths[step.name].size()) << step.name;
        sum.reads += step.calls.reads;
        sum.writes += step.calls.writes;
        sum.failed_writes += step.calls.failed_writes;
    }
    EXPECT_EQ(sum.reads, device.calls().reads());
    EXPECT_EQ(sum.writes, device.calls().writes());
    EXPECT_EQ(sum.failed_writes, device.calls().failed_write_count());
}

INSTANTIATE_TEST_SUITE_P(Calls, FailingUpgrade, testing::ValuesIn(kFailing),
                         [](const auto& failing) { return failing.param.name; });

}  // namespace
}  // namespace bgp_test
