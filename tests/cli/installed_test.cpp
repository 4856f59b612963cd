// What `cmake --install` puts in place: those files and no others, and a command that runs wherever the folder lies.
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;

// The platform's library that the loader takes for an executable or a library.
fs::path platform_of(const fs::path& file)
{
    const std::string told = run_command({"ldd", file}).out;
    std::smatch found;
    std::regex_search(told, found, std::regex("libbgp_platform\\.so => (.+) \\(0x"));
    return fs::path(found.empty() ? told : found[1].str()).lexically_normal();
}

class Installed : public testing::Test {
protected:
    void SetUp() override
    {
        fs::permissions(folder_.path(), fs::perms::others_read | fs::perms::others_exec, fs::perm_options::add);
        const CommandResult done = run_command({BGP_CMAKE, "--install", BGP_BUILD_DIR, "--prefix", prefix_});
        ASSERT_EQ(done.status, 0) << done.out << done.err;
    }

    void move(const std::string& to)
    {
        fs::create_directories(fs::path(folder_ / to).parent_path());
        fs::rename(prefix_, folder_ / to);
        prefix_ = folder_ / to;
    }

    // lib/ has one folder, named for the machine, and that has one for the command.
    fs::path libraries() const
    {
        const fs::directory_iterator entries(prefix_ / "lib");
        const auto folder =
            std::find_if(fs::begin(entries), fs::end(entries), [](const auto& e) { return e.is_directory(); });
        return folder == fs::end(entries) ? "no folder in lib/" : folder->path() / "bgp-rehearse";
    }

    // Each file below the prefix, in order; TRIPLET stands for the machine's name.
    std::vector<std::string> files() const
    {
        const std::string triplet = libraries().parent_path().filename();
        std::vector<std::string> files;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(prefix_)) {
            std::string name = entry.path().lexically_relative(prefix_);
            if (entry.is_directory()) {
                continue;
            }
            if (const std::size_t at = name.find(triplet); at != std::string::npos) {
                name.replace(at, triplet.size(), "TRIPLET");
            }
            files.push_back(name);
        }
        std::sort(files.begin(), files.end());
        return files;
    }

    // `before` is what the command is to be run by.
    void expectRunsWithItsOwnLibraries(std::vector<std::string> before = {},
                                       const std::string& name = "bin/bgp-rehearse")
    {
        const std::string example = prefix_ / "share/doc/bgp-rehearse/examples/edge-router.xml";
        for (const std::string& word :
             {(prefix_ / name).string(), std::string("run"), example, std::string("--json")}) {
            before.push_back(word);
        }
        const CommandResult result = run_command(before);
        ASSERT_EQ(result.status, 0) << result.err;
        const nlohmann::json report = nlohmann::json::parse(result.out);
        EXPECT_EQ(report["verdict"], "REVIEW");
        EXPECT_EQ(report["inputs"]["library"]["path"], (libraries() / "libbgp_update.so").string());
        EXPECT_EQ(platform_of(prefix_ / "bin/bgp-rehearse"), libraries() / "libbgp_platform.so");
        EXPECT_EQ(platform_of(libraries() / "libbgp_update.so"), libraries() / "libbgp_platform.so");
    }

    ScratchFolder folder_;
    fs::path prefix_ = folder_ / "prefix";
};

TEST_F(Installed, AreTheseFilesAndNoOthers)
{
    EXPECT_THAT(files(), testing::ElementsAreArray({
                             "bin/bgp-rehearse",
                             "lib/TRIPLET/bgp-rehearse/libbgp_platform.so",
                             "lib/TRIPLET/bgp-rehearse/libbgp_update.so",
                             "lib/TRIPLET/bgp-rehearse/libbgp_update.so.0",
                             "lib/TRIPLET/bgp-rehearse/libbgp_update.so.0.1.0",
                             "share/bash-completion/completions/bgp-rehearse",
                             "share/bgp-rehearse/fleet/parallel",
                             "share/bgp-rehearse/fleet/shards.sh",
                             "share/bgp-rehearse/fleet/slurm",
                             "share/bgp-rehearse/yang/DC-AALL-MIB.yang",
                             "share/bgp-rehearse/yang/DC-BGP-MIB.yang",
                             "share/bgp-rehearse/yang/DC-OSPF-MIB.yang",
                             "share/bgp-rehearse/yang/DC-RTM-MIB.yang",
                             "share/bgp-rehearse/yang/MPLS-VPN-MIB.yang",
                             "share/bgp-rehearse/yang/bgp-internal.yang",
                             "share/bgp-rehearse/yang/bgp-update-types.yang",
                             "share/bgp-rehearse/yang/metacli-internal.yang",
                             "share/bgp-rehearse/yang/prefix-list.yang",
                             "share/bgp-rehearse/yang/redist-protocol.yang",
                             "share/bgp-rehearse/yang/router.yang",
                             "share/doc/bgp-rehearse/examples/README.md",
                             "share/doc/bgp-rehearse/examples/edge-router.xml",
                             "share/doc/bgp-rehearse/examples/provider-edge.xml",
                             "share/doc/bgp-rehearse/examples/upgraded.xml",
                             "share/doc/bgp-rehearse/fleet.md",
                             "share/doc/bgp-rehearse/fleet.schema.json",
                             "share/doc/bgp-rehearse/generate.md",
                             "share/doc/bgp-rehearse/rehearse.md",
                             "share/doc/bgp-rehearse/report.schema.json",
                             "share/doc/bgp-rehearse/sweep.md",
                             "share/fish/vendor_completions.d/bgp-rehearse.fish",
                             "share/man/man1/bgp-rehearse-findings.1",
                             "share/man/man1/bgp-rehearse-fleet-merge.1",
                             "share/man/man1/bgp-rehearse-fleet-plan.1",
                             "share/man/man1/bgp-rehearse-fleet-report.1",
                             "share/man/man1/bgp-rehearse-fleet-run.1",
                             "share/man/man1/bgp-rehearse-fleet-show.1",
                             "share/man/man1/bgp-rehearse-fleet-work.1",
                             "share/man/man1/bgp-rehearse-fleet.1",
                             "share/man/man1/bgp-rehearse-generate.1",
                             "share/man/man1/bgp-rehearse-run.1",
                             "share/man/man1/bgp-rehearse-sweep.1",
                             "share/man/man1/bgp-rehearse.1",
                             "share/zsh/site-functions/_bgp-rehearse",
                         }));
}

TEST_F(Installed, MovedAsAWhole_RunsWithItsOwnLibraries)
{
    move("another place/deep/down");
    expectRunsWithItsOwnLibraries();
}

TEST_F(Installed, CalledByALink_RunsWithItsOwnLibraries)
{
    fs::create_symlink(prefix_ / "bin/bgp-rehearse", prefix_ / "link");
    expectRunsWithItsOwnLibraries({}, "link");
}

// A library of a device's software may lie where the same prefix has libraries for everyone.
TEST_F(Installed, BesideADevicesLibrary_RunsWithItsOwnLibraries)
{
    std::ofstream(prefix_ / "lib/libbgp_update.so") << "built for a device";
    expectRunsWithItsOwnLibraries();
}

TEST_F(Installed, AnotherUser_RunsIt)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    expectRunsWithItsOwnLibraries({"setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups"});
}

// Where this process may mount, by a mount that refuses writing, even root's; else by permissions.
TEST_F(Installed, ReadOnly_Runs)
{
    const std::string mount =
        "mount --bind \"$0\" \"$0\" && mount -o remount,bind,ro \"$0\" && ! touch \"$0/made\" && "
        "exec \"$@\"";
    std::vector<std::string> mounted = {"unshare", "--mount", "sh", "-c", mount, prefix_};
    if (geteuid() != 0) {
        mounted.insert(mounted.begin() + 1, "--map-root-user");
    }
    std::vector<std::string> attempt = mounted;
    attempt.emplace_back("true");
    if (run_command(attempt).status == 0) {
        expectRunsWithItsOwnLibraries(mounted);
        return;
    }
    std::cout << "READ-ONLY BY PERMISSIONS: this machine lets no test mount\n";
    ASSERT_EQ(run_command({"chmod", "-R", "a-w", prefix_}).status, 0);
    if (geteuid() == 0) {
        expectRunsWithItsOwnLibraries({"setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups"});
    } else {
        expectRunsWithItsOwnLibraries();
    }
    EXPECT_EQ(run_command({"chmod", "-R", "u+w", prefix_}).status, 0);
}

}  // namespace
}  // namespace bgp_test
