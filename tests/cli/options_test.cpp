// What the command line of a rehearsal comes to, and how a slip in it is told.
#include "options.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <utility>

#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

using bgp_rehearse::Colour;
using bgp_rehearse::CommandLine;
using bgp_rehearse::ExitStatus;
using bgp_rehearse::FailOn;
using bgp_rehearse::RunOptions;
using std::chrono::microseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

// What these arguments come to for whoever has no options in a file of one's own.
CommandLine command_line(std::vector<const char*> arguments)
{
    setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
    arguments.insert(arguments.begin(), "bgp-rehearse");
    return bgp_rehearse::parse_command_line(static_cast<int>(arguments.size()), arguments.data());
}

// The options of `bgp-rehearse run a.xml` with these arguments.
RunOptions run_options(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), {"run", "a.xml"});
    const CommandLine command = command_line(std::move(arguments));
    EXPECT_TRUE(command.run.has_value());
    return command.run.value_or(RunOptions{});
}

// The command is refused, and tells why with this first line.
void expect_refused(const std::vector<std::string>& arguments, const std::string& why)
{
    const CommandResult result = rehearse(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, StartsWith("bgp-rehearse: " + why + "\n"));
}

TEST(Options, NoneGiven_AreTheUsualOnes)
{
    const RunOptions options = run_options({});
    EXPECT_EQ(options.configuration, "a.xml");
    EXPECT_EQ(options.fail_on, FailOn::Stop);
    EXPECT_EQ(options.colour, Colour::Auto);
    EXPECT_EQ(options.json, "");
    EXPECT_EQ(options.changes, "");
    EXPECT_THAT(options.severities, IsEmpty());
    EXPECT_FALSE(options.call_time);
    EXPECT_FALSE(options.connect_time);
    EXPECT_FALSE(options.again);
    EXPECT_FALSE(options.json_log);
    EXPECT_FALSE(options.device.interfaces_known);
    EXPECT_FALSE(options.device.user_profile_known);
}

TEST(Options, InterfacesAndProfile_AreKnownWhenTheyAreGiven)
{
    const RunOptions options = run_options({"--interfaces", "192.0.2.1,127.0.0.1", "--user-profile", "0"});
    EXPECT_EQ(options.device.interfaces.size(), 2U);
    EXPECT_TRUE(options.device.interfaces_known);
    EXPECT_TRUE(options.device.user_profile_known);
    EXPECT_FALSE(run_options({"--user-profile", "0"}).device.interfaces_known);
}

TEST(Options, FailOnAndColour_AreTheWordsGiven)
{
    EXPECT_EQ(run_options({"--fail-on", "review"}).fail_on, FailOn::Review);
    EXPECT_EQ(run_options({"--fail-on=never"}).fail_on, FailOn::Never);
    EXPECT_EQ(run_options({"--color=always"}).colour, Colour::Always);
    EXPECT_EQ(run_options({"--color", "never"}).colour, Colour::Never);
}

TEST(Options, Severities_StayInTheirOrder)
{
    EXPECT_THAT(run_options({"--severity", "row-left=note", "--severity", "again=stop"}).severities,
                ElementsAre(Pair("row-left", "note"), Pair("again", "stop")));
}

TEST(Options, Times_AreDurations)
{
    const RunOptions options = run_options({"--call-time", "100us", "--connect-time", "2.5ms"});
    EXPECT_EQ(options.call_time, microseconds(100));
    EXPECT_EQ(options.connect_time, microseconds(2500));
}

TEST(Options, Limits_AreTakenWithTheirUnits)
{
    const RunOptions options = run_options({"--time-limit", "90", "--memory-limit=2G"});
    EXPECT_EQ(options.limits.time, std::chrono::seconds(90));
    EXPECT_EQ(options.limits.memory, std::size_t{1} << 31);
    EXPECT_EQ(run_options({}).limits.time, std::chrono::minutes(10));
    EXPECT_EQ(run_options({"--time-limit", "none"}).limits.time, std::nullopt);
}

TEST(Options, JsonAndChangesAlone_LeaveTheConfigurationItsName)
{
    const CommandLine command = command_line({"run", "--json", "--changes", "b.xml"});
    ASSERT_TRUE(command.run);
    EXPECT_EQ(command.run->configuration, "b.xml");
    EXPECT_TRUE(command.run->json_printed());
    EXPECT_EQ(command.run->changes, "/");
}

TEST(Options, JsonAndChangesWithValues_TakeThemBehindASign)
{
    const RunOptions options = run_options({"--json=report.json", "--changes=/router/bgp", "--json-log", "--again"});
    EXPECT_TRUE(options.json_in_file());
    EXPECT_EQ(options.json, "report.json");
    EXPECT_EQ(options.changes, "/router/bgp");
    EXPECT_TRUE(options.json_log);
    EXPECT_TRUE(options.again);
}

TEST(Options, OptionsOfAFile_CountWhereTheCommandLineSaysNothing)
{
    const ScratchFolder folder;
    const std::string file = folder.file("rehearse.toml", R"(fail-on = "review"
user-profile = 7
json = true
severity = ["row-left=note", "again=stop"]
[run]
call-time = "1ms"
)");
    const RunOptions options =
        run_options({"--config", file.c_str(), "--user-profile", "8", "--severity", "again=note"});
    EXPECT_EQ(options.fail_on, FailOn::Review);
    EXPECT_EQ(options.device.user_profile, 8U);
    EXPECT_TRUE(options.json_printed());
    EXPECT_EQ(options.call_time, microseconds(1000));
    EXPECT_THAT(options.severities,
                ElementsAre(Pair("row-left", "note"), Pair("again", "stop"), Pair("again", "note")));
}

TEST(Options, FileThatGivesWhatItCannot_IsRefusedByTheName)
{
    const ScratchFolder folder;
    const std::string slip = folder.file("slip.toml", "jsn = true\n");
    expect_refused({"run", "a.xml", "--config", slip},
                   slip + ": jsn is no option that a file can give; did you mean --json?");
    const std::string loop = folder.file("loop.toml", "config = \"loop.toml\"\n");
    expect_refused({"run", "a.xml", "--config", loop}, loop + ": config is no option that a file can give");
    const std::string other = folder.file("other.toml", "[swep]\njson = true\n");
    expect_refused({"run", "a.xml", "--config", other}, other + ": [swep] is no command; did you mean sweep?");
    EXPECT_THAT(rehearse({"run", "a.xml", "--config", folder / "none"}).err, HasSubstr("does not exist"));
}

TEST(Options, SlipInAName_IsToldWithTheNameThatWasMeant)
{
    expect_refused({"run", "--intefaces=192.0.2.1", "a.xml"},
                   "--intefaces is no option of run; did you mean --interfaces?");
    expect_refused({"run", "--interface", "192.0.2.1"}, "--interface is no option of run; did you mean --interfaces?");
    expect_refused({"sweep", "a.xml", "--al-sites"}, "--al-sites is no option of sweep; did you mean --all-sites?");
    expect_refused({"rnu", "a.xml"}, "rnu is no command; did you mean run?");
    expect_refused({"--verison"}, "--verison is no option of bgp-rehearse; did you mean --version?");
}

TEST(Options, NameLikeNoOther_IsRefusedWithoutAGuess)
{
    expect_refused({"run", "a.xml", "--frobnicate"}, "--frobnicate is no option of run");
    expect_refused({"frobnicate"}, "frobnicate is no command");
    expect_refused({"run", "a.xml", "b.xml"}, "b.xml is one argument too many");
    expect_refused({"run", "a.xml", "--stict"}, "--stict is no option of run");
}

TEST(Options, Strict_IsToldWhatToSayInstead)
{
    expect_refused({"run", "a.xml", "--strict"}, "--strict: say --fail-on review");
}

TEST(Options, ValueOutOfRange_IsToldWithTheRange)
{
    expect_refused({"run", "a.xml", "--user-profile", "5000000000"},
                   "--user-profile: \"5000000000\" is not a number from 0 to 4294967295");
    expect_refused({"run", "a.xml", "--max-entries=-1"}, "--max-entries: \"-1\" is not a number from 0 to 4294967295");
    expect_refused({"sweep", "a.xml", "--jobs", "0"}, "--jobs: \"0\" is not a number from 1 to 256");
    expect_refused({"generate", "--seed", "1e3"}, "--seed: \"1e3\" is not a number from 0 to 18446744073709551615");
    expect_refused({"run", "a.xml", "--call-time", "2min"},
                   "--call-time: \"2min\" is not a duration from 0s to 60s, such as 100us or 2.5ms");
    expect_refused({"run", "a.xml", "--time-limit", "2min"},
                   "--time-limit: \"2min\" is not a time up to 24h, such as 90, 90s or 10m, nor none");
    expect_refused({"run", "a.xml", "--memory-limit", "512K"},
                   "--memory-limit: \"512K\" is not a size up to 1024G, such as 512 (megabytes), 512M or 2G, nor none");
}

TEST(Options, WordThatIsNone_IsToldWithTheWords)
{
    expect_refused({"run", "a.xml", "--fail-on", "stpo"},
                   "--fail-on: \"stpo\" is none of review, stop, never; did you mean stop?");
    expect_refused({"run", "a.xml", "--severity", "row-left=bad"}, "--severity: \"bad\" is none of note, review, stop");
    expect_refused({"run", "a.xml", "--severity", "row-left"}, "--severity: \"row-left\" is not ID=LEVEL");
    expect_refused({"run", "a.xml", "--severity", "=note"}, "--severity: \"=note\" is not ID=LEVEL");
}

TEST(Options, ChangesGivenTwice_AreRefused)
{
    EXPECT_THAT(rehearse({"run", "a.xml", "--changes", "--changes=/router"}).err, HasSubstr("--changes"));
    EXPECT_EQ(rehearse({"run", "a.xml", "--changes", "--changes=/router"}).status, 2);
}

}  // namespace
}  // namespace bgp_test
