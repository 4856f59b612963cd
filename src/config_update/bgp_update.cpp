// The upgrade's entry point: reads what decides which steps the stored BGP configuration needs, and runs them in their
// fixed order. With no BGP router entity, or several, only the closing steps run, each given the number of entities.
// Nothing is written here.
#include "bgp_update/update.h"

#include <cstdint>

#include "bgp_update/ipv6.h"
#include "bgp_update/l3vpn.h"
#include "bgp_update/neigh_config_afi_safi.h"
#include "bgp_update/neigh_config_drop_warn.h"
#include "bgp_update/prefix_list.h"
#include "bgp_update/rm_index.h"
#include "bgp_update/router_bgp.h"
#include "bgp_update/vrf.h"
#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/tags.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_cdb.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update";

}  // namespace

// Whether the entity says that it does not support IPv6.
static bool lacks_ipv6(int32_t cdb_socket, int entry, nzmw_log_t* log)
{
    int32_t supported = 0;
    if (cdb_get_enum_value(cdb_socket, &supported, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntSupportIpv6",
                           entry) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to read IPv6 enable flag for BGP entry: %d, err: %s", entry, confd_lasterr());
        return false;
    }
    nzmw_log_debug(log, "Read IPv6 flag %d for BGP entry %d", supported, entry);
    if (supported == mib::kFalse) {
        return true;
    }
    nzmw_log_debug(log, "IPv6 is already enabled for BGP entry : %d", entry);
    return false;
}

static int32_t update_bgp_pfx(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, int entry, nzmw_log_t* log)
{
    update_router_bgp(maapi_socket, thandle, cdb_socket, entry);
    nzmw_log_debug(log, "Handling BGP entry : %d", entry);
    if (lacks_ipv6(cdb_socket, entry, log)) {
        update_ipv6(maapi_socket, thandle, cdb_socket);
    }
    update_l3vpn(maapi_socket, thandle, cdb_socket);

    confd::Value temp;
    if (cdb_get(cdb_socket, &temp, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntIndex", entry) == CONFD_OK) {
        const int old_rules =
            cdb_num_instances(cdb_socket, "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry");
        const int prefix_lists = cdb_num_instances(cdb_socket, "/prefix-list");
        if (old_rules > 0 && prefix_lists < 1) {
            BGP_REQUIRE_TYPE(80, &temp, C_UINT32);
            update_prefix_list(maapi_socket, thandle, cdb_socket, CONFD_GET_UINT32(&temp));
        }
        BGP_REQUIRE_TYPE(83, &temp, C_UINT32);
        update_rm_index(maapi_socket, thandle, cdb_socket, CONFD_GET_UINT32(&temp));
    }
    temp.release();
    if (cdb_get(cdb_socket, &temp, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntLocalAs", entry) != CONFD_OK) {
        return 0;
    }
    const int bgp_count = cdb_num_instances(cdb_socket, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry");
    BGP_REQUIRE_TYPE(91, &temp, C_UINT32);
    const int vrf_count = cdb_num_instances(cdb_socket, "/router/bgp{%u}/vrf", CONFD_GET_UINT32(&temp));
    nzmw_log_debug(log, "num bgp: %d, num_bgp_vrs: %d, err: %s\n", bgp_count, vrf_count, confd_lasterr());
    if (vrf_count >= 1 && bgp_count == 1) {
        BGP_REQUIRE_TYPE(95, &temp, C_UINT32);
        update_vrf(maapi_socket, thandle, cdb_socket, CONFD_GET_UINT32(&temp));
    }
    return 0;
}

extern "C" int update(int maapi_socket, int thandle, int cdb_socket)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();

    nzmw_log_debug(log, "Starting BGP update\n");
    cdb_set_namespace(cdb_socket, tag::kBgpMibNamespace);
    const int bgp_count = cdb_num_instances(cdb_socket, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry");
    nzmw_log_debug(log, "Found %d BGP entities", bgp_count);
    if (bgp_count == 1) {
        update_bgp_pfx(maapi_socket, thandle, cdb_socket, 0, log);
    } else {
        nzmw_log_debug(log, "No need to update others config\n");
    }
    update_neigh_config_drop_warn(maapi_socket, thandle, cdb_socket, bgp_count);
    update_neigh_config_afi_safi(maapi_socket, thandle, cdb_socket, bgp_count);
    update_bgp_bvm_join(maapi_socket, thandle, cdb_socket, bgp_count);
    update_vrf_ipv6(maapi_socket, thandle, cdb_socket, bgp_count);
    nzmw_log_debug(log, "Finishing BGP update\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
