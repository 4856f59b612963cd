// The database of a fleet: what is in it does not depend on how the fleet was cut into shards, and it is not there unless
// each input of the plan has exactly one result.
#include "fleet/merge/merge.h"

#include <gmock/gmock.h>

#include "fleet/merge/schema.h"
#include "fleet/merge/sqlite.h"
#include "made_up_fleet.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using bgp_rehearse::Database;
using bgp_rehearse::open_fleet;
using bgp_rehearse::Statement;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Its names are in order.
std::vector<RouterResult> many_routers(std::size_t count)
{
    std::vector<RouterResult> routers;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string name = fmt::format("edge-{:04}.xml", i);
        if (i % 10 == 3) {
            routers.push_back(router_with(name, "REVIEW", {finding_of("row-left", "review", "rows stay behind", i)}));
        } else if (i % 10 == 7) {
            routers.push_back(refused_router(name));
        } else {
            routers.push_back(safe_router(name));
        }
    }
    return routers;
}

Lines rows(const Database& database, const std::string& query)
{
    Lines all;
    for (Statement each(database, query); each.next();) {
        all.emplace_back(each.text(0));
    }
    return all;
}

class Merge : public testing::Test {
protected:
    // The message of a merge that refused these parts; and nothing has been written.
    std::string refused(const std::vector<std::string>& parts)
    {
        const std::vector<std::string> before = folder_.names();
        const CommandResult result = MadeUpFleet::merge(folder_, parts);
        EXPECT_EQ(result.status, 6);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(folder_.names(), before);
        EXPECT_THAT(result.err, HasSubstr("fleet.db is not written: the parts and the plan do not agree\n"));
        return result.err;
    }

    ScratchFolder folder_;
};

TEST_F(Merge, AnyNumberOfShards_GivesTheSameBytes)
{
    MadeUpFleet fleet(many_routers(230));
    const std::string one = content_of(fleet.merged(folder_, 1));
    for (const std::size_t shards : {2U, 7U, 100U}) {
        EXPECT_TRUE(content_of(fleet.merged(folder_, shards)) == one) << shards << " shards give another database";
    }
}

TEST_F(Merge, Parts_MayComeInAnyOrder)
{
    MadeUpFleet fleet(many_routers(50));
    const std::string forward = content_of(fleet.merged(folder_, 7));
    std::vector<std::string> parts = fleet.write(folder_, 7);
    std::reverse(parts.begin(), parts.end());
    EXPECT_EQ(MadeUpFleet::merge(folder_, parts).status, 0);
    EXPECT_TRUE(content_of(folder_ / "fleet.db") == forward);
}

TEST_F(Merge, Database_IsSound)
{
    const Database database = open_fleet(MadeUpFleet(many_routers(230)).merged(folder_, 7));
    EXPECT_THAT(rows(database, "PRAGMA integrity_check"), ElementsAre("ok"));
    EXPECT_THAT(rows(database, "PRAGMA foreign_key_check"), IsEmpty());
    EXPECT_THAT(rows(database, "PRAGMA user_version"), ElementsAre("2"));
}

TEST_F(Merge, EachResult_IsThereWhole)
{
    RouterResult router = router_with("a.xml", "STOP", {finding_of("row-lost", "stop", "rows are lost", 3)});
    router.errors = {"odd"};
    MadeUpFleet fleet({router});
    fleet.input(0).facts.user_profile = 7;
    fleet.input(0).facts.interfaces = {{in_addr{htonl(0xC0000201)}, in_addr{htonl(0xC0000202)}}};
    const Database database = open_fleet(fleet.merged(folder_, 1));
    EXPECT_THAT(
        rows(database,
             "SELECT concat_all FROM (SELECT number || ' ' || name || ' ' || sha256 || ' ' || bytes || ' ' || "
             "input_class || ' ' || verdict || ' ' || sentence || ' ' || exit_status || ' ' || stored || ' ' || "
             "kept || ' ' || changed || ' ' || moved || ' ' || moved_and_changed || ' ' || removed || ' ' || new "
             "|| ' ' || result || ' ' || reads || ' ' || writes || ' ' || failed_writes || ' ' || seconds_least "
             "|| ' ' || seconds_most || ' ' || source || ' ' || path || ' ' || interfaces || ' ' || user_profile "
             "AS concat_all FROM router)"),
        ElementsAre("0 a.xml " + std::string(64, 'a') +
                    " 100 whole STOP Look at it. 0 10 4 1 3 2 0 5 15 20 9 1 0.03 0.6 file /backups/a.xml "
                    "192.0.2.1,192.0.2.2 7"));
    EXPECT_THAT(rows(database,
                     "SELECT router || number || ' ' || reason.finding || ' ' || severity || ' ' || count || ' ' || "
                     "sentence || ' ' || advice || ' ' || step || ' ' || reason.text FROM finding JOIN reason ON id = "
                     "reason"),
                ElementsAre("00 row-lost stop 3 3 of rows are lost look at it update_vrf rows are lost"));
    EXPECT_THAT(rows(database, "SELECT router || finding || number || path || text FROM place"),
                ElementsAre("000/router/bgp{1}AS 1"));
    EXPECT_THAT(rows(database, "SELECT router || number || name || outcome FROM step ORDER BY 1"),
                ElementsAre("00updateran", "01update_vrfdid not run"));
    EXPECT_THAT(rows(database, "SELECT router || number || text FROM error"), ElementsAre("00odd"));
}

TEST_F(Merge, ReasonId_DependsOnFindingAndTextAlone)
{
    const auto ids = [this](std::vector<RouterResult> routers) {
        return rows(open_fleet(MadeUpFleet(std::move(routers)).merged(folder_)),
                    "SELECT id FROM reason WHERE finding = 'row-left'");
    };
    const FleetFinding left = finding_of("row-left", "review", "rows stay behind");
    const Lines alone = ids({router_with("z.xml", "REVIEW", {left})});
    EXPECT_EQ(alone.size(), 1U);
    EXPECT_EQ(ids({refused_router("a.xml"), router_with("b.xml", "STOP", {left, left})}), alone);
}

TEST_F(Merge, EmptyFleet_IsAnEmptyDatabase)
{
    EXPECT_THAT(rows(open_fleet(MadeUpFleet({}).merged(folder_, 1)), "SELECT count(*) FROM router"), ElementsAre("0"));
}

TEST_F(Merge, MissingParts_AreNamed)
{
    std::vector<std::string> parts = MadeUpFleet(many_routers(9)).write(folder_, 3);
    EXPECT_THAT(refused({parts[1]}), HasSubstr("\n  shard 0 of 3: no part\n  shard 2 of 3: no part\n"));
}

TEST_F(Merge, PartTwice_IsNamed)
{
    std::vector<std::string> parts = MadeUpFleet(many_routers(9)).write(folder_, 3);
    parts.push_back(folder_.file("copy", content_of(parts[1])));
    EXPECT_THAT(refused(parts), HasSubstr("/copy: the part of shard 1, which " + parts[1] + " is already\n"));
}

TEST_F(Merge, CutPart_IsNamed)
{
    const std::vector<std::string> parts = MadeUpFleet(many_routers(9)).write(folder_, 3);
    const std::string whole = content_of(parts[2]);
    folder_.file("part-2", whole.substr(0, whole.size() / 2));
    EXPECT_THAT(refused(parts), HasSubstr("/part-2: the part is cut off, or has been changed\n"));
}

TEST_F(Merge, PartThatIsNotThere_IsNamed)
{
    std::vector<std::string> parts = MadeUpFleet(many_routers(9)).write(folder_, 3);
    parts[0] += "-none";
    EXPECT_THAT(refused(parts), HasSubstr("/part-0-none: No such file or directory\n"));
}

TEST_F(Merge, PartOfAnotherPlan_IsNamed)
{
    MadeUpFleet fleet(many_routers(9));
    std::vector<std::string> parts = fleet.write(folder_, 3);
    MadeUpFleet other(many_routers(9));
    other.plan().id = std::string(64, '8');
    const ScratchFolder elsewhere;
    parts[1] = other.write(elsewhere, 3)[1];
    EXPECT_THAT(refused(parts), HasSubstr(parts[1] + ": a part of another plan\n"));
}

TEST_F(Merge, PartOfAnotherCut_IsNamed)
{
    const ScratchFolder elsewhere;
    std::vector<std::string> parts = MadeUpFleet(many_routers(9)).write(elsewhere, 2);
    MadeUpFleet(many_routers(9)).write(folder_, 3);
    EXPECT_THAT(refused(parts), HasSubstr(parts[1] + ": a part of 2 shards, and the plan has 3\n"));
}

TEST_F(Merge, ResultOfAnotherRouter_IsNamed)
{
    std::vector<RouterResult> routers = many_routers(4);
    const std::vector<std::string> parts = MadeUpFleet(routers).write(folder_, 2);
    std::swap(routers[1], routers[3]);
    const ScratchFolder elsewhere;
    const std::string swapped = MadeUpFleet(routers).write(elsewhere, 2)[1];
    EXPECT_THAT(refused({parts[0], swapped}),
                HasSubstr(": the result of edge-0003.xml, where that of edge-0001.xml should be\n"));
}

TEST_F(Merge, OldDatabase_StaysWhereThePartsAreWrong)
{
    const std::string database = MadeUpFleet(many_routers(9)).merged(folder_, 3);
    const std::string before = content_of(database);
    refused({folder_ / "part-0"});
    EXPECT_TRUE(content_of(database) == before);
}

TEST_F(Merge, PlanAsOutput_IsRefused)
{
    const std::vector<std::string> parts = MadeUpFleet(many_routers(4)).write(folder_, 1);
    const CommandResult result = MadeUpFleet::merge(folder_, parts, "plan");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("this is the plan; choose another name"));
}

}  // namespace
}  // namespace bgp_test
