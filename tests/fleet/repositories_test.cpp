// Inputs in git repositories: the files of the newest commit, as git has them.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <thread>

#include "fleet/plan/git_process.h"
#include "fleet/plan_fixture.h"
#include "support/run_command.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;
using bgp_rehearse::GitProcess;
using bgp_rehearse::PlanOptions;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

class Repositories : public PlanFixture {
protected:
    Repositories()
    {
        fs::create_directory(in_ / "r");
        git({"init", "-q"});
    }

    void git(std::vector<std::string> arguments) const
    {
        const std::vector<std::string> command = {
            "git", "-C", in_ / "r", "-c", "user.name=test", "-c", "user.email=test"};
        arguments.insert(arguments.begin(), command.begin(), command.end());
        const CommandResult result = run_command(arguments, {"HOME=" + in_.path(), "GIT_CONFIG_NOSYSTEM=1"});
        ASSERT_EQ(result.status, 0) << result.err;
    }

    void commit(const std::string& name, const std::string& content) const
    {
        in_.file("r/" + name, content);
        commit_all();
    }

    void commit_all() const
    {
        git({"add", "-A"});
        git({"commit", "-q", "-m", "backup"});
    }
};

TEST_F(Repositories, NewestCommit_GivesTheInputs)
{
    commit("edge.xml", "old");
    commit("core.xml", "core");
    commit("gone.xml", "gone");
    fs::remove(in_ / "r/gone.xml");
    commit("edge.xml", "new");
    in_.file("r/edge.xml", "not yet committed");
    planned({in_ / "r"});
    EXPECT_EQ(texts(), (Texts{{"r:edge.xml", "new"}, {"r:core.xml", "core"}}));
}

TEST_F(Repositories, BareRepository_IsReadLikeAnyOther)
{
    fs::create_directory(in_ / "r/site");
    commit("site/edge.xml", "edge");
    git({"clone", "-q", "--bare", ".", in_ / "bare.git"});
    planned({in_ / "bare.git"});
    EXPECT_EQ(texts(), (Texts{{"bare.git:site/edge.xml", "edge"}}));
}

TEST_F(Repositories, CommitBehindThePlan_ChangesNothing)
{
    commit("edge.xml", "planned");
    planned({in_ / "r"});
    commit("edge.xml", "later");
    EXPECT_EQ(texts(), (Texts{{"r:edge.xml", "planned"}}));
}

TEST_F(Repositories, HostileNames_ComeAsTheyAre)
{
    in_.file("r/new\nline\t\".xml", "line");
    in_.file("r/\xff.xml", "byte");
    in_.file("r/" + std::string(251, 'n') + ".xml", "long");
    commit_all();
    planned({in_ / "r"});
    EXPECT_EQ(texts(), (Texts{{"r:new\\x0aline\\x09\".xml", "line"},
                              {"r:\\xff.xml", "byte"},
                              {"r:" + std::string(251, 'n') + ".xml", "long"}}));
}

TEST_F(Repositories, LinksAndOtherNames_ArePassedOver)
{
    in_.file("r/README", "no");
    fs::create_symlink("/etc/passwd", in_ / "r/passwd.xml");
    commit("edge.xml", "edge");
    const bgp_rehearse::Plan plan = planned({in_ / "r", in_ / "r/"});
    EXPECT_EQ(texts(), (Texts{{"r:edge.xml", "edge"}}));
    EXPECT_THAT(plan.passed_over,
                ElementsAre(Pair("another name", 1), Pair("link in a repository", 1), Pair("reached twice", 1)));
}

TEST_F(Repositories, FileOfTooManyBytes_IsRefusedAndItsNeighboursAreNot)
{
    in_.file("r/a.xml", "a");
    in_.file("r/b.xml", std::string(3000, 'b'));
    commit("c.xml", "c");
    PlanOptions options;
    options.paths = {in_ / "r"};
    options.options.max_bytes = 2999;
    planned(options);
    EXPECT_EQ(texts(), (Texts{{"r:a.xml", "a"},
                              {"r:b.xml", "refused: it has more bytes than --max-bytes allows (2999)"},
                              {"r:c.xml", "c"}}));
}

TEST_F(Repositories, RepositoryThatIsGone_RefusesItsInputs)
{
    in_.file("r/a.xml", "a");
    commit("b.xml", "b");
    planned({in_ / "r"});
    fs::rename(in_ / "r", in_ / "s");
    for (const auto& [name, text] : texts()) {
        EXPECT_THAT(text, HasSubstr("refused: it cannot be read")) << name;
    }
}

// No signal for the broken connection ends this process. The system may close git's end a moment after git's last word.
TEST_F(Repositories, GitThatIsGone_IsToldWhenAsked)
{
    GitProcess gone(in_ / "nowhere", {"cat-file", "--batch"});
    ASSERT_EQ(gone.read_to('\n'), std::nullopt);
    bool told = false;
    for (int tries = 0; tries < 10000 && !told; ++tries) {
        told = !gone.send("HEAD\n");
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(told);
    EXPECT_THAT(gone.wait(), HasSubstr("nowhere"));
}

TEST_F(Repositories, EmptyRepository_MakesNoPlan)
{
    EXPECT_THAT(refusal_of({in_ / "r"}), HasSubstr("r: fatal: Not a valid object name HEAD; no plan is made"));
}

TEST_F(Repositories, MachineWithoutGit_IsTold)
{
    commit("edge.xml", "edge");
    const CommandResult result =
        rehearse({"fleet", "plan", in_ / "r", "-o", plan_file(), "--library", BGP_UPDATE_LIBRARY}, {"PATH=/nowhere"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("r: git is not installed here; install it"));
    EXPECT_THAT(out_.names(), ElementsAre());
}

// Where the environment would lead git elsewhere, as in a hook.
TEST_F(Repositories, EnvironmentOfGit_LeadsNowhereElse)
{
    commit("edge.xml", "edge");
    const CommandResult result =
        rehearse({"fleet", "plan", in_ / "r", "-o", plan_file(), "--library", BGP_UPDATE_LIBRARY},
                 {"GIT_DIR=/nowhere", "GIT_INDEX_FILE=/nowhere", "HOME=" + in_.path()});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(texts(), (Texts{{"r:edge.xml", "edge"}}));
}

}  // namespace
}  // namespace bgp_test
