// How the command behaves towards what its outputs are: a terminal, closed, full, or a pipe that nobody reads.
#include "base/terminal.h"

#include <gmock/gmock.h>
#include <sys/ioctl.h>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Terminal : public RehearseTest {
protected:
    const std::string idle = fake_library(folder, "return 0;");

    // What each command prints to standard output.
    const std::vector<std::string> printing = {"--help",
                                               "--version",
                                               "run --help",
                                               "generate --neighbors 5",
                                               "run " + config + " --library " + idle,
                                               "run " + config + " --json --library " + idle,
                                               "sweep " + config + " --jobs 1 --library " + idle};

    CommandResult shell(const std::string& script) const { return run_command({"/bin/sh", "-c", script}); }

    void expect_not_written(const CommandResult& result, const std::string& reason) const
    {
        EXPECT_EQ(result.status, 5);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, AllOf(StartsWith("bgp-rehearse: standard output"), EndsWith(reason + "\n")));
    }
};

TEST_F(Terminal, ClosedStandardOutput_IsStatusFiveWithAMessage)
{
    for (const std::string& arguments : printing) {
        SCOPED_TRACE(arguments);
        expect_not_written(shell("exec " BGP_REHEARSE " " + arguments + " >&-"), "Bad file descriptor");
    }
}

TEST_F(Terminal, FullStandardOutput_IsStatusFiveWithAMessage)
{
    for (const std::string& arguments : printing) {
        SCOPED_TRACE(arguments);
        expect_not_written(shell("exec " BGP_REHEARSE " " + arguments + " >/dev/full"), "No space left on device");
    }
}

TEST_F(Terminal, PipeThatNobodyReads_IsStatusFiveWithAMessageWhateverTheCallerIgnores)
{
    const std::string pipe = folder / "pipe";
    for (const std::string& arguments : printing) {
        for (const std::string ignore : {"", "trap '' PIPE; "}) {
            SCOPED_TRACE(ignore + arguments);
            expect_not_written(shell(ignore + "rm -f " + pipe + "; mkfifo " + pipe + "; exec 4<>" + pipe + " 5>" +
                                     pipe + " 4<&-; exec " BGP_REHEARSE " " + arguments + " >&5"),
                               "Broken pipe");
        }
    }
}

TEST_F(Terminal, StandardErrorThatTakesNothing_LeavesTheStatus)
{
    EXPECT_EQ(shell("exec " BGP_REHEARSE " run 2>/dev/full").status, 2);
    EXPECT_EQ(shell("exec " BGP_REHEARSE " run missing.xml 2>/dev/full").status, 2);
    EXPECT_EQ(shell("exec " BGP_REHEARSE " run missing.xml 2>&-").status, 2);
}

TEST_F(Terminal, BrokenPipeInTheLibrary_EndsItAsOnTheDevice)
{
    const std::string library = fake_library(
        folder, "int ends[2]; if (pipe(ends) == 0) { close(ends[0]); write(ends[1], \"x\", 1); } return 0;");
    EXPECT_THAT(rehearse({"run", config, "--library", library}).out, HasSubstr("did not return: SIGPIPE"));
}

TEST_F(Terminal, ColoursAsAsked_CountMoreThanWhatTheOutputIs)
{
    const std::vector<std::string> run = {"run", config, "--library", idle};
    const auto with = [&](const std::string& option) {
        std::vector<std::string> arguments = run;
        arguments.push_back(option);
        return rehearse(arguments, {"NO_COLOR=1"}).out;
    };
    EXPECT_THAT(with("--color=always"), HasSubstr("\033["));
    EXPECT_THAT(with("--color=never"), Not(HasSubstr("\033[")));
    EXPECT_THAT(with("--color=auto"), Not(HasSubstr("\033[")));
}

TEST_F(Terminal, LinesOnNoTerminal_HaveNoColumns)
{
    EXPECT_EXIT(
        {
            dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
            _exit(bgp_rehearse::line_columns() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

// Exits with the columns that lines have on a terminal of that width.
[[noreturn]] void exit_with_columns(unsigned short width, const char* environment)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    grantpt(terminal);
    unlockpt(terminal);
    dup2(open(ptsname(terminal), O_RDWR | O_NOCTTY), STDOUT_FILENO);
    winsize size{};
    size.ws_col = width;
    ioctl(STDOUT_FILENO, TIOCSWINSZ, &size);
    setenv("COLUMNS", environment, 1);
    _exit(static_cast<int>(bgp_rehearse::line_columns().value_or(0)));
}

TEST_F(Terminal, LinesOnATerminal_HaveItsColumns)
{
    EXPECT_EXIT(exit_with_columns(72, "50"), testing::ExitedWithCode(72), "");
    EXPECT_EXIT(exit_with_columns(0, "50"), testing::ExitedWithCode(50), "");
    EXPECT_EXIT(exit_with_columns(0, "50x"), testing::ExitedWithCode(100), "");
    EXPECT_EXIT(exit_with_columns(0, ""), testing::ExitedWithCode(100), "");
    EXPECT_EXIT(exit_with_columns(5, ""), testing::ExitedWithCode(20), "");
}

// On a terminal, that writes all it shows to a file: so a library can wait until something is shown.
class Progress : public RehearseTest {
protected:
    const std::string shown = folder / "shown";

    // A library whose update waits until the terminal shows the one text or, where it has by then, the other one; in
    // vain for half a minute.
    std::string waiting_library(const std::string& one, const std::string& other = "")
    {
        return fake_library(folder, R"(
            log("Update BGP VRF\n");
            cdb_num_instances(cdb, "/prefix-list");
            maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
            const auto shows = [](const char* text) {
                std::ifstream file(")" + shown +
                                        R"(");
                return std::string(std::istreambuf_iterator<char>(file), {}).find(text) != std::string::npos;
            };
            const char* const awaited = shows(")" +
                                        one + "\") ? \"" + other + "\" : \"" + one + R"(";
            for (int i = 0; i < 3000 && !shows(awaited); ++i) usleep(10000);
            return 0;)");
    }

    std::string on_terminal(const std::string& arguments) const
    {
        run_command({"script", "-q", "-f", "-c", BGP_REHEARSE " " + arguments, shown}, {"TERM=dumb"});
        return content_of(shown);
    }
};

TEST_F(Progress, LongUpgrade_ShowsItsStepAndCallsAndTakesTheLineAway)
{
    const std::string library = waiting_library("calls");
    EXPECT_THAT(on_terminal("run " + config + " --library " + library),
                HasSubstr("\rupgrading: update_vrf, 2 calls\033[K\r\033[KRehearsal of "));
}

TEST_F(Progress, LongSweep_ShowsItsRunsAndTakesTheLineAway)
{
    const std::string library = waiting_library("without failures", " runs");
    const std::string all = on_terminal("sweep " + config + " --jobs 1 --library " + library);
    EXPECT_THAT(all, HasSubstr("\rsweeping " + config + ": a run without failures\033[K"));
    EXPECT_THAT(all, testing::ContainsRegex("\rsweeping " + config + ": 0 of [1-9][0-9]* runs"));
    EXPECT_THAT(all, HasSubstr("\r\033[KFault sweep of "));
}

TEST_F(Progress, StandardErrorThatIsNoTerminal_ShowsNothing)
{
    const std::string library = fake_library(folder, "usleep(1300000); return 0;");
    EXPECT_EQ(rehearse({"run", config, "--library", library}).err, "");
}

}  // namespace
}  // namespace bgp_test
