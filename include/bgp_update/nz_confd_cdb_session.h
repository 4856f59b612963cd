// The daemon's private CDB session that lasts as long as its object.
#pragma once

#include <nz_confd_cdb_session.h>

#include "bgp_update/export.h"

/**
 * A private CDB read session: the platform's session class under the name by which this library uses it. The session
 * ends and its connection closes with the object.
 */
class BGP_UPDATE_EXPORT NzConfdCdbSession : public NzConfdCdbSessionBase {
public:
    /**
     * Connects, and starts a session if asked to. Nothing is thrown: after a failure `Socket()` gives a negative
     * number.
     *
     * @param confd the daemon's interface, borrowed
     * @param db    the datastore to read
     * @param start true starts the session at once; false leaves the connection without one
     */
    NzConfdCdbSession(NzConfdInterface* confd, cdb_db_type db, bool start);
    ~NzConfdCdbSession() override;
};
