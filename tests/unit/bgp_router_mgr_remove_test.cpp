// Removal of a BGP instance: which rows of a table go, which stay and are told of, the joins, the VPN route address
// type, the secondary tables, and the keepalive after each row.
#include <dlfcn.h>

#include "confd_maapi.h"
#include "support/due_keepalive.h"
#include "support/router_mgr_fixture.h"

namespace {

bool first_keys_come_signed = false;

}  // namespace

// Stands before the platform's: a cursor that hands out a key of another type when told to.
extern "C" int maapi_find_next(maapi_cursor* mc, confd_find_next_type type, confd_value_t* inkeys, int n)
{
    using FindNext = int (*)(maapi_cursor*, confd_find_next_type, confd_value_t*, int);
    static const auto platform = reinterpret_cast<FindNext>(dlsym(RTLD_NEXT, "maapi_find_next"));
    const int result = platform(mc, type, inkeys, n);
    if (first_keys_come_signed && mc->n > 0) {
        CONFD_SET_INT32(&mc->keys[0], 6);
    }
    return result;
}

namespace {

using bgp_platform::capi::Function;
using bgp_test::configs;
using bgp_test::entities;
using bgp_test::internal;
using bgp_test::planned;
using bgp_test::rows;
using bgp_test::show_faults_and_writes;
using bgp_test::table;

constexpr char kConfigs[] = "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry";
constexpr char kRmEntities[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry";
constexpr char kNmEntities[] = "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry";
constexpr char kRedistRules[] = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
constexpr char kNetworks[] = "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get";

std::string mpls_vpn(const char* index, const std::string& leaves)
{
    return table("MPLS-VPN-MIB", "mplsVpnEntTable",
                 rows("mplsVpnEntEntry", {std::string("<mplsVpnEntIndex>") + index + "</mplsVpnEntIndex>" + leaves}));
}

class RemoveInstance : public bgp_test::RemoveTest {
protected:
    ~RemoveInstance() override { first_keys_come_signed = false; }
};

using RemoveInstanceDeath = RemoveInstance;

// The walk of a table -----------------------------------------------------------------------------------------------

TEST_F(RemoveInstance, RowsOfTheInstance_GoAndThoseOfOthersStay)
{
    stored(configs({{"5", "1"}, {"6", "1"}, {"6", "4"}, {"8", "1"}}) + entities({"5", "6", "8"}));
    EXPECT_EQ(remove(6, {kConfigs}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}",
                   "delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 1}",
                   "delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 4}"});
    expectLog({"Calling Remove for 6", "Removing table /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstance, RowsOfTheNextIndex_AreToldOfAndStay)
{
    stored(configs({{"6", "1"}, {"7", "1"}, {"7", "2"}}) + entities({"6", "7"}));
    EXPECT_EQ(remove(6, {kConfigs}), 0);
    expectChanges(
        {"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}", "delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 1}"});
    expectLog({"Calling Remove for 6", "Removing table /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry",
               "the table entry /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{7 1} does not belong to this BGP instance!",
               "the table entry /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{7 2} does not belong to this BGP instance!"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstance, GreaterIndex_EndsTheWalk)
{
    stored(configs({{"6", "1"}, {"7", "1"}, {"8", "1"}, {"9", "1"}}));
    open();
    device().recorder().start();
    EXPECT_EQ(remove(6, {kConfigs}), 0);
    expectCalls({"maapi_init_cursor /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry -> 0",
                 "maapi_find_next /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry from {6} -> 0",
                 "maapi_delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 1} -> 0", "confd_data_set_timeout 24 -> 0",
                 "maapi_get_next /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry -> 0", "confd_data_set_timeout 24 -> 0",
                 "maapi_get_next /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry -> 0",
                 "maapi_delete /DC-RTM-MIB/rtmMjTable/rtmMjEntry{1 6 ariPrtnrBgp} -> -1 (item does not exist)",
                 "maapi_delete /DC-RTM-MIB/rtmMjTable/rtmMjEntry{2 6 ariPrtnrBgp} -> -1 (item does not exist)",
                 "confd_data_set_timeout 24 -> 0",
                 "maapi_delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6} -> -1 (item does not exist)",
                 "confd_data_set_timeout 24 -> 0"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstance, NoRowsOfTheInstance_NextOnesAreToldOfAllTheSame)
{
    stored(configs({{"7", "3"}}));
    EXPECT_EQ(remove(6, {kConfigs}), 0);
    expectChanges({});
    expectLog({"Calling Remove for 6", "Removing table /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry",
               "the table entry /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{7 3} does not belong to this BGP instance!"});
}

TEST_F(RemoveInstance, RowsOfLowerIndexesOnly_AreLeftAlone)
{
    stored(configs({{"4", "1"}, {"5", "1"}}));
    EXPECT_EQ(remove(6, {kConfigs}), 0);
    expectChanges({});
    expectLog({"Calling Remove for 6", "Removing table /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstance, EmptyTables_AreLeftAlone)
{
    EXPECT_EQ(remove(6, {kConfigs, kNmEntities}), 0);
    expectChanges({});
    expectLog({"Calling Remove for 6", "Removing table /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry",
               "Removing table /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstance, Tables_AreRemovedInTheirOrder)
{
    stored(configs({{"6", "1"}}) +
           table("DC-BGP-MIB", "bgpNmEntTable", rows("bgpNmEntEntry", {"<bgpNmEntIndex>6</bgpNmEntIndex>"})));
    EXPECT_EQ(remove(6, {kNmEntities, kConfigs}), 0);
    expectLog({"Calling Remove for 6", "Removing table /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry",
               "Removing table /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry"});
    expectChanges(
        {"delete /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{6}", "delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 1}"});
}

TEST_F(RemoveInstance, GreatestIndexOfAll_HasNoNextOne)
{
    stored(configs({{"0", "1"}, {"4294967294", "1"}, {"4294967295", "1"}}));
    EXPECT_EQ(remove(4294967295, {kConfigs}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{4294967295 1}"});
}

TEST_F(RemoveInstance, LongRowOfTheNextIndex_IsToldOfCutShort)
{
    stored(internal("<neighbor-valid-hidden><entity>7</entity><address>" + std::string(600, 'a') +
                    "</address></neighbor-valid-hidden>"));
    EXPECT_EQ(remove(6, {"/internal/neighbor-valid-hidden"}), 0);
    const std::string begin = "/internal/neighbor-valid-hidden{7 ";
    expectLog(
        {"Calling Remove for 6", "Removing table /internal/neighbor-valid-hidden",
         "the table entry " + begin + std::string(511 - begin.size(), 'a') + " does not belong to this BGP instance!"});
}

TEST_F(RemoveInstance, FailedDeletes_ArePassedOver)
{
    stored(configs({{"6", "1"}, {"6", "2"}}) + entities({"6"}));
    faults().fail(Function::maapi_delete, kConfigs, {}, 1);
    EXPECT_EQ(remove(6, {kConfigs}), 0);
    expectChanges(
        {"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}", "delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 2}"});
    expectLog({"Calling Remove for 6", "Removing table /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstance, EntityThatCannotBeDeleted_Stays)
{
    stored(entities({"6"}));
    faults().fail(Function::maapi_delete, kRmEntities);
    EXPECT_EQ(remove(6, {}), 0);
    expectChanges({});
}

TEST_F(RemoveInstance, TableWithoutACursor_IsPassedOver)
{
    stored(configs({{"6", "1"}}));
    EXPECT_EQ(remove(6, {"/DC-BGP-MIB/noSuchTable", kConfigs}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 1}"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstance, FailedStep_EndsTheWalkOfThatTable)
{
    stored(configs({{"6", "1"}, {"6", "2"}}));
    faults().fail(Function::maapi_get_next, kConfigs);
    EXPECT_EQ(remove(6, {kConfigs}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 1}"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstanceDeath, FirstKeyOfAnotherType_IsAFailedAssertion)
{
    stored(configs({{"6", "1"}}));
    open();
    first_keys_come_signed = true;
    EXPECT_DEATH(remove(6, {kConfigs}),
                 "src/daemon/bgp_router_mgr:[0-9]+: int BgpRouterMgr::Remove\\(int, confd_trans_ctx\\*, uint32_t, "
                 "uint32_t, const char\\*\\*, const char\\*\\*\\): "
                 "Assertion `\\(&vl_mc\\.keys\\[0\\]\\)->type == C_UINT32' failed");
}

TEST_F(RemoveInstanceDeath, NoContext_EndsTheProcess)
{
    const int maapi_socket = open().maapi_socket;
    show_faults_and_writes(device());
    const char* tables[] = {kConfigs, nullptr};
    EXPECT_EXIT(manager().Remove(maapi_socket, nullptr, 6, 0, tables, nullptr), testing::ExitedWithCode(1),
                "^fault 1 Remove src/daemon/bgp_router_mgr:[0-9]+ <> backtraces 1, writes 0\nwrites 0 at exit\n$");
}

TEST_F(RemoveInstanceDeath, NoTableList_EndsTheProcess)
{
    stored(entities({"6"}));
    open();
    show_faults_and_writes(device());
    EXPECT_EXIT(manager().Remove(open().maapi_socket, context(), 6, 0, nullptr, nullptr), testing::ExitedWithCode(1),
                "^fault 1 Remove src/daemon/bgp_router_mgr:[0-9]+ <> backtraces 1, writes 0\nwrites 0 at exit\n$");
}

TEST_F(RemoveInstance, AnyFailingCall_IsPassedOver)
{
    stored(configs({{"6", "1"}, {"6", "2"}, {"7", "1"}}) + entities({"6"}) +
           internal("<rtmRedistEntry-hidden><rtmRedistEntry-get><entity>6</entity><rtm-index>1</rtm-index>"
                    "<entry>2</entry></rtmRedistEntry-get></rtmRedistEntry-hidden>"));
    const char* tables[] = {kConfigs, kNetworks, kRedistRules, nullptr};
    const char* secondary_tables[] = {kNmEntities, nullptr};
    std::size_t n = 0;
    for (bool failed = true; failed && n < 1000;) {
        SCOPED_TRACE(++n);
        const int maapi_socket = device().open_upgrade().maapi_socket;
        faults().clear();
        faults().fail_call(n);
        EXPECT_EQ(manager().Remove(maapi_socket, device().transaction_context(), 6, 0, tables, secondary_tables), 0);
        failed = faults().seen() >= n;
        expectNothingLeftOpen();
        device().drop();
    }
    EXPECT_GT(n, 25U);
    EXPECT_LT(n, 1000U);
}

// Joins and the VPN route address type ------------------------------------------------------------------------------

std::string rtm_join(const char* rtm, const char* slave, const char* type)
{
    return std::string("<rtmMjRtmFteIndex>") + rtm + "</rtmMjRtmFteIndex><rtmMjSlaveFteId>" + slave +
           "</rtmMjSlaveFteId><rtmMjSlaveType>" + type + "</rtmMjSlaveType>";
}

TEST_F(RemoveInstance, JoinsOfTheRtmWithTheInstance_GoAndTheOthersStay)
{
    stored(
        table("DC-RTM-MIB", "rtmMjTable",
              rows("rtmMjEntry", {rtm_join("65537", "65540", "ariPrtnrBgp"), rtm_join("65538", "65540", "ariPrtnrBgp"),
                                  rtm_join("65537", "65537", "ariPrtnrRtm"), rtm_join("65537", "65541", "ariPrtnrBgp"),
                                  rtm_join("65539", "65540", "ariPrtnrBgp"), rtm_join("1", "65540", "ariPrtnrBgp"),
                                  rtm_join("65537", "65540", "ariPrtnrRtm")})));
    EXPECT_EQ(remove(65540, {}), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmMjTable/rtmMjEntry{65537 65540 ariPrtnrBgp}",
                   "delete /DC-RTM-MIB/rtmMjTable/rtmMjEntry{65538 65540 ariPrtnrBgp}"});
}

TEST_F(RemoveInstance, InstanceOne_ResetsTheVpnRouteAddressType)
{
    stored(entities({"1"}) + mpls_vpn("1", "<mplsVpnVpnRouteAddrType>ipv6</mplsVpnVpnRouteAddrType>"));
    EXPECT_EQ(remove(1, {}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}",
                   "set /MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{1}/mplsVpnVpnRouteAddrType ipv4"});
    expectLog({"Calling Remove for 1", "Calling ClearVpnRouteAddrType for 1"});
}

TEST_F(RemoveInstance, OtherInstance_LeavesTheVpnRouteAddressType)
{
    stored(entities({"2"}) + mpls_vpn("1", "<mplsVpnVpnRouteAddrType>ipv6</mplsVpnVpnRouteAddrType>") +
           mpls_vpn("2", "<mplsVpnVpnRouteAddrType>ipv6</mplsVpnVpnRouteAddrType>"));
    EXPECT_EQ(remove(2, {}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{2}"});
    expectLog({"Calling Remove for 2"});
}

class ClearVpnRouteAddrType : public RemoveInstance {
protected:
    void clear() { manager().ClearVpnRouteAddrType(open().maapi_socket, context()); }
};

using ClearVpnRouteAddrTypeDeath = ClearVpnRouteAddrType;

TEST_F(ClearVpnRouteAddrType, AbsentEntity_IsLeftAbsent)
{
    clear();
    expectChanges({});
    expectLog({"Calling ClearVpnRouteAddrType for 1"});
}

TEST_F(ClearVpnRouteAddrType, AbsentLeaf_IsLeftAbsent)
{
    stored(mpls_vpn("1", "") + mpls_vpn("2", "<mplsVpnVpnRouteAddrType>ipv6</mplsVpnVpnRouteAddrType>"));
    clear();
    expectChanges({});
    expectLog({"Calling ClearVpnRouteAddrType for 1"});
}

TEST_F(ClearVpnRouteAddrType, Ipv4Already_IsNotWritten)
{
    stored(mpls_vpn("1", "<mplsVpnVpnRouteAddrType>ipv4</mplsVpnVpnRouteAddrType>"));
    open();
    device().recorder().start();
    clear();
    EXPECT_TRUE(recordedWrites().empty());
}

TEST_F(ClearVpnRouteAddrTypeDeath, AnotherType_IsAFailedAssertion)
{
    leafHasType("MPLS-VPN-MIB", "mplsVpnVpnRouteAddrType", "string");
    stored(mpls_vpn("1", "<mplsVpnVpnRouteAddrType>ipv6</mplsVpnVpnRouteAddrType>"));
    open();
    EXPECT_DEATH(clear(),
                 "src/daemon/bgp_router_mgr:[0-9]+: void BgpRouterMgr::ClearVpnRouteAddrType\\(int, "
                 "confd_trans_ctx\\*\\): Assertion `\\(&route_addr_type\\)->type == C_ENUM_VALUE' failed");
}

// Secondary tables --------------------------------------------------------------------------------------------------

TEST_F(RemoveInstance, LastInstance_TakesTheSecondaryTablesAlong)
{
    stored(entities({"6"}) + configs({{"6", "1"}, {"8", "1"}}) + mpls_vpn("1", ""));
    EXPECT_EQ(remove(6, {}, {kConfigs, "/MPLS-VPN-MIB/mplsVpnEntTable"}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}",
                   "delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 1}",
                   "delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{8 1}",
                   "delete /MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{1}"});
    expectLog({"Calling Remove for 6", "Calling RemoveSecondaryTables for 6", "Deleting secondary tables",
               "Deleting table: /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry",
               "Deleting table: /MPLS-VPN-MIB/mplsVpnEntTable"});
    expectNothingLeftOpen();
}

TEST_F(RemoveInstance, LastInstanceWithoutAList_LeavesTheSecondaryTables)
{
    stored(entities({"6"}) + configs({{"8", "1"}}));
    EXPECT_EQ(remove(6, {}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}"});
    expectLog({"Calling Remove for 6"});
}

TEST_F(RemoveInstance, OneOfTwoInstances_LeavesTheSecondaryTables)
{
    stored(entities({"6", "8"}) + configs({{"8", "1"}}));
    EXPECT_EQ(remove(6, {}, {kConfigs}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}"});
    expectLog({"Calling Remove for 6", "Calling RemoveSecondaryTables for 6"});
}

TEST_F(RemoveInstance, NoInstanceAtAll_LeavesTheSecondaryTables)
{
    stored(configs({{"8", "1"}}));
    EXPECT_EQ(remove(6, {}, {kConfigs}), 0);
    expectChanges({});
}

TEST_F(RemoveInstance, EntityTableAmongTheTables_LeavesNoInstanceToTakeTheSecondaryTablesAlong)
{
    stored(entities({"6"}) + configs({{"8", "1"}}));
    EXPECT_EQ(remove(6, {kRmEntities}, {kConfigs}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}"});
}

TEST_F(RemoveInstance, SecondaryTableThatCannotBeDeleted_IsToldOfAndTheNextTaken)
{
    stored(entities({"6"}) + configs({{"8", "1"}}));
    open();
    device().recorder().start();
    faults().fail(Function::maapi_delete, kNmEntities);
    EXPECT_EQ(remove(6, {}, {kNmEntities, kConfigs}), 0);
    expectLog({"Calling Remove for 6", "Calling RemoveSecondaryTables for 6", "Deleting secondary tables",
               "Deleting table: /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry",
               "Deleting table /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry failed (err " +
                   planned("maapi_delete", kNmEntities) + ")",
               "Deleting table: /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry"});
    const std::vector<std::string> writes = recordedWrites();
    EXPECT_EQ(bgp_test::listing({writes.begin(), writes.begin() + 4}),
              bgp_test::listing({"maapi_delete /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry -> -1 (internal error)",
                                 "confd_data_set_timeout 24 -> 0",
                                 "maapi_delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry -> 0",
                                 "confd_data_set_timeout 24 -> 0"}));
}

TEST_F(RemoveInstanceDeath, NoSecondaryTableList_EndsTheProcess)
{
    const int maapi_socket = open().maapi_socket;
    show_faults_and_writes(device());
    EXPECT_EXIT(manager().RemoveSecondaryTables(maapi_socket, context(), 6, nullptr), testing::ExitedWithCode(1),
                "^fault 1 RemoveSecondaryTables src/daemon/bgp_router_mgr:[0-9]+ <> backtraces 1, writes 0\n");
}

}  // namespace
