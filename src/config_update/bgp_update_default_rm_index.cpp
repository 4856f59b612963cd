// Re-keys the global BGP instance: every row of the tables below moves from the router entity's old index to the base
// component of the global VRF, each in the way of its class, and the maps between AS numbers and instances are made.
// Does nothing when the stored configuration has an instance index for the local AS already.
#include "bgp_update/rm_index.h"

#include <memory>
#include <utility>
#include <vector>

#include "bgp_update/rm_index_entries.h"
#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_cdb.h"
#include "libvrfid.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_default_rm_index";

using Entries = std::vector<std::shared_ptr<BaseEntry>>;

template <typename Entry>
std::shared_ptr<BaseEntry> make(const confd::Transaction& transaction, const char* path, confd::Cursor& row)
{
    return std::make_shared<Entry>(transaction.maapi_socket, transaction.thandle, path, row.keys(), row.n());
}

struct Table {
    const char* path;
    std::shared_ptr<BaseEntry> (*make_entry)(const confd::Transaction&, const char* path, confd::Cursor& row);
};

constexpr Table kTables[] = {
    {"/redist-protocol", make<RtmRedistProtocolHiddenEntry>},
    {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-set", make<BaseEntry>},
    {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-get", make<BaseEntry>},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry", make<BaseEntry>},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-get", make<BaseEntry>},
    {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-set", make<BaseEntry>},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry", make<BaseEntry>},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-get", make<BaseEntry>},
    {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-set", make<BaseEntry>},
    {"/internal/bgpPeerEntry-global", make<BgpPeerEntryGlobalHiddenEntry>},
    {"/internal/bgpPeerEntry-prefix-list-hidden", make<BaseEntry>},
    {"/internal/match-ip-list-hidden", make<BaseEntry>},
    {"/internal/neighbor-valid-hidden", make<BaseEntry>},
    {"/internal/route-policy-valid-hidden", make<BaseEntry>},
    {"/internal/router-afi-safi-hidden", make<BaseEntry>},
    {"/internal/neighbor-afi-safi-hidden", make<BaseEntry>},
    {"/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", make<BaseEntry>},
    {"/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry", make<BaseEntry>},
    {"/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", make<BgpPeerEntry>},
    {"/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", make<BaseEntry>},
    {"/DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry", make<BaseEntry>},
    {"/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", make<BaseEntry>},
    {"/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry", make<BaseEntry>},
    {"/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry", make<BaseEntry>},
    {"/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry", make<BgpNmEntityEntry>},
    {"/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry", make<BgpNmListenEntry>},
    {"/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry", make<RtmRedistEntry>},
    {"/DC-RTM-MIB/rtmMjTable/rtmMjEntry", make<RtmMjEntry>},
};

// All rows are found before the first of them moves: a moved row may come to stand where the cursor has yet to go.
Entries entries_of(const confd::Transaction& transaction, const Table& table, nzmw_log_t* log)
{
    Entries entries;
    confd::Cursor rows = transaction.cursor(table.path);
    while (rows.next()) {
        std::shared_ptr<BaseEntry> entry = table.make_entry(transaction, table.path, rows);
        nzmw_log_debug(log, "Processing path: %s\n", entry->entry_path().c_str());
        entries.push_back(std::move(entry));
    }
    return entries;
}

}  // namespace

static int32_t update_bgp_tables_rm_index(const confd::Transaction& transaction, uint32_t rm_index)
{
    nzmw_log_t* log = get_conf_updt_log_handle();

    nzmw_log_debug(log, "Updating BGP RM index on BGP tables\n");
    for (const Table& table : kTables) {
        nzmw_log_debug(log, "Updating table %s\n", table.path);
        const int new_index = static_cast<int>(libvrfid::VrfId::ComponentFromVrf(mib::kGlobalVrf));
        for (std::shared_ptr<BaseEntry>& entry : entries_of(transaction, table, log)) {
            entry->MoveEntry(rm_index, new_index);
            entry.reset();  // a big table's entries make room for its moved rows
        }
        nzmw_log_debug(log, "Finish updating table\n");
    }
    nzmw_log_debug(log, "Finish updating BGP RM index on BGP tables\n");
    return 0;
}

int32_t update_rm_index(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, uint32_t rm_index)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();

    nzmw_log_debug(log, "Starting BGP RM index update\n");
    nzmw_log_debug(log, "BGP entry entity index: %u", rm_index);
    confd::Value temp;
    if (cdb_get(cdb_socket, &temp, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntLocalAs", 0) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to get local as number, err: %s\n", confd_lasterr());
        return 0;
    }
    BGP_REQUIRE_TYPE(__LINE__, &temp, C_UINT32);
    const uint32_t local_as = CONFD_GET_UINT32(&temp);
    if (cdb_exists(cdb_socket, "/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}", mib::kGlobalVrf, local_as) == 1) {
        nzmw_log_debug(log, "No need to update rm index!\n");
        return 0;
    }
    nzmw_log_debug(log, "BGP internal map not found (err: %s), upgrading config...\n", confd_lasterr());
    const uint32_t component = libvrfid::VrfId::ComponentFromVrf(mib::kGlobalVrf);
    // Deliberately for the maps alone: the rows move to the component itself, whatever their index was.
    const uint32_t map_index = rm_index == component ? rm_index + 1 : component;
    nzmw_log_debug(log, "Adjusting BGP Global RM index from %u to %u!\n", rm_index, map_index);
    update_bgp_tables_rm_index({maapi_socket, thandle}, rm_index);
    update_as_to_idx_map(maapi_socket, thandle, cdb_socket, local_as, map_index);
    nzmw_log_debug(log, "Finishing BGP RM index update\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
