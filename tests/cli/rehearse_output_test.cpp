// The files that bgp-rehearse writes: whole or not at all, under every way to end.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
namespace fs = std::filesystem;

constexpr char kCreate[] = "maapi_create(maapi, th, \"/router/bgp{%u}\", 65020u); log(\"created\\n\"); return 0;";

class RehearseOutput : public RehearseTest {
protected:
    const std::string output = folder / "out.xml";

    void expect_no_temporary() const { EXPECT_THAT(folder.names(), Not(Contains(StartsWith(".bgp-rehearse")))); }

    // Waits until the library has written its process id to the file "pid".
    pid_t wait_for_pid() const
    {
        for (;;) {
            std::ifstream file(folder / "pid");
            pid_t pid = 0;
            std::string end;
            if (file >> pid >> end) {
                return pid;
            }
            usleep(10000);
        }
    }

    // A library that creates a row, says who it is, and then never comes back.
    std::string hanging_library() const
    {
        return fake_library(folder, "maapi_create(maapi, th, \"/router/bgp{%u}\", 65020u); std::ofstream(\"" +
                                        (folder / "pid") +
                                        "\") << getpid() << \" end\" << std::flush; for (;;) pause();");
    }

    // Whether the process is gone, waiting for it to go.
    static bool goes_away(pid_t process)
    {
        for (int i = 0; i < 500; ++i) {
            std::ifstream status("/proc/" + std::to_string(process) + "/stat");
            std::string word;
            if (!(status >> word >> word >> word) || word == "Z") {
                return true;
            }
            usleep(10000);
        }
        return false;
    }
};

TEST_F(RehearseOutput, UpgradedConfiguration_LoadsAgainAndHoldsTheChange)
{
    const CommandResult result = rehearse({"run", config, "--library", fake_library(folder, kCreate), "-o", output});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(content_of(output), HasSubstr("<as-number>65020</as-number>"));
    EXPECT_THAT(content_of(output), HasSubstr("<as-number>65010</as-number>"));
    const std::string idle = fake_library(folder, "return 0;");
    EXPECT_EQ(rehearse({"run", output, "--library", idle, "-o", folder / "again.xml"}).status, 0);
    EXPECT_EQ(content_of(folder / "again.xml"), content_of(output));
    expect_no_temporary();
}

TEST_F(RehearseOutput, JsonInAFile_IsTheDocumentBesideTheText)
{
    const std::string library = fake_library(folder, kCreate);
    const std::string report = folder / "report.json";
    const CommandResult result = rehearse({"run", config, "--library", library, "--json=" + report});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, StartsWith("Rehearsal of "));
    EXPECT_EQ(content_of(report), rehearse({"run", config, "--library", library, "--json"}).out);
    expect_no_temporary();
}

TEST_F(RehearseOutput, JsonInAFileOfAnUpgradeThatEnds_IsTheDocument)
{
    const std::string library = fake_library(folder, "log(\"before\"); exit(7);");
    const std::string report = folder / "report.json";
    EXPECT_EQ(rehearse({"run", config, "--library", library, "--json=" + report}).status, 1);
    EXPECT_EQ(content_of(report), rehearse({"run", config, "--library", library, "--json"}).out);
    expect_no_temporary();
}

TEST_F(RehearseOutput, JsonInAFileThatIsAnotherOne_IsRefused)
{
    for (const std::string option : {"-o", "--log"}) {
        const CommandResult result = rehearse({"run", config, option, output, "--json=" + output});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.err, HasSubstr("--json"));
    }
    EXPECT_EQ(rehearse({"run", config, "--json=" + config}).status, 2);
}

TEST_F(RehearseOutput, NewFile_HasTheModeOfTheUmask)
{
    const mode_t before = umask(027);
    rehearse({"run", config, "--library", fake_library(folder, kCreate), "-o", output});
    umask(before);
    EXPECT_EQ(fs::status(output).permissions(), fs::perms(0640));
}

TEST_F(RehearseOutput, ReplacedFile_KeepsItsMode)
{
    folder.file("out.xml", "old");
    fs::permissions(output, fs::perms(0600));
    rehearse({"run", config, "--library", fake_library(folder, kCreate), "-o", output});
    EXPECT_THAT(content_of(output), HasSubstr("65020"));
    EXPECT_EQ(fs::status(output).permissions(), fs::perms(0600));
}

TEST_F(RehearseOutput, Files_AreReadableByNobodyWhoMayNotReadTheConfiguration)
{
    struct Case {
        int umask, input, old, expected;
    };
    const std::string library = fake_library(folder, kCreate);
    const mode_t before = umask(0);
    for (const Case& each : {Case{0, 0600, 0, 0600}, Case{0, 0640, 0, 0640}, Case{0, 0664, 0, 0664},
                             Case{0, 0604, 0, 0604}, Case{022, 0666, 0, 0644}, Case{077, 0644, 0, 0600},
                             Case{0, 0400, 0, 0600}, Case{0, 0755, 0, 0644}, Case{0, 0600, 0644, 0600},
                             Case{0, 0640, 0666, 0640}, Case{0, 0644, 0600, 0600}, Case{077, 0644, 0664, 0644}}) {
        SCOPED_TRACE(testing::Message() << std::oct << each.umask << " " << each.input << " " << each.old);
        for (const char* name : {"out.xml", "log", "report.json"}) {
            fs::remove(folder / name);
            if (each.old != 0) {
                folder.file(name, "old");
                fs::permissions(folder / name, fs::perms(each.old));
            }
        }
        fs::permissions(config, fs::perms(each.input));
        umask(static_cast<mode_t>(each.umask));
        const CommandResult result = rehearse({"run", config, "--library", library, "-o", output, "--log",
                                               folder / "log", "--json=" + (folder / "report.json")});
        umask(0);
        EXPECT_EQ(result.signal, 0) << result.err;
        for (const char* name : {"out.xml", "log", "report.json"}) {
            EXPECT_THAT(content_of(folder / name), Not(testing::StrEq("old"))) << name;
            EXPECT_EQ(fs::status(folder / name).permissions(), fs::perms(each.expected)) << name;
        }
    }
    umask(before);
}

// As root, who may give a file to another group.
TEST_F(RehearseOutput, GroupThatIsNotTheConfigurations_CountsAsOthers)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a file to another group";
    }
    const std::string library = fake_library(folder, kCreate);
    ASSERT_EQ(chown(config.c_str(), 0, getegid() + 1), 0);
    const mode_t before = umask(0);
    for (const auto& [input, expected] : {std::pair{0640, 0600}, {0664, 0644}, {0604, 0604}}) {
        fs::remove(output);
        fs::permissions(config, fs::perms(input));
        rehearse({"run", config, "--library", library, "-o", output});
        EXPECT_EQ(fs::status(output).permissions(), fs::perms(expected)) << std::oct << input;
    }
    folder.file("out.xml", "old");
    ASSERT_EQ(chown(output.c_str(), 0, getegid() + 1), 0);
    fs::permissions(output, fs::perms(0660));
    fs::permissions(config, fs::perms(0640));
    rehearse({"run", config, "--library", library, "-o", output});
    EXPECT_EQ(fs::status(output).permissions(), fs::perms(0640)) << "it passes on its group";
    umask(before);
}

TEST_F(RehearseOutput, FilesOfStandardInput_AreTheirOwnersAlone)
{
    const mode_t before = umask(0);
    const CommandResult result =
        run_command({"/bin/sh", "-c", "exec \"$0\" \"$@\" < '" + config + "'", BGP_REHEARSE, "run", "-", "--library",
                     fake_library(folder, kCreate), "-o", output, "--log", folder / "log"});
    umask(before);
    EXPECT_EQ(result.signal, 0) << result.err;
    EXPECT_EQ(fs::status(output).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(folder / "log").permissions(), fs::perms(0600));
}

TEST_F(RehearseOutput, SymbolicLink_StaysAndItsTargetIsReplaced)
{
    fs::create_directory(folder / "elsewhere");
    for (const char* target : {"elsewhere/old.xml", "elsewhere/new.xml"}) {
        SCOPED_TRACE(target);
        folder.file("elsewhere/old.xml", "old");
        fs::remove(output);
        fs::create_symlink(target, output);
        rehearse({"run", config, "--library", fake_library(folder, kCreate), "-o", output});
        EXPECT_TRUE(fs::is_symlink(output));
        EXPECT_THAT(content_of(folder / target), HasSubstr("65020"));
    }
}

TEST_F(RehearseOutput, Log_HasALineForEachLine)
{
    const std::string library =
        fake_library(folder, "log(\"one \"); log(\"two\\n\"); log(\"%s\", \"\"); log(\"a\\nb\\n\"); return 0;");
    EXPECT_EQ(rehearse({"run", config, "--library", library, "--log", folder / "log"}).status, 0);
    EXPECT_EQ(content_of(folder / "log"), "one \ntwo\n\na\\nb\n");
    expect_no_temporary();
}

TEST_F(RehearseOutput, Interrupt_EndsTheUpgradeAndRemovesTheTemporaryFiles)
{
    const std::string library = hanging_library();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        folder.file("out.xml", "old");
        fs::remove(folder / "pid");
        RunningCommand command(
            {BGP_REHEARSE, "run", config, "--library", library, "-o", output, "--log", folder / "log"});
        const pid_t upgrade = wait_for_pid();
        EXPECT_THAT(folder.names(), Contains(StartsWith(".bgp-rehearse")));
        command.send(signal);
        EXPECT_EQ(command.wait().signal, signal);
        EXPECT_TRUE(goes_away(upgrade));
        EXPECT_EQ(content_of(output), "old");
        EXPECT_FALSE(fs::exists(folder / "log"));
        expect_no_temporary();
    }
}

TEST_F(RehearseOutput, KillOfTheCommand_EndsTheUpgradeAndLeavesTheOldFile)
{
    folder.file("out.xml", "old");
    RunningCommand command({BGP_REHEARSE, "run", config, "--library", hanging_library(), "-o", output});
    const pid_t upgrade = wait_for_pid();
    command.send(SIGKILL);
    EXPECT_EQ(command.wait().signal, SIGKILL);
    EXPECT_TRUE(goes_away(upgrade));
    EXPECT_EQ(content_of(output), "old");
}

TEST_F(RehearseOutput, FileTooBig_IsToldAndLeavesTheOldFile)
{
    folder.file("out.xml", "old");
    const std::string library = fake_library(folder, R"(
        for (unsigned i = 1; i <= 4000; ++i) maapi_create(maapi, th, "/router/bgp{%u}", i);
        return 0;)");
    // Files may have 64 KiB here, which the report needs less of than the output.
    const CommandResult result = run_command({"/bin/sh", "-c", "trap '' XFSZ; ulimit -f 128; exec \"$0\" \"$@\"",
                                              BGP_REHEARSE, "run", config, "--library", library, "-o", output});
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.err, HasSubstr(output + " could not be written"));
    EXPECT_THAT(result.out, HasSubstr("\nVerdict: "));
    EXPECT_EQ(content_of(output), "old");
    expect_no_temporary();
}

TEST_F(RehearseOutput, StandardOutputThatIsFull_IsTold)
{
    const CommandResult result = run_command({"/bin/sh", "-c", "exec \"$0\" \"$@\" >/dev/full", BGP_REHEARSE, "run",
                                              config, "--library", fake_library(folder, "return 0;")});
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.err, HasSubstr("standard output"));
}

TEST_F(RehearseOutput, StandardOutputThatIsClosed_DoesNotSpillIntoTheFiles)
{
    const CommandResult result = run_command({"/bin/sh", "-c", "exec \"$0\" \"$@\" >&-", BGP_REHEARSE, "run", config,
                                              "--library", fake_library(folder, kCreate), "-o", output});
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(content_of(output), StartsWith("<?xml"));
    EXPECT_THAT(content_of(output), Not(HasSubstr("Rehearsal")));
}

TEST_F(RehearseOutput, ResultThatIsNotValid_IsNotWritten)
{
    // A control character has no place in XML.
    const std::string library =
        fake_library(folder, R"(return maapi_create(maapi, th, "/prefix-list{%s}", "a\001b");)");
    EXPECT_EQ(rehearse({"run", config, "--library", library}).status, 0);
    folder.file("out.xml", "old");
    const CommandResult result = rehearse({"run", config, "--library", library, "--commit-check", "-o", output});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.out, HasSubstr("the result is not valid"));
    EXPECT_THAT(result.err, HasSubstr("is not written"));
    EXPECT_EQ(content_of(output), "old");
}

TEST_F(RehearseOutput, ValidResult_IsToldAndWritten)
{
    const CommandResult result =
        rehearse({"run", config, "--library", fake_library(folder, kCreate), "--commit-check", "-o", output});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("  check      the result is valid\n"));
    EXPECT_TRUE(fs::exists(output));
}

}  // namespace
}  // namespace bgp_test
