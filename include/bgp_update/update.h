// The library's entry point: what the device's configuration-update framework calls, once, while the device's software
// is upgraded. And what holds for all functions of the library: their handles, and where memory runs out.
#pragma once

#include "bgp_update/export.h"

/*
 * Handles. All functions of the library that work on ConfD take these, under these names. They are borrowed: by a call
 * for its time, by an object for its life.
 *
 * | name         | what it is                                                                                        |
 * | ------------ | ------------------------------------------------------------------------------------------------- |
 * | maapi_socket | a connected MAAPI socket                                                                          |
 * | thandle      | the handle of an open transaction on that socket: for a step, the upgrade's                       |
 * | cdb_socket   | a connected CDB socket with a read session on the configuration as it was stored before the       |
 * |              | upgrade                                                                                           |
 * | tctx         | the context of the daemon's running callback, whose transaction is the one that is meant          |
 *
 * Memory. No exception leaves the library. Where memory runs out, a function ends the process through the fault path:
 * call stack, fault report with the function's name, its source and a line, exit status 1. The few that go on or give a
 * result of their own say so.
 */

/**
 * Converts the BGP part of a stored configuration to the data model of the new software.
 *
 * Reads the stored configuration, decides which conversions it needs and runs them in a fixed order; they write into
 * the open upgrade transaction. Nothing is committed: the transaction is the framework's. Every decision and failure is
 * written as a debug line to the upgrade's log (`get_conf_updt_log_handle()` of conf_updt_log.h). A value of another
 * type than the data model gives it ends the process by a failed assertion.
 *
 * @param cdb_socket its namespace is changed to that of DC-BGP-MIB
 * @return 0, also when conversions failed; the log tells
 */
extern "C" BGP_UPDATE_EXPORT int update(int maapi_socket, int thandle, int cdb_socket);
