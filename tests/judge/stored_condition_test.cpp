// The conditions that steps need, by what is stored.
#include "judge/stored_condition.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "contract/steps.h"
#include "device.h"

namespace bgp_test {
namespace {

TEST(StoredCondition, HoldsByWhatIsStored)
{
    using bgp_rehearse::holds;
    bgp_platform::Device edge;
    edge.load_file(BGP_SOURCE_DIR "/examples/edge-router.xml");
    constexpr char kRules[] = "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry";
    EXPECT_TRUE(
        holds(bgp_contract::needs_value("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs", ""), edge));
    EXPECT_FALSE(
        holds(bgp_contract::needs_value("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[1]/bgpRmEntLocalAs", ""), edge));
    EXPECT_FALSE(holds(bgp_contract::needs_value("/prefix-list-internal/name-next-index", ""), edge));
    EXPECT_TRUE(holds(bgp_contract::needs_rows(kRules, ""), edge));
    EXPECT_FALSE(holds(bgp_contract::needs_no_rows(kRules, ""), edge));
    EXPECT_FALSE(holds(bgp_contract::needs_rows("/prefix-list", ""), edge));
    EXPECT_TRUE(holds(bgp_contract::needs_no_rows("/prefix-list", ""), edge));
}

TEST(StoredCondition, PathThatTheDataModelDoesNotHave_IsAnErrorOfTheContract)
{
    const bgp_platform::Device device;
    EXPECT_THROW(static_cast<void>(bgp_rehearse::holds(bgp_contract::needs_rows("/prefix-lists", ""), device)),
                 std::logic_error);
}

TEST(StoredCondition, EachOfTheContract_HasItsPathInTheDataModel)
{
    const bgp_platform::Device device;
    for (const bgp_contract::Step& step : bgp_contract::kSteps) {
        for (const bgp_contract::Condition& condition : step.conditions) {
            EXPECT_EQ(bgp_rehearse::holds(condition, device), condition.kind == bgp_contract::Condition::Kind::NoRows)
                << condition.path;
        }
    }
}

}  // namespace
}  // namespace bgp_test
