/*
 * Numbers of VRFs. Each VRF owns a run of component numbers in the routing stack; the first of the run is the VRF's
 * base component. Where the runs lie is this library's alone: callers add an instance number of up to 65535 to the
 * base, and ask for the VRF of any number of the run.
 */
#pragma once

#include <cstdint>

namespace libvrfid {

/** Conversions between a VRF's index and its component numbers. */
class VrfId {
public:
    /**
     * The base component of a VRF.
     *
     * @param vrf_index the VRF's index; 0 is the global VRF
     * @return the first component number of the VRF
     */
    static uint32_t ComponentFromVrf(uint32_t vrf_index);

    /**
     * The VRF that a component number belongs to.
     *
     * @param component any number from the VRF's base component to 65535 above it
     * @return the VRF's index
     */
    static uint32_t VrfFromComponent(uint32_t component);
};

}  // namespace libvrfid
