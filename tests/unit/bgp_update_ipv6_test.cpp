// The step that switches IPv6 on: all that the entity gains, what a failed write takes along and what not, and which
// peers and route maps are left alone.
#include "bgp_update/ipv6.h"

#include "support/stored_rows.h"
#include "support/text_lines.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::Lines;
using bgp_test::mib;
using bgp_test::planned;
using bgp_test::operator+;

constexpr char kFlag[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}/bgpRmEntSupportIpv6";
constexpr char kHiddenRouter[] = "/internal/router-afi-safi-hidden{5 ipv4 unicast}";
constexpr char kFamily[] = "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{5 ipv6 unicast}";
constexpr char kIpv6Join[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 2}";
constexpr char kNm[] = "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{5}";
constexpr char kListen[] = "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{5 6}";
constexpr char kRtmJoin[] = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{2 5 ariPrtnrBgp}";
constexpr char kPeers[] = "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry";
constexpr char kHiddenPeer[] = "/internal/neighbor-afi-safi-hidden{5 10.0.0.2 ipv4 unicast}";
constexpr char kPeerFamily[] =
    "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{5 ipv4 0a:00:00:01 0 ipv4 0a:00:00:02 0 0 ipv6 unicast}";
constexpr char kRouteMaps[] = "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry";
constexpr char kRouteMap[] = "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{5 1 10}";
constexpr char kNoOctets[] = "00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00";
constexpr char kNoOctetsPrinted[] = "00000000000000000000000000000000";

const std::string kEntity =
    "<bgpRmEntTable><bgpRmEntEntry><bgpRmEntIndex>5</bgpRmEntIndex><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>"
    "</bgpRmEntEntry></bgpRmEntTable>";
const std::string kNmEntity =
    "<bgpNmEntTable><bgpNmEntEntry><bgpNmEntIndex>5</bgpNmEntIndex></bgpNmEntEntry></bgpNmEntTable>";

// A row of the peer 10.0.0.2, seen from 10.0.0.1; of its IPv6 unicast family when `family` is not empty.
std::string peer(const std::string& entity, const std::string& family = {})
{
    return bgp_test::peer_keys(entity, "0a:00:00:01", "0a:00:00:02") + family;
}

std::string peers(const Lines& rows)
{
    std::string xml;
    for (const std::string& row : rows) {
        xml += "<bgpPeerEntry>" + row + "</bgpPeerEntry>";
    }
    return "<bgpPeerTable>" + xml + "</bgpPeerTable>";
}

const std::string kPeerFamilyRow =
    "<bgpPeerAfiSafiTable><bgpPeerAfiSafiEntry>" +
    peer("5", "<bgpPeerAfiSafiAfi>ipv6</bgpPeerAfiSafiAfi><bgpPeerAfiSafiSafi>unicast</bgpPeerAfiSafiSafi>") +
    "</bgpPeerAfiSafiEntry></bgpPeerAfiSafiTable>";

std::string route_maps(const Lines& entities)
{
    std::string xml;
    for (const std::string& entity : entities) {
        xml += "<bgpRouteMapEntry><bgpRmEntIndex>" + entity +
               "</bgpRmEntIndex><bgpRouteMapIndex>1</bgpRouteMapIndex>"
               "<bgpRouteMapEntryIndex>10</bgpRouteMapEntryIndex></bgpRouteMapEntry>";
    }
    return "<bgpRouteMapTable>" + xml + "</bgpRouteMapTable>";
}

std::string below(const std::string& path, const std::string& leaf)
{
    return path + "/" + leaf;
}

// What each piece of the step says when all goes well, and what it changes.
const Lines kStart = {"Update BGP Ipv6\n", "Will upgrade config for for BGP entry 0", "BGP entry 0 entity index: 5",
                      std::string("Will set ") + kFlag + " to true"};
const Lines kEnd = {"Finishing BGP Ipv6 update\n"};
const Lines kFamilies = {std::string("Will create ") + kHiddenRouter, std::string("Will create ") + kFamily};
const Lines kIpv6Joins = {std::string("Will create ") + kIpv6Join,
                          "Will set " + below(kIpv6Join, "bgpRmAfmPartnerIndex"),
                          "Will set " + below(kIpv6Join, "bgpRmAfmAfi")};
const Lines kBfd = {"Will set " + below(kNm, "bgpNmEntBfdEntityIndex")};
const Lines kListens = {std::string("Will create ") + kListen, "Will set " + below(kListen, "bgpNmListenAdminStatus"),
                        "Will set " + below(kListen, "bgpNmListenAddrType"),
                        "Will set " + below(kListen, "bgpNmListenAddr"),
                        std::string("Will set val ") + kNoOctetsPrinted + " to " + below(kListen, "bgpNmListenAddr")};
const Lines kRtmJoins = {std::string("Will create ") + kRtmJoin, "Will set " + below(kRtmJoin, "rtmMjSafi")};

const Lines kFlagSet = {std::string("set ") + kFlag + " true"};
const Lines kFamilyCreated = {std::string("create ") + kFamily};
const Lines kIpv6Joined = {std::string("create ") + kIpv6Join, "set " + below(kIpv6Join, "bgpRmAfmPartnerIndex") + " 2",
                           "set " + below(kIpv6Join, "bgpRmAfmAfi") + " ipv6"};
const Lines kListening = {std::string("create ") + kListen, "set " + below(kListen, "bgpNmListenAddrType") + " ipv6",
                          "set " + below(kListen, "bgpNmListenAddr") + " " + kNoOctets,
                          "set " + below(kListen, "bgpNmListenAdminStatus") + " up"};
const Lines kRtmJoined = {std::string("create ") + kRtmJoin, "set " + below(kRtmJoin, "rtmMjSafi") + " unicast"};
const Lines kRouterHidden = {std::string("create ") + kHiddenRouter};

class Ipv6 : public bgp_test::UpdateTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }

    void expectAfter(const Lines& start, const Lines& lines) { expectLog(start + lines + kEnd); }
};

TEST_F(Ipv6, Entity_GainsAllThatIpv6Needs)
{
    stored(mib(kEntity + kNmEntity + peers({peer("5")}) + kPeerFamilyRow + route_maps({"5"})));
    EXPECT_EQ(run(update_ipv6), 0);
    expectLog(kStart + kFamilies + kIpv6Joins + kBfd + kListens + kRtmJoins +
              Lines{"Found 1 BGP Peer entries", "Handling BGP peer entry : 0",
                    std::string("Will create ") + kHiddenPeer,
                    "Will set " + below(kPeerFamily, "bgpPeerAfiSafiDisable"), "Found 1 BGP RouteMap entries",
                    "Handling BGP RouteMap entry : 0", "Will set " + below(kRouteMap, "bgpRouteMapMaAfiDef"),
                    "Will set " + below(kRouteMap, "bgpRouteMapMaSafiDef")} +
              kEnd);
    // The route map's SAFI default is the number of the AFI again.
    expectChanges(kFlagSet + kFamilyCreated + kIpv6Joined +
                  Lines{"set " + below(kNm, "bgpNmEntBfdEntityIndex") + " 0"} + kListening +
                  Lines{"set " + below(kPeerFamily, "bgpPeerAfiSafiDisable") + " true",
                        "set " + below(kRouteMap, "bgpRouteMapMaAfiDef") + " ipv6",
                        "set " + below(kRouteMap, "bgpRouteMapMaSafiDef") + " multicast"} +
                  kRtmJoined + kRouterHidden + Lines{std::string("create ") + kHiddenPeer});
}

TEST_F(Ipv6, EntityIndexUnreadable_WritesNothing)
{
    stored(mib(""));
    EXPECT_EQ(run(update_ipv6), 0);
    expectLog({"Update BGP Ipv6\n",
               "Failed to read entity index BGP entry: 0, err: " +
                   absent("cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex"),
               "Finishing BGP Ipv6 update\n"});
    expectChanges({});
}

TEST_F(Ipv6, FlagNotSet_WritesNothingElse)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_set_elem, kFlag);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart, {"Failed to enable IPv6 for BGP entity id: 5, err: " + planned("maapi_set_elem", kFlag)});
    expectChanges({});
}

// Names that several modules have are those of the BGP MIB from then on.
TEST_F(Ipv6, Namespace_IsSetBeforeTheFirstWrite)
{
    stored(mib(kEntity));
    faults().fail(Function::maapi_set_elem, kFlag);
    device().recorder().start();
    run(update_ipv6);
    expectCalls({
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex -> 0",
        "maapi_set_namespace 82011741 -> 0",
        std::string("maapi_set_elem ") + kFlag + " -> -1 (internal error)",
    });
}

TEST_F(Ipv6, HiddenRouterRowNotCreated_LeavesTheFamilyOutAlone)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_create, kHiddenRouter);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(
        kStart,
        Lines{kFamilies[0],
              "Failed to create BGP RM AFI/SAFI ipv4 unicast internal hidden entry for BGP entity id: 5, err: " +
                  planned("maapi_create", kHiddenRouter)} +
            kIpv6Joins + kBfd + kListens + kRtmJoins);
    expectChanges(kFlagSet + kIpv6Joined + Lines{"set " + below(kNm, "bgpNmEntBfdEntityIndex") + " 0"} + kListening +
                  kRtmJoined);
}

TEST_F(Ipv6, FamilyNotCreated_IsLoggedAndTheStepGoesOn)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_create, kFamily);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart, kFamilies +
                            Lines{"Failed to create BGP RM AFI/SAFI ipv6 unicast entry for BGP entity id: 5, err: " +
                                  planned("maapi_create", kFamily)} +
                            kIpv6Joins + kBfd + kListens + kRtmJoins);
}

TEST_F(Ipv6, JoinNotCreated_IsLoggedWithoutItsLeaves)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_create, kIpv6Join);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart, kFamilies +
                            Lines{kIpv6Joins[0],
                                  "Failed to create BGP RM AFM JOIN ipv6 entry for BGP entity id: 5, partner idx: 2, "
                                  "err: " +
                                      planned("maapi_create", kIpv6Join)} +
                            kBfd + kListens + kRtmJoins);
}

TEST_F(Ipv6, JoinLeavesNotSet_AreLoggedOneByOne)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_set_elem, kIpv6Join);
    EXPECT_EQ(run(update_ipv6), 0);
    const std::string failed =
        "Failed to set val 2 to bgpRmAfmPartnerIndex in entry BGP entity id: 5, partner idx: 2, ";
    expectAfter(kStart,
                kFamilies +
                    Lines{kIpv6Joins[0], kIpv6Joins[1],
                          failed + planned("maapi_set_elem", below(kIpv6Join, "bgpRmAfmPartnerIndex")), kIpv6Joins[2],
                          failed + "err: " + planned("maapi_set_elem", below(kIpv6Join, "bgpRmAfmAfi"))} +
                    kBfd + kListens + kRtmJoins);
}

TEST_F(Ipv6, NoNmEntity_StillListens)
{
    stored(mib(kEntity));
    faults().fail(Function::maapi_exists, kNm);  // so that the text of the last error is known
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart,
                kFamilies + kIpv6Joins + kBfd +
                    Lines{"Path " + std::string(kNm) + " does not exist! Err: " + planned("maapi_exists", kNm)} +
                    kListens + kRtmJoins);
    expectChanges(kFlagSet + kFamilyCreated + kIpv6Joined + kListening + kRtmJoined + kRouterHidden);
}

TEST_F(Ipv6, BfdEntityNotSet_IsLogged)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_set_elem, kNm);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart, kFamilies + kIpv6Joins + kBfd +
                            Lines{"Failed to set val 0 to bgpNmEntBfdEntityIndex in entry BGP NM entity id: 5, err: " +
                                  planned("maapi_set_elem", below(kNm, "bgpNmEntBfdEntityIndex"))} +
                            kListens + kRtmJoins);
}

TEST_F(Ipv6, ListenRowNotCreated_IsLoggedWithoutItsLeaves)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_create, kListen);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart,
                kFamilies + kIpv6Joins + kBfd +
                    Lines{kListens[0],
                          "Failed to create BGP NM LISTEN ipv6 entry for BGP NM entity id: 5, NM Listen idx: 6, "
                          "err: " +
                              planned("maapi_create", kListen)} +
                    kRtmJoins);
}

TEST_F(Ipv6, ListenLeavesNotSet_AreLoggedOneByOne)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_set_elem, kListen);
    EXPECT_EQ(run(update_ipv6), 0);
    const auto error = [](const char* leaf) { return planned("maapi_set_elem", below(kListen, leaf)); };
    expectAfter(
        kStart,
        kFamilies + kIpv6Joins + kBfd +
            Lines{
                kListens[0], kListens[1],
                "Failed to set val 1 to bgpNmListenAdminStatus in entry BGP NM entity id: 5, NM Listen idx: 6, err: " +
                    error("bgpNmListenAdminStatus"),
                kListens[2],
                "Failed to set val 2 to bgpNmListenAddrType in entry NM entity id: 5, NM Listen idx: 6, err: " +
                    error("bgpNmListenAddrType"),
                kListens[3], kListens[4],
                std::string("Failed to set val ") + kNoOctetsPrinted +
                    " to bgpRmAfmPartnerIndex in entry NM entity id: 5, NM Listen idx: 6, err: " +
                    error("bgpNmListenAddr")} +
            kRtmJoins);
}

TEST_F(Ipv6, RtmJoinNotCreated_IsLoggedWithItsNumbersTheOtherWayRound)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_create, kRtmJoin);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart,
                kFamilies + kIpv6Joins + kBfd + kListens +
                    Lines{kRtmJoins[0],
                          "Failed to create RTM JOIN ipv6 ariPrtnrBgp entry for BGP entity id: 2, partner idx: 5, "
                          "err: " +
                              planned("maapi_create", kRtmJoin)});
}

TEST_F(Ipv6, RtmJoinLeafNotSet_IsLoggedWithTheNumberAfterTheEntity)
{
    stored(mib(kEntity + kNmEntity));
    faults().fail(Function::maapi_set_elem, kRtmJoin);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart,
                kFamilies + kIpv6Joins + kBfd + kListens + kRtmJoins +
                    Lines{"Failed to set val 1 to rtmMjSafi in entry RTM JOIN BGP entity id: 5, partner idx: 6, "
                          "err: " +
                          planned("maapi_set_elem", below(kRtmJoin, "rtmMjSafi"))});
}

TEST_F(Ipv6, PeersAndRouteMapsOfOtherEntities_AreLeftAlone)
{
    stored(mib(kEntity + kNmEntity + peers({peer("7")}) + route_maps({"7"})));
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart, kFamilies + kIpv6Joins + kBfd + kListens + kRtmJoins +
                            Lines{"Found 1 BGP Peer entries", "Handling BGP peer entry : 0",
                                  "Peer entity index (7) differs from router entity index (5)",
                                  "Found 1 BGP RouteMap entries", "Handling BGP RouteMap entry : 0",
                                  "RouteMap entity index (7) differs from router entity index (5)"});
    expectChanges(kFlagSet + kFamilyCreated + kIpv6Joined +
                  Lines{"set " + below(kNm, "bgpNmEntBfdEntityIndex") + " 0"} + kListening + kRtmJoined +
                  kRouterHidden);
}

TEST_F(Ipv6, UnreadablePeersAndRouteMaps_AreLoggedAndLeftAlone)
{
    stored(mib(kEntity + kNmEntity + peers({peer("5")}) + route_maps({"5"})));
    faults().fail(Function::cdb_get_objects);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(kStart, kFamilies + kIpv6Joins + kBfd + kListens + kRtmJoins +
                            Lines{"Found 1 BGP Peer entries",
                                  "Could not get peer entries, err: " + planned("cdb_get_objects", kPeers),
                                  "Found 1 BGP RouteMap entries",
                                  "Could not get RouteMap entries, err: " + planned("cdb_get_objects", kRouteMaps)});
}

TEST_F(Ipv6, HiddenPeerRowNotCreated_LeavesThePeerAlone)
{
    stored(mib(kEntity + kNmEntity + peers({peer("5")}) + kPeerFamilyRow));
    faults().fail(Function::maapi_create, kHiddenPeer);
    EXPECT_EQ(run(update_ipv6), 0);
    expectAfter(
        kStart,
        kFamilies + kIpv6Joins + kBfd + kListens + kRtmJoins +
            Lines{"Found 1 BGP Peer entries", "Handling BGP peer entry : 0", std::string("Will create ") + kHiddenPeer,
                  "Failed to create BGP Peer AFI/SAFI ipv4 unicast internal hidden entry for BGP entity "
                  "id: 5, peer address 10.0.0.2 err: " +
                      planned("maapi_create", kHiddenPeer)});
}

TEST_F(Ipv6, PeerWithoutIpv6Row_IsLoggedAndGainsNone)
{
    stored(mib(kEntity + kNmEntity + peers({peer("5")})));
    EXPECT_EQ(run(update_ipv6), 0);
    const std::string disable = below(kPeerFamily, "bgpPeerAfiSafiDisable");
    expectAfter(kStart,
                kFamilies + kIpv6Joins + kBfd + kListens + kRtmJoins +
                    Lines{"Found 1 BGP Peer entries", "Handling BGP peer entry : 0",
                          std::string("Will create ") + kHiddenPeer, "Will set " + disable,
                          std::string("Failed to set val 1 to bgpPeerAfiSafiDisable in entry BGP Peer AFI/SAFI ") +
                              kPeerFamily + ", err: " + absent("maapi_set_elem", disable)});
}

TEST_F(Ipv6, RouteMapLeavesNotSet_AreLoggedOneByOne)
{
    stored(mib(kEntity + kNmEntity + route_maps({"5"})));
    faults().fail(Function::maapi_set_elem, kRouteMap);
    EXPECT_EQ(run(update_ipv6), 0);
    Lines lines = {"Found 1 BGP RouteMap entries", "Handling BGP RouteMap entry : 0"};
    for (const char* leaf : {"bgpRouteMapMaAfiDef", "bgpRouteMapMaSafiDef"}) {
        const std::string path = below(kRouteMap, leaf);
        lines.push_back("Will set " + path);
        lines.push_back(std::string("Failed to set val 2 to ") + leaf + " in entry BGP RouteMap " + kRouteMap +
                        ", err: " + planned("maapi_set_elem", path));
    }
    expectAfter(kStart, kFamilies + kIpv6Joins + kBfd + kListens + kRtmJoins + lines);
}

TEST_F(Ipv6, OtherComponentOfTheGlobalVrf_NamesThePartner)
{
    stored(mib(kEntity + kNmEntity));
    device().set_vrf_component(40, 65536);
    EXPECT_EQ(run(update_ipv6), 0);
    const std::string join = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 41}";
    const std::string rtm_join = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{41 5 ariPrtnrBgp}";
    expectChanges(
        kFlagSet + kFamilyCreated +
        Lines{"create " + join, "set " + below(join, "bgpRmAfmPartnerIndex") + " 41",
              "set " + below(join, "bgpRmAfmAfi") + " ipv6", "set " + below(kNm, "bgpNmEntBfdEntityIndex") + " 0"} +
        kListening + Lines{"create " + rtm_join, "set " + below(rtm_join, "rtmMjSafi") + " unicast"} + kRouterHidden);
}

using Ipv6Death = Ipv6;

TEST_F(Ipv6Death, EntityIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntIndex", "int32");
    stored(mib(kEntity));
    EXPECT_DEATH(run(update_ipv6),
                 "src/config_update/bgp_update_ipv6:[0-9]+: int32_t update_ipv6\\(int32_t, int32_t, int32_t\\): "
                 "Assertion `\\(&temp\\)->type == C_UINT32' failed");
}

}  // namespace
