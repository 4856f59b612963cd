// Creation of a BGP instance: every row and every leaf of it, the order of the writes, the router id, and the end of
// the process at each write that fails.
#include <dlfcn.h>

#include <iostream>

#include "nz_address.h"
#include "support/change_lines.h"
#include "support/router_mgr_fixture.h"

namespace {

bool hex_lists_come_as_text = false;

void make_text(confd_value_t* out)
{
    confd_value_t text;
    CONFD_SET_STR(&text, "no hex list");
    confd_value_dup_to(&text, out);
}

}  // namespace

// These stand before the middleware's, for the type checks: conversions that give another type when told to.
extern "C" int Ipv4InAddrTOhexlist(confd_value_t* out, in_addr in)
{
    if (hex_lists_come_as_text) {
        make_text(out);
        return 0;
    }
    using Conversion = int (*)(confd_value_t*, in_addr);
    static const auto middleware = reinterpret_cast<Conversion>(dlsym(RTLD_NEXT, "Ipv4InAddrTOhexlist"));
    return middleware(out, in);
}

extern "C" int Ipv4strTOhexlist(confd_value_t* out, const char* text)
{
    if (hex_lists_come_as_text) {
        make_text(out);
        return 0;
    }
    using Conversion = int (*)(confd_value_t*, const char*);
    static const auto middleware = reinterpret_cast<Conversion>(dlsym(RTLD_NEXT, "Ipv4strTOhexlist"));
    return middleware(out, text);
}

namespace {

using bgp_platform::capi::Function;
using bgp_test::interfaces;
using bgp_test::RouterMgrTest;
using bgp_test::show_faults_and_writes;

constexpr char kRmEntities[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry";
constexpr char kNmEntities[] = "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry";
constexpr char kAfiSafis[] = "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry";
constexpr char kJoins[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry";
constexpr char kListens[] = "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry";
constexpr char kRtmEntities[] = "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry";
constexpr char kRtmJoins[] = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry";

// The command-line entry of AS 65010: down, with a router id, and a VRF that is up.
constexpr char kRouter[] =
    "<router xmlns=\"urn:bgp-update:yang:router\"><bgp><as-number>65010</as-number><router-id>10.9.8.7</router-id>"
    "<administrative-status>down</administrative-status>"
    "<vrf><name>red</name><administrative-status>up</administrative-status></vrf></bgp></router>";
constexpr char kRouterPath[] = "/router/bgp{65010}";
constexpr char kVrfPath[] = "/router/bgp{65010}/vrf{red}";

// Lines of the changes, put together piece by piece.
class Lines {
public:
    Lines& created(const std::string& entry)
    {
        entry_ = entry;
        lines_.push_back("create " + entry);
        return *this;
    }
    Lines& leaf(const std::string& name, const std::string& value)
    {
        lines_.push_back("set " + entry_ + "/" + name + " " + value);
        return *this;
    }
    Lines& line(const std::string& text)
    {
        lines_.push_back(text);
        return *this;
    }
    operator const std::vector<std::string>&() const { return lines_; }

private:
    std::string entry_;
    std::vector<std::string> lines_;
};

struct Expected {
    std::string index;      // of the instance
    std::string next;       // the one after it
    std::string component;  // of its VRF
    std::string component6;
    std::string as;
    std::string admin_status;
    std::string router_id;
    std::string vrf_name;  // empty: none
};

// Every row of an instance, in the order of the schema.
Lines instance(const Expected& e)
{
    Lines lines;
    lines.created(std::string(kRmEntities) + "{" + e.index + "}")
        .leaf("bgpRmEntLocalAs", e.as)
        .leaf("bgpRmEntLocalIdentifier", e.router_id)
        .leaf("bgpRmEntAdminStatus", e.admin_status)
        .leaf("bgpRmEntAsSize", "fourOctet")
        .leaf("bgpRmEntSupportIpv6", "true")
        .leaf("bgpRmEntSelectDeferTime", "120")
        .leaf("bgpRmEntStalePathTime", "120")
        .leaf("bgpRmEntI3EntIndex", "1");
    if (!e.vrf_name.empty()) {
        lines.leaf("bgpRmEntVrfName", e.vrf_name);
    }
    for (const char* family : {"ipv4 unicast", "ipv4 mplsBgpVpn", "ipv6 unicast", "ipv6 mplsBgpVpn"}) {
        lines.created(std::string(kAfiSafis) + "{" + e.index + " " + family + "}")
            .leaf("bgpRmAfiSafiAdminStatus", "down");
    }
    lines.created(std::string(kJoins) + "{" + e.index + " 1}")
        .leaf("bgpRmAfmPartnerIndex", e.component)
        .leaf("bgpRmAfmAfi", "ipv4")
        .leaf("bgpRmAfmSafi", "unicast")
        .leaf("bgpRmAfmAdminStatus", "down");
    lines.created(std::string(kJoins) + "{" + e.index + " 2}")
        .leaf("bgpRmAfmPartnerIndex", e.component6)
        .leaf("bgpRmAfmAfi", "ipv6")
        .leaf("bgpRmAfmSafi", "unicast")
        .leaf("bgpRmAfmAdminStatus", "down");
    lines.created(std::string(kNmEntities) + "{" + e.index + "}")
        .leaf("bgpNmEntRmIndex", e.index)
        .leaf("bgpNmEntSckIndex", "1")
        .leaf("bgpNmEntAdminStatus", "up");
    if (!e.vrf_name.empty()) {
        lines.leaf("bgpNmEntVrfName", e.vrf_name);
    }
    lines.created(std::string(kListens) + "{" + e.index + " " + e.index + "}")
        .leaf("bgpNmListenAddrType", "ipv4")
        .leaf("bgpNmListenAddr", "00:00:00:00")
        .leaf("bgpNmListenPort", "179")
        .leaf("bgpNmListenAdminStatus", "up");
    lines.created(std::string(kListens) + "{" + e.index + " " + e.next + "}")
        .leaf("bgpNmListenAddrType", "ipv6")
        .leaf("bgpNmListenAddr", "00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00")
        .leaf("bgpNmListenPort", "179")
        .leaf("bgpNmListenAdminStatus", "up");
    for (const auto& [rtm, family] : {std::pair(e.component, "ipv4"), std::pair(e.component6, "ipv6")}) {
        lines.created(std::string(kRtmEntities) + "{" + rtm + "}")
            .leaf("rtmEntityAddressFamily", family)
            .leaf("rtmEntityI3Index", "1")
            .leaf("rtmEntityAdminStat", "up");
    }
    return lines;
}

// The joins of an instance's RTM entities, each with itself and with the instance, in the order of their keys.
Lines& rtm_joins(Lines& lines, const std::vector<std::string>& keys)
{
    for (const std::string& key : keys) {
        lines.created(std::string(kRtmJoins) + "{" + key + "}")
            .leaf("rtmMjSafi", "unicast")
            .leaf("rtmMjAdminStatus", "up");
    }
    return lines;
}

class CreateInstance : public RouterMgrTest {
protected:
    // A configuration on a host that has the address 192.0.2.1.
    void given(std::string_view top_elements = kRouter)
    {
        interfaces(device(), {"127.0.0.1", "192.0.2.1"});
        stored(top_elements);
    }
};

using CreateInstanceDeath = CreateInstance;

TEST_F(CreateInstance, DefaultInstance_GetsEveryRowAndLeaf)
{
    given();
    EXPECT_EQ(create(6, 65010, kRouterPath, ""), 0);
    Lines lines = instance({"6", "7", "1", "2", "65010", "down", "c0:00:02:01", ""});
    rtm_joins(lines, {"1 1 ariPrtnrRtm", "1 6 ariPrtnrBgp", "2 2 ariPrtnrRtm", "2 6 ariPrtnrBgp"});
    expectChanges(lines.line("set /internal/router-id-default-hidden true"));
    expectNothingLeftOpen();
}

TEST_F(CreateInstance, NamedInstanceInAnotherVrf_GetsItsNamesAndItsVrfsRtmEntities)
{
    given();
    EXPECT_EQ(create(196612, 4200000000, kVrfPath, "red"), 0);
    Lines lines = instance({"196612", "196613", "196609", "196610", "4200000000", "up", "c0:00:02:01", "red"});
    rtm_joins(lines, {"196609 196609 ariPrtnrRtm", "196609 196612 ariPrtnrBgp", "196610 196610 ariPrtnrRtm",
                      "196610 196612 ariPrtnrBgp"});
    expectChanges(lines.line("set /internal/router-id-default-hidden true"));
    expectNothingLeftOpen();
}

TEST_F(CreateInstance, NamelessInstanceInAnotherVrf_HasNoVrfNameLeaves)
{
    given();
    EXPECT_EQ(create(65537, 65010, kVrfPath, ""), 0);
    Lines lines = instance({"65537", "65538", "65537", "65538", "65010", "up", "c0:00:02:01", ""});
    rtm_joins(lines, {"65537 65537 ariPrtnrRtm", "65537 65537 ariPrtnrBgp", "65538 65537 ariPrtnrBgp",
                      "65538 65538 ariPrtnrRtm"});
    expectChanges(lines.line("set /internal/router-id-default-hidden true"));
}

TEST_F(CreateInstance, NamedInstanceInTheGlobalVrf_GetsItsNames)
{
    given();
    EXPECT_EQ(create(6, 65010, kRouterPath, "blue one"), 0);
    Lines lines = instance({"6", "7", "1", "2", "65010", "down", "c0:00:02:01", "blue one"});
    rtm_joins(lines, {"1 1 ariPrtnrRtm", "1 6 ariPrtnrBgp", "2 2 ariPrtnrRtm", "2 6 ariPrtnrBgp"});
    expectChanges(lines.line("set /internal/router-id-default-hidden true"));
}

TEST_F(CreateInstance, IndexEqualToItsComponent_ListensAndRoutesUnderTheSameNumbers)
{
    device().set_vrf_component(7, 65536);
    given();
    EXPECT_EQ(create(7, 65010, kRouterPath, ""), 0);
    Lines lines = instance({"7", "8", "7", "8", "65010", "down", "c0:00:02:01", ""});
    rtm_joins(lines, {"7 7 ariPrtnrRtm", "7 7 ariPrtnrBgp", "8 7 ariPrtnrBgp", "8 8 ariPrtnrRtm"});
    expectChanges(lines.line("set /internal/router-id-default-hidden true"));
}

TEST_F(CreateInstance, Rows_AreWrittenInTheirOrderWithTheirNumberOfValues)
{
    given();
    open();
    device().recorder().start();
    EXPECT_EQ(create(6, 65010, kRouterPath, ""), 0);
    const std::vector<std::string> expected = {
        "maapi_set_values /DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable/rtmEntityEntry 4 values -> 0",
        "maapi_set_values /DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable/rtmEntityEntry 4 values -> 0",
        "maapi_set_elem /internal/router-id-default-hidden true -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry 9 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry 4 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry 4 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry 4 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry 4 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry 4 values -> 0",
        "maapi_set_values /DC-RTM-MIB/rtmMjTable/rtmMjEntry 5 values -> 0",
        "maapi_set_values /DC-RTM-MIB/rtmMjTable/rtmMjEntry 5 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry 6 values -> 0",
        "maapi_set_values /DC-RTM-MIB/rtmMjTable/rtmMjEntry 5 values -> 0",
        "maapi_set_values /DC-RTM-MIB/rtmMjTable/rtmMjEntry 5 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry 6 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry 6 values -> 0",
        "maapi_set_values /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry 6 values -> 0",
    };
    EXPECT_EQ(bgp_test::listing(recordedWrites()), bgp_test::listing(expected));
}

TEST_F(CreateInstance, NamedInstance_WritesOneValueMoreIntoBothEntities)
{
    given();
    open();
    device().recorder().start();
    EXPECT_EQ(create(6, 65010, kRouterPath, "red"), 0);
    const std::vector<std::string> writes = recordedWrites();
    EXPECT_EQ(writes.at(3), "maapi_set_values /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry 10 values -> 0");
    EXPECT_EQ(writes.at(8), "maapi_set_values /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry 5 values -> 0");
}

TEST_F(CreateInstanceDeath, AddressFamilies_AreWrittenUnicastFirst)
{
    // Each failing write ends a process of its own, which tells the families that it had written until then.
    const std::vector<std::string> written = {"", "ipv4 unicast, ", "ipv4 unicast, ipv6 unicast, ",
                                              "ipv4 unicast, ipv4 mplsBgpVpn, ipv6 unicast, "};
    const bgp_platform::UpgradeHandles upgrade = open();
    device().fault_sink = [this](const bgp_platform::Fault&) {
        const std::string entry = "create /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{6 ";
        for (const std::string& change : bgp_test::change_lines(device())) {
            if (change.rfind(entry, 0) == 0) {
                std::cerr << change.substr(entry.size(), change.size() - entry.size() - 1) << ", ";
            }
        }
    };
    for (std::size_t done = 0; done < written.size(); ++done) {
        faults().clear();
        faults().fail(Function::maapi_set_values, kAfiSafis, {}, 1, done);
        EXPECT_EXIT(manager().CreateBgpAfiSafiEntries(upgrade.maapi_socket, upgrade.thandle, 6),
                    testing::ExitedWithCode(1), "^" + written[done] + "$");
    }
}

TEST_F(CreateInstance, DefaultInstance_LogsItsSteps)
{
    given();
    EXPECT_EQ(create(6, 65010, kRouterPath, ""), 0);
    expectLog({"Calling Create for 6", "Create afi/safi entries", "Setting master join entries",
               "rm_index=6 rtm_index=1 afi=1 safi=1 afm=1", "rm_index=6 rtm_index=2 afi=2 safi=1 afm=2",
               "Create listen entries"});
}

TEST_F(CreateInstance, NamedInstance_LogsItsNameBeforeBothEntities)
{
    given();
    EXPECT_EQ(create(6, 65010, kRouterPath, "red"), 0);
    expectLog({"Calling Create for 6", "Add BGP VRF name entry", "Create afi/safi entries", "Add BGP VRF name entry",
               "Setting master join entries", "rm_index=6 rtm_index=1 afi=1 safi=1 afm=1",
               "rm_index=6 rtm_index=2 afi=2 safi=1 afm=2", "Create listen entries"});
}

TEST_F(CreateInstance, ForADaemonsCallback_LogsItsEntryTwiceAndWritesTheContextsTransaction)
{
    given();
    const int maapi_socket = open().maapi_socket;
    char name[] = "";
    EXPECT_EQ(manager().Create(maapi_socket, context(), kRouterPath, 6, 65010, name), 0);
    expectLog({"Calling Create for 6", "Calling Create for 6", "Create afi/safi entries", "Setting master join entries",
               "rm_index=6 rtm_index=1 afi=1 safi=1 afm=1", "rm_index=6 rtm_index=2 afi=2 safi=1 afm=2",
               "Create listen entries"});
    Lines lines = instance({"6", "7", "1", "2", "65010", "down", "c0:00:02:01", ""});
    rtm_joins(lines, {"1 1 ariPrtnrRtm", "1 6 ariPrtnrBgp", "2 2 ariPrtnrRtm", "2 6 ariPrtnrBgp"});
    expectChanges(lines.line("set /internal/router-id-default-hidden true"));
}

TEST_F(CreateInstance, RowsThatAreThere_AreOverwrittenAndKeepTheirOtherLeaves)
{
    given(std::string(kRouter) + bgp_test::bgp_entity("<bgpRmEntIndex>6</bgpRmEntIndex>"
                                                      "<bgpRmEntLocalAs>64999</bgpRmEntLocalAs>"
                                                      "<bgpRmEntDefLocalPref>200</bgpRmEntDefLocalPref>"));
    EXPECT_EQ(create(6, 65010, kRouterPath, ""), 0);
    const std::vector<std::string> changes = bgp_test::change_lines(device());
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes.front(), "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}/bgpRmEntLocalAs 65010");
    for (const std::string& change : changes) {
        EXPECT_EQ(change.find("bgpRmEntDefLocalPref"), std::string::npos) << change;
    }
}

// The router id -------------------------------------------------------------------------------------------------------

class CreateWithoutInterfaces : public RouterMgrTest {
protected:
    // A configuration on a host whose last address is the loopback one.
    void given(std::string_view top_elements = kRouter)
    {
        interfaces(device(), {"192.0.2.1", "127.0.0.1"});
        stored(top_elements);
    }

    void expectRouterId(const std::string& router_id)
    {
        Lines lines = instance({"6", "7", "1", "2", "65010", "down", router_id, ""});
        expectChanges(rtm_joins(lines, {"1 1 ariPrtnrRtm", "1 6 ariPrtnrBgp", "2 2 ariPrtnrRtm", "2 6 ariPrtnrBgp"}));
    }
};

using CreateWithoutInterfacesDeath = CreateWithoutInterfaces;

TEST_F(CreateWithoutInterfaces, RouterIdOfTheCommandLine_IsTakenAndTheDefaultFlagLeftAlone)
{
    given();
    EXPECT_EQ(create(6, 65010, kRouterPath, ""), 0);
    expectRouterId("0a:09:08:07");
    expectLog({"Calling Create for 6", "Could not derive router-id from local interfaces", "Create afi/safi entries",
               "Setting master join entries", "rm_index=6 rtm_index=1 afi=1 safi=1 afm=1",
               "rm_index=6 rtm_index=2 afi=2 safi=1 afm=2", "Create listen entries"});
    expectNothingLeftOpen();
}

TEST_F(CreateWithoutInterfaces, NoRouterIdOnTheCommandLine_IsZero)
{
    given(
        "<router xmlns=\"urn:bgp-update:yang:router\"><bgp><as-number>65010</as-number>"
        "<administrative-status>down</administrative-status></bgp></router>");
    EXPECT_EQ(create(6, 65010, kRouterPath, ""), 0);
    expectRouterId("00:00:00:00");
}

TEST_F(CreateWithoutInterfaces, RouterId_IsThatOfTheAsAndNotOfThePath)
{
    given(std::string(kRouter) +
          "<router xmlns=\"urn:bgp-update:yang:router\"><bgp><as-number>65020</as-number>"
          "<router-id>1.1.1.1</router-id><administrative-status>down</administrative-status></bgp></router>");
    EXPECT_EQ(create(6, 65010, "/router/bgp{65020}", ""), 0);
    expectRouterId("0a:09:08:07");
}

TEST_F(CreateWithoutInterfacesDeath, RouterIdOfAnotherType_IsAFailedAssertion)
{
    leafHasType("router", "router-id", "string");
    given();
    open();
    EXPECT_DEATH(create(6, 65010, kRouterPath, ""),
                 "src/daemon/bgp_router_mgr:[0-9]+: int BgpRouterMgr::Create\\(int, int, const .*string&, uint32_t, "
                 "uint32_t, char\\*\\): Assertion `\\(&myval\\)->type == C_IPV4' failed");
}

// The steps on their own ----------------------------------------------------------------------------------------------

class CreateStep : public RouterMgrTest {
protected:
    template <typename... Arguments>
    int run_step(int (BgpRouterMgr::*step)(int, int, uint32_t, Arguments...), uint32_t index, Arguments... arguments)
    {
        const bgp_platform::UpgradeHandles upgrade = open();
        BgpRouterMgr self = manager();
        return (self.*step)(upgrade.maapi_socket, upgrade.thandle, index, arguments...);
    }
};

using CreateStepDeath = CreateStep;

TEST_F(CreateStep, RtmEntityOfAnAfiOtherThanIpv6_IsTheIpv4One)
{
    for (const int afi : {1, 0, -1, 25}) {
        EXPECT_EQ(run_step(&BgpRouterMgr::ForceCreateRtmEntries, 65540, afi), 0);
    }
    expectChanges(Lines()
                      .created("/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{65537}")
                      .leaf("rtmEntityAddressFamily", "ipv4")
                      .leaf("rtmEntityI3Index", "1")
                      .leaf("rtmEntityAdminStat", "up"));
    expectLog({});
}

TEST_F(CreateStep, RtmEntityOfIpv6_IsTheNextOne)
{
    EXPECT_EQ(run_step(&BgpRouterMgr::ForceCreateRtmEntries, 65540, 2), 0);
    expectChanges(Lines()
                      .created("/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{65538}")
                      .leaf("rtmEntityAddressFamily", "ipv6")
                      .leaf("rtmEntityI3Index", "1")
                      .leaf("rtmEntityAdminStat", "up"));
}

TEST_F(CreateStep, VpnJoins_HaveThePartnerOneAndNoRtmJoins)
{
    EXPECT_EQ(run_step(&BgpRouterMgr::CreateJoinEntries, 65540, AddressFamily::kIpv4Vpn), 0);
    EXPECT_EQ(run_step(&BgpRouterMgr::CreateJoinEntries, 65540, AddressFamily::kIpv6Vpn), 0);
    expectChanges(Lines()
                      .created("/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{65540 3}")
                      .leaf("bgpRmAfmPartnerIndex", "1")
                      .leaf("bgpRmAfmAfi", "ipv4")
                      .leaf("bgpRmAfmSafi", "mplsBgpVpn")
                      .leaf("bgpRmAfmAdminStatus", "down")
                      .created("/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{65540 4}")
                      .leaf("bgpRmAfmPartnerIndex", "1")
                      .leaf("bgpRmAfmAfi", "ipv6")
                      .leaf("bgpRmAfmSafi", "mplsBgpVpn")
                      .leaf("bgpRmAfmAdminStatus", "down"));
    expectLog(
        {"rm_index=65540 rtm_index=65537 afi=1 safi=128 afm=3", "rm_index=65540 rtm_index=65537 afi=2 safi=128 afm=4"});
}

TEST_F(CreateStep, JoinOfNoAddressFamily_FailsAndWritesNothing)
{
    for (const int afm : {0, 5, -1}) {
        EXPECT_EQ(run_step(&BgpRouterMgr::CreateJoinEntries, 65540, static_cast<AddressFamily>(afm)), -1);
    }
    expectChanges({});
    expectLog({});
}

TEST_F(CreateStep, UnicastJoins_AreThoseOfTheWholeCreation)
{
    EXPECT_EQ(run_step(&BgpRouterMgr::CreateJoinEntries, 65540, AddressFamily::kIpv6Unicast), 0);
    Lines lines;
    lines.created("/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{65540 2}")
        .leaf("bgpRmAfmPartnerIndex", "65538")
        .leaf("bgpRmAfmAfi", "ipv6")
        .leaf("bgpRmAfmSafi", "unicast")
        .leaf("bgpRmAfmAdminStatus", "down");
    expectChanges(rtm_joins(lines, {"65538 65538 ariPrtnrRtm", "65538 65540 ariPrtnrBgp"}));
}

TEST_F(CreateStepDeath, WildcardAddressOfAnotherType_IsAFailedAssertion)
{
    open();
    hex_lists_come_as_text = true;
    EXPECT_DEATH(run_step(&BgpRouterMgr::CreateBgpListenEntries, 6),
                 "src/daemon/bgp_router_mgr:[0-9]+: int BgpRouterMgr::CreateBgpListenEntries\\(int, int, uint32_t\\): "
                 "Assertion `\\(&myval\\)->type == C_BINARY' failed");
    hex_lists_come_as_text = false;
}

// The ends of the process ---------------------------------------------------------------------------------------------

// One write of the creation: its path, how many writes of that path come before it, and what its failure reports.
struct FailingWrite {
    Function function;
    std::string path;
    std::size_t before;
    std::string reported;
};

// Every write in its order. Lines that are the code's own are left open.
std::vector<FailingWrite> writes_of_creation(bool named)
{
    const std::string source = " src/daemon/bgp_router_mgr:";
    const auto row = [&](const char* path, std::size_t before, const std::string& function, const std::string& line) {
        return FailingWrite{Function::maapi_set_values, path, before, function + source + line};
    };
    return {
        row("/DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable/rtmEntityEntry", 0, "ForceCreateRtmEntries", "147"),
        row("/DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable/rtmEntityEntry", 1, "ForceCreateRtmEntries", "147"),
        {Function::maapi_set_elem, "/internal/router-id-default-hidden", 0, "Create" + source + "[0-9]+"},
        row(kRmEntities, 0, "Create", named ? "392" : "388"),
        row(kAfiSafis, 0, "CreateBgpAfiSafiEntries", "168"),
        row(kAfiSafis, 1, "CreateBgpAfiSafiEntries", "168"),
        row(kAfiSafis, 2, "CreateBgpAfiSafiEntries", "196"),
        row(kAfiSafis, 3, "CreateBgpAfiSafiEntries", "196"),
        row(kNmEntities, 0, "Create", named ? "414" : "410"),
        row(kRtmJoins, 0, "CreateJoinEntries", "[0-9]+"),
        row(kRtmJoins, 1, "CreateJoinEntries", "[0-9]+"),
        row(kJoins, 0, "CreateJoinEntries", "[0-9]+"),
        row(kRtmJoins, 2, "CreateJoinEntries", "[0-9]+"),
        row(kRtmJoins, 3, "CreateJoinEntries", "[0-9]+"),
        row(kJoins, 1, "CreateJoinEntries", "[0-9]+"),
        row(kListens, 0, "CreateBgpListenEntries", "312"),
        row(kListens, 1, "CreateBgpListenEntries", "312"),
    };
}

class CreateWithAFailingWriteDeath : public CreateInstance, public testing::WithParamInterface<const char*> {};

TEST_P(CreateWithAFailingWriteDeath, EachInTurn_EndsTheProcessThereWithNothingWrittenAfterIt)
{
    given();
    open();
    show_faults_and_writes(device());
    const std::string vrf_name = GetParam();
    std::size_t count = 0;
    for (const FailingWrite& write : writes_of_creation(!vrf_name.empty())) {
        SCOPED_TRACE(write.path + " after " + std::to_string(write.before));
        const std::string writes = "writes " + std::to_string(++count);
        const char* function = write.function == Function::maapi_set_elem ? "maapi_set_elem" : "maapi_set_values";
        faults().clear();
        faults().fail(write.function, write.path, {}, 1, write.before);
        EXPECT_EXIT(create(6, 65010, kRouterPath, vrf_name), testing::ExitedWithCode(1),
                    "^fault 1 " + write.reported + " <error\\[18\\]: " + bgp_test::planned(function, write.path) +
                        " \n> backtraces 1, " + writes + "\n" + writes + " at exit\n$");
    }
    EXPECT_EQ(count, 17U);
}

INSTANTIATE_TEST_SUITE_P(Names, CreateWithAFailingWriteDeath, testing::Values("", "red"),
                         [](const auto& name) { return std::string(*name.param == '\0' ? "Nameless" : "Named"); });

TEST_F(CreateInstanceDeath, NoAdministrativeStatus_EndsTheProcess)
{
    given("<router xmlns=\"urn:bgp-update:yang:router\"><bgp><as-number>65010</as-number></bgp></router>");
    open();
    show_faults_and_writes(device());
    EXPECT_EXIT(create(6, 65010, kRouterPath, ""), testing::ExitedWithCode(1),
                "^fault 1 Create src/daemon/bgp_router_mgr:[0-9]+ <error\\[1\\]: maapi_get_elem: item does not exist: "
                "/router/bgp\\{65010\\}/administrative-status \n> backtraces 1, writes 2\nwrites 2 at exit\n$");
}

TEST_F(CreateInstanceDeath, AdministrativeStatusOfAnotherType_IsAFailedAssertion)
{
    leafHasType("router", "administrative-status", "string");
    given();
    open();
    EXPECT_DEATH(create(6, 65010, kRouterPath, ""),
                 "src/daemon/bgp_router_mgr:[0-9]+: int BgpRouterMgr::Create\\(int, int, const .*string&, uint32_t, "
                 "uint32_t, char\\*\\): Assertion `\\(&myval\\)->type == C_ENUM_VALUE' failed");
}

TEST_F(CreateInstanceDeath, RouterIdThatIsNoHexList_IsAFailedAssertion)
{
    given();
    open();
    hex_lists_come_as_text = true;
    EXPECT_DEATH(create(6, 65010, kRouterPath, ""),
                 "src/daemon/bgp_router_mgr:[0-9]+: int BgpRouterMgr::Create\\(int, int, const .*string&, uint32_t, "
                 "uint32_t, char\\*\\): Assertion `\\(&vl_router_id\\)->type == C_BINARY' failed");
    hex_lists_come_as_text = false;
}

TEST_F(CreateInstanceDeath, NoContext_EndsTheProcessBeforeAnythingIsWritten)
{
    given();
    const int maapi_socket = open().maapi_socket;
    show_faults_and_writes(device());
    char name[] = "";
    EXPECT_EXIT(manager().Create(maapi_socket, static_cast<confd_trans_ctx*>(nullptr), kRouterPath, 6, 65010, name),
                testing::ExitedWithCode(1),
                "^fault 1 Create src/daemon/bgp_router_mgr:325 <> backtraces 1, writes 0\nwrites 0 at exit\n$");
}

}  // namespace
