// A read of what the open transaction shows or, where it shows nothing, of what is committed: an upgrade transaction
// may not have written yet what the running datastore still has.
#pragma once

#include <sys/socket.h>

#include "bgp_update/bgp_utils.h"
#include "confd/transaction.h"
#include "confd_cdb.h"

struct LookupResult {
    int result;  // 0, or negative: the failing read's, -1 where no session could be had
    bool asked;  // whether there was anyone to ask; false where no session could be had
};

// Reads a leaf through the transaction and, if that fails, through a private session on the running datastore.
template <typename... Keys>
LookupResult look_up(const confd::Transaction& transaction, confd_value_t* out, const char* path, Keys... keys)
{
    if (transaction.get(out, path, keys...) == CONFD_OK) {
        return {CONFD_OK, true};
    }
    const int sock = socket(AF_INET, SOCK_STREAM, 0);
    if (sock < 0 || BgpUtils::StartCdbSession(sock) != 0) {
        return {-1, false};
    }
    const int result = cdb_get(sock, out, path, keys...);
    BgpUtils::EndCdbSession(sock);
    return {result, true};
}
