// Options from files and from the environment: which of them counts, and how a slip in a file is told.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "cli/examples.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class OptionFiles : public testing::Test {
protected:
    // The JSON report of a rehearsal in which files, environment and command line have their say.
    nlohmann::json report(std::vector<std::string> arguments, std::vector<std::string> environment = {}) const
    {
        arguments.insert(arguments.begin(), {"run", kEdgeRouter, "--json"});
        const CommandResult result = rehearse_here(arguments, std::move(environment));
        EXPECT_NE(result.status, 2) << result.err;
        return nlohmann::json::parse(result.out, nullptr, false);
    }

    // The profile that the upgrade ran with.
    std::string profile(const std::vector<std::string>& arguments, std::vector<std::string> environment = {}) const
    {
        const nlohmann::json document = report(arguments, std::move(environment));
        for (const nlohmann::json& assumed : document["inputs"]["assumptions"]) {
            if (assumed["option"] == "--user-profile") {
                return assumed["value"];
            }
        }
        return "";
    }

    CommandResult rehearse_here(std::vector<std::string> arguments, std::vector<std::string> environment = {}) const
    {
        environment.push_back("XDG_CONFIG_HOME=" + home.path());
        return rehearse(std::move(arguments), std::move(environment));
    }

    void expect_refused(const std::vector<std::string>& arguments, const std::string& why) const
    {
        const CommandResult result = rehearse_here(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.err, StartsWith("bgp-rehearse: " + why + "\n"));
    }

    std::string own(const std::string& content) const { return home.file("bgp-rehearse.toml", content); }

    const std::string kEdgeRouter = example("edge-router");
    ScratchFolder home;
};

TEST_F(OptionFiles, UsersOwn_CountsWhereNothingElseSaysAnything)
{
    EXPECT_EQ(profile({}), "0");
    own("[run]\nuser-profile = 5\n");
    EXPECT_EQ(profile({}), "5");
}

TEST_F(OptionFiles, FileOfConfig_CountsMoreThanTheUsersOwn)
{
    own("[run]\nuser-profile = 5\nmax-errors = 3\n");
    const std::string site = home.file("site.toml", "[run]\nuser-profile = 6\n");
    EXPECT_EQ(profile({"--config", site}), "6");
    EXPECT_EQ(profile({}, {"BGP_REHEARSE_CONFIG=" + site}), "6");
}

TEST_F(OptionFiles, CommandLine_CountsMost)
{
    own("[run]\nuser-profile = 5\n");
    const std::string site = home.file("site.toml", "user-profile = 6\n");
    EXPECT_EQ(profile({"--config", site, "--user-profile", "7"}), "7");
    EXPECT_EQ(profile({"--user-profile", "7", "--config", site}), "7");
}

TEST_F(OptionFiles, Environment_CountsMoreThanFilesAndLessThanTheCommandLine)
{
    const auto facts = [this](const std::string& name, int number) {
        return home.file(name, "device,profile\nedge-router," + std::to_string(number) + "\n");
    };
    const std::string of_environment = "BGP_REHEARSE_FACTS=" + facts("environment.csv", 2);
    own("[run]\nfacts = \"" + facts("own.csv", 1) + "\"\n");
    EXPECT_EQ(profile({}), "1");
    EXPECT_EQ(profile({}, {of_environment}), "2");
    const std::string site = home.file("site.toml", "facts = \"" + facts("site.csv", 3) + "\"\n");
    EXPECT_EQ(profile({"--config", site}), "3");
    EXPECT_EQ(profile({"--config", site}, {of_environment}), "2");
    EXPECT_EQ(profile({"--facts", facts("line.csv", 4)}, {of_environment}), "4");
}

TEST_F(OptionFiles, OptionThatMayBeGivenAgain_CountsFromAllAndTheNearestLast)
{
    own("[run]\nseverity = [\"limit-rewritten=stop\", \"action-rewritten=stop\"]\n");
    const std::string site = home.file("site.toml", "severity = \"action-rewritten=review\"\n");
    const nlohmann::json document = report({"--config", site, "--severity", "route-map-rewritten=review"});
    std::map<std::string, std::string> severities;
    for (const nlohmann::json& finding : document["findings"]) {
        severities[finding["id"]] = finding["severity"];
    }
    EXPECT_EQ(severities["limit-rewritten"], "stop");
    EXPECT_EQ(severities["action-rewritten"], "review");
    EXPECT_EQ(severities["route-map-rewritten"], "review");
}

TEST_F(OptionFiles, SwitchOfAFile_IsTakenBackOnTheCommandLine)
{
    own("[run]\ncommit-check = true\n");
    EXPECT_FALSE(report({})["check"].is_null());
    EXPECT_TRUE(report({"--commit-check=false"})["check"].is_null());
}

TEST_F(OptionFiles, SectionsOfOtherCommands_ArePassedOver)
{
    own("[sweep]\nevery = 7\n[fleet.run]\njobs = 2\n[run]\nuser-profile = 5\n[fleet.show]\nnames = true\n");
    EXPECT_EQ(profile({}), "5");
}

TEST_F(OptionFiles, VerbOfAFleet_HasASectionOfItsOwn)
{
    own("[fleet.plan]\nshards = 3\n[fleet.run]\njobs = 2\n");
    const CommandResult result =
        rehearse_here({"fleet", "plan", BGP_SOURCE_DIR "/examples", "-o", home / "fleet.plan"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("in 3 shards"));
}

TEST_F(OptionFiles, RequiredOption_MayStandInAFile)
{
    own("[fleet.plan]\noutput = \"" + home / "fleet.plan" + "\"\n");
    EXPECT_EQ(rehearse_here({"fleet", "plan", BGP_SOURCE_DIR "/examples"}).status, 0);
    EXPECT_THAT(home.names(), testing::Contains("fleet.plan"));
}

TEST_F(OptionFiles, UsersOwnWithoutXdg_LiesInDotConfig)
{
    mkdir((home / ".config").c_str(), 0700);
    home.file(".config/bgp-rehearse.toml", "[run]\nuser-profile = 9\n");
    const std::vector<std::string> arguments = {"run", kEdgeRouter, "--json"};
    EXPECT_THAT(rehearse(arguments, {"HOME=" + home.path()}).out, HasSubstr("\"9\""));
    EXPECT_THAT(rehearse(arguments, {"HOME=" + home.path(), "XDG_CONFIG_HOME=relative"}).out, HasSubstr("\"9\""));
    EXPECT_THAT(rehearse(arguments, {"HOME="}).out, Not(HasSubstr("\"9\"")));
}

TEST_F(OptionFiles, SlipInAFile_IsToldWithTheFile)
{
    const std::string file = own("user-profile = 5\n");
    expect_refused({"run", "a.xml"}, file + ": user-profile stands in no section: put it below one such as [run]");
    own("[rnu]\nuser-profile = 5\n");
    expect_refused({"run", "a.xml"}, file + ": [rnu] is no command; did you mean run?");
    own("[fleet]\njobs = 5\n");
    expect_refused({"run", "a.xml"}, file + ": no file can give options of fleet");
    own("[run]\njsn = true\n");
    expect_refused({"run", "a.xml"}, file + ": run.jsn is no option that a file can give; did you mean --json?");
    own("[run]\nfail-on = \"stp\"\n");
    expect_refused({"run", "a.xml"}, file + ": --fail-on: \"stp\" is none of review, stop, never; did you mean stop?");
}

TEST_F(OptionFiles, SlipInAnOptionThatMayBeGivenAgain_IsToldWithItsOwnFile)
{
    const std::string file = own("[run]\nseverity = \"again=nte\"\n");
    const std::string site = home.file("site.toml", "severity = \"again=stop\"\n");
    expect_refused({"run", "a.xml", "--config", site, "--severity", "again=review"},
                   file + ": --severity: \"nte\" is none of note, review, stop; did you mean note?");
    own("[run]\nseverity = \"again=note\"\n");
    expect_refused({"run", "a.xml", "--config", site, "--severity", "again=rview"},
                   "--severity: \"rview\" is none of note, review, stop; did you mean review?");
}

TEST_F(OptionFiles, HelpAndVersion_AreToldWhateverStandsInTheUsersOwn)
{
    own("[rnu]\n nothing = 1\n");
    EXPECT_EQ(rehearse_here({"run", "--help"}).status, 0);
    EXPECT_EQ(rehearse_here({"--version"}).status, 0);
    EXPECT_EQ(rehearse_here({"findings"}).status, 0);
}

TEST_F(OptionFiles, LibraryOfTheEnvironment_IsTheOneThatVersionTells)
{
    EXPECT_THAT(rehearse_here({"--version"}).out, HasSubstr("\nlibrary: libbgp_update 0.1.0 ("));
    const std::string small = BGP_SMALL_UPGRADE;
    EXPECT_THAT(rehearse_here({"--version"}, {"BGP_REHEARSE_LIBRARY=" + small}).out,
                HasSubstr("\nlibrary: " + small + "\nlibrary SHA-256: "));
    EXPECT_EQ(report({}, {"BGP_REHEARSE_LIBRARY=" + small})["inputs"]["library"]["path"], small);
}

}  // namespace
}  // namespace bgp_test
