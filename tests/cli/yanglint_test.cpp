// What an independent reader says: yanglint accepts the modules without a word, the example configurations, and what the
// command writes from them.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;

const std::string kYang = BGP_SOURCE_DIR "/yang";

// The files of a folder with that ending, in order.
std::vector<std::string> files(const std::string& folder, const std::string& ending)
{
    std::vector<std::string> paths;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ending) {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

CommandResult validate(const std::string& configuration)
{
    return run_command({"sh", BGP_SOURCE_DIR "/tests/scripts/validate_config.sh", kYang, configuration});
}

TEST(Yanglint, Modules_AreAcceptedWithoutAWord)
{
    std::vector<std::string> command = {"yanglint", "-p", kYang};
    const std::vector<std::string> modules = files(kYang, ".yang");
    ASSERT_EQ(modules.size(), 11U);
    command.insert(command.end(), modules.begin(), modules.end());
    const CommandResult lint = run_command(command);
    EXPECT_EQ(lint.status, 0);
    EXPECT_EQ(lint.out + lint.err, "");
}

TEST(Yanglint, ConfigurationWithAnUnknownNode_IsRefused)
{
    const ScratchFolder folder;
    const std::string file = folder.file("wrong.xml",
                                         "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n"
                                         "<router xmlns=\"urn:bgp-update:yang:router\"><ospf/></router>\n</config>\n");
    EXPECT_EQ(validate(file).status, 1);
}

class YanglintExample : public testing::TestWithParam<std::string> {};

TEST_P(YanglintExample, StoredAndUpgradedConfigurations_AreAccepted)
{
    const CommandResult stored = validate(GetParam());
    EXPECT_EQ(stored.status, 0) << stored.out << stored.err;

    const ScratchFolder folder;
    const std::string upgraded = folder / "upgraded.xml";
    const CommandResult upgrade = run_command({BGP_REHEARSE, "run", GetParam(), "-o", upgraded, "--fail-on", "never"});
    ASSERT_EQ(upgrade.status, 0) << upgrade.err;
    const CommandResult result = validate(upgraded);
    EXPECT_EQ(result.status, 0) << result.out << result.err;
}

INSTANTIATE_TEST_SUITE_P(Examples, YanglintExample, testing::ValuesIn(files(BGP_SOURCE_DIR "/examples", ".xml")),
                         [](const auto& example) {
                             std::string name = fs::path(example.param).stem();
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace bgp_test
