// The upgrade steps for IPv4 VPNs: the address family, and the join with the BVM. Handles: update.h.
#pragma once

#include <cstdint>

#include "bgp_update/export.h"

/**
 * Adds the IPv4 VPN address family ("ipv4 mplsBgpVpn") to the first BGP router entity of the stored configuration and,
 * disabled, to each of its peers. Only devices without the row of MPLS-VPN entity 1 get it; where that row is there,
 * nothing is written, whatever it says.
 *
 * A failure is logged and the step goes on where it can. A value of another type than the data model gives it ends the
 * process by a failed assertion.
 *
 * @return 0
 */
BGP_UPDATE_EXPORT int32_t update_l3vpn(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket);

/**
 * Removes the join of the first BGP router entity with the BVM (partner index 3) when the stored configuration has it
 * administratively down. The row is named by the entity index that the stored configuration has.
 *
 * @param bgp_count the number of BGP router entities; with 0 nothing is done
 * @return 0
 */
BGP_UPDATE_EXPORT int32_t update_bgp_bvm_join(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, int bgp_count);
