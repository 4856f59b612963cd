// Whole upgrades, one folder each: why.txt says what the scenario shows, stored.xml is the configuration before the
// upgrade, changes.txt and log.txt are what update() must change and say, whole and in order.
//
// A line of log.txt stands between quotes, a line end in it as \n; {error} stands for any text of confd_lasterr().
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "bgp_update/update.h"
#include "support/change_lines.h"
#include "support/text_lines.h"
#include "support/update_fixture.h"

namespace {

namespace fs = std::filesystem;

constexpr char kAnyError[] = "{error}";

std::vector<fs::path> scenarios()
{
    std::vector<fs::path> folders;
    for (const fs::directory_entry& entry : fs::directory_iterator(BGP_SOURCE_DIR "/tests/scenarios")) {
        if (entry.is_directory()) {
            folders.push_back(entry.path());
        }
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

std::string text_of(const fs::path& file)
{
    std::ifstream stream(file);
    EXPECT_TRUE(stream) << file << " cannot be read: a scenario has why.txt, stored.xml, changes.txt and log.txt";
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

bool matches(const std::string& actual, const std::string& expected)
{
    const std::size_t any = expected.find(kAnyError);
    if (any == std::string::npos) {
        return actual == expected;
    }
    const std::string before = expected.substr(0, any);
    const std::string after = expected.substr(any + sizeof kAnyError - 1);
    return actual.size() >= before.size() + after.size() && actual.compare(0, before.size(), before) == 0 &&
           actual.compare(actual.size() - after.size(), after.size(), after) == 0;
}

// The log, each line that an expected line with {error} stands for replaced by that line.
std::string with_any_error(const std::string& log, const std::string& expected)
{
    std::vector<std::string> lines = bgp_test::lines_of(log);
    const std::vector<std::string> patterns = bgp_test::lines_of(expected);
    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        text += (i < patterns.size() && matches(lines[i], patterns[i]) ? patterns[i] : lines[i]) + "\n";
    }
    return text;
}

class Scenario : public testing::TestWithParam<fs::path> {};

TEST_P(Scenario, ChangesAndSaysWhatItsFolderHolds)
{
    const fs::path& folder = GetParam();
    bgp_platform::Device device;
    device.load_file((folder / "stored.xml").string());
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    EXPECT_EQ(update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket), 0);

    const std::string why = text_of(folder / "why.txt");
    std::string changes;
    for (const std::string& line : bgp_test::change_lines(device)) {
        changes += line + "\n";
    }
    EXPECT_EQ(changes, text_of(folder / "changes.txt")) << why;
    const std::string log = text_of(folder / "log.txt");
    EXPECT_EQ(with_any_error(bgp_test::listing(device.log()), log), log) << why;
    EXPECT_TRUE(device.open_things().none()) << why;
}

std::string name_of(const testing::TestParamInfo<fs::path>& scenario)
{
    std::string name = scenario.param.filename().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Upgrade, Scenario, testing::ValuesIn(scenarios()), name_of);

}  // namespace
