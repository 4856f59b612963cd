// The upgrade step that completes the neighbours' unicast address families. Handles: update.h.
#pragma once

#include <cstdint>

#include "bgp_update/export.h"

/**
 * Gives each neighbour that has IPv4 unicast or IPv6 unicast enabled a row of the other of the two in
 * "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", disabled. A row that is there is left as it is, and so is every
 * row of another address family.
 *
 * The rows are walked in the transaction, so those that the upgrade has written count too. Failures are logged and end
 * the handling of their row. Does nothing without a BGP router entity. A key or flag of another type than the data
 * model gives it ends the process by a failed assertion.
 *
 * @param cdb_socket only the number of rows is asked of it
 * @param bgp_count  the number of BGP router entities
 * @return 0 always
 */
BGP_UPDATE_EXPORT int32_t update_neigh_config_afi_safi(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket,
                                                       int32_t bgp_count);
