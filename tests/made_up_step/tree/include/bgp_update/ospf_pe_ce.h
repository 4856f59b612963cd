// The upgrade step for the PE-CE procedures of OSPF. Handles: update.h.
#pragma once

#include <cstdint>

#include "bgp_update/export.h"

/**
 * Gives each OSPF entity of the transaction that does not say whether it applies the PE-CE procedures the word that it
 * does not. A failure is logged and the step goes on with the next entity.
 *
 * @return 0
 */
BGP_UPDATE_EXPORT int32_t update_ospf_pe_ce(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket);
