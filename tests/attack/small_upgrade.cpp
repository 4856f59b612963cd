// An upgrade of two log lines and of so many rows that the output takes several writes, for attacks on the files.
#include "conf_updt_log.h"
#include "confd_maapi.h"
#include "nzmw_log.h"

extern "C" int update(int maapi_socket, int thandle, int /*cdb_socket*/)
{
    nzmw_log_t* const log = get_conf_updt_log_handle();
    nzmw_log_debug(log, "Starting\n");
    for (unsigned as_number = 65020; as_number < 65220; ++as_number) {
        if (maapi_create(maapi_socket, thandle, "/router/bgp{%u}", as_number) != CONFD_OK) {
            return CONFD_ERR;
        }
    }
    nzmw_log_debug(log, "Finishing\n");
    return CONFD_OK;
}
