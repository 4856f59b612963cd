// Joins the BGP instance of each VRF to the VRF's IPv6 routing table manager (RTM): a row of
// "/DC-BGP-MIB/bgpRmAfmJoinTable" and one of "/DC-RTM-MIB/rtmMjTable", from the VRFs of "/router/bgp{%u}/vrf" as the
// transaction has them. Does nothing without a BGP router entity.
#include "bgp_update/vrf.h"
#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "libvrfid.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_vrf";

// The lines by which readers of the log know the failures, with the label and the number of each place.
void log_failure(nzmw_log_t* log, int result, const char* label, int number)
{
    if (result != CONFD_OK) {
        nzmw_log_debug(log, "%s:%d: %s\n", label, number, confd_lasterr());
    }
}

}  // namespace

// BGP's join with the IPv6 RTM of a VRF's component, which is the component's successor. A row that is there makes the
// creation fail; its values are set all the same.
static void update_bgpRmAfmJoinTable(nzmw_log_t* log, const confd::Transaction& transaction, uint32_t component,
                                     int32_t status)
{
    nzmw_log_debug(log, "Creating /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}", component,
                   mib::kJoinIpv6Unicast);
    log_failure(
        log,
        transaction.create("/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}", component, mib::kJoinIpv6Unicast),
        __func__, 80);
    confd_value_t value;
    CONFD_SET_UINT32(&value, component + 1);
    log_failure(log,
                transaction.set(&value, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmPartnerIndex",
                                component, mib::kJoinIpv6Unicast),
                __func__, 87);
    CONFD_SET_ENUM_VALUE(&value, mib::kIpv6);
    log_failure(log,
                transaction.set(&value, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmAfi", component,
                                mib::kJoinIpv6Unicast),
                __func__, 94);
    CONFD_SET_ENUM_VALUE(&value, status);
    log_failure(log,
                transaction.set(&value, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmAdminStatus",
                                component, mib::kJoinIpv6Unicast),
                __func__, 101);
}

// The other side: the join of the IPv6 RTM with its partner BGP.
static void update_rtmMjEntry(nzmw_log_t* log, const confd::Transaction& transaction, uint32_t component)
{
    const uint32_t rtm_index = component + 1;
    nzmw_log_debug(log, "Creating /DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}", rtm_index, component);
    log_failure(log, transaction.create("/DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}", rtm_index, component),
                __func__, 117);
    confd_value_t safi;
    CONFD_SET_ENUM_VALUE(&safi, mib::kUnicast);
    log_failure(
        log,
        transaction.set(&safi, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{%u %u ariPrtnrBgp}/rtmMjSafi", rtm_index, component),
        __func__, 124);
}

// The AS number of the transaction's first BGP router, 0 when there is none.
static uint32_t get_local_as(nzmw_log_t* log, int maapi_socket, int thandle)
{
    confd::Cursor routers(maapi_socket, thandle, "/router/bgp");
    log_failure(log, routers.result(), __func__, 136);
    const maapi_cursor& mc = routers.position();
    if (!routers.next()) {
        return 0;
    }
    BGP_REQUIRE_TYPE(140, &mc.keys[0], C_UINT32);
    return CONFD_GET_UINT32(&mc.keys[0]);
}

int update_vrf_ipv6(int maapi_socket, int thandle, int /*cdb_socket*/, int bgp_count)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Update BGP VRF IPv6\n");
    if (bgp_count == 0) {
        nzmw_log_debug(log, "No BGP config to update");
        return 0;
    }
    const uint32_t as = get_local_as(log, maapi_socket, thandle);
    confd::Cursor vrfs = transaction.cursor("/router/bgp{%u}/vrf", as);
    if (vrfs.result() != CONFD_OK) {
        nzmw_log_debug(log, "%s:%d: %s", __func__, 162, confd_lasterr());
        return -1;
    }
    const maapi_cursor& mc = vrfs.position();
    while (vrfs.next()) {
        BGP_REQUIRE_TYPE(167, &mc.keys[0], C_BUF);
        const char* const name = CONFD_GET_CBUFPTR(&mc.keys[0]);
        confd::Value val;
        if (transaction.get(&val, "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{%s}/vrf-idx",
                            name) != CONFD_OK) {
            nzmw_log_debug(log, "%s:%d: %s", __func__, 171, confd_lasterr());
            continue;
        }
        BGP_REQUIRE_TYPE(175, &val, C_UINT32);
        const uint32_t component = libvrfid::VrfId::ComponentFromVrf(CONFD_GET_UINT32(&val));
        const bool ipv6 = transaction.exists("/router/bgp{%u}/vrf{%s}/address-family{ipv6 unicast}", as, name) == 1;
        update_bgpRmAfmJoinTable(log, transaction, component, ipv6 ? mib::kUp : mib::kDown);
        update_rtmMjEntry(log, transaction, component);
    }
    nzmw_log_debug(log, "Finishing VRF IPv6 update\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
