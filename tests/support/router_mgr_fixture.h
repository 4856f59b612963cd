// The router manager at work, as a story: the host's interfaces, the manager with the upgrade's log, the transaction of
// a device, and what a fault leaves behind.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bgp_update/bgp_router_mgr.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace bgp_test {

// The host's IPv4 addresses, in the order in which its interfaces are listed.
void interfaces(bgp_platform::Device& device, const std::vector<const char*>& addresses);

// Rows of a list as XML: each element under `entry` from the leaves given.
std::string rows(std::string_view entry, const std::vector<std::string>& leaves);

// A DC-BGP-MIB table, or another module's, around its rows.
std::string table(std::string_view module, std::string_view table, std::string_view rows);

// Rows of "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry" by their keys; routing-manager entities that have nothing but
// their index.
std::string configs(const std::vector<std::pair<const char*, const char*>>& keys);
std::string entities(const std::vector<const char*>& indexes);

// From here on a fault shows on standard error as "fault 1 Create src/daemon/bgp_router_mgr:388 <text>", followed by
// "writes N" and, at the end of the process, "writes N at exit": what the program wrote (or tried to) until then.
void show_faults_and_writes(bgp_platform::Device& device);

class RouterMgrTest : public UpdateTest {
protected:
    BgpRouterMgr manager();
    confd_trans_ctx* context();

    // Creates an instance with the upgrade's transaction.
    int create(uint32_t index, uint32_t as, const std::string& path, const std::string& vrf_name);

    // Writes and keepalives that the recorder has, each with its result.
    std::vector<std::string> recordedWrites();
};

class RemoveTest : public RouterMgrTest {
protected:
    // Removes an instance; without secondary tables the list of them is null.
    int remove(uint32_t index, std::vector<const char*> tables);
    int remove(uint32_t index, std::vector<const char*> tables, std::vector<const char*> secondary_tables);
};

}  // namespace bgp_test
