// Upgrades that do not return: each way of ending is told, ends only the rehearsal, leaves no output, and keeps the
// log.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "cli/ended_upgrade.h"

namespace bgp_test {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

using RehearseEnded = EndedUpgradeTest;

constexpr char kFault[] = R"(
    log("before");
    nzmw_gen_fault(1, "CreateThing", "src/daemon/things", 42, "No thing");
    exit(1);)";

TEST_F(RehearseEnded, Fault_IsToldWithItsPlace)
{
    const CommandResult result = run_body(kFault);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("did not return: fault\n"
                                      "             function  CreateThing\n"
                                      "             source    src/daemon/things:42\n"
                                      "             text      No thing\n"
                                      "             step      update\n"
                                      "             calls     0 reads, 0 writes (0 failed)\n"
                                      "             log       before\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("Changes")));
    EXPECT_EQ(result.err,
              "bgp-rehearse: the upgrade ended in a fault in CreateThing (src/daemon/things:42): No thing; " +
                  (folder / "out.xml") + " is not written\n");
}

TEST_F(RehearseEnded, FaultInJson_HasAllMembers)
{
    EXPECT_EQ(ended(kFault), json({{"kind", "fault"},
                                   {"function", "CreateThing"},
                                   {"source", "src/daemon/things"},
                                   {"line", 42},
                                   {"text", "No thing"},
                                   {"signal", 0},
                                   {"status", 1},
                                   {"last",
                                    {{"step", "update"},
                                     {"reading", nullptr},
                                     {"writing", nullptr},
                                     {"function", nullptr},
                                     {"under_way", false},
                                     {"reads", 0},
                                     {"writes", 0},
                                     {"failed_writes", 0},
                                     {"log", {"before"}}}}}));
}

TEST_F(RehearseEnded, Assertion_IsToldWithItsExpression)
{
    const json assertion = ended("assert(1 + 1 == 3); return 0;");
    EXPECT_EQ(assertion["kind"], "assertion");
    EXPECT_EQ(assertion["text"], "1 + 1 == 3");
    EXPECT_EQ(assertion["function"], "int update(int, int, int)");
    EXPECT_EQ(assertion["source"], folder / "fake_library.cpp");
    EXPECT_EQ(assertion["signal"], SIGABRT);
}

TEST_F(RehearseEnded, Signal_IsToldByName)
{
    constexpr char kCrash[] = "signal(SIGSEGV, SIG_DFL); raise(SIGSEGV); return 0;";
    const CommandResult result = run_body(kCrash);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("did not return: SIGSEGV"));
    EXPECT_EQ(ended(kCrash)["signal"], SIGSEGV);
}

TEST_F(RehearseEnded, Kill_LeavesTheOldFile)
{
    EXPECT_EQ(ended("kill(getpid(), SIGKILL); return 0;")["signal"], SIGKILL);
}

TEST_F(RehearseEnded, Exit_IsToldEvenWithStatusZero)
{
    const json exited = ended("exit(0);");
    EXPECT_EQ(exited["kind"], "exit");
    EXPECT_EQ(exited["status"], 0);
    EXPECT_THAT(run_body("exit(7);").out, HasSubstr("did not return: an exit with status 7"));
}

TEST_F(RehearseEnded, Exception_IsToldWithItsText)
{
    const json thrown = ended("throw std::runtime_error(\"out of things\");");
    EXPECT_EQ(thrown["kind"], "exception");
    EXPECT_EQ(thrown["text"], "out of things");
    EXPECT_EQ(ended("throw 5;")["kind"], "exception");
}

TEST_F(RehearseEnded, LogFile_HoldsEveryLineUpToTheEnd)
{
    const std::string log = folder / "upgrade.log";
    const CommandResult result =
        run_body("log(\"one\\n\"); log(\"two\"); kill(getpid(), SIGKILL); return 0;", {"--log", log});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(content_of(log), "one\ntwo\n");
}

TEST_F(RehearseEnded, LogInReport_HoldsEveryLineUpToTheEnd)
{
    EXPECT_THAT(run_body(kFault, {"--log", "-"}).out, HasSubstr("Log\n  before\n"));
}

TEST_F(RehearseEnded, LogInJson_HoldsEveryLineUpToTheEnd)
{
    EXPECT_EQ(json::parse(run_body(kFault, {"--json", "--json-log"}).out)["log"], json({"before"}));
}

TEST_F(RehearseEnded, ControlCharactersInAFault_AreEscaped)
{
    const CommandResult result = run_body("nzmw_gen_fault(1, \"f\", \"s\", 1, \"red \\033[31m\\nnext\"); exit(1);");
    EXPECT_THAT(result.out, HasSubstr("red \\x1b[31m\\nnext"));
    EXPECT_THAT(result.err, HasSubstr("red \\x1b[31m\\nnext"));
}

TEST_F(RehearseEnded, ProcessLeftBehind_DoesNotHoldUpTheReport)
{
    EXPECT_EQ(ended("if (fork() == 0) { for (;;) pause(); } _exit(9);")["status"], 9);
}

TEST_F(RehearseEnded, AnyWay_NamesTheRowsThatWereWorkedOnLast)
{
    const std::string library = fake_library(folder, std::string(kWorking) + R"(
        switch (*getenv("END_BY")) {
            case 'f': nzmw_gen_fault(1, "F", "src/f", 1, "odd"); exit(1);
            case 'a': assert(1 + 1 == 3); return 0;
            case 's': signal(SIGSEGV, SIG_DFL); raise(SIGSEGV); return 0;
            case 'k': kill(getpid(), SIGKILL); return 0;
            case 'e': _exit(0);
            default: throw 5;
        })");
    for (const char* end : {"fault", "assertion", "signal", "kill", "exit", "throw"}) {
        const CommandResult result = rehearse({"run", config, "--library", library}, {std::string("END_BY=") + end});
        EXPECT_EQ(result.status, 1) << end;
        EXPECT_THAT(result.out, HasSubstr("             step      update_vrf\n"
                                          "             last read /prefix-list{a}/seq{10}/address\n"
                                          "             written   /router/bgp{65099}/as-size\n"
                                          "             last call maapi_set_elem2\n"
                                          "             calls     2 reads, 2 writes (1 failed)\n"
                                          "             log       Starting BGP update\n"
                                          "                       Update BGP VRF\n"
                                          "                       the last line\n"))
            << end;
    }
}

TEST_F(RehearseEnded, CrashWithinACall_NamesTheCall)
{
    // A pointer that is not null: of a null one a sanitizer tells before the machine does.
    const CommandResult result = run_body(std::string(kWorking) + R"(
        signal(SIGSEGV, SIG_DFL);
        auto* const wild = reinterpret_cast<confd_value_t*>(64);
        maapi_set_elem(maapi, th, wild, "/router/bgp{%u}/vrf{%s}/administrative-status", 65010u, "red");
        return 0;)");
    EXPECT_THAT(result.out, HasSubstr("did not return: SIGSEGV"));
    EXPECT_THAT(result.out, HasSubstr("written   /router/bgp{65010}/vrf{red}/administrative-status\n"
                                      "             last call maapi_set_elem, which had not returned\n"));
}

TEST_F(RehearseEnded, OfALongLog_ShowsTheLastTenLines)
{
    const CommandResult result = run_body("for (int i = 1; i <= 12; ++i) log(\"line %d\\n\", i); _exit(1);");
    EXPECT_THAT(result.out, HasSubstr("log       line 3\n                       line 4\n"));
    EXPECT_THAT(result.out, HasSubstr("                       line 12\nSteps"));
}

TEST_F(RehearseEnded, UpgradeThatDidNothing_SaysSoOfItsCalls)
{
    const CommandResult result = run_body("_exit(1);");
    EXPECT_THAT(result.out, HasSubstr("             step      update\n"
                                      "             calls     0 reads, 0 writes (0 failed)\nSteps"));
}

TEST_F(RehearseEnded, WildWritesToTheSharedMemory_DoNotReachTheReport)
{
    const CommandResult result = run_body(std::string(kWorking) + R"(
        std::ifstream maps("/proc/self/maps");
        for (std::string line; std::getline(maps, line);) {
            if (line.find("rw-s") != std::string::npos && line.find("/dev/zero") != std::string::npos) {
                const std::size_t begin = std::stoul(line, nullptr, 16);
                const std::size_t end = std::stoul(line.substr(line.find('-') + 1), nullptr, 16);
                for (std::size_t at = begin; at < end; ++at) *reinterpret_cast<unsigned char*>(at) = 0xA5;
                log("overwritten");
            }
        }
        _exit(1);)");
    EXPECT_EQ(result.status, 1) << result.err;
    EXPECT_THAT(result.out, HasSubstr("did not return: an exit with status 1"));
}

TEST_F(RehearseEnded, FaultThatDoesNotEndTheUpgrade_IsInTheSummaryAndStops)
{
    const std::string library = fake_library(folder, "nzmw_gen_fault(1, \"f\", \"src/s\", 5, \"odd\"); return 0;");
    const CommandResult result = rehearse({"run", config, "--library", library});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.out, HasSubstr("\n  fault      f (src/s:5): odd\n"));
    EXPECT_EQ(rehearse({"run", config, "--library", library, "--fail-on", "never"}).status, 0);
}

}  // namespace
}  // namespace bgp_test
