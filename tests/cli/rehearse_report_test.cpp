// The report of an upgrade that returns, as text.
#include <gmock/gmock.h>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
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

    // The part of the report that tells the changes.
    std::string changes(const std::string& body)
    {
        const CommandResult result = run_body(body);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return result.out.substr(std::min(result.out.find("Changes"), result.out.size()));
    }
};

TEST_F(RehearseReport, UpgradeThatDoesNothing_IsASummary)
{
    EXPECT_EQ(run_body("return 0;").out, "Rehearsal of " + config + "\n" +                      //
                                             "  library   " + (folder / "libfake.so") + "\n" +  //
                                             "  loaded    4 entries, 7 values\n" +              //
                                             "  update    returned 0: 0 log lines, 0 reads, 0 writes (0 failed)\n" +
                                             "Steps: the log tells of none\n" + "Changes: none\n");
}

TEST_F(RehearseReport, Calls_AreCounted)
{
    EXPECT_THAT(run_body(R"(
        log("one"); log("two\n");
        cdb_exists(cdb, "/router/bgp{%u}", 65010u);
        cdb_num_instances(cdb, "/prefix-list");
        maapi_exists(maapi, th, "/router/bgp{%u}", 1u);
        maapi_create(maapi, th, "/router/bgp{%u}", 1u);
        return 7;)")
                    .out,
                HasSubstr("returned 7: 2 log lines, 3 reads, 1 write (0 failed)\n"));
}

TEST_F(RehearseReport, CreatedEntry_ShowsAllItHolds)
{
    EXPECT_EQ(changes(R"(
        maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
        maapi_set_elem2(maapi, th, "192.0.2.7", "/router/bgp{%u}/router-id", 65020u);
        maapi_set_elem2(maapi, th, "110", "/router/bgp{%u}/bgp/default-local-preference", 65020u);
        maapi_create(maapi, th, "/router/bgp{%u}/vrf{%s}", 65020u, "red one");
        maapi_set_elem2(maapi, th, "up", "/router/bgp{%u}/vrf{%s}/administrative-status", 65020u, "red one");
        return 0;)"),
              "Changes: 2 entries created, 0 deleted, 3 leaves set\n"
              "  /router/bgp\n"
              "    + {65020}\n"
              "        router-id                     192.0.2.7\n"
              "        bgp/default-local-preference  110\n"
              "        vrf {\"red one\"}\n"
              "            administrative-status         up\n");
}

TEST_F(RehearseReport, DeletedEntry_IsOneLine)
{
    EXPECT_EQ(changes("return maapi_delete(maapi, th, \"/prefix-list{%s}\", \"a\");"),
              "Changes: 0 entries created, 2 deleted, 0 leaves set\n"
              "  /prefix-list\n"
              "    - {a}\n");
}

TEST_F(RehearseReport, ChangedLeaves_ShowBothValues)
{
    EXPECT_EQ(changes(R"(
        maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65010u);
        maapi_set_elem2(maapi, th, "up", "/router/bgp{%u}/administrative-status", 65010u);
        maapi_delete(maapi, th, "/prefix-list{%s}/seq{%u}/action", "a", 10u);
        return 0;)"),
              "Changes: 0 entries created, 0 deleted, 2 leaves set, 1 removed\n"
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
              "Changes: 0 entries created, 0 deleted, 1 leaf set\n"
              "  /\n"
              "    prefix-list-internal/name-next-index  (not set) -> 4\n");
}

TEST_F(RehearseReport, MovedEntry_IsOneLineWithBothKeys)
{
    EXPECT_EQ(changes(R"(
        confd_value_t key;
        CONFD_SET_UINT32(&key, 65020);
        return maapi_move(maapi, th, &key, 1, "/router/bgp{%u}", 65010u);)"),
              "Changes: 0 entries created, 0 deleted, 1 moved, 0 leaves set\n"
              "  /router/bgp\n"
              "    ~ {65010} -> {65020}\n");
}

TEST_F(RehearseReport, EntryThatMovedAndChanged_IsDeletedAndCreated)
{
    EXPECT_EQ(changes(R"(
        confd_value_t key;
        CONFD_SET_UINT32(&key, 65020);
        maapi_move(maapi, th, &key, 1, "/router/bgp{%u}", 65010u);
        return maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65020u);)"),
              "Changes: 1 entry created, 1 deleted, 1 leaf set\n"
              "  /router/bgp\n"
              "    - {65010}\n"
              "    + {65020}\n"
              "        router-id                     192.0.2.9\n");
}

TEST_F(RehearseReport, EmptyEntries_AreNotTakenForMoved)
{
    EXPECT_EQ(changes(R"(
        maapi_delete(maapi, th, "/prefix-list{%s}", "b");
        return maapi_create(maapi, th, "/prefix-list{%s}", "c");)"),
              "Changes: 1 entry created, 1 deleted, 0 leaves set\n"
              "  /prefix-list\n"
              "    - {b}\n"
              "    + {c}\n");
}

TEST_F(RehearseReport, MoveWithTwoCandidates_IsNotGuessed)
{
    EXPECT_EQ(changes(R"(
        maapi_delete(maapi, th, "/router/bgp{%u}", 65010u);
        for (unsigned as = 65020; as <= 65021; ++as) {
            maapi_create(maapi, th, "/router/bgp{%u}", as);
            maapi_set_elem2(maapi, th, "192.0.2.1", "/router/bgp{%u}/router-id", as);
        }
        return 0;)"),
              "Changes: 2 entries created, 1 deleted, 2 leaves set\n"
              "  /router/bgp\n"
              "    - {65010}\n"
              "    + {65020}\n"
              "        router-id                     192.0.2.1\n"
              "    + {65021}\n"
              "        router-id                     192.0.2.1\n");
}

TEST_F(RehearseReport, Passwords_AreMaskedButCompared)
{
    const std::string peer = R"("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{%u unknown \"\" 0 ipv4 c0:00:02:02 0 0}")";
    const std::string leaf =
        R"("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{%u unknown \"\" 0 ipv4 c0:00:02:02 0 0}/bgpPeerConfigPassword")";
    const CommandResult result = run_body("maapi_create(maapi, th, " + peer +
                                          ", 1u); maapi_set_elem2(maapi, th, \"hush\", " + leaf + ", 1u); return 0;");
    EXPECT_THAT(result.out, HasSubstr("bgpPeerConfigPassword         ********\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("hush")));
}

TEST_F(RehearseReport, FailedWrites_AreCountedAndTheFirstShown)
{
    const CommandResult result = run_body(
        "for (unsigned i = 1; i <= 7; ++i) maapi_set_elem2(maapi, th, \"up\", "
        "\"/router/bgp{%u}/administrative-status\", i); return 0;");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("7 writes (7 failed)\n  failed    maapi_set_elem2: "));
    EXPECT_THAT(result.out, HasSubstr("/router/bgp{5}/administrative-status"));
    EXPECT_THAT(result.out, Not(HasSubstr("/router/bgp{6}/administrative-status")));
    EXPECT_THAT(result.out, HasSubstr("\n            and 2 more\n"));
}

TEST_F(RehearseReport, FailedWritesWithStrict_ExitWithThreeAndAreWritten)
{
    const std::string body = "maapi_create(maapi, th, \"/router/bgp{%u}\", 65010u); return 0;";
    const CommandResult result = run_body(body, {"--fail-on", "review", "-o", folder / "out.xml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.out, HasSubstr("1 write (1 failed)"));
    EXPECT_THAT(content_of(folder / "out.xml"), HasSubstr("65010"));
    EXPECT_EQ(run_body("return 0;", {"--fail-on", "review"}).status, 0);
    EXPECT_EQ(run_body("return -1;", {"--fail-on", "review"}).status, 3);
}

TEST_F(RehearseReport, Log_ComesLastWhenAskedFor)
{
    const CommandResult result = run_body("log(\"one \\n\"); log(\"\\033[1mtwo\"); return 0;", {"--log", "-"});
    EXPECT_THAT(result.out, EndsWith("Changes: none\nLog:\n  one \n  \\x1b[1mtwo\n"));
    EXPECT_THAT(run_body("log(\"one\"); return 0;").out, EndsWith("Changes: none\n"));
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
    const CommandResult result = rehearse({"run", config, "--library", library}, {"TERM=xterm"});
    EXPECT_THAT(result.out, HasSubstr("+ {1}"));
    EXPECT_THAT(result.out, Not(HasSubstr("\033")));
}

TEST_F(RehearseReport, OutputOnATerminal_HasColourUnlessRefused)
{
    const std::string library = fake_library(folder, "return maapi_create(maapi, th, \"/router/bgp{%u}\", 1u);");
    const auto on_terminal = [&](std::vector<std::string> environment) {
        return RunningCommand({BGP_REHEARSE, "run", config, "--library", library}, std::move(environment),
                              RunningCommand::Out::Terminal)
            .wait()
            .out;
    };
    EXPECT_THAT(on_terminal({"TERM=xterm"}), HasSubstr("\033[32m+ {1}\033[0m"));
    EXPECT_THAT(on_terminal({"TERM=xterm", "NO_COLOR="}), HasSubstr("\033[32m+ {1}\033[0m"));
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
    EXPECT_THAT(run_body(body, {"--log", "-"}).out, EndsWith("Log:\n  address 127.0.0.1\n"));
    EXPECT_THAT(run_body(body, {"--log", "-", "--interfaces", "192.0.2.9,10.0.0.1"}).out,
                EndsWith("Log:\n  address 192.0.2.9\n  address 10.0.0.1\n"));
}

}  // namespace
}  // namespace bgp_test
