#include "call_times.h"

#include <cstdio>
#include <stdexcept>

#include "confd_maapi.h"
#include "timed.h"

namespace bgp_bench {

namespace {

using bgp_platform::Device;

constexpr long kCalls = 20000;

// The list that single calls are tried on: the largest that the configuration has.
struct Rows {
    const char* list;
    const char* row;   // a row by its keys
    const char* leaf;  // of every row
};
constexpr Rows kLists[] = {
    {"/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{%*x}",
     "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{%*x}/bgpPeerAdminStatus"},
    {"/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry",
     "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry{%*x}",
     "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry{%*x}/aallPreAccessListIncluded"}};

// Calls `visit(cursor)` for up to kCalls rows; returns the rows.
template <typename Visit>
long each_row(const bgp_platform::UpgradeHandles& upgrade, const Rows& rows, Visit&& visit)
{
    maapi_cursor cursor;
    if (maapi_init_cursor(upgrade.maapi_socket, upgrade.thandle, &cursor, rows.list) != CONFD_OK) {
        throw std::runtime_error(confd_lasterr());
    }
    long count = 0;
    while (count < kCalls && maapi_get_next(&cursor) == CONFD_OK && cursor.n > 0) {
        visit(cursor);
        ++count;
    }
    maapi_destroy_cursor(&cursor);
    return count;
}

void expect_ok(int result)
{
    if (result != CONFD_OK) {
        throw std::runtime_error(confd_lasterr());
    }
}

// Moves a row to a key that no row has, and back again: two moves.
void move_there_and_back(const bgp_platform::UpgradeHandles& upgrade, const Rows& rows, const maapi_cursor& cursor)
{
    confd_value_t to[MAXKEYLEN];
    for (int i = 0; i < cursor.n; ++i) {
        to[i] = cursor.keys[i];
    }
    confd_value_t& last = to[cursor.n - 1];
    if (last.type == C_UINT32) {
        last.val.u32 = 4000000000U;
    } else {
        last.val.i32 = 2000000000;
    }
    confd_value_t* const keys = const_cast<confd_value_t*>(cursor.keys);  // only read
    expect_ok(maapi_move(upgrade.maapi_socket, upgrade.thandle, to, cursor.n, rows.row, cursor.n, keys));
    expect_ok(maapi_move(upgrade.maapi_socket, upgrade.thandle, keys, cursor.n, rows.row, cursor.n, to));
}

}  // namespace

// Nanoseconds of each call, with the cursor's step taken off that every one of them comes with.
void print_call_times(Device& device)
{
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    const Rows& rows =
        maapi_num_instances(upgrade.maapi_socket, upgrade.thandle, kLists[0].list) > 0 ? kLists[0] : kLists[1];
    long count = 0;
    const double steps = timed([&] { count = each_row(upgrade, rows, [](const maapi_cursor&) {}); });
    if (count == 0) {
        throw std::runtime_error("the configuration has neither neighbours nor prefix rules");
    }
    const auto per_call = [&](double seconds) { return seconds * 1e9 / static_cast<double>(count); };
    const double step = per_call(steps);
    const auto call = [&](auto&& work) { return per_call(timed([&] { each_row(upgrade, rows, work); })) - step; };
    const double read = call([&](const maapi_cursor& cursor) {
        confd_value_t value;
        expect_ok(maapi_get_elem(upgrade.maapi_socket, upgrade.thandle, &value, rows.leaf, cursor.n, cursor.keys));
        confd_free_value(&value);
    });
    const double write = call([&](const maapi_cursor& cursor) {
        confd_value_t value;
        CONFD_SET_ENUM_VALUE(&value, 2);
        expect_ok(maapi_set_elem(upgrade.maapi_socket, upgrade.thandle, &value, rows.leaf, cursor.n, cursor.keys));
    });
    const double move = call([&](const maapi_cursor& cursor) { move_there_and_back(upgrade, rows, cursor); }) / 2;
    device.drop();
    std::printf("\"calls\": {\"rows\": %ld, \"step\": %.0f, \"read\": %.0f, \"write\": %.0f, \"move\": %.0f}\n", count,
                step, read, write, move);
}

}  // namespace bgp_bench
