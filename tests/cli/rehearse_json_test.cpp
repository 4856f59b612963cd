// The report as JSON: one document, that holds what the text tells.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class RehearseJson : public RehearseTest {
protected:
    json run_body(const std::string& body, std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments = {"run", config, "--library", fake_library(folder, body), "--json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.err, "");
        return json::parse(result.out);
    }
};

TEST_F(RehearseJson, UpgradeThatDoesNothing_HasAllMembers)
{
    const std::string version = rehearse({"--version"}).out;
    EXPECT_EQ(run_body("return 0;"), json({{"version", version.substr(13, version.size() - 14)},
                                           {"configuration", config},
                                           {"library", folder / "libfake.so"},
                                           {"loaded", {{"entries", 4}, {"values", 7}}},
                                           {"result", 0},
                                           {"ended", nullptr},
                                           {"steps", json::array()},
                                           {"calls", json::object()},
                                           {"failed_writes", json::array()},
                                           {"faults", json::array()},
                                           {"check", nullptr},
                                           {"changes", json::array()},
                                           {"log", json::array()}}));
}

TEST_F(RehearseJson, Changes_HavePathKindAndLeaves)
{
    EXPECT_EQ(run_body(R"(
        maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
        maapi_set_elem2(maapi, th, "192.0.2.7", "/router/bgp{%u}/router-id", 65020u);
        maapi_create(maapi, th, "/router/bgp{%u}/vrf{%s}", 65020u, "red");
        maapi_set_elem2(maapi, th, "up", "/router/bgp{%u}/vrf{%s}/administrative-status", 65020u, "red");
        maapi_set_elem2(maapi, th, "twoOctet", "/router/bgp{%u}/as-size", 65010u);
        maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65010u);
        maapi_delete(maapi, th, "/prefix-list{%s}", "b");
        confd_value_t key;
        CONFD_SET_UINT32(&key, 20);
        maapi_move(maapi, th, &key, 1, "/prefix-list{%s}/seq{%u}", "a", 10u);
        return 0;)")["changes"],
              json({{{"path", "/prefix-list{a}/seq{20}"},
                     {"change", "moved"},
                     {"from", "/prefix-list{a}/seq{10}"},
                     {"leaves", json::object()}},
                    {{"path", "/prefix-list{b}"}, {"change", "deleted"}, {"leaves", json::object()}},
                    {{"path", "/router/bgp{65010}"},
                     {"change", "changed"},
                     {"leaves",
                      {{"router-id", {{"before", "192.0.2.1"}, {"after", "192.0.2.9"}}},
                       {"as-size", {{"before", nullptr}, {"after", "twoOctet"}}}}}},
                    {{"path", "/router/bgp{65020}"}, {"change", "created"}, {"leaves", {{"router-id", "192.0.2.7"}}}},
                    {{"path", "/router/bgp{65020}/vrf{red}"},
                     {"change", "created"},
                     {"leaves", {{"administrative-status", "up"}}}}}));
}

TEST_F(RehearseJson, Calls_AreCountedByFunctionAndFailure)
{
    const json document = run_body(R"(
        maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
        maapi_create(maapi, th, "/router/bgp{%u}", 65010u);
        cdb_exists(cdb, "/router/bgp{%u}", 65010u);
        return 0;)");
    EXPECT_EQ(document["calls"], json({{"maapi_create", {{"calls", 2}, {"failures", 1}}},
                                       {"cdb_exists", {{"calls", 1}, {"failures", 0}}}}));
    ASSERT_EQ(document["failed_writes"].size(), 1u);
    EXPECT_EQ(document["failed_writes"][0]["function"], "maapi_create");
    EXPECT_EQ(document["failed_writes"][0]["error"], 2);
    EXPECT_THAT(document["failed_writes"][0]["message"].get<std::string>(), HasSubstr("/router/bgp{65010}"));
}

TEST_F(RehearseJson, Log_HasEachLineAsItWasWritten)
{
    EXPECT_EQ(run_body("log(\"one \\n\"); log(\"two\"); log(\"\\x01\\xff\"); return 0;")["log"],
              json({"one \n", "two", "\x01\xEF\xBF\xBD"}));
}

TEST_F(RehearseJson, Fault_IsListedWhenTheUpgradeWentOn)
{
    EXPECT_EQ(run_body("nzmw_gen_fault(1, \"f\", \"src/s\", 5, \"odd\"); return 0;")["faults"],
              json({{{"function", "f"}, {"source", "src/s"}, {"line", 5}, {"text", "odd"}}}));
}

TEST_F(RehearseJson, Check_IsToldWhenAskedFor)
{
    EXPECT_EQ(run_body("return 0;", {"--commit-check"})["check"], json({{"valid", true}, {"message", ""}}));
}

TEST_F(RehearseJson, Password_IsMasked)
{
    const std::string peer = R"("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{1 unknown \"\" 0 ipv4 c0:00:02:02 0 0}")";
    const std::string leaf = peer.substr(0, peer.size() - 1) + "/bgpPeerConfigPassword\"";
    const json document = run_body("maapi_create(maapi, th, " + peer + "); maapi_set_elem2(maapi, th, \"hush\", " +
                                   leaf + "); return 0;");
    EXPECT_EQ(document["changes"][0]["leaves"], json({{"bgpPeerConfigPassword", "********"}}));
}

}  // namespace
}  // namespace bgp_test
