/*
 * The transaction context that ConfD hands to a daemon's callbacks, and the time such a callback may take.
 */
#pragma once

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * One transaction as a daemon's callback sees it. The context belongs to the daemon library; a callback borrows it for
 * the time of its call.
 */
struct confd_trans_ctx {
    int fd;         /* the socket to the daemon library */
    int thandle;    /* the transaction's handle, for the MAAPI calls */
    void* t_opaque; /* what the daemon attached to the transaction */
};

/**
 * Sets the time that the running callback may still take.
 *
 * @param tctx         the context given to the callback
 * @param timeout_secs seconds, counted from this call
 * @return CONFD_OK, or CONFD_ERR with `confd_errno` set
 */
int confd_data_set_timeout(struct confd_trans_ctx* tctx, int timeout_secs);

#ifdef __cplusplus
}
#endif
