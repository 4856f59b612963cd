// The step for the PE-CE procedures of OSPF: which entities get a word on them.
#include "bgp_update/ospf_pe_ce.h"

#include "support/update_fixture.h"

namespace {

constexpr char kSupport[] = "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{7}/ospfPmEntVpnPeCeSupport";
constexpr char kStart[] = "Starting OSPF PE-CE update\n";
constexpr char kTold[] = "PE-CE support is 1 already\n";
constexpr char kEnd[] = "Finishing OSPF PE-CE update\n";

class OspfPeCe : public bgp_test::UpdateTest {
protected:
    // Entity 6 with a word on the procedures, entity 7 without.
    void SetUp() override
    {
        stored(R"(<DC-OSPF-MIB xmlns="http://tail-f.com/ns/mibs/DC-OSPF-MIB"><ospfPmEntTable>)"
               "<ospfPmEntEntry><ospfPmEntIndex>6</ospfPmEntIndex>"
               "<ospfPmEntVpnPeCeSupport>true</ospfPmEntVpnPeCeSupport></ospfPmEntEntry>"
               "<ospfPmEntEntry><ospfPmEntIndex>7</ospfPmEntIndex></ospfPmEntEntry>"
               "</ospfPmEntTable></DC-OSPF-MIB>");
    }
    void TearDown() override { expectNothingLeftOpen(); }
};

TEST_F(OspfPeCe, EntityWithoutAWord_SupportsNone)
{
    EXPECT_EQ(run(update_ospf_pe_ce), 0);
    expectLog({kStart, kTold, kEnd});
    expectChanges({std::string("set ") + kSupport + " false"});
}

TEST_F(OspfPeCe, WordThatCannotBeWritten_IsLogged)
{
    faults().fail(bgp_platform::capi::Function::maapi_set_elem, kSupport);
    EXPECT_EQ(run(update_ospf_pe_ce), 0);
    expectLog({kStart, kTold,
               "Failed to set the PE-CE support, err: " + bgp_test::planned("maapi_set_elem", kSupport) + "\n", kEnd});
    expectChanges({});
}

}  // namespace
