#include "config_update/stored_rows.h"

#include <algorithm>

#include "confd/mib_values.h"

std::optional<uint32_t> entity_index(int32_t cdb_socket, nzmw_log_t* log, const confd::Place& here)
{
    constexpr int kEntry = 0;
    confd::Value temp;
    if (cdb_get(cdb_socket, &temp, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntIndex", kEntry) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to read entity index BGP entry: %d, err: %s", kEntry, confd_lasterr());
        return std::nullopt;
    }
    BGP_REQUIRE_TYPE_AT(here, &temp, C_UINT32);
    return CONFD_GET_UINT32(&temp);
}

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

EntityPeers::EntityPeers(uint32_t entity, int32_t cdb_socket, nzmw_log_t* log, const confd::Place& here)
    : entity_(entity), log_(log), here_(here), peers_(RowBatch::peers(cdb_socket, log))
{
}

confd_value_t* EntityPeers::next()
{
    confd_value_t* const peer_entries = peers_.values();
    while (next_ < peers_.rows()) {
        const int ipeer = next_++;
        nzmw_log_debug(log_, "Handling BGP peer entry : %d", ipeer);
        BGP_REQUIRE_TYPE_AT(here_, &peer_entries[ipeer * bgpPeerLast + bgpPeerRmEntIndex], C_UINT32);
        confd_value_t* const peer = &peer_entries[ipeer * bgpPeerLast];
        const uint32_t owner = CONFD_GET_UINT32(&peer[bgpPeerRmEntIndex]);
        if (owner == entity_) {
            return peer;
        }
        nzmw_log_debug(log_, "Peer entity index (%u) differs from router entity index (%u)", owner, entity_);
    }
    return nullptr;
}

std::string peer_family_path(const char* format, confd_value_t* peer, nzmw_log_t* log)
{
    constexpr int kPathSize = 512;
    char path[kPathSize];
    if (confd_format_keypath(path, kPathSize, format, bgpPeerLast, peer) <= 0) {
        nzmw_log_debug(log, "Failed to format path for entry BGP Peer AFI/SAFI %s, err: %s",
                       "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", confd_lasterr());
        return {};
    }
    return path;
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
