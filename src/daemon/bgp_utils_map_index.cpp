// The numbers of route maps and of route policies, by VRF and name. Both are handed out by the same steps, from maps of
// their own: what differs is in the table, and every line and failure tells the operation that was called.
#include "bgp_update/bgp_utils.h"
#include "confd/fault.h"
#include "confd/keypath.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "daemon/bgp_utils_free_index.h"
#include "daemon/lookup.h"
#include "daemon/operation.h"
#include "daemon/trace.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";

// What tells the two allocators apart: keypath templates, then trace lines.
struct Allocator {
    int (*get)(int, int, char*, char*, confd_value*);
    const char* vrf;         // of a VRF's name
    const char* free_index;  // of a VRF's name
    const char* next_index;  // of a VRF's name
    const char* entry;       // of a VRF's name and an entry's
    const char* number;      // of a VRF's name and an entry's
    const char* number_of;   // of an entry's path
    const char* enter;
    const char* not_found;
    const char* vrf_created;
    const char* already_set;
    const char* from_free_list;
    const char* from_counter;
    const char* returning;
    const char* not_set;
};

// The texts stay whole, to be found as they stand.
// clang-format off
constexpr Allocator kRouteMap = {
    BgpUtils::GetRouteMapIdx,
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-map/metacli-internal:vrf{%s}",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-map/metacli-internal:vrf{%s}/free-index",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-map/metacli-internal:vrf{%s}/next-index",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-map/metacli-internal:vrf{%s}/stringTOindex{%s}",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-map/metacli-internal:vrf{%s}/stringTOindex{%s}/map-idx",
    "%s/map-idx",
    ">>> Enter - VRF :'%s', map: '%s' sock=%d thandle=%d",
    "No idx recovered - Map does not exists",
    "Creating /metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-map/metacli-internal:vrf{%s} ret:%d error: %s",
    "Route map already set: route-map{%s %s}=%d",
    "Get VRF RouteMap index from free-index, list size:%d",
    "Get VRF RouteMap index from next-index",
    "<<< Returning VRF:'%s' RouteMap:'%s' index:%u",
    "Route map is not set: route-map{%s %s}=%d",
};

constexpr Allocator kRoutePolicy = {
    BgpUtils::GetRoutePolicyIdx,
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-policy/metacli-internal:vrf{%s}",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-policy/metacli-internal:vrf{%s}/free-index",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-policy/metacli-internal:vrf{%s}/next-index",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-policy/metacli-internal:vrf{%s}/stringTOindex{%s}",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-policy/metacli-internal:vrf{%s}/stringTOindex{%s}/pol-idx",
    "%s/pol-idx",
    ">>> Enter - VRF :'%s', pol: '%s' sock=%d thandle=%d",
    "No idx recovered - Policy does not exists",
    "Creating /metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-policy/metacli-internal:vrf{%s} ret:%d error: %s",
    "Policy map already set: route-policy{%s %s}=%d",
    "Get VRF RoutePolicy index from free-index, list size:%d",
    "Get VRF RoutePolicy index from next-index",
    "<<< Returning VRF:'%s' RoutePolicy:'%s' index:%u",
    "Route policy is not set: route-policy{%s %s}=%d",
};
// clang-format on

// One call of an operation: whose it is, where it works, and for which name.
struct Call {
    const Allocator& allocator;
    Operation operation;
    confd::Transaction transaction;
    char* vrf;
    char* name;

    int get(confd_value_t* out) const
    {
        return allocator.get(transaction.maapi_socket, transaction.thandle, vrf, name, out);
    }
    std::string free_index() const { return confd::keypath(allocator.free_index, vrf); }
    std::string entry() const { return confd::keypath(allocator.entry, vrf, name); }
};

void trace_enter(const Call& call)
{
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, call.allocator.enter, call.vrf, call.name,
                  call.transaction.maapi_socket, call.transaction.thandle);
}

int get_number(const Call& call, confd_value_t* vl_index)
{
    BGP_TRACE_FOR(call.operation.name, trace_level::kLookup, "Entry Point");
    if (vl_index == nullptr) {
        return -1;
    }
    CONFD_SET_UINT32(vl_index, 0);
    const LookupResult found = look_up(call.transaction, vl_index, call.allocator.number, call.vrf, call.name);
    if (found.result != CONFD_OK) {
        if (found.asked) {
            BGP_TRACE_FOR(call.operation.name, trace_level::kLookup, "%s", call.allocator.not_found);
        }
        return found.result;
    }
    BGP_REQUIRE_TYPE_FOR(call.operation.signature, __LINE__, vl_index, C_UINT32);
    BGP_TRACE_FOR(call.operation.name, trace_level::kLookup, "Recovered idx['%s','%s'] = %d", call.vrf, call.name,
                  CONFD_GET_UINT32(vl_index));
    return 0;
}

// The VRF's entry, which holds its counter. A failure shows when the counter is read.
void ensure_vrf(const Call& call)
{
    if (call.transaction.exists(call.allocator.vrf, call.vrf) == 1) {
        return;
    }
    BGP_TRACE_FOR(call.operation.name, trace_level::kLookup, "Entry Point");
    const int result = call.transaction.create(call.allocator.vrf, call.vrf);
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, call.allocator.vrf_created, call.vrf, result,
                  confd_lasterr());
}

// After 2^32 - 1 the counter goes on at 0, as required. The line tells the number taken, not the new counter.
uint32_t take_from_counter(const Call& call)
{
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, "%s", call.allocator.from_counter);
    uint32_t number = 0;
    if (call.transaction.get_u_int32(&number, call.allocator.next_index, call.vrf) != CONFD_OK) {
        confd::fault_last_error(call.operation.name, kSource, __LINE__);
    }
    confd_value_t next;
    CONFD_SET_UINT32(&next, number + 1);
    if (call.transaction.set(&next, call.allocator.next_index, call.vrf) != CONFD_OK) {
        confd::fault_last_error(call.operation.name, kSource, __LINE__);
    }
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, "Set next-index to %d", number);
    return number;
}

uint32_t take_number(const Call& call, const std::string& free_index)
{
    confd::Value free_list;
    if (!read_free_list(call.operation, call.transaction, free_index.c_str(), call.allocator.from_free_list,
                        free_list)) {
        return take_from_counter(call);
    }
    const confd_value_t* const first = CONFD_GET_LIST(&free_list);
    BGP_REQUIRE_TYPE_FOR(call.operation.signature, __LINE__, first, C_UINT32);
    const uint32_t number = CONFD_GET_UINT32(first);
    if (call.transaction.remove("%s{%u}", free_index.c_str(), number) != CONFD_OK) {
        confd::fault_last_error(call.operation.name, kSource, __LINE__);
    }
    free_list.release();
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, "Got reusable inst-idx: %d", number);
    return number;
}

// An entry that is there already keeps what it has, and the number just taken is entered nowhere.
void record_number(const Call& call, uint32_t number)
{
    const std::string entry = call.entry();
    if (call.transaction.exists("%s", entry.c_str()) == 1) {
        return;
    }
    BGP_TRACE_FOR(call.operation.name, trace_level::kLookup, "Entry Point");
    const int result = call.transaction.create("%s", entry.c_str());
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, "Creating '%s' ret:%d error:'%s'", entry.c_str(),
                  result, confd_lasterr());
    confd_value_t value;
    CONFD_SET_UINT32(&value, number);
    call.transaction.set(&value, call.allocator.number_of, entry.c_str());
}

uint32_t create_number(const Call& call)
{
    trace_enter(call);
    confd::Value vl_index;
    if (call.get(&vl_index) == 0) {
        BGP_REQUIRE_TYPE_FOR(call.operation.signature, __LINE__, &vl_index, C_UINT32);
        BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, call.allocator.already_set, call.vrf, call.name,
                      CONFD_GET_UINT32(&vl_index));
        return CONFD_GET_UINT32(&vl_index);
    }
    const std::string free_index = call.free_index();
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, "%s", free_index.c_str());
    ensure_vrf(call);
    record_number(call, take_number(call, free_index));
    confd::Value val;
    call.get(&val);
    BGP_REQUIRE_TYPE_FOR(call.operation.signature, __LINE__, &val, C_UINT32);
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, call.allocator.returning, call.vrf, call.name,
                  CONFD_GET_UINT32(&val));
    return CONFD_GET_UINT32(&val);
}

void delete_entry(const Call& call)
{
    const std::string entry = call.entry();
    if (call.transaction.exists("%s", entry.c_str()) != 1) {
        return;
    }
    BGP_TRACE_FOR(call.operation.name, trace_level::kLookup, "Entry Point");
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, "Deleting '%s'", entry.c_str());
    const int result = call.transaction.remove("%s", entry.c_str());
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, "Deleting '%s' ret:%d error:'%s'", entry.c_str(),
                  result, confd_lasterr());
}

// The counter is never lowered and the VRF's entry stays, also without a name left in it.
int delete_number(const Call& call)
{
    trace_enter(call);
    confd::Value vl_index;
    if (call.get(&vl_index) != 0) {
        BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, call.allocator.not_set, call.vrf, call.name, 0);
        return -1;
    }
    BGP_REQUIRE_TYPE_FOR(call.operation.signature, __LINE__, &vl_index, C_UINT32);
    const uint32_t number = CONFD_GET_UINT32(&vl_index);
    delete_entry(call);
    const std::string free_index = call.free_index();
    BGP_TRACE_FOR(call.operation.name, trace_level::kAllocator, "%s:%d", free_index.c_str(), number);
    // A name deleted in this transaction but still committed is found again, and its number is on the list already.
    if (call.transaction.create("%s{%u}", free_index.c_str(), number) != CONFD_OK) {
        BGP_TRACE_FOR(call.operation.name, trace_level::kSoftFailure,
                      "Error inserting index '%d' back to free-index list:'%s'", number, free_index.c_str());
    }
    return 0;
}

}  // namespace

int BgpUtils::GetRouteMapIdx(int maapi_socket, int thandle, char* vrfName, char* mapName, confd_value* vl_index)
{
    return get_number({kRouteMap, BGP_THIS_OPERATION, {maapi_socket, thandle}, vrfName, mapName}, vl_index);
}

uint32_t BgpUtils::CreateRouteMapIdx(int maapi_socket, int thandle, char* vrfName, char* mapName)
try {
    return create_number({kRouteMap, BGP_THIS_OPERATION, {maapi_socket, thandle}, vrfName, mapName});
}
BGP_FAULT_ON_EXCEPTION(__func__)

int BgpUtils::DeleteRouteMapIdx(int maapi_socket, int thandle, char* vrfName, char* mapName)
try {
    return delete_number({kRouteMap, BGP_THIS_OPERATION, {maapi_socket, thandle}, vrfName, mapName});
}
BGP_FAULT_ON_EXCEPTION(__func__)

int BgpUtils::GetRoutePolicyIdx(int maapi_socket, int thandle, char* vrfName, char* policyName, confd_value* vl_index)
{
    return get_number({kRoutePolicy, BGP_THIS_OPERATION, {maapi_socket, thandle}, vrfName, policyName}, vl_index);
}

uint32_t BgpUtils::CreateRoutePolicyIdx(int maapi_socket, int thandle, char* vrfName, char* policyName)
try {
    return create_number({kRoutePolicy, BGP_THIS_OPERATION, {maapi_socket, thandle}, vrfName, policyName});
}
BGP_FAULT_ON_EXCEPTION(__func__)

int BgpUtils::DeleteRoutePolicyIdx(int maapi_socket, int thandle, char* vrfName, char* policyName)
try {
    return delete_number({kRoutePolicy, BGP_THIS_OPERATION, {maapi_socket, thandle}, vrfName, policyName});
}
BGP_FAULT_ON_EXCEPTION(__func__)
