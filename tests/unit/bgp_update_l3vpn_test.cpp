// The steps for IPv4 VPNs: who gains the address family and who does not, and which join with the BVM goes.
#include "bgp_update/l3vpn.h"

#include <dlfcn.h>

#include "nz_address.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace {

bool addresses_have_no_text = false;

}  // namespace

// Stands before the platform's, which has a text for every address: none when told so.
extern "C" int HexlistTOipv4str(confd_value_t* in, confd_value_t* out)
{
    static auto* const platforms = reinterpret_cast<decltype(&HexlistTOipv4str)>(dlsym(RTLD_NEXT, "HexlistTOipv4str"));
    return addresses_have_no_text ? CONFD_ERR : platforms(in, out);
}

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::mib;
using bgp_test::planned;

constexpr char kEntityIndex[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex";
constexpr char kFamily[] = "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{5 ipv4 mplsBgpVpn}";
constexpr char kPeerTable[] = "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry";
constexpr char kPeerFamilies[] = "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry";

const std::string kEntity =
    "<bgpRmEntTable><bgpRmEntEntry><bgpRmEntIndex>5</bgpRmEntIndex></bgpRmEntEntry></bgpRmEntTable>";

std::string peer(const std::string& entity, const std::string& remote)
{
    return bgp_test::leaf("bgpPeerEntry", bgp_test::peer_keys(entity, "0a:00:00:01", remote));
}

std::string peers(const std::string& rows)
{
    return "<bgpPeerTable>" + rows + "</bgpPeerTable>";
}

std::string vpn_entity(const std::string& use_bgp_routing)
{
    return R"(<MPLS-VPN-MIB xmlns="http://tail-f.com/ns/mibs/MPLS-VPN-MIB"><mplsVpnEntTable><mplsVpnEntEntry>)"
           "<mplsVpnEntIndex>1</mplsVpnEntIndex>" +
           (use_bgp_routing.empty() ? std::string()
                                    : "<mplsVpnUseBgpRouting>" + use_bgp_routing + "</mplsVpnUseBgpRouting>") +
           "</mplsVpnEntEntry></mplsVpnEntTable></MPLS-VPN-MIB>";
}

// The peer 10.0.0.N of entity 5, in its family table.
std::string peer_family(int number)
{
    return std::string(kPeerFamilies) + "{5 ipv4 0a:00:00:01 0 ipv4 0a:00:00:0" + std::to_string(number) +
           " 0 0 ipv4 mplsBgpVpn}";
}

const std::string kStart = "Update BGP AfiSafi L3VPN\n";
const std::string kEnd = "Finishing BGP AfiSafi L3VPN\n";
const std::string kUpgraded = "The config will be upgraded for BGP entity: 5";
const std::string kWillCreateFamily = std::string("Will create ") + kFamily;

class L3vpn : public bgp_test::UpdateTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }
};

TEST_F(L3vpn, NoMplsVpnEntity_AddsTheFamilyToRouterAndPeers)
{
    stored(mib(kEntity + peers(peer("5", "0a:00:00:02") + peer("5", "0a:00:00:03") + peer("7", "0a:00:00:04"))));
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog({kStart, kUpgraded, kWillCreateFamily, "Found 3 BGP Peer entries", "Handling BGP peer entry : 0",
               "Will create " + peer_family(2), "Will set " + peer_family(2) + "/bgpPeerAfiSafiDisable",
               "Handling BGP peer entry : 1", "Will create " + peer_family(3),
               "Will set " + peer_family(3) + "/bgpPeerAfiSafiDisable", "Handling BGP peer entry : 2",
               "Peer entity index (7) differs from router entity index (5)", kEnd});
    expectChanges({std::string("create ") + kFamily, "create " + peer_family(2),
                   "set " + peer_family(2) + "/bgpPeerAfiSafiDisable true", "create " + peer_family(3),
                   "set " + peer_family(3) + "/bgpPeerAfiSafiDisable true"});
}

TEST_F(L3vpn, NoPeers_EndsThePeerStepAfterCounting)
{
    stored(mib(kEntity));
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog({kStart, kUpgraded, kWillCreateFamily, kEnd});
    expectChanges({std::string("create ") + kFamily});
}

TEST_F(L3vpn, MplsVpnEntityWithBgpRouting_NeedsNothing)
{
    stored(mib(kEntity) + vpn_entity("true"));
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog({kStart, "No need to update VpnEntry"});
    expectChanges({});
}

TEST_F(L3vpn, MplsVpnEntityWithoutBgpRouting_IsLoggedAndNothingIsWritten)
{
    stored(mib(kEntity + peers(peer("5", "0a:00:00:02"))) + vpn_entity("false"));
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog({kStart, kUpgraded, kEnd});
    expectChanges({});
}

TEST_F(L3vpn, MplsVpnEntityWithoutTheFlag_EndsTheStep)
{
    stored(mib(kEntity) + vpn_entity(""));
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog({kStart, "Failed to read mplsVpnUseBgpRouting, err: " +
                           absent("cdb_get", "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{1}/mplsVpnUseBgpRouting") +
                           "\n"});
    expectChanges({});
}

TEST_F(L3vpn, FailedLookForTheMplsVpnEntity_CountsAsAbsent)
{
    stored(mib(kEntity) + vpn_entity("true"));
    faults().fail(Function::cdb_exists);
    EXPECT_EQ(run(update_l3vpn), 0);
    expectChanges({std::string("create ") + kFamily});
}

TEST_F(L3vpn, NoEntity_EndsTheStepWithoutItsClosingLine)
{
    stored(mib(""));
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog({kStart, "Failed to read entity index BGP entry: 0, err: " + absent("cdb_get", kEntityIndex)});
    expectChanges({});
}

TEST_F(L3vpn, RouterFamilyThere_DoesNotStopThePeers)
{
    stored(mib(
        kEntity +
        "<bgpRmAfiSafiTable><bgpRmAfiSafiEntry><bgpRmEntIndex>5</bgpRmEntIndex><bgpRmAfiSafiAfi>ipv4</bgpRmAfiSafiAfi>"
        "<bgpRmAfiSafiSafi>mplsBgpVpn</bgpRmAfiSafiSafi></bgpRmAfiSafiEntry></bgpRmAfiSafiTable>" +
        peers(peer("5", "0a:00:00:02"))));
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog({kStart, kUpgraded, kWillCreateFamily,
               "Failed to create BGP RM AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: 5, err: " +
                   bgp_test::error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS, kFamily),
               "Found 1 BGP Peer entries", "Handling BGP peer entry : 0", "Will create " + peer_family(2),
               "Will set " + peer_family(2) + "/bgpPeerAfiSafiDisable", kEnd});
    expectChanges({"create " + peer_family(2), "set " + peer_family(2) + "/bgpPeerAfiSafiDisable true"});
}

TEST_F(L3vpn, UnreadablePeers_AreLoggedAndLeftAlone)
{
    stored(mib(kEntity + peers(peer("5", "0a:00:00:02"))));
    faults().fail(Function::cdb_get_objects);
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog({kStart, kUpgraded, kWillCreateFamily, "Found 1 BGP Peer entries",
               "Could not get peer entries, err: " + planned("cdb_get_objects", kPeerTable), kEnd});
    expectChanges({std::string("create ") + kFamily});
}

TEST_F(L3vpn, PeerFamilyNotCreated_IsLoggedWithThePeersAddress)
{
    stored(mib(kEntity + peers(peer("5", "0a:00:00:02"))));
    faults().fail(Function::maapi_create, kPeerFamilies);
    EXPECT_EQ(run(update_l3vpn), 0);
    expectLog(
        {kStart, kUpgraded, kWillCreateFamily, "Found 1 BGP Peer entries", "Handling BGP peer entry : 0",
         "Will create " + peer_family(2),
         "Failed to create BGP Peer AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: 5, peer address 10.0.0.2 err: " +
             planned("maapi_create", peer_family(2)),
         kEnd});
    expectChanges({std::string("create ") + kFamily});
}

// The address' text is for the line of a failure alone.
TEST_F(L3vpn, PeerWhoseAddressHasNoText_GainsTheFamilyLikeTheOthers)
{
    stored(mib(kEntity + peers(peer("5", "0a:00:00:02"))));
    addresses_have_no_text = true;
    const int32_t result = run(update_l3vpn);
    addresses_have_no_text = false;
    EXPECT_EQ(result, 0);
    expectChanges({std::string("create ") + kFamily, "create " + peer_family(2),
                   "set " + peer_family(2) + "/bgpPeerAfiSafiDisable true"});
}

TEST_F(L3vpn, DisableFlagNotSet_IsLoggedAndTheRowStays)
{
    stored(mib(kEntity + peers(peer("5", "0a:00:00:02"))));
    faults().fail(Function::maapi_set_elem);
    EXPECT_EQ(run(update_l3vpn), 0);
    const std::string disable = peer_family(2) + "/bgpPeerAfiSafiDisable";
    expectLog({kStart, kUpgraded, kWillCreateFamily, "Found 1 BGP Peer entries", "Handling BGP peer entry : 0",
               "Will create " + peer_family(2), "Will set " + disable,
               "Failed to set val 1 to bgpPeerAfiSafiDisable in entry BGP Peer AFI/SAFI " + peer_family(2) +
                   ", err: " + planned("maapi_set_elem", disable),
               kEnd});
    expectChanges({std::string("create ") + kFamily, "create " + peer_family(2)});
}

using L3vpnDeath = L3vpn;

TEST_F(L3vpnDeath, FlagOfAnotherType_FailsAnAssertion)
{
    leafHasType("MPLS-VPN-MIB", "mplsVpnUseBgpRouting", "uint32");
    stored(mib(kEntity) + vpn_entity("2"));
    EXPECT_DEATH(run(update_l3vpn),
                 "src/config_update/bgp_update_l3vpn:[0-9]+: int32_t update_l3vpn\\(int32_t, int32_t, int32_t\\): "
                 "Assertion `\\(&temp\\)->type == C_ENUM_VALUE' failed");
}

TEST_F(L3vpnDeath, EntityIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntIndex", "int32");
    stored(mib(kEntity));
    EXPECT_DEATH(run(update_l3vpn),
                 "src/config_update/bgp_update_l3vpn:[0-9]+: int32_t update_l3vpn\\(int32_t, int32_t, int32_t\\): "
                 "Assertion `\\(&temp\\)->type == C_UINT32' failed");
}

TEST_F(L3vpnDeath, AddressWithoutTextForTheLineOfAFailure_FailsAnAssertion)
{
    stored(mib(kEntity + peers(peer("5", "0a:00:00:02"))));
    faults().fail(Function::maapi_create, kPeerFamilies);
    EXPECT_DEATH((addresses_have_no_text = true, run(update_l3vpn)),
                 "src/config_update/bgp_update_l3vpn:[0-9]+: int32_t update_peer_afi_safi\\(int32_t, int32_t, int32_t, "
                 "uint32_t\\): Assertion `\\(&temp\\)->type == C_BUF' failed");
}

// The join with the BVM ---------------------------------------------------------------------------------------------

std::string join(const std::string& status)
{
    return "<bgpRmAfmJoinTable><bgpRmAfmJoinEntry><bgpRmEntIndex>5</bgpRmEntIndex><bgpRmAfmJoin>3</bgpRmAfmJoin>" +
           (status.empty() ? std::string() : "<bgpRmAfmAdminStatus>" + status + "</bgpRmAfmAdminStatus>") +
           "</bgpRmAfmJoinEntry></bgpRmAfmJoinTable>";
}

constexpr char kJoin[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 3}";
const std::string kJoinStart = "Starting BGP and BVM join update\n";
const std::string kJoinEnd = "Finishing BGP and BVM join update\n";

using BvmJoin = L3vpn;

TEST_F(BvmJoin, JoinThatIsDown_IsRemoved)
{
    stored(mib(kEntity + join("down")));
    EXPECT_EQ(run(update_bgp_bvm_join, 1), 0);
    expectLog({kJoinStart, kUpgraded, std::string("Remove ") + kJoin + ".\n", kJoinEnd});
    expectChanges({std::string("delete ") + kJoin});
}

TEST_F(BvmJoin, JoinThatIsUp_IsKept)
{
    stored(mib(kEntity + join("up")));
    EXPECT_EQ(run(update_bgp_bvm_join, 1), 0);
    expectLog({kJoinStart, kUpgraded, kJoinEnd});
    expectChanges({});
}

TEST_F(BvmJoin, NoJoin_LeavesNothingToRemove)
{
    stored(mib(kEntity));
    EXPECT_EQ(run(update_bgp_bvm_join, 2), 0);
    expectLog({kJoinStart, kUpgraded, kJoinEnd});
    expectChanges({});
}

TEST_F(BvmJoin, NoEntity_ReadsNothing)
{
    device().recorder().start();
    EXPECT_EQ(run(update_bgp_bvm_join, 0), 0);
    expectLog({kJoinStart, "No need to update BGP and BVM join update\n"});
    expectCalls({});
}

TEST_F(BvmJoin, EntityIndexUnreadable_EndsTheStepWithoutItsClosingLine)
{
    stored(mib(kEntity + join("down")));
    faults().fail(Function::cdb_get);
    EXPECT_EQ(run(update_bgp_bvm_join, 1), 0);
    expectLog({kJoinStart, "Failed to read entity index BGP entry: 0, err: " + planned("cdb_get", kEntityIndex)});
    expectChanges({});
}

TEST_F(BvmJoin, JoinGoneFromTheTransaction_EndsTheStepAllTheSame)
{
    stored(mib(kEntity + join("down")));
    faults().fail(Function::maapi_delete);
    EXPECT_EQ(run(update_bgp_bvm_join, 1), 0);
    expectLog({kJoinStart, kUpgraded, std::string("Remove ") + kJoin + ".\n", kJoinEnd});
    expectChanges({});
}

TEST_F(L3vpnDeath, EntityIndexOfAnotherTypeForTheJoin_FailsAnAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntIndex", "int32");
    stored(mib(kEntity));
    EXPECT_DEATH(run(update_bgp_bvm_join, 1),
                 "src/config_update/bgp_update_l3vpn:[0-9]+: int32_t update_bgp_bvm_join\\(int32_t, int32_t, int32_t, "
                 "int\\): Assertion `\\(&temp\\)->type == C_UINT32' failed");
}

}  // namespace
