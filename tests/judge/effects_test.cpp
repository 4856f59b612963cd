// What an upgrade does to rows that stay: each effect provoked alone, counted, and told from what to what.
#include "judge/effects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "confd_maapi.h"
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

constexpr char kPeer[] = "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{5 ipv4 \"\" 0 ipv4 c0:00:02:%s 0 0}";
constexpr char kFamily[] =
    "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{5 ipv4 \"\" 0 ipv4 c0:00:02:02 0 0 ipv6 unicast}";

std::string peer_row(const std::string& octet, const std::string& leaves)
{
    return leaf("bgpPeerEntry", peer_keys("5", "", "c0:00:02:" + octet) + leaves);
}

std::string limit(const std::string& number)
{
    return leaf("bgpPeerConfigMaxPrfx", number);
}

std::string entity(const std::string& leaves)
{
    return leaf("bgpRmEntTable", leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", "5") + leaves));
}

// An IPv6 family of a neighbour, whose entity supports IPv6 or not and has the family up or down.
std::string family(const std::string& supports, const std::string& status, const std::string& off)
{
    return mib(entity(leaf("bgpRmEntSupportIpv6", supports)) +
               leaf("bgpRmAfiSafiTable",
                    leaf("bgpRmAfiSafiEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRmAfiSafiAfi", "ipv6") +
                                                  leaf("bgpRmAfiSafiSafi", "unicast") +
                                                  leaf("bgpRmAfiSafiAdminStatus", status))) +
               leaf("bgpPeerTable", peer_row("02", "")) +
               leaf("bgpPeerAfiSafiTable",
                    leaf("bgpPeerAfiSafiEntry", peer_keys("5", "", "c0:00:02:02") + leaf("bgpPeerAfiSafiAfi", "ipv6") +
                                                    leaf("bgpPeerAfiSafiSafi", "unicast") + off)));
}

class Effects : public testing::Test {
protected:
    void stored(const std::string& top_elements) { upgrade_.emplace(config(top_elements)); }
    void set(const std::string& path, const char* value)
    {
        upgrade_->by_hand([&](const UpgradeHandles& handles) {
            EXPECT_EQ(maapi_set_elem2(handles.maapi_socket, handles.thandle, value, "%s", path.c_str()), CONFD_OK)
                << confd_lasterr();
        });
    }
    void set_of_peer(const std::string& octet, const char* name, const char* value)
    {
        set(std::string(kPeer).replace(std::string(kPeer).find("%s"), 2, octet) + "/" + name, value);
    }

    // All findings but of references and of the embedded platform, "note limit-rewritten: sentence [place, place]".
    std::vector<std::string> findings()
    {
        std::vector<std::string> texts;
        for (const Finding& finding : upgrade_->judged().findings) {
            if (finding.id == FindingId::ReferenceBroken || finding.id == FindingId::StandInDoubt) {
                continue;
            }
            texts.push_back(std::string(name_of(finding.severity)) + " " + name_of(finding.id) + ": " +
                            with_places(finding));
        }
        return texts;
    }

    std::optional<JudgedUpgrade> upgrade_;
};

TEST_F(Effects, LimitsThatAreAnother_AreCountedByOldAndNewValue)
{
    stored(mib(leaf("bgpPeerTable", peer_row("01", limit("500")) + peer_row("02", limit("100")) +
                                        peer_row("03", limit("500")) + peer_row("04", limit("7")) +
                                        peer_row("05", limit("8")) + peer_row("06", "") + peer_row("07", limit("0")))));
    for (const char* octet : {"01", "02", "03", "04", "05", "06", "07"}) {
        set_of_peer(octet, "bgpPeerConfigMaxPrfx", "0");
    }
    EXPECT_THAT(findings(),
                ElementsAre(testing::StartsWith("note limit-rewritten: 5 neighbours get another prefix limit: 500 -> 0 "
                                                "(2), 7 -> 0 (1), 8 -> 0 (1), and 1 other; 1 had none and gets 0 "
                                                "[neighbour 192.0.2.1: 500 -> 0, neighbour 192.0.2.2: 100 -> 0, ")));
}

TEST_F(Effects, LimitsOfAnAssumedProfile_AreToBeLookedAt)
{
    stored(mib(leaf("bgpPeerTable", peer_row("01", limit("500")))));
    set_of_peer("01", "bgpPeerConfigMaxPrfx", "0");
    upgrade_->assumptions().user_profile_given = false;
    const Finding finding = findings_of(upgrade_->judged(), FindingId::LimitRewritten).front();
    EXPECT_EQ(finding.severity, Severity::Review);
    EXPECT_EQ(finding.short_form, "the user profile is assumed");
    EXPECT_THAT(finding.advice, testing::HasSubstr("--user-profile"));
}

TEST_F(Effects, NeighboursThatHadNoLimit_AreToldEvenIfTheyAreAll)
{
    stored(mib(leaf("bgpPeerTable", peer_row("01", "") + peer_row("02", ""))));
    set_of_peer("01", "bgpPeerConfigMaxPrfx", "0");
    set_of_peer("02", "bgpPeerConfigMaxPrfx", "0");
    EXPECT_THAT(findings(), ElementsAre("note limit-rewritten: 2 neighbours had no prefix limit and get one: 0 "
                                        "[neighbour 192.0.2.1: (not set) -> 0, neighbour 192.0.2.2: (not set) -> 0]"));
}

TEST_F(Effects, Actions_AreToldOfNeighboursAndOfFamilies)
{
    stored(family("true", "up", leaf("bgpPeerAfiSafiConfigDropWarn", "drop")) +
           mib(leaf("bgpPeerTable", peer_row("03", leaf("bgpPeerConfigDropWarn", "drop")))));
    set_of_peer("03", "bgpPeerConfigDropWarn", "warn");
    set(std::string(kFamily) + "/bgpPeerAfiSafiConfigDropWarn", "warn");
    EXPECT_THAT(
        findings(),
        ElementsAre("note action-rewritten: 1 neighbour gets another action past the prefix limit: drop -> warn "
                    "[neighbour 192.0.2.3: drop -> warn]",
                    "note action-rewritten: 1 neighbour family gets another action past the prefix limit: drop "
                    "-> warn [neighbour 192.0.2.2 IPv6 unicast: drop -> warn]"));
}

TEST_F(Effects, FamilyThatWasInEffect_IsMissedWhenItIsOff)
{
    stored(family("true", "up", ""));
    set(std::string(kFamily) + "/bgpPeerAfiSafiDisable", "true");
    EXPECT_THAT(findings(),
                ElementsAre("review family-off: 1 neighbour loses IPv6 unicast: it was in effect, and is off "
                            "[neighbour 192.0.2.2 IPv6 unicast: (not set) -> true]"));
}

TEST_F(Effects, FamilyThatTheRouterDidNotSupport_IsANote)
{
    stored(family("false", "up", leaf("bgpPeerAfiSafiDisable", "false")));
    set(std::string(kFamily) + "/bgpPeerAfiSafiDisable", "true");
    EXPECT_THAT(findings(),
                ElementsAre("note family-off: 1 neighbour keeps IPv6 unicast off: configured, but the "
                            "router did not support IPv6 [neighbour 192.0.2.2 IPv6 unicast: false -> true]"));
}

TEST_F(Effects, FamilyThatTheRouterHadDown_IsANote)
{
    stored(family("true", "down", leaf("bgpPeerAfiSafiDisable", "false")));
    set(std::string(kFamily) + "/bgpPeerAfiSafiDisable", "true");
    EXPECT_THAT(findings(), ElementsAre(testing::StartsWith("note family-off: 1 neighbour keeps IPv6 unicast off: "
                                                            "configured, but the router's own family was not up")));
}

TEST_F(Effects, FamilyThatWasOff_IsNoEffect)
{
    stored(family("true", "up", leaf("bgpPeerAfiSafiDisable", "true")));
    set(std::string(kFamily) + "/bgpPeerAfiSafiConfigDropWarn", "warn");
    set(std::string(kFamily) + "/bgpPeerAfiSafiDisable", "true");
    EXPECT_THAT(findings(), ElementsAre(testing::StartsWith("note action-rewritten")));
}

TEST_F(Effects, RoutersOwnFamily_IsToldWhenItIsTurnedOff)
{
    stored(family("true", "up", ""));
    set("/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{5 ipv6 unicast}/bgpRmAfiSafiAdminStatus", "down");
    set("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}/bgpRmEntSupportIpv6", "false");
    EXPECT_THAT(findings(), ElementsAre("review family-off: 1 router family is turned off: up -> down "
                                        "[router IPv6 unicast: up -> down]",
                                        "review family-off: 1 router entity no longer supports IPv6: true -> false "
                                        "[router entity 5: true -> false]"));
}

TEST_F(Effects, IdentityOfARowThatHadOne_IsToBeLookedAt)
{
    stored(mib(entity(leaf("bgpRmEntLocalIdentifier", "c0:00:02:01"))) +
           router("65010", leaf("router-id", "192.0.2.1") + leaf("bgp", leaf("cluster-id", "192.0.2.1"))));
    set("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}/bgpRmEntLocalIdentifier", "00:00:00:00");
    set("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}/bgpRmEntClusterId", "c0:00:02:01");  // it had none
    set("/router/bgp{65010}/bgp/cluster-id", "192.0.2.9");
    EXPECT_THAT(findings(), ElementsAre("review identity-changed: 1 router entity gets another router id: 192.0.2.1 -> "
                                        "0.0.0.0 [router entity 5: 192.0.2.1 -> 0.0.0.0]",
                                        "review identity-changed: 1 router gets another cluster id: 192.0.2.1 -> "
                                        "192.0.2.9 [router of AS 65010: 192.0.2.1 -> 192.0.2.9]"));
}

TEST_F(Effects, RedistributionRuleThatStays_IsToBeLookedAt)
{
    stored(R"(<DC-RTM-MIB xmlns="http://tail-f.com/ns/mibs/DC-RTM-MIB"><rtmRedistTable><rtmRedistEntry>
              <rtmRedistFteIndex>1</rtmRedistFteIndex><rtmRedistEntryId>5</rtmRedistEntryId>
              <rtmRedistInfoSrc>ospf</rtmRedistInfoSrc></rtmRedistEntry></rtmRedistTable></DC-RTM-MIB>)");
    const std::string rule = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 5}";
    set(rule + "/rtmRedistInfoSrc", "local");
    set(rule + "/rtmRedistAdminStat", "down");
    EXPECT_THAT(
        findings(),
        ElementsAre("review redistribution-changed: 1 redistribution rule gets another source: ospf -> local "
                    "[redistribution rule 5 of routing table 1: ospf -> local]",
                    "review redistribution-changed: 1 redistribution rule gets another status: (not set) -> down "
                    "[redistribution rule 5 of routing table 1: (not set) -> down]"));
}

TEST_F(Effects, RouteMapUnderAnotherNumber_IsToBeLookedAt)
{
    stored(mib(leaf("bgpRouteMapTable",
                    leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRouteMapIndex", "3") +
                                                 leaf("bgpRouteMapEntryIndex", "10")))) +
           internal(leaf(
               "vrf-config",
               leaf("route-map", leaf("vrf", leaf("name", "red") +
                                                 leaf("stringTOindex", leaf("name", "in") + leaf("map-idx", "3")))))));
    upgrade_->by_hand([](const UpgradeHandles& handles) {
        confd_value_t keys[3];
        CONFD_SET_UINT32(&keys[0], 1);
        CONFD_SET_UINT32(&keys[1], 4);
        CONFD_SET_UINT32(&keys[2], 10);
        EXPECT_EQ(maapi_move(handles.maapi_socket, handles.thandle, keys, 3,
                             "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{5 3 10}"),
                  CONFD_OK);
    });
    set("/internal/vrf-config/route-map/vrf{red}/stringTOindex{in}/map-idx", "4");
    EXPECT_THAT(findings(), ElementsAre("review index-changed: 1 route map row gets another map number: 3 -> 4 "
                                        "[map 4 entry 10: 3 -> 4]",
                                        "review index-changed: 1 route map name stands for another route map: 3 -> 4 "
                                        "[route map in of VRF red: 3 -> 4]"));
}

TEST_F(Effects, RowThatIsNew_IsNoEffect)
{
    stored(mib(entity("")));
    upgrade_->by_hand([](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_create(handles.maapi_socket, handles.thandle, "/router/bgp{65010}"), CONFD_OK);
    });
    set("/router/bgp{65010}/router-id", "192.0.2.1");
    EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(Effects, OfAHealthyRouter_AreNotes)
{
    upgrade_.emplace(healthy(3));
    upgrade_->run();
    const auto judgement = upgrade_->judged();
    EXPECT_FALSE(findings_of(judgement, FindingId::LimitRewritten).empty());
    EXPECT_EQ(findings_of(judgement, FindingId::LimitRewritten).front().step, "update_neigh_config_drop_warn");
    EXPECT_EQ(findings_text(judgement, Severity::Review), "");
}

TEST_F(Effects, EachOfTheTable_FitsTheSchema)
{
    stored("");
    EXPECT_NO_THROW(bgp_rehearse::compile_effects(upgrade_->device().schema()));
}

}  // namespace
}  // namespace bgp_test
