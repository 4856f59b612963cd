// The numbers of VRFs and of their routing table managers (RTM) by name, the names by number, and the removal of all
// redistribution rows of one VRF.
#include "bgp_update/bgp_utils.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "daemon/lookup.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";

}  // namespace

int BgpUtils::GetVrfIndex(int maapi_socket, int thandle, char* vrfName, confd_value* out)
{
    if (out == nullptr) {
        return -1;
    }
    return look_up({maapi_socket, thandle}, out,
                   "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{%s}/vrf-idx", vrfName)
        .result;
}

int BgpUtils::GetVrfNameFromIndex(int maapi_socket, int thandle, unsigned int vrfIdx, confd_value* out)
{
    if (out == nullptr) {
        return -1;
    }
    return look_up({maapi_socket, thandle}, out,
                   "/metacli-internal:internal/metacli-internal:vrf-config/indexTOstring{%u}/vname", vrfIdx)
        .result;
}

int BgpUtils::GetRtmIndexFromVrf(int maapi_socket, int thandle, char* vrfName, confd_value* out, int ipv6)
{
    if (out == nullptr) {
        return -1;
    }
    const char* const leaf = ipv6 != 0 ? "rtmIndexV6" : "rtmIndex";
    return look_up({maapi_socket, thandle}, out,
                   "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{%s}/%s", vrfName, leaf)
        .result;
}

int BgpUtils::RtmVrfRedistRemoveAll(int maapi_socket, int thandle, char* vrfName, bool ipv6)
{
    const confd::Transaction transaction{maapi_socket, thandle};
    confd::Value myval;
    if (GetRtmIndexFromVrf(maapi_socket, thandle, vrfName, &myval, ipv6) != CONFD_OK) {
        return -1;
    }
    BGP_REQUIRE_TYPE(__LINE__, &myval, C_UINT32);
    const uint32_t rtm_index = CONFD_GET_UINT32(&myval);

    const char* const table = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
    confd::Cursor rows = transaction.cursor(table);
    maapi_cursor& mc = rows.position();
    // The walk goes on to the end of the table, past the last row of the RTM: the rows of the others are looked at and
    // kept.
    for (bool there = rows.find_next(CONFD_FIND_SAME_OR_NEXT, &myval, 1); there; there = rows.next()) {
        BGP_REQUIRE_TYPE(__LINE__, &mc.keys[0], C_UINT32);
        if (CONFD_GET_UINT32(&mc.keys[0]) == rtm_index &&
            transaction.remove("%s{%*x}", table, mc.n, mc.keys) != CONFD_OK) {
            return -1;
        }
    }
    return 0;
}
