// The upgrade step that gives an old BGP router entity its entry in the command-line model. Handles: update.h.
#pragma once

#include <cstdint>

#include "bgp_update/export.h"

/**
 * Creates the "/router/bgp" entry of a BGP router entity and copies the entity's attributes into it: router id, AS
 * number size, administrative status, default local preference and cluster id, each on its own.
 *
 * Does nothing when the entity's local AS cannot be read, or when the stored configuration has the entry already. An
 * attribute that is absent or cannot be written is logged and left out. The local AS must be a C_UINT32; another type
 * ends the process by a failed assertion. The number read is the key of the entry and its AS number.
 *
 * @param cdb_socket its namespace is changed to that of DC-BGP-MIB
 * @param entry      the entity's position in "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", from 0
 * @return -1 when the entry could not be created; 0 in every other case, nothing done included
 */
extern "C" BGP_UPDATE_EXPORT int32_t update_router_bgp(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket,
                                                       int entry);
