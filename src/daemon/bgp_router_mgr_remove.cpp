// Removes a BGP instance from the routing stack's tables: the rows keyed by its entity index, its redistribution rules
// and networks, its joins to the RTM, and the entity. Most failures are passed over: the caller's transaction decides.
#include <cstring>

#include "bgp_update/bgp_router_mgr.h"
#include "bgp_update/bgp_utils.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_dp.h"
#include "libvrfid.h"
#include "nz_address.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_router_mgr";
constexpr char kRedistTable[] = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
constexpr char kRedistNetworks[] = "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get";
constexpr double kTransactionSeconds = 30.0;
constexpr std::size_t kKeypathSize = 512;
constexpr uint32_t kFirstNetworkIndex = 0x2119C851;  // of the range from which networks take their rule numbers
constexpr uint32_t kFirstInstance = 1;               // the instance that VPN routes belong to

void keep_alive(confd_trans_ctx* tctx)
{
    BgpUtils::SetMaapiKeepalive(tctx, kTransactionSeconds);
}

// A network's prefix as the text by which the hidden "set" table knows it.
void prefix_text(confd_value_t* prefix, int32_t address_type, confd_value_t* text)
{
    confd_value_t address;
    if (address_type == mib::kIpv4) {
        in_addr ipv4{};
        HexlistTOipv4InAddr(prefix, &ipv4);
        CONFD_SET_IPV4(&address, ipv4);
        Ipv4TOhexliststr(text, &address);
    } else {
        in6_addr ipv6{};
        HexlistTOipv6In6Addr(prefix, &ipv6);
        CONFD_SET_IPV6(&address, ipv6);
        Ipv6TOhexliststr(text, &address);
    }
}

// Whether a redistribution rule sends routes to BGP, and to which protocol index. False too when that cannot be read.
bool read_bgp_target(const confd::Transaction& transaction, confd_value_t* keys, uint32_t* protocol_index)
{
    int32_t destination = 0;
    return transaction.get_enum_value(&destination, "%s{%x %x}/rtmRedistInfoDest", kRedistTable, &keys[0], &keys[1]) ==
               CONFD_OK &&
           destination == mib::kRedistIntoBgp &&
           transaction.get_u_int32(protocol_index, "/redist-protocol{%x %x}/protocol-index", &keys[0], &keys[1]) ==
               CONFD_OK;
}

// Deletes a row of the instance with what hangs on it, or tells of a row of the next index. False for any other index,
// which ends the walk.
bool remove_row(BgpRouterMgr& manager, int maapi_socket, confd_trans_ctx* tctx, uint32_t index, const char* table,
                maapi_cursor& row)
{
    const confd::Transaction transaction{maapi_socket, tctx->thandle};
    const uint32_t entity = CONFD_GET_UINT32(&row.keys[0]);
    if (entity == index && std::strcmp(table, kRedistNetworks) == 0) {
        manager.RemoveRedistNetwork(maapi_socket, tctx, index, &row);
    } else if (entity == index) {
        transaction.remove("%s{%*x}", table, row.n, row.keys);
    } else if (entity == index + 1) {
        char entry[kKeypathSize];
        confd_format_keypath(entry, sizeof entry, "%s{%*x}", table, row.n, row.keys);
        manager.LogDebug("the table entry %s does not belong to this BGP instance!", entry);
    } else {
        return false;
    }
    return true;
}

// The joins of the instance's RTM entities with BGP.
void remove_rtm_joins(const confd::Transaction& transaction, uint32_t index)
{
    const uint32_t component = libvrfid::VrfId::ComponentFromVrf(libvrfid::VrfId::VrfFromComponent(index));
    transaction.remove("/DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}", component, index);
    transaction.remove("/DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}", component + 1, index);
}

}  // namespace

int BgpRouterMgr::Remove(int maapi_socket, confd_trans_ctx* tctx, uint32_t index, uint32_t /*unused*/,
                         const char** tables, const char** secondary_tables)
try {
    LogDebug("Calling %s for %u", "Remove", index);
    if (tctx == nullptr || tables == nullptr) {
        confd::fault("Remove", kSource, __LINE__, "");
    }
    const confd::Transaction transaction{maapi_socket, tctx->thandle};

    for (const char** table = tables; *table != nullptr; ++table) {
        LogDebug("Removing table %s", *table);
        if (std::strcmp(*table, kRedistTable) == 0) {
            RemoveRedistEntry(maapi_socket, tctx, index);
            continue;
        }
        // Rows come ordered by the entity index, those of this instance first. Rows of the next index are told of and
        // passed over, deliberately: that line is part of the daemon's log. Any greater index ends the walk.
        confd::Cursor rows = transaction.cursor("%s", *table);
        maapi_cursor& vl_mc = rows.position();
        confd_value_t first_key;
        CONFD_SET_UINT32(&first_key, index);
        for (bool found = rows.find_next(CONFD_FIND_SAME_OR_NEXT, &first_key, 1); found; found = rows.next()) {
            BGP_REQUIRE_TYPE(__LINE__, &vl_mc.keys[0], C_UINT32);
            if (!remove_row(*this, maapi_socket, tctx, index, *table, vl_mc)) {
                break;
            }
            keep_alive(tctx);
        }
    }
    if (secondary_tables != nullptr) {
        RemoveSecondaryTables(maapi_socket, tctx, index, secondary_tables);
    }
    remove_rtm_joins(transaction, index);
    if (index == kFirstInstance) {
        ClearVpnRouteAddrType(maapi_socket, tctx);
    }
    keep_alive(tctx);
    transaction.remove("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}", index);
    keep_alive(tctx);
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)

int BgpRouterMgr::RemoveRedistEntry(int maapi_socket, confd_trans_ctx* tctx, uint32_t index)
{
    const confd::Transaction transaction{maapi_socket, tctx->thandle};

    LogDebug("Calling %s for %u", "RemoveRedistEntry", index);
    confd::Cursor rows = transaction.cursor(kRedistTable);
    while (rows.next()) {
        confd_value_t* keys = rows.keys();
        uint32_t protocol_index = 0;
        if (read_bgp_target(transaction, keys, &protocol_index)) {
            LogDebug("Got protocol index %u", protocol_index);
            if (protocol_index == index) {
                LogDebug("Will delete entry");
                transaction.remove("%s{%x %x}", kRedistTable, &keys[0], &keys[1]);
                transaction.remove("/redist-protocol{%x %x}", &keys[0], &keys[1]);
            }
        }
        keep_alive(tctx);
    }
    return 0;
}

int BgpRouterMgr::RemoveRedistNetwork(int maapi_socket, confd_trans_ctx* tctx, uint32_t index, maapi_cursor* cursor)
{
    const confd::Transaction transaction{maapi_socket, tctx->thandle};
    confd_value_t* keys = cursor->keys;

    LogDebug("Calling %s for %u", "RemoveRedistNetwork", index);
    int32_t address_type = 0;
    confd::Value prefix;
    uint32_t length = 0;
    transaction.get_enum_value(&address_type,
                               "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get{%*x}/rtmRedistAddrFilterType",
                               cursor->n, keys);
    transaction.get(&prefix, "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get{%*x}/rtmRedistAddrFilter", cursor->n,
                    keys);
    transaction.get_u_int32(&length, "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get{%*x}/rtmRedistAddrFilterLen",
                            cursor->n, keys);
    confd::Value text;
    prefix_text(&prefix, address_type, &text);

    if (transaction.remove("/internal/rtmRedistEntry-hidden/rtmRedistEntry-set{%x %x %s %u}", &keys[0], &keys[1],
                           CONFD_GET_CBUFPTR(&text), length) != CONFD_OK) {
        LogDebug("Failed to delete hidden set entry (err: %s)", confd_lasterr());
    }
    if (transaction.remove("/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{%x %x}", &keys[1], &keys[2]) != CONFD_OK) {
        LogDebug("Failed to delete redist entry (err: %s)", confd_lasterr());
    }
    LogDebug("Checking num hidden set instances...");
    if (transaction.num_instances("/internal/rtmRedistEntry-hidden/rtmRedistEntry-set") == 0) {
        LogDebug("Num instances 0, setting default index...");
        confd_value_t first_index;
        CONFD_SET_UINT32(&first_index, kFirstNetworkIndex);
        transaction.set(&first_index, "/internal/rtmRedistEntry-hidden/rtmRedistEntry_next_free_index");
    }
    transaction.remove("%s{%*x}", kRedistNetworks, cursor->n, keys);
    return 0;
}

int BgpRouterMgr::RemoveSecondaryTables(int maapi_socket, confd_trans_ctx* tctx, uint32_t index, const char** tables)
{
    LogDebug("Calling %s for %u", "RemoveSecondaryTables", index);
    if (tables == nullptr) {
        confd::fault("RemoveSecondaryTables", kSource, __LINE__, "");
    }
    const confd::Transaction transaction{maapi_socket, tctx->thandle};
    if (transaction.num_instances("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry") != 1) {
        return 0;
    }
    LogDebug("Deleting secondary tables");
    for (const char** table = tables; *table != nullptr; ++table) {
        LogDebug("Deleting table: %s", *table);
        if (transaction.remove("%s", *table) != CONFD_OK) {
            LogDebug("Deleting table %s failed (err %s)", *table, confd_lasterr());
        }
        keep_alive(tctx);
    }
    return 0;
}

void BgpRouterMgr::ClearVpnRouteAddrType(int maapi_socket, confd_trans_ctx* tctx)
{
    const confd::Transaction transaction{maapi_socket, tctx->thandle};

    LogDebug("Calling %s for %u", "ClearVpnRouteAddrType", kFirstInstance);
    if (transaction.exists("/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{%u}/mplsVpnVpnRouteAddrType",
                           kFirstInstance) != 1) {
        return;
    }
    confd::Value route_addr_type;
    transaction.get(&route_addr_type, "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{%u}/mplsVpnVpnRouteAddrType",
                    kFirstInstance);
    BGP_REQUIRE_TYPE(__LINE__, &route_addr_type, C_ENUM_VALUE);
    if (CONFD_GET_ENUM_VALUE(&route_addr_type) == mib::kIpv4) {
        return;
    }
    CONFD_SET_ENUM_VALUE(&route_addr_type, mib::kIpv4);
    transaction.set(&route_addr_type, "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{%u}/mplsVpnVpnRouteAddrType",
                    kFirstInstance);
}
