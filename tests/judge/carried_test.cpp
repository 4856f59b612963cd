// Rows that are carried into another shape: told where their counterpart is missing, with what the contract says of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "confd_maapi.h"
#include "generate/configuration.h"
#include "support/judged_upgrade.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace bgp_test {
namespace {

using bgp_platform::UpgradeHandles;
using bgp_rehearse::Finding;
using bgp_rehearse::FindingId;
using testing::ElementsAre;
using testing::IsEmpty;

std::string rule(const std::string& list, const std::string& number, const std::string& octets = "0a:00:00:00")
{
    return leaf("aallPreAccessListEntry",
                leaf("aallPreAccessListListIndex", list) + leaf("aallPreAccessListRuleIndex", number) +
                    leaf("aallPreAccessListAddrPrefix", octets) + leaf("aallPreAccessListAddrPrefLen", "8") +
                    leaf("aallPreAccessListIncluded", "permit"));
}

std::string name(const std::string& entity, const std::string& list, const std::string& text)
{
    return leaf("aallPreAccessListEntry-get", leaf("entity", entity) + leaf("list", list) + leaf("name", text));
}

// A router with these access list rules, names of lists, and a route map that matches list 1.
std::string router_with(const std::string& rules, const std::string& names)
{
    return config(
        mib(leaf("bgpRmEntTable", leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", "1") + leaf("bgpRmEntLocalAs", "65010") +
                                                            leaf("bgpRmEntSupportIpv6", "true"))) +
            leaf("bgpRouteMapTable",
                 leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", "1") + leaf("bgpRouteMapIndex", "3") +
                                              leaf("bgpRouteMapEntryIndex", "10") +
                                              leaf("bgpRouteMapMaPrefixList", "1")))) +
        R"(<DC-AALL-MIB xmlns="http://tail-f.com/ns/mibs/DC-AALL-MIB">)" + leaf("aallPreAccessListTable", rules) +
        "</DC-AALL-MIB>" +
        internal(leaf("aallPreAccessListEntry-hidden", names + leaf("aallPreAccessListEntry_next_free_index", "9"))));
}

std::vector<std::string> left(JudgedUpgrade& upgrade)
{
    std::vector<std::string> texts;
    for (const Finding& finding : findings_of(upgrade.judged(), FindingId::RowLeft)) {
        std::string text = std::string(name_of(finding.severity)) + ": " + finding.sentence + " [";
        for (const bgp_rehearse::Place& place : finding.places) {
            text += (text.back() == '[' ? "" : ", ") + words_of(finding, place);
        }
        texts.push_back(text + "]");
    }
    return texts;
}

std::vector<std::string> left_of(const std::string& configuration)
{
    JudgedUpgrade upgrade(configuration);
    upgrade.run();
    return left(upgrade);
}

TEST(Carried, RulesOfNamedLists_AreInPrefixLists)
{
    EXPECT_THAT(left_of(router_with(rule("1", "10") + rule("1", "20") + rule("2", "10"),
                                    name("1", "1", "first") + name("2", "2", "second"))),
                IsEmpty());
}

TEST(Carried, RulesOfAListWithoutName_AreLeft)
{
    EXPECT_THAT(left_of(router_with(rule("1", "10") + rule("1", "20"), "")),
                ElementsAre("review: 2 access list rules go into no prefix list: their list has no name "
                            "[access list 1 rule 10, access list 1 rule 20]"));
}

TEST(Carried, RulesThatNothingUses_AreANote)
{
    EXPECT_THAT(left_of(router_with(rule("2", "10"), "")),
                ElementsAre("note: 1 access list rule goes into no prefix list: its list has no name, and nothing uses "
                            "it [access list 2 rule 10]"));
}

TEST(Carried, RuleWhoseNumberAnotherListOfTheNameHas_IsLeft)
{
    EXPECT_THAT(left_of(router_with(rule("0", "10", "c0:00:02:00") + rule("1", "10") + rule("1", "20"),
                                    name("1", "0", "same") + name("1", "1", "same"))),
                ElementsAre("review: 1 access list rule goes into no prefix list: the prefix list has a rule of that "
                            "number already [access list 1 rule 10]",
                            "review: 1 access list shares the prefix list of another: it has the same name "
                            "[access list 1 rule 10]"));
}

TEST(Carried, RuleThatTheListHasAlready_IsNotMissed)
{
    EXPECT_THAT(
        left_of(router_with(rule("2", "10") + rule("3", "10"), name("1", "2", "same") + name("1", "3", "same"))),
        ElementsAre("note: 1 access list shares the prefix list of another: it has the same name, and nothing "
                    "uses it [access list 3 rule 10]"));
}

TEST(Carried, RuleThatIsTakenOutLater_IsMissedThoughNoCallFailed)
{
    JudgedUpgrade upgrade(router_with(rule("1", "10"), name("1", "1", "first")));
    upgrade.run();
    upgrade.by_hand([](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_delete(handles.maapi_socket, handles.thandle, "/prefix-list{first}/seq{10}/action"), CONFD_OK);
    });
    EXPECT_THAT(left(upgrade),
                ElementsAre("review: 1 access list rule goes into no prefix list [access list 1 rule 10]"));
}

std::string with_vrfs(const std::string& indexes)
{
    const auto vrf = [](const std::string& name) {
        return leaf("vrf", leaf("name", name) + leaf("administrative-status", "up"));
    };
    return config(
        mib(leaf("bgpRmEntTable", leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", "1") + leaf("bgpRmEntLocalAs", "65010") +
                                                            leaf("bgpRmEntSupportIpv6", "true")))) +
        router("65010", leaf("administrative-status", "up") + vrf("blue") + vrf("red")) +
        internal(leaf("vrf-config", indexes)));
}

std::string index_of(const std::string& name, const std::string& index)
{
    return leaf("stringTOindex", leaf("name", name) + leaf("vrf-idx", index)) +
           leaf("indexTOstring", leaf("index", index) + leaf("vname", name));
}

TEST(Carried, VrfsWithAnIndex_HaveTheirInstance)
{
    EXPECT_THAT(left_of(with_vrfs(index_of("blue", "1") + index_of("red", "2"))), IsEmpty());
}

TEST(Carried, VrfsWithoutAnIndex_AreLeft)
{
    EXPECT_THAT(left_of(with_vrfs(index_of("red", "2"))),
                ElementsAre("review: 1 VRF gets no BGP instance: it has no VRF index [VRF blue]"));
    EXPECT_THAT(left_of(with_vrfs(leaf("stringTOindex", leaf("name", "other")))),
                ElementsAre("review: 2 VRFs get no BGP instance: they have no VRF index [VRF blue, VRF red]"));
}

TEST(Carried, EntityThatIsTakenOutOfTheModel_IsLeft)
{
    JudgedUpgrade upgrade(router_with("", ""));
    upgrade.run();
    EXPECT_THAT(left(upgrade), IsEmpty());
    upgrade.by_hand([](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_delete(handles.maapi_socket, handles.thandle, "/router/bgp{65010}"), CONFD_OK);
        EXPECT_EQ(maapi_delete(handles.maapi_socket, handles.thandle, "/bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}"),
                  CONFD_OK);
    });
    EXPECT_THAT(left(upgrade),
                ElementsAre("review: 1 router entity has no number for its AS [router entity 1]",
                            "review: 1 router entity is not in the command-line model [router entity 1]"));
}

}  // namespace
}  // namespace bgp_test
