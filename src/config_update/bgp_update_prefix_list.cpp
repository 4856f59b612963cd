// Turns numbered prefix access lists into named prefix lists: each row of
// "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry" becomes a sequence of the "/prefix-list" that has the
// name of the row's list, and "/prefix-list-internal" gets the maps between names and numbers. Does nothing when the old
// model's next free number cannot be read.
#include "bgp_update/prefix_list.h"

#include <algorithm>
#include <unordered_map>

#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_cdb.h"
#include "nz_address.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_prefix_list";
constexpr int kBatch = 50;  // rows of one read

// The values of a row, by position.
enum PrefixAccessListColumn : int {
    aallPreAccessListListIndex = 0,
    aallPreAccessListRuleIndex = 1,
    aallPreAccessListAddrPrefix = 4,
    aallPreAccessListAddrPrefLen = 5,
    aallPreAccessListAddrPrefGe = 6,
    aallPreAccessListAddrPrefLe = 7,
    aallPreAccessListIncluded = 8,
    aallPreAccessListLast = 9
};

// One call of update_prefix_list().
struct PrefixListUpdate {
    confd::Handles handles;
    uint32_t rm_index;
    const char* signature;
    nzmw_log_t* log = get_conf_updt_log_handle();
    std::unordered_map<uint32_t, std::string> names{};  // of the lists met so far, by number
};

// The name of a list, null where none is found. Only a name that is found is remembered: the next row of a list without
// one looks again.
const std::string* name_of(PrefixListUpdate& update, int32_t list_index)
{
    const auto key = static_cast<uint32_t>(list_index);
    if (const auto known = update.names.find(key); known != update.names.end()) {
        return &known->second;
    }
    // A list may be stored under the index that follows the entity's, so there is just one more look. Both failures are
    // told with the entity's own index.
    for (const uint32_t entity : {update.rm_index, update.rm_index + 1}) {
        confd::Value myval;
        if (cdb_get(update.handles.cdb_socket, &myval,
                    "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry-get{%u %d}/name", entity,
                    list_index) == CONFD_OK) {
            BGP_REQUIRE_TYPE_FOR(update.signature, __LINE__, &myval, C_BUF);
            return &update.names.emplace(key, CONFD_GET_CBUFPTR(&myval)).first->second;
        }
        nzmw_log_debug(update.log, "Could not get name for prefix list (rm_index: %u, pfx_index: %d), err: %s",
                       update.rm_index, list_index, confd_lasterr());
    }
    return nullptr;
}

void update_rows(PrefixListUpdate& update, confd_value_t* pfx_entries, int count)
{
    for (int jpfx = 0; jpfx < count; ++jpfx) {
        BGP_REQUIRE_TYPE_FOR(update.signature, __LINE__,
                             &pfx_entries[jpfx * aallPreAccessListLast + aallPreAccessListListIndex], C_INT32);
        BGP_REQUIRE_TYPE_FOR(update.signature, __LINE__,
                             &pfx_entries[jpfx * aallPreAccessListLast + aallPreAccessListRuleIndex], C_UINT32);
        confd_value_t* const row = &pfx_entries[jpfx * aallPreAccessListLast];
        const int32_t list_index = CONFD_GET_INT32(&row[aallPreAccessListListIndex]);
        const uint32_t sequence = CONFD_GET_UINT32(&row[aallPreAccessListRuleIndex]);
        nzmw_log_debug(update.log, "Found prefix-list idx %d, seq %u", list_index, sequence);
        if (const std::string* const name = name_of(update, list_index); name != nullptr) {
            update_entry(update.handles.maapi_socket, update.handles.thandle, jpfx, sequence, pfx_entries, *name,
                         list_index);
        }
        confd_free_dup_to_value(&row[aallPreAccessListAddrPrefix]);
        CONFD_SET_NOEXISTS(&row[aallPreAccessListAddrPrefix]);
    }
}

// Sets a leaf of a sequence; `path` takes the list's name and the sequence number. One message stands for whichever
// leaf it is, and shows the sequence number where it speaks of the list's, both as readers of the log know them.
bool set_sequence_leaf(const confd::Transaction& transaction, confd_value_t* value, const char* path,
                       const std::string& name, uint32_t sequence)
{
    if (transaction.set(value, path, name.c_str(), sequence) == CONFD_OK) {
        return true;
    }
    nzmw_log_debug(get_conf_updt_log_handle(),
                   "Could not set address for prefix list (pfx_name: %s, pfx_index: %d), err: %s", name.c_str(),
                   static_cast<int>(sequence), confd_lasterr());
    return false;
}

}  // namespace

int32_t create_hl_and_internal_entries(int32_t maapi_socket, int32_t thandle, std::string name, int32_t list_index)
{
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};
    const char* const key = name.c_str();

    if (transaction.exists("/prefix-list/{%s}", key) == 1) {
        return 0;
    }
    if (transaction.create("/prefix-list/{%s}", key) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to create prefix-list entry named %s, err: %s", key, confd_lasterr());
        return -1;
    }
    if (transaction.create("/prefix-list-internal/name-to-idx{%s}", key) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to create name-to-idx map for name %s, err: %s", key, confd_lasterr());
        return -1;
    }
    confd_value_t idx;
    CONFD_SET_UINT32(&idx, static_cast<uint32_t>(list_index));
    if (transaction.set(&idx, "/prefix-list-internal/name-to-idx{%s}/idx", key) != CONFD_OK) {
        nzmw_log_debug(log, "Could not set idx %d for name-to-idx map (pfx_name: %s), err: %s", list_index, key,
                       confd_lasterr());
        return -1;
    }
    if (transaction.create("/prefix-list-internal/idx-to-name{%d}", list_index) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to create idx-to-name map for idx %d, err: %s", list_index, confd_lasterr());
        return -1;
    }
    confd_value_t val;
    CONFD_SET_BUF(&val, name.data(), name.size());
    if (transaction.set(&val, "/prefix-list-internal/idx-to-name{%d}/val", list_index) != CONFD_OK) {
        nzmw_log_debug(log, "Could not set name %s for idx-to-name map (pfx_index: %d), err: %s", key, list_index,
                       confd_lasterr());
        return -1;
    }
    return 0;
}

// NOLINTBEGIN(performance-unnecessary-value-param): the exported interface takes the names by value

int32_t create_hl_sequence_entry(int32_t maapi_socket, int32_t thandle, int jpfx, uint32_t sequence,
                                 confd_value_t* pfx_entries, std::string name, int32_t /*list_index*/)
{
    const confd::Transaction transaction{maapi_socket, thandle};
    confd_value_t* const row = &pfx_entries[jpfx * aallPreAccessListLast];

    if (transaction.create("/prefix-list/{%s}/seq{%u}", name.c_str(), sequence) != CONFD_OK) {
        nzmw_log_debug(get_conf_updt_log_handle(), "Failed to create prefix-list seq %u, err: %s", sequence,
                       confd_lasterr());
        return -1;
    }
    confd_ipv4_prefix prefix{};
    HexlistTOipv4InAddr(&row[aallPreAccessListAddrPrefix], &prefix.ip);
    BGP_REQUIRE_TYPE(__LINE__, &pfx_entries[jpfx * aallPreAccessListLast + aallPreAccessListAddrPrefLen], C_UINT32);
    prefix.len = static_cast<uint8_t>(CONFD_GET_UINT32(&row[aallPreAccessListAddrPrefLen]));
    confd_value_t address;
    CONFD_SET_IPV4PREFIX(&address, prefix);
    if (!set_sequence_leaf(transaction, &address, "/prefix-list/{%s}/seq{%u}/address", name, sequence)) {
        return -1;
    }
    BGP_REQUIRE_TYPE(__LINE__, &pfx_entries[jpfx * aallPreAccessListLast + aallPreAccessListAddrPrefGe], C_INT32);
    confd_value_t* const ge = &row[aallPreAccessListAddrPrefGe];
    if (CONFD_GET_INT32(ge) != 0 &&
        !set_sequence_leaf(transaction, ge, "/prefix-list/{%s}/seq{%u}/ge", name, sequence)) {
        return -1;
    }
    BGP_REQUIRE_TYPE(__LINE__, &pfx_entries[jpfx * aallPreAccessListLast + aallPreAccessListAddrPrefLe], C_INT32);
    confd_value_t* const le = &row[aallPreAccessListAddrPrefLe];
    if (CONFD_GET_INT32(le) != 0 &&
        !set_sequence_leaf(transaction, le, "/prefix-list/{%s}/seq{%u}/le", name, sequence)) {
        return -1;
    }
    BGP_REQUIRE_TYPE(__LINE__, &pfx_entries[jpfx * aallPreAccessListLast + aallPreAccessListIncluded], C_ENUM_VALUE);
    confd_value_t* const action = &row[aallPreAccessListIncluded];
    return set_sequence_leaf(transaction, action, "/prefix-list/{%s}/seq{%u}/action", name, sequence) ? 0 : -1;
}

int32_t update_entry(int32_t maapi_socket, int32_t thandle, int jpfx, uint32_t sequence, confd_value_t* pfx_entries,
                     std::string name, int32_t list_index)
try {
    nzmw_log_debug(get_conf_updt_log_handle(), "Found name %s for idx %d", name.c_str(), list_index);
    create_hl_and_internal_entries(maapi_socket, thandle, name, list_index);
    create_hl_sequence_entry(maapi_socket, thandle, jpfx, sequence, pfx_entries, name, list_index);
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)

// NOLINTEND(performance-unnecessary-value-param)

int32_t update_prefix_list(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, uint32_t rm_index)
try {
    PrefixListUpdate update{{maapi_socket, thandle, cdb_socket}, rm_index, __PRETTY_FUNCTION__};
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(update.log, "Update Prefix List\n");
    confd::Value free_index_val;
    if (cdb_get(cdb_socket, &free_index_val,
                "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry_next_free_index") != CONFD_OK) {
        nzmw_log_debug(update.log, "Couldn't read next_free_index. err: %s \n", confd_lasterr());
        return -1;
    }
    BGP_REQUIRE_TYPE(__LINE__, &free_index_val, C_INT32);
    const int32_t free_index = CONFD_GET_INT32(&free_index_val);
    CONFD_SET_UINT32(&free_index_val, static_cast<uint32_t>(free_index));
    nzmw_log_debug(update.log, "It will set name-next-index as %d", free_index);

    const int entries = cdb_num_instances(cdb_socket, "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry");
    nzmw_log_debug(update.log, "Number of entries is %d", entries);
    for (int start = 0; start < entries; start += kBatch) {
        const int count = std::min(entries - start, kBatch);
        nzmw_log_debug(update.log, "Trying to get next %d entries\n", count);
        confd::ValueArray batch(static_cast<std::size_t>(count) * aallPreAccessListLast);
        const int ret = batch.read_objects(cdb_socket, aallPreAccessListLast, start, count,
                                           "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry");
        if (ret < aallPreAccessListLast) {
            nzmw_log_debug(update.log, "Could not get prefix list entries, ret: %d (err: %s)", ret, confd_lasterr());
            return -1;
        }
        update_rows(update, batch.values(), count);
    }
    if (transaction.set(&free_index_val, "/prefix-list-internal/name-next-index") != CONFD_OK) {
        nzmw_log_debug(update.log, "Couldn't set internal name-next-index value! err: %s", confd_lasterr());
        return -1;
    }
    nzmw_log_debug(update.log, "Finishing Prefix List update\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
