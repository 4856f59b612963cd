// Adds the IPv4 VPN address family to the first BGP router entity and, disabled, to its peers, on devices without an
// MPLS-VPN entity; and removes that entity's dead join with the BVM.
#include "bgp_update/l3vpn.h"

#include <optional>
#include <string>

#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "config_update/stored_rows.h"
#include "nz_address.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_l3vpn";
constexpr uint32_t kMplsVpnEntity = 1;
constexpr uint32_t kBvmPartner = 3;

}  // namespace

// Adds the disabled address family to one peer, for the function whose signature is given.
static void create_peer_vpn_family(const confd::Transaction& transaction, nzmw_log_t* log, uint32_t entity,
                                   confd_value_t* peer, const char* signature)
{
    confd::Value temp;  // the peer's address, for the line of a failure
    HexlistTOipv4str(&peer[bgpPeerRemoteAddr], &temp);
    const std::string path =
        peer_family_path("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{%*x ipv4 mplsBgpVpn}", peer, log);
    if (path.empty()) {
        return;
    }
    nzmw_log_debug(log, "Will create %s", path.c_str());
    if (transaction.create("%s", path.c_str()) != CONFD_OK) {
        BGP_REQUIRE_TYPE_FOR(signature, __LINE__, &temp, C_BUF);
        nzmw_log_debug(
            log,
            "Failed to create BGP Peer AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: %u, peer address %s err: %s",
            entity, CONFD_GET_CBUFPTR(&temp), confd_lasterr());
        return;
    }
    disable_peer_family(transaction, log, path.c_str());
}

static int32_t update_peer_afi_safi(int32_t cdb_socket, int32_t maapi_socket, int32_t thandle, uint32_t entity)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    EntityPeers peers(entity, cdb_socket, log, BGP_HERE);
    while (confd_value_t* const peer = peers.next()) {
        create_peer_vpn_family(transaction, log, entity, peer, __PRETTY_FUNCTION__);
    }
    return 0;
}

int32_t update_l3vpn(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Update BGP AfiSafi L3VPN\n");
    bool create = true;
    if (cdb_exists(cdb_socket, "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{%u}", kMplsVpnEntity) == 1) {
        confd::Value temp;
        if (cdb_get(cdb_socket, &temp, "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{%u}/mplsVpnUseBgpRouting",
                    kMplsVpnEntity) != CONFD_OK) {
            nzmw_log_debug(log, "Failed to read mplsVpnUseBgpRouting, err: %s\n", confd_lasterr());
            return 0;
        }
        BGP_REQUIRE_TYPE(__LINE__, &temp, C_ENUM_VALUE);
        // Without BGP routing too the family is not added: it is for devices without an MPLS-VPN entity alone.
        create = false;
        if (CONFD_GET_ENUM_VALUE(&temp) != mib::kFalse) {
            nzmw_log_debug(log, "No need to update VpnEntry");
            return 0;
        }
    }
    const std::optional<uint32_t> entity = entity_index(cdb_socket, log, BGP_HERE);
    if (!entity) {
        return 0;
    }
    nzmw_log_debug(log, "The config will be upgraded for BGP entity: %u", *entity);
    if (create) {
        nzmw_log_debug(log, "Will create /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{%u ipv4 mplsBgpVpn}", *entity);
        if (transaction.create("/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{%u ipv4 mplsBgpVpn}", *entity) !=
            CONFD_OK) {
            nzmw_log_debug(log, "Failed to create BGP RM AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: %u, err: %s",
                           *entity, confd_lasterr());
        }
        update_peer_afi_safi(cdb_socket, maapi_socket, thandle, *entity);
    }
    nzmw_log_debug(log, "Finishing BGP AfiSafi L3VPN\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)

int32_t update_bgp_bvm_join(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, int bgp_count)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Starting BGP and BVM join update\n");
    if (bgp_count == 0) {
        nzmw_log_debug(log, "No need to update BGP and BVM join update\n");
        return 0;
    }
    const std::optional<uint32_t> entity = entity_index(cdb_socket, log, BGP_HERE);
    if (!entity) {
        return 0;
    }
    nzmw_log_debug(log, "The config will be upgraded for BGP entity: %u", *entity);
    int32_t status = 0;
    if (cdb_get_enum_value(cdb_socket, &status,
                           "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmAdminStatus", *entity,
                           kBvmPartner) == CONFD_OK &&
        status == mib::kDown) {
        nzmw_log_debug(log, "Remove %s{%u %u}.\n", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry", *entity,
                       kBvmPartner);
        transaction.remove("/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}", *entity, kBvmPartner);
    }
    nzmw_log_debug(log, "Finishing BGP and BVM join update\n");
    return 0;
}
