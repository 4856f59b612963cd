// The switches for the OSPF PE-CE procedures of a VRF: which rows get them, what decides, and what is traced.
#include "bgp_update/bgp_vrf_redist_entry.h"
#include "support/ospf_fixture.h"
#include "support/router_mgr_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::internal;
using bgp_test::Name;
using bgp_test::ospf_numbers;
using bgp_test::ospf_process;
using bgp_test::rows;
using bgp_test::table;
using Redist = BgpUtils::BgpVrfRedistEntry;

constexpr char kVpnStatus[] =
    "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{1 ipv4 mplsBgpVpn}/bgpRmAfiSafiAdminStatus";
constexpr char kRedistTable[] = "/DC-RTM-MIB:DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
constexpr char kRedistRow[] = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
constexpr char kEntityTable[] = "/DC-OSPF-MIB:DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";

// VRF red with the RTM indexes 70 and 76.
constexpr char kRedVrf[] =
    "<vrf-config><stringTOindex><name>red</name><rtmIndex>70</rtmIndex><rtmIndexV6>76</rtmIndexV6></stringTOindex>"
    "</vrf-config>";

std::string vpn(const std::string& status)
{
    return table("DC-BGP-MIB", "bgpRmAfiSafiTable",
                 rows("bgpRmAfiSafiEntry", {"<bgpRmEntIndex>1</bgpRmEntIndex><bgpRmAfiSafiAfi>ipv4</bgpRmAfiSafiAfi>"
                                            "<bgpRmAfiSafiSafi>mplsBgpVpn</bgpRmAfiSafiSafi><bgpRmAfiSafiAdminStatus>" +
                                            status + "</bgpRmAfiSafiAdminStatus>"}));
}

std::string rules(const std::vector<std::pair<uint32_t, uint32_t>>& keys)
{
    std::vector<std::string> leaves;
    for (const auto& [rtm_index, entry] : keys) {
        leaves.push_back("<rtmRedistFteIndex>" + std::to_string(rtm_index) + "</rtmRedistFteIndex><rtmRedistEntryId>" +
                         std::to_string(entry) + "</rtmRedistEntryId>");
    }
    return table("DC-RTM-MIB", "rtmRedistTable", rows("rtmRedistEntry", leaves));
}

std::string ospf_entity(uint32_t index)
{
    return table("DC-OSPF-MIB", "ospfPmEntTable",
                 rows("ospfPmEntEntry", {"<ospfPmEntIndex>" + std::to_string(index) + "</ospfPmEntIndex>"}));
}

constexpr uint32_t kRule100 = 0x2010064;  // of process 100
constexpr uint32_t kOspfRule = 0x5000000;

std::string support_line(const std::string& rtm_index, uint32_t rule, const std::string& value)
{
    return "set " + std::string(kRedistRow) + "{" + rtm_index + " " + std::to_string(rule) +
           "}/rtmRedistOspfVpnPeCeSupport " + value;
}

std::string entity_line(const std::string& value)
{
    return "set /DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{900}/ospfPmEntVpnPeCeSupport " + value;
}

class PeCeSupport : public bgp_test::OspfTest {
protected:
    // VRF red with OSPF process 100, entity 900, all rows that take part, and the VPN family of this status.
    void storeVrf(const std::string& vpn_status, uint32_t proc_id = 100, uint32_t rule = kRule100)
    {
        stored(internal(kRedVrf + ospf_process(1, "red", ospf_numbers(proc_id, 900))));
        stored(rules({{70, rule}, {70, kOspfRule}, {76, rule}, {76, kOspfRule}}));
        stored(ospf_entity(900));
        if (!vpn_status.empty()) {
            stored(vpn(vpn_status));
        }
    }

    int support(bool enable, bool ipv6 = false, int source = 5, const char* vrf = "red")
    {
        return Redist::Rfc4577Support(maapi(), context(), nullptr, category(), Name(vrf),
                                      static_cast<RtmRedistInfoSource>(source), enable, ipv6);
    }

    void expectSwitched(const std::string& rtm_index, uint32_t rule, const std::string& value)
    {
        expectChanges(
            {entity_line(value), support_line(rtm_index, rule, value), support_line(rtm_index, kOspfRule, value)});
    }

    void expectTraced(const std::vector<std::string>& lines)
    {
        std::vector<std::string> all;
        for (const std::string& line : lines) {
            all.push_back("Rfc4577Support 10 " + line);
        }
        expectTrace(all);
    }

    static std::string ruleTrace(const std::string& enable, const std::string& rtm_index, uint32_t rule)
    {
        return "set [" + enable + "] " + kRedistTable + "{" + rtm_index + " " + std::to_string(rule) +
               "}/rtmRedistOspfVpnPeCeSupport";
    }

    void expectTracedSwitch(const std::string& enable, const std::string& rtm_index, uint32_t rule)
    {
        expectTraced({"ENTER Rfc4577Support", ruleTrace(enable, rtm_index, rule),
                      ruleTrace(enable, rtm_index, kOspfRule),
                      "set [" + enable + "] " + kEntityTable + "{" + rtm_index + "}/ospfPmEntVpnPeCeSupport",
                      "EXIT Rfc4577Support"});
    }
};

TEST_F(PeCeSupport, EnabledWithTheVpnUp_SwitchesBothRulesAndTheEntityOn)
{
    storeVrf("up");
    EXPECT_EQ(support(true), 0);
    expectSwitched("70", kRule100, "true");
    expectTracedSwitch("1", "70", kRule100);
}

TEST_F(PeCeSupport, Disabled_SwitchesThemOff)
{
    storeVrf("up");
    EXPECT_EQ(support(false), 0);
    expectSwitched("70", kRule100, "false");
    expectTracedSwitch("0", "70", kRule100);
}

TEST_F(PeCeSupport, EnabledWithTheVpnDown_SwitchesThemOff)
{
    storeVrf("down");
    EXPECT_EQ(support(true), 0);
    expectSwitched("70", kRule100, "false");
    expectTracedSwitch("1", "70", kRule100);
}

TEST_F(PeCeSupport, EnabledWithoutAReadableVpnStatus_SwitchesThemOff)
{
    storeVrf("");
    EXPECT_EQ(support(true), 0);
    expectSwitched("70", kRule100, "false");
    expectTracedSwitch("1", "70", kRule100);
}

TEST_F(PeCeSupport, FailedReadOfTheVpnStatus_CountsAsDown)
{
    storeVrf("up");
    faults().fail(Function::maapi_get_elem, kVpnStatus);
    EXPECT_EQ(support(true), 0);
    expectSwitched("70", kRule100, "false");
}

TEST_F(PeCeSupport, Ipv6_SwitchesTheRulesOfTheIpv6Manager)
{
    storeVrf("up");
    EXPECT_EQ(support(true, true), 0);
    expectSwitched("76", kRule100, "true");
    expectTracedSwitch("1", "76", kRule100);
}

TEST_F(PeCeSupport, LongProcessNumber_EntersTheRuleWithItsLow16Bits)
{
    storeVrf("up", 0x12345, 0x2012345);
    EXPECT_EQ(support(true), 0);
    expectSwitched("70", 0x2012345, "true");
    expectTracedSwitch("1", "70", 0x2012345);
}

TEST_F(PeCeSupport, HighBitsOfTheProcessNumber_DoNotEnterTheRule)
{
    storeVrf("up", 0xFFF52345, 0x2012345);
    EXPECT_EQ(support(true), 0);
    expectSwitched("70", 0x2012345, "true");
}

TEST_F(PeCeSupport, SourceOtherThanOspf_ChangesNothing)
{
    storeVrf("up");
    open();
    device().recorder().start();
    for (const int source : {0, 1, 2, 3, 4, 6, -1}) {
        EXPECT_EQ(support(true, false, source), 0) << source;
        expectTraced({"ENTER Rfc4577Support"});
    }
    expectCalls({});
    expectChanges({});
}

TEST_F(PeCeSupport, UnknownVrf_IsTracedAndChangesNothing)
{
    storeVrf("up");
    EXPECT_EQ(support(true, false, 5, "green"), 0);
    expectChanges({});
    expectTraced({"ENTER Rfc4577Support", "Trying to configure a non existent VRF!"});
}

TEST_F(PeCeSupport, VrfWithoutAnOspfProcess_IsTracedAndChangesNothing)
{
    stored(internal(kRedVrf));
    stored(rules({{70, kRule100}, {70, kOspfRule}}));
    stored(vpn("up"));
    EXPECT_EQ(support(true), 0);
    expectChanges({});
    expectTraced({"ENTER Rfc4577Support", "cannot find ospfv2 proc_id for vrf=red", "EXIT Rfc4577Support"});
}

TEST_F(PeCeSupport, ProcessWithoutItsRule_ChangesNothing)
{
    stored(internal(kRedVrf + ospf_process(1, "red", ospf_numbers(100, 900))));
    stored(rules({{70, kOspfRule}, {76, kRule100}}));
    stored(ospf_entity(900));
    stored(vpn("up"));
    EXPECT_EQ(support(true), 0);
    expectChanges({});
    expectTraced({"ENTER Rfc4577Support", "EXIT Rfc4577Support"});
}

TEST_F(PeCeSupport, FailedTestOfTheRule_ChangesNothing)
{
    storeVrf("up");
    faults().fail(Function::maapi_exists);
    EXPECT_EQ(support(true), 0);
    expectChanges({});
    expectTraced({"ENTER Rfc4577Support", "EXIT Rfc4577Support"});
}

TEST_F(PeCeSupport, OtherRowsMissing_AreNotToldAndTheRestIsSwitched)
{
    stored(internal(kRedVrf + ospf_process(1, "red", ospf_numbers(100, 900))));
    stored(rules({{70, kRule100}}));
    stored(vpn("up"));
    EXPECT_EQ(support(true), 0);
    expectChanges({support_line("70", kRule100, "true")});
    EXPECT_EQ(device().calls().failed_write_count(), 2U);
    expectTracedSwitch("1", "70", kRule100);
}

TEST_F(PeCeSupport, FailedWrites_AreNotToldAndLeaveTheOthers)
{
    storeVrf("up");
    faults().fail(Function::maapi_set_elem, {}, {}, 1);
    EXPECT_EQ(support(true), 0);
    expectChanges({entity_line("true"), support_line("70", kOspfRule, "true")});
    expectTracedSwitch("1", "70", kRule100);
    faults().clear();
    faults().fail(Function::maapi_set_elem);
    EXPECT_EQ(support(false), 0);
    expectChanges({entity_line("true"), support_line("70", kOspfRule, "true")});
    expectTracedSwitch("0", "70", kRule100);
}

TEST_F(PeCeSupport, VrfAndProcessOfTheRunningDatastoreOnly_AreFound)
{
    storeVrf("up");
    ASSERT_EQ(maapi_delete(maapi(), thandle(), "/metacli-internal:internal/vrf-config/stringTOindex{red}"), CONFD_OK);
    ASSERT_EQ(maapi_delete(maapi(), thandle(), "/internal/ospf-proc-id-to-index{%u %s}", 1U, "red"), CONFD_OK);
    EXPECT_EQ(support(true), 0);
    expectTracedSwitch("1", "70", kRule100);
    EXPECT_EQ(device().calls().failed_write_count(), 0U);
    expectChanges({entity_line("true"), support_line("70", kRule100, "true"), support_line("70", kOspfRule, "true"),
                   "delete /internal/vrf-config/stringTOindex{red}", "delete /internal/ospf-proc-id-to-index{1 red}"});
}

TEST_F(PeCeSupport, WithoutACategory_SwitchesAndTracesNothing)
{
    storeVrf("up");
    EXPECT_EQ(Redist::Rfc4577Support(maapi(), context(), nullptr, nullptr, Name("red"), RtmRedistInfoSource::kOspf,
                                     true, false),
              0);
    EXPECT_EQ(Redist::Rfc4577Support(maapi(), context(), nullptr, nullptr, Name("green"), RtmRedistInfoSource::kOspf,
                                     true, false),
              0);
    expectSwitched("70", kRule100, "true");
    expectTrace({});
}

class PeCeSupportDeath : public PeCeSupport {
protected:
    void expectAssertion(const std::string& expression)
    {
        open();
        EXPECT_DEATH(support(true),
                     bgp_test::asserts("static int BgpUtils::BgpVrfRedistEntry::Rfc4577Support(int, confd_trans_ctx*, "
                                       "nzmw_log_t*, nzmw_trace_category_t, char*, RtmRedistInfoSource, bool, bool)",
                                       expression));
    }
};

TEST_F(PeCeSupportDeath, RtmIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "rtmIndex", "int32");
    storeVrf("up");
    expectAssertion("(&rtm_val)->type == C_UINT32");
}

TEST_F(PeCeSupportDeath, VpnStatusOfAnotherType_FailsAnAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmAfiSafiAdminStatus", "uint32");
    storeVrf("1");
    expectAssertion("(&admin_status)->type == C_ENUM_VALUE");
}

TEST_F(PeCeSupportDeath, ProcessNumberOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "proc_id", "int32");
    storeVrf("up");
    expectAssertion("(&proc_id_val)->type == C_UINT32");
}

TEST_F(PeCeSupportDeath, EntityIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "ospf-proc-id-to-index/index", "int32");
    storeVrf("up");
    expectAssertion("(&ospf_idx_val)->type == C_UINT32");
}

TEST_F(PeCeSupport, EntityIndexOfAnotherType_DoesNotMatterWithoutTheRule)
{
    leafHasType("metacli-internal", "ospf-proc-id-to-index/index", "int32");
    storeVrf("up", 100, kRule100 + 1);
    EXPECT_EQ(support(true), 0);
    expectChanges({});
}

}  // namespace
