// Each example configuration, upgraded by the library of this build: the log, the changes and the result as they are
// kept in tests/cli/expected (docs/rehearse.md tells how they are made anew).
#include <gmock/gmock.h>

#include <filesystem>

#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> example_names()
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(BGP_SOURCE_DIR "/examples")) {
        if (entry.path().extension() == ".xml") {
            names.push_back(entry.path().stem());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string from(const std::string& text, const std::string& start)
{
    const std::size_t at = text.find(start);
    return at == std::string::npos ? "no \"" + start + "\" in: " + text : text.substr(at);
}

class RehearseExample : public testing::TestWithParam<std::string> {
protected:
    ScratchFolder folder;
    const std::string config = BGP_SOURCE_DIR "/examples/" + GetParam() + ".xml";
    const std::string expected = BGP_SOURCE_DIR "/tests/cli/expected/" + GetParam();
};

TEST_P(RehearseExample, Upgrade_GivesLogChangesAndResultAsKept)
{
    const CommandResult result =
        rehearse({"run", config, "-o", folder / "out.xml", "--log", folder / "log", "--commit-check", "--strict"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(content_of(folder / "log"), content_of(expected + ".log"));
    EXPECT_EQ(from(result.out, "Changes"), content_of(expected + ".changes"));
    EXPECT_EQ(content_of(folder / "out.xml"), content_of(expected + ".xml"));
}

TEST_P(RehearseExample, UpgradeOfTheResult_ChangesNothing)
{
    const CommandResult result = rehearse({"run", expected + ".xml", "-o", folder / "again.xml"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(from(result.out, "Changes"), "Changes: none\n");
    EXPECT_EQ(content_of(folder / "again.xml"), content_of(expected + ".xml"));
}

INSTANTIATE_TEST_SUITE_P(Examples, RehearseExample, testing::ValuesIn(example_names()), [](const auto& example) {
    std::string name = example.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

}  // namespace
}  // namespace bgp_test
