// The files that the command writes, attacked at every call that touches them: it is killed there, or the call fails,
// does half its work, or is broken off by a signal. Each file is wholly old or wholly new, and a failure is told.
#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::AnyOf;
using testing::Each;
using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

constexpr char kOldOutput[] = "the old output";
constexpr char kOldLog[] = "the old log";

class OutputAttack : public RehearseTest {
protected:
    const std::string output = folder / "out.xml";
    const std::string log = folder / "upgrade.log";
    const ScratchFolder elsewhere;
    std::vector<std::string> arguments = {"run", config, "--library", BGP_SMALL_UPGRADE, "-o", output, "--log", log};
    std::string calls;  // a letter each, in order, of a run that is left alone
    std::string new_output;
    std::string new_log;

    CommandResult run(const std::string& how, std::size_t at, int error = 0)
    {
        for (const std::string& name : folder.names()) {
            if (name != "small.xml") {
                fs::remove(folder / name);
            }
        }
        folder.file("out.xml", kOldOutput);
        folder.file("upgrade.log", kOldLog);
        elsewhere.file("trace", "");
        return rehearse(arguments, {"LD_PRELOAD=" BGP_FILE_ATTACK, "ASAN_OPTIONS=verify_asan_link_order=0",
                                    "BGP_ATTACK_FOLDER=" + folder.path(), "BGP_ATTACK_TRACE=" + (elsewhere / "trace"),
                                    "BGP_ATTACK_AT=" + std::to_string(at), "BGP_ATTACK_HOW=" + how,
                                    "BGP_ATTACK_ERRNO=" + std::to_string(error)});
    }

    void run_undisturbed()
    {
        const CommandResult result = run("nothing", 0);
        ASSERT_EQ(result.status, 0) << result.err;
        calls = content_of(elsewhere / "trace");
        new_output = content_of(output);
        new_log = content_of(log);
        ASSERT_NE(new_output, kOldOutput);
    }

    // Attacks each call of one of these kinds in a run of its own, and hands over its number.
    void attack_each(const std::string& kinds, const std::string& how, int error,
                     const std::function<void(std::size_t, const CommandResult&)>& check)
    {
        for (std::size_t at = 1; at <= calls.size(); ++at) {
            if (kinds.find(calls[at - 1]) == std::string::npos) {
                continue;
            }
            SCOPED_TRACE(how + " at call " + std::to_string(at) + " of " + calls);
            check(at, run(how, at, error));
            EXPECT_EQ(content_of(config), content_of(small_configuration(elsewhere)));
            EXPECT_THAT(content_of(output), AnyOf(kOldOutput, new_output));
        }
    }

    // Whether the n-th rename comes before the call.
    bool renamed_before(std::size_t rename, std::size_t at) const
    {
        std::size_t place = std::string::npos;
        for (std::size_t i = 0; i < rename; ++i) {
            place = calls.find('m', place + 1);
        }
        return place != std::string::npos && place + 1 < at;
    }

    void expect_new_files(const CommandResult& result) const
    {
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(content_of(output), new_output);
        EXPECT_EQ(content_of(log), new_log);
        expect_no_temporary();
    }

    void expect_told(std::size_t at, const CommandResult& result, int error) const
    {
        EXPECT_THAT(result.status, AnyOf(2, 5));
        EXPECT_THAT(result.err, StartsWith("bgp-rehearse: "));
        EXPECT_THAT(result.err, HasSubstr(folder.path()));
        EXPECT_THAT(result.err, HasSubstr(std::strerror(error)));
        EXPECT_EQ(content_of(output), renamed_before(2, at) ? new_output : kOldOutput);
        expect_no_temporary();
    }

    void expect_no_temporary() const
    {
        EXPECT_THAT(folder.names(), Each(AnyOf("small.xml", "out.xml", "upgrade.log")));
    }
};

TEST_F(OutputAttack, UndisturbedRun_TouchesTheFilesInTheOrderTheAttacksRelyOn)
{
    run_undisturbed();
    // The configuration is read; both temporary files are made, the second at its second name; log lines, then the
    // output are written; the log is put in place, then the output: content to the disk, name, folder opened and to the
    // disk.
    EXPECT_THAT(calls, testing::MatchesRegex("orr+cccwww+smossmos"));
}

TEST_F(OutputAttack, CommandKilledAroundAnyCall_LeavesEachFileOldOrNew)
{
    run_undisturbed();
    for (const char* how : {"end-before", "end-after"}) {
        attack_each("ocrwsm", how, 0, [&](std::size_t at, const CommandResult& result) {
            EXPECT_EQ(result.signal, SIGKILL);
            const bool at_once = std::string(how) == "end-after" && calls[at - 1] == 'm';
            EXPECT_EQ(content_of(log), renamed_before(1, at + at_once) ? new_log : kOldLog);
            EXPECT_EQ(content_of(output), renamed_before(2, at + at_once) ? new_output : kOldOutput);
            EXPECT_THAT(folder.names(),
                        Each(AnyOf("small.xml", "out.xml", "upgrade.log", StartsWith(".bgp-rehearse-"))));
        });
    }
}

TEST_F(OutputAttack, UpgradeKilledAroundAnyWrite_KeepsTheOldOutputAndIsTold)
{
    run_undisturbed();
    for (const char* how : {"kill-before", "kill-after"}) {
        attack_each("w", how, 0, [&](std::size_t, const CommandResult& result) {
            EXPECT_THAT(result.status, AnyOf(1, 5));
            EXPECT_THAT(result.err, HasSubstr(output + " is not written"));
            EXPECT_EQ(content_of(output), kOldOutput);
            // An upgrade that ended keeps its log; one that returned, and could not write, has none.
            EXPECT_TRUE(content_of(log) == kOldLog || new_log.rfind(content_of(log), 0) == 0) << content_of(log);
            expect_no_temporary();
        });
    }
}

TEST_F(OutputAttack, CallThatASignalBreaksOff_IsMadeAgain)
{
    run_undisturbed();
    attack_each("ocrws", "fail", EINTR, [&](std::size_t, const CommandResult& result) { expect_new_files(result); });
}

TEST_F(OutputAttack, ShortReadOrWrite_IsCarriedOn)
{
    run_undisturbed();
    attack_each("rw", "short", 0, [&](std::size_t, const CommandResult& result) { expect_new_files(result); });
}

TEST_F(OutputAttack, DiskThatIsFullFromAnyCallOn_IsToldAndLeavesTheOldOutput)
{
    run_undisturbed();
    attack_each("cws", "full", ENOSPC,
                [&](std::size_t at, const CommandResult& result) { expect_told(at, result, ENOSPC); });
}

TEST_F(OutputAttack, CallThatFails_IsToldAndLeavesTheOldOutput)
{
    run_undisturbed();
    attack_each("crwsm", "fail", EIO,
                [&](std::size_t at, const CommandResult& result) { expect_told(at, result, EIO); });
}

TEST_F(OutputAttack, FolderThatTakesNoFiles_IsToldBeforeAnythingRuns)
{
    run_undisturbed();
    for (const int error : {EROFS, EACCES, EMFILE}) {
        attack_each("c", "fail", error, [&](std::size_t at, const CommandResult& result) {
            expect_told(at, result, error);
            EXPECT_EQ(result.status, 2);
            EXPECT_EQ(result.out, "");
            EXPECT_EQ(content_of(log), kOldLog);
        });
    }
}

TEST_F(OutputAttack, FileThatCannotBeReplaced_IsToldAndStays)
{
    run_undisturbed();
    for (const int error : {EACCES, EXDEV, EBUSY}) {
        attack_each("m", "fail", error,
                    [&](std::size_t at, const CommandResult& result) { expect_told(at, result, error); });
    }
}

TEST_F(OutputAttack, GeneratedFile_IsOldOrNewToo)
{
    arguments = {"generate", "--neighbors", "2", "-o", output};
    const CommandResult undisturbed = run("nothing", 0);
    ASSERT_EQ(undisturbed.status, 0) << undisturbed.err;
    calls = content_of(elsewhere / "trace");
    new_output = content_of(output);
    EXPECT_THAT(calls, testing::MatchesRegex("cw+smos"));
    attack_each("cwsm", "end-after", 0, [&](std::size_t at, const CommandResult& result) {
        EXPECT_EQ(result.signal, SIGKILL);
        EXPECT_EQ(content_of(output), at >= calls.find('m') + 1 ? new_output : kOldOutput);
    });
    attack_each("cws", "full", ENOSPC, [&](std::size_t at, const CommandResult& result) {
        EXPECT_THAT(result.status, AnyOf(2, 5));
        EXPECT_THAT(result.err, HasSubstr(std::strerror(ENOSPC)));
        EXPECT_EQ(content_of(output), renamed_before(1, at) ? new_output : kOldOutput);
        expect_no_temporary();
    });
    attack_each("cws", "fail", EINTR, [&](std::size_t, const CommandResult& result) {
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(content_of(output), new_output);
    });
}

}  // namespace
}  // namespace bgp_test
