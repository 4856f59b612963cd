// VRF numbers: VRF v has the components from base + step * v on. Base and step are the device's settings.
//
// The inverse holds for a step of 65536 and more. A number below the base belongs to no VRF and is counted to the
// global one.
#include "libvrfid.h"

#include "registry.h"

namespace libvrfid {

namespace {

bgp_platform::VrfNumbering numbering()
{
    const bgp_platform::DeviceState* const device = bgp_platform::Registry::instance().current();
    return device == nullptr ? bgp_platform::VrfNumbering{} : device->settings.vrf;
}

}  // namespace

uint32_t VrfId::ComponentFromVrf(uint32_t vrf_index)
{
    const auto [base, step] = numbering();
    return base + step * vrf_index;
}

uint32_t VrfId::VrfFromComponent(uint32_t component)
{
    const auto [base, step] = numbering();
    return component < base || step == 0 ? 0 : (component - base) / step;
}

}  // namespace libvrfid
