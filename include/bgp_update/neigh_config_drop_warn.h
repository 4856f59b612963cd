// The upgrade step that gives neighbours and their address families the new model's settings for the prefix limit.
// Handles: update.h.
#pragma once

#include <cstdint>

#include "bgp_update/export.h"

/**
 * Sets what happens past the prefix limit, and for neighbours the limit itself, in every row of
 * "/DC-BGP-MIB/bgpPeerTable" and "/DC-BGP-MIB/bgpPeerAfiSafiTable": one bulk read and one bulk write per table. The
 * limit is the number of the device's forwarding-resources user profile.
 *
 * Where the stored configuration has no instance index for the global VRF and the local AS, the rows are written under
 * the new index of the router entity: the global VRF's component number or the one that follows it, whichever the
 * entity table of the transaction has, and 4294967295 when it has neither. Otherwise they are written under the keys
 * they were read with.
 *
 * Failures are logged; what could not be read is written as far as it was. Does nothing without a BGP router entity. A
 * local AS of another type than C_UINT32 ends the process by a failed assertion.
 *
 * @param bgp_count the number of BGP router entities
 * @return 0 always
 */
BGP_UPDATE_EXPORT int32_t update_neigh_config_drop_warn(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket,
                                                        int32_t bgp_count);
