// A device with a small configuration in which every function of the library finds its work, and the things that calls
// are given.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bgp_update/neighbor_entry.h"
#include "bgp_update/nz_confd_cdb_session.h"
#include "bgp_update/rm_index_entries.h"
#include "confd_maapi.h"
#include "device.h"

namespace bgp_test {

class Workbench {
public:
    Workbench();
    ~Workbench();
    Workbench(const Workbench&) = delete;
    Workbench& operator=(const Workbench&) = delete;

    // What the transaction has becomes the stored configuration, and another upgrade of it is open.
    void commit();

    // The row at which the table's cursor then stands, as an object of its class.
    template <typename Entry>
    void take_first_row(const char* table)
    {
        stand_on_first_row(table);
        row = std::make_unique<Entry>(maapi, thandle, table, cursor.keys, cursor.n);
    }
    void stand_on_first_row(const char* table);

    bgp_platform::Device device;
    int maapi = -1;
    int thandle = -1;
    int cdb = -1;
    confd_trans_ctx* tctx = nullptr;
    std::string vrf = "red";
    std::string name = "customers of the north";  // longer than a std::string holds in place
    confd_value_t value{};                        // an IPv4 address, or what owns its memory
    confd_value_t enumerated{};                   // 1
    confd_value_t out{};
    confd_value_t more_out{};
    std::vector<confd_value_t> batch;  // a row of the prefix access lists
    maapi_cursor cursor{};
    std::unique_ptr<confd_hkeypath_t> keypath;
    std::unique_ptr<BaseEntry> row;
    std::unique_ptr<BgpUtils::NeighborEntry> key;
    std::unique_ptr<NzConfdCdbSession> session;
    int sock = -1;

private:
    void open();
};

}  // namespace bgp_test
