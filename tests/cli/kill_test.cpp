// SIGKILL after every single call of the ConfD API, to the process of the upgrade and to the command: the output and the
// log are wholly old, or wholly what they were to become.
#include <gmock/gmock.h>

#include <filesystem>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::StartsWith;

class Kill : public RehearseTest {
protected:
    const std::string output = folder / "out.xml";
    const std::string log = folder / "upgrade.log";
    const ScratchFolder elsewhere;
    const std::string count = elsewhere / "count";

    CommandResult run(const std::string& whom, std::size_t after) const
    {
        for (const std::string& name : folder.names()) {
            std::filesystem::remove(folder / name);
        }
        folder.file("out.xml", "the old output");
        folder.file("upgrade.log", "the old log");
        return rehearse({"run", BGP_SOURCE_DIR "/examples/upgraded.xml", "--library", BGP_KILLING_UPGRADE, "-o", output,
                         "--log", log},
                        {"BGP_KILL_LIBRARY=" BGP_UPDATE_LIBRARY, "BGP_KILL_WHOM=" + whom, "BGP_KILL_COUNT=" + count,
                         "BGP_KILL_AFTER=" + std::to_string(after)});
    }

    std::size_t calls_of_an_upgrade() const
    {
        EXPECT_EQ(run("nobody", 0).status, 0);
        EXPECT_THAT(content_of(output), StartsWith("<?xml"));
        return std::stoul(content_of(count));
    }
};

TEST_F(Kill, OfTheUpgradeAfterEachCall_KeepsTheOldOutputAndTheLogSoFar)
{
    const std::size_t calls = calls_of_an_upgrade();
    const std::string whole_log = content_of(log);
    ASSERT_GE(calls, 50U);
    std::string earlier_log;
    for (std::size_t after = 0; after <= calls; ++after) {
        SCOPED_TRACE(after);
        const CommandResult result = run("upgrade", after);
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.err, HasSubstr("the upgrade ended in SIGKILL; " + output + " is not written"));
        EXPECT_EQ(content_of(output), "the old output");
        EXPECT_THAT(whole_log, StartsWith(content_of(log)));
        EXPECT_THAT(content_of(log), StartsWith(earlier_log));
        earlier_log = content_of(log);
        EXPECT_THAT(folder.names(), testing::ElementsAre("out.xml", "upgrade.log"));
    }
    EXPECT_THAT(earlier_log, HasSubstr("Update BGP VRF IPv6\n")) << "the step of the last call";
}

TEST_F(Kill, OfTheCommandAfterEachCall_KeepsBothOldFiles)
{
    const std::size_t calls = calls_of_an_upgrade();
    ASSERT_GE(calls, 50U);
    for (std::size_t after = 0; after <= calls; ++after) {
        SCOPED_TRACE(after);
        EXPECT_EQ(run("command", after).signal, SIGKILL);
        EXPECT_EQ(content_of(output), "the old output");
        EXPECT_EQ(content_of(log), "the old log");
        EXPECT_THAT(folder.names(), Each(testing::AnyOf("out.xml", "upgrade.log", StartsWith(".bgp-rehearse-"))));
    }
}

}  // namespace
}  // namespace bgp_test
