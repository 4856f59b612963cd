// The report as JSON: one document, that holds what the text tells and all that it leaves out.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

class RehearseJson : public RehearseTest {
protected:
    CommandResult run(const std::string& library, std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments = {"run", config, "--library", library, "--json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return rehearse(arguments);
    }

    json run_body(const std::string& body, std::vector<std::string> more = {}, int status = 0)
    {
        const CommandResult result = run(fake_library(folder, body), std::move(more));
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.status, status);
        json document = json::parse(result.out);
        EXPECT_EQ(document["exit_status"], status);
        return document;
    }
};

// Of a document: "path fate step", a line for each change.
std::vector<std::string> changes_of(const json& document)
{
    std::vector<std::string> lines;
    for (const json& change : document["changes"]) {
        lines.push_back(change["path"].get<std::string>() + ": " + change["fate"].get<std::string>() +
                        (change.contains("from") ? " from " + change["from"]["path"].get<std::string>() : ""));
    }
    return lines;
}

TEST_F(RehearseJson, UpgradeThatDoesNothing_HasAllMembers)
{
    const std::string told = rehearse({"--version"}).out;
    const std::string version = told.substr(0, told.find('\n'));
    json document = run_body("return 0;");
    EXPECT_EQ(document["account"]["lists"].size(), 3U);
    EXPECT_THAT(document["inputs"]["library"]["sha256"].get<std::string>(), testing::SizeIs(64));
    document["account"].erase("lists");
    document["inputs"]["library"].erase("sha256");
    EXPECT_EQ(
        document,
        json({{"schema", 2},
              {"version", version.substr(13)},
              {"exit_status", 0},
              {"error", nullptr},
              {"verdict", "SAFE"},
              {"reason", "Nothing is lost, and nothing needs a look."},
              {"inputs",
               {{"configuration",
                 {{"name", config}, {"sha256", "319c4ad8652683a057a20ca18eb888bf22660658e3db830ae8fee7e09fe0ea8c"}}},
                {"library", {{"path", folder / "libfake.so"}, {"version", nullptr}}},
                {"options",
                 {{"fail_on", "stop"},
                  {"severities", json::array()},
                  {"max_entries", 50000000},
                  {"commit_check", false},
                  {"again", false},
                  {"time_limit", 600.0},
                  {"memory_limit", nullptr}}},
                {"assumptions", document["inputs"]["assumptions"]}}},
              {"account",
               {{"stored", 4},
                {"kept", 4},
                {"changed", 0},
                {"moved", 0},
                {"moved_and_changed", 0},
                {"removed", 0},
                {"new", 0},
                {"result", 4}}},
              {"findings", document["findings"]},
              {"steps", json::array()},
              {"calls", json::object()},
              {"predicted",
               {{"call_seconds", {{"least", 0.00005}, {"most", 0.001}}},
                {"connection_seconds", {{"least", 0.0002}, {"most", 0.005}}},
                {"calls", 0},
                {"connections", 0},
                {"seconds", {{"least", 0.0}, {"most", 0.0}}},
                {"steps", json::array()}}},
              {"failed_writes", json::array()},
              {"faults", json::array()},
              {"returned", 0},
              {"ended", nullptr},
              {"check", nullptr},
              {"changes", json::array()}}));
}

TEST_F(RehearseJson, Changes_HoldKeysFatesAndLeaves)
{
    const json document = run_body(R"(
        log("Update BGP VRF\n");
        maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
        maapi_set_elem2(maapi, th, "192.0.2.7", "/router/bgp{%u}/router-id", 65020u);
        maapi_create(maapi, th, "/router/bgp{%u}/vrf{%s}", 65020u, "red one");
        log("Finishing VRF update\n");
        maapi_set_elem2(maapi, th, "twoOctet", "/router/bgp{%u}/as-size", 65010u);
        maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65010u);
        maapi_delete(maapi, th, "/prefix-list{%s}", "b");
        maapi_set_elem2(maapi, th, "4", "/prefix-list-internal/name-next-index");
        confd_value_t key;
        CONFD_SET_UINT32(&key, 20);
        maapi_move(maapi, th, &key, 1, "/prefix-list{%s}/seq{%u}", "a", 10u);
        return 0;)",
                                   {}, 3);
    ASSERT_THAT(changes_of(document),
                ElementsAre("/: changed", "/prefix-list{a}/seq{20}: moved from /prefix-list{a}/seq{10}",
                            "/prefix-list{b}: removed", "/router/bgp{65010}: changed", "/router/bgp{65020}: new",
                            "/router/bgp{65020}/vrf{\"red one\"}: new"));
    const json& changes = document["changes"];
    EXPECT_EQ(changes[0], json({{"path", "/"},
                                {"list", "/"},
                                {"keys", json::object()},
                                {"within", json::array()},
                                {"fate", "changed"},
                                {"step", "update"},
                                {"leaves",
                                 {{{"name", "prefix-list-internal/name-next-index"},
                                   {"before", nullptr},
                                   {"after", "4"},
                                   {"step", "update"}}}}}));
    EXPECT_EQ(changes[1], json({{"path", "/prefix-list{a}/seq{20}"},
                                {"list", "/prefix-list/seq"},
                                {"keys", {{"number", "20"}}},
                                {"within", {{{"list", "/prefix-list"}, {"keys", {{"name", "a"}}}}}},
                                {"fate", "moved"},
                                {"from", {{"path", "/prefix-list{a}/seq{10}"}, {"keys", {{"number", "10"}}}}},
                                {"step", "update"},
                                {"leaves", json::array()}}));
    EXPECT_EQ(changes[3]["leaves"],
              json({{{"name", "router-id"}, {"before", "192.0.2.1"}, {"after", "192.0.2.9"}, {"step", "update"}},
                    {{"name", "as-size"}, {"before", nullptr}, {"after", "twoOctet"}, {"step", "update"}}}));
    EXPECT_EQ(changes[4]["step"], "update_vrf");
    EXPECT_EQ(changes[4]["leaves"],
              json({{{"name", "router-id"}, {"before", nullptr}, {"after", "192.0.2.7"}, {"step", "update_vrf"}}}));
    EXPECT_EQ(changes[5]["keys"], json({{"name", "red one"}}));
}

TEST_F(RehearseJson, RemovedRow_HasWhatItHeld)
{
    const json changes = run_body("return maapi_delete(maapi, th, \"/router/bgp{%u}\", 65010u);", {}, 3)["changes"];
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0]["fate"], "removed");
    EXPECT_EQ(changes[0]["leaves"][0]["before"], "192.0.2.1");
    EXPECT_EQ(changes[0]["leaves"][0]["after"], nullptr);
}

TEST_F(RehearseJson, Account_HasTheNumbersOfEachList)
{
    const json account = run_body("return maapi_create(maapi, th, \"/prefix-list{%s}\", \"c\");")["account"];
    EXPECT_EQ(account["new"], 1);
    EXPECT_EQ(account["result"], 5);
    EXPECT_EQ(account["lists"][0], json({{"path", "/prefix-list"},
                                         {"stored", 2},
                                         {"kept", 2},
                                         {"changed", 0},
                                         {"moved", 0},
                                         {"moved_and_changed", 0},
                                         {"removed", 0},
                                         {"new", 1},
                                         {"result", 3}}));
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
}

TEST_F(RehearseJson, FailedWrites_AreAllThereWithWhatTheyMean)
{
    const json document = run_body(R"(
        log("Update BGP VRF IPv6\n");
        for (unsigned i = 1; i <= 30; ++i) maapi_create(maapi, th, "/router/bgp{%u}", 65010u);
        maapi_create(maapi, th, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{1 1}");
        maapi_create(maapi, th, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{1 1}");
        cdb_num_instances(cdb, "/no-such-list");
        log("Finishing VRF IPv6 update\n");
        return 0;)",
                                   {}, 3);
    const json& failed = document["failed_writes"];
    ASSERT_EQ(failed.size(), 31U) << "reads are not among them";
    EXPECT_EQ(failed[29], json({{"step", "update_vrf_ipv6"},
                                {"function", "maapi_create"},
                                {"error", 2},
                                {"path", "/router/bgp{65010}"},
                                {"class", nullptr},
                                {"sentence", nullptr}}));
    EXPECT_EQ(failed[30], json({{"step", "update_vrf_ipv6"},
                                {"function", "maapi_create"},
                                {"error", 2},
                                {"path", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{1 1}"},
                                {"class", "expected"},
                                {"sentence", "the VRF's IPv6 join is there already"}}));
}

TEST_F(RehearseJson, Findings_HaveAllTheirPlaces)
{
    const json document = run_body(
        "for (unsigned i = 1; i <= 7; ++i) maapi_set_elem2(maapi, th, \"up\", "
        "\"/router/bgp{%u}/administrative-status\", i); return 0;");
    EXPECT_EQ(document["verdict"], "REVIEW");
    const json& finding = document["findings"][0];
    EXPECT_EQ(finding["id"], "write-failed");
    EXPECT_EQ(finding["severity"], "review");
    EXPECT_EQ(finding["count"], 7);
    ASSERT_EQ(finding["places"].size(), 7U);
    EXPECT_EQ(finding["places"][6]["path"], "/router/bgp{7}/administrative-status");
}

TEST_F(RehearseJson, Prediction_IsByStepAndInAll)
{
    const json predicted = run_body(R"(
        log("Update BGP VRF\n");
        cdb_exists(cdb, "/router/bgp{%u}", 65010u);
        cdb_exists(cdb, "/router/bgp{%u}", 65010u);
        log("Finishing VRF update\n");
        cdb_exists(cdb, "/router/bgp{%u}", 65010u);
        return 0;)",
                                    {"--call-time", "100ms"}, 3)["predicted"];
    EXPECT_EQ(predicted["call_seconds"], json({{"least", 0.1}, {"most", 0.1}}));
    EXPECT_EQ(predicted["calls"], 3);
    EXPECT_DOUBLE_EQ(predicted["seconds"]["most"].get<double>(), 0.3);
    for (const json& step : predicted["steps"]) {
        if (step["name"] == "update_vrf") {
            EXPECT_EQ(step["calls"], 2);
            EXPECT_DOUBLE_EQ(step["seconds"]["least"].get<double>(), 0.2);
        }
    }
    EXPECT_EQ(predicted["steps"].size(), 11U);
}

TEST_F(RehearseJson, LogWithJsonLog_HasEachLineAsItWasWritten)
{
    const std::string body = "log(\"one \\n\"); log(\"two\"); log(\"\\x01\\xff\"); return 0;";
    EXPECT_EQ(run_body(body, {"--json-log"})["log"], json({"one \n", "two", "\x01\xEF\xBF\xBD"}));
    EXPECT_FALSE(run_body(body).contains("log"));
}

TEST_F(RehearseJson, Fault_IsListedWhenTheUpgradeWentOn)
{
    EXPECT_EQ(run_body("nzmw_gen_fault(1, \"f\", \"src/s\", 5, \"odd\"); return 0;", {}, 3)["faults"],
              json({{{"function", "f"}, {"source", "src/s"}, {"line", 5}, {"text", "odd"}}}));
}

TEST_F(RehearseJson, Check_IsToldWhenAskedFor)
{
    EXPECT_EQ(run_body("return 0;", {"--commit-check"})["check"], json({{"valid", true}, {"message", ""}}));
}

TEST_F(RehearseJson, Options_AreAmongTheInputs)
{
    const json document =
        run_body("return -1;", {"--fail-on", "review", "--severity", "returned=note", "--severity", "again=stop",
                                "--max-entries", "9", "--commit-check", "--time-limit", "90", "--memory-limit", "2G"});
    EXPECT_EQ(
        document["inputs"]["options"],
        json({{"fail_on", "review"},
              {"severities", {{{"id", "returned"}, {"severity", "note"}}, {{"id", "again"}, {"severity", "stop"}}}},
              {"max_entries", 9},
              {"commit_check", true},
              {"again", false},
              {"time_limit", 90.0},
              {"memory_limit", 2147483648}}));
    EXPECT_EQ(document["returned"], -1);
}

TEST_F(RehearseJson, Password_IsMasked)
{
    const std::string peer = R"("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{1 unknown \"\" 0 ipv4 c0:00:02:02 0 0}")";
    const std::string leaf = peer.substr(0, peer.size() - 1) + "/bgpPeerConfigPassword\"";
    const json document = run_body("maapi_create(maapi, th, " + peer + "); maapi_set_elem2(maapi, th, \"hush\", " +
                                   leaf + "); return 0;");
    EXPECT_EQ(document["changes"][0]["leaves"][0]["name"], "bgpPeerConfigPassword");
    EXPECT_EQ(document["changes"][0]["leaves"][0]["after"], "********");
}

// Each way that the command can end, with --json and with --json=FILE: the document tells the status and the message that
// it ends with.
class JsonEnding : public RehearseJson {
protected:
    void expect(int status, const std::string& error, const std::string& library, std::vector<std::string> more = {})
    {
        const CommandResult printed = run(library, more);
        expect_ending(status, error, printed, printed.out);
        const std::string file = folder / "report.json";
        more.insert(more.begin(), {"run", config, "--library", library, "--json=" + file});
        const CommandResult written = rehearse(more);
        expect_ending(status, error, written, content_of(file));
    }

    static void expect_ending(int status, const std::string& error, const CommandResult& result,
                              const std::string& document)
    {
        EXPECT_EQ(result.status, status) << result.err;
        const json told = json::parse(document);
        EXPECT_EQ(told["exit_status"], status);
        if (error.empty()) {
            EXPECT_EQ(told["error"], nullptr);
            EXPECT_EQ(result.err, "");
        } else {
            EXPECT_THAT(told["error"].get<std::string>(), HasSubstr(error));
            EXPECT_EQ(result.err, "bgp-rehearse: " + told["error"].get<std::string>() + "\n");
        }
    }
};

TEST_F(JsonEnding, Verdict_IsTheStatus)
{
    expect(0, "", fake_library(folder, "return 0;"));
    expect(3, "", fake_library(folder, "return 7;"));
    expect(0, "", fake_library(folder, "return 7;"), {"--fail-on", "never"});
}

TEST_F(JsonEnding, RefusedInput_IsTold)
{
    expect(2, "no-such-library", folder / "no-such-library.so");
    expect(2, "undefined symbol: update", BGP_FILE_ATTACK);
    expect(2, "no finding has the id", fake_library(folder, "return 0;"), {"--severity", "odd=stop"});
    expect(2, "the data model has no /odd", fake_library(folder, "return 0;"), {"--changes=/odd"});
    expect(2, "an entry beyond the 3 that are allowed", fake_library(folder, "return 0;"), {"--max-entries", "3"});
}

TEST_F(JsonEnding, RefusedConfiguration_IsToldWithItsSum)
{
    const std::string broken = folder.file("broken.xml", "<config");
    const CommandResult result = rehearse({"run", broken, "--json"});
    const json document = json::parse(result.out);
    expect_ending(2, "broken.xml:1", result, result.out);
    EXPECT_EQ(document["verdict"], nullptr);
    EXPECT_EQ(document["account"], nullptr);
    // printf '<config' | sha256sum
    EXPECT_EQ(document["inputs"]["configuration"]["sha256"],
              "dfc4267da831952accbcb7cfd5c747a405aef3556ecb50fdf209ac248f234f20");
}

TEST_F(JsonEnding, UpgradeThatEnds_IsTold)
{
    expect(1, "the upgrade ended in an exit with status 7", fake_library(folder, "exit(7);"));
    const json document = json::parse(run(fake_library(folder, "exit(7);")).out);
    EXPECT_EQ(document["verdict"], "STOP");
    EXPECT_EQ(document["findings"][0]["id"], "ended");
    EXPECT_EQ(document["returned"], nullptr);
    EXPECT_EQ(document["account"], nullptr);
}

TEST_F(JsonEnding, ResultThatIsNotValid_IsTold)
{
    // A control character has no place in XML.
    const std::string library =
        fake_library(folder, R"(return maapi_create(maapi, th, "/prefix-list{%s}", "a\001b");)");
    expect(4, "the result is not valid: ", library, {"--commit-check"});
    expect(5, "could not be written: ", library, {"-o", folder / "out.xml"});
}

TEST_F(JsonEnding, OutputThatCannotBePutInPlace_IsToldThoughTheDocumentWasThere)
{
    // The folder of the output goes away while the upgrade runs.
    std::filesystem::create_directory(folder / "gone");
    const std::string library =
        fake_library(folder, "return std::system(\"rm -r '" + (folder / "gone") + "'\") == 0 ? 0 : 1;");
    for (int again = 0; again < 2; ++again) {
        std::filesystem::create_directory(folder / "gone");
        const std::string file = folder / "report.json";
        const std::vector<std::string> options = {"-o", folder / "gone/out.xml"};
        const CommandResult result =
            again == 0 ? run(library, options)
                       : rehearse({"run", config, "--library", library, "-o", options[1], "--json=" + file});
        const std::string document = again == 0 ? result.out : content_of(file);
        expect_ending(5, "gone/out.xml", result, document);
        EXPECT_EQ(json::parse(document)["verdict"], "SAFE") << "what was found stays";
        EXPECT_EQ(json::parse(document)["returned"], 0);
    }
}

TEST_F(JsonEnding, StandardOutputThatIsFull_IsInTheFile)
{
    const std::string file = folder / "report.json";
    const CommandResult result =
        run_command({"/bin/sh", "-c", "exec \"$0\" \"$@\" >/dev/full", BGP_REHEARSE, "run", config, "--library",
                     fake_library(folder, "return 0;"), "--json=" + file});
    expect_ending(5, "standard output", result, content_of(file));
}

}  // namespace
}  // namespace bgp_test
