// Times what a rehearsal does inside one process: load, update and write of a configuration, single calls of the
// ConfD API on it, and how many calls each step makes. Prints one JSON document; bench/measure.py shows it.
//
//     bgp-bench CONFIG OUT
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bgp_update/update.h"
#include "confd_maapi.h"
#include "device.h"
#include "judge/failed_calls.h"
#include "judge/judgement.h"
#include "judge/stored_condition.h"
#include "judge/upgrade_steps.h"

namespace {

using bgp_platform::Datastore;
using bgp_platform::Device;

constexpr long kCalls = 20000;

// How large a configuration is.
struct Size {
    std::size_t entries = 0;  // of lists
    std::size_t values = 0;   // leaves that are set, and entries of leaf-lists
};

void measure(const bgp_platform::store::Row& row, Size* size)
{
    const bgp_platform::schema::Record& record = row.record();
    for (std::size_t slot = 0; slot < record.values.size(); ++slot) {
        size->values += !row.value(static_cast<uint16_t>(slot)).absent();
    }
    for (const bgp_platform::schema::Node* list : record.lists) {
        size->entries += list->kind == bgp_platform::schema::NodeKind::List ? row.list(list->slot).size() : 0;
        row.list(list->slot).for_each([size](const bgp_platform::store::Row& entry) { measure(entry, size); });
    }
}

double cpu_seconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Of this program alone: getrusage() begins with what the process took before it became this program.
long peak_kilobytes()
{
    std::ifstream status("/proc/self/status");
    long kilobytes = 0;
    for (std::string word; status >> word;) {
        if (word == "VmHWM:" && status >> kilobytes) {
            return kilobytes;
        }
    }
    throw std::runtime_error("/proc/self/status tells of no peak memory");
}

template <typename Work>
double timed(Work&& work)
{
    const double start = cpu_seconds();
    work();
    return cpu_seconds() - start;
}

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

void print_steps(const bgp_rehearse::UpgradeSteps& steps)
{
    std::printf("\"steps\": {");
    const char* between = "";
    for (const bgp_rehearse::Step& step : steps.all()) {
        if (step.runs > 0) {
            std::printf("%s\"%s\": [%zu, %zu]", between, step.name, step.calls.reads, step.calls.writes);
            between = ", ";
        }
    }
    std::printf("},\n");
}

// What a rehearsal does besides to judge an upgrade: an upgrade that keeps a history and what failed, and the judgement.
void print_judgement(Device& device)
{
    using namespace bgp_rehearse;
    device.keep_history(true);
    UpgradeSteps steps([&] { return totals_of(device.calls()); }, conditions_on(device));
    device.log_sink = [&](std::string_view line) {
        if (steps.take(line)) {
            device.history()->set_writer(static_cast<bgp_platform::store::Writer>(steps.current_number()));
        }
    };
    FailedCalls failed_calls;
    device.recorder().after_failure = [&](const bgp_platform::capi::Failure& failure) {
        failed_calls.add(steps.current(), failure.function, failure.error, failure.path, failure.message,
                         failure.number);
    };
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    int result = 0;
    const double run = timed([&] { result = update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket); });
    steps.returned();
    const std::vector<Step> all = steps.all();
    const double judgement = timed([&] { judge({device, result, all, failed_calls, {}, {}, {}}, {}); });
    std::printf("\"judged_update\": %.4f, \"judge\": %.4f,\n", run, judgement);
    device.drop();
    device.keep_history(false);
    device.recorder().after_failure = nullptr;
    device.log_sink = nullptr;
}

void measure(const char* configuration, const char* output)
{
    Device device;
    device.keep_reports(false);
    const long empty = peak_kilobytes();
    const double load = timed([&] { device.load_file(configuration); });
    Size size;
    measure(device.configuration(Datastore::Stored).root(), &size);
    std::printf("{\"load\": %.4f, \"loaded_kilobytes\": %ld, \"entries\": %zu, \"values\": %zu,\n", load,
                peak_kilobytes() - empty, size.entries, size.values);

    bgp_rehearse::UpgradeSteps steps([&] { return bgp_rehearse::totals_of(device.calls()); });
    device.log_sink = [&](std::string_view line) { steps.take(line); };
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    const double run = timed([&] { update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket); });
    steps.returned();
    const int descriptor = open(output, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const double write = timed([&] { device.write(Datastore::Transaction, descriptor); });
    close(descriptor);
    std::printf("\"update\": %.4f, \"write\": %.4f,\n", run, write);
    print_steps(steps);
    device.drop();
    device.log_sink = nullptr;
    print_judgement(device);
    print_call_times(device);
    std::printf("}\n");
}

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 3) {
        std::fprintf(stderr, "usage: bgp-bench CONFIG OUT\n");
        return 2;
    }
    measure(argv[1], argv[2]);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "bgp-bench: %s\n", error.what());
    return 1;
}
