// Gives the BGP router entity of the routing stack's table its entry in the command-line model: from a row of
// "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry" to "/router/bgp{%u}", keyed by the local AS, with five of the row's
// attributes. Does nothing when the stored configuration has that entry already, or when the local AS cannot be read.
#include "bgp_update/router_bgp.h"

#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/tags.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_cdb.h"
#include "nz_address.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_router_bgp";
constexpr int kPrintedSize = 8192;  // of a value printed for the log

}  // namespace

// Reads an address of the entity, held as a hex list, as dotted text, and prints that for the log. `path` takes the
// entity's position.
static int read_dotted_address(int32_t cdb_socket, confd_value_t* text, char (&printed)[kPrintedSize], const char* path,
                               int entry)
{
    confd::Value address;
    const int result = cdb_get(cdb_socket, &address, path, entry);
    if (result == CONFD_OK) {
        HexlistTOipv4str(&address, text);
        confd_pp_value(printed, kPrintedSize, text);
    }
    return result;
}

static int32_t create_bgp_router_id(int32_t maapi_socket, int32_t cdb_socket, int32_t thandle, int entry, uint32_t as)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Will create bgp router-id ");
    confd::Value val_ipv4;
    char printed[kPrintedSize];
    if (read_dotted_address(cdb_socket, &val_ipv4, printed,
                            "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntLocalIdentifier", entry) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to get bgpRmEntLocalIdentifier, err: %s", confd_lasterr());
        return 0;
    }
    BGP_REQUIRE_TYPE(59, &val_ipv4, C_BUF);
    if (transaction.set_text(CONFD_GET_CBUFPTR(&val_ipv4), "/router/bgp{%u}/router-id", as) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to configure router-id: %s, err: %s", printed, confd_lasterr());
        return -1;
    }
    return 0;
}

static int32_t create_bgp_as_size(int32_t maapi_socket, int32_t cdb_socket, int32_t thandle, int entry, uint32_t as)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Will create bgp as size");
    int32_t as_size = 0;
    if (cdb_get_enum_value(cdb_socket, &as_size, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntAsSize", entry) !=
        CONFD_OK) {
        nzmw_log_debug(log, "Failed to get bgpRmEntAsSize, err: %s", confd_lasterr());
        return 0;
    }
    confd_value_t vl_as_size;
    CONFD_SET_ENUM_VALUE(&vl_as_size, as_size);
    if (transaction.set(&vl_as_size, "/router/bgp{%u}/as-size", as) != CONFD_OK) {
        BGP_REQUIRE_TYPE(100, &vl_as_size, C_ENUM_VALUE);
        nzmw_log_debug(log, "Failed to configure as-size: %d, err: %s", CONFD_GET_ENUM_VALUE(&vl_as_size),
                       confd_lasterr());
        return -1;
    }
    return 0;
}

static int32_t create_bgp_adm_status(int32_t maapi_socket, int32_t cdb_socket, int32_t thandle, int entry, uint32_t as)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Will create bgp administrative-status");
    confd::Value temp;
    if (cdb_get(cdb_socket, &temp, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntAdminStatus", entry) !=
        CONFD_OK) {
        nzmw_log_debug(log, "Failed to get bgpRmEntAdminStatus, err: %s", confd_lasterr());
        return 0;
    }
    if (transaction.set(&temp, "/router/bgp{%u}/administrative-status", as) != CONFD_OK) {
        BGP_REQUIRE_TYPE(134, &temp, C_ENUM_VALUE);
        nzmw_log_debug(log, "Failed to configure administrative-status: %d, err: %s", CONFD_GET_ENUM_VALUE(&temp),
                       confd_lasterr());
        return -1;
    }
    return 0;
}

static int32_t create_bgp_local_preference(int32_t maapi_socket, int32_t cdb_socket, int32_t thandle, int entry,
                                           uint32_t as)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Will create bgp local-preference");
    confd::Value temp;
    if (cdb_get(cdb_socket, &temp, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntDefLocalPref", entry) !=
        CONFD_OK) {
        nzmw_log_debug(log, "Failed to get bgpRmEntDefLocalPref, err: %s", confd_lasterr());
        return 0;
    }
    if (transaction.set(&temp, "/router/bgp{%u}/bgp/default-local-preference", as) != CONFD_OK) {
        BGP_REQUIRE_TYPE(168, &temp, C_UINT32);
        nzmw_log_debug(log, "Failed to configure default-local-preference: %u, err: %s", CONFD_GET_UINT32(&temp),
                       confd_lasterr());
        return -1;
    }
    return 0;
}

static int32_t create_bgp_cluster_id(int32_t maapi_socket, int32_t cdb_socket, int32_t thandle, int entry, uint32_t as)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Will create bgp cluster-id");
    confd::Value val_cluster_id;
    char printed[kPrintedSize];
    if (read_dotted_address(cdb_socket, &val_cluster_id, printed,
                            "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntClusterId", entry) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to get bgpRmEntClusterId, err: %s", confd_lasterr());
        return 0;
    }
    BGP_REQUIRE_TYPE(203, &val_cluster_id, C_BUF);
    if (transaction.set_text(CONFD_GET_CBUFPTR(&val_cluster_id), "/router/bgp{%u}/bgp/cluster-id", as) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to configure bgp cluster-id: %s, err: %s", printed, confd_lasterr());
        return -1;
    }
    return 0;
}

extern "C" int32_t update_router_bgp(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, int entry)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Starting BGP router update\n");
    cdb_set_namespace(cdb_socket, tag::kBgpMibNamespace);
    confd::Value temp;
    if (cdb_get(cdb_socket, &temp, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntLocalAs", entry) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to read as-number  err: %s", confd_lasterr());
    } else {
        BGP_REQUIRE_TYPE(230, &temp, C_UINT32);
        const uint32_t as = CONFD_GET_UINT32(&temp);
        if (cdb_exists(cdb_socket, "/router/bgp{%u}", as) == 1) {
            nzmw_log_debug(log, "Router BGP high-level already exists  err:%s", confd_lasterr());
        } else if (transaction.create("/router/bgp{%u}", as) != CONFD_OK) {
            nzmw_log_debug(log, "Failed to configure router bgp: %u, err: %s", as, confd_lasterr());
            return -1;
        } else {
            nzmw_log_debug(log, "Router BGP as-number: %u created", as);
            create_bgp_router_id(maapi_socket, cdb_socket, thandle, entry, as);
            create_bgp_as_size(maapi_socket, cdb_socket, thandle, entry, as);
            create_bgp_adm_status(maapi_socket, cdb_socket, thandle, entry, as);
            create_bgp_local_preference(maapi_socket, cdb_socket, thandle, entry, as);
            create_bgp_cluster_id(maapi_socket, cdb_socket, thandle, entry, as);
        }
    }
    nzmw_log_debug(log, "Finishing BGP router update\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
