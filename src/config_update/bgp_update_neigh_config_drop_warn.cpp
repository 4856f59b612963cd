// Gives the neighbours and their address families the new model's settings for the prefix limit: in every row of
// "/DC-BGP-MIB/bgpPeerTable" and "/DC-BGP-MIB/bgpPeerAfiSafiTable" the leaves that the tables below name are replaced,
// all rows of a table in one read and one write. Rows of a router entity that the upgrade has re-keyed are written under
// its new index. Does nothing without a BGP router entity.
#include "bgp_update/neigh_config_drop_warn.h"

#include <cstddef>
#include <iterator>
#include <optional>

#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/tags.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_cdb.h"
#include "fwd_resources.h"
#include "libvrfid.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_neigh_config_drop_warn";
constexpr uint32_t kNamespace = tag::kBgpMibNamespace;
constexpr int32_t kWarn = 2;  // of what happens past the prefix limit
constexpr uint32_t kNoRmIndex = 0xFFFFFFFF;

// What is written to a leaf of a row.
enum class Written { AsRead, RmIndex, DropWarn, Profile };

struct Leaf {
    uint32_t tag;
    Written written;
};

constexpr Leaf kPeerLeaves[] = {
    {tag::bgpRmEntIndex, Written::RmIndex},          {tag::bgpPeerLocalAddrType, Written::AsRead},
    {tag::bgpPeerLocalAddr, Written::AsRead},        {tag::bgpPeerLocalPort, Written::AsRead},
    {tag::bgpPeerRemoteAddrType, Written::AsRead},   {tag::bgpPeerRemoteAddr, Written::AsRead},
    {tag::bgpPeerRemotePort, Written::AsRead},       {tag::bgpPeerLocalAddrScopeId, Written::AsRead},
    {tag::bgpPeerConfigDropWarn, Written::DropWarn}, {tag::bgpPeerConfigMaxPrfx, Written::Profile},
};

constexpr Leaf kPeerAfiSafiLeaves[] = {
    {tag::bgpRmEntIndex, Written::RmIndex},
    {tag::bgpPeerLocalAddrType, Written::AsRead},
    {tag::bgpPeerLocalAddr, Written::AsRead},
    {tag::bgpPeerLocalPort, Written::AsRead},
    {tag::bgpPeerRemoteAddrType, Written::AsRead},
    {tag::bgpPeerRemoteAddr, Written::AsRead},
    {tag::bgpPeerRemotePort, Written::AsRead},
    {tag::bgpPeerLocalAddrScopeId, Written::AsRead},
    {tag::bgpPeerAfiSafiAfi, Written::AsRead},
    {tag::bgpPeerAfiSafiSafi, Written::AsRead},
    {tag::bgpPeerAfiSafiConfigDropWarn, Written::DropWarn},
};

struct Table {
    const char* path;
    const char* entries;  // the path of its list
    const char* read_failed;
    const char* write_failed;
    bool takes_profile;
    uint32_t entry;
    const Leaf* leaves;
    std::size_t leaf_count;

    // An entry is its leaves between its begin and its end.
    std::size_t width() const { return leaf_count + 2; }
};

constexpr Table kPeerTable = {"/DC-BGP-MIB/bgpPeerTable",
                              "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry",
                              "Failed to get bgpPeerTable err: %s",
                              "Failed to set bgpPeerTable err: %s",
                              true,
                              tag::bgpPeerEntry,
                              kPeerLeaves,
                              std::size(kPeerLeaves)};

constexpr Table kPeerAfiSafiTable = {"/DC-BGP-MIB/bgpPeerAfiSafiTable",
                                     "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry",
                                     "Failed to get BgpPeerAfiSafiTable err: %s",
                                     "Failed to set BgpPeerAfiSafiTable err: %s",
                                     false,
                                     tag::bgpPeerAfiSafiEntry,
                                     kPeerAfiSafiLeaves,
                                     std::size(kPeerAfiSafiLeaves)};

// The user's forwarding profile, its connection open as long as the object is there.
class UserProfile {
public:
    UserProfile() { resources_.get_user_profile(&record_); }
    int32_t number() const { return static_cast<int32_t>(record_.profile); }

private:
    FwdResources resources_;
    FwdTableUserData_s record_{};
};

// Asks for the leaves of the table's first entries.
void request(const Table& table, confd::TaggedValueArray& values, int rows)
{
    confd_tag_value_t* value = values.values();
    for (int row = 0; row < rows; ++row) {
        CONFD_SET_TAG_CDBBEGIN(value, table.entry, kNamespace, row);
        ++value;
        for (std::size_t i = 0; i < table.leaf_count; ++i, ++value) {
            CONFD_SET_TAG_NOEXISTS(value, table.leaves[i].tag);
            CONFD_SET_TAG_NS(value, kNamespace);
        }
        CONFD_SET_TAG_XMLEND(value, table.entry, kNamespace);
        ++value;
    }
}

// Replaces what was read by what is written; `begin` is the entry's begin.
void rewrite(const Table& table, confd_tag_value_t* begin, const std::optional<uint32_t>& rm_index,
             const std::optional<UserProfile>& profile)
{
    CONFD_SET_TAG_XMLBEGIN(begin, table.entry, kNamespace);
    for (std::size_t i = 0; i < table.leaf_count; ++i) {
        confd_value_t* const value = CONFD_GET_TAG_VALUE(&begin[1 + i]);
        const Written written = table.leaves[i].written;
        if (written == Written::AsRead || (written == Written::RmIndex && !rm_index)) {
            continue;
        }
        confd_free_value(value);
        if (written == Written::RmIndex) {
            CONFD_SET_UINT32(value, *rm_index);
        } else if (written == Written::DropWarn) {
            CONFD_SET_ENUM_VALUE(value, kWarn);
        } else {
            CONFD_SET_INT32(value, profile->number());
        }
    }
}

}  // namespace

// The router entity's new index, told apart from "none needed" (0) and "the local AS cannot be read" (-1) by 1.
static int get_rm_index(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, nzmw_log_t* log, uint32_t* rm_index)
{
    const confd::Transaction transaction{maapi_socket, thandle};

    confd::Value temp;
    if (cdb_get(cdb_socket, &temp, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntLocalAs", 0) != CONFD_OK) {
        nzmw_log_debug(log, "Failed to get local as number, err: %s\n", confd_lasterr());
        return -1;
    }
    BGP_REQUIRE_TYPE(__LINE__, &temp, C_UINT32);
    const uint32_t local_as = CONFD_GET_UINT32(&temp);
    if (cdb_exists(cdb_socket, "/bgp-internal/bgp-vrf{%u}/as-to-bgp-idx{%u}", mib::kGlobalVrf, local_as) == 1) {
        return 0;
    }
    const uint32_t component = libvrfid::VrfId::ComponentFromVrf(mib::kGlobalVrf);
    *rm_index = kNoRmIndex;
    for (const uint32_t candidate : {component, component + 1}) {
        if (transaction.exists("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}", candidate) == 1) {
            *rm_index = candidate;
            break;
        }
    }
    // The AS number stands where the old index would be expected; readers of the log know the line so.
    nzmw_log_debug(log, "Adjusting BGP Global RM index from %u to %u!\n", local_as, *rm_index);
    return 1;
}

static std::optional<uint32_t> new_rm_index(const confd::Handles& upgrade, nzmw_log_t* log)
{
    uint32_t rm_index = kNoRmIndex;
    const bool rekeyed = get_rm_index(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket, log, &rm_index) == 1;
    return rekeyed ? std::optional(rm_index) : std::nullopt;
}

static void update_table(const Table& table, const confd::Handles& upgrade, nzmw_log_t* log)
{
    const int rows = cdb_num_instances(upgrade.cdb_socket, table.entries);
    if (rows <= 0) {
        return;
    }
    confd::TaggedValueArray values(static_cast<std::size_t>(rows) * table.width());
    request(table, values, rows);
    if (cdb_get_values(upgrade.cdb_socket, values.values(), values.count(), table.path) != CONFD_OK) {
        nzmw_log_debug(log, table.read_failed, confd_lasterr());
    }
    const std::optional<uint32_t> rm_index = new_rm_index(upgrade, log);
    std::optional<UserProfile> profile;
    if (table.takes_profile) {
        profile.emplace();
    }
    for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row) {
        rewrite(table, values.values() + row * table.width(), rm_index, profile);
    }
    if (upgrade.transaction().set_values(values.values(), values.count(), table.path) != CONFD_OK) {
        nzmw_log_debug(log, table.write_failed, confd_lasterr());
    }
}

int32_t update_neigh_config_drop_warn(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, int32_t bgp_count)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();

    nzmw_log_debug(log, "enter %s\n", __func__);
    if (bgp_count == 0) {
        nzmw_log_debug(log, "No need to update config - exit %s\n", __func__);
        return 0;
    }
    const confd::Handles upgrade{maapi_socket, thandle, cdb_socket};
    update_table(kPeerTable, upgrade, log);
    update_table(kPeerAfiSafiTable, upgrade, log);
    nzmw_log_debug(log, "exit %s\n", __func__);
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
