// The kept upgrades: each folder of contract/upgrades/ holds a stored configuration, what its upgrade logs, changes and
// results in, whole, and one sentence why it is kept. tools/dev/renew-upgrades makes them anew.
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "bgp_update/update.h"
#include "device.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;

// By name, so that a folder that is added is run without anything being told of it.
std::set<fs::path> kept_upgrades()
{
    const fs::directory_iterator folders(BGP_SOURCE_DIR "/contract/upgrades");
    return {fs::begin(folders), fs::end(folders)};
}

std::map<std::string, std::string> contents_of(const fs::path& folder)
{
    std::map<std::string, std::string> contents;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        contents[entry.path().filename()] = content_of(entry.path());
    }
    return contents;
}

std::string between(const std::string& text, const std::string& start, const std::string& end)
{
    const std::size_t at = text.find(start);
    return at == std::string::npos ? "no \"" + start + "\" in: " + text : text.substr(at, text.rfind(end) - at);
}

// The word behind "Verdict: ".
std::string verdict_in(const std::string& text)
{
    const std::string label = "Verdict: ";
    const std::size_t at = text.rfind(label);
    return at == std::string::npos
               ? std::string("none")
               : text.substr(at + label.size(), text.find_first_of(".:\n", at + label.size()) - at - label.size());
}

// The one that this process has loaded.
std::string library()
{
    Dl_info info{};
    EXPECT_NE(dladdr(dlsym(RTLD_DEFAULT, "update"), &info), 0);
    return info.dli_fname;
}

TEST(KeptUpgrades, Rehearsal_GivesTheFilesOfTheFolder)
{
    for (const fs::path& folder : kept_upgrades()) {
        const std::string stored = folder / "stored.xml";
        const std::string why = content_of(folder / "why.txt");
        SCOPED_TRACE(folder.filename().string() + ": " + why);
        const ScratchFolder made;
        const CommandResult result =
            rehearse({"run", stored, "--library", library(), "-o", made / "upgraded.xml", "--log", made / "log",
                      "--commit-check", "--changes", "--fail-on", "never"});
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(verdict_in(result.out), verdict_in(why));
        made.file("changes", between(result.out, "Changes", "Verdict: "));
        made.file("stored.xml", content_of(stored));
        made.file("why.txt", why);
        const std::map<std::string, std::string> kept = contents_of(folder);
        for (const auto& [name, content] : contents_of(made.path())) {
            ASSERT_EQ(kept.count(name), 1U) << name << " is missing";
            EXPECT_EQ(content, kept.at(name)) << name;
        }
        EXPECT_EQ(kept.size(), 5U) << "files that no upgrade makes";
    }
}

TEST(KeptUpgrades, Upgrade_LeavesNothingOpen)
{
    for (const fs::path& folder : kept_upgrades()) {
        SCOPED_TRACE(folder);
        bgp_platform::Device device;
        device.load_file((folder / "stored.xml").string());
        const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
        EXPECT_EQ(update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket), 0);
        EXPECT_TRUE(device.open_things().none());
    }
}

// The neighbour rows that an upgrade adds are there to be given their drop-warn setting only by the next one.
TEST(KeptUpgrades, UpgradeOfTheResult_SetsDropWarnOfTheRowsThatAreNewAndNothingElse)
{
    const nlohmann::json drop_warn = {{{"name", "bgpPeerAfiSafiConfigDropWarn"},
                                       {"before", nullptr},
                                       {"after", "warn"},
                                       {"step", "update_neigh_config_drop_warn"}}};
    for (const fs::path& folder : kept_upgrades()) {
        SCOPED_TRACE(folder);
        const ScratchFolder made;
        const CommandResult again =
            rehearse({"run", folder / "upgraded.xml", "-o", made / "again.xml", "--json", "--fail-on", "never"});
        ASSERT_EQ(again.status, 0) << again.err;
        const nlohmann::json report = nlohmann::json::parse(again.out);
        for (const nlohmann::json& change : report["changes"]) {
            EXPECT_EQ(change["fate"], "changed") << change;
            EXPECT_EQ(change["leaves"], drop_warn) << change;
        }
        const CommandResult third = rehearse({"run", made / "again.xml", "--changes"});
        EXPECT_EQ(between(third.out, "Changes", "Verdict: "), "Changes\n  none\n");
    }
}

TEST(KeptUpgrades, EachExample_IsTheStoredConfigurationOfOne)
{
    std::set<fs::path> stored;
    for (const fs::path& folder : kept_upgrades()) {
        stored.insert(fs::canonical(folder / "stored.xml"));
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(BGP_SOURCE_DIR "/examples")) {
        if (entry.path().extension() == ".xml") {
            EXPECT_EQ(stored.count(fs::canonical(entry.path())), 1U) << entry.path();
        }
    }
}

}  // namespace
}  // namespace bgp_test
