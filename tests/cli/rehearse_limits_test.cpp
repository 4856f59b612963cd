// Upgrades that would not end, or take memory without end: they are ended at a limit and told with the place where they
// were. No test measures how long that took.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "cli/ended_upgrade.h"

namespace bgp_test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

using TimeLimit = EndedUpgradeTest;

constexpr char kCircle[] = R"(
    for (unsigned as = 65010;; as ^= 65010 ^ 65099) {
        maapi_set_elem2(maapi, th, "fourOctet", "/router/bgp{%u}/as-size", 65010u);
        cdb_get(cdb, &value, "/router/bgp{%u}/router-id", 65010u);
    })";

TEST_F(TimeLimit, LoopOverCalls_EndsWithTheRowsThatItIsAt)
{
    const CommandResult result = run_body(std::string(kWorking) + kCircle, {"--time-limit", "200ms"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("  update     did not return: time limit\n"
                                      "             text      longer than 200 ms (--time-limit)\n"
                                      "             step      update_vrf\n"
                                      "             last read /router/bgp{65010}/router-id\n"
                                      "             written   /router/bgp{65010}/as-size\n"));
    EXPECT_THAT(result.out, HasSubstr("                       the last line\nSteps"));
    EXPECT_THAT(result.out, HasSubstr("  STOP    the upgrade took longer than 200 ms (--time-limit)"));
    EXPECT_THAT(result.out, HasSubstr("where it stays at one row it goes in a circle there"));
    EXPECT_EQ(result.err, "bgp-rehearse: the upgrade took longer than 200 ms (--time-limit); " + (folder / "out.xml") +
                              " is not written\n");
}

TEST_F(TimeLimit, InJson_IsAKindOfItsOwn)
{
    const json told = ended("log(\"here\"); for (;;) pause();", {"--time-limit", "0.2"});
    EXPECT_EQ(told["kind"], "time limit");
    EXPECT_EQ(told["text"], "longer than 200 ms (--time-limit)");
    EXPECT_EQ(told["signal"], 0);
    EXPECT_EQ(told["status"], 0);
    EXPECT_EQ(told["last"]["log"], json({"here"}));
}

TEST_F(TimeLimit, LoopThatKeepsItsParentBusy_EndsAllTheSame)
{
    const CommandResult result =
        run_body("for (;;) log(\"again\\n\");", {"--time-limit", "200ms", "--log", folder / "upgrade.log", "--json"});
    EXPECT_EQ(json::parse(result.out)["ended"]["kind"], "time limit");
    EXPECT_EQ(content_of(folder / "upgrade.log").substr(0, 12), "again\nagain\n");
}

TEST_F(TimeLimit, ProcessThatLeftItsGroup_EndsAllTheSame)
{
    EXPECT_EQ(ended("setpgid(0, getpgid(getppid())); for (;;) pause();", {"--time-limit", "200ms"})["kind"],
              "time limit");
}

TEST_F(TimeLimit, LoopWhileTheLibraryIsLoaded_Ends)
{
    EXPECT_EQ(ended("return 0; } __attribute__((constructor)) static void forever() { for (;;) pause();",
                    {"--time-limit", "200ms"})["kind"],
              "time limit");
}

// Finds what the first upgrade made, and then does as the test says.
std::string second_time(const std::string& body)
{
    return "if (cdb_exists(cdb, \"/router/bgp{%u}\", 65020u) == 1) {" + body +
           "} return maapi_create(maapi, th, \"/router/bgp{%u}\", 65020u);";
}

json finding_of(const json& document, const std::string& id)
{
    for (const json& finding : document["findings"]) {
        if (finding["id"] == id) {
            return finding;
        }
    }
    return {};
}

TEST_F(TimeLimit, SecondUpgrade_HasItsOwn)
{
    const std::string library = fake_library(folder, second_time("for (;;) pause();"));
    const CommandResult result = rehearse(
        {"run", config, "--library", library, "--again", "--time-limit", "300ms", "--json", "-o", folder / "out.xml"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(finding_of(json::parse(result.out), "again")["sentence"],
              "a second upgrade of the result ends in the time limit of 300 ms (--time-limit)");
    EXPECT_THAT(content_of(folder / "out.xml"), HasSubstr("65020"));
}

class MemoryLimit : public EndedUpgradeTest {
protected:
    void SetUp() override
    {
        if (kSanitized) {
            GTEST_SKIP() << "a sanitizer maps more than any limit has";
        }
    }

    void expect_reached(const std::string& body)
    {
        const CommandResult result = run_body(kWorking + body, {"--memory-limit", "64"});
        EXPECT_EQ(result.status, 1) << body;
        EXPECT_THAT(result.out, HasSubstr("  update     did not return: memory limit\n"
                                          "             text      more than 64 MB (--memory-limit)\n"
                                          "             step      update_vrf\n"))
            << body;
        EXPECT_THAT(result.out, HasSubstr("  STOP    the upgrade needed more than 64 MB (--memory-limit)"));
        EXPECT_THAT(result.err, HasSubstr("bgp-rehearse: the upgrade needed more than 64 MB (--memory-limit); "));
    }
};

TEST_F(MemoryLimit, MemoryWithoutEnd_EndsWithTheRowsThatItWasAt)
{
    constexpr char kEats[] =
        "for (;;) { char* more = new char[100000]; for (int i = 0; i < 100000; ++i) more[i] = 1; }";
    expect_reached(kEats);
    const json told = ended(std::string(kWorking) + kEats, {"--memory-limit", "64M"});
    EXPECT_EQ(told["kind"], "memory limit");
    EXPECT_EQ(told["text"], "more than 64 MB (--memory-limit)");
    EXPECT_EQ(told["last"]["reading"], "/prefix-list{a}/seq{10}/address");
    EXPECT_EQ(told["last"]["writing"], "/router/bgp{65099}/as-size");
}

TEST_F(MemoryLimit, RowsWithoutEnd_CountAsTheUpgradesOwn)
{
    expect_reached("for (unsigned as = 1;; ++as) maapi_create(maapi, th, \"/router/bgp{%u}\", as);");
}

TEST_F(MemoryLimit, ValuesThatAreNeverGivenBack_CountAsTheUpgradesOwn)
{
    expect_reached("for (;;) cdb_get(cdb, &value, \"/prefix-list{%s}/name\", \"a\");");
}

TEST_F(MemoryLimit, WhateverTheLibraryMakesOfIt_IsTheLimit)
{
    for (const char* body : {
             "try { for (;;) new char[100000]; } catch (const std::bad_alloc&) { throw std::runtime_error(\"odd\"); }",
             "try { for (;;) new char[100000]; } catch (...) { nzmw_gen_fault(1, \"f\", \"s\", 1, \"odd\"); exit(1); }",
             "try { for (;;) new char[100000]; } catch (...) { } return 0;",
             "for (volatile char* more;;) { more = static_cast<char*>(malloc(100000)); *more = 1; }",
             "if (malloc(std::size_t{1} << 40) == nullptr) exit(3); return 0;",
             "char* const more = static_cast<char*>(malloc(std::size_t{1} << 40)); assert(more != nullptr); return 0;",
         }) {
        expect_reached(body);
    }
}

TEST_F(MemoryLimit, OtherEnds_AreToldAsTheyAre)
{
    const std::vector<std::string> limit = {"--memory-limit", "64"};
    EXPECT_EQ(ended("raise(SIGSEGV); return 0;", limit)["kind"], "signal");
    EXPECT_EQ(ended("assert(1 + 1 == 3); return 0;", limit)["kind"], "assertion");
    EXPECT_EQ(ended("exit(7);", limit)["status"], 7);
    EXPECT_EQ(ended("throw std::bad_alloc();", limit)["kind"], "memory limit") << "whose new it was is not known";
    EXPECT_EQ(ended("throw std::bad_alloc();")["kind"], "exception");
}

TEST_F(MemoryLimit, IsOfTheUpgradeAlone)
{
    const std::string library = fake_library(folder, "return 0;");
    // libyang's modules alone take more.
    const CommandResult result =
        rehearse({"run", config, "--library", library, "--commit-check", "--memory-limit", "1", "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(json::parse(result.out)["check"]["valid"], true);
}

TEST_F(MemoryLimit, SecondUpgrade_HasItsOwn)
{
    const std::string library = fake_library(folder, second_time("for (;;) new char[100000];"));
    const CommandResult result =
        rehearse({"run", config, "--library", library, "--again", "--memory-limit", "64", "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(finding_of(json::parse(result.out), "again")["sentence"],
              "a second upgrade of the result ends in the memory limit of 64 MB (--memory-limit)");
}

TEST_F(MemoryLimit, InFrontOfATimeLimit_IsToldWhicheverCame)
{
    EXPECT_EQ(ended("for (;;) pause();", {"--memory-limit", "64", "--time-limit", "200ms"})["kind"], "time limit");
}

}  // namespace
}  // namespace bgp_test
