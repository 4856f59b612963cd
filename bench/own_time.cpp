// The upgrade library's own time: a step over rows that a platform answers for at once. The functions of the ConfD API
// that the step calls stand here, with canned answers and no store behind them, and come before the embedded platform's;
// log lines go nowhere. Prints one JSON document: nanoseconds of the library for each row, at several numbers of rows.
//
//     bgp-own-time
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include "bgp_update/rm_index.h"
#include "confd_cdb.h"
#include "confd_lib.h"
#include "confd_maapi.h"

namespace {

constexpr uint32_t kEntity = 5;
constexpr std::string_view kFullTables[] = {"/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry",
                                            "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry"};

uint32_t rows_of_table = 0;
uint32_t rows_left = 0;
std::size_t calls = 0;

bool is_full(const char* path)
{
    for (const std::string_view table : kFullTables) {
        if (table == path) {
            return true;
        }
    }
    return false;
}

double cpu_seconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

int answered()
{
    ++calls;
    return CONFD_OK;
}

}  // namespace

int cdb_get(int /*sock*/, confd_value_t* v, const char* /*fmt*/, ...)
{
    CONFD_SET_UINT32(v, 65000);
    return answered();
}

int cdb_exists(int /*sock*/, const char* /*fmt*/, ...)
{
    ++calls;
    return 0;
}

int maapi_init_cursor(int /*sock*/, int /*thandle*/, struct maapi_cursor* mc, const char* fmt, ...)
{
    *mc = maapi_cursor{};
    rows_left = is_full(fmt) ? rows_of_table : 0;
    return answered();
}

int maapi_get_next(struct maapi_cursor* mc)
{
    mc->n = rows_left == 0 ? 0 : 2;
    CONFD_SET_UINT32(&mc->keys[0], kEntity);
    CONFD_SET_UINT32(&mc->keys[1], rows_left);
    rows_left -= rows_left == 0 ? 0 : 1;
    return answered();
}

void maapi_destroy_cursor(struct maapi_cursor* mc)
{
    mc->n = 0;
}

int maapi_create(int /*sock*/, int /*thandle*/, const char* /*fmt*/, ...)
{
    return answered();
}

int maapi_set_elem(int /*sock*/, int /*thandle*/, confd_value_t* /*v*/, const char* /*fmt*/, ...)
{
    return answered();
}

int maapi_move(int /*sock*/, int /*thandle*/, confd_value_t* /*tokey*/, int /*n*/, const char* /*fmt*/, ...)
{
    return answered();
}

int confd_format_keypath(char* buf, int bufsiz, const char* /*fmt*/, ...)
{
    constexpr std::string_view kPath = "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{5 192.0.2.1}";
    std::snprintf(buf, static_cast<std::size_t>(bufsiz), "%s", kPath.data());
    return static_cast<int>(kPath.size());
}

int main()
{
    constexpr uint32_t kSizes[] = {10000, 100000, 1000000};
    const char* between = "{\"own\": [";
    for (const uint32_t rows : kSizes) {
        rows_of_table = rows;
        calls = 0;
        const double start = cpu_seconds();
        update_rm_index(-1, 1, -1, kEntity);
        const double seconds = cpu_seconds() - start;
        const double moved = 2.0 * rows;
        std::printf("%s[%u, %.0f, %.3f]", between, rows, seconds * 1e9 / moved, static_cast<double>(calls) / moved);
        between = ", ";
    }
    std::printf("]}\n");
    return 0;
}
