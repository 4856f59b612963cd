// What the address-family steps share: all rows of a stored table, the first values of each, read in one call, and what is
// done to a peer whichever family it is about.
#pragma once

#include <cstdint>

#include "confd/transaction.h"
#include "confd/value.h"
#include "confd_cdb.h"
#include "nzmw_log.h"

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

// Whether a peer belongs to a router entity; logged when it does not.
bool peer_belongs(uint32_t peer_entity, uint32_t entity, nzmw_log_t* log);

// Marks a peer's address family, given by the path of its row, as disabled. A failure is logged.
void disable_peer_family(const confd::Transaction& transaction, nzmw_log_t* log, const char* path);
