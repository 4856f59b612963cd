// The steps in the report of bgp-rehearse: what ran, what had nothing to do and why, and with how many calls.
#include <gmock/gmock.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "cli/examples.h"
#include "cli/fake_library.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// The text without the first stretch from one text to the end of the next.
std::string without(std::string text, const std::string& from, const std::string& to)
{
    const std::size_t start = text.find(from);
    const std::size_t end = text.find(to, start);
    if (start == std::string::npos || end == std::string::npos) {
        throw std::invalid_argument("no " + from + " to " + to);
    }
    return text.erase(start, end + to.size() - start);
}

class RehearseSteps : public RehearseTest {
protected:
    static json report_of(std::vector<std::string> arguments, int status = 0)
    {
        arguments.insert(arguments.begin(), "run");
        arguments.insert(arguments.end(), {"--json", "--fail-on", "never"});
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.status, status) << result.err;
        return json::parse(result.out);
    }

    // "update_vrf: did not run: why", a line for each step.
    static std::vector<std::string> outcomes(const json& report)
    {
        std::vector<std::string> lines;
        for (const json& step : report["steps"]) {
            const auto text = step["text"].get<std::string>();
            lines.push_back(step["name"].get<std::string>() + ": " + step["outcome"].get<std::string>() +
                            (text.empty() ? "" : ": " + text));
        }
        return lines;
    }

    static json step_of(const json& report, const std::string& name)
    {
        for (const json& step : report["steps"]) {
            if (step["name"] == name) {
                return step;
            }
        }
        throw std::invalid_argument("no step " + name);
    }
};

// The section of the steps, line by line.
std::vector<std::string> section(const std::string& report)
{
    const std::size_t start = report.find("\nSteps ") + 1;
    return lines_of(report.substr(start, report.find("\nFindings", start) + 1 - start));
}

TEST_F(RehearseSteps, RouterToUpgrade_RunsAllButVrfs)
{
    EXPECT_THAT(outcomes(report_of({example("edge-router")})),
                ElementsAre("update: ran", "update_router_bgp: ran", "update_ipv6: ran", "update_l3vpn: ran",
                            "update_prefix_list: ran", "update_rm_index: ran",
                            "update_vrf: did not run: the router has no VRFs", "update_neigh_config_drop_warn: ran",
                            "update_neigh_config_afi_safi: ran", "update_bgp_bvm_join: ran", "update_vrf_ipv6: ran"));
}

TEST_F(RehearseSteps, UpgradedRouter_TellsWhyThereIsNothingToDo)
{
    EXPECT_THAT(
        section(rehearse({"run", example("upgraded")}).out),
        ElementsAre("Steps                              reads   writes",
                    "  update                               8        0  choice of steps: ran",
                    "  update_router_bgp                    2        0  router entry in the command-line model: "
                    "nothing to do: the router is in the command-line model already",
                    "  update_ipv6                                      IPv6 unicast: did not run: "
                    "IPv6 is on already",
                    "  update_l3vpn                         2        0  IPv4 VPN family: nothing to do: "
                    "MPLS VPN uses BGP already",
                    "  update_prefix_list                               prefix lists: did not run: "
                    "a prefix list is there already",
                    "  update_rm_index                      2        0  re-keying to the global index: "
                    "nothing to do: the router is re-keyed already",
                    "  update_vrf                                       VRF instances: did not run: "
                    "the router has no VRFs",
                    "  update_neigh_config_drop_warn        8        2  neighbour limits: ran",
                    "  update_neigh_config_afi_safi        20        0  neighbour family pairs: ran",
                    "  update_bgp_bvm_join                  2        0  BVM join: ran",
                    "  update_vrf_ipv6                      4        0  VRF IPv6 joins: ran"));
}

TEST_F(RehearseSteps, NoRouter_LeavesTheStepsOfARouterOut)
{
    const std::string others = ": nothing to do: the device has no BGP router entity";
    EXPECT_THAT(
        outcomes(report_of({config})),
        ElementsAre("update: ran", "update_router_bgp" + others, "update_ipv6" + others, "update_l3vpn" + others,
                    "update_prefix_list" + others, "update_rm_index" + others, "update_vrf" + others,
                    "update_neigh_config_drop_warn" + others, "update_neigh_config_afi_safi" + others,
                    "update_bgp_bvm_join" + others, "update_vrf_ipv6" + others));
}

TEST_F(RehearseSteps, SeveralRouters_LeaveTheirStepsUnableToRun)
{
    const json step = step_of(report_of({BGP_SOURCE_DIR "/contract/upgrades/two-entities/stored.xml"}), "update_ipv6");
    EXPECT_EQ(step["outcome"], "could not run");
    EXPECT_EQ(step["text"], "2 BGP router entities are stored: which one is meant is not known");
    EXPECT_EQ(step["line"], "No need to update others config");
}

TEST_F(RehearseSteps, ValueThatIsMissing_IsTheReasonOfEachStepThatNeedsIt)
{
    const std::string no_as = folder.file(
        "no-as.xml", without(content_of(example("provider-edge")), "<bgpRmEntLocalAs>", "</bgpRmEntLocalAs>"));
    const json report = report_of({no_as});
    const std::string unread = "the AS number of the BGP router entity cannot be read";
    EXPECT_EQ(step_of(report, "update_router_bgp")["outcome"], "failed");
    EXPECT_EQ(step_of(report, "update_router_bgp")["text"], unread);
    EXPECT_EQ(step_of(report, "update_rm_index")["outcome"], "failed");
    EXPECT_EQ(step_of(report, "update_vrf")["outcome"], "could not run");
    EXPECT_EQ(step_of(report, "update_vrf")["text"], unread);
    EXPECT_EQ(step_of(report, "update_vrf")["line"], "") << "the log is silent";
}

TEST_F(RehearseSteps, ReasonsOfPrefixLists_IsTheOneThatHolds)
{
    EXPECT_EQ(
        step_of(report_of({BGP_SOURCE_DIR "/contract/upgrades/one-entity/stored.xml"}), "update_prefix_list")["text"],
        "no access list rules are stored");
    EXPECT_EQ(step_of(report_of({example("upgraded")}), "update_prefix_list")["text"],
              "a prefix list is there already");
}

TEST_F(RehearseSteps, StepThatGaveUp_HasFailedForTheReasonThatItsLineTells)
{
    const std::string broken = folder.file(
        "broken.xml", without(content_of(example("edge-router")), "<aallPreAccessListEntry_next_free_index>",
                              "</aallPreAccessListEntry_next_free_index>"));
    const json step = step_of(report_of({broken}), "update_prefix_list");
    EXPECT_EQ(step["outcome"], "failed");
    EXPECT_EQ(step["text"], "the next free index of the access lists cannot be read");
    EXPECT_THAT(step["line"].get<std::string>(), StartsWith("Couldn't read next_free_index. err: cdb_get: "));
    EXPECT_EQ(step["reads"], 1);
    EXPECT_EQ(step["writes"], 0);
}

TEST_F(RehearseSteps, Fault_EndsItsStepAndNoneComesAfter)
{
    std::string configuration = content_of(example("provider-edge"));
    const std::size_t blue = configuration.find("<name>blue</name>", configuration.find("<router "));
    const std::string broken =
        folder.file("broken.xml", configuration.substr(0, blue) + without(configuration.substr(blue), "<administrative",
                                                                          "</administrative-status>"));
    const json report = report_of({broken}, 1);
    const std::string after = ": did not run: the upgrade ended before it";
    EXPECT_THAT(
        outcomes(report),
        ElementsAre(
            "update: ended", "update_router_bgp: nothing to do: the router is in the command-line model already",
            "update_ipv6: did not run: IPv6 is on already", "update_l3vpn: nothing to do: MPLS VPN uses BGP already",
            "update_prefix_list: did not run: no access list rules are stored", "update_rm_index: ran",
            "update_vrf: ended", "update_neigh_config_drop_warn" + after, "update_neigh_config_afi_safi" + after,
            "update_bgp_bvm_join" + after, "update_vrf_ipv6" + after));
    const json whole = report_of({example("provider-edge")});
    for (const char* name : {"update", "update_l3vpn", "update_rm_index"}) {
        EXPECT_EQ(step_of(report, name)["reads"], step_of(whole, name)["reads"]) << name;
        EXPECT_EQ(step_of(report, name)["writes"], step_of(whole, name)["writes"]) << name;
    }
    EXPECT_GT(step_of(report, "update_vrf")["reads"], 0);
    EXPECT_LT(step_of(report, "update_vrf")["reads"], step_of(whole, "update_vrf")["reads"]);
}

TEST_F(RehearseSteps, Signal_CountsTheCallsBeforeIt)
{
    const std::string library = fake_library(folder, R"(
        log("Starting BGP update\n");
        cdb_num_instances(cdb, "/prefix-list");
        log("Update BGP VRF\n");
        maapi_create(maapi, th, "/router/bgp{%u}", 1u);
        maapi_create(maapi, th, "/router/bgp{%u}", 1u);
        log("Finishing VRF update\n");
        log("Update BGP VRF IPv6\n");
        cdb_num_instances(cdb, "/prefix-list");
        kill(getpid(), SIGKILL);
        return 0;)");
    const std::vector<std::string> lines = section(rehearse({"run", config, "--library", library}).out);
    EXPECT_THAT(lines, testing::IsSupersetOf({
                           "  update                               1        0  choice of steps: ended",
                           "  update_vrf                           0        2  VRF instances: ran (1 write failed)",
                           "  update_vrf_ipv6                      1        0  VRF IPv6 joins: ended",
                       }));
    const json step = step_of(report_of({config, "--library", library}, 1), "update_vrf_ipv6");
    EXPECT_EQ(step, json({{"name", "update_vrf_ipv6"},
                          {"title", "VRF IPv6 joins"},
                          {"outcome", "ended"},
                          {"text", ""},
                          {"line", ""},
                          {"runs", 1},
                          {"reads", 1},
                          {"writes", 0},
                          {"failed_writes", 0}}));
}

TEST_F(RehearseSteps, Exception_CountsTheCallsBeforeIt)
{
    const json report = report_of({config, "--library", fake_library(folder, R"(
        log("Update BGP VRF\n");
        cdb_num_instances(cdb, "/prefix-list");
        throw 5;)")},
                                  1);
    EXPECT_EQ(step_of(report, "update_vrf")["reads"], 1);
}

TEST_F(RehearseSteps, ExitAfterAFault_CountsTheCallsBetweenThem)
{
    const json report = report_of({config, "--library", fake_library(folder, R"(
        log("Update BGP VRF\n");
        nzmw_gen_fault(1, "f", "src/s", 5, "odd");
        log("Finishing VRF update\n");
        cdb_num_instances(cdb, "/prefix-list");
        exit(3);)")},
                                  1);
    EXPECT_EQ(step_of(report, "update_vrf")["reads"], 0);
    EXPECT_EQ(step_of(report, "update")["reads"], 1);
}

TEST_F(RehearseSteps, StepThatRanTwice_SaysSo)
{
    const std::string library = fake_library(folder, R"(
        for (int i = 0; i < 2; ++i) {
            log("Update BGP VRF\n");
            cdb_num_instances(cdb, "/prefix-list");
            log("Finishing VRF update\n");
        }
        return 0;)");
    EXPECT_THAT(rehearse({"run", config, "--library", library}).out,
                HasSubstr("  update_vrf                           2        0  VRF instances: ran 2 times\n"));
}

TEST_F(RehearseSteps, WhatALogsLineGoesOnWith_StandsInTheJsonAlone)
{
    const std::string library =
        fake_library(folder, "log(\"Update BGP VRF\\n\"); log(\"Failed to read BGP VRF objects \\033[1m\"); return 0;");
    EXPECT_THAT(rehearse({"run", config, "--library", library}).out,
                HasSubstr("VRF instances: failed: the VRFs cannot be read\n"));
    EXPECT_EQ(step_of(report_of({config, "--library", library}), "update_vrf")["line"],
              "Failed to read BGP VRF objects \033[1m");
}

TEST_F(RehearseSteps, Sums_AreTheCallsOfTheSummary)
{
    for (const char* name : {"edge-router", "provider-edge", "upgraded"}) {
        const std::string text = rehearse({"run", example(name)}).out;
        std::size_t calls = 0;
        ASSERT_EQ(std::sscanf(text.c_str() + text.find("  device "), "  device %zu calls: ", &calls), 1) << text;
        std::size_t sum = 0;
        const json report = report_of({example(name)});
        for (const json& step : report["steps"]) {
            sum += step["reads"].get<std::size_t>() + step["writes"].get<std::size_t>();
        }
        EXPECT_EQ(sum, calls) << name;
    }
}

}  // namespace
}  // namespace bgp_test
