// Each example configuration, upgraded by the library of this build: the log, the changes and the result as they are
// kept in tests/cli/expected (docs/rehearse.md tells how they are made anew).
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

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
        rehearse({"run", config, "-o", folder / "out.xml", "--log", folder / "log", "--commit-check"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(content_of(folder / "log"), content_of(expected + ".log"));
    EXPECT_EQ(from(result.out, "Changes"), content_of(expected + ".changes"));
    EXPECT_EQ(content_of(folder / "out.xml"), content_of(expected + ".xml"));
}

// The neighbour rows that an upgrade adds are there to be given their drop-warn setting only by the next one.
TEST_P(RehearseExample, UpgradeOfTheResult_SetsDropWarnOfTheRowsThatAreNewAndNothingElse)
{
    const CommandResult again = rehearse({"run", expected + ".xml", "-o", folder / "again.xml", "--json"});
    ASSERT_EQ(again.status, 0) << again.err;
    const nlohmann::json report = nlohmann::json::parse(again.out);
    const nlohmann::json expected_leaves = {{"bgpPeerAfiSafiConfigDropWarn", {{"before", nullptr}, {"after", "warn"}}}};
    for (const nlohmann::json& change : report["changes"]) {
        EXPECT_EQ(change["change"], "changed") << change;
        EXPECT_EQ(change["leaves"], expected_leaves) << change;
    }
    const CommandResult third = rehearse({"run", folder / "again.xml"});
    EXPECT_EQ(from(third.out, "Changes"), "Changes: none\n");
}

INSTANTIATE_TEST_SUITE_P(Examples, RehearseExample, testing::ValuesIn(example_names()), [](const auto& example) {
    std::string name = example.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

}  // namespace
}  // namespace bgp_test
