// The numbers of BGP instances: a 16-bit instance index for each AS of a VRF, and the compound index that names the
// instance in the routing stack. Who owns which index is kept in the configuration, below "/bgp-internal/bgp-vrf", and
// nowhere else, so that an allocation commits and rolls back with its transaction.
#include <cstdlib>

#include "bgp_update/bgp_utils.h"
#include "bgp_update/nz_confd_cdb_session.h"
#include "confd/fault.h"
#include "confd/keypath.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "daemon/bgp_utils_free_index.h"
#include "daemon/operation.h"
#include "daemon/trace.h"
#include "libvrfid.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";
constexpr uint32_t kNoCompoundIndex = 0xFFFFFFFF;

std::string free_index_path(uint32_t vrf)
{
    return confd::keypath("/bgp-internal/bgp-vrf{%u}/bgp-free-index", vrf);
}

[[noreturn]] void fail(const char* operation, int line)
{
    confd::fault_last_error(operation, kSource, line);
}

void restore_free_list(const Operation& operation, const confd::Transaction& transaction, int cdb_socket, uint32_t vrf)
{
    confd_value_t* free_list = nullptr;
    int count = 0;
    cdb_get_list(cdb_socket, &free_list, &count, "/bgp-internal/bgp-vrf{%u}/bgp-free-index", vrf);
    for (int i = 0; i < count; ++i) {
        BGP_REQUIRE_TYPE_FOR(operation.signature, __LINE__, &free_list[i], C_UINT16);
        const unsigned int released = CONFD_GET_UINT16(&free_list[i]);
        if (transaction.create("%s{%u}", free_index_path(vrf).c_str(), released) != CONFD_OK) {
            fail(operation.name, __LINE__);
        }
        confd_free_value(&free_list[i]);
    }
    std::free(free_list);
}

// Fills a VRF's container that was just created with what the running datastore has of it: a release may have removed
// the container earlier in the transaction, and its numbers must not be handed out anew.
void restore_vrf(const Operation& operation, const confd::Transaction& transaction, int cdb_socket, uint32_t vrf)
{
    if (cdb_exists(cdb_socket, "/bgp-internal/bgp-vrf{%u}", vrf) != 1) {
        return;
    }
    BGP_TRACE_FOR(operation.name, trace_level::kAllocator, "Restoring free-index list and next-index from CDB");
    restore_free_list(operation, transaction, cdb_socket, vrf);
    uint16_t next_index = 0;
    cdb_get_u_int16(cdb_socket, &next_index, "/bgp-internal/bgp-vrf{%u}/bgp-next-index", vrf);
    confd_value_t next;
    CONFD_SET_UINT16(&next, next_index);
    if (transaction.set(&next, "/bgp-internal/bgp-vrf{%u}/bgp-next-index", vrf) != CONFD_OK) {
        fail(operation.name, __LINE__);
    }
}

// After 65535 the counter goes on at 0 and hands out numbers that may be in use. That is as required: there is no
// result that says "exhausted".
uint16_t take_from_counter(const Operation& operation, const confd::Transaction& transaction, uint32_t vrf)
{
    BGP_TRACE_FOR(operation.name, trace_level::kAllocator, "Get BGP index from next-index");
    uint16_t index = 0;
    if (transaction.get_u_int16(&index, "/bgp-internal/bgp-vrf{%u}/bgp-next-index", vrf) != CONFD_OK) {
        fail(operation.name, __LINE__);
    }
    confd_value_t next;
    CONFD_SET_UINT16(&next, static_cast<uint16_t>(index + 1));
    if (transaction.set(&next, "/bgp-internal/bgp-vrf{%u}/bgp-next-index", vrf) != CONFD_OK) {
        fail(operation.name, __LINE__);
    }
    return index;
}

uint16_t take_index(const Operation& operation, const confd::Transaction& transaction, uint32_t vrf)
{
    const std::string path = free_index_path(vrf);
    confd::Value free_list;
    if (!read_free_list(operation, transaction, path.c_str(), "Get BGP index from free-index, list size:%d",
                        free_list)) {
        return take_from_counter(operation, transaction, vrf);
    }
    const confd_value_t* const first = CONFD_GET_LIST(&free_list);
    BGP_REQUIRE_TYPE_FOR(operation.signature, __LINE__, first, C_UINT16);
    const uint16_t index = CONFD_GET_UINT16(first);
    if (transaction.remove("%s{%u}", path.c_str(), static_cast<unsigned int>(index)) != CONFD_OK) {
        fail(operation.name, __LINE__);
    }
    return index;
}

// Enters the owner in both maps. An AS that has an index already is not looked for: its entry cannot be created twice,
// which ends the process.
void record_owner(const Operation& operation, const confd::Transaction& transaction, uint32_t vrf, uint32_t as,
                  uint16_t index)
{
    const unsigned int key = index;
    confd_value_t inst_idx;
    CONFD_SET_UINT16(&inst_idx, index);
    confd_value_t as_number;
    CONFD_SET_UINT32(&as_number, as);
    if (transaction.create("/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}", vrf, as) != CONFD_OK ||
        transaction.set(&inst_idx, "/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}/inst-idx", vrf, as) != CONFD_OK ||
        transaction.create("/bgp-internal/bgp-vrf{%u}/idx-to-bgp-as{%u}", vrf, key) != CONFD_OK ||
        transaction.set(&as_number, "/bgp-internal/bgp-vrf{%u}/idx-to-bgp-as{%u}/as-number", vrf, key) != CONFD_OK) {
        fail(operation.name, __LINE__);
    }
}

// Removes the VRF's container with its free list and its counter once its last instance has gone.
void remove_vrf_without_instances(const char* operation, const confd::Transaction& transaction, uint32_t vrf)
{
    if (transaction.exists("/bgp-internal/bgp-vrf{%u}", vrf) != 1) {
        BGP_TRACE_FOR(operation, trace_level::kSoftFailure, "/bgp-internal/bgp-vrf{%u}not found for clean-up", vrf);
        return;
    }
    const int instances = transaction.num_instances("/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx", vrf);
    if (instances != 0) {
        BGP_TRACE_FOR(operation, trace_level::kAllocator, "/bgp-internal/bgp-vrf{%u}still has %d instances", vrf,
                      instances);
        return;
    }
    if (transaction.remove("/bgp-internal/bgp-vrf{%u}", vrf) != CONFD_OK) {
        fail(operation, __LINE__);
    }
    BGP_TRACE_FOR(operation, trace_level::kAllocator, "Removing /bgp-internal/bgp-vrf{%u}", vrf);
}

}  // namespace

uint32_t BgpUtils::GetBgpCompoundIdx(unsigned short instIdx, unsigned int vrfIdx)
try {
    return libvrfid::VrfId::ComponentFromVrf(vrfIdx) + instIdx;
}
BGP_FAULT_ON_EXCEPTION(__func__)

uint32_t BgpUtils::GetInstIdxFromCompoundIdx(unsigned int compound)
try {
    return compound - libvrfid::VrfId::ComponentFromVrf(libvrfid::VrfId::VrfFromComponent(compound));
}
BGP_FAULT_ON_EXCEPTION(__func__)

uint32_t BgpUtils::CreateBgpCompoundIdx(int maapi_socket, int thandle, int32_t cdb_socket, uint32_t vrfIdx,
                                        uint32_t asNumber)
try {
    const Operation operation = BGP_THIS_OPERATION;
    const confd::Transaction transaction{maapi_socket, thandle};

    BGP_TRACE(trace_level::kAllocator, ">>> Enter - VRF index:%u, AS: %u", vrfIdx, asNumber);
    if (transaction.exists("/bgp-internal/bgp-vrf{%u}", vrfIdx) != 1) {
        if (transaction.create("/bgp-internal/bgp-vrf{%u}", vrfIdx) != CONFD_OK) {
            fail(operation.name, __LINE__);
        }
        BGP_TRACE(trace_level::kAllocator, "Creating /bgp-internal/bgp-vrf{%u}", vrfIdx);
        restore_vrf(operation, transaction, cdb_socket, vrfIdx);
    }
    const uint16_t index = take_index(operation, transaction, vrfIdx);
    record_owner(operation, transaction, vrfIdx, asNumber, index);
    BGP_TRACE(trace_level::kAllocator, "<<< Returning BGP index %u", index);
    return GetBgpCompoundIdx(index, vrfIdx);
}
BGP_FAULT_ON_EXCEPTION(__func__)

uint32_t BgpUtils::CreateBgpCompoundIdx(int maapi_socket, confd_trans_ctx* tctx, uint32_t vrfIdx, uint32_t asNumber)
try {
    const NzConfdCdbSession session(NzConfdInterface::FromTransaction(tctx), CDB_RUNNING, true);
    return CreateBgpCompoundIdx(maapi_socket, tctx->thandle, session.Socket(), vrfIdx, asNumber);
}
BGP_FAULT_ON_EXCEPTION(__func__)

uint32_t BgpUtils::GetNextBgpCompoundIdxCandidate(int maapi_socket, confd_trans_ctx* tctx, uint32_t vrfIdx,
                                                  uint32_t asNumber)
try {
    const Operation operation = BGP_THIS_OPERATION;
    const confd::Transaction transaction{maapi_socket, tctx->thandle};

    BGP_TRACE(trace_level::kAllocator, ">>> Enter - VRF index:%u, AS: %u", vrfIdx, asNumber);
    if (transaction.exists("/bgp-internal/bgp-vrf{%u}", vrfIdx) != 1) {
        BGP_TRACE(trace_level::kAllocator, "Creating /bgp-internal/bgp-vrf{%u}", vrfIdx);
        if (transaction.create("/bgp-internal/bgp-vrf{%u}", vrfIdx) != CONFD_OK) {
            fail(operation.name, __LINE__);
        }
        const NzConfdCdbSession session(NzConfdInterface::FromTransaction(tctx), CDB_RUNNING, true);
        restore_vrf(operation, transaction, session.Socket(), vrfIdx);
    }
    confd::Value vl_inst_idx;
    confd::Value free_list;
    if (transaction.get(&vl_inst_idx, "/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}/inst-idx", vrfIdx, asNumber) ==
        CONFD_OK) {
        BGP_TRACE(trace_level::kAllocator, "Using already existent index");
    } else if (read_free_list(operation, transaction, free_index_path(vrfIdx).c_str(),
                              "Get BGP index from free-index, list size:%d", free_list)) {
        confd_value_dup_to(&CONFD_GET_LIST(&free_list)[0], &vl_inst_idx);
    } else {
        BGP_TRACE(trace_level::kAllocator, "Get BGP index from next-index");
        if (transaction.get(&vl_inst_idx, "/bgp-internal/bgp-vrf{%u}/bgp-next-index", vrfIdx) != CONFD_OK) {
            fail(operation.name, __LINE__);
        }
    }
    BGP_REQUIRE_TYPE(__LINE__, &vl_inst_idx, C_UINT16);
    const uint16_t index = CONFD_GET_UINT16(&vl_inst_idx);
    BGP_TRACE(trace_level::kAllocator, "<<< Returning BGP index %u", index);
    return GetBgpCompoundIdx(index, vrfIdx);
}
BGP_FAULT_ON_EXCEPTION(__func__)

void BgpUtils::DeleteBgpCompoundIdx(int maapi_socket, confd_trans_ctx* tctx, uint32_t vrfIdx, uint32_t asNumber)
try {
    const confd::Transaction transaction{maapi_socket, tctx->thandle};

    BGP_TRACE(trace_level::kAllocator, ">>> Enter - VRF index:%u, AS: %u", vrfIdx, asNumber);
    const NzConfdCdbSession session(NzConfdInterface::FromTransaction(tctx), CDB_RUNNING, true);
    const std::string owner = confd::keypath("/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}", vrfIdx, asNumber);
    uint16_t index = 0;
    // Only what is committed can be released: an AS whose entry is new in this transaction ends the process here.
    if (cdb_get_u_int16(session.Socket(), &index, "%s/inst-idx", owner.c_str()) != CONFD_OK) {
        fail(__func__, __LINE__);
    }
    BGP_TRACE(trace_level::kAllocator, "Deleting BGP instance index %u", index);
    if (transaction.create("%s{%u}", free_index_path(vrfIdx).c_str(), static_cast<unsigned int>(index)) != CONFD_OK) {
        // The index is lost to reuse, no more.
        BGP_TRACE(trace_level::kSoftFailure, "Error inserting BGP index back to free-index list");
    }
    if (transaction.remove("%s", owner.c_str()) != CONFD_OK ||
        transaction.remove("/bgp-internal/bgp-vrf{%u}/idx-to-bgp-as{%hu}", vrfIdx, index) != CONFD_OK) {
        fail(__func__, __LINE__);
    }
    remove_vrf_without_instances(__func__, transaction, vrfIdx);
    BGP_TRACE(trace_level::kAllocator, "<<< Returning");
}
BGP_FAULT_ON_EXCEPTION(__func__)

uint32_t BgpUtils::GetBgpCompoundIdxFromVrfIdx(int maapi_socket, int thandle, unsigned int vrfIdx)
{
    const confd::Transaction transaction{maapi_socket, thandle};
    uint32_t compound_idx = kNoCompoundIndex;

    BGP_TRACE(trace_level::kAllocator, ">>> Enter - VRF index:%u", vrfIdx);
    if (transaction.exists("/bgp-internal/bgp-vrf{%u}", vrfIdx) == 1) {
        BGP_TRACE(trace_level::kAllocator, "/bgp-internal/bgp-vrf{%u} exists", vrfIdx);
        confd::Cursor instances = transaction.cursor("/bgp-internal/bgp-vrf{%u}/idx-to-bgp-as", vrfIdx);
        if (instances.next()) {
            const maapi_cursor& mc = instances.position();
            BGP_REQUIRE_TYPE(__LINE__, &mc.keys[0], C_UINT16);
            const uint16_t index = CONFD_GET_UINT16(&mc.keys[0]);
            compound_idx = GetBgpCompoundIdx(index, vrfIdx);
            BGP_TRACE(trace_level::kAllocator, "Got instance_idx %d from /bgp-internal/bgp-vrf{%u}/idx-to-bgp-as",
                      index, vrfIdx);
        }
    }
    BGP_TRACE(trace_level::kAllocator, "<<< Returning - compound_idx:%u", compound_idx);
    return compound_idx;
}

int BgpUtils::GetBgpCompoundIdxFromVrfName(int maapi_socket, int thandle, const std::string& vrfName,
                                           uint32_t& compound)
try {
    std::string name = vrfName;
    confd::Value vrf_idx;
    if (GetVrfIndex(maapi_socket, thandle, name.data(), &vrf_idx) != 0) {
        return -1;
    }
    BGP_REQUIRE_TYPE(__LINE__, &vrf_idx, C_UINT32);
    compound = GetBgpCompoundIdxFromVrfIdx(maapi_socket, thandle, CONFD_GET_UINT32(&vrf_idx));
    return compound < kNoCompoundIndex ? 0 : -1;
}
BGP_FAULT_ON_EXCEPTION(__func__)
