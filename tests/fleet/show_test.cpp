// bgp-rehearse fleet show: the routers of a question, and one router with the command that makes its full report.
#include "fleet/report/show.h"

#include <gmock/gmock.h>

#include "fleet/report/shell_words.h"
#include "made_up_fleet.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using bgp_rehearse::shell_word;
using bgp_rehearse::shell_words;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

MadeUpFleet fleet()
{
    RouterResult partly = safe_router("d/edge-4.xml");
    partly.input_class = "partly";
    partly.steps[1].outcome = "nothing to do";
    return MadeUpFleet({refused_router("a/core-1.xml"), router_with("b/edge-2.xml", "REVIEW", {kLeft}),
                        router_with("c/edge-3.xml", "STOP", {kLost, kLeftUnused}), partly,
                        safe_router("e/edge-3.xml")});
}

class Show : public testing::Test {
protected:
    CommandResult show(std::vector<std::string> arguments) const
    {
        const std::vector<std::string> start = {"fleet", "show", database_};
        arguments.insert(arguments.begin(), start.begin(), start.end());
        return rehearse(arguments);
    }

    // The names that a question lists.
    Lines names(std::vector<std::string> arguments) const
    {
        arguments.emplace_back("--names");
        const CommandResult result = show(std::move(arguments));
        EXPECT_EQ(result.status, 0) << result.err;
        return lines_of(result.out);
    }

    // The last line of a router's card.
    std::string command(const std::string& router) const
    {
        const CommandResult result = show({"--router", router});
        EXPECT_EQ(result.status, 0) << result.err;
        return lines_of(result.out).back();
    }

    void merge(MadeUpFleet fleet) { database_ = fleet.merged(folder_); }

    ScratchFolder folder_;
    std::string database_ = fleet().merged(folder_);
};

TEST_F(Show, WithoutQuestion_ListsAll)
{
    EXPECT_EQ(show({}).out,
              "REFUSED   a/core-1.xml  It cannot be read.\n"
              "REVIEW    b/edge-2.xml  Look at it.\n"
              "STOP      c/edge-3.xml  Look at it.\n"
              "SAFE      d/edge-4.xml  Nothing is lost.\n"
              "SAFE      e/edge-3.xml  Nothing is lost.\n"
              "5 routers\n");
}

TEST_F(Show, Question_ListsThoseThatHaveAllOfIt)
{
    EXPECT_THAT(names({"--verdict", "STOP"}), ElementsAre("c/edge-3.xml"));
    EXPECT_THAT(names({"--class", "partly"}), ElementsAre("d/edge-4.xml"));
    EXPECT_THAT(names({"--finding", "row-left"}), ElementsAre("b/edge-2.xml", "c/edge-3.xml"));
    EXPECT_THAT(names({"--finding", "row-left", "--severity", "review"}), ElementsAre("b/edge-2.xml"));
    EXPECT_THAT(names({"--finding", "row-left", "--severity", "stop"}), IsEmpty());
    EXPECT_THAT(names({"--severity", "stop"}), ElementsAre("a/core-1.xml", "c/edge-3.xml"));
    EXPECT_THAT(names({"--severity", "stop", "--verdict", "STOP"}), ElementsAre("c/edge-3.xml"));
    EXPECT_THAT(names({"--step", "update_vrf", "--outcome", "nothing to do"}), ElementsAre("d/edge-4.xml"));
    EXPECT_THAT(names({"--step", "update", "--outcome", "nothing to do"}), IsEmpty());
    EXPECT_THAT(names({"--reason", "rows are lost"}), ElementsAre("c/edge-3.xml"));
}

TEST_F(Show, Finding_ComesWithItsSentence)
{
    EXPECT_EQ(show({"--finding", "row-left"}).out,
              "REVIEW    b/edge-2.xml  2 of rows stay behind\n"
              "STOP      c/edge-3.xml  1 of rows stay behind\n"
              "2 routers\n");
}

TEST_F(Show, NothingFound_IsSaid)
{
    EXPECT_EQ(show({"--verdict", "SAFE", "--severity", "stop"}).out, "no router\n");
}

TEST_F(Show, UnknownWord_IsRefusedWithTheOneThatIsMeant)
{
    const CommandResult finding = show({"--finding", "row-lift"});
    EXPECT_EQ(finding.status, 2);
    EXPECT_EQ(finding.err, "bgp-rehearse: --finding row-lift: no router has that; did you mean row-left?\n");
    const CommandResult step = show({"--step", "update_vfr"});
    EXPECT_EQ(step.err, "bgp-rehearse: --step update_vfr: no router has that; did you mean update_vrf?\n");
    const CommandResult reason = show({"--reason", "0000"});
    EXPECT_EQ(reason.status, 2);
    EXPECT_THAT(reason.err,
                HasSubstr("--reason 0000: no router has that; bgp-rehearse fleet report lists the reasons"));
    EXPECT_EQ(show({"--verdict", "FINE"}).status, 2);
}

TEST_F(Show, ValuesOfAQuestion_AreNoSql)
{
    EXPECT_THAT(show({"--reason", "' OR 1 --"}).err, HasSubstr("no router has that"));
    EXPECT_THAT(show({"--outcome", "ran'"}).err, HasSubstr("--outcome"));
}

TEST_F(Show, Router_MayBeNamedByItsEnd)
{
    EXPECT_THAT(show({"--router", "edge-2.xml"}).out, testing::StartsWith("b/edge-2.xml: REVIEW. "));
    const CommandResult two = show({"--router", "edge-3.xml"});
    EXPECT_EQ(two.status, 2);
    EXPECT_EQ(two.err,
              "bgp-rehearse: --router edge-3.xml: several routers' names end so: c/edge-3.xml, e/edge-3.xml\n");
    EXPECT_THAT(show({"--router", "dge-2.xml"}).err, HasSubstr("no router has the name"));
}

TEST_F(Show, Card_TellsAllThatIsKnown)
{
    EXPECT_EQ(
        show({"--router", "c/edge-3.xml"}).out,
        "c/edge-3.xml: STOP. Look at it.\n"
        "  backup     whole, 100 bytes, SHA-256 " +
            std::string(64, 'a') +
            "\n"
            "  rows       10 stored: 3 moved, 2 moved and changed, 1 changed, 4 as they were, 0 removed; 5 new\n"
            "  device     20 reads, 9 writes (1 failed): 0.03 s to 0.6 s\n"
            "Findings\n"
            "  STOP    3 of rows are lost                                                              update_vrf\n"
            "            AS 1\n"
            "            look at it\n"
            "  note    1 of rows stay behind                                                           update_vrf\n"
            "            AS 1\n"
            "            look at it\n"
            "Steps\n"
            "  update                          ran\n"
            "  update_vrf                      did not run\n"
            "Full report\n"
            "  bgp-rehearse run /backups/c/edge-3.xml --library /opt/lib/libbgp_update.so --time-limit 60s\n");
}

TEST_F(Show, CardOfARefusedBackup_TellsItsErrors)
{
    EXPECT_THAT(show({"--router", "a/core-1.xml"}).out,
                AllOf(HasSubstr("Errors\n  line 3: an odd leaf\n  line 9: another\n"), Not(HasSubstr("  rows "))));
}

TEST_F(Show, Command_HasTheOptionsOfThePlanAndTheFactsOfTheRouter)
{
    MadeUpFleet with_options = fleet();
    bgp_rehearse::FleetOptions& options = with_options.plan().options;
    options.severities = {{"row-left", "note"}, {"row-lost", "review"}};
    options.device.max_entries = 1000;
    options.time_limit = std::chrono::milliseconds(1500);
    options.memory_limit = 512 << 20;
    options.device.user_profile = 3;
    options.device.user_profile_known = true;
    with_options.input(1).facts.interfaces = {{in_addr{htonl(0xC0000201)}, in_addr{htonl(0xC0000202)}}};
    merge(with_options);
    EXPECT_EQ(command("b/edge-2.xml"),
              "  bgp-rehearse run /backups/b/edge-2.xml --interfaces 192.0.2.1,192.0.2.2 --library "
              "/opt/lib/libbgp_update.so --user-profile 3 --max-entries 1000 --time-limit 1.5s --memory-limit 512M "
              "--severity 'row-left=note' --severity 'row-lost=review'");
}

TEST_F(Show, CommandForAFileOfARepository_FeedsItByGit)
{
    MadeUpFleet repository = fleet();
    repository.input(0).source = bgp_rehearse::RepositoryObject{"/srv/it's.git", std::string(40, 'c')};
    merge(repository);
    EXPECT_EQ(command("a/core-1.xml"),
              "  git -C '/srv/it'\\''s.git' cat-file blob " + std::string(40, 'c') +
                  " | bgp-rehearse run - --library /opt/lib/libbgp_update.so --time-limit 60s");
}

TEST_F(Show, CommandForAMemberOfAnArchive_FeedsItByThisCommand)
{
    MadeUpFleet archive = fleet();
    archive.input(0).source = bgp_rehearse::ArchiveMember{"/srv/all.tar", 4, 512};
    merge(archive);
    EXPECT_EQ(command("a/core-1.xml"), "  bgp-rehearse fleet show " + database_ +
                                           " --router a/core-1.xml --backup | bgp-rehearse run - --library "
                                           "/opt/lib/libbgp_update.so --time-limit 60s");
}

// The backup is what was planned, byte by byte, or is not given.
TEST_F(Show, Backup_IsPrintedAsItWasPlanned)
{
    const std::string backup = folder_.file("edge.xml", "<config/>\n");
    RouterResult router = safe_router("edge.xml");
    router.bytes = 10;
    router.sha256 = bgp_rehearse::sha256_of("<config/>\n");
    MadeUpFleet one({router});
    one.input(0).source = bgp_rehearse::StoredFile{backup};
    database_ = one.merged(folder_, 1);
    const CommandResult whole = show({"--router", "edge.xml", "--backup"});
    EXPECT_EQ(whole.out, "<config/>\n") << whole.err;
    folder_.file("edge.xml", "<config>\n");
    const CommandResult changed = show({"--router", "edge.xml", "--backup"});
    EXPECT_EQ(changed.status, 2);
    EXPECT_EQ(changed.out, "");
    EXPECT_THAT(changed.err, HasSubstr("edge.xml: it has changed since the plan was made"));
}

TEST(ShellWord, AnyBytes_ReachTheProgramAsTheyAre)
{
    const std::vector<std::string> hostile = {
        "plain",    "",     "two words", "it's",    "$(touch x)",          "`id`",    "a\\b",
        "-n",       "~",    "=x",        "\"q\"",   "new\nline",           "\x1b[2J", "caf\xC3\xA9",
        "\xFF\xFE", "'\n'", "a\\\nb",    "\\x41\n", "\xE2\x80\xAE turned",
    };
    for (const std::string& word : hostile) {
        const CommandResult result = run_command({"/bin/bash", "-c", shell_words({"printf", "[%s]", word})});
        EXPECT_EQ(result.out, "[" + word + "]") << shell_word(word);
        EXPECT_EQ(shell_word(word).find_first_of("\n\x1b"), std::string::npos) << shell_word(word);
    }
}

TEST_F(Show, WhatIsNoDatabase_IsRefused)
{
    database_ = folder_.file("odd", "this is no database");
    EXPECT_EQ(show({}).err,
              "bgp-rehearse: " + database_ + ": this cannot be read as a database: file is not a database\n");
    database_ = folder_.file("empty", "");
    EXPECT_THAT(show({}).err, HasSubstr("this is no database of a fleet"));
    database_ = folder_ / "none";
    const CommandResult none = show({});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.err, "bgp-rehearse: " + database_ + ": No such file or directory\n");
}

}  // namespace
}  // namespace bgp_test
