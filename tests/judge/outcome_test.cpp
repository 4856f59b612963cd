// Findings on what failed, what stayed behind, what is gone, and what the upgrade as a whole came to. Each is provoked alone,
// and none comes on a healthy router.
#include <gtest/gtest.h>

#include "confd_maapi.h"
#include "nzmw_fault.h"
#include "support/judged_upgrade.h"
#include "support/update_fixture.h"

namespace bgp_test {
namespace {

using bgp_platform::UpgradeHandles;
using bgp_rehearse::Again;
using bgp_rehearse::Finding;
using bgp_rehearse::FindingId;
using bgp_rehearse::Judgement;
using bgp_rehearse::path_of;
using bgp_rehearse::Severity;
using bgp_rehearse::words_of;

std::string route_map(int entity, int map, int entry, const std::string& action)
{
    return "<bgpRouteMapEntry><bgpRmEntIndex>" + std::to_string(entity) + "</bgpRmEntIndex><bgpRouteMapIndex>" +
           std::to_string(map) + "</bgpRouteMapIndex><bgpRouteMapEntryIndex>" + std::to_string(entry) +
           "</bgpRouteMapEntryIndex><bgpRouteMapAction>" + action + "</bgpRouteMapAction></bgpRouteMapEntry>";
}

// A router whose every step has what it needs, with further tables of DC-BGP-MIB and further top elements.
std::string whole_router(const std::string& tables = {}, const std::string& more = {},
                         const std::string& vpn = "<mplsVpnUseBgpRouting>true</mplsVpnUseBgpRouting>")
{
    return config(
        R"(<DC-BGP-MIB xmlns="http://tail-f.com/ns/mibs/DC-BGP-MIB"><bgpRmEntTable><bgpRmEntEntry>
           <bgpRmEntIndex>5</bgpRmEntIndex><bgpRmEntLocalAs>65010</bgpRmEntLocalAs>
           <bgpRmEntLocalIdentifier>c0:00:02:01</bgpRmEntLocalIdentifier><bgpRmEntAdminStatus>up</bgpRmEntAdminStatus>
           <bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6></bgpRmEntEntry></bgpRmEntTable>)" +
        tables + R"(</DC-BGP-MIB><MPLS-VPN-MIB xmlns="http://tail-f.com/ns/mibs/MPLS-VPN-MIB"><mplsVpnEntTable>
           <mplsVpnEntEntry><mplsVpnEntIndex>1</mplsVpnEntIndex>)" +
        vpn + "</mplsVpnEntEntry></mplsVpnEntTable></MPLS-VPN-MIB>" + more);
}

std::string route_maps(const std::string& rows)
{
    return "<bgpRouteMapTable>" + rows + "</bgpRouteMapTable>";
}

std::string findings_after_run(const std::string& configuration)
{
    JudgedUpgrade upgrade(configuration);
    upgrade.run();
    return findings_text(upgrade.judged());
}

Finding the_finding(const Judgement& judgement, FindingId id)
{
    const std::vector<Finding> found = findings_of(judgement, id);
    EXPECT_EQ(found.size(), 1U) << findings_text(judgement);
    return found.empty() ? Finding() : found.front();
}

TEST(OutcomeFindings, RouterThatLacksNothing_HasNone)
{
    EXPECT_EQ(findings_after_run(whole_router(route_maps(route_map(5, 1, 10, "permit")))), "");
}

TEST(OutcomeFindings, RowWhosePlaceIsTaken_IsLeft)
{
    JudgedUpgrade upgrade(whole_router(
        route_maps(route_map(1, 1, 10, "deny") + route_map(5, 1, 10, "permit") + route_map(5, 1, 20, "permit"))));
    upgrade.run();
    const Finding left = the_finding(upgrade.judged(), FindingId::RowLeft);
    EXPECT_EQ(left.step, "update_rm_index");
    ASSERT_EQ(left.places.size(), 1U);
    EXPECT_EQ(path_of(left, left.places[0]), std::string(kRouteMaps) + "{5 1 10}");
    EXPECT_NE(words_of(left, left.places[0]).find("under index 1 stands another row, which differs"),
              std::string::npos);
    EXPECT_NE(left.sentence.find("stays under index 5: its place was taken"), std::string::npos) << left.sentence;
}

TEST(OutcomeFindings, RowWhosePlaceTheSameRowHas_IsLeftAsANote)
{
    JudgedUpgrade upgrade(whole_router(
        route_maps(route_map(1, 1, 10, "permit") + route_map(5, 1, 10, "permit") + route_map(5, 1, 20, "deny"))));
    upgrade.run();
    const Finding left = the_finding(upgrade.judged(), FindingId::RowLeft);
    EXPECT_EQ(left.severity, Severity::Note);
    EXPECT_NE(words_of(left, left.places.at(0)).find("under index 1 stands the same"), std::string::npos);
}

// A neighbour's family whose routes go through a route map.
std::string family_through(int map)
{
    const std::string keys =
        "<bgpRmEntIndex>5</bgpRmEntIndex><bgpPeerLocalAddrType>unknown</bgpPeerLocalAddrType><bgpPeerLocalAddr/>"
        "<bgpPeerLocalPort>0</bgpPeerLocalPort><bgpPeerRemoteAddrType>ipv4</bgpPeerRemoteAddrType>"
        "<bgpPeerRemoteAddr>c6:33:64:02</bgpPeerRemoteAddr><bgpPeerRemotePort>0</bgpPeerRemotePort>"
        "<bgpPeerLocalAddrScopeId>0</bgpPeerLocalAddrScopeId>";
    return "<bgpPeerTable><bgpPeerEntry>" + keys +
           "</bgpPeerEntry></bgpPeerTable><bgpPeerAfiSafiTable><bgpPeerAfiSafiEntry>" + keys +
           "<bgpPeerAfiSafiAfi>ipv4</bgpPeerAfiSafiAfi><bgpPeerAfiSafiSafi>unicast</bgpPeerAfiSafiSafi>" +
           "<bgpPeerAfiSafiInMapIndex>" + std::to_string(map) +
           "</bgpPeerAfiSafiInMapIndex></bgpPeerAfiSafiEntry></bgpPeerAfiSafiTable>";
}

TEST(OutcomeFindings, RowOfAMapThatIsUsed_IsForReviewOfAnotherANote)
{
    for (const auto& [map, severity] : {std::pair{1, Severity::Review}, {2, Severity::Note}}) {
        JudgedUpgrade upgrade(
            whole_router(family_through(map) + route_maps(route_map(1, 1, 10, "deny") + route_map(5, 1, 10, "permit") +
                                                          route_map(5, 2, 10, "permit"))));
        upgrade.run();
        EXPECT_EQ(the_finding(upgrade.judged(), FindingId::RowLeft).severity, severity) << "map " << map;
    }
}

TEST(OutcomeFindings, StoredRowThatIsGone_IsLost)
{
    JudgedUpgrade upgrade(whole_router(route_maps(route_map(5, 1, 10, "permit"))));
    upgrade.run();
    upgrade.by_hand([](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_delete(handles.maapi_socket, handles.thandle, "%s{1 1 10}", kRouteMaps), CONFD_OK);
    });
    const Finding lost = the_finding(upgrade.judged(), FindingId::RowLost);
    EXPECT_EQ(lost.severity, Severity::Stop);
    EXPECT_EQ(path_of(lost, lost.places.at(0)), std::string(kRouteMaps) + "{5 1 10}") << "where it was stored";
}

TEST(OutcomeFindings, JoinThatAStepTakesAwayOnPurpose_IsNotLost)
{
    const std::string join =
        "<bgpRmAfmJoinTable><bgpRmAfmJoinEntry><bgpRmEntIndex>1</bgpRmEntIndex><bgpRmAfmJoin>3</bgpRmAfmJoin>"
        "<bgpRmAfmAdminStatus>down</bgpRmAfmAdminStatus></bgpRmAfmJoinEntry></bgpRmAfmJoinTable>";
    std::string configuration = whole_router(join);
    const std::size_t index = configuration.find("<bgpRmEntIndex>5");
    configuration.replace(index, 16, "<bgpRmEntIndex>1");
    JudgedUpgrade upgrade(configuration);
    upgrade.run();
    const Judgement judgement = upgrade.judged();
    EXPECT_EQ(judgement.account.total.removed, 1U);
    EXPECT_TRUE(findings_of(judgement, FindingId::RowLost).empty()) << findings_text(judgement);
}

TEST(OutcomeFindings, StepThatGaveUp_StopsTheUpgrade)
{
    JudgedUpgrade upgrade(whole_router({}, {}, {}));
    upgrade.run();
    const Finding failed = the_finding(upgrade.judged(), FindingId::StepFailed);
    EXPECT_EQ(failed.step, "update_l3vpn");
    EXPECT_EQ(failed.severity, Severity::Stop);
    EXPECT_EQ(upgrade.judged().verdict.word(), std::string("STOP"));
}

std::string second_entity(const std::string& leaves)
{
    return "<bgpRmEntTable><bgpRmEntEntry><bgpRmEntIndex>65537</bgpRmEntIndex><bgpRmEntLocalAs>65010</"
           "bgpRmEntLocalAs>" +
           leaves + "</bgpRmEntEntry></bgpRmEntTable>";
}

TEST(OutcomeFindings, SeveralEntities_StopTheUpgradeUnlessTheOthersAreOfVrfs)
{
    const std::string maps =
        R"(<bgp-internal xmlns="urn:bgp-update:yang:bgp-internal"><bgp-vrf><vrf-idx>0</vrf-idx><as-to-bgp-idx>
           <as>65010</as><inst-idx>0</inst-idx></as-to-bgp-idx><idx-to-bgp-as><idx>0</idx><as-number>65010</as-number>
           </idx-to-bgp-as></bgp-vrf></bgp-internal>)";
    const std::string of_vrf = second_entity("<bgpRmEntVrfName>red</bgpRmEntVrfName>");
    for (const auto& [configuration, stops] : {std::pair{whole_router(second_entity("")), 1U},
                                               {whole_router(of_vrf), 1U},
                                               {whole_router(of_vrf, maps), 0U}}) {
        JudgedUpgrade upgrade(configuration);
        upgrade.run();
        EXPECT_EQ(findings_of(upgrade.judged(), FindingId::StepFailed).size(), stops)
            << findings_text(upgrade.judged());
    }
}

TEST(OutcomeFindings, FaultThatTheUpgradeWentOnFrom_StopsIt)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.by_hand([](const UpgradeHandles& /*handles*/) {
        nzmw_gen_fault(1, "update_made_up", "src/config_update/made_up", 7, "what went wrong");
    });
    upgrade.run();
    const Finding failed = the_finding(upgrade.judged(), FindingId::StepFailed);
    EXPECT_EQ(words_of(failed, failed.places.at(0)), "update_made_up (src/config_update/made_up:7): what went wrong");
}

TEST(OutcomeFindings, WriteThatNoCallSiteKnows_Failed)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.run();
    upgrade.by_hand([](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_create(handles.maapi_socket, handles.thandle, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}"),
                  CONFD_ERR);
    });
    const Finding failed = the_finding(upgrade.judged(), FindingId::WriteFailed);
    EXPECT_EQ(failed.severity, Severity::Review);
    EXPECT_EQ(failed.sentence, "1 call failed");
    EXPECT_EQ(path_of(failed, failed.places.at(0)), "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}");
    EXPECT_EQ(words_of(failed, failed.places.at(0)),
              "maapi_create: item already exists: /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}");
}

TEST(OutcomeFindings, WriteThatLosesAValue_FailedWithTheContractsWords)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.device().fault_plan().fail(bgp_platform::capi::Function::maapi_set_elem2, "/router/bgp{65010}/router-id");
    upgrade.run();
    const Finding failed = the_finding(upgrade.judged(), FindingId::WriteFailed);
    EXPECT_EQ(failed.step, "update_router_bgp");
    EXPECT_EQ(failed.sentence.rfind("1 call failed: ", 0), 0U);
    EXPECT_GT(failed.sentence.size(), std::string("1 call failed: ").size());
}

TEST(OutcomeFindings, WriteThatFailsOnEachRouter_IsANote)
{
    std::string configuration = whole_router(
        "<bgpPeerTable><bgpPeerEntry><bgpRmEntIndex>5</bgpRmEntIndex><bgpPeerLocalAddrType>unknown</"
        "bgpPeerLocalAddrType>"
        "<bgpPeerLocalAddr></bgpPeerLocalAddr><bgpPeerLocalPort>0</bgpPeerLocalPort>"
        "<bgpPeerRemoteAddrType>ipv4</bgpPeerRemoteAddrType><bgpPeerRemoteAddr>c6:33:64:02</bgpPeerRemoteAddr>"
        "<bgpPeerRemotePort>0</bgpPeerRemotePort><bgpPeerLocalAddrScopeId>0</bgpPeerLocalAddrScopeId>"
        "</bgpPeerEntry></bgpPeerTable>");
    const std::size_t flag = configuration.find("<bgpRmEntSupportIpv6>true");
    configuration.replace(flag, 25, "<bgpRmEntSupportIpv6>false");
    JudgedUpgrade upgrade(configuration);
    upgrade.run();
    const Finding expected = the_finding(upgrade.judged(), FindingId::FailedAsExpected);
    EXPECT_EQ(expected.severity, Severity::Note);
    EXPECT_EQ(expected.sentence, "1 write failed as on every such router: the peer has no IPv6 row yet");
    EXPECT_TRUE(findings_of(upgrade.judged(), FindingId::WriteFailed).empty());
}

TEST(OutcomeFindings, ResultOtherThanZero_StopsTheUpgrade)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.run();
    upgrade.result = 7;
    EXPECT_EQ(findings_text(upgrade.judged()), "stop returned: the upgrade returned 7 instead of 0\n");
}

TEST(OutcomeFindings, ResultThatIsNotValid_StopsTheUpgrade)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.run();
    upgrade.invalid = "";
    EXPECT_EQ(findings_text(upgrade.judged()), "");
    upgrade.invalid = "a leafref leads nowhere";
    EXPECT_EQ(words_of(the_finding(upgrade.judged(), FindingId::NotValid), {nullptr, nullptr, 0, 1}),
              "a leafref leads nowhere");
}

TEST(OutcomeFindings, SecondUpgradeThatStillChanges_IsForReview)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.run();
    upgrade.again = Again{};
    EXPECT_EQ(findings_text(upgrade.judged()), "");
    upgrade.again = Again{{}, {"/a/b{1}", "/a/b{2}"}};
    EXPECT_EQ(findings_text(upgrade.judged()), "review again: a second upgrade of the result still changes 2 rows\n");
    upgrade.again = Again{"SIGSEGV", {}};
    EXPECT_EQ(findings_text(upgrade.judged()), "review again: a second upgrade of the result ends in SIGSEGV\n");
}

TEST(OutcomeFindings, PartOfAnUnknownModule_IsToldWithItsNameSpace)
{
    JudgedUpgrade upgrade(whole_router({}, "<interfaces xmlns=\"urn:example:interfaces\"><interface/></interfaces>"));
    upgrade.run();
    const Finding left_out = the_finding(upgrade.judged(), FindingId::LeftOut);
    EXPECT_EQ(left_out.severity, Severity::Note);
    EXPECT_EQ(words_of(left_out, left_out.places.at(0)).rfind("interfaces (urn:example:interfaces), 2 elements", 0),
              0U);
}

std::vector<std::string> doubts_of(JudgedUpgrade& upgrade)
{
    std::vector<std::string> doubts;
    for (const Finding& finding : findings_of(upgrade.judged(), FindingId::StandInDoubt)) {
        const std::size_t number = finding.sentence.find("question ");
        doubts.push_back(std::string(name_of(finding.severity)) + " " +
                         finding.sentence.substr(number, finding.sentence.find(',', number) - number));
    }
    return doubts;
}

TEST(StandInDoubts, PrefixWithHostBits_IsForReview)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.run();
    EXPECT_EQ(doubts_of(upgrade), std::vector<std::string>());
    upgrade.by_hand([](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_create(handles.maapi_socket, handles.thandle, "/prefix-list{a}"), CONFD_OK);
        EXPECT_EQ(maapi_create(handles.maapi_socket, handles.thandle, "/prefix-list{a}/seq{10}"), CONFD_OK);
        EXPECT_EQ(
            maapi_set_elem2(handles.maapi_socket, handles.thandle, "192.0.2.1/24", "/prefix-list{a}/seq{10}/address"),
            CONFD_OK);
    });
    EXPECT_EQ(doubts_of(upgrade), std::vector<std::string>{"review question 6"});
}

TEST(StandInDoubts, ValueOfAMissingRow_IsToldWhereTheRowIsNotMadeLater)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.run();
    const char* const row = "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{5 7}";
    upgrade.by_hand([&](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_set_elem2(handles.maapi_socket, handles.thandle, "up", "%s/bgpConfigAdminStatus", row),
                  CONFD_ERR);
    });
    EXPECT_EQ(doubts_of(upgrade), std::vector<std::string>{"note question 3"});
    const Finding doubt = the_finding(upgrade.judged(), FindingId::StandInDoubt);
    EXPECT_EQ(
        doubt.sentence,
        "1 call took for granted that setting a value does not make its row (question 3, not proved on a device)");
    EXPECT_EQ(words_of(doubt, doubt.places.at(0)), "first at configuration record 7");
    EXPECT_EQ(path_of(doubt, doubt.places.at(0)), std::string(row) + "/bgpConfigAdminStatus");
    upgrade.by_hand([](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_create(handles.maapi_socket, handles.thandle, "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{1 7}"),
                  CONFD_OK);
    });
    EXPECT_EQ(doubts_of(upgrade), std::vector<std::string>()) << "the re-keying gives the row that index";
}

TEST(StandInDoubts, MoveOntoTheOwnKey_IsToldWhereTheRowIsWrittenBehindIt)
{
    std::string entity = whole_router(
        "<bgpNmEntTable><bgpNmEntEntry><bgpNmEntIndex>1</bgpNmEntIndex><bgpNmEntRmIndex>7"
        "</bgpNmEntRmIndex></bgpNmEntEntry></bgpNmEntTable>");
    entity.replace(entity.find("<bgpRmEntIndex>5"), 16, "<bgpRmEntIndex>1");
    {
        JudgedUpgrade written(entity);
        written.run();
        EXPECT_EQ(doubts_of(written), std::vector<std::string>{"note question 2"});
    }
    entity.replace(entity.find("<bgpNmEntRmIndex>7"), 18, "<bgpNmEntRmIndex>1");
    JudgedUpgrade same(entity);
    same.run();
    EXPECT_EQ(doubts_of(same), std::vector<std::string>());
}

TEST(Verdict, IsThatOfTheSeverestFinding)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.run();
    EXPECT_EQ(upgrade.judged().verdict.word(), std::string("SAFE"));
    upgrade.again = Again{{}, {"/a/b{1}"}};
    EXPECT_EQ(upgrade.judged().verdict.word(), std::string("REVIEW"));
    upgrade.result = 1;
    EXPECT_EQ(upgrade.judged().verdict.word(), std::string("STOP"));
}

TEST(Verdict, ChosenSeverity_CountsInsteadOfTheRules)
{
    JudgedUpgrade upgrade(whole_router());
    upgrade.run();
    upgrade.result = 1;
    Judgement judgement = upgrade.judged();
    settle(bgp_rehearse::chosen_severities({{"returned", "stop"}, {"returned", "note"}}), &judgement);
    EXPECT_EQ(judgement.verdict.word(), std::string("SAFE"));
    EXPECT_THROW(bgp_rehearse::chosen_severities({{"returnd", "note"}}), std::invalid_argument);
    EXPECT_THROW(bgp_rehearse::chosen_severities({{"returned", "bad"}}), std::invalid_argument);
}

}  // namespace
}  // namespace bgp_test
