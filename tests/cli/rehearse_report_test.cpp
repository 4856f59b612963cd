// The report of an upgrade that returns, as text.
#include <gmock/gmock.h>

#include <filesystem>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

class RehearseReport : public RehearseTest {
protected:
    CommandResult run_body(const std::string& body, std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments = {"run", config, "--library", fake_library(folder, body)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return rehearse(arguments);
    }

    // The listed changes, without what comes behind them.
    std::string changes(const std::string& body, const std::string& option = "--changes")
    {
        const CommandResult result = run_body(body, {option});
        EXPECT_NE(result.status, 2) << result.err;
        const std::size_t start = std::min(result.out.find("Changes"), result.out.size());
        return result.out.substr(start, result.out.find("Verdict: ", start) - start);
    }
};

// A list of rows that each say which step wrote them.
constexpr char kSteps[] = R"(
    log("Update BGP VRF\n");
    maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
    maapi_set_elem2(maapi, th, "192.0.2.7", "/router/bgp{%u}/router-id", 65020u);
    log("Finishing VRF update\n");
    log("Update BGP VRF IPv6\n");
    maapi_set_elem2(maapi, th, "up", "/router/bgp{%u}/administrative-status", 65020u);
    maapi_set_elem2(maapi, th, "up", "/router/bgp{%u}/administrative-status", 65010u);
    maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65010u);
    maapi_delete(maapi, th, "/prefix-list{%s}", "b");
    log("Finishing VRF IPv6 update\n");
    return 0;)";

TEST_F(RehearseReport, UpgradeThatDoesNothing_IsASummary)
{
    const std::string report = run_body("return 0;").out;
    EXPECT_THAT(report, StartsWith("Rehearsal of " + config + ", " + (folder / "libfake.so") + "\n"));
    EXPECT_THAT(report, HasSubstr("\n  rows       4 stored: 4 as they were, 0 removed; 0 new\n"
                                  "  device     0 calls: 0 s (round trips of 50 us to 1 ms; --call-time)\n"
                                  "Steps: the log tells of none\n"
                                  "Findings\n"
                                  "  note    "));
    EXPECT_THAT(report, EndsWith("\nVerdict: SAFE. Nothing is lost, and nothing needs a look.\n"));
}

TEST_F(RehearseReport, NoFindings_AreToldAsNone)
{
    const std::string empty = folder.file("empty.xml", "<config xmlns=\"http://tail-f.com/ns/config/1.0\"/>");
    EXPECT_THAT(rehearse({"run", empty, "--library", fake_library(folder, "return 0;")}).out,
                HasSubstr("\nFindings: none\nVerdict: SAFE. "));
}

TEST_F(RehearseReport, LibraryWithAVersion_IsToldByIt)
{
    const std::string library = fake_library(folder, "return 0;");
    std::filesystem::rename(library, library + ".7.1");
    std::filesystem::create_symlink(library + ".7.1", library);
    EXPECT_THAT(rehearse({"run", config, "--library", library}).out,
                StartsWith("Rehearsal of " + config + ", libfake 7.1\n"));
}

TEST_F(RehearseReport, Rows_AreCountedByTheirFates)
{
    EXPECT_THAT(run_body(R"(
        confd_value_t key;
        CONFD_SET_UINT32(&key, 65020);
        maapi_move(maapi, th, &key, 1, "/router/bgp{%u}", 65010u);
        maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65020u);
        CONFD_SET_UINT32(&key, 20);
        maapi_move(maapi, th, &key, 1, "/prefix-list{%s}/seq{%u}", "a", 10u);
        maapi_delete(maapi, th, "/prefix-list{%s}", "b");
        maapi_create(maapi, th, "/prefix-list{%s}", "c");
        maapi_create(maapi, th, "/prefix-list{%s}", "d");
        return 0;)")
                    .out,
                HasSubstr("\n  rows       4 stored: 1 moved, 1 moved and changed, 1 as they were, 1 removed; 2 new"
                          "   (--changes)\n"));
}

TEST_F(RehearseReport, CallTime_IsTakenForEachCallThatAsksTheDevice)
{
    const std::string body = R"(
        log("Update BGP VRF\n");
        for (int i = 0; i < 150; ++i) cdb_exists(cdb, "/router/bgp{%u}", 65010u);
        log("Finishing VRF update\n");
        cdb_set_namespace(cdb, 0);
        for (int i = 0; i < 50; ++i) maapi_create(maapi, th, "/router/bgp{%u}", 1u);
        const int own = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(CONFD_PORT);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        cdb_connect(own, CDB_READ_SOCKET, reinterpret_cast<sockaddr*>(&address), sizeof address);
        cdb_start_session(own, CDB_RUNNING);
        cdb_end_session(own);
        cdb_close(own);
        return 0;)";
    EXPECT_THAT(run_body(body).out, HasSubstr("\n  device     202 calls, 1 connection: 10 ms to 0.2 s "
                                              "(round trips of 50 us to 1 ms; --call-time)\n"));
    const std::string told = run_body(body, {"--call-time", "10ms", "--connect-time", "1s"}).out;
    EXPECT_THAT(told, HasSubstr("\n  device     202 calls, 1 connection: 3 s (round trips of 10 ms)\n"));
    EXPECT_THAT(told, HasSubstr("150        0  VRF instances: ran"));
    EXPECT_THAT(told, HasSubstr("1.5 s\n"));
}

TEST_F(RehearseReport, Changes_AreListedOnlyWhenAskedFor)
{
    const std::string body = "return maapi_create(maapi, th, \"/router/bgp{%u}\", 65020u);";
    EXPECT_THAT(run_body(body).out, Not(HasSubstr("{65020}")));
    EXPECT_THAT(run_body(body, {"--changes"}).out, HasSubstr("\nChanges\n  /router/bgp\n    + {65020}\n"));
    EXPECT_EQ(changes("return 0;"), "Changes\n  none\n");
}

TEST_F(RehearseReport, NewRow_ShowsAllItHolds)
{
    EXPECT_EQ(changes(R"(
        maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
        maapi_set_elem2(maapi, th, "192.0.2.7", "/router/bgp{%u}/router-id", 65020u);
        maapi_set_elem2(maapi, th, "110", "/router/bgp{%u}/bgp/default-local-preference", 65020u);
        maapi_create(maapi, th, "/router/bgp{%u}/vrf{%s}", 65020u, "red one");
        maapi_set_elem2(maapi, th, "up", "/router/bgp{%u}/vrf{%s}/administrative-status", 65020u, "red one");
        maapi_create(maapi, th, "/router/bgp{%u}/vrf{%s}", 65010u, "blue");
        return 0;)"),
              "Changes\n"
              "  /router/bgp{65010}/vrf\n"
              "    + {blue}\n"
              "  /router/bgp\n"
              "    + {65020}\n"
              "        router-id                     192.0.2.7\n"
              "        bgp/default-local-preference  110\n"
              "        + vrf {\"red one\"}\n"
              "            administrative-status         up\n");
}

TEST_F(RehearseReport, RemovedRow_IsOneLineAndSoAreThoseBelowIt)
{
    EXPECT_EQ(changes("return maapi_delete(maapi, th, \"/prefix-list{%s}\", \"a\");"),
              "Changes\n"
              "  /prefix-list\n"
              "    - {a}\n"
              "        - seq {10}\n");
}

TEST_F(RehearseReport, ChangedLeaves_ShowBothValues)
{
    EXPECT_EQ(changes(R"(
        maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65010u);
        maapi_set_elem2(maapi, th, "up", "/router/bgp{%u}/administrative-status", 65010u);
        maapi_delete(maapi, th, "/prefix-list{%s}/seq{%u}/action", "a", 10u);
        return 0;)"),
              "Changes\n"
              "  /prefix-list{a}/seq\n"
              "    ~ {10}\n"
              "        action                        permit -> (not set)\n"
              "  /router/bgp\n"
              "    ~ {65010}\n"
              "        router-id                     192.0.2.1 -> 192.0.2.9\n"
              "        administrative-status         (not set) -> up\n");
}

TEST_F(RehearseReport, LeafOutsideAnyList_StandsUnderTheRoot)
{
    EXPECT_EQ(changes("return maapi_set_elem2(maapi, th, \"4\", \"/prefix-list-internal/name-next-index\");"),
              "Changes\n"
              "  /\n"
              "    prefix-list-internal/name-next-index  (not set) -> 4\n");
}

TEST_F(RehearseReport, MovedRow_IsOneLineWithBothKeys)
{
    EXPECT_EQ(changes(R"(
        confd_value_t key;
        CONFD_SET_UINT32(&key, 65020);
        return maapi_move(maapi, th, &key, 1, "/router/bgp{%u}", 65010u);)"),
              "Changes\n"
              "  /router/bgp\n"
              "    ~ {65010} -> {65020}\n");
}

TEST_F(RehearseReport, RowThatMovedAndChanged_IsOneRow)
{
    EXPECT_EQ(changes(R"(
        confd_value_t key;
        CONFD_SET_UINT32(&key, 65020);
        maapi_move(maapi, th, &key, 1, "/router/bgp{%u}", 65010u);
        return maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65020u);)"),
              "Changes\n"
              "  /router/bgp\n"
              "    ~ {65010} -> {65020}\n"
              "        router-id                     192.0.2.1 -> 192.0.2.9\n");
}

TEST_F(RehearseReport, RowRemovedAndMadeAnew_IsNoMove)
{
    EXPECT_EQ(changes(R"(
        maapi_delete(maapi, th, "/router/bgp{%u}", 65010u);
        maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
        return maapi_set_elem2(maapi, th, "192.0.2.1", "/router/bgp{%u}/router-id", 65020u);)"),
              "Changes\n"
              "  /router/bgp\n"
              "    - {65010}\n"
              "    + {65020}\n"
              "        router-id                     192.0.2.1\n");
}

TEST_F(RehearseReport, Step_StandsByTheRowAndByTheLeavesOfOthers)
{
    EXPECT_THAT(changes(kSteps), MatchesRegex("Changes\n"
                                              "  /prefix-list\n"
                                              "    - \\{b\\} +update_vrf_ipv6\n"
                                              "  /router/bgp\n"
                                              "    ~ \\{65010\\} +update_vrf_ipv6\n"
                                              "        router-id +192.0.2.1 -> 192.0.2.9\n"
                                              "        administrative-status +.not set. -> up\n"
                                              "    . \\{65020\\} +update_vrf\n"
                                              "        router-id +192.0.2.7\n"
                                              "        administrative-status +up +update_vrf_ipv6\n"));
}

TEST_F(RehearseReport, ChangesBelowAPath_AreThoseOfItsRowsAndLeaves)
{
    EXPECT_THAT(changes(kSteps, "--changes=/prefix-list"), MatchesRegex("Changes below /prefix-list\n"
                                                                        "  /prefix-list\n"
                                                                        "    - \\{b\\} +update_vrf_ipv6\n"));
    EXPECT_THAT(changes(kSteps, "--changes=/router/bgp{65010}"), Not(HasSubstr("65020")));
    const std::string leaf = changes(kSteps, "--changes=/router/bgp{65010}/router-id");
    EXPECT_THAT(leaf, HasSubstr("192.0.2.1 -> 192.0.2.9"));
    EXPECT_THAT(leaf, Not(HasSubstr("administrative-status")));
    EXPECT_EQ(changes(kSteps, "--changes=/router/bgp{6501}"), "Changes below /router/bgp{6501}\n  none\n");
}

TEST_F(RehearseReport, ChangesBelowAPath_AreThoseOfARowThatMovedAway)
{
    const std::string body = R"(
        confd_value_t key;
        CONFD_SET_UINT32(&key, 65020);
        maapi_move(maapi, th, &key, 1, "/router/bgp{%u}", 65010u);
        return maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65020u);)";
    for (const char* path : {"/router/bgp{65010}", "/router/bgp{65020}", "/router/bgp{65010}/router-id", "/router/"}) {
        EXPECT_THAT(changes(body, std::string("--changes=") + path),
                    HasSubstr("    ~ {65010} -> {65020}\n        router-id                     192.0.2.1 -> "))
            << path;
    }
}

TEST_F(RehearseReport, ChangesBelowAPathThatIsNone_AreRefused)
{
    for (const auto& [path, why] : std::vector<std::pair<std::string, std::string>>{
             {"/ruter", "the data model has no /ruter; did you mean router?"},
             {"/router/bgp{1}/vfr", "the data model has no /router/bgp{1}/vfr; did you mean vrf?"},
             {"/router/bgp{1", "the keypath ends within braces"},
             {"router", "a keypath begins with \"/\""}}) {
        const CommandResult result = rehearse({"run", config, "--changes=" + path});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, "bgp-rehearse: --changes: " + why + "\n");
    }
}

TEST_F(RehearseReport, Findings_AreToldBeforeTheVerdictWithTheirPlaces)
{
    const CommandResult result = run_body(
        "for (unsigned i = 1; i <= 7; ++i) maapi_set_elem2(maapi, th, \"up\", "
        "\"/router/bgp{%u}/administrative-status\", i); return 7;");
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.out, HasSubstr("\nFindings\n  STOP    "));
    EXPECT_THAT(result.out, HasSubstr("\n  REVIEW  "));
    EXPECT_THAT(result.out, HasSubstr("/router/bgp{3}/administrative-status"));
    EXPECT_THAT(result.out, Not(HasSubstr("/router/bgp{4}/administrative-status")));
    EXPECT_THAT(result.out, HasSubstr(", and 4 more\n"));
    EXPECT_THAT(result.out.substr(result.out.rfind('\n', result.out.size() - 2)), StartsWith("\nVerdict: STOP. "));
}

TEST_F(RehearseReport, OnePlaceMoreThanAreShown_IsShownToo)
{
    const CommandResult result = run_body(
        "for (unsigned i = 1; i <= 4; ++i) maapi_set_elem2(maapi, th, \"up\", "
        "\"/router/bgp{%u}/administrative-status\", i); return 0;");
    EXPECT_THAT(result.out, HasSubstr("/router/bgp{4}/administrative-status"));
    EXPECT_THAT(result.out, Not(HasSubstr("and 1 more")));
}

TEST_F(RehearseReport, Lines_AreWrappedAtWordsOnATerminalAlone)
{
    const std::string body = "return 0;";
    const std::string library = fake_library(folder, body);
    const std::vector<std::string> run = {BGP_REHEARSE, "run", config, "--library", library};
    const std::string wide = RunningCommand(run, {"COLUMNS=200"}, RunningCommand::Out::Terminal).wait().out;
    EXPECT_THAT(wide, HasSubstr("\r\n  device     0 calls: 0 s (round trips of 50 us to 1 ms; --call-time)\r\n"));
    const std::string narrow = RunningCommand(run, {"COLUMNS=40"}, RunningCommand::Out::Terminal).wait().out;
    EXPECT_THAT(narrow, HasSubstr("\r\n  device     0 calls: 0 s (round trips\r\n             of 50 us to 1 ms;\r\n"
                                  "             --call-time)\r\n"));
    EXPECT_THAT(run_body(body).out, HasSubstr("(round trips of 50 us to 1 ms; --call-time)\n"));
}

TEST_F(RehearseReport, Passwords_AreMaskedButCompared)
{
    const std::string peer = R"("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{%u unknown \"\" 0 ipv4 c0:00:02:02 0 0}")";
    const std::string leaf =
        R"("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{%u unknown \"\" 0 ipv4 c0:00:02:02 0 0}/bgpPeerConfigPassword")";
    const CommandResult result = run_body(
        "maapi_create(maapi, th, " + peer + ", 1u); maapi_set_elem2(maapi, th, \"hush\", " + leaf + ", 1u); return 0;",
        {"--changes"});
    EXPECT_THAT(result.out, HasSubstr("bgpPeerConfigPassword         ********\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("hush")));
}

TEST_F(RehearseReport, FailedWritesWithFailOnReview_ExitWithThreeAndAreWritten)
{
    const std::string body = "maapi_create(maapi, th, \"/router/bgp{%u}\", 65010u); return 0;";
    const CommandResult result = run_body(body, {"--fail-on", "review", "-o", folder / "out.xml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.out, HasSubstr("Verdict: REVIEW. "));
    EXPECT_THAT(content_of(folder / "out.xml"), HasSubstr("65010"));
    EXPECT_EQ(run_body("return 0;", {"--fail-on", "review"}).status, 0);
    EXPECT_EQ(run_body("return -1;", {"--fail-on", "review"}).status, 3);
}

TEST_F(RehearseReport, Log_ComesBeforeTheVerdictWhenAskedFor)
{
    const CommandResult result = run_body("log(\"one \\n\"); log(\"\\033[1mtwo\"); return 0;", {"--log", "-"});
    EXPECT_THAT(result.out, HasSubstr("\nLog\n  one \n  \\x1b[1mtwo\nVerdict: SAFE."));
    EXPECT_THAT(run_body("log(\"one\"); return 0;").out, Not(HasSubstr("\nLog")));
}

TEST_F(RehearseReport, TextThatATerminalWouldActOn_IsEscaped)
{
    EXPECT_THAT(changes("return maapi_create(maapi, th, \"/prefix-list{%s}\", "
                        "\"a\\033b\\xc2\\x9b\\xe2\\x80\\xae\\xff\\xc3\\xa9\");"),
                HasSubstr("    + {a\\x1bb\\u{009b}\\u{202e}\\xff\xc3\xa9}\n"));
}

TEST_F(RehearseReport, OutputOfTheLibrary_StaysOutOfTheReport)
{
    const CommandResult result = run_body("write(1, \"noise\\n\", 6); return 0;");
    EXPECT_THAT(result.out, StartsWith("Rehearsal of"));
    EXPECT_THAT(result.out, Not(HasSubstr("noise")));
    EXPECT_EQ(result.err, "noise\n");
}

TEST_F(RehearseReport, OutputInAPipe_HasNoColour)
{
    const std::string library = fake_library(folder, "return maapi_create(maapi, th, \"/router/bgp{%u}\", 1u);");
    const CommandResult result = rehearse({"run", config, "--library", library, "--changes"}, {"TERM=xterm"});
    EXPECT_THAT(result.out, HasSubstr("+ {1}"));
    EXPECT_THAT(result.out, Not(HasSubstr("\033")));
}

TEST_F(RehearseReport, OutputOnATerminal_HasColourUnlessRefused)
{
    const std::string library = fake_library(folder, "return maapi_create(maapi, th, \"/router/bgp{%u}\", 1u);");
    const auto on_terminal = [&](std::vector<std::string> environment) {
        return RunningCommand({BGP_REHEARSE, "run", config, "--library", library, "--changes"}, std::move(environment),
                              RunningCommand::Out::Terminal)
            .wait()
            .out;
    };
    EXPECT_THAT(on_terminal({"TERM=xterm"}), HasSubstr("\033[32m+ \033[0m\033[32m{1}\033[0m"));
    EXPECT_THAT(on_terminal({"TERM=xterm", "NO_COLOR="}), HasSubstr("\033[32m+ \033[0m\033[32m{1}\033[0m"));
    for (const std::vector<std::string>& refusal :
         {std::vector<std::string>{"TERM=xterm", "NO_COLOR=1"}, {"TERM=dumb"}, {}}) {
        EXPECT_THAT(on_terminal(refusal), HasSubstr("    + {1}\r\n"));
        EXPECT_THAT(on_terminal(refusal), Not(HasSubstr("\033")));
    }
}

TEST_F(RehearseReport, Profile_ReachesTheLibrary)
{
    const std::string body = R"(
        log("profile %u", [] { FwdTableUserData_s record{}; FwdResources().get_user_profile(&record); return record.profile; }());
        return 0;)";
    EXPECT_THAT(run_body(body, {"--log", "-"}).out, HasSubstr("profile 0\n"));
    EXPECT_THAT(run_body(body, {"--log", "-", "--user-profile", "5"}).out, HasSubstr("profile 5\n"));
}

TEST_F(RehearseReport, Interfaces_AreTheLoopbackOrThoseGiven)
{
    const std::string body = R"(
        ifaddrs* all = nullptr;
        getifaddrs(&all);
        for (ifaddrs* each = all; each != nullptr; each = each->ifa_next) {
            if (each->ifa_addr != nullptr && each->ifa_addr->sa_family == AF_INET) {
                log("address %s", inet_ntoa(reinterpret_cast<sockaddr_in*>(each->ifa_addr)->sin_addr));
            }
        }
        freeifaddrs(all);
        return 0;)";
    EXPECT_THAT(run_body(body, {"--log", "-"}).out, HasSubstr("\nLog\n  address 127.0.0.1\nVerdict: "));
    EXPECT_THAT(run_body(body, {"--log", "-", "--interfaces", "192.0.2.9,10.0.0.1"}).out,
                HasSubstr("\nLog\n  address 192.0.2.9\n  address 10.0.0.1\nVerdict: "));
}

}  // namespace
}  // namespace bgp_test
