// The switch that puts one unicast address family of an instance to work: its row, its join, its redistribution rule.
#include "bgp_update/vrf.h"
#include "support/daemon_fixture.h"
#include "support/vrf_rows.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::Lines;
using bgp_test::Name;
using bgp_test::redistribution_rule;
using bgp_test::rows;
using bgp_test::table;
using bgp_test::vrf_numbers;
using bgp_test::vrf_step_asserts;
using bgp_test::operator+;

constexpr uint32_t kAs = 65010;
constexpr char kAfiSafi[] = "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry";
constexpr char kFamilyJoins[] = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry";

class AddressFamilySwitch : public bgp_test::DaemonTest {
protected:
    // Instance 9 with its rows for both unicast families, and VRF blue with the RTM indexes 70 and 76.
    void SetUp() override
    {
        stored(table("DC-BGP-MIB", "bgpRmAfiSafiTable",
                     rows("bgpRmAfiSafiEntry", {familyKeys("ipv4"), familyKeys("ipv6")})));
        stored(vrf_numbers("blue", 7));
    }

    void TearDown() override { expectNothingLeftOpen(); }

    static std::string familyKeys(const std::string& afi)
    {
        return "<bgpRmEntIndex>9</bgpRmEntIndex><bgpRmAfiSafiAfi>" + afi +
               "</bgpRmAfiSafiAfi><bgpRmAfiSafiSafi>unicast</bgpRmAfiSafiSafi>";
    }

    void storeJoins()
    {
        const std::string key = "<bgpRmEntIndex>9</bgpRmEntIndex><bgpRmAfmJoin>";
        stored(table("DC-BGP-MIB", "bgpRmAfmJoinTable",
                     rows("bgpRmAfmJoinEntry", {key + "1</bgpRmAfmJoin>", key + "2</bgpRmAfmJoin>"})));
    }

    int switchOn(int32_t afi, uint32_t index = 9)
    {
        confd_value_t afi_value;
        CONFD_SET_ENUM_VALUE(&afi_value, afi);
        return switchOn(afi_value, index);
    }

    int switchOn(confd_value_t afi, uint32_t index = 9)
    {
        confd_value_t safi;
        CONFD_SET_ENUM_VALUE(&safi, 1);
        return bgp_vrf_afisafi_create(maapi(), thandle(), index, Name("blue"), kAs, &afi, &safi);
    }

    static constexpr char kFamilyOn[] =
        "set /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{9 ipv4 unicast}/bgpRmAfiSafiAdminStatus up";
    static constexpr char kFamilyJoinsOn[] =
        "set /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{9 1}/bgpRmAfmAdminStatus up";
};

TEST_F(AddressFamilySwitch, Ipv4_SwitchesFamilyAndJoinOnAndWritesTheRule)
{
    storeJoins();
    EXPECT_EQ(switchOn(1), 0);
    expectChanges(Lines{kFamilyOn, kFamilyJoinsOn} + redistribution_rule("70", "ipv4"));
    expectLog({});
    expectTrace({});
}

TEST_F(AddressFamilySwitch, Ipv6_SwitchesTheOtherFamilyAndJoinOn)
{
    storeJoins();
    EXPECT_EQ(switchOn(2), 0);
    expectChanges(
        Lines{"set /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{9 ipv6 unicast}/bgpRmAfiSafiAdminStatus up",
              "set /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{9 2}/bgpRmAfmAdminStatus up"} +
        redistribution_rule("76", "ipv6"));
}

TEST_F(AddressFamilySwitch, WithoutAJoin_NoneIsMade)
{
    EXPECT_EQ(switchOn(1), 0);
    expectChanges(Lines{kFamilyOn} + redistribution_rule("70", "ipv4"));
    EXPECT_EQ(device().calls().failed_write_count(), 0U);
}

TEST_F(AddressFamilySwitch, FailedTestOfTheJoin_CountsAsNone)
{
    storeJoins();
    faults().fail(Function::maapi_exists);
    EXPECT_EQ(switchOn(1), 0);
    expectChanges(Lines{kFamilyOn} + redistribution_rule("70", "ipv4"));
}

TEST_F(AddressFamilySwitch, WithoutTheFamilysRow_TheRestIsSwitchedOn)
{
    storeJoins();
    EXPECT_EQ(switchOn(25), 0) << "an address family without a row, which joins as IPv6 does";
    expectChanges(Lines{"set /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{9 2}/bgpRmAfmAdminStatus up"} +
                  redistribution_rule("70", "ipv4"));
}

TEST_F(AddressFamilySwitch, FailedWrites_AreNotToldAndLeaveTheOthers)
{
    storeJoins();
    faults().fail(Function::maapi_set_elem, kAfiSafi);
    EXPECT_EQ(switchOn(1), 0);
    expectChanges(Lines{kFamilyJoinsOn} + redistribution_rule("70", "ipv4"));
    expectLog({});
}

TEST_F(AddressFamilySwitch, FailedWriteOfTheJoin_LeavesTheOthers)
{
    storeJoins();
    faults().fail(Function::maapi_set_elem, kFamilyJoins);
    EXPECT_EQ(switchOn(1), 0);
    expectChanges(Lines{kFamilyOn} + redistribution_rule("70", "ipv4"));
    expectLog({});
}

TEST_F(AddressFamilySwitch, FailedWriteOfTheRule_LeavesTheOthers)
{
    storeJoins();
    faults().fail(Function::maapi_set_values);
    EXPECT_EQ(switchOn(1), 0);
    expectChanges({kFamilyOn, kFamilyJoinsOn});
    expectLog({});
}

class AddressFamilySwitchDeath : public AddressFamilySwitch {};

TEST_F(AddressFamilySwitchDeath, AddressFamilyOfAnotherType_FailsAnAssertion)
{
    confd_value_t afi;
    CONFD_SET_UINT32(&afi, 1);
    open();
    EXPECT_DEATH(
        switchOn(afi),
        vrf_step_asserts(
            40, "int bgp_vrf_afisafi_create(int, int, uint32_t, char*, uint32_t, confd_value_t*, confd_value_t*)",
            "(afi)->type == C_ENUM_VALUE"));
}

}  // namespace
