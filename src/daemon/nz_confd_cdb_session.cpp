// The private CDB session class is the platform's, with nothing added.
#include "bgp_update/nz_confd_cdb_session.h"

NzConfdCdbSession::NzConfdCdbSession(NzConfdInterface* confd, cdb_db_type db, bool start)
    : NzConfdCdbSessionBase(confd, db, start)
{
}

NzConfdCdbSession::~NzConfdCdbSession() = default;
