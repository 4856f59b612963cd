// The upgrade's entry point: what it reads, says and runs for no, one and several BGP router entities.
#include "bgp_update/update.h"

#include "support/update_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::bgp_entity;
using bgp_test::planned;

constexpr char kSupportIpv6[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntSupportIpv6";
constexpr char kLocalAs[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs";
constexpr char kEntities[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry";

// The entity has a high-level entry already, so that the router step says just three lines.
constexpr char kUpgradedRouter[] =
    R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number></bgp></router>)";
constexpr char kUpgradedRouterWithVrfs[] =
    R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number>
    <vrf><name>blue</name></vrf><vrf><name>red</name></vrf></bgp></router>)";

std::string entity(const std::string& more)
{
    return bgp_entity("<bgpRmEntIndex>5</bgpRmEntIndex>" + more);
}

class BgpUpdate : public bgp_test::UpdateTest {
protected:
    void SetUp() override { error_before_ = confd_lasterr(); }

    // The log of an upgrade whose router step finds its entry, around the lines between that step and the end.
    void expectLogAfterRouterStep(const std::vector<std::string>& lines)
    {
        std::vector<std::string> all = {
            "Starting BGP update\n",         "Found 1 BGP entities",
            "Starting BGP router update\n",  "Router BGP high-level already exists  err:" + error_before_,
            "Finishing BGP router update\n", "Handling BGP entry : 0"};
        all.insert(all.end(), lines.begin(), lines.end());
        all.push_back("Finishing BGP update\n");
        expectLog(all);
    }

    std::string countLine(int entities, int vrfs, const std::string& error)
    {
        return "num bgp: " + std::to_string(entities) + ", num_bgp_vrs: " + std::to_string(vrfs) + ", err: " + error +
               "\n";
    }

    std::string error_before_;
};

TEST_F(BgpUpdate, NoEntity_RunsNoStepAndSaysSo)
{
    upgrade();
    expectLog({"Starting BGP update\n", "Found 0 BGP entities", "No need to update others config\n",
               "Finishing BGP update\n"});
    expectChanges({});
}

TEST_F(BgpUpdate, TwoEntities_AreLeftAlone)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    stored(bgp_entity("<bgpRmEntIndex>6</bgpRmEntIndex><bgpRmEntLocalAs>65020</bgpRmEntLocalAs>"));
    upgrade();
    expectLog({"Starting BGP update\n", "Found 2 BGP entities", "No need to update others config\n",
               "Finishing BGP update\n"});
    expectChanges({});
}

TEST_F(BgpUpdate, OneEntity_GetsItsRouterEntryFirst)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    upgrade();
    expectChanges({"create /router/bgp{65010}"});
    const std::vector<std::string>& log = device().log();
    ASSERT_EQ(log.size(), 20U) << bgp_test::listing(log);
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
    faults().fail(Function::maapi_create);
    upgrade();
    const std::string error = planned("maapi_create", "/router/bgp{65010}");
    expectLog({"Starting BGP update\n", "Found 1 BGP entities", "Starting BGP router update\n",
               "Failed to configure router bgp: 65010, err: " + error, "Handling BGP entry : 0",
               "Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0", countLine(1, 0, error),
               "Finishing BGP update\n"});
    expectChanges({});
}

TEST_F(BgpUpdate, Ipv6FlagTrue_IsReportedAsEnabled)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    upgrade();
    expectLogAfterRouterStep({"Read IPv6 flag 1 for BGP entry 0", "IPv6 is already enabled for BGP entry : 0",
                              countLine(1, 0, error_before_)});
    expectChanges({});
}

TEST_F(BgpUpdate, Ipv6FlagFalse_IsNotReportedAsEnabled)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    upgrade();
    expectLogAfterRouterStep({"Read IPv6 flag 2 for BGP entry 0", countLine(1, 0, error_before_)});
}

TEST_F(BgpUpdate, Ipv6FlagAbsent_IsLoggedAndTheRestGoesOn)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    stored(kUpgradedRouter);
    upgrade();
    const std::string error = absent("cdb_get_enum_value", kSupportIpv6);
    expectLogAfterRouterStep(
        {"Failed to read IPv6 enable flag for BGP entry: 0, err: " + error, countLine(1, 0, error)});
}

TEST_F(BgpUpdate, LocalAsAbsent_EndsTheEntitysStepsSilently)
{
    stored(entity("<bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    upgrade();
    expectLog({"Starting BGP update\n", "Found 1 BGP entities", "Starting BGP router update\n",
               "Failed to read as-number  err: " + absent("cdb_get", kLocalAs), "Finishing BGP router update\n",
               "Handling BGP entry : 0", "Read IPv6 flag 1 for BGP entry 0",
               "IPv6 is already enabled for BGP entry : 0", "Finishing BGP update\n"});
    expectChanges({});
}

TEST_F(BgpUpdate, VrfsOfTheLocalAs_AreCountedInTheStoredConfiguration)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouterWithVrfs);
    upgrade();
    expectLogAfterRouterStep({"Read IPv6 flag 2 for BGP entry 0", countLine(1, 2, error_before_)});
}

TEST_F(BgpUpdate, FailedVrfCount_IsLoggedAsReadWithItsOwnError)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouterWithVrfs);
    faults().fail(Function::cdb_num_instances, "/router/bgp{65010}/vrf");
    upgrade();
    expectLogAfterRouterStep(
        {"Read IPv6 flag 2 for BGP entry 0", countLine(1, -1, planned("cdb_num_instances", "/router/bgp{65010}/vrf"))});
}

TEST_F(BgpUpdate, EntitiesAreCountedAgainForTheCountLine)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    faults().fail(Function::cdb_num_instances, kEntities, {}, 1, 1);
    upgrade();
    expectLogAfterRouterStep(
        {"Read IPv6 flag 2 for BGP entry 0", countLine(-1, 0, planned("cdb_num_instances", kEntities))});
}

TEST_F(BgpUpdate, FailedEntityCount_RunsNoStep)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    faults().fail(Function::cdb_num_instances);
    upgrade();
    expectLog({"Starting BGP update\n", "Found -1 BGP entities", "No need to update others config\n",
               "Finishing BGP update\n"});
    expectChanges({});
}

TEST_F(BgpUpdate, ReadsItsChoicesInOrderOnTheFrameworksSession)
{
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs><bgpRmEntSupportIpv6>true</bgpRmEntSupportIpv6>"));
    stored(kUpgradedRouter);
    device().recorder().start();
    upgrade();
    expectCalls({
        "cdb_set_namespace 82011741 -> 0",
        "cdb_num_instances /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry -> 1",
        "cdb_set_namespace 82011741 -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs -> 0",
        "cdb_exists /router/bgp{65010} -> 1",
        "cdb_get_enum_value /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntSupportIpv6 -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs -> 0",
        "cdb_num_instances /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry -> 1",
        "cdb_num_instances /router/bgp{65010}/vrf -> 0",
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
    expectLog({"Starting BGP update\n", "Found -1 BGP entities", "No need to update others config\n",
               "Finishing BGP update\n"});
    expectChanges({});
}

using BgpUpdateDeath = BgpUpdate;

TEST_F(BgpUpdateDeath, LocalAsOfAnotherType_StopsTheProcessByAFailedAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntLocalAs", "string");
    stored(entity("<bgpRmEntLocalAs>65010</bgpRmEntLocalAs>"));
    faults().fail(Function::cdb_get, kLocalAs, {}, 1);  // the router step's read, which would stop the process before
    const bgp_platform::UpgradeHandles handles = open();
    EXPECT_DEATH(update(handles.maapi_socket, handles.thandle, handles.cdb_socket),
                 "src/config_update/bgp_update:91: "
                 "int32_t update_bgp_pfx\\(int32_t, int32_t, int32_t, int, nzmw_log_t\\*\\): "
                 "Assertion `\\(&temp\\)->type == C_UINT32' failed\\.");
}

}  // namespace
