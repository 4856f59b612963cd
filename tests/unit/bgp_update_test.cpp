// The upgrade's entry point: what it reads, says and runs for no, one and several BGP router entities.
#include "bgp_update/update.h"

#include <algorithm>

#include "confd_maapi.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::bgp_entity;
using bgp_test::kLocalAs;
using bgp_test::planned;

constexpr char kSupportIpv6[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntSupportIpv6";
constexpr char kEntities[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry";

// The entity has a high-level entry already, so that the router step says just three lines.
constexpr char kUpgradedRouter[] =
    R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number></bgp></router>)";
constexpr char kUpgradedRouterWithVrfs[] =
    R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number>
    <vrf><name>blue</name></vrf><vrf><name>red</name></vrf></bgp></router>)";

// There is an MPLS-VPN entity already, so that the VPN step says just two lines.
const std::string kVpnEntity = R"(<MPLS-VPN-MIB xmlns="http://tail-f.com/ns/mibs/MPLS-VPN-MIB"><mplsVpnEntTable>
    <mplsVpnEntEntry><mplsVpnEntIndex>1</mplsVpnEntIndex><mplsVpnUseBgpRouting>true</mplsVpnUseBgpRouting>
    </mplsVpnEntEntry></mplsVpnEntTable></MPLS-VPN-MIB>)";

// The same, and the maps know the entity's AS already, so that the re-keying step says just three lines.
const std::string kInstanceMap = kVpnEntity + R"(<bgp-internal xmlns="urn:bgp-update:yang:bgp-internal"><bgp-vrf>
    <vrf-idx>0</vrf-idx><as-to-bgp-idx><as>65010</as><inst-idx>0</inst-idx></as-to-bgp-idx></bgp-vrf></bgp-internal>)";

const std::vector<std::string> kVpnLines = {"Update BGP AfiSafi L3VPN\n", "No need to update VpnEntry"};

std::string entity(const std::string& more)
{
    return bgp_entity("<bgpRmEntIndex>5</bgpRmEntIndex>" + more);
}

// What the closing steps say to a number of entities that have no rows for them.
std::vector<std::string> closing(int entities)
{
    if (entities == 0) {
        return {"enter update_neigh_config_drop_warn\n",
                "No need to update config - exit update_neigh_config_drop_warn\n",
                "enter update_neigh_config_afi_safi\n",
                "No need to update config - exit update_neigh_config_afi_safi\n",
                "Starting BGP and BVM join update\n",
                "No need to update BGP and BVM join update\n",
                "Update BGP VRF IPv6\n",
                "No BGP config to update"};
    }
    return {"enter update_neigh_config_drop_warn\n",
            "exit update_neigh_config_drop_warn\n",
            "enter update_neigh_config_afi_safi\n",
            "No afi table entries to update\n",
            "exit update_neigh_config_afi_safi\n",
            "Starting BGP and BVM join update\n",
            "The config will be upgraded for BGP entity: 5",
            "Finishing BGP and BVM join update\n",
            "Update BGP VRF IPv6\n",
            "Finishing VRF IPv6 update\n"};
}

// The same where no count can be had: only the look at the join with the BVM and the walks over the address families and
// over the VRFs, of which these lines tell, are made all the same.
std::vector<std::string> uncounted_closing(const std::vector<std::string>& join_lines,
                                           const std::vector<std::string>& vrf_lines)
{
    std::vector<std::string> lines = {"enter update_neigh_config_drop_warn\n", "exit update_neigh_config_drop_warn\n",
                                      "enter update_neigh_config_afi_safi\n",  "enter update_neigh_config_unused_AFs\n",
                                      "Will process '-1' neighbor entries\n",  "exit update_neigh_config_unused_AFs\n",
                                      "exit update_neigh_config_afi_safi\n"};
    lines.insert(lines.end(), join_lines.begin(), join_lines.end());
    lines.push_back("Update BGP VRF IPv6\n");
    lines.insert(lines.end(), vrf_lines.begin(), vrf_lines.end());
    return lines;
}

class BgpUpdate : public bgp_test::UpdateTest {
protected:
    void SetUp() override { error_before_ = confd_lasterr(); }

    // The log of an upgrade, from the lines up to its closing steps and from theirs.
    void expectUpgradeLog(std::vector<std::string> lines, const std::vector<std::string>& closing_lines)
    {
        lines.insert(lines.begin(), "Starting BGP update\n");
        lines.insert(lines.end(), closing_lines.begin(), closing_lines.end());
        lines.push_back("Finishing BGP update\n");
        expectLog(lines);
    }

    // The log of an upgrade whose router step finds its entry and whose re-keying step finds its instance, around the
    // lines between the two and those from there to the closing steps.
    void expectLogAfterRouterStep(const std::vector<std::string>& lines, const std::vector<std::string>& last_lines,
                                  const std::vector<std::string>& rekeying_lines = {"Starting BGP RM index update\n",
                                                                                    "BGP entry entity index: 5",
                                                                                    "No need to update rm index!\n"})
    {
        std::vector<std::string> all = {"Found 1 BGP entities", "Starting BGP router update\n",
                                        "Router BGP high-level already exists  err:" + error_before_,
                                        "Finishing BGP router update\n", "Handling BGP entry : 0"};
        for (const auto& more : {lines, kVpnLines, rekeying_lines, last_lines}) {
            all.insert(all.end(), more.begin(), more.end());
        }
        expectUpgradeLog(all, closing_);
    }

    std::string countLine(int entities, int vrfs, const std::string& error)
    {
        return "num bgp: " + std::to_string(entities) + ", num_bgp_vrs: " + std::to_string(vrfs) + ", err: " + error +
               "\n";
    }

    std::string error_before_;
    std::vector<std::string> closing_ = closing(1);
};

TEST_F(BgpUpdate, NoEntity_RunsOnlyTheClosingStepsAndSaysSo)
{
    upgrade();
    expectUpgradeLog({"Found 0 BGP entities", "No need to update others config\n"}, closing(0));
    expectChanges({});
}

TEST_F(BgpUpdate, TwoEntities_AreLeftAlone)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    stored(bgp_entity("<bgpRmEntIndex>6</bgpRmEntIndex><bgpRmEntLocalAs>65020</bgpRmEntLocalAs>"));
    upgrade();
    expectUpgradeLog({"Found 2 BGP entities", "No need to update others config\n"}, closing(2));
    expectChanges({});
}

TEST_F(BgpUpdate, OneEntity_GetsItsRouterEntryFirst)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kInstanceMap);
    upgrade();
    expectChanges({"create /router/bgp{65010}"});
    const std::vector<std::string>& log = device().log();
    ASSERT_GT(log.size(), 15U) << bgp_test::listing(log);
    EXPECT_EQ(log[1], "Found 1 BGP entities");
    EXPECT_EQ(log[2], "Starting BGP router update\n");
    EXPECT_EQ(log[3], "Router BGP as-number: 65010 created");
    EXPECT_EQ(log[14], "Finishing BGP router update\n");
    EXPECT_EQ(log[15], "Handling BGP entry : 0");
    expectNothingLeftOpen();
}

TEST_F(BgpUpdate, FailedRouterStep_DoesNotStopTheSequence)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kInstanceMap);
    faults().fail(Function::maapi_create);
    upgrade();
    const std::string error = planned("maapi_create", "/router/bgp{65010}");
    expectUpgradeLog(
        {"Found 1 BGP entities", "Starting BGP router update\n", "Failed to configure router bgp: 65010, err: " + error,
         "Handling BGP entry : 0", "Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0",
         "Update BGP AfiSafi L3VPN\n", "No need to update VpnEntry", "Starting BGP RM index update\n",
         "BGP entry entity index: 5", "No need to update rm index!\n", countLine(1, 0, error)},
        closing(1));
    expectChanges({});
}

TEST_F(BgpUpdate, Ipv6FlagTrue_IsReportedAsEnabled)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    stored(kInstanceMap);
    upgrade();
    expectLogAfterRouterStep({"Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0"},
                             {countLine(1, 0, error_before_)});
    expectChanges({});
}

TEST_F(BgpUpdate, Ipv6FlagFalse_RunsTheIpv6StepBetweenItsLines)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    stored(kInstanceMap);
    // With its first write failing the IPv6 step says just these lines.
    const std::string flag = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}/bgpRmEntSupportIpv6";
    faults().fail(Function::maapi_set_elem, flag);
    upgrade();
    const std::string error = planned("maapi_set_elem", flag);
    expectLogAfterRouterStep(
        {"Read IPv6 flag 2 for BGP entry 0", "Update BGP Ipv6\n", "Will upgrade config for for BGP entry 0",
         "BGP entry 0 entity index: 5", "Will set " + flag + " to true",
         "Failed to enable IPv6 for BGP entity id: 5, err: " + error, "Finishing BGP Ipv6 update\n"},
        {countLine(1, 0, error)});
    expectChanges({});
}

TEST_F(BgpUpdate, Ipv6FlagAbsent_IsLoggedAndTheRestGoesOn)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    stored(kUpgradedRouter);
    stored(kInstanceMap);
    upgrade();
    const std::string error = absent("cdb_get_enum_value", kSupportIpv6);
    expectLogAfterRouterStep({"Failed to read IPv6 enable flag for BGP entry: 0, err: " + error},
                             {countLine(1, 0, error)});
}

TEST_F(BgpUpdate, LocalAsAbsent_EndsTheEntitysStepsSilently)
{
    stored(entity("<bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kVpnEntity);
    upgrade();
    expectUpgradeLog(
        {"Found 1 BGP entities", "Starting BGP router update\n",
         "Failed to read as-number  err: " + absent("cdb_get", kLocalAs), "Finishing BGP router update\n",
         "Handling BGP entry : 0", "Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0",
         "Update BGP AfiSafi L3VPN\n", "No need to update VpnEntry", "Starting BGP RM index update\n",
         "BGP entry entity index: 5", "Failed to get local as number, err: " + absent("cdb_get", kLocalAs) + "\n"},
        closing(1));
    expectChanges({});
}

// One old prefix access list, number 7, named "customers" under entity 5.
constexpr char kOldPrefixLists[] = R"(
    <DC-AALL-MIB xmlns="http://tail-f.com/ns/mibs/DC-AALL-MIB"><aallPreAccessListTable><aallPreAccessListEntry>
      <aallPreAccessListListIndex>7</aallPreAccessListListIndex>
      <aallPreAccessListRuleIndex>5</aallPreAccessListRuleIndex>
      <aallPreAccessListAddrPrefix>0a:00:00:00</aallPreAccessListAddrPrefix>
      <aallPreAccessListAddrPrefLen>8</aallPreAccessListAddrPrefLen>
      <aallPreAccessListIncluded>permit</aallPreAccessListIncluded>
    </aallPreAccessListEntry></aallPreAccessListTable></DC-AALL-MIB>
    <internal xmlns="urn:bgp-update:yang:metacli-internal"><aallPreAccessListEntry-hidden>
      <aallPreAccessListEntry-get><entity>5</entity><list>7</list><name>customers</name></aallPreAccessListEntry-get>
      <aallPreAccessListEntry_next_free_index>8</aallPreAccessListEntry_next_free_index>
    </aallPreAccessListEntry-hidden></internal>)";

class BgpUpdatePrefixLists : public BgpUpdate {
protected:
    void SetUp() override
    {
        BgpUpdate::SetUp();
        stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
        stored(kUpgradedRouter);
        stored(kInstanceMap);
    }

    // How often the upgrade said a line.
    std::ptrdiff_t times(const std::string& line)
    {
        return std::count(device().log().begin(), device().log().end(), line);
    }
};

TEST_F(BgpUpdatePrefixLists, OldListsAlone_AreMigratedForTheEntity)
{
    stored(kOldPrefixLists);
    upgrade();
    EXPECT_EQ(times("Update Prefix List\n"), 1);
    EXPECT_EQ(times("Found name customers for idx 7"), 1) << "the name is stored under the entity's index";
    EXPECT_EQ(times("Finishing Prefix List update\n"), 1);
    expectNothingLeftOpen();
}

TEST_F(BgpUpdatePrefixLists, NewListThere_KeepsTheOldOnesUnmigrated)
{
    stored(kOldPrefixLists);
    stored(R"(<prefix-list xmlns="urn:bgp-update:yang:prefix-list"><name>transit</name></prefix-list>)");
    upgrade();
    EXPECT_EQ(times("Update Prefix List\n"), 0);
}

TEST_F(BgpUpdatePrefixLists, NoOldLists_AreNotMigrated)
{
    upgrade();
    EXPECT_EQ(times("Update Prefix List\n"), 0);
}

TEST_F(BgpUpdatePrefixLists, FailedCountOfOldLists_CountsAsNone)
{
    stored(kOldPrefixLists);
    faults().fail(Function::cdb_num_instances, "/DC-AALL-MIB/");
    upgrade();
    EXPECT_EQ(times("Update Prefix List\n"), 0);
}

TEST_F(BgpUpdatePrefixLists, FailedCountOfNewLists_CountsAsNone)
{
    stored(kOldPrefixLists);
    faults().fail(Function::cdb_num_instances, "/prefix-list");
    upgrade();
    EXPECT_EQ(times("Finishing Prefix List update\n"), 1);
}

TEST_F(BgpUpdatePrefixLists, EntityIndexUnreadable_SkipsThemSilently)
{
    stored(kOldPrefixLists);
    faults().fail(Function::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex", {}, 1);
    upgrade();
    expectLogAfterRouterStep(
        {"Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0"},
        {countLine(1, 0, planned("cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex"))}, {});
    expectChanges({});
}

TEST_F(BgpUpdatePrefixLists, OldLists_AreMigratedBeforeTheTablesAreRekeyed)
{
    stored(kOldPrefixLists);
    upgrade();
    const std::vector<std::string>& log = device().log();
    const auto lists = std::find(log.begin(), log.end(), "Finishing Prefix List update\n");
    EXPECT_EQ(std::count(lists, log.end(), "Starting BGP RM index update\n"), 1) << bgp_test::listing(log);
}

TEST_F(BgpUpdate, EntityUnknownToTheMaps_IsRekeyedByItsIndex)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    stored(kVpnEntity);
    upgrade();
    const std::vector<std::string>& log = device().log();
    EXPECT_EQ(std::count(log.begin(), log.end(), "BGP entry entity index: 5"), 1);
    EXPECT_EQ(std::count(log.begin(), log.end(), "Finishing BGP RM index update\n"), 1);
    expectChanges({"create /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}",
                   "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}/bgpRmEntLocalAs 65010",
                   "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}/bgpRmEntSupportIpv6 true",
                   "delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}", "create /bgp-internal/bgp-vrf{0}",
                   "set /bgp-internal/bgp-vrf{0}/bgp-next-index 1",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}/inst-idx 0",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}/as-number 65010"});
    expectNothingLeftOpen();
}

// AS 65010 with the VRFs blue and red, which have no VRF index: each step that meets them says so.
class BgpUpdateVrfs : public BgpUpdate {
protected:
    void SetUp() override
    {
        BgpUpdate::SetUp();
        stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
        stored(kUpgradedRouterWithVrfs);
        stored(kInstanceMap);
        closing_.insert(closing_.end() - 1, {"update_vrf_ipv6:171: " + absent("maapi_get_elem", indexPath("blue")),
                                             "update_vrf_ipv6:171: " + absent("maapi_get_elem", indexPath("red"))});
    }

    static std::string indexPath(const std::string& vrf)
    {
        return "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{" + vrf + "}/vrf-idx";
    }
};

TEST_F(BgpUpdateVrfs, VrfsOfTheLocalAs_AreCountedAndMigratedAsStored)
{
    upgrade();
    expectLogAfterRouterStep(
        {"Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0"},
        {countLine(1, 2, error_before_), "Update BGP VRF\n", "Found 2 bgp vrfs to update", "Will update VRF blue",
         "Trying to update a non existent VRF: " + absent("cdb_get", indexPath("blue")), "Will update VRF red",
         "Trying to update a non existent VRF: " + absent("cdb_get", indexPath("red")), "Finishing VRF update\n"});
    expectChanges({});
}

TEST_F(BgpUpdateVrfs, FailedVrfCount_IsLoggedAsReadWithItsOwnErrorAndMigratesNone)
{
    faults().fail(Function::cdb_num_instances, "/router/bgp{65010}/vrf");
    upgrade();
    expectLogAfterRouterStep({"Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0"},
                             {countLine(1, -1, planned("cdb_num_instances", "/router/bgp{65010}/vrf"))});
}

TEST_F(BgpUpdateVrfs, EntitiesThatAreNotOneByThen_KeepTheVrfsUnmigrated)
{
    faults().fail(Function::cdb_num_instances, kEntities, {}, 1, 1);
    upgrade();
    expectLogAfterRouterStep({"Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0"},
                             {countLine(-1, 2, planned("cdb_num_instances", kEntities))});
}

TEST_F(BgpUpdate, InstanceOfAVrf_IsMadeFromTheStoredVrfAndThenJoinedForIpv6)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>"));
    stored(R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number><vrf><name>blue</name>
        <administrative-status>up</administrative-status>
        <address-family><afi>ipv6</afi><safi>unicast</safi></address-family></vrf></bgp></router>)");
    stored(R"(<internal xmlns="urn:bgp-update:yang:metacli-internal"><vrf-config><stringTOindex><name>blue</name>
        <vrf-idx>7</vrf-idx></stringTOindex></vrf-config></internal>)");
    stored(kInstanceMap);
    upgrade();
    const std::vector<std::string>& log = device().log();
    const auto made = std::find(log.begin(), log.end(), "Got BGP index 458753 for VRF");
    EXPECT_EQ(std::count(made, log.end(), "enter update_neigh_config_drop_warn\n"), 1) << bgp_test::listing(log);
    const std::string there = bgp_test::error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS,
                                                   "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{458753 2}");
    EXPECT_EQ(std::count(made, log.end(), "update_bgpRmAfmJoinTable:80: " + there + "\n"), 1) << bgp_test::listing(log);
    int32_t status = 0;
    EXPECT_EQ(
        maapi_get_enum_value_elem(open().maapi_socket, open().thandle, &status,
                                  "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{458753 2}/bgpRmAfmAdminStatus"),
        CONFD_OK);
    EXPECT_EQ(status, 1) << "up, for the VRF has IPv6 unicast";
    expectNothingLeftOpen();
}

TEST_F(BgpUpdate, EntitiesAreCountedAgainForTheCountLine)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    stored(kInstanceMap);
    faults().fail(Function::cdb_num_instances, kEntities, {}, 1, 1);
    upgrade();
    expectLogAfterRouterStep({"Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0"},
                             {countLine(-1, 0, planned("cdb_num_instances", kEntities))});
}

TEST_F(BgpUpdate, FailedEntityCount_RunsOnlyTheClosingSteps)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    faults().fail(Function::cdb_num_instances);
    upgrade();
    expectUpgradeLog(
        {"Found -1 BGP entities", "No need to update others config\n"},
        uncounted_closing({"Starting BGP and BVM join update\n", "The config will be upgraded for BGP entity: 5",
                           "Finishing BGP and BVM join update\n"},
                          {"Finishing VRF IPv6 update\n"}));
    expectChanges({});
}

TEST_F(BgpUpdate, ReadsItsChoicesInOrderOnTheFrameworksSession)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    stored(kInstanceMap);
    device().recorder().start();
    upgrade();
    expectCalls({
        "cdb_set_namespace 82011741 -> 0",
        "cdb_num_instances /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry -> 1",
        "cdb_set_namespace 82011741 -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs -> 0",
        "cdb_exists /router/bgp{65010} -> 1",
        "cdb_get_enum_value /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntSupportIpv6 -> 0",
        "cdb_exists /MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{1} -> 1",
        "cdb_get /MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{1}/mplsVpnUseBgpRouting -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex -> 0",
        "cdb_num_instances /DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry -> 0",
        "cdb_num_instances /prefix-list -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs -> 0",
        "cdb_exists /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010} -> 1",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs -> 0",
        "cdb_num_instances /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry -> 1",
        "cdb_num_instances /router/bgp{65010}/vrf -> 0",
        "cdb_num_instances /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry -> 0",
        "cdb_num_instances /DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry -> 0",
        "cdb_num_instances /DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex -> 0",
        "cdb_get_enum_value /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 3}/bgpRmAfmAdminStatus -> -1 (item does "
        "not exist)",
        "maapi_init_cursor /router/bgp -> 0",
        "maapi_get_next /router/bgp -> 0",
        "maapi_init_cursor /router/bgp{65010}/vrf -> 0",
        "maapi_get_next /router/bgp{65010}/vrf -> 0",
    });
}

TEST_F(BgpUpdate, AnyCallFailing_StillEndsTheSequenceInOrder)
{
    const std::string leaves = R"(<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>
        <bgpRmEntLocalIdentifier>0a:01:02:03</bgpRmEntLocalIdentifier><bgpRmEntAdminStatus>up</bgpRmEntAdminStatus>
        <bgpRmEntAsSize>fourOctet</bgpRmEntAsSize><bgpRmEntClusterId>0a:01:02:04</bgpRmEntClusterId>
        <bgpRmEntDefLocalPref>100</bgpRmEntDefLocalPref><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>)";
    std::size_t n = 1;
    for (bool failed = true; failed; ++n) {
        bgp_platform::Device swept;
        swept.load_text(bgp_test::config(entity(leaves)));
        const bgp_platform::UpgradeHandles handles = swept.open_upgrade();
        swept.fault_plan().fail_call(n);
        EXPECT_EQ(update(handles.maapi_socket, handles.thandle, handles.cdb_socket), 0);
        EXPECT_EQ(swept.log().front(), "Starting BGP update\n") << "call " << n;
        EXPECT_EQ(swept.log().back(), "Finishing BGP update\n") << "call " << n;
        EXPECT_TRUE(swept.open_things().none()) << "call " << n;
        failed = swept.fault_plan().seen() >= n;
    }
    EXPECT_GT(n, 19U) << "the sweep ended before the sequence did";
}

TEST_F(BgpUpdate, EveryCallFailing_WritesNothingAndReturnsZero)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    faults().fail_call(1, {}, true);
    upgrade();
    expectUpgradeLog(
        {"Found -1 BGP entities", "No need to update others config\n"},
        uncounted_closing({"Starting BGP and BVM join update\n",
                           "Failed to read entity index BGP entry: 0, err: " +
                               planned("cdb_get", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex")},
                          {"get_local_as:136: " + planned("maapi_init_cursor", "/router/bgp") + "\n",
                           "update_vrf_ipv6:162: " + planned("maapi_init_cursor", "/router/bgp{0}/vrf")}));
    expectChanges({});
}

using BgpUpdateDeath = BgpUpdate;

TEST_F(BgpUpdateDeath, EntityIndexOfAnotherTypeBeforeThePrefixLists_StopsTheProcessByAFailedAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntIndex", "int32");
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    stored(kVpnEntity);
    stored(kOldPrefixLists);
    const bgp_platform::UpgradeHandles handles = open();
    EXPECT_DEATH(update(handles.maapi_socket, handles.thandle, handles.cdb_socket),
                 "src/config_update/bgp_update:80: "
                 "int32_t update_bgp_pfx\\(int32_t, int32_t, int32_t, int, nzmw_log_t\\*\\): "
                 "Assertion `\\(&temp\\)->type == C_UINT32' failed\\.");
}

TEST_F(BgpUpdateDeath, EntityIndexOfAnotherTypeBeforeTheRekeying_StopsTheProcessByAFailedAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntIndex", "int32");
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    stored(kVpnEntity);
    const bgp_platform::UpgradeHandles handles = open();
    EXPECT_DEATH(update(handles.maapi_socket, handles.thandle, handles.cdb_socket),
                 "src/config_update/bgp_update:83: "
                 "int32_t update_bgp_pfx\\(int32_t, int32_t, int32_t, int, nzmw_log_t\\*\\): "
                 "Assertion `\\(&temp\\)->type == C_UINT32' failed\\.");
}

TEST_F(BgpUpdateDeath, LocalAsOfAnotherType_StopsTheProcessByAFailedAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntLocalAs", "string");
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    faults().fail(Function::cdb_get, kLocalAs, {}, 2);  // the steps' own reads, which would stop the process before
    const bgp_platform::UpgradeHandles handles = open();
    EXPECT_DEATH(update(handles.maapi_socket, handles.thandle, handles.cdb_socket),
                 "src/config_update/bgp_update:91: "
                 "int32_t update_bgp_pfx\\(int32_t, int32_t, int32_t, int, nzmw_log_t\\*\\): "
                 "Assertion `\\(&temp\\)->type == C_UINT32' failed\\.");
}

}  // namespace
