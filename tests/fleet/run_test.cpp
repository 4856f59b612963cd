// `fleet run` on this machine: it may be ended at any moment, and comes to the same database when it is run again.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <thread>

#include "cli/fake_library.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class FleetRun : public testing::Test {
protected:
    FleetRun()
    {
        fs::create_directory(folder_ / "in");
        const std::string whole = content_of(small_configuration(folder_));
        for (int i = 0; i < kRouters; ++i) {
            std::string router = whole;
            router.replace(router.find("192.0.2.1<"), 10, fmt::format("192.0.2.{}<", i + 1));
            folder_.file(fmt::format("in/r{}.xml", i), router);
        }
        folder_.file("in/cut.xml", whole.substr(0, whole.size() / 2));
    }

    // One that takes some time, notes each router that it is called for, and crashes on some.
    std::string library() const
    {
        return fake_library(folder_, R"(
            std::ofstream(")" + rehearsed_file() +
                                         R"(", std::ios::app) << 'x' << std::flush;
            confd_value_t id;
            maapi_get_elem(maapi, th, &id, "/router/bgp{65010}/router-id");
            usleep(2000);
            if (id.val.ip.s_addr % 256 == 7 || ntohl(id.val.ip.s_addr) % 16 == 7) { abort(); }
            return 0;)");
    }
    std::string rehearsed_file() const { return folder_ / "rehearsed"; }

    // How often the library was called since this was asked last.
    std::size_t rehearsed() const
    {
        const std::size_t size = fs::exists(rehearsed_file()) ? fs::file_size(rehearsed_file()) : 0;
        fs::remove(rehearsed_file());
        return size;
    }

    std::vector<std::string> arguments(const std::string& library, const std::string& database,
                                       const std::vector<std::string>& more = {"--jobs", "2"}) const
    {
        std::vector<std::string> all = {"fleet", "run", folder_ / "in", "-o", folder_ / database, "--library", library};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    void run(const std::string& library, const std::string& database,
             const std::vector<std::string>& more = {"--jobs", "2"}) const
    {
        const CommandResult result = rehearse(arguments(library, database, more));
        EXPECT_EQ(result.status, 0) << result.err;
    }

    std::string bytes(const std::string& database) const { return content_of(folder_ / database); }

    // The files of the only plan that is kept beside a database.
    std::string plan_folder(const std::string& database) const
    {
        for (const auto& entry : fs::directory_iterator(folder_ / (database + ".parts"))) {
            if (entry.is_directory()) {
                return entry.path();
            }
        }
        throw std::runtime_error("no plan is kept");
    }

    static std::vector<std::string> names_in(const std::string& folder)
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    static constexpr int kRouters = 60;
    ScratchFolder folder_;
};

TEST_F(FleetRun, OfOneJobOrMany_IsTheSameDatabaseAsPlanWorkAndMerge)
{
    const std::string library = this->library();
    run(library, "two.db");
    run(library, "five.db", {"--jobs", "5"});
    ASSERT_EQ(rehearse({"fleet", "plan", folder_ / "in", "-o", folder_ / "plan", "--library", library, "--shards", "1"})
                  .status,
              0);
    ASSERT_EQ(rehearse({"fleet", "work", folder_ / "plan", "--shard", "0", "-o", folder_ / "part"}).status, 0);
    ASSERT_EQ(rehearse({"fleet", "merge", folder_ / "plan", folder_ / "part", "-o", folder_ / "one.db"}).status, 0);
    EXPECT_EQ(bytes("two.db"), bytes("one.db"));
    EXPECT_EQ(bytes("five.db"), bytes("one.db"));
}

TEST_F(FleetRun, EndedAtAnyMoment_ComesToTheSameDatabaseWhenRunAgain)
{
    const std::string library = this->library();
    const auto began = std::chrono::steady_clock::now();
    run(library, "whole.db");
    const auto took = std::chrono::steady_clock::now() - began;
    const std::string whole = bytes("whole.db");
    std::size_t ended = 0;
    constexpr int kMoments = 20;
    for (int moment = 0; moment < kMoments; ++moment) {
        SCOPED_TRACE(moment);
        const int signal = std::array{SIGKILL, SIGINT, SIGTERM}[static_cast<std::size_t>(moment) % 3];
        RunningCommand running([&] {
            std::vector<std::string> all = arguments(library, "killed.db");
            all.insert(all.begin(), BGP_REHEARSE);
            return all;
        }());
        std::this_thread::sleep_for(took * moment / kMoments);
        running.send(signal);
        const CommandResult result = running.wait();
        ASSERT_THAT(result.signal, AnyOf(0, signal)) << result.err;
        ended += result.signal != 0 ? 1 : 0;
        EXPECT_TRUE(!fs::exists(folder_ / "killed.db") || bytes("killed.db") == whole);
        run(library, "killed.db");
        EXPECT_EQ(bytes("killed.db"), whole);
        EXPECT_THAT(names_in(plan_folder("killed.db")), Each(Not(StartsWith("."))));
        fs::remove_all(folder_ / "killed.db.parts");
        fs::remove(folder_ / "killed.db");
    }
    EXPECT_GE(ended, 10U) << "most moments were too late";
}

TEST_F(FleetRun, RunAgain_RehearsesOnlyWhatIsNew)
{
    const std::string library = this->library();
    run(library, "f.db");
    EXPECT_EQ(rehearsed(), kRouters);
    const std::string before = bytes("f.db");
    run(library, "f.db", {"--jobs", "3"});
    EXPECT_EQ(rehearsed(), 0U);
    EXPECT_EQ(bytes("f.db"), before);

    fs::rename(folder_ / "in/r3.xml", folder_ / "in/a-new-name.xml");
    fs::remove(folder_ / "in/r4.xml");
    std::string changed = content_of(folder_ / "in/r5.xml");
    folder_.file("in/r5.xml", changed + "\n");
    run(library, "f.db");
    EXPECT_EQ(rehearsed(), 1U);
    run(library, "anew.db");
    EXPECT_EQ(bytes("f.db"), bytes("anew.db"));
}

TEST_F(FleetRun, WithOtherOptionsFactsOrLibrary_RehearsesAnew)
{
    const std::string library = this->library();
    run(library, "f.db");
    EXPECT_EQ(rehearsed(), kRouters);
    run(library, "f.db", {"--user-profile", "7"});
    EXPECT_EQ(rehearsed(), kRouters);
    const std::string facts = folder_.file("facts.csv", "device,profile\nr3,9\nr4,9\n");
    run(library, "f.db");
    rehearsed();
    run(library, "f.db", {"--facts", facts});
    EXPECT_EQ(rehearsed(), 2U);
    fs::copy(library, folder_ / "libother.so");
    std::ofstream(folder_ / "libother.so", std::ios::app) << "another one";
    run(folder_ / "libother.so", "f.db");
    EXPECT_EQ(rehearsed(), kRouters);
}

TEST_F(FleetRun, PartThatIsCutMissingOrThereTwice_IsDoneAgain)
{
    const std::string library = this->library();
    run(library, "f.db");
    const std::string whole = bytes("f.db");
    const fs::path parts = plan_folder("f.db");
    fs::resize_file(parts / "0.part", fs::file_size(parts / "0.part") / 2);
    fs::remove(parts / "1.part");
    fs::copy_file(parts / "3.part", parts / "2.part", fs::copy_options::overwrite_existing);
    rehearsed();
    run(library, "f.db");
    EXPECT_GT(rehearsed(), 0U);
    EXPECT_EQ(bytes("f.db"), whole);
}

TEST_F(FleetRun, DiskThatIsFullAtAnyWrite_LeavesNoDatabaseAndNoHalfPart)
{
    const std::string library = this->library();
    run(library, "whole.db");
    const auto attack = [&](std::size_t at) {
        return std::vector<std::string>{"LD_PRELOAD=" BGP_FILE_ATTACK,
                                        "ASAN_OPTIONS=verify_asan_link_order=0",
                                        fmt::format("BGP_ATTACK_AT={}", at),
                                        "BGP_ATTACK_HOW=full",
                                        "BGP_ATTACK_ERRNO=28",
                                        "BGP_ATTACK_FOLDER=" + (folder_ / "full.db.parts"),
                                        "BGP_ATTACK_TRACE=" + (folder_ / "trace")};
    };
    std::size_t full = 0;
    for (std::size_t at = 1;; at += 3) {
        SCOPED_TRACE(at);
        fs::remove(folder_ / "trace");
        const CommandResult result = rehearse(arguments(library, "full.db"), attack(at));
        if (result.status == 0) {
            break;
        }
        const char call = content_of(folder_ / "trace").at(at - 1);
        if (call != 'r' && call != 'o') {
            ++full;
            EXPECT_THAT(result.status, AnyOf(5, call == 'c' ? 2 : 5)) << result.err;
            EXPECT_THAT(result.err, HasSubstr("No space left on device"));
        }
        EXPECT_FALSE(fs::exists(folder_ / "full.db"));
        fs::remove_all(folder_ / "full.db.parts");
    }
    EXPECT_GT(full, 5U);
    EXPECT_EQ(bytes("full.db"), bytes("whole.db"));
}

TEST_F(FleetRun, WhileAnotherIsAtWork_IsRefused)
{
    std::vector<std::string> slow = arguments(
        fake_library(folder_, "std::ofstream(\"" + rehearsed_file() + "\") << 'x'; sleep(60); return 0;"), "f.db");
    slow.insert(slow.begin(), BGP_REHEARSE);
    RunningCommand running(slow);
    while (!fs::exists(rehearsed_file())) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const CommandResult result = rehearse(arguments(BGP_UPDATE_LIBRARY, "f.db"));
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("another fleet run is at work on this database"));
    running.send(SIGTERM);
    EXPECT_EQ(running.wait().signal, SIGTERM);
}

}  // namespace
}  // namespace bgp_test
