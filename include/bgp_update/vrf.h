// The upgrade steps that give the VRFs of the BGP router their instances in the routing stack's tables.
// Handles: update.h.
#pragma once

#include <confd_lib.h>

#include <cstdint>

#include "bgp_update/export.h"

/**
 * Gives each VRF of an AS ("/router/bgp{as}/vrf" of the stored configuration) its BGP instance: an index
 * (`BgpUtils::CreateBgpCompoundIdx`), the instance's rows (`BgpRouterMgr::Create`, whose lines go to the upgrade log)
 * and, where the transaction has its IPv4 unicast family, what `bgp_vrf_afisafi_create` does.
 *
 * A VRF whose VRF index the stored configuration does not have is logged and left out. A failure of the index or of the
 * instance ends the process through the fault path, and so does a count of the VRFs that fails; a value of another type
 * than the data model gives it ends the process by a failed assertion. Other failures are passed over.
 *
 * @param as the AS number of the BGP router
 * @return 0, also when there is no VRF; -1 when there is no memory for the names or they cannot be read
 */
BGP_UPDATE_EXPORT int32_t update_vrf(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, uint32_t as);

/**
 * Switches one unicast address family of an instance on: the administrative status of its row in
 * "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry" and, where it is there, of its join row in
 * "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry"; and has the VRF's routing table manager hand BGP its routes
 * (`BgpUtils::BgpVrfRedistEntry::BgpVrfRedistCreateType`). Failures are passed over.
 *
 * @param index    the instance's index
 * @param vrf_name the VRF's name, NUL-terminated, borrowed
 * @param as       the AS number of the BGP router; not used
 * @param afi      the address family, a C_ENUM_VALUE, 1 for IPv4 and 2 for IPv6, borrowed; another type ends the
 *                 process by a failed assertion
 * @param safi     the subsequent address family, as the key of its row, borrowed
 * @return 0
 */
BGP_UPDATE_EXPORT int bgp_vrf_afisafi_create(int maapi_socket, int thandle, uint32_t index, char* vrf_name, uint32_t as,
                                             confd_value_t* afi, confd_value_t* safi);

/**
 * Joins the BGP instance of each VRF of the transaction's first BGP router to the VRF's IPv6 routing table manager (RTM):
 * the row of "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry", administratively up when the VRF has an IPv6 unicast
 * family and down otherwise, and the RTM's row of "/DC-RTM-MIB/rtmMjTable/rtmMjEntry" for its partner BGP. The values of
 * rows that are there are set anew.
 *
 * Everything is read from the transaction. A VRF whose VRF index it does not have is logged and left out; a write that
 * fails is logged and the next one tried. A value of another type than the data model gives it ends the process by a
 * failed assertion. Does nothing without a BGP router entity.
 *
 * @param cdb_socket not used
 * @param bgp_count  the number of BGP router entities; with several the step works as with one
 * @return 0, also when there is nothing to do; -1 when the walk over the VRFs cannot be begun
 */
BGP_UPDATE_EXPORT int update_vrf_ipv6(int maapi_socket, int thandle, int cdb_socket, int bgp_count);
