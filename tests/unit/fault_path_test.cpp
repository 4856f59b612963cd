// The fault path: call stack, report, exit status 1, in this order.
#include "confd/fault.h"

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "confd_cdb.h"
#include "device.h"

static constexpr char kSource[] = "src/somewhere/a_source";

static int entry_point(std::size_t count)
try {
    return static_cast<int>(std::vector<int>(count).size());
}
BGP_FAULT_ON_EXCEPTION(__func__)
static const std::string kGuardLine = std::to_string(__LINE__ - 1);

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

// A class whose members throw in the making, and an operation that throws what it is given.
class Guarded {
public:
    explicit Guarded(std::size_t count)
    try : numbers_(count) {
    }
    BGP_FAULT_ON_EXCEPTION(__func__)

    template <typename Thrown>
    int operation(Thrown thrown)
    try {
        throw std::move(thrown);
    }
    BGP_FAULT_ON_EXCEPTION("Guarded::operation")

private:
    std::vector<int> numbers_;
};

constexpr std::size_t kTooMany = static_cast<std::size_t>(-1) / sizeof(int);

TEST(FaultGuard, FunctionThatThrowsNothing_GivesItsResult)
{
    EXPECT_EQ(entry_point(3), 3);
}

TEST(FaultGuardDeath, ExceptionOfAFunction_IsReportedUnderItsNameAndTheGuardsLine)
{
    Device device;
    show_faults(device);
    EXPECT_EXIT(
        entry_point(kTooMany), testing::ExitedWithCode(1),
        "^1 backtrace, then 1, entry_point, src/somewhere/a_source, " + kGuardLine + ", [0-9]+ <.*vector.*>\n$");
}

TEST(FaultGuardDeath, ExceptionOfAMembersConstructor_IsReportedUnderTheClass)
{
    Device device;
    show_faults(device);
    EXPECT_EXIT(Guarded{kTooMany}, testing::ExitedWithCode(1), "1, Guarded, src/somewhere/a_source, [0-9]+, .*vector");
}

TEST(FaultGuardDeath, ExceptionOfAnOperation_IsReportedUnderTheNameGiven)
{
    Device device;
    show_faults(device);
    EXPECT_EXIT(Guarded{1}.operation(std::bad_alloc()), testing::ExitedWithCode(1),
                "1, Guarded::operation, src/somewhere/a_source, [0-9]+, 14 <std::bad_alloc>\n$");
}

TEST(FaultGuardDeath, ExceptionOfAnUnknownType_IsReportedAsSuch)
{
    Device device;
    show_faults(device);
    EXPECT_EXIT(Guarded{1}.operation(7), testing::ExitedWithCode(1), "<an exception of a type that is not known>\n$");
}

}  // namespace
