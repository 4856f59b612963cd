// The upgrade step that switches IPv6 on. Handles: update.h.
#pragma once

#include <cstdint>

#include "bgp_update/export.h"

/**
 * Gives the first BGP router entity of the stored configuration what the routing stack needs for IPv6 unicast: the
 * support flag, the hidden rows that tell of IPv4 unicast for the router and each peer, the row of the address family,
 * the joins with the RTM, the listening socket, the disable flag of IPv6 unicast for each peer, and the IPv6 defaults of
 * each route map. Rows of other entities are left alone. To be called when the entity's support flag is false.
 *
 * A failure is logged and the step goes on, but for the support flag: when that cannot be set, nothing else is written.
 * A value of another type than the data model gives it ends the process by a failed assertion.
 *
 * @return 0
 */
BGP_UPDATE_EXPORT int32_t update_ipv6(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket);
