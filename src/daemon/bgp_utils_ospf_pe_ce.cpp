// The OSPF PE-CE procedures of RFC 4577: the OSPF process of a VRF, and the switches for the procedures in the rules
// that redistribute its routes and in its OSPF entity.
#include <cstring>

#include "bgp_update/bgp_vrf_redist_entry.h"
#include "bgp_update/nz_confd_cdb_session.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_dp.h"
#include "daemon/operation.h"
#include "daemon/trace.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";

constexpr char kOspfProcesses[] = "/internal/ospf-proc-id-to-index";
constexpr char kRedistRows[] = "/DC-RTM-MIB:DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
constexpr char kOspfEntities[] = "/DC-OSPF-MIB:DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";

constexpr int kBgpEntity = 1;  // whose VPN family counts

// Numbers of redistribution rules.
constexpr uint32_t kProcessRule = 0x2010000;  // of a process: with the low 16 bits of its number
constexpr uint32_t kProcessMask = 0xFFFF;
constexpr uint32_t kOspfRule = 0x5000000;

// Whether a stored VRF name is taken for the one sought: only the stored name's length is compared, so that one which
// begins the name sought is taken too. That is deliberate; readers of the map know it so.
bool names_vrf(const confd_value_t& stored, const char* vrf_name)
{
    return std::strncmp(CONFD_GET_CBUFPTR(&stored), vrf_name, CONFD_GET_BUFSIZE(&stored)) == 0;
}

// What is looked for, on whose behalf, and where it goes.
struct OspfProcessSearch {
    Operation operation;
    nzmw_trace_category_t category;
    const char* vrf_name;
    confd_value_t* proc_id;
    confd_value_t* compound_id;

    // A process that was read by half leaves no value behind.
    void release() const
    {
        for (confd_value_t* value : {proc_id, compound_id}) {
            confd_free_value(value);
            CONFD_SET_NOEXISTS(value);
        }
    }
};

// The process as the transaction has it; its first entry for the VRF decides.
bool find_in_transaction(const OspfProcessSearch& search, const confd::Transaction& transaction)
{
    confd::Cursor entries = transaction.cursor("%s", kOspfProcesses);
    maapi_cursor& vl_mc = entries.position();
    while (entries.next()) {
        BGP_REQUIRE_TYPE_FOR(search.operation.signature, __LINE__, &(vl_mc.keys[1]), C_BUF);
        if (!names_vrf(vl_mc.keys[1], search.vrf_name)) {
            continue;
        }
        if (transaction.get(search.proc_id, "%s{%x %x}/proc_id", kOspfProcesses, &vl_mc.keys[0], &vl_mc.keys[1]) ==
                CONFD_OK &&
            transaction.get(search.compound_id, "%s{%x %x}/index", kOspfProcesses, &vl_mc.keys[0], &vl_mc.keys[1]) ==
                CONFD_OK) {
            return true;
        }
        BGP_TRACE_TO(search.category, search.operation.name, trace_level::kLookup,
                     "Failed to get OSPF proc ID or compound ID for VRF name %s (%s)", search.vrf_name,
                     confd_lasterr());
        search.release();
        return false;
    }
    return false;
}

// The process as the running datastore has it, likewise.
bool find_committed(const OspfProcessSearch& search, confd_trans_ctx* tctx)
{
    const NzConfdCdbSession session(NzConfdInterface::FromTransaction(tctx), CDB_RUNNING, true);
    const int sock = session.Socket();
    const int entries = cdb_num_instances(sock, "%s", kOspfProcesses);
    for (int i = 0; i < entries; ++i) {
        confd::Value vl_vrf_name_tmp;
        if (cdb_get(sock, &vl_vrf_name_tmp, "%s[%d]/vrf_name", kOspfProcesses, i) != CONFD_OK) {
            continue;
        }
        BGP_REQUIRE_TYPE_FOR(search.operation.signature, __LINE__, &vl_vrf_name_tmp, C_BUF);
        if (!names_vrf(vl_vrf_name_tmp, search.vrf_name)) {
            continue;
        }
        if (cdb_get(sock, search.proc_id, "%s[%d]/proc_id", kOspfProcesses, i) == CONFD_OK &&
            cdb_get(sock, search.compound_id, "%s[%d]/index", kOspfProcesses, i) == CONFD_OK) {
            return true;
        }
        BGP_TRACE_TO(search.category, search.operation.name, trace_level::kLookup,
                     "Failed to get OSPF proc ID or compound ID for VRF name %s from CDB (%s)", search.vrf_name,
                     confd_lasterr());
        search.release();
        return false;
    }
    return false;
}

}  // namespace

int32_t BgpUtils::BgpVrfRedistEntry::GetOspfProcIdCompoundId(int32_t maapi_socket, confd_trans_ctx* tctx,
                                                             nzmw_trace_category_t category, const char* vrfName,
                                                             confd_value_t* procId, confd_value_t* compoundId)
try {
    if (procId == nullptr || compoundId == nullptr || tctx == nullptr) {
        BGP_TRACE_TO(category, __func__, trace_level::kLookup, "Invalid NULL pointer");
        return -1;
    }
    CONFD_SET_NOEXISTS(procId);
    CONFD_SET_NOEXISTS(compoundId);
    const OspfProcessSearch search{BGP_THIS_OPERATION, category, vrfName, procId, compoundId};
    const bool found = find_in_transaction(search, {maapi_socket, tctx->thandle}) || find_committed(search, tctx);
    return found ? 0 : -1;
}
BGP_FAULT_ON_EXCEPTION(__func__)

int BgpUtils::BgpVrfRedistEntry::Rfc4577Support(int maapi_socket, confd_trans_ctx* tctx, nzmw_log_t* /*log*/,
                                                nzmw_trace_category_t category, char* vrfName,
                                                RtmRedistInfoSource source, bool enable, bool ipv6)
{
    BGP_TRACE_TO(category, __func__, trace_level::kLookup, "ENTER Rfc4577Support");
    if (source != RtmRedistInfoSource::kOspf) {
        return 0;
    }
    const confd::Transaction transaction{maapi_socket, tctx->thandle};
    confd::Value rtm_val;
    if (GetRtmIndexFromVrf(maapi_socket, tctx->thandle, vrfName, &rtm_val, ipv6) != CONFD_OK) {
        BGP_TRACE_TO(category, __func__, trace_level::kLookup, "Trying to configure a non existent VRF!");
        return 0;
    }
    BGP_REQUIRE_TYPE(__LINE__, &rtm_val, C_UINT32);
    const uint32_t rtm_index = CONFD_GET_UINT32(&rtm_val);

    bool vpn_up = false;
    confd::Value admin_status;
    if (transaction.get(&admin_status,
                        "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{%d ipv4 mplsBgpVpn}/bgpRmAfiSafiAdminStatus",
                        kBgpEntity) == CONFD_OK) {
        BGP_REQUIRE_TYPE(__LINE__, &admin_status, C_ENUM_VALUE);
        vpn_up = CONFD_GET_ENUM_VALUE(&admin_status) == mib::kUp;
    }

    confd::Value proc_id_val;
    confd::Value ospf_idx_val;
    if (GetOspfProcIdCompoundId(maapi_socket, tctx, category, vrfName, &proc_id_val, &ospf_idx_val) != 0) {
        BGP_TRACE_TO(category, __func__, trace_level::kLookup, "cannot find ospfv2 proc_id for vrf=%s", vrfName);
        BGP_TRACE_TO(category, __func__, trace_level::kLookup, "EXIT Rfc4577Support");
        return 0;
    }
    BGP_REQUIRE_TYPE(__LINE__, &proc_id_val, C_UINT32);
    const uint32_t process_rule = (CONFD_GET_UINT32(&proc_id_val) & kProcessMask) | kProcessRule;

    if (transaction.exists("%s{%u %u}", kRedistRows, rtm_index, process_rule) == 1) {
        confd_value_t support;
        CONFD_SET_ENUM_VALUE(&support, vpn_up && enable ? mib::kTrue : mib::kFalse);
        for (const uint32_t rule : {process_rule, kOspfRule}) {
            BGP_TRACE_TO(category, __func__, trace_level::kLookup, "set [%u] %s{%u %u}/rtmRedistOspfVpnPeCeSupport",
                         enable, kRedistRows, rtm_index, rule);
            transaction.set(&support, "%s{%u %u}/rtmRedistOspfVpnPeCeSupport", kRedistRows, rtm_index, rule);
        }
        // The line shows the RTM index where the write has the entity's; readers of the trace know it so.
        BGP_TRACE_TO(category, __func__, trace_level::kLookup, "set [%u] %s{%u}/ospfPmEntVpnPeCeSupport", enable,
                     kOspfEntities, rtm_index);
        BGP_REQUIRE_TYPE(__LINE__, &ospf_idx_val, C_UINT32);
        transaction.set(&support, "%s{%u}/ospfPmEntVpnPeCeSupport", kOspfEntities, CONFD_GET_UINT32(&ospf_idx_val));
    }
    BGP_TRACE_TO(category, __func__, trace_level::kLookup, "EXIT Rfc4577Support");
    return 0;
}
