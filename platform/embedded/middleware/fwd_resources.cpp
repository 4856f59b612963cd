// The user's forwarding profile: the number that the device is set to, 0 when none.
#include "fwd_resources.h"

#include "registry.h"

FwdResources::FwdResources() = default;
FwdResources::~FwdResources() = default;

int FwdResources::get_user_profile(FwdTableUserData_s* user_data)
{
    if (user_data == nullptr) {
        return -1;
    }
    const bgp_platform::DeviceState* const device = bgp_platform::Registry::instance().current();
    *user_data = FwdTableUserData_s{};
    user_data->profile = device == nullptr ? 0 : device->settings.user_profile;
    return 0;
}
