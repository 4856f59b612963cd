// The forwarding profile that the device is set to.
#include <gtest/gtest.h>

#include "device.h"
#include "fwd_resources.h"

namespace {

FwdTableUserData_s user_profile()
{
    FwdTableUserData_s record{};
    record.profile = 99;
    EXPECT_EQ(FwdResources().get_user_profile(&record), 0);
    return record;
}

TEST(UserProfile, WithoutADevice_IsZero)
{
    EXPECT_EQ(user_profile().profile, 0U);
}

TEST(UserProfile, DeviceWithoutAProfile_GivesZero)
{
    const bgp_platform::Device device;
    EXPECT_EQ(user_profile().profile, 0U);
}

TEST(UserProfile, NumberOfTheDevice_IsTheSecondFieldOfTheRecord)
{
    bgp_platform::Device device;
    device.set_user_profile(4294967290U);
    const FwdTableUserData_s record = user_profile();
    const auto* const fields = reinterpret_cast<const uint32_t*>(&record);
    EXPECT_EQ(fields[1], 4294967290U);
}

TEST(UserProfile, WithoutARecord_IsRefused)
{
    EXPECT_LT(FwdResources().get_user_profile(nullptr), 0);
}

}  // namespace
