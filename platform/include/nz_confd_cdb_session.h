/*
 * A daemon's access to ConfD as the device's middleware offers it: the interface object that a transaction context
 * leads to, and a private CDB read session that lasts as long as its object.
 */
#pragma once

#include "confd_cdb.h"
#include "confd_dp.h"

/**
 * A daemon's connections to ConfD. The daemon makes one and attaches it to its transactions through the context's
 * `t_opaque`.
 */
class NzConfdInterface {
public:
    /**
     * Names the daemon's MAAPI socket; the object does not own it.
     *
     * @param maapi_socket a connected MAAPI socket, or a negative number when there is none
     */
    explicit NzConfdInterface(int maapi_socket) noexcept : maapi_socket_(maapi_socket) {}

    /**
     * The daemon's MAAPI socket.
     *
     * @return its descriptor, negative when there is none
     */
    int MaapiSocket() const { return maapi_socket_; }

    /**
     * The interface that a transaction belongs to.
     *
     * @param transaction the context given to a callback; its `t_opaque` is the interface that the daemon attached
     * @return that interface, owned by the daemon; null for a null context or one with nothing attached
     */
    static NzConfdInterface* FromTransaction(const confd_trans_ctx* transaction);

private:
    int maapi_socket_;
};

/**
 * A private CDB read session over a connection of its own to the daemon's ConfD at 127.0.0.1, port 4565. The session
 * ends and the connection closes with the object.
 */
class NzConfdCdbSessionBase {
public:
    /**
     * Connects, and starts a session if asked to. A failure shows in `Socket()`; nothing is thrown.
     *
     * @param confd the daemon's interface, borrowed; without one (null) there is no session
     * @param db    the datastore to read
     * @param start true starts the session at once; false leaves the connection without one
     */
    NzConfdCdbSessionBase(NzConfdInterface* confd, cdb_db_type db, bool start);
    virtual ~NzConfdCdbSessionBase();

    NzConfdCdbSessionBase(const NzConfdCdbSessionBase&) = delete;
    NzConfdCdbSessionBase& operator=(const NzConfdCdbSessionBase&) = delete;

    /**
     * The session's socket, for the CDB calls.
     *
     * @return a descriptor that the object owns; negative when the session could not be had
     */
    int Socket() const { return socket_; }

private:
    int socket_;
};
