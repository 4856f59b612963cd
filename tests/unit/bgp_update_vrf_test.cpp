// The VRF step: the instance of each VRF, its IPv4 unicast family with its redistribution rule, and the VRFs that it
// leaves out.
#include <string.h>

#include <algorithm>
#include <cstdlib>

#include "bgp_update/vrf.h"
#include "support/daemon_fixture.h"
#include "support/show_faults.h"
#include "support/stored_rows.h"
#include "support/vrf_rows.h"

namespace {

bool no_memory_for_names = false;

}  // namespace

// Stands before libc's: no memory for the names of two VRFs, when told so. What it gives is malloc's, as a sanitizer has
// one of its own, and cleared by a call that the compiler does not join with it to a calloc.
extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    std::size_t bytes = 0;
    if ((no_memory_for_names && count == 2 && size == sizeof(confd_value_t)) ||
        __builtin_mul_overflow(count, size, &bytes)) {
        return nullptr;
    }
    void* const memory = std::malloc(bytes);
    if (memory != nullptr) {
        explicit_bzero(memory, bytes);
    }
    return memory;
}

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::created;
using bgp_test::internal;
using bgp_test::Lines;
using bgp_test::planned;
using bgp_test::redistribution_rule;
using bgp_test::vrf_index_path;
using bgp_test::vrf_numbers;
using bgp_test::vrf_step_asserts;
using bgp_test::operator+;

constexpr uint32_t kAs = 65010;
constexpr char kVrfs[] = "/router/bgp{65010}/vrf";
constexpr char kIpv4Unicast[] = "<address-family><afi>ipv4</afi><safi>unicast</safi></address-family>";
constexpr char kIpv6Unicast[] = "<address-family><afi>ipv6</afi><safi>unicast</safi></address-family>";

// A VRF of the command-line model, administratively down.
std::string vrf(const std::string& name, const std::string& more = {})
{
    return "<vrf><name>" + name + "</name><administrative-status>down</administrative-status>" + more + "</vrf>";
}

std::string router(const std::string& vrfs)
{
    return bgp_test::router("65010", vrfs);
}

// What is said about a VRF that gets its instance.
Lines said(const std::string& name, const std::string& index, const std::string& next)
{
    return {"Will update VRF " + name,
            "Creating BGP index for VRF",
            "Got BGP index " + index + " for VRF",
            "BGP VRF high level path: /router/bgp{65010}/vrf{" + name + "}",
            "Calling Create for " + index,
            "Add BGP VRF name entry",
            "Create afi/safi entries",
            "Add BGP VRF name entry",
            "Setting master join entries",
            "rm_index=" + index + " rtm_index=" + index + " afi=1 safi=1 afm=1",
            "rm_index=" + index + " rtm_index=" + next + " afi=2 safi=1 afm=2",
            "Create listen entries"};
}

// The rows of an instance, in the order of the schema: an entry, and below it what is set of it.
constexpr char kInstanceRows[] = R"(/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{INDEX}
 bgpRmEntLocalAs 65010
 bgpRmEntLocalIdentifier 0a:00:00:01
 bgpRmEntAdminStatus down
 bgpRmEntAsSize fourOctet
 bgpRmEntSupportIpv6 true
 bgpRmEntSelectDeferTime 120
 bgpRmEntStalePathTime 120
 bgpRmEntI3EntIndex 1
 bgpRmEntVrfName NAME
/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{INDEX ipv4 unicast}
 bgpRmAfiSafiAdminStatus STATUS
/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{INDEX ipv4 mplsBgpVpn}
 bgpRmAfiSafiAdminStatus down
/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{INDEX ipv6 unicast}
 bgpRmAfiSafiAdminStatus down
/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{INDEX ipv6 mplsBgpVpn}
 bgpRmAfiSafiAdminStatus down
/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{INDEX 1}
 bgpRmAfmPartnerIndex INDEX
 bgpRmAfmAfi ipv4
 bgpRmAfmSafi unicast
 bgpRmAfmAdminStatus STATUS
/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{INDEX 2}
 bgpRmAfmPartnerIndex NEXT
 bgpRmAfmAfi ipv6
 bgpRmAfmSafi unicast
 bgpRmAfmAdminStatus down
/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{INDEX}
 bgpNmEntRmIndex INDEX
 bgpNmEntSckIndex 1
 bgpNmEntAdminStatus up
 bgpNmEntVrfName NAME
/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{INDEX INDEX}
 bgpNmListenAddrType ipv4
 bgpNmListenAddr 00:00:00:00
 bgpNmListenPort 179
 bgpNmListenAdminStatus up
/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{INDEX NEXT}
 bgpNmListenAddrType ipv6
 bgpNmListenAddr 00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00
 bgpNmListenPort 179
 bgpNmListenAdminStatus up
/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{INDEX}
 rtmEntityAddressFamily ipv4
 rtmEntityI3Index 1
 rtmEntityAdminStat up
/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{NEXT}
 rtmEntityAddressFamily ipv6
 rtmEntityI3Index 1
 rtmEntityAdminStat up
/DC-RTM-MIB/rtmMjTable/rtmMjEntry{INDEX INDEX ariPrtnrRtm}
 rtmMjSafi unicast
 rtmMjAdminStatus up
/DC-RTM-MIB/rtmMjTable/rtmMjEntry{INDEX INDEX ariPrtnrBgp}
 rtmMjSafi unicast
 rtmMjAdminStatus up
/DC-RTM-MIB/rtmMjTable/rtmMjEntry{NEXT INDEX ariPrtnrBgp}
 rtmMjSafi unicast
 rtmMjAdminStatus up
/DC-RTM-MIB/rtmMjTable/rtmMjEntry{NEXT NEXT ariPrtnrRtm}
 rtmMjSafi unicast
 rtmMjAdminStatus up
)";

// The first index of a VRF, given to the AS.
Lines first_index(const std::string& vrf_index)
{
    const std::string container = "/bgp-internal/bgp-vrf{" + vrf_index + "}";
    return {"create " + container,
            "set " + container + "/bgp-next-index 1",
            "create " + container + "/as-to-bgp-idx{65010}",
            "set " + container + "/as-to-bgp-idx{65010}/inst-idx 0",
            "create " + container + "/idx-to-bgp-as{0}",
            "set " + container + "/idx-to-bgp-as{0}/as-number 65010"};
}

// All changes for one VRF with the index 7.
Lines with_ipv4(const std::string& name)
{
    return created(kInstanceRows, {{"INDEX", "458753"}, {"NEXT", "458754"}, {"NAME", name}, {"STATUS", "up"}}) +
           redistribution_rule("70", "ipv4") + first_index("7") + Lines{"set /internal/router-id-default-hidden true"};
}

Lines without_ipv4(const std::string& name)
{
    return created(kInstanceRows, {{"INDEX", "458753"}, {"NEXT", "458754"}, {"NAME", name}, {"STATUS", "down"}}) +
           first_index("7") + Lines{"set /internal/router-id-default-hidden true"};
}

class VrfStep : public bgp_test::DaemonTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }

    // Stores the VRFs of AS 65010, on a host that has an address to derive router ids from.
    void storedVrfs(const std::string& vrfs)
    {
        stored(router(vrfs));
        bgp_test::interfaces(device(), {"127.0.0.1", "10.0.0.1"});
    }

    int32_t step() { return run(update_vrf, kAs); }

    // The whole log of a step that finds so many VRFs, around the lines about them.
    void expectLogOfVrfs(int count, const Lines& lines)
    {
        expectLog(Lines{"Update BGP VRF\n", "Found " + std::to_string(count) + " bgp vrfs to update"} + lines +
                  Lines{"Finishing VRF update\n"});
    }
};

TEST_F(VrfStep, VrfWithItsIndexAndIpv4Unicast_GetsInstanceFamilyAndRule)
{
    storedVrfs(vrf("blue", kIpv4Unicast));
    stored(vrf_numbers("blue", 7));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(1, said("blue", "458753", "458754"));
    expectChanges(with_ipv4("blue"));
    expectTrace({"CreateBgpCompoundIdx 11 >>> Enter - VRF index:7, AS: 65010",
                 "CreateBgpCompoundIdx 11 Creating /bgp-internal/bgp-vrf{7}",
                 "CreateBgpCompoundIdx 11 Get BGP index from next-index",
                 "CreateBgpCompoundIdx 11 <<< Returning BGP index 0"});
}

TEST_F(VrfStep, VrfWithoutItsIndex_IsLeftOutAndTheOtherMigrated)
{
    storedVrfs(vrf("blue", kIpv4Unicast) + vrf("red", kIpv4Unicast));
    stored(vrf_numbers("blue", 7));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(2, said("blue", "458753", "458754") +
                           Lines{"Will update VRF red",
                                 "Trying to update a non existent VRF: " + absent("cdb_get", vrf_index_path("red"))});
    expectChanges(with_ipv4("blue"));
}

TEST_F(VrfStep, VrfAfterOneWithoutItsIndex_IsMigrated)
{
    storedVrfs(vrf("blue", kIpv4Unicast) + vrf("red", kIpv4Unicast));
    stored(vrf_numbers("red", 7));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(2, Lines{"Will update VRF blue",
                             "Trying to update a non existent VRF: " + absent("cdb_get", vrf_index_path("blue"))} +
                           said("red", "458753", "458754"));
    expectChanges(with_ipv4("red"));
}

TEST_F(VrfStep, IndexThatTheTransactionHasOnly_DoesNotCount)
{
    storedVrfs(vrf("blue"));
    ASSERT_EQ(maapi_create(maapi(), thandle(), "/metacli-internal:internal/vrf-config/stringTOindex{blue}"), CONFD_OK);
    ASSERT_EQ(maapi_set_elem2(maapi(), thandle(), "7", "%s", vrf_index_path("blue").c_str()), CONFD_OK);
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(1, {"Will update VRF blue",
                        "Trying to update a non existent VRF: " + absent("cdb_get", vrf_index_path("blue"))});
    expectChanges(
        {"create /internal/vrf-config/stringTOindex{blue}", "set /internal/vrf-config/stringTOindex{blue}/vrf-idx 7"});
}

TEST_F(VrfStep, VrfWithoutIpv4Unicast_GetsItsInstanceSwitchedOff)
{
    storedVrfs(vrf("blue", kIpv6Unicast));
    stored(vrf_numbers("blue", 7));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(1, said("blue", "458753", "458754"));
    expectChanges(without_ipv4("blue"));
}

TEST_F(VrfStep, FamilyThatTheTransactionHasOnly_IsSwitchedOn)
{
    storedVrfs(vrf("blue"));
    stored(vrf_numbers("blue", 7));
    const std::string family = "/router/bgp{65010}/vrf{blue}/address-family{ipv4 unicast}";
    ASSERT_EQ(maapi_create(maapi(), thandle(), "%s", family.c_str()), CONFD_OK);
    EXPECT_EQ(step(), 0);
    expectChanges(with_ipv4("blue") + Lines{"create " + family});
}

TEST_F(VrfStep, VrfUnknownToTheRtm_GetsNoRule)
{
    storedVrfs(vrf("blue", kIpv4Unicast));
    stored(internal("<vrf-config><stringTOindex><name>blue</name><vrf-idx>7</vrf-idx></stringTOindex></vrf-config>"));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(1, said("blue", "458753", "458754"));
    Lines changes = with_ipv4("blue");
    for (const std::string& line : redistribution_rule("70", "ipv4")) {
        changes.erase(std::find(changes.begin(), changes.end(), line));
    }
    expectChanges(changes);
}

TEST_F(VrfStep, SeveralVrfs_GetTheirInstancesInTheOrderOfTheirNames)
{
    storedVrfs(vrf("blue", kIpv4Unicast) + vrf("green") + vrf("red", kIpv4Unicast));
    stored(vrf_numbers("red", 1));
    stored(vrf_numbers("blue", 7));
    stored(vrf_numbers("green", 0));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(3, said("blue", "458753", "458754") + said("green", "1", "2") + said("red", "65537", "65538"));
}

TEST_F(VrfStep, ReleasedIndexOfTheVrf_IsUsedAgain)
{
    storedVrfs(vrf("blue"));
    stored(vrf_numbers("blue", 7));
    stored(
        "<bgp-internal xmlns=\"urn:bgp-update:yang:bgp-internal\"><bgp-vrf><vrf-idx>7</vrf-idx>"
        "<bgp-free-index>3</bgp-free-index><bgp-next-index>9</bgp-next-index></bgp-vrf></bgp-internal>");
    EXPECT_EQ(step(), 0);
    const Lines& log = device().log();
    ASSERT_GT(log.size(), 5U);
    EXPECT_EQ(log[4], "Got BGP index 458756 for VRF");
}

TEST_F(VrfStep, NameThatAPathQuotes_IsMigratedLikeAnother)
{
    storedVrfs(vrf("site a", kIpv4Unicast));
    stored(vrf_numbers("site a", 7));
    EXPECT_EQ(step(), 0);
    Lines lines = said("site a", "458753", "458754");
    lines[3] = "BGP VRF high level path: /router/bgp{65010}/vrf{\"site a\"}";
    expectLogOfVrfs(1, lines);
    expectChanges(with_ipv4("site a"));
}

TEST_F(VrfStep, NoVrf_IsSaidAndNothingElseIsAsked)
{
    storedVrfs("");
    open();
    device().recorder().start();
    EXPECT_EQ(step(), 0);
    expectLog({"Update BGP VRF\n", "No VRFs to update"});
    expectCalls({std::string("cdb_num_instances ") + kVrfs + " -> 0"});
    expectChanges({});
}

TEST_F(VrfStep, VrfsOfAnotherAs_AreLeftAlone)
{
    storedVrfs(vrf("blue"));
    stored(vrf_numbers("blue", 7));
    EXPECT_EQ(run(update_vrf, 65011U), 0);
    expectLog({"Update BGP VRF\n", "No VRFs to update"});
    expectChanges({});
}

TEST_F(VrfStep, NamesThatCannotBeRead_EndTheStep)
{
    storedVrfs(vrf("blue"));
    stored(vrf_numbers("blue", 7));
    faults().fail(Function::cdb_get_objects);
    EXPECT_EQ(step(), -1);
    expectLog({"Update BGP VRF\n", "Found 1 bgp vrfs to update",
               "Failed to read BGP VRF objects [18]: " + planned("cdb_get_objects", kVrfs) + " \n"});
    expectChanges({});
}

TEST_F(VrfStep, NoMemoryForTheNames_EndsTheStep)
{
    storedVrfs(vrf("blue") + vrf("red"));
    open();
    no_memory_for_names = true;
    const int32_t result = step();
    no_memory_for_names = false;
    EXPECT_EQ(result, -1);
    expectLog({"Update BGP VRF\n", "Found 2 bgp vrfs to update", "Could not allocate memory for vrf names\n"});
    expectChanges({});
}

TEST_F(VrfStep, FailedReadOfAnIndex_LeavesThatVrfOut)
{
    storedVrfs(vrf("blue", kIpv4Unicast) + vrf("red", kIpv4Unicast));
    stored(vrf_numbers("blue", 7));
    stored(vrf_numbers("red", 7));
    faults().fail(Function::cdb_get, vrf_index_path("red"));
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(2, said("blue", "458753", "458754") +
                           Lines{"Will update VRF red",
                                 "Trying to update a non existent VRF: " + planned("cdb_get", vrf_index_path("red"))});
    expectChanges(with_ipv4("blue"));
}

TEST_F(VrfStep, FailedTestOfTheFamily_CountsAsNone)
{
    storedVrfs(vrf("blue", kIpv4Unicast));
    stored(vrf_numbers("blue", 7));
    faults().fail(Function::maapi_exists, "/router/bgp{65010}/vrf{blue}/address-family");
    EXPECT_EQ(step(), 0);
    expectLogOfVrfs(1, said("blue", "458753", "458754"));
    expectChanges(without_ipv4("blue"));
}

constexpr char kStepSignature[] = "int32_t update_vrf(int32_t, int32_t, int32_t, uint32_t)";

class VrfStepDeath : public VrfStep {
protected:
    // A step that ends in a fault of this place with this text.
    void expectFault(const std::string& place, const std::string& text)
    {
        open();
        bgp_test::show_faults(device());
        EXPECT_EXIT(step(), testing::ExitedWithCode(1),
                    testing::AllOf(testing::StartsWith("1 backtrace, then 1, " + place),
                                   testing::EndsWith(", <" + text + " \n>\n")));
    }
};

TEST_F(VrfStepDeath, NameOfAnotherType_FailsAnAssertion)
{
    leafHasType("router", "vrf/name", "uint32");
    storedVrfs(vrf("7"));
    open();
    EXPECT_DEATH(step(), vrf_step_asserts(227, kStepSignature, "(&vl_names[ivrf])->type == C_BUF"));
}

TEST_F(VrfStepDeath, VrfIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "vrf-idx", "int32");
    storedVrfs(vrf("blue"));
    stored(vrf_numbers("blue", 7));
    open();
    EXPECT_DEATH(step(), vrf_step_asserts(240, kStepSignature, "(&vl_vrf_idx)->type == C_UINT32"));
}

TEST_F(VrfStepDeath, FailedCount_ReportsAFaultAndExits)
{
    storedVrfs(vrf("blue"));
    faults().fail(Function::cdb_num_instances);
    expectFault("update_vrf, src/config_update/bgp_update_vrf, 203, ",
                "error[18]: " + planned("cdb_num_instances", kVrfs));
}

TEST_F(VrfStepDeath, AsThatHasAnIndexInTheVrf_EndsTheProcessInTheAllocator)
{
    storedVrfs(vrf("blue"));
    stored(vrf_numbers("blue", 7));
    const std::string owner = "/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}";
    ASSERT_EQ(maapi_create(maapi(), thandle(), "/bgp-internal/bgp-vrf{7}"), CONFD_OK);
    ASSERT_EQ(maapi_create(maapi(), thandle(), "%s", owner.c_str()), CONFD_OK);
    expectFault("CreateBgpCompoundIdx, src/daemon/bgp_utils, ",
                "error[2]: " + bgp_test::error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS, owner));
}

TEST_F(VrfStepDeath, VrfWithoutAStatus_EndsTheProcessInTheRouterManager)
{
    storedVrfs("<vrf><name>blue</name></vrf>");
    stored(vrf_numbers("blue", 7));
    expectFault("Create, src/daemon/bgp_router_mgr, ",
                "error[1]: " + absent("maapi_get_elem", "/router/bgp{65010}/vrf{blue}/administrative-status"));
}

TEST_F(VrfStepDeath, NameThatDoesNotFitThePath_EndsTheProcessInTheRouterManager)
{
    const std::string name(600, 'v');
    storedVrfs(vrf(name));
    stored(vrf_numbers(name, 7));
    open();
    bgp_test::show_faults(device());
    EXPECT_EXIT(step(), testing::ExitedWithCode(1),
                testing::StartsWith("1 backtrace, then 1, Create, src/daemon/bgp_router_mgr, "));
}

}  // namespace
