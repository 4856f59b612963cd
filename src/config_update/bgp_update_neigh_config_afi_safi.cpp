// Completes the neighbours' unicast address families: where a row of
// "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry" enables IPv4 unicast or IPv6 unicast and the neighbour has no row
// of the other, that row is created, disabled. Does nothing without a BGP router entity.
#include "bgp_update/neigh_config_afi_safi.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <tuple>

#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_cdb.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_neigh_config_afi_safi";
constexpr std::size_t kKeys = 10;
constexpr std::size_t kAfi = 8;       // the key's position
constexpr int kPrintedKeySize = 256;  // of a key printed for the log

constexpr char kEntry[] = "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{ %x %x %x %x %x %x %x %x %x %x }";
constexpr char kDisable[] =
    "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{ %x %x %x %x %x %x %x %x %x %x }/bgpPeerAfiSafiDisable";

struct NumberName {
    int32_t number;
    const char* name;
};

constexpr NumberName kAddressTypes[] = {{1, " ipv4"}, {2, " ipv6"}};

constexpr NumberName kAddressFamilies[] = {{0, " other"}, {1, " ipv4"}, {2, " ipv6"}, {25, " l2vpn"}};

constexpr NumberName kSubsequentFamilies[] = {{0, " none"},  {1, " unicast"},      {2, " multicast"},
                                              {3, " both"},  {4, " labeled"},      {65, " vpls"},
                                              {70, " evpn"}, {128, " mplsBgpVpn"}, {241, " private"}};

// A number that the table does not have prints nothing.
template <std::size_t n>
const char* name_in(const NumberName (&names)[n], int32_t number)
{
    const auto* const found =
        std::find_if(names, names + n, [number](const NumberName& name) { return name.number == number; });
    return found == names + n ? "" : found->name;
}

std::string printed(const confd_value_t* key)
{
    char text[kPrintedKeySize];
    confd_pp_value(text, kPrintedKeySize, key);
    return std::string(" ") + text;
}

// The keys of a row as a path takes them, each by its address.
std::array<confd_value_t*, kKeys> each(confd_value_t* keys)
{
    std::array<confd_value_t*, kKeys> addresses{};
    for (std::size_t i = 0; i < kKeys; ++i) {
        addresses[i] = &keys[i];
    }
    return addresses;
}

}  // namespace

static void bgp_afi_safi_key_print(std::string& text, confd_value_t* key0, confd_value_t* key1, confd_value_t* key2,
                                   confd_value_t* key3, confd_value_t* key4, confd_value_t* key5, confd_value_t* key6,
                                   confd_value_t* key7, confd_value_t* key8, confd_value_t* key9)
{
    BGP_REQUIRE_TYPE(__LINE__, key0, C_UINT32);
    text += std::to_string(CONFD_GET_UINT32(key0));
    BGP_REQUIRE_TYPE(__LINE__, key1, C_ENUM_VALUE);
    text += name_in(kAddressTypes, CONFD_GET_ENUM_VALUE(key1));
    text += printed(key2) + printed(key3);
    BGP_REQUIRE_TYPE(__LINE__, key4, C_ENUM_VALUE);
    text += name_in(kAddressTypes, CONFD_GET_ENUM_VALUE(key4));
    text += printed(key5) + printed(key6) + printed(key7);
    BGP_REQUIRE_TYPE(__LINE__, key8, C_ENUM_VALUE);
    text += name_in(kAddressFamilies, CONFD_GET_ENUM_VALUE(key8));
    BGP_REQUIRE_TYPE(__LINE__, key9, C_ENUM_VALUE);
    text += name_in(kSubsequentFamilies, CONFD_GET_ENUM_VALUE(key9));
}

// Creates the row with these keys and disables its address family; what else the row has is left to the data model.
static void create_disabled_entry(const confd::Transaction& transaction, const std::array<confd_value_t*, kKeys>& keys,
                                  nzmw_log_t* log)
{
    const int created = std::apply([&](auto... key) { return transaction.create(kEntry, key...); }, keys);
    if (created != CONFD_OK) {
        nzmw_log_debug(log, "Failed to create the disabled entry");
        return;
    }
    confd_value_t disabled;
    CONFD_SET_ENUM_VALUE(&disabled, mib::kTrue);
    const int set = std::apply([&](auto... key) { return transaction.set(&disabled, kDisable, key...); }, keys);
    nzmw_log_debug(log, set == CONFD_OK ? "Updated Succesfully" : "Update FAILED");
}

// Gives the row of an enabled address family its partner, the row of the other one.
static void complete_neighbor(const confd::Transaction& transaction, const maapi_cursor& mc, int32_t other_afi,
                              nzmw_log_t* log)
{
    nzmw_log_debug(log, "Found an ENABLED AF, must check if we have the other AF");
    confd_value_t partner[kKeys];
    std::copy_n(mc.keys, kKeys, partner);
    CONFD_SET_ENUM_VALUE(&partner[kAfi], other_afi);
    const std::array<confd_value_t*, kKeys> keys = each(partner);
    const int found = std::apply([&](auto... key) { return transaction.exists(kEntry, key...); }, keys);
    if (found == 1) {
        nzmw_log_debug(log, "Other AF entry for this NEIGHBOR already exists: Will not update");
        return;
    }
    nzmw_log_debug(log, "Other AF entry not found, must create it as a disabled one");
    create_disabled_entry(transaction, keys, log);
}

static void check_neigh_config_entry(int32_t maapi_socket, int32_t thandle, maapi_cursor& mc, nzmw_log_t* log)
{
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "enter %s\n", __func__);
    BGP_REQUIRE_TYPE(__LINE__, &mc.keys[8], C_ENUM_VALUE);
    const bool ipv4 = CONFD_GET_ENUM_VALUE(&mc.keys[8]) == mib::kIpv4;
    nzmw_log_debug(log, "Checking AF 'IPv%d Unicast':", ipv4 ? 4 : 6);
    confd::Value afi_disabled;
    const int read =
        std::apply([&](auto... key) { return transaction.get(&afi_disabled, kDisable, key...); }, each(mc.keys));
    if (read == CONFD_OK) {
        BGP_REQUIRE_TYPE(__LINE__, &afi_disabled, C_ENUM_VALUE);
        if (CONFD_GET_ENUM_VALUE(&afi_disabled) != mib::kTrue) {
            complete_neighbor(transaction, mc, ipv4 ? mib::kIpv6 : mib::kIpv4, log);
        }
    }
    nzmw_log_debug(log, "exit %s\n", __func__);
}

// The walk meets the rows that it creates itself as well; they are disabled and gain no partner.
static int32_t update_neigh_config_unused_AFs(int32_t maapi_socket, int32_t thandle, nzmw_log_t* log, int rows)
{
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "enter %s\n", __func__);
    nzmw_log_debug(log, "Will process '%d' neighbor entries\n", rows);
    confd::Cursor entries = transaction.cursor("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry");
    while (entries.next()) {
        maapi_cursor& mc = entries.position();
        std::string keys;
        std::apply([&](auto... key) { bgp_afi_safi_key_print(keys, key...); }, each(mc.keys));
        nzmw_log_debug(log, "Checking Entry: DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{%s}", keys.c_str());
        BGP_REQUIRE_TYPE(__LINE__, &mc.keys[9], C_ENUM_VALUE);
        if (CONFD_GET_ENUM_VALUE(&mc.keys[9]) != mib::kUnicast) {
            continue;
        }
        BGP_REQUIRE_TYPE(__LINE__, &mc.keys[8], C_ENUM_VALUE);
        const int32_t afi = CONFD_GET_ENUM_VALUE(&mc.keys[8]);
        if (afi == mib::kIpv4 || afi == mib::kIpv6) {
            check_neigh_config_entry(maapi_socket, thandle, mc, log);
        }
    }
    nzmw_log_debug(log, "exit %s\n", __func__);
    return 0;
}

int32_t update_neigh_config_afi_safi(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, int32_t bgp_count)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();

    nzmw_log_debug(log, "enter %s\n", __func__);
    if (bgp_count == 0) {
        nzmw_log_debug(log, "No need to update config - exit %s\n", __func__);
        return 0;
    }
    const int rows = cdb_num_instances(cdb_socket, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry");
    if (rows == 0) {
        nzmw_log_debug(log, "No afi table entries to update\n");
    } else {
        update_neigh_config_unused_AFs(maapi_socket, thandle, log, rows);
    }
    nzmw_log_debug(log, "exit %s\n", __func__);
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
