#include "config_update/stored_rows.h"

#include <algorithm>

#include "confd/mib_values.h"

struct RowBatch::Table {
    const char* path;
    int width;           // values of a row that are read
    const char* found;   // takes the number of rows
    const char* failed;  // takes the error
};

RowBatch::RowBatch(const Table& table, int32_t cdb_socket, nzmw_log_t* log)
    : rows_(cdb_num_instances(cdb_socket, table.path)),
      values_(static_cast<std::size_t>(std::max(rows_, 0)) * static_cast<std::size_t>(table.width))
{
    if (rows_ == 0) {
        return;
    }
    nzmw_log_debug(log, table.found, rows_);
    if (values_.read_objects(cdb_socket, table.width, 0, rows_, table.path) < table.width) {
        nzmw_log_debug(log, table.failed, confd_lasterr());
        rows_ = 0;
    }
}

RowBatch RowBatch::peers(int32_t cdb_socket, nzmw_log_t* log)
{
    static constexpr Table kPeers{"/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", bgpPeerLast, "Found %d BGP Peer entries",
                                  "Could not get peer entries, err: %s"};
    return {kPeers, cdb_socket, log};
}

RowBatch RowBatch::route_maps(int32_t cdb_socket, nzmw_log_t* log)
{
    static constexpr Table kRouteMaps{"/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", bgpRouteMapLast,
                                      "Found %d BGP RouteMap entries", "Could not get RouteMap entries, err: %s"};
    return {kRouteMaps, cdb_socket, log};
}

bool peer_belongs(uint32_t peer_entity, uint32_t entity, nzmw_log_t* log)
{
    if (peer_entity == entity) {
        return true;
    }
    nzmw_log_debug(log, "Peer entity index (%u) differs from router entity index (%u)", peer_entity, entity);
    return false;
}

void disable_peer_family(const confd::Transaction& transaction, nzmw_log_t* log, const char* path)
{
    confd_value_t disabled;
    CONFD_SET_ENUM_VALUE(&disabled, mib::kTrue);
    nzmw_log_debug(log, "Will set %s/bgpPeerAfiSafiDisable", path);
    if (transaction.set(&disabled, "%s/bgpPeerAfiSafiDisable", path) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to set val %d to bgpPeerAfiSafiDisable in entry BGP Peer AFI/SAFI %s, err: %s",
                       mib::kTrue, path, confd_lasterr());
    }
}
