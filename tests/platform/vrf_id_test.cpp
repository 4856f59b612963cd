// VRF numbers: the base components, and that the inverse holds over the whole run of each VRF.
#include <gtest/gtest.h>

#include <cstdint>

#include "device.h"
#include "libvrfid.h"

namespace {

using libvrfid::VrfId;

TEST(VrfId, WithoutADevice_TheDefaultNumbersHold)
{
    EXPECT_EQ(VrfId::ComponentFromVrf(0), 1U);
    EXPECT_EQ(VrfId::ComponentFromVrf(2), 131073U);
    EXPECT_EQ(VrfId::VrfFromComponent(131073), 2U);
}

TEST(VrfId, ADeviceWithoutSettings_HasTheSameNumbers)
{
    const bgp_platform::Device device;
    EXPECT_EQ(VrfId::ComponentFromVrf(0), 1U);
    EXPECT_EQ(VrfId::ComponentFromVrf(1), 65537U);
}

TEST(VrfId, EveryNumberOfARun_LeadsBackToItsVrf)
{
    for (const uint32_t vrf : {0U, 1U, 7U, 65534U}) {
        const uint32_t component = VrfId::ComponentFromVrf(vrf);
        for (const uint32_t instance : {0U, 1U, 32768U, 65535U}) {
            EXPECT_EQ(VrfId::VrfFromComponent(component + instance), vrf) << instance;
        }
    }
}

TEST(VrfId, BaseAndStepOfTheDevice_AreUsed)
{
    bgp_platform::Device device;
    device.set_vrf_component(1000, 100000);
    EXPECT_EQ(VrfId::ComponentFromVrf(0), 1000U);
    EXPECT_EQ(VrfId::ComponentFromVrf(3), 301000U);
    EXPECT_EQ(VrfId::VrfFromComponent(301000), 3U);
    EXPECT_EQ(VrfId::VrfFromComponent(301000 + 65535), 3U);
    EXPECT_EQ(VrfId::VrfFromComponent(300999), 2U);
}

TEST(VrfId, NumberBelowTheBase_CountsToTheGlobalVrf)
{
    bgp_platform::Device device;
    device.set_vrf_component(1000, 65536);
    EXPECT_EQ(VrfId::VrfFromComponent(0), 0U);
    EXPECT_EQ(VrfId::VrfFromComponent(999), 0U);
}

TEST(VrfId, StepOfZero_PutsAllIntoTheGlobalVrf)
{
    bgp_platform::Device device;
    device.set_vrf_component(7, 0);
    EXPECT_EQ(VrfId::ComponentFromVrf(9), 7U);
    EXPECT_EQ(VrfId::VrfFromComponent(9), 0U);
}

}  // namespace
