// Where the upgrade ends the process because its contract asks for that: a mapped VRF without an administrative status,
// two VRFs of one index, or one that has an instance of the AS already; a prefix rule without its length; a moved row
// whose companion leaf cannot be written.
#include <gtest/gtest.h>

#include <string>

#include "device.h"
#include "generate/configuration.h"
#include "support/drawn_upgrade.h"
#include "support/show_faults.h"
#include "support/update_fixture.h"

namespace bgp_test {
namespace {

using bgp_generator::configuration_text;
using bgp_generator::Settings;

// A configuration that ends the process where the contract says so.
class WholeUpgradeEnd : public testing::Test {
protected:
    // Of entity 5, AS 65010, with one VRF, red, of index 7.
    static std::string with_vrf(const std::string& vrf, const std::string& more = {})
    {
        return config(bgp_entity("<bgpRmEntIndex>5</bgpRmEntIndex><bgpRmEntLocalAs>65010</bgpRmEntLocalAs>") +
                      R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number><vrf>)" + vrf +
                      R"(</vrf></bgp></router><internal xmlns="urn:bgp-update:yang:metacli-internal"><vrf-config>)" +
                      "<stringTOindex><name>red</name><vrf-idx>7</vrf-idx></stringTOindex>"
                      "<stringTOindex><name>rose</name><vrf-idx>7</vrf-idx></stringTOindex></vrf-config></internal>" +
                      more);
    }

    // In the child: upgrades, and says what fault was reported.
    static void upgrade(const std::string& configuration)
    {
        Upgrade upgrade(configuration);
        show_faults(upgrade.device());
        upgrade.run();
    }
};

constexpr char kStatus[] = "<administrative-status>up</administrative-status>";

TEST_F(WholeUpgradeEnd, VrfWithoutStatus_EndsInItsCreation)
{
    EXPECT_EXIT(upgrade(with_vrf("<name>red</name>")), testing::ExitedWithCode(1),
                "1 backtrace, then 1, Create, src/daemon/bgp_router_mgr, .*vrf\\{red\\}/administrative-status");
}

TEST_F(WholeUpgradeEnd, TwoVrfsOfOneIndex_EndInTheSecondsNumber)
{
    const std::string vrfs = std::string("<name>red</name>") + kStatus + "</vrf><vrf><name>rose</name>" + kStatus;
    EXPECT_EXIT(upgrade(with_vrf(vrfs)), testing::ExitedWithCode(1),
                "CreateBgpCompoundIdx, src/daemon/bgp_utils, .*/bgp-internal/bgp-vrf\\{7\\}/as-to-bgp-idx");
}

TEST_F(WholeUpgradeEnd, VrfWithAnInstanceOfTheAs_EndsInItsNumber)
{
    const std::string maps =
        R"(<bgp-internal xmlns="urn:bgp-update:yang:bgp-internal"><bgp-vrf><vrf-idx>7</vrf-idx>)"
        "<as-to-bgp-idx><as>65010</as><inst-idx>0</inst-idx></as-to-bgp-idx></bgp-vrf></bgp-internal>";
    EXPECT_EXIT(upgrade(with_vrf(std::string("<name>red</name>") + kStatus, maps)), testing::ExitedWithCode(1),
                "CreateBgpCompoundIdx, src/daemon/bgp_utils, .*/bgp-internal/bgp-vrf\\{7\\}/as-to-bgp-idx");
}

TEST_F(WholeUpgradeEnd, PrefixRuleWithoutLength_EndsInAnAssertion)
{
    Settings settings;
    settings.prefix_rules = 20;
    // A configuration that runs the step, and names its first list.
    settings.seed = 8;
    std::string configuration = configuration_text(settings);
    const std::string leaf = "<aallPreAccessListAddrPrefLen>";
    std::size_t removed = 0;
    for (std::size_t at = configuration.find(leaf); at != std::string::npos; at = configuration.find(leaf)) {
        configuration.erase(at, configuration.find('>', configuration.find("</", at)) + 1 - at);
        ++removed;
    }
    ASSERT_EQ(removed, 20U);
    EXPECT_EXIT(upgrade(configuration), testing::KilledBySignal(SIGABRT),
                "aallPreAccessListAddrPrefLen\\]\\)->type == C_UINT32");
}

// The row of a neighbour has moved, and the leaf that names the index cannot follow.
TEST_F(WholeUpgradeEnd, FailedCompanionWrite_EndsInAnAssertion)
{
    Settings settings;
    settings.neighbors = 8;
    settings.seed = 8;
    Upgrade upgrade(configuration_text(settings));
    ASSERT_TRUE(upgrade.facts().rekeys());
    upgrade.device().fault_plan().fail(bgp_platform::capi::Function::maapi_set_elem,
                                       "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry");
    EXPECT_EXIT(upgrade.run(), testing::KilledBySignal(SIGABRT), "\\(&temp\\)->type == C_INT32");
}

}  // namespace
}  // namespace bgp_test
