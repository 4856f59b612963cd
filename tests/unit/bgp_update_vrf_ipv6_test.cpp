// The VRF IPv6 step: the two join rows of each VRF of the transaction's BGP router, and the VRFs that it leaves out.
#include "bgp_update/vrf.h"
#include "support/daemon_fixture.h"
#include "support/stored_rows.h"
#include "support/vrf_rows.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::error_text;
using bgp_test::internal;
using bgp_test::Lines;
using bgp_test::planned;
using bgp_test::router;
using bgp_test::rows;
using bgp_test::table;
using bgp_test::vrf_index_path;
using bgp_test::vrf_step_asserts;
using bgp_test::operator+;

constexpr char kIpv4Unicast[] = "<address-family><afi>ipv4</afi><safi>unicast</safi></address-family>";
constexpr char kIpv6Unicast[] = "<address-family><afi>ipv6</afi><safi>unicast</safi></address-family>";
constexpr char kVrfIpv6Join[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 2}";
constexpr char kVrfRtmJoin[] = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{6 5 ariPrtnrBgp}";

std::string vrf(const std::string& name, const std::string& families)
{
    return "<vrf><name>" + name + "</name>" + families + "</vrf>";
}

// The index of a VRF; its component is the number after it.
std::string number(const std::string& name, int index)
{
    return internal("<vrf-config><stringTOindex><name>" + name + "</name><vrf-idx>" + std::to_string(index) +
                    "</vrf-idx></stringTOindex></vrf-config>");
}

// BGP's join with the IPv6 RTM of a component, and the RTM's with BGP.
Lines join(int component, const std::string& status)
{
    const std::string c = std::to_string(component);
    const std::string next = std::to_string(component + 1);
    const std::string path = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{" + c + " 2}";
    return {"create " + path, "set " + path + "/bgpRmAfmPartnerIndex " + next, "set " + path + "/bgpRmAfmAfi ipv6",
            "set " + path + "/bgpRmAfmAdminStatus " + status};
}

Lines rtm_join(int component)
{
    const std::string path = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{" + std::to_string(component + 1) + " " +
                             std::to_string(component) + " ariPrtnrBgp}";
    return {"create " + path, "set " + path + "/rtmMjSafi unicast"};
}

Lines without(Lines lines, std::size_t position)
{
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(position));
    return lines;
}

// What is said about a VRF that gets its rows, failures left out.
Lines said(int component)
{
    const std::string c = std::to_string(component);
    return {"Creating /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{" + c + " 2}",
            "Creating /DC-RTM-MIB/rtmMjTable/rtmMjEntry{" + std::to_string(component + 1) + " " + c + " ariPrtnrBgp}"};
}

class VrfIpv6 : public bgp_test::DaemonTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }

    // AS 65010 with VRF red, whose component is 5.
    void storedRed(const std::string& families = kIpv6Unicast)
    {
        device().set_vrf_component(1, 1);
        stored(router("65010", vrf("red", families)));
        stored(number("red", 4));
    }

    int step(int bgp_count = 1) { return run(update_vrf_ipv6, bgp_count); }

    void expectLogOfVrfs(const Lines& lines)
    {
        expectLog(Lines{"Update BGP VRF IPv6\n"} + lines + Lines{"Finishing VRF IPv6 update\n"});
    }
};

TEST_F(VrfIpv6, VrfWithIpv6Unicast_IsJoinedAndUp)
{
    storedRed();
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(said(5));
    expectChanges(join(5, "up") + rtm_join(5));
}

TEST_F(VrfIpv6, VrfWithoutIpv6Unicast_IsJoinedAndDown)
{
    storedRed(kIpv4Unicast);
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(said(5));
    expectChanges(join(5, "down") + rtm_join(5));
}

TEST_F(VrfIpv6, Ipv6OfAnotherKind_DoesNotCount)
{
    storedRed("<address-family><afi>ipv6</afi><safi>mplsBgpVpn</safi></address-family>");
    EXPECT_EQ(step(), 0);
    expectChanges(join(5, "down") + rtm_join(5));
}

TEST_F(VrfIpv6, FailedTestOfTheFamily_CountsAsDown)
{
    storedRed();
    faults().fail(Function::maapi_exists);
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(said(5));
    expectChanges(join(5, "down") + rtm_join(5));
}

TEST_F(VrfIpv6, NoEntity_IsSaidAndNothingIsAsked)
{
    storedRed();
    open();
    device().recorder().start();
    EXPECT_EQ(step(0), 0);
    expectLog({"Update BGP VRF IPv6\n", "No BGP config to update"});
    expectCalls({});
    expectChanges({});
}

TEST_F(VrfIpv6, SeveralEntities_GoOn)
{
    storedRed();
    EXPECT_EQ(step(2), 0);
    expectChanges(join(5, "up") + rtm_join(5));
}

TEST_F(VrfIpv6, FailedCountOfEntities_GoesOn)
{
    storedRed();
    EXPECT_EQ(step(-1), 0);
    expectChanges(join(5, "up") + rtm_join(5));
}

TEST_F(VrfIpv6, NoRouter_HasNoVrfs)
{
    open();
    device().recorder().start();
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs({});
    expectCalls({"maapi_init_cursor /router/bgp -> 0", "maapi_get_next /router/bgp -> 0",
                 "maapi_init_cursor /router/bgp{0}/vrf -> 0", "maapi_get_next /router/bgp{0}/vrf -> 0"});
    expectChanges({});
}

TEST_F(VrfIpv6, SeveralRouters_TheFirstHasTheVrfs)
{
    storedRed();
    stored(router("100", vrf("blue", kIpv6Unicast)));
    stored(number("blue", 8));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(said(9));
    expectChanges(join(9, "up") + rtm_join(9));
}

TEST_F(VrfIpv6, SeveralVrfs_GetTheirRowsInTheOrderOfTheirNames)
{
    device().set_vrf_component(1, 1);
    stored(router("65010", vrf("red", kIpv6Unicast) + vrf("blue", kIpv4Unicast)));
    stored(number("red", 4));
    stored(number("blue", 8));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(said(9) + said(5));
    expectChanges(join(5, "up") + join(9, "down") + rtm_join(5) + rtm_join(9));
}

TEST_F(VrfIpv6, EverythingIsReadFromTheTransaction)
{
    device().set_vrf_component(1, 1);
    stored(router("65010", vrf("blue", kIpv6Unicast)));
    stored(number("blue", 8));
    ASSERT_EQ(maapi_delete(maapi(), thandle(), "/router/bgp{%u}", 65010U), CONFD_OK);
    for (const char* entry : {"/router/bgp{65020}", "/router/bgp{65020}/vrf{red}",
                              "/router/bgp{65020}/vrf{red}/address-family{ipv6 unicast}",
                              "/metacli-internal:internal/vrf-config/stringTOindex{red}"}) {
        ASSERT_EQ(maapi_create(maapi(), thandle(), "%s", entry), CONFD_OK) << entry;
    }
    ASSERT_EQ(maapi_set_elem2(maapi(), thandle(), "4", "%s", vrf_index_path("red").c_str()), CONFD_OK);
    device().recorder().start();
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(said(5));
    EXPECT_FALSE(device().recorder().calls().empty());
    for (const auto& call : device().recorder().calls()) {
        EXPECT_EQ(call.text().rfind("maapi_", 0), 0U) << call.text();
    }
}

TEST_F(VrfIpv6, VrfWithoutItsIndex_IsLeftOutAndTheOthersJoined)
{
    device().set_vrf_component(1, 1);
    stored(router("65010", vrf("blue", kIpv6Unicast) + vrf("red", kIpv6Unicast)));
    stored(number("red", 4));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(Lines{"update_vrf_ipv6:171: " + absent("maapi_get_elem", vrf_index_path("blue"))} + said(5));
    expectChanges(join(5, "up") + rtm_join(5));
}

TEST_F(VrfIpv6, RowsThatAreThere_GetTheirValuesAnew)
{
    storedRed();
    stored(table("DC-BGP-MIB", "bgpRmAfmJoinTable",
                 rows("bgpRmAfmJoinEntry",
                      {"<bgpRmEntIndex>5</bgpRmEntIndex><bgpRmAfmJoin>2</bgpRmAfmJoin><bgpRmAfmPartnerIndex>1"
                       "</bgpRmAfmPartnerIndex><bgpRmAfmAfi>ipv4</bgpRmAfmAfi><bgpRmAfmSafi>multicast</bgpRmAfmSafi>"
                       "<bgpRmAfmAdminStatus>down</bgpRmAfmAdminStatus>"})));
    stored(table("DC-RTM-MIB", "rtmMjTable",
                 rows("rtmMjEntry", {"<rtmMjRtmFteIndex>6</rtmMjRtmFteIndex><rtmMjSlaveFteId>5</rtmMjSlaveFteId>"
                                     "<rtmMjSlaveType>ariPrtnrBgp</rtmMjSlaveType><rtmMjSafi>multicast</rtmMjSafi>"
                                     "<rtmMjAdminStatus>up</rtmMjAdminStatus>"})));
    EXPECT_EQ(step(), 0);
    const Lines lines = said(5);
    expectLogOfVrfs(
        {lines[0],
         "update_bgpRmAfmJoinTable:80: " + error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS, kVrfIpv6Join) + "\n",
         lines[1],
         "update_rtmMjEntry:117: " + error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS, kVrfRtmJoin) + "\n"});
    expectChanges(without(join(5, "up"), 0) + without(rtm_join(5), 0));
}

TEST_F(VrfIpv6, CursorOnTheRoutersThatFails_IsLoggedAndCountsAsNoRouter)
{
    storedRed();
    faults().fail(Function::maapi_init_cursor, {}, {}, 1);
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs({"get_local_as:136: " + planned("maapi_init_cursor", "/router/bgp") + "\n"});
    expectChanges({});
}

TEST_F(VrfIpv6, FirstRouterThatCannotBeRead_CountsAsNone)
{
    storedRed();
    faults().fail(Function::maapi_get_next, {}, {}, 1);
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs({});
    expectChanges({});
}

TEST_F(VrfIpv6, CursorOnTheVrfsThatFails_EndsTheStep)
{
    storedRed();
    faults().fail(Function::maapi_init_cursor, "/router/bgp{65010}/vrf");
    EXPECT_EQ(step(), -1);
    expectLog(
        {"Update BGP VRF IPv6\n", "update_vrf_ipv6:162: " + planned("maapi_init_cursor", "/router/bgp{65010}/vrf")});
    expectChanges({});
}

TEST_F(VrfIpv6, VrfThatCannotBeReached_EndsTheWalk)
{
    device().set_vrf_component(1, 1);
    stored(router("65010", vrf("blue", kIpv6Unicast) + vrf("red", kIpv6Unicast)));
    stored(number("blue", 8));
    stored(number("red", 4));
    faults().fail(Function::maapi_get_next, "/router/bgp{65010}/vrf", {}, 1, 1);
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(said(9));
    expectChanges(join(9, "up") + rtm_join(9));
}

TEST_F(VrfIpv6, FailedReadOfAnIndex_LeavesThatVrfOut)
{
    storedRed();
    faults().fail(Function::maapi_get_elem);
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs({"update_vrf_ipv6:171: " + planned("maapi_get_elem", vrf_index_path("red"))});
    expectChanges({});
}

struct FailedWrite {
    Function function;
    const char* path;
    const char* label;
    std::size_t position;  // of its line among those of a step without failures
    Lines left;            // of the changes
};

class VrfIpv6FailedWrite : public VrfIpv6, public testing::WithParamInterface<FailedWrite> {};

TEST_P(VrfIpv6FailedWrite, IsLoggedAndTheNextOneTried)
{
    storedRed();
    faults().fail(GetParam().function, GetParam().path, {}, 1);
    EXPECT_EQ(step(), 0);
    const char* const name = GetParam().function == Function::maapi_create ? "maapi_create" : "maapi_set_elem";
    Lines log = said(5);
    log.insert(log.begin() + static_cast<std::ptrdiff_t>(GetParam().position),
               GetParam().label + planned(name, GetParam().path) + "\n");
    expectLogOfVrfs(log);
    expectChanges(GetParam().left);
}

constexpr char kPartner[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 2}/bgpRmAfmPartnerIndex";
constexpr char kAfi[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 2}/bgpRmAfmAfi";
constexpr char kStatus[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 2}/bgpRmAfmAdminStatus";
constexpr char kSafi[] = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{6 5 ariPrtnrBgp}/rtmMjSafi";

INSTANTIATE_TEST_SUITE_P(
    EachLeaf, VrfIpv6FailedWrite,
    testing::Values(FailedWrite{Function::maapi_set_elem, kPartner, "update_bgpRmAfmJoinTable:87: ", 1,
                                without(join(5, "up"), 1) + rtm_join(5)},
                    FailedWrite{Function::maapi_set_elem, kAfi, "update_bgpRmAfmJoinTable:94: ", 1,
                                without(join(5, "up"), 2) + rtm_join(5)},
                    FailedWrite{Function::maapi_set_elem, kStatus, "update_bgpRmAfmJoinTable:101: ", 1,
                                without(join(5, "up"), 3) + rtm_join(5)},
                    FailedWrite{Function::maapi_set_elem, kSafi, "update_rtmMjEntry:124: ", 2,
                                join(5, "up") + without(rtm_join(5), 1)}),
    [](const testing::TestParamInfo<FailedWrite>& write) {
        const std::string path = write.param.path;
        return path.substr(path.rfind('/') + 1);
    });

TEST_F(VrfIpv6, JoinThatCannotBeCreated_FailsWithAllItsValuesAndTheRtmsIsMade)
{
    storedRed();
    faults().fail(Function::maapi_create, kVrfIpv6Join);
    EXPECT_EQ(step(), 0);
    const Lines lines = said(5);
    expectLogOfVrfs({lines[0], "update_bgpRmAfmJoinTable:80: " + planned("maapi_create", kVrfIpv6Join) + "\n",
                     "update_bgpRmAfmJoinTable:87: " + absent("maapi_set_elem", kPartner) + "\n",
                     "update_bgpRmAfmJoinTable:94: " + absent("maapi_set_elem", kAfi) + "\n",
                     "update_bgpRmAfmJoinTable:101: " + absent("maapi_set_elem", kStatus) + "\n", lines[1]});
    expectChanges(rtm_join(5));
}

TEST_F(VrfIpv6, RtmJoinThatCannotBeCreated_FailsWithItsValue)
{
    storedRed();
    faults().fail(Function::maapi_create, kVrfRtmJoin);
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(said(5) + Lines{"update_rtmMjEntry:117: " + planned("maapi_create", kVrfRtmJoin) + "\n",
                                    "update_rtmMjEntry:124: " + absent("maapi_set_elem", kSafi) + "\n"});
    expectChanges(join(5, "up"));
}

class VrfIpv6Death : public VrfIpv6 {
protected:
    void expectAssertion(int line, const std::string& signature, const std::string& expression)
    {
        open();
        EXPECT_DEATH(step(), vrf_step_asserts(line, signature, expression));
    }
};

TEST_F(VrfIpv6Death, AsNumberOfAnotherType_FailsAnAssertion)
{
    leafHasType("router", "as-number", "int32");
    storedRed();
    expectAssertion(140, "uint32_t get_local_as(nzmw_log_t*, int, int)", "(&mc.keys[0])->type == C_UINT32");
}

TEST_F(VrfIpv6Death, NameOfAnotherType_FailsAnAssertion)
{
    leafHasType("router", "vrf/name", "uint32");
    stored(router("65010", vrf("7", "")));
    expectAssertion(167, "int update_vrf_ipv6(int, int, int, int)", "(&mc.keys[0])->type == C_BUF");
}

TEST_F(VrfIpv6Death, VrfIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "vrf-idx", "int32");
    storedRed();
    expectAssertion(175, "int update_vrf_ipv6(int, int, int, int)", "(&val)->type == C_UINT32");
}

}  // namespace
