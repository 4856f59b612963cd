// What the upgrade shares with the device's BGP daemon, apart from the router manager: private sessions on the running
// configuration, the keepalive of long transactions, and the release of values.
#pragma once

#include <confd_lib.h>

#include <cstdint>

#include "bgp_update/export.h"

struct confd_trans_ctx;

/** A namespace of static functions; there are no objects of it. Not for several threads at once. */
class BGP_UPDATE_EXPORT BgpUtils {
public:
    BgpUtils() = delete;

    /**
     * Connects a socket to the device's ConfD (127.0.0.1, port 4565) and starts a read session on the running
     * datastore.
     *
     * @param sock a fresh stream socket, as `socket(AF_INET, SOCK_STREAM, 0)` makes it. On success it stays the
     * caller's, to be given to `EndCdbSession`; on failure it has been closed
     * @return 0, or -1 when the connection or the session could not be had
     */
    static int32_t StartCdbSession(int32_t sock);

    /**
     * Ends the session of a socket and closes it.
     *
     * @param sock a socket of `StartCdbSession`; it is closed also when it has no session
     * @return 0, whatever ending and closing report
     */
    static int32_t EndCdbSession(int32_t sock);

    /**
     * Keeps a long transaction from timing out; to be called between its pieces of work.
     *
     * The first call of the process fixes the interval for all later ones: `timeout` times 0.8, cut to whole seconds.
     * When that interval has passed since the last reset (at the first call: always), gives the running callback as
     * many seconds as the interval has, traces that to the category "bgp-app", and takes the time of the reset down in
     * `last_timeout`.
     *
     * @param tctx    the context of the running callback, borrowed
     * @param timeout the transaction's timeout in seconds, counted only at the first call of the process; its 0.8-fold
     * must fit a 32-bit integer
     * @return 0 when the interval has not passed, else the result of `confd_data_set_timeout`: CONFD_OK or CONFD_ERR
     */
    static int SetMaapiKeepalive(confd_trans_ctx* tctx, double timeout);

    /**
     * Releases what consecutive values own, each with `confd_free_dup_to_value`. The array itself stays the caller's.
     *
     * @param values the first of the values; not looked at when there are none
     * @param count  their number; 0 or less does nothing
     */
    static void FreeConfdValues(confd_value* values, int count);

    /** When `SetMaapiKeepalive` last reset a timeout: wall-clock seconds since 1970, 0 when it never did. */
    static int64_t last_timeout;
};
