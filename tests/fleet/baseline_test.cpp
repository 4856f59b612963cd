// bgp-rehearse fleet report --baseline: what an upgrade library does to a fleet that another one did not.
#include "fleet/report/comparison.h"

#include <gmock/gmock.h>

#include "fleet/merge/schema.h"
#include "made_up_fleet.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using bgp_rehearse::compare;
using bgp_rehearse::Comparison;
using bgp_rehearse::Difference;
using bgp_rehearse::kDifferences;
using bgp_rehearse::open_fleet;
using bgp_rehearse::RouterDifference;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const FleetFinding kNote = finding_of("stand-in-doubt", "note", "a doubt");

class Baseline : public testing::Test {
protected:
    Comparison compared(std::vector<RouterResult> before, std::vector<RouterResult> after) const
    {
        const std::string old = MadeUpFleet(std::move(before)).merged(folder_, 1, "before.db");
        const std::string now = MadeUpFleet(std::move(after)).merged(folder_, 2, "after.db");
        return compare(open_fleet(old), open_fleet(now), old);
    }

    // "worse: verdict SAFE -> STOP; now ...", of one router before and after.
    std::string difference(const RouterResult& before, const RouterResult& after) const
    {
        const Comparison comparison = compared({before}, {after});
        if (comparison.differing.empty()) {
            return "same";
        }
        const RouterDifference& only = comparison.differing.front();
        return fmt::format("{}: {}", kDifferences[static_cast<std::size_t>(only.difference)],
                           fmt::join(only.why, "; "));
    }

    ScratchFolder folder_;
};

TEST_F(Baseline, FleetAgainstItself_HasNoDifference)
{
    const std::vector<RouterResult> fleet = {refused_router("a"), router_with("b", "REVIEW", {kLeft, kNote, kLeft}),
                                             router_with("c", "STOP", {kLost}), safe_router("d")};
    const Comparison comparison = compared(fleet, fleet);
    EXPECT_THAT(comparison.routers, ElementsAre(0, 0, 0, 0, 0, 4));
    EXPECT_THAT(comparison.differing, IsEmpty());
    EXPECT_THAT(comparison.shared, IsEmpty());
}

TEST_F(Baseline, OtherVerdict_IsWorseOrBetter)
{
    const RouterResult safe = safe_router("a");
    const RouterResult stop = router_with("a", "STOP", {kLost});
    EXPECT_EQ(difference(safe, stop), "worse: verdict SAFE -> STOP; now stop row-lost: rows are lost (update_vrf)");
    EXPECT_EQ(difference(stop, safe),
              "better: verdict STOP -> SAFE; no longer stop row-lost: rows are lost (update_vrf)");
    EXPECT_THAT(difference(safe, refused_router("a")), HasSubstr("worse: verdict SAFE -> REFUSED; "));
    EXPECT_THAT(difference(refused_router("a"), stop), HasSubstr("worse: verdict REFUSED -> STOP; "));
}

TEST_F(Baseline, MoreOrLessToLookAtAtOneVerdict_IsWorseOrBetter)
{
    const RouterResult one = router_with("a", "STOP", {kLost});
    const RouterResult two = router_with("a", "STOP", {kLost, kLeft});
    EXPECT_EQ(difference(one, two), "worse: now review row-left: rows stay behind (update_vrf)");
    EXPECT_EQ(difference(two, one), "better: no longer review row-left: rows stay behind (update_vrf)");
    EXPECT_EQ(difference(one, router_with("a", "STOP", {kLost, kNote})),
              "different: now note stand-in-doubt: a doubt (update_vrf)");
    EXPECT_EQ(difference(two, router_with("a", "STOP", {kLost, finding_of("x", "stop", "y")})),
              "different: now stop x: y (update_vrf); no longer review row-left: rows stay behind (update_vrf)");
}

TEST_F(Baseline, OtherStepRowsPlacesOrValues_AreDifferent)
{
    const RouterResult before = router_with("a", "REVIEW", {kLeft});
    RouterResult step = before;
    step.steps[1].outcome = "nothing to do";
    EXPECT_EQ(difference(before, step), "different: step update_vrf: did not run -> nothing to do");
    step.steps[1].changes = "feed";
    EXPECT_EQ(difference(before, step), "different: step update_vrf: did not run -> nothing to do");
    RouterResult changes = before;
    changes.steps[0].changes = "feed";
    EXPECT_EQ(difference(before, changes), "different: step update writes other rows or values");
    EXPECT_EQ(difference(changes, changes), "same");
    RouterResult rows = before;
    --rows.account.kept;
    ++rows.account.changed;
    EXPECT_EQ(difference(before, rows), "different: other numbers of rows are moved, changed, removed or new");
    RouterResult count = before;
    count.findings[0].count = 9;
    EXPECT_EQ(difference(before, count),
              "different: another number of places of review row-left: rows stay behind (update_vrf)");
    RouterResult values = before;
    values.findings[0].sentence = "2 of other rows";
    EXPECT_EQ(difference(before, values),
              "different: other places or values of review row-left: rows stay behind (update_vrf)");
    RouterResult place = before;
    place.findings[0].places[0].text = "AS 2";
    EXPECT_EQ(difference(before, place), difference(before, values));
}

TEST_F(Baseline, AnotherBackup_IsSaidWhereTheResultDiffers)
{
    const RouterResult before = safe_router("a");
    RouterResult after = before;
    after.sha256 = std::string(64, 'e');
    EXPECT_EQ(difference(before, after), "same");
    after.verdict = "REVIEW";
    EXPECT_EQ(difference(before, after), "worse: verdict SAFE -> REVIEW; the backup itself is another");
}

TEST_F(Baseline, NewAndGoneRouters_AreTold)
{
    const Comparison comparison = compared({safe_router("a"), safe_router("b"), safe_router("d")},
                                           {safe_router("b"), safe_router("c"), safe_router("e")});
    EXPECT_THAT(comparison.routers, ElementsAre(0, 0, 0, 2, 2, 1));
    std::vector<std::string> told;
    for (const RouterDifference& each : comparison.differing) {
        told.push_back(each.name + " " + kDifferences[static_cast<std::size_t>(each.difference)]);
    }
    EXPECT_THAT(told, ElementsAre("a gone", "c new", "d gone", "e new"));
}

TEST_F(Baseline, SharedDifferences_StandWorstFirst)
{
    const RouterResult left = router_with("", "REVIEW", {kLeft});
    const auto named = [](RouterResult router, const char* name) {
        router.name = name;
        return router;
    };
    RouterResult moved = left;
    --moved.account.kept;
    ++moved.account.moved;
    const Comparison comparison = compared(
        {named(left, "a"), named(left, "b"), named(left, "c"), safe_router("d"), named(left, "e")},
        {named(moved, "a"), named(moved, "b"), named(moved, "c"), router_with("d", "STOP", {kLost}), safe_router("e")});
    std::vector<std::string> told;
    for (const auto& each : comparison.shared) {
        told.push_back(fmt::format("{} {} {} {}", each.routers, kDifferences[static_cast<std::size_t>(each.difference)],
                                   each.why, fmt::join(each.examples, " ")));
    }
    EXPECT_THAT(told,
                ElementsAre("1 worse now stop row-lost: rows are lost (update_vrf) d", "1 worse verdict SAFE -> STOP d",
                            "3 different other numbers of rows are moved, changed, removed or new a b c",
                            "1 better no longer review row-left: rows stay behind (update_vrf) e",
                            "1 better verdict REVIEW -> SAFE e"));
}

TEST_F(Baseline, EachCountOfTheReport_OpensItsList)
{
    const std::string before = MadeUpFleet({safe_router("a"), safe_router("b")}).merged(folder_, 1, "before.db");
    const std::string after =
        MadeUpFleet({router_with("a", "STOP", {kLost}), safe_router("b"), safe_router("c")}).merged(folder_);
    const CommandResult report = rehearse({"fleet", "report", after, "--baseline", before});
    EXPECT_THAT(report.out,
                HasSubstr("Against " + before + ": 1 worse, 0 different, 0 better, 0 gone, 1 new, 1 same\n"));
    const auto listed = [&](const char* difference) {
        return rehearse({"fleet", "show", after, "--baseline", before, "--difference", difference}).out;
    };
    EXPECT_EQ(listed("worse"),
              "worse     a  verdict SAFE -> STOP; now stop row-lost: rows are lost (update_vrf)\n1 router\n");
    EXPECT_EQ(listed("new"), "new       c\n1 router\n");
    EXPECT_EQ(listed("gone"), "no router\n");
}

}  // namespace
}  // namespace bgp_test
