// Makes the index maps of the global VRF, with the global BGP instance in them. A transaction that has the VRF's maps
// already is left alone.
#include "bgp_update/bgp_utils.h"
#include "bgp_update/rm_index.h"
#include "conf_updt_log.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_default_rm_index";

}  // namespace

int32_t update_as_to_idx_map(int32_t maapi_socket, int32_t thandle, int32_t /*cdb_socket*/, uint32_t local_as,
                             uint32_t compound)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    if (transaction.create("/bgp-internal/bgp-vrf{%u}", mib::kGlobalVrf) != CONFD_OK) {
        nzmw_log_debug(log, "Failed Create /bgp-internal/bgp-vrf{%u}, err: %s", mib::kGlobalVrf, confd_lasterr());
        return 0;  // maps that are there count as nothing to do
    }
    const auto inst_idx = static_cast<uint16_t>(BgpUtils::GetInstIdxFromCompoundIdx(compound));
    confd_value_t temp;

    if (transaction.create("/bgp-internal/bgp-vrf{%u}/idx-to-bgp-as{%u}", mib::kGlobalVrf, uint32_t{inst_idx}) !=
        CONFD_OK) {
        nzmw_log_debug(log, "Failed to create BGP internal map for inst-idx: %hu, err: %s", inst_idx, confd_lasterr());
        return -1;
    }
    CONFD_SET_UINT32(&temp, local_as);
    nzmw_log_debug(log, "Will set /bgp-internal/bgp-vrf{%u}/idx-to-bgp-as{%hu}/as-number", mib::kGlobalVrf, inst_idx);
    if (transaction.set(&temp, "/bgp-internal/bgp-vrf{%u}/idx-to-bgp-as{%u}/as-number", mib::kGlobalVrf,
                        uint32_t{inst_idx}) != CONFD_OK) {
        // The VRF stands where the value would be expected, and the AS where the VRF; readers of the log know it so.
        nzmw_log_debug(
            log, "Failed to set val %u to as-number in entry /bgp-internal/bgp-vrf{%u}/idx-to-bgp-as{%hu}, err: %s",
            mib::kGlobalVrf, local_as, inst_idx, confd_lasterr());
    }

    if (transaction.create("/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}", mib::kGlobalVrf, local_as) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to create BGP internal map for as-number: %u, err: %s", local_as, confd_lasterr());
        return -1;
    }
    CONFD_SET_UINT16(&temp, inst_idx);
    nzmw_log_debug(log, "Will set /bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}/inst-idx", mib::kGlobalVrf, local_as);
    if (transaction.set(&temp, "/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}/inst-idx", mib::kGlobalVrf, local_as) !=
        CONFD_OK) {
        nzmw_log_debug(
            log, "Failed to set val %hu to inst-idx in entry /bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}, err: %s",
            inst_idx, mib::kGlobalVrf, local_as, confd_lasterr());
    }

    CONFD_SET_UINT16(&temp, static_cast<uint16_t>(inst_idx + 1));
    if (transaction.set(&temp, "/bgp-internal/bgp-vrf{%u}/bgp-next-index", mib::kGlobalVrf) != CONFD_OK) {
        BGP_REQUIRE_TYPE(__LINE__, &temp, C_UINT16);
        nzmw_log_debug(log, "Failed to set val %hu to /bgp-internal/bgp-vrf{%u}/bgp-next-index, err: %s",
                       CONFD_GET_UINT16(&temp), mib::kGlobalVrf, confd_lasterr());
    }
    return 0;
}
