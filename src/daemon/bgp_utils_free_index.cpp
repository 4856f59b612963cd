#include "daemon/bgp_utils_free_index.h"

#include "confd/type_check.h"
#include "daemon/trace.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";

}  // namespace

bool read_free_list(const Operation& operation, const confd::Transaction& transaction, const char* free_index_path,
                    const char* line, confd_value_t& free_list)
{
    if (transaction.get(&free_list, "%s", free_index_path) != CONFD_OK) {
        return false;
    }
    BGP_REQUIRE_TYPE_FOR(operation.signature, __LINE__, &free_list, C_LIST);
    if (CONFD_GET_LISTSIZE(&free_list) == 0) {
        return false;
    }
    BGP_TRACE_FOR(operation.name, trace_level::kAllocator, line, CONFD_GET_LISTSIZE(&free_list));
    return true;
}
