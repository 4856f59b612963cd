// The library's entry point: what the device's configuration-update framework calls, once, while the device's software
// is upgraded.
#pragma once

#include "bgp_update/export.h"

/**
 * Converts the BGP part of a stored configuration to the data model of the new software.
 *
 * Reads the stored configuration, decides which conversions it needs and runs them in a fixed order; they write into
 * the open upgrade transaction. Nothing is committed: the transaction is the framework's. Every decision and failure is
 * written as a debug line to the upgrade's log (`get_conf_updt_log_handle()` of conf_updt_log.h). A value of another
 * type than the data model gives it ends the process by a failed assertion.
 *
 * @param maapi_socket a connected MAAPI socket, borrowed
 * @param thandle      the handle of the open upgrade transaction on that socket
 * @param cdb_socket   a connected CDB socket with a read session on the configuration as it was stored before the
 *                     upgrade, borrowed; its namespace is changed to that of DC-BGP-MIB
 * @return 0, also when conversions failed; the log tells
 */
extern "C" BGP_UPDATE_EXPORT int update(int maapi_socket, int thandle, int cdb_socket);
