// What the address-family steps share: the router entity that they work on, the rows of a stored table, read in one call
// with the first values of each, and what is done to a peer whichever family it is about.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_cdb.h"
#include "nzmw_log.h"

// The index of the stored configuration's first router entity, for the function in which `here` is. None when it cannot
// be read, which is logged.
std::optional<uint32_t> entity_index(int32_t cdb_socket, nzmw_log_t* log, const confd::Place& here);

// Positions in a row of "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", and how many values are read: its key.
enum PeerPosition { bgpPeerRmEntIndex = 0, bgpPeerRemoteAddr = 5, bgpPeerLast = 8 };

// The same of "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry".
enum RouteMapPosition { bgpRouteMapRmEntIndex = 0, bgpRouteMapLast = 3 };

class RowBatch {
public:
    // The stored peers, and the stored route maps. No rows when there are none or when they cannot be read, which is
    // logged.
    static RowBatch peers(int32_t cdb_socket, nzmw_log_t* log);
    static RowBatch route_maps(int32_t cdb_socket, nzmw_log_t* log);

    int rows() const { return rows_; }
    confd_value_t* values() { return values_.values(); }  // row after row

private:
    struct Table;
    RowBatch(const Table& table, int32_t cdb_socket, nzmw_log_t* log);

    int rows_;
    confd::ValueArray values_;
};

// A walk over the stored peers of a router entity, for the function in which `here` is. Those of another entity are
// logged and left out.
class EntityPeers {
public:
    EntityPeers(uint32_t entity, int32_t cdb_socket, nzmw_log_t* log, const confd::Place& here);

    // The values of the next one's key; null behind the last.
    confd_value_t* next();

private:
    uint32_t entity_;
    nzmw_log_t* log_;
    confd::Place here_;
    RowBatch peers_;
    int next_ = 0;
};

// The path of a peer's row in the table of address families. `format` is the whole path and takes the peer's key. Empty
// when it cannot be formatted, which is logged.
std::string peer_family_path(const char* format, confd_value_t* peer, nzmw_log_t* log);

// Marks a peer's address family, given by the path of its row, as disabled. A failure is logged.
void disable_peer_family(const confd::Transaction& transaction, nzmw_log_t* log, const char* path);
