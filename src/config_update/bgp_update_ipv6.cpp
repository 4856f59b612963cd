// Switches IPv6 unicast on for the first BGP router entity: its support flag, its address family, joins and listening
// socket, the disable flag of the family for its peers and the IPv6 defaults of its route maps. When the entity's index
// cannot be read or the flag cannot be set, nothing (else) is written.
#include "bgp_update/ipv6.h"

#include <optional>
#include <string>

#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/tags.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "config_update/stored_rows.h"
#include "libvrfid.h"
#include "nz_address.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_ipv6";
constexpr int kEntry = 0;  // the router entity, by its position
constexpr uint32_t kNoBfdEntity = 0;
constexpr int kPathSize = 512;
constexpr int kPrintedSize = 8192;  // of a value printed for the log

}  // namespace

// The hidden row that tells of IPv4 unicast, and only with it the row of IPv6 unicast.
static void create_router_families(const confd::Transaction& transaction, nzmw_log_t* log, uint32_t entity)
{
    nzmw_log_debug(log, "Will create /internal/router-afi-safi-hidden{%u ipv4 unicast}", entity);
    if (transaction.create("/internal/router-afi-safi-hidden{%u ipv4 unicast}", entity) != CONFD_OK) {
        nzmw_log_debug(
            log, "Failed to create BGP RM AFI/SAFI ipv4 unicast internal hidden entry for BGP entity id: %u, err: %s",
            entity, confd_lasterr());
        return;
    }
    nzmw_log_debug(log, "Will create /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{%u ipv6 unicast}", entity);
    if (transaction.create("/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{%u ipv6 unicast}", entity) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to create BGP RM AFI/SAFI ipv6 unicast entry for BGP entity id: %u, err: %s",
                       entity, confd_lasterr());
    }
}

static int32_t update_bgp_rm_afm_join(int32_t maapi_socket, int32_t thandle, uint32_t entity, uint32_t partner)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Will create /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}", entity, partner);
    if (transaction.create("/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}", entity, partner) != CONFD_OK) {
        nzmw_log_debug(log,
                       "Failed to create BGP RM AFM JOIN ipv6 entry for BGP entity id: %u, partner idx: %u, err: %s",
                       entity, partner, confd_lasterr());
        return 0;
    }
    confd_value_t temp;
    CONFD_SET_UINT32(&temp, partner);
    nzmw_log_debug(log, "Will set /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmPartnerIndex", entity,
                   partner);
    if (transaction.set(&temp, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmPartnerIndex", entity,
                        partner) != CONFD_OK) {
        BGP_REQUIRE_TYPE(__LINE__, &temp, C_UINT32);
        nzmw_log_debug(log,
                       "Failed to set val %u to bgpRmAfmPartnerIndex in entry BGP entity id: %u, partner idx: %u, %s",
                       CONFD_GET_UINT32(&temp), entity, partner, confd_lasterr());
    }
    CONFD_SET_ENUM_VALUE(&temp, mib::kIpv6);
    nzmw_log_debug(log, "Will set /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmAfi", entity, partner);
    if (transaction.set(&temp, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmAfi", entity, partner) !=
        CONFD_OK) {
        BGP_REQUIRE_TYPE(__LINE__, &temp, C_ENUM_VALUE);
        // The text names the partner index, though it is the address family that failed: known by that text, it stays.
        nzmw_log_debug(
            log, "Failed to set val %u to bgpRmAfmPartnerIndex in entry BGP entity id: %u, partner idx: %u, err: %s",
            static_cast<uint32_t>(CONFD_GET_ENUM_VALUE(&temp)), entity, partner, confd_lasterr());
    }
    return 0;
}

static void set_bfd_entity(const confd::Transaction& transaction, nzmw_log_t* log, uint32_t entity)
{
    nzmw_log_debug(log, "Will set /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{%u}/bgpNmEntBfdEntityIndex", entity);
    if (transaction.exists("/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{%u}", entity) != 1) {
        nzmw_log_debug(log, "Path /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{%u} does not exist! Err: %s", entity,
                       confd_lasterr());
        return;
    }
    confd_value_t none;
    CONFD_SET_UINT32(&none, kNoBfdEntity);
    if (transaction.set(&none, "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{%u}/bgpNmEntBfdEntityIndex", entity) !=
        CONFD_OK) {
        nzmw_log_debug(log, "Failed to set val %u to bgpNmEntBfdEntityIndex in entry BGP NM entity id: %u, err: %s",
                       kNoBfdEntity, entity, confd_lasterr());
    }
}

// The socket listens on any IPv6 address.
static void set_listen_address(const confd::Transaction& transaction, nzmw_log_t* log, uint32_t entity, uint32_t listen)
{
    nzmw_log_debug(log, "Will set /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}/bgpNmListenAddr", entity,
                   listen);
    confd::Value address;
    Ipv6strTOhexlist(&address, "0000:0000:0000:0000:0000:0000:0000:0000");
    char printed[kPrintedSize] = {};
    confd_pp_value(printed, kPrintedSize, &address);
    nzmw_log_debug(log, "Will set val %s to /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}/bgpNmListenAddr",
                   printed, entity, listen);
    if (transaction.set(&address, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}/bgpNmListenAddr", entity,
                        listen) != CONFD_OK) {
        // Here too the text names another leaf, and stays.
        nzmw_log_debug(
            log, "Failed to set val %s to bgpRmAfmPartnerIndex in entry NM entity id: %u, NM Listen idx: %u, err: %s",
            printed, entity, listen, confd_lasterr());
    }
}

static int32_t update_bgp_nm(int32_t maapi_socket, int32_t thandle, uint32_t entity, uint32_t listen)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    set_bfd_entity(transaction, log, entity);
    nzmw_log_debug(log, "Will create /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}", entity, listen);
    if (transaction.create("/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}", entity, listen) != CONFD_OK) {
        nzmw_log_debug(log,
                       "Failed to create BGP NM LISTEN ipv6 entry for BGP NM entity id: %u, NM Listen idx: %u, err: %s",
                       entity, listen, confd_lasterr());
        return -1;
    }
    confd_value_t temp;
    CONFD_SET_ENUM_VALUE(&temp, mib::kUp);
    nzmw_log_debug(log, "Will set /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}/bgpNmListenAdminStatus", entity,
                   listen);
    if (transaction.set(&temp, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}/bgpNmListenAdminStatus", entity,
                        listen) != CONFD_OK) {
        BGP_REQUIRE_TYPE(__LINE__, &temp, C_ENUM_VALUE);
        nzmw_log_debug(
            log,
            "Failed to set val %d to bgpNmListenAdminStatus in entry BGP NM entity id: %u, NM Listen idx: %u, "
            "err: %s",
            CONFD_GET_ENUM_VALUE(&temp), entity, listen, confd_lasterr());
    }
    CONFD_SET_ENUM_VALUE(&temp, mib::kIpv6);
    nzmw_log_debug(log, "Will set /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}/bgpNmListenAddrType", entity,
                   listen);
    if (transaction.set(&temp, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{%u %u}/bgpNmListenAddrType", entity,
                        listen) != CONFD_OK) {
        BGP_REQUIRE_TYPE(__LINE__, &temp, C_ENUM_VALUE);
        nzmw_log_debug(
            log, "Failed to set val %u to bgpNmListenAddrType in entry NM entity id: %u, NM Listen idx: %u, err: %s",
            static_cast<uint32_t>(CONFD_GET_ENUM_VALUE(&temp)), entity, listen, confd_lasterr());
    }
    set_listen_address(transaction, log, entity, listen);
    return 0;
}

static int32_t update_rtm_join_table(int32_t maapi_socket, int32_t thandle, uint32_t entity, uint32_t partner)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Will create /DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}", partner, entity);
    if (transaction.create("/DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}", partner, entity) != CONFD_OK) {
        // The partner stands where the text says entity, and the other way round: the order is kept.
        nzmw_log_debug(
            log, "Failed to create RTM JOIN ipv6 ariPrtnrBgp entry for BGP entity id: %u, partner idx: %u, err: %s",
            partner, entity, confd_lasterr());
        return 0;
    }
    confd_value_t temp;
    CONFD_SET_ENUM_VALUE(&temp, mib::kUnicast);
    nzmw_log_debug(log, "Will set /DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}/rtmMjSafi", partner, entity);
    if (transaction.set(&temp, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}/rtmMjSafi", partner, entity) !=
        CONFD_OK) {
        BGP_REQUIRE_TYPE(__LINE__, &temp, C_ENUM_VALUE);
        nzmw_log_debug(
            log, "Failed to set val %d to rtmMjSafi in entry RTM JOIN BGP entity id: %u, partner idx: %u, err: %s",
            CONFD_GET_ENUM_VALUE(&temp), entity, entity + 1, confd_lasterr());
    }
    return 0;
}

static int32_t update_peer_afi_safi(int32_t cdb_socket, int32_t maapi_socket, int32_t thandle, uint32_t entity)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    EntityPeers peers(entity, cdb_socket, log, BGP_HERE);
    while (confd_value_t* const peer = peers.next()) {
        confd::Value temp;
        HexlistTOipv4str(&peer[bgpPeerRemoteAddr], &temp);
        BGP_REQUIRE_TYPE(__LINE__, &temp, C_BUF);
        const char* const address = CONFD_GET_CBUFPTR(&temp);
        nzmw_log_debug(log, "Will create /internal/neighbor-afi-safi-hidden{%u %s ipv4 unicast}", entity, address);
        if (transaction.create("/internal/neighbor-afi-safi-hidden{%u %s ipv4 unicast}", entity, address) != CONFD_OK) {
            nzmw_log_debug(
                log,
                "Failed to create BGP Peer AFI/SAFI ipv4 unicast internal hidden entry for BGP entity id: %u, "
                "peer address %s err: %s",
                entity, address, confd_lasterr());
            continue;
        }
        const std::string path =
            peer_family_path("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{%*x ipv6 unicast}", peer, log);
        if (!path.empty()) {
            disable_peer_family(transaction, log, path.c_str());
        }
    }
    return 0;
}

// Sets the IPv6 defaults of one route map.
static void set_route_map_defaults(const confd::Transaction& transaction, nzmw_log_t* log, confd_value_t* route_map)
{
    char path[kPathSize];
    if (confd_format_keypath(path, kPathSize, "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{%*x}", bgpRouteMapLast,
                             route_map) <= 0) {
        nzmw_log_debug(log, "Failed to format path for entry BGP RouteMap %s, err: %s",
                       "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", confd_lasterr());
        return;
    }
    confd_value_t family;
    CONFD_SET_ENUM_VALUE(&family, mib::kIpv6);
    nzmw_log_debug(log, "Will set %s/bgpRouteMapMaAfiDef", path);
    if (transaction.set(&family, "%s/bgpRouteMapMaAfiDef", path) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to set val %d to bgpRouteMapMaAfiDef in entry BGP RouteMap %s, err: %s", mib::kIpv6,
                       path, confd_lasterr());
    }
    // The address family's number again, on purpose: devices have been upgraded with it.
    nzmw_log_debug(log, "Will set %s/bgpRouteMapMaSafiDef", path);
    if (transaction.set(&family, "%s/bgpRouteMapMaSafiDef", path) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to set val %d to bgpRouteMapMaSafiDef in entry BGP RouteMap %s, err: %s",
                       mib::kIpv6, path, confd_lasterr());
    }
}

static int32_t update_route_map(int32_t cdb_socket, int32_t maapi_socket, int32_t thandle, uint32_t entity)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    RowBatch route_maps = RowBatch::route_maps(cdb_socket, log);
    confd_value_t* const rmap_entries = route_maps.values();
    for (int irmap = 0; irmap < route_maps.rows(); ++irmap) {
        nzmw_log_debug(log, "Handling BGP RouteMap entry : %d", irmap);
        BGP_REQUIRE_TYPE(__LINE__, &rmap_entries[irmap * bgpRouteMapLast + bgpRouteMapRmEntIndex], C_UINT32);
        confd_value_t* const route_map = &rmap_entries[irmap * bgpRouteMapLast];
        const uint32_t owner = CONFD_GET_UINT32(&route_map[bgpRouteMapRmEntIndex]);
        if (owner != entity) {
            nzmw_log_debug(log, "RouteMap entity index (%u) differs from router entity index (%u)", owner, entity);
            continue;
        }
        set_route_map_defaults(transaction, log, route_map);
    }
    return 0;
}

// Says that the entity supports IPv6. False after a failure, which is logged.
static bool set_support_flag(const confd::Transaction& transaction, nzmw_log_t* log, uint32_t entity)
{
    nzmw_log_debug(log, "Will set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}/bgpRmEntSupportIpv6 to true", entity);
    confd_value_t supported;
    CONFD_SET_ENUM_VALUE(&supported, mib::kTrue);
    if (transaction.set(&supported, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}/bgpRmEntSupportIpv6", entity) !=
        CONFD_OK) {
        nzmw_log_debug(log, "Failed to enable IPv6 for BGP entity id: %u, err: %s", entity, confd_lasterr());
        return false;
    }
    return true;
}

int32_t update_ipv6(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Update BGP Ipv6\n");
    if (const std::optional<uint32_t> read = entity_index(cdb_socket, log, BGP_HERE)) {
        const uint32_t entity = *read;
        nzmw_log_debug(log, "Will upgrade config for for BGP entry %d", kEntry);
        nzmw_log_debug(log, "BGP entry %d entity index: %u", kEntry, entity);
        maapi_set_namespace(maapi_socket, thandle, tag::kBgpMibNamespace);
        if (set_support_flag(transaction, log, entity)) {
            const uint32_t partner = libvrfid::VrfId::ComponentFromVrf(mib::kGlobalVrf) + 1;
            create_router_families(transaction, log, entity);
            update_bgp_rm_afm_join(maapi_socket, thandle, entity, partner);
            update_bgp_nm(maapi_socket, thandle, entity, entity + 1);
            update_rtm_join_table(maapi_socket, thandle, entity, partner);
            update_peer_afi_safi(cdb_socket, maapi_socket, thandle, entity);
            update_route_map(cdb_socket, maapi_socket, thandle, entity);
        }
    }
    nzmw_log_debug(log, "Finishing BGP Ipv6 update\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
