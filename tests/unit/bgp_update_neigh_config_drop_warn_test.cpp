// The drop-warn step: which leaves of the neighbours' rows are replaced, under which router entity index the rows are
// written, and what is asked for it.
#include "bgp_update/neigh_config_drop_warn.h"

#include <dlfcn.h>

#include "confd_maapi.h"
#include "fwd_resources.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace {

int profile_reads = 0;

}  // namespace

// Stands before the platform's and counts.
int FwdResources::get_user_profile(FwdTableUserData_s* user_data)
{
    using Read = int (*)(FwdResources*, FwdTableUserData_s*);
    static const auto platform =
        reinterpret_cast<Read>(dlsym(RTLD_NEXT, "_ZN12FwdResources16get_user_profileEP18FwdTableUserData_s"));
    ++profile_reads;
    return platform(this, user_data);
}

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::error_text;
using bgp_test::kLocalAs;
using bgp_test::leaf;
using bgp_test::mib;
using bgp_test::planned;

constexpr char kPeers[] = "/DC-BGP-MIB/bgpPeerTable";
constexpr char kFamilies[] = "/DC-BGP-MIB/bgpPeerAfiSafiTable";
constexpr uint32_t kProfile = 250;

std::string entity(uint32_t index)
{
    return bgp_test::bgp_entity(leaf("bgpRmEntIndex", std::to_string(index)) + leaf("bgpRmEntLocalAs", "65010"));
}

// The keys of the neighbour 10.0.0.<number> of entity 5.
std::string keys(int number)
{
    return bgp_test::peer_keys("5", "00:00:00:00", "0a:00:00:0" + std::to_string(number), "179");
}

std::string peer(int number, const std::string& more = {})
{
    return leaf("bgpPeerTable", leaf("bgpPeerEntry", keys(number) + more));
}

std::string family(int number, const std::string& afi, const std::string& safi, const std::string& more = {})
{
    return leaf("bgpPeerAfiSafiTable", leaf("bgpPeerAfiSafiEntry", keys(number) + leaf("bgpPeerAfiSafiAfi", afi) +
                                                                       leaf("bgpPeerAfiSafiSafi", safi) + more));
}

// The stored maps already know the AS: nothing is re-keyed.
constexpr char kInstanceMap[] = R"(<bgp-internal xmlns="urn:bgp-update:yang:bgp-internal"><bgp-vrf>
    <vrf-idx>0</vrf-idx><as-to-bgp-idx><as>65010</as><inst-idx>0</inst-idx></as-to-bgp-idx></bgp-vrf></bgp-internal>)";

std::string peer_path(const std::string& index, int number)
{
    return std::string(kPeers) + "/bgpPeerEntry{" + index + " ipv4 00:00:00:00 0 ipv4 0a:00:00:0" +
           std::to_string(number) + " 179 0}";
}

std::string family_path(const std::string& index, int number, const std::string& families)
{
    return std::string(kFamilies) + "/bgpPeerAfiSafiEntry{" + index + " ipv4 00:00:00:00 0 ipv4 0a:00:00:0" +
           std::to_string(number) + " 179 0 " + families + "}";
}

std::string adjusting(const std::string& index)
{
    return "Adjusting BGP Global RM index from 65010 to " + index + "!\n";
}

class NeighConfigDropWarn : public bgp_test::UpdateTest {
protected:
    void SetUp() override { profile_reads = 0; }
    void TearDown() override { expectNothingLeftOpen(); }

    void setProfile() { device().set_user_profile(kProfile); }

    void expectLogLines(const std::vector<std::string>& lines)
    {
        std::vector<std::string> all = {"enter update_neigh_config_drop_warn\n"};
        all.insert(all.end(), lines.begin(), lines.end());
        all.push_back("exit update_neigh_config_drop_warn\n");
        expectLog(all);
    }
};

TEST_F(NeighConfigDropWarn, RowsOfAnUpgradedRouter_KeepTheirKeysAndGetTheSettings)
{
    stored(entity(5) + kInstanceMap);
    stored(mib(peer(1, leaf("bgpPeerConfigDropWarn", "drop") + leaf("bgpPeerConfigMaxPrfx", "7")) + peer(2)));
    stored(mib(family(1, "ipv4", "unicast", leaf("bgpPeerAfiSafiConfigDropWarn", "drop")) +
               family(1, "ipv6", "unicast") + family(2, "l2vpn", "evpn")));
    setProfile();
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({});
    expectChanges({
        "set " + peer_path("5", 1) + "/bgpPeerConfigDropWarn warn",
        "set " + peer_path("5", 1) + "/bgpPeerConfigMaxPrfx 250",
        "set " + peer_path("5", 2) + "/bgpPeerConfigDropWarn warn",
        "set " + peer_path("5", 2) + "/bgpPeerConfigMaxPrfx 250",
        "set " + family_path("5", 1, "ipv4 unicast") + "/bgpPeerAfiSafiConfigDropWarn warn",
        "set " + family_path("5", 1, "ipv6 unicast") + "/bgpPeerAfiSafiConfigDropWarn warn",
        "set " + family_path("5", 2, "l2vpn evpn") + "/bgpPeerAfiSafiConfigDropWarn warn",
    });
    EXPECT_EQ(profile_reads, 1);
}

TEST_F(NeighConfigDropWarn, BothTables_AreEachReadAndWrittenAtOnce)
{
    stored(entity(1));
    stored(mib(peer(1) + peer(2) + family(1, "ipv4", "unicast")));
    device().recorder().start();
    run(update_neigh_config_drop_warn, 1);
    const std::vector<std::string> index_calls = {std::string("cdb_get ") + kLocalAs + " -> 0",
                                                  "cdb_exists /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010} -> 0",
                                                  "maapi_exists /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1} -> 1"};
    expectCalls({
        std::string("cdb_num_instances ") + kPeers + "/bgpPeerEntry -> 2",
        std::string("cdb_get_values ") + kPeers + " 24 values -> 0",
        index_calls[0],
        index_calls[1],
        index_calls[2],
        std::string("maapi_set_values ") + kPeers + " 24 values -> 0",
        std::string("cdb_num_instances ") + kFamilies + "/bgpPeerAfiSafiEntry -> 1",
        std::string("cdb_get_values ") + kFamilies + " 13 values -> 0",
        index_calls[0],
        index_calls[1],
        index_calls[2],
        std::string("maapi_set_values ") + kFamilies + " 13 values -> 0",
    });
}

TEST_F(NeighConfigDropWarn, RekeyedRouter_HasItsRowsWrittenUnderTheComponent)
{
    stored(entity(1));
    stored(mib(peer(1) + family(1, "ipv4", "unicast")));
    setProfile();
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({adjusting("1"), adjusting("1")});
    expectChanges({
        "create " + peer_path("1", 1),
        "set " + peer_path("1", 1) + "/bgpPeerConfigDropWarn warn",
        "set " + peer_path("1", 1) + "/bgpPeerConfigMaxPrfx 250",
        "create " + family_path("1", 1, "ipv4 unicast"),
        "set " + family_path("1", 1, "ipv4 unicast") + "/bgpPeerAfiSafiConfigDropWarn warn",
    });
}

TEST_F(NeighConfigDropWarn, EntityAfterTheComponent_IsTaken)
{
    stored(entity(2));
    stored(mib(family(1, "ipv4", "unicast")));
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({adjusting("2")});
    expectChanges({"create " + family_path("2", 1, "ipv4 unicast"),
                   "set " + family_path("2", 1, "ipv4 unicast") + "/bgpPeerAfiSafiConfigDropWarn warn"});
}

TEST_F(NeighConfigDropWarn, BothEntities_MeanTheComponent)
{
    stored(entity(2));
    stored(entity(1));
    stored(mib(family(1, "ipv4", "unicast")));
    EXPECT_EQ(run(update_neigh_config_drop_warn, 2), 0);
    expectLogLines({adjusting("1")});
}

TEST_F(NeighConfigDropWarn, NeitherEntity_MeansTheHighestNumber)
{
    stored(entity(5));
    stored(mib(peer(1) + family(1, "ipv4", "unicast")));
    setProfile();
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({adjusting("4294967295"), adjusting("4294967295")});
    expectChanges({
        "create " + peer_path("4294967295", 1),
        "set " + peer_path("4294967295", 1) + "/bgpPeerConfigDropWarn warn",
        "set " + peer_path("4294967295", 1) + "/bgpPeerConfigMaxPrfx 250",
        "create " + family_path("4294967295", 1, "ipv4 unicast"),
        "set " + family_path("4294967295", 1, "ipv4 unicast") + "/bgpPeerAfiSafiConfigDropWarn warn",
    });
}

TEST_F(NeighConfigDropWarn, ComponentOfTheGlobalVrf_IsThePlatforms)
{
    stored(entity(400));
    stored(mib(family(1, "ipv4", "unicast")));
    device().set_vrf_component(400, 1000);
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({adjusting("400")});
}

TEST_F(NeighConfigDropWarn, EntityIndex_IsLookedForInTheTransaction)
{
    stored(entity(1));
    stored(mib(family(1, "ipv4", "unicast")));
    const bgp_platform::UpgradeHandles handles = open();
    confd_value_t moved;
    CONFD_SET_UINT32(&moved, 2);
    ASSERT_EQ(
        maapi_move(handles.maapi_socket, handles.thandle, &moved, 1, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}"),
        CONFD_OK);
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({adjusting("2")});
}

TEST_F(NeighConfigDropWarn, InstanceOfAnotherAs_DoesNotStopTheRekeying)
{
    std::string other = kInstanceMap;
    other.replace(other.find("65010"), 5, "65011");
    stored(entity(1) + other);
    stored(mib(family(1, "ipv4", "unicast")));
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({adjusting("1")});
}

TEST_F(NeighConfigDropWarn, FamiliesWithoutNeighbors_AreWrittenAlone)
{
    stored(entity(5) + kInstanceMap);
    stored(mib(family(1, "ipv4", "unicast")));
    device().recorder().start();
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({});
    expectCalls({
        std::string("cdb_num_instances ") + kPeers + "/bgpPeerEntry -> 0",
        std::string("cdb_num_instances ") + kFamilies + "/bgpPeerAfiSafiEntry -> 1",
        std::string("cdb_get_values ") + kFamilies + " 13 values -> 0",
        std::string("cdb_get ") + kLocalAs + " -> 0",
        "cdb_exists /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010} -> 1",
        std::string("maapi_set_values ") + kFamilies + " 13 values -> 0",
    });
    expectChanges({"set " + family_path("5", 1, "ipv4 unicast") + "/bgpPeerAfiSafiConfigDropWarn warn"});
    EXPECT_EQ(profile_reads, 0);
}

TEST_F(NeighConfigDropWarn, NeighborsWithoutFamilies_AreWrittenAlone)
{
    stored(entity(5) + kInstanceMap);
    stored(mib(peer(1)));
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({});
    expectChanges({"set " + peer_path("5", 1) + "/bgpPeerConfigDropWarn warn",
                   "set " + peer_path("5", 1) + "/bgpPeerConfigMaxPrfx 0"});
}

TEST_F(NeighConfigDropWarn, HighProfile_IsWrittenAsTheSameBits)
{
    stored(entity(5) + kInstanceMap);
    stored(mib(peer(1)));
    device().set_user_profile(4294967295U);
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectChanges({"set " + peer_path("5", 1) + "/bgpPeerConfigDropWarn warn",
                   "set " + peer_path("5", 1) + "/bgpPeerConfigMaxPrfx -1"});
}

TEST_F(NeighConfigDropWarn, NoEntity_ReadsNothing)
{
    stored(mib(peer(1) + family(1, "ipv4", "unicast")));
    device().recorder().start();
    EXPECT_EQ(run(update_neigh_config_drop_warn, 0), 0);
    expectLog(
        {"enter update_neigh_config_drop_warn\n", "No need to update config - exit update_neigh_config_drop_warn\n"});
    expectCalls({});
}

TEST_F(NeighConfigDropWarn, NoRows_AreNotReadOrWritten)
{
    stored(entity(5));
    device().recorder().start();
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({});
    expectCalls({std::string("cdb_num_instances ") + kPeers + "/bgpPeerEntry -> 0",
                 std::string("cdb_num_instances ") + kFamilies + "/bgpPeerAfiSafiEntry -> 0"});
}

TEST_F(NeighConfigDropWarn, FailedCounts_CountAsNoRows)
{
    stored(entity(5));
    stored(mib(peer(1) + family(1, "ipv4", "unicast")));
    faults().fail(Function::cdb_num_instances);
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({});
    expectChanges({});
}

TEST_F(NeighConfigDropWarn, LocalAsAbsent_IsSaidForEachTableAndKeepsTheKeys)
{
    stored(bgp_test::bgp_entity(leaf("bgpRmEntIndex", "1")));
    stored(mib(peer(1) + family(1, "ipv4", "unicast")));
    setProfile();
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    const std::string line = "Failed to get local as number, err: " + absent("cdb_get", kLocalAs) + "\n";
    expectLogLines({line, line});
    expectChanges({
        "set " + peer_path("5", 1) + "/bgpPeerConfigDropWarn warn",
        "set " + peer_path("5", 1) + "/bgpPeerConfigMaxPrfx 250",
        "set " + family_path("5", 1, "ipv4 unicast") + "/bgpPeerAfiSafiConfigDropWarn warn",
    });
}

TEST_F(NeighConfigDropWarn, FailedLookForTheInstance_CountsAsAbsent)
{
    stored(entity(1) + kInstanceMap);
    stored(mib(family(1, "ipv4", "unicast")));
    faults().fail(Function::cdb_exists);
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({adjusting("1")});
}

TEST_F(NeighConfigDropWarn, FailedLookForTheEntity_CountsAsAbsent)
{
    stored(entity(1));
    stored(mib(family(1, "ipv4", "unicast")));
    faults().fail(Function::maapi_exists);
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({adjusting("4294967295")});
}

TEST_F(NeighConfigDropWarn, UnreadTables_AreWrittenAsFarAsTheyWereRead)
{
    stored(entity(5) + kInstanceMap);
    stored(mib(peer(1) + family(1, "ipv4", "unicast")));
    faults().fail(Function::cdb_get_values);
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    const auto no_key = [](const char* path) {
        return error_text("maapi_set_values", CONFD_ERR_BADTYPE, path, "bgpRmEntIndex is a uint32");
    };
    expectLogLines({"Failed to get bgpPeerTable err: " + planned("cdb_get_values", kPeers),
                    "Failed to set bgpPeerTable err: " + no_key(kPeers),
                    "Failed to get BgpPeerAfiSafiTable err: " + planned("cdb_get_values", kFamilies),
                    "Failed to set BgpPeerAfiSafiTable err: " + no_key(kFamilies)});
    expectChanges({});
}

TEST_F(NeighConfigDropWarn, RowsThatAreGoneWhenRead_LeaveTheRowsBeforeThemWritten)
{
    stored(entity(5) + kInstanceMap);
    stored(mib(peer(1)));
    faults().fail(Function::cdb_num_instances, std::string(kPeers) + "/bgpPeerEntry", {0, 2});
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({"Failed to get bgpPeerTable err: " +
                        error_text("cdb_get_values", CONFD_ERR_NOEXISTS, kPeers, "bgpPeerEntry[1]"),
                    "Failed to set bgpPeerTable err: " +
                        error_text("maapi_set_values", CONFD_ERR_BADTYPE, kPeers, "bgpRmEntIndex is a uint32")});
    expectChanges({"set " + peer_path("5", 1) + "/bgpPeerConfigDropWarn warn",
                   "set " + peer_path("5", 1) + "/bgpPeerConfigMaxPrfx 0"});
}

TEST_F(NeighConfigDropWarn, UnwrittenTables_AreSaid)
{
    stored(entity(5) + kInstanceMap);
    stored(mib(peer(1) + family(1, "ipv4", "unicast")));
    faults().fail(Function::maapi_set_values);
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({"Failed to set bgpPeerTable err: " + planned("maapi_set_values", kPeers),
                    "Failed to set BgpPeerAfiSafiTable err: " + planned("maapi_set_values", kFamilies)});
    expectChanges({});
}

TEST_F(NeighConfigDropWarn, ReplacedLeafThatOwnsMemory_IsReleased)
{
    leafHasType("DC-BGP-MIB", "bgpPeerConfigMaxPrfx", "string");
    stored(entity(5) + kInstanceMap);
    stored(mib(peer(1, leaf("bgpPeerConfigMaxPrfx", "many"))));
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({"Failed to set bgpPeerTable err: " +
                    error_text("maapi_set_values", CONFD_ERR_BADTYPE, kPeers, "bgpPeerConfigMaxPrfx is a string")});
    expectNothingLeftOpen();
}

TEST_F(NeighConfigDropWarn, ManyRows_DoNotLiveOnTheStack)
{
    constexpr int kRows = 20000;
    static_assert(kRows * 12 * sizeof(confd_tag_value_t) > 8U << 20, "a stack of the usual size would hold them");
    std::string rows;
    for (int i = 0; i < kRows; ++i) {
        std::string row = keys(1);
        row.replace(row.find("<bgpPeerLocalPort>0"), 19, "<bgpPeerLocalPort>" + std::to_string(i));
        rows += leaf("bgpPeerEntry", row);
    }
    stored(entity(5) + kInstanceMap);
    stored(mib(leaf("bgpPeerTable", rows)));
    EXPECT_EQ(run(update_neigh_config_drop_warn, 1), 0);
    expectLogLines({});
    confd_value_t limit;
    const bgp_platform::UpgradeHandles handles = open();
    ASSERT_EQ(maapi_get_elem(handles.maapi_socket, handles.thandle, &limit,
                             "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{5 ipv4 00:00:00:00 %d ipv4 0a:00:00:01 179 0}/"
                             "bgpPeerConfigMaxPrfx",
                             kRows - 1),
              CONFD_OK);
    EXPECT_EQ(CONFD_GET_INT32(&limit), 0);
}

using NeighConfigDropWarnDeath = NeighConfigDropWarn;

TEST_F(NeighConfigDropWarnDeath, LocalAsOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntLocalAs", "int32");
    stored(entity(1));
    stored(mib(family(1, "ipv4", "unicast")));
    const bgp_platform::UpgradeHandles handles = open();
    EXPECT_DEATH(update_neigh_config_drop_warn(handles.maapi_socket, handles.thandle, handles.cdb_socket, 1),
                 "src/config_update/bgp_update_neigh_config_drop_warn:[0-9]+: "
                 "int get_rm_index\\(int32_t, int32_t, int32_t, nzmw_log_t\\*, uint32_t\\*\\): "
                 "Assertion `\\(&temp\\)->type == C_UINT32' failed\\.");
}

}  // namespace
