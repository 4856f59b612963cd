// The fault path: call stack, report, exit status 1, in this order.
#include "confd/fault.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "confd_cdb.h"
#include "device.h"

namespace {

using bgp_platform::Device;

// Shows each report on standard error, with the number of call stacks written before it.
void show_faults(Device& device)
{
    device.fault_sink = [&device](const bgp_platform::Fault& fault) {
        std::cerr << device.backtraces() << " backtrace, then " << fault.severity << ", " << fault.function << ", "
                  << fault.source << ", " << fault.line << ", " << fault.text.size() << " <" << fault.text << ">"
                  << std::endl;
    };
}

TEST(FaultPathDeath, GivenText_IsReportedAsItStands)
{
    Device device;
    show_faults(device);
    EXPECT_EXIT(confd::fault("Create", "src/daemon/bgp_router_mgr", 325, ""), testing::ExitedWithCode(1),
                "^1 backtrace, then 1, Create, src/daemon/bgp_router_mgr, 325, 0 <>\n$");
}

TEST(FaultPathDeath, LastError_IsReportedWithItsCodeAndText)
{
    Device device;
    show_faults(device);
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    confd_value_t value;
    ASSERT_EQ(cdb_get(upgrade.cdb_socket, &value, "/prefix-list-internal/name-next-index"), CONFD_ERR);
    const std::string text = "error\\[1\\]: cdb_get: item does not exist: /prefix-list-internal/name-next-index \n";
    EXPECT_EXIT(confd::fault_last_error("CreateJoinEntries", "src/daemon/bgp_router_mgr", 250),
                testing::ExitedWithCode(1),
                "^1 backtrace, then 1, CreateJoinEntries, src/daemon/bgp_router_mgr, 250, [0-9]+ <" + text + ">\n$");
}

TEST(FaultPathDeath, LongError_IsCutToTheReportsSize)
{
    Device device;
    show_faults(device);
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    const std::string name(400, 'x');
    confd_value_t value;
    ASSERT_EQ(cdb_get(upgrade.cdb_socket, &value, "/prefix-list{%s}/seq{1}/ge", name.c_str()), CONFD_ERR);
    EXPECT_EXIT(confd::fault_last_error("Create", "src/daemon/bgp_router_mgr", 388), testing::ExitedWithCode(1),
                "388, 349 <error\\[1\\]: cdb_get: item does not exist: /prefix-list\\{x+>\n$");
}

}  // namespace
