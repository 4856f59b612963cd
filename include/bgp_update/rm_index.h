// The upgrade step that gives the global BGP instance the index of its VRF: the rows of the router entity move to it,
// and the maps between AS numbers and instances are made. Handles: update.h.
#pragma once

#include <cstdint>

#include "bgp_update/export.h"

/**
 * Moves the rows of the BGP router entity from its old index to the base component of the global VRF, table by table
 * (`BaseEntry` and the classes behind it say what becomes of a row), and makes the global VRF's index maps with
 * `update_as_to_idx_map`. The maps get the index that follows the component where the entity has the component as its
 * index already, and the component otherwise.
 *
 * Does nothing when the entity's local AS cannot be read, or when the stored configuration has an instance index for it
 * in the global VRF. Failures are logged; a row that cannot be moved stays where it is. A value of another type than
 * the data model gives it ends the process by a failed assertion, and so does a moved row whose leaf with the index
 * cannot be written.
 *
 * @param rm_index the old index of the BGP router entity (bgpRmEntIndex)
 * @return 0 always
 */
BGP_UPDATE_EXPORT int32_t update_rm_index(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, uint32_t rm_index);

/**
 * Makes "/bgp-internal/bgp-vrf{0}", the index maps of the global VRF, with one instance in them: which index the AS
 * has, which AS the index has, and the index that the next instance gets. That one is the instance's own plus one, 0
 * after 65535.
 *
 * A leaf that cannot be set is logged and left out.
 *
 * @param cdb_socket not used
 * @param local_as   the AS number of the instance
 * @param compound   the compound index of the instance; the low 16 bits of the instance index in it
 *                   (`BgpUtils::GetInstIdxFromCompoundIdx`) are what the maps hold
 * @return -1 when the instance's entry in one of the two maps cannot be created, and nothing is written behind it; 0 in
 *         every other case, one in which the VRF's entry cannot be created or is there already included: then nothing
 *         is written
 */
BGP_UPDATE_EXPORT int32_t update_as_to_idx_map(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket,
                                               uint32_t local_as, uint32_t compound);
