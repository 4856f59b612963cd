// References that lead nowhere in the result: told by what they did before, and silent where they hold.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "confd_maapi.h"
#include "generate/configuration.h"
#include "judge/references.h"
#include "support/drawn_configuration.h"
#include "support/judged_upgrade.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace bgp_test {
namespace {

using bgp_platform::UpgradeHandles;
using bgp_rehearse::Finding;
using bgp_rehearse::FindingId;
using bgp_rehearse::Severity;
using testing::ElementsAre;
using testing::IsEmpty;

std::string entity_row(const std::string& index, const std::string& leaves = {})
{
    return leaf("bgpRmEntTable", leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", index) + leaves));
}

std::string map_of_entity(const std::string& entity, const std::string& map, const std::string& leaves = {})
{
    return leaf("bgpRouteMapTable",
                leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", entity) + leaf("bgpRouteMapIndex", map) +
                                             leaf("bgpRouteMapEntryIndex", "10") + leaves));
}

std::string peer_row(const std::string& entity)
{
    return leaf("bgpPeerTable", leaf("bgpPeerEntry", peer_keys(entity, "", "c0:00:02:02")));
}

std::string family_row(const std::string& entity, const std::string& leaves)
{
    return leaf("bgpPeerAfiSafiTable",
                leaf("bgpPeerAfiSafiEntry", peer_keys(entity, "", "c0:00:02:02") + leaf("bgpPeerAfiSafiAfi", "ipv4") +
                                                leaf("bgpPeerAfiSafiSafi", "unicast") + leaves));
}

std::string rtm(const std::string& tables)
{
    return R"(<DC-RTM-MIB xmlns="http://tail-f.com/ns/mibs/DC-RTM-MIB">)" + tables + "</DC-RTM-MIB>";
}

// An entity with a neighbour whose family refers to map 3, and what else is given.
class References : public testing::Test {
protected:
    void stored(const std::string& top_elements) { upgrade_.emplace(config(top_elements)); }

    void deleted(const char* path)
    {
        upgrade_->by_hand([path](const UpgradeHandles& handles) {
            EXPECT_EQ(maapi_delete(handles.maapi_socket, handles.thandle, path), CONFD_OK);
        });
    }
    void created(const char* path)
    {
        upgrade_->by_hand([path](const UpgradeHandles& handles) {
            EXPECT_EQ(maapi_create(handles.maapi_socket, handles.thandle, path), CONFD_OK);
        });
    }
    void set(const char* path, const char* value)
    {
        upgrade_->by_hand([&](const UpgradeHandles& handles) {
            EXPECT_EQ(maapi_set_elem2(handles.maapi_socket, handles.thandle, value, path), CONFD_OK);
        });
    }

    // "stop: sentence [place, place]"
    std::vector<std::string> findings()
    {
        std::vector<std::string> texts;
        for (const Finding& finding : findings_of(upgrade_->judged(), FindingId::ReferenceBroken)) {
            texts.push_back(std::string(name_of(finding.severity)) + ": " + with_places(finding));
        }
        return texts;
    }

    std::optional<JudgedUpgrade> upgrade_;
};

const std::string kMapIsUsed = entity_row("5") + peer_row("5") + family_row("5", leaf("bgpPeerAfiSafiInMapIndex", "3"));

TEST_F(References, TargetThatIsTakenAway_IsAStop)
{
    stored(mib(kMapIsUsed + map_of_entity("5", "3")));
    deleted("/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{5 3 10}");
    EXPECT_THAT(findings(), ElementsAre("stop: 1 neighbour family refers to a route map that is not there now: map 3 "
                                        "[neighbour 192.0.2.2 IPv4 unicast]"));
}

TEST_F(References, ReferenceThatHeldAndIsTurnedElsewhere_IsAStop)
{
    stored(mib(kMapIsUsed + map_of_entity("5", "3")));
    set("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{5 ipv4 \"\" 0 ipv4 c0:00:02:02 0 0 ipv4 unicast}/"
        "bgpPeerAfiSafiInMapIndex",
        "4");
    EXPECT_THAT(findings(), ElementsAre("stop: 1 neighbour family refers to a route map that is not there now: map 4 "
                                        "[neighbour 192.0.2.2 IPv4 unicast]"));
    EXPECT_EQ(upgrade_->judged().verdict.sentence, "1 neighbour family refers to a route map that is not there now.")
        << "the names stand with the finding";
}

TEST_F(References, TargetThatWasNotThereBefore_IsANote)
{
    stored(mib(kMapIsUsed + map_of_entity("5", "2")));
    EXPECT_THAT(findings(),
                ElementsAre("note: 1 neighbour family refers to a route map that was not there before either: map 3 "
                            "[neighbour 192.0.2.2 IPv4 unicast]"));
}

TEST_F(References, NewRowWithoutItsTarget_IsToBeLookedAt)
{
    stored(mib(entity_row("5")));
    created("/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{7 3 20}");
    EXPECT_THAT(findings(), ElementsAre("review: 1 new route map row belongs to a router entity that is not there: "
                                        "entity 7 [map 3 entry 20]"));
}

TEST_F(References, LeafThatReferredToNothing_IsToBeLookedAtAsNew)
{
    stored(mib(entity_row("5") + peer_row("5") + family_row("5", leaf("bgpPeerAfiSafiInMapIndex", "0"))));
    set("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{5 ipv4 \"\" 0 ipv4 c0:00:02:02 0 0 ipv4 unicast}/"
        "bgpPeerAfiSafiInMapIndex",
        "4");
    EXPECT_THAT(findings(), ElementsAre(testing::StartsWith("review: 1 new neighbour family refers to a route map")));
}

TEST_F(References, SeveralTargets_AreNamedOnceEach)
{
    stored(mib(entity_row("5") + map_of_entity("6", "1") + map_of_entity("7", "1") + map_of_entity("7", "2") +
               map_of_entity("8", "1") + map_of_entity("9", "1")));
    EXPECT_THAT(findings(),
                ElementsAre(testing::StartsWith("note: 5 route map rows belong to a router entity that was not there "
                                                "before either: entity 6, entity 7, entity 8 and others [")));
}

TEST_F(References, WhatStandsForNone_IsNone)
{
    stored(mib(
        entity_row("5", leaf("bgpRmEntVrfName", "")) +
        leaf("bgpPeerTable", leaf("bgpPeerEntry", peer_keys("5", "", "c0:00:02:02") + leaf("bgpPeerLocalNm", "0"))) +
        map_of_entity("5", "3", leaf("bgpRouteMapMaPrefixList", "0"))));
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(References, OnlyJoinsOneAndTwo_LeadToRoutingTables)
{
    const auto join = [](const std::string& number, const std::string& partner) {
        return leaf("bgpRmAfmJoinEntry",
                    leaf("bgpRmEntIndex", "5") + leaf("bgpRmAfmJoin", number) + leaf("bgpRmAfmPartnerIndex", partner));
    };
    stored(mib(entity_row("5") + leaf("bgpRmAfmJoinTable", join("1", "8") + join("2", "9") + join("3", "10"))));
    EXPECT_THAT(findings(), ElementsAre("note: 2 joins lead to a routing table that was not there before either: "
                                        "routing table 8, routing table 9 [join 1, join 2]"));
}

TEST_F(References, PartnersOfRoutingTables_AreLookedUpByTheirKind)
{
    const auto partner = [](const std::string& index, const std::string& kind) {
        return leaf("rtmMjEntry",
                    leaf("rtmMjRtmFteIndex", "1") + leaf("rtmMjSlaveFteId", index) + leaf("rtmMjSlaveType", kind));
    };
    stored(mib(entity_row("5")) +
           rtm(leaf("rtmEntityTable", leaf("rtmEntityEntry", leaf("rtmEntityFteIndex", "1"))) +
               leaf("rtmMjTable", partner("1", "ariPrtnrRtm") + partner("5", "ariPrtnrBgp") +
                                      partner("5", "ariPrtnrRtm") + partner("1", "ariPrtnrBgp"))));
    EXPECT_THAT(findings(),
                ElementsAre("note: 1 routing table join leads to a routing table that was not there before either "
                            "[join of routing table 1 with routing table 5]",
                            "note: 1 routing table join leads to a router entity that was not there before either "
                            "[join of routing table 1 with router entity 1]"));
}

TEST_F(References, RouteMapThatMatchesAList_HasItAsRulesOrByItsIndex)
{
    const auto rows = [](const std::string& list) {
        return mib(entity_row("5") + map_of_entity("5", "3", leaf("bgpRouteMapMaPrefixList", list))) +
               R"(<DC-AALL-MIB xmlns="http://tail-f.com/ns/mibs/DC-AALL-MIB"><aallPreAccessListTable>
                  <aallPreAccessListEntry><aallPreAccessListListIndex>7</aallPreAccessListListIndex>
                  <aallPreAccessListRuleIndex>10</aallPreAccessListRuleIndex></aallPreAccessListEntry>
                  </aallPreAccessListTable></DC-AALL-MIB>
                  <prefix-list-internal xmlns="urn:bgp-update:yang:prefix-list">
                  <idx-to-name><idx>8</idx></idx-to-name></prefix-list-internal>)";
    };
    stored(rows("7"));
    EXPECT_THAT(findings(), IsEmpty());
    stored(rows("8"));
    EXPECT_THAT(findings(), IsEmpty());
    stored(rows("9"));
    EXPECT_THAT(findings(), ElementsAre(testing::HasSubstr("matches a prefix list")));
}

// One name has another's index, so that one of the four ways through the two tables leads elsewhere.
TEST_F(References, NamesAndIndexesThatDisagree_AreTold)
{
    stored(internal(leaf("vrf-config", leaf("stringTOindex", leaf("name", "red") + leaf("vrf-idx", "7")) +
                                           leaf("stringTOindex", leaf("name", "blue") + leaf("vrf-idx", "7")) +
                                           leaf("indexTOstring", leaf("index", "7") + leaf("vname", "red")))));
    EXPECT_THAT(findings(), ElementsAre("note: 1 VRF index needs a VRF name that was not there before either "
                                        "[index of VRF blue]"));
}

TEST_F(References, RowBelowAnother_IsToldWithTheRowAround)
{
    stored(router("65010", leaf("vrf", leaf("name", "red"))) + mib(entity_row("5", leaf("bgpRmEntLocalAs", "65010"))) +
           internal(leaf("vrf-config", leaf("stringTOindex", leaf("name", "red")))));
    EXPECT_THAT(findings(), IsEmpty());
    deleted("/internal/vrf-config/stringTOindex{red}");
    EXPECT_THAT(findings(), ElementsAre("stop: 1 VRF needs a VRF index that is not there now [VRF red]"));
    const Finding finding = findings_of(upgrade_->judged(), FindingId::ReferenceBroken).front();
    EXPECT_EQ(path_of(finding, finding.places.front()), "/router/bgp{65010}/vrf{red}");
}

// A row that could not be moved is told as that. Its own leaves refer all the same.
TEST_F(References, KeyOfARowThatStayedBehind_IsNotToldAgain)
{
    stored(mib(entity_row("5", leaf("bgpRmEntLocalAs", "65010") + leaf("bgpRmEntSupportIpv6", "true")) +
               leaf("bgpRouteMapTable",
                    leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", "1") + leaf("bgpRouteMapIndex", "3") +
                                                 leaf("bgpRouteMapEntryIndex", "10")) +
                        leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRouteMapIndex", "3") +
                                                     leaf("bgpRouteMapEntryIndex", "10")))));
    upgrade_->run();
    EXPECT_EQ(findings_of(upgrade_->judged(), FindingId::RowLeft).size(), 1U);
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(References, RowsWhoseEntityWasNotThere_AreToldWhenTheyGetOne)
{
    stored(mib(entity_row("5", leaf("bgpRmEntLocalAs", "65010") + leaf("bgpRmEntSupportIpv6", "true")) +
               map_of_entity("9", "3")));
    upgrade_->run();
    EXPECT_THAT(findings(), ElementsAre("note: 1 route map row had no router entity before and gets one by the move: "
                                        "entity 9 [map 3 entry 10]"));
}

// Their hidden rows name the rules by the numbers that they had.
TEST_F(References, HiddenRowsOfMovedRules_AreTold)
{
    bgp_generator::healthy::Request request;
    request.seed = 7;
    request.flaws = {bgp_generator::healthy::Flaw::AnnouncedNetworks};
    upgrade_.emplace(bgp_generator::configuration_text(request));
    upgrade_->run();
    EXPECT_THAT(findings(),
                ElementsAre(testing::StartsWith("review: 1 internal redistribution row stands for a "
                                                "redistribution rule that is not there now [internal row of "
                                                "redistribution rule 5")));
    EXPECT_EQ(findings_of(upgrade_->judged(), FindingId::ReferenceBroken).front().step, "update_rm_index");
}

TEST_F(References, OfHealthyRouters_Hold)
{
    for (uint64_t seed = 0; seed < 50; ++seed) {
        upgrade_.emplace(healthy(seed));
        upgrade_->run();
        EXPECT_THAT(findings(), IsEmpty()) << "seed " << seed;
    }
}

}  // namespace
}  // namespace bgp_test
