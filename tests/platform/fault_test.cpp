// Faults: reports that return, call stacks that are counted, and assertions that end the process the way libc ends it
// and are told to the device before.
#undef NDEBUG  // the getters under test assert in every kind of build
#include <assert.h>
#include <dlfcn.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "confd_lib.h"
#include "device.h"
#include "nzmw_backtrace.h"
#include "nzmw_fault.h"

namespace {

using bgp_platform::Device;
using bgp_platform::Fault;
using testing::KilledBySignal;

constexpr char kExpression[] = "(&temp)->type == C_UINT32";
constexpr char kSource[] = "src/config_update/bgp_update";
constexpr char kSignature[] = "int32_t update_bgp_pfx(int32_t, int32_t, int32_t, int, nzmw_log_t*)";

// What libc prints, behind the program's name.
std::string printed(const std::string& rest)
{
    return std::string(program_invocation_short_name) + ": " + rest + "\n";
}

std::string assertion_line()
{
    return printed(
        "src/config_update/bgp_update:80: int32_t update_bgp_pfx(int32_t, int32_t, int32_t, int, nzmw_log_t*): "
        "Assertion `(&temp)->type == C_UINT32' failed.");
}

TEST(Fault, Report_ReachesTheDeviceAndReturns)
{
    Device device;
    nzmw_gen_fault(1, "StartCdbSession", "src/daemon/bgp_utils", 397, "Could not convert 127.0.0.1 to IPv4");
    ASSERT_EQ(device.faults().size(), 1U);
    const Fault& fault = device.faults().front();
    EXPECT_EQ(fault.kind, Fault::Kind::Fault);
    EXPECT_EQ(fault.severity, 1);
    EXPECT_EQ(fault.function, "StartCdbSession");
    EXPECT_EQ(fault.source, "src/daemon/bgp_utils");
    EXPECT_EQ(fault.line, 397U);
    EXPECT_EQ(fault.text, "Could not convert 127.0.0.1 to IPv4");
}

TEST(Fault, ReportWithoutTexts_IsKeptWithEmptyOnes)
{
    Device device;
    nzmw_gen_fault(1, nullptr, nullptr, 0, nullptr);
    ASSERT_EQ(device.faults().size(), 1U);
    EXPECT_EQ(device.faults().front().function, "");
    EXPECT_EQ(device.faults().front().text, "");
}

TEST(Fault, CallStacks_AreCounted)
{
    Device device;
    EXPECT_EQ(device.backtraces(), 0U);
    nzmw_print_backtrace();
    nzmw_print_backtrace();
    EXPECT_EQ(device.backtraces(), 2U);
}

TEST(Fault, WithoutADevice_ReportsGoNowhere)
{
    nzmw_print_backtrace();
    nzmw_gen_fault(1, "f", "s", 1, "to nobody");
    const Device device;
    EXPECT_TRUE(device.faults().empty());
    EXPECT_EQ(device.backtraces(), 0U);
}

using AssertFail = void (*)(const char*, const char*, unsigned int, const char*);

AssertFail libc_assert_fail()
{
    void* const libc = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
    return libc == nullptr ? nullptr : reinterpret_cast<AssertFail>(dlsym(libc, "__assert_fail"));
}

TEST(FaultDeathTest, FailedAssertion_PrintsLibcsLineAndAborts)
{
    EXPECT_EXIT(__assert_fail(kExpression, kSource, 80, kSignature), KilledBySignal(SIGABRT),
                testing::Eq(assertion_line()));
}

TEST(FaultDeathTest, LibcItself_PrintsTheSameLine)
{
    const AssertFail libc = libc_assert_fail();
    ASSERT_NE(libc, nullptr);
    ASSERT_NE(libc, static_cast<AssertFail>(__assert_fail));
    EXPECT_EXIT(libc(kExpression, kSource, 80, kSignature), KilledBySignal(SIGABRT), testing::Eq(assertion_line()));
}

TEST(FaultDeathTest, AssertionOutsideAnyFunction_LeavesTheFunctionOut)
{
    EXPECT_EXIT(__assert_fail("ready", "clock", 3, nullptr), KilledBySignal(SIGABRT),
                testing::Eq(printed("clock:3: Assertion `ready' failed.")));
}

TEST(FaultDeathTest, FailedAssertion_IsToldToTheDeviceFirst)
{
    const auto fail = [] {
        Device device;
        device.fault_sink = [](const Fault& fault) {
            std::fprintf(stderr, "%s|%d|%s|%u|%s|%s\n", fault.kind == Fault::Kind::Assertion ? "assertion" : "fault",
                         fault.severity, fault.source.c_str(), fault.line, fault.function.c_str(), fault.text.c_str());
        };
        __assert_fail(kExpression, kSource, 80, kSignature);
    };
    const std::string told =
        std::string("assertion|0|") + kSource + "|80|" + kSignature + "|" + kExpression + "\n" + assertion_line();
    EXPECT_EXIT(fail(), KilledBySignal(SIGABRT), testing::Eq(told));
}

// A value's getter is an ordinary assertion of the program that uses it.
uint32_t number_of(const confd_value_t& temp)
{
    return CONFD_GET_UINT32(&temp);
}

TEST(FaultDeathTest, GetterOfAnotherType_AssertsTheTypeOfItsArgument)
{
    confd_value_t value;
    CONFD_SET_INT32(&value, 1);
    EXPECT_EXIT(number_of(value), KilledBySignal(SIGABRT),
                testing::EndsWith("Assertion `(&temp)->type == C_UINT32' failed.\n"));
    CONFD_SET_UINT32(&value, 5);
    EXPECT_EQ(number_of(value), 5U);
}

}  // namespace
