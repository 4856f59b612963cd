// Private CDB sessions, the keepalive of long transactions, and the release of values.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <iostream>

#include "bgp_update/bgp_utils.h"
#include "confd_dp.h"
#include "device.h"

namespace {

time_t wall_clock = 0;
bool address_conversion_fails = false;

}  // namespace

// These two stand before libc's: a clock that the test sets, and an address conversion that can fail.
extern "C" int gettimeofday(timeval* now, void* /*zone*/) noexcept
{
    *now = {wall_clock, 999999};
    return 0;
}

extern "C" int inet_pton(int family, const char* text, void* address) noexcept
{
    if (address_conversion_fails) {
        return 0;
    }
    using Conversion = int (*)(int, const char*, void*);
    static const auto libc = reinterpret_cast<Conversion>(dlsym(RTLD_NEXT, "inet_pton"));
    return libc(family, text, address);
}

namespace {

using bgp_platform::Device;
using bgp_platform::capi::Function;

int fresh_socket()
{
    return socket(AF_INET, SOCK_STREAM, 0);
}

bool is_open(int descriptor)
{
    return fcntl(descriptor, F_GETFD) != -1;
}

std::vector<std::string> calls_of(Device& device)
{
    std::vector<std::string> calls;
    for (const auto& call : device.recorder().calls()) {
        calls.push_back(call.text());
    }
    return calls;
}

TEST(StartCdbSession, ReachableDaemon_GivesAReadSessionOnTheRunningDatastore)
{
    Device device;
    const int sock = fresh_socket();
    ASSERT_EQ(BgpUtils::StartCdbSession(sock), 0);
    EXPECT_EQ(cdb_num_instances(sock, "/prefix-list"), 0);
    EXPECT_EQ(BgpUtils::EndCdbSession(sock), 0);
    EXPECT_FALSE(is_open(sock));
    EXPECT_TRUE(device.open_things().none());
}

TEST(StartCdbSession, NobodyAtThePort_FailsAndClosesTheSocket)
{
    Device::Options elsewhere;
    elsewhere.port = CONFD_PORT + 1;
    Device device(elsewhere);
    const int sock = fresh_socket();
    EXPECT_EQ(BgpUtils::StartCdbSession(sock), -1);
    EXPECT_FALSE(is_open(sock));
}

TEST(StartCdbSession, ConnectionRefused_FailsAndClosesTheSocket)
{
    Device device;
    device.fault_plan().fail(Function::cdb_connect);
    const int sock = fresh_socket();
    EXPECT_EQ(BgpUtils::StartCdbSession(sock), -1);
    EXPECT_FALSE(is_open(sock));
    EXPECT_EQ(device.calls().of(Function::cdb_start_session), 0U);
}

TEST(StartCdbSession, SessionRefused_FailsAndClosesTheSocket)
{
    Device device;
    device.fault_plan().fail(Function::cdb_start_session);
    device.recorder().start();
    const int sock = fresh_socket();
    EXPECT_EQ(BgpUtils::StartCdbSession(sock), -1);
    EXPECT_FALSE(is_open(sock));
    const std::vector<std::string> expected = {"cdb_connect -> 0", "cdb_start_session -> -1 (internal error)",
                                               "cdb_close -> 0"};
    EXPECT_EQ(calls_of(device), expected);
    EXPECT_TRUE(device.open_things().none());
}

TEST(StartCdbSession, OtherEndClosing_IsAFailureToo)
{
    Device device;
    device.fault_plan().fail(Function::cdb_start_session, {}, bgp_platform::capi::PlannedFailure::end_of_file());
    const int sock = fresh_socket();
    EXPECT_EQ(BgpUtils::StartCdbSession(sock), -1);
    EXPECT_FALSE(is_open(sock));
}

TEST(StartCdbSessionDeath, AddressNotConverted_ReportsAFaultAndExits)
{
    Device device;
    device.fault_sink = [&device](const bgp_platform::Fault& fault) {
        std::cerr << "after " << device.backtraces() << " backtrace: " << fault.severity << ", " << fault.function
                  << ", " << fault.source << ", " << fault.line << ", <" << fault.text << ">" << std::endl;
    };
    address_conversion_fails = true;
    EXPECT_EXIT(BgpUtils::StartCdbSession(fresh_socket()), testing::ExitedWithCode(1),
                "^after 1 backtrace: 1, StartCdbSession, src/daemon/bgp_utils, 397, "
                "<Could not convert 127\\.0\\.0\\.1 to IPv4>\n$");
    address_conversion_fails = false;
}

TEST(EndCdbSession, SocketWithoutASession_IsClosedWithResultZero)
{
    Device device;
    const int sock = fresh_socket();
    ASSERT_EQ(BgpUtils::StartCdbSession(sock), 0);
    ASSERT_EQ(cdb_end_session(sock), CONFD_OK);
    EXPECT_EQ(BgpUtils::EndCdbSession(sock), 0);
    EXPECT_FALSE(is_open(sock));
}

TEST(EndCdbSession, EndAndCloseFailing_StillGiveZero)
{
    Device device;
    const int sock = fresh_socket();
    ASSERT_EQ(BgpUtils::StartCdbSession(sock), 0);
    device.fault_plan().fail(Function::cdb_end_session);
    device.fault_plan().fail(Function::cdb_close);
    device.recorder().start();
    EXPECT_EQ(BgpUtils::EndCdbSession(sock), 0);
    const std::vector<std::string> expected = {"cdb_end_session -> -1 (internal error)",
                                               "cdb_close -> -1 (internal error)"};
    EXPECT_EQ(calls_of(device), expected);
}

// Three copies of a text, each owning memory.
std::array<confd_value_t, 3> three_copies()
{
    std::array<confd_value_t, 3> copies{};
    confd_value_t text;
    CONFD_SET_STR(&text, "owned");
    for (confd_value_t& copy : copies) {
        confd_value_dup_to(&text, &copy);
    }
    return copies;
}

TEST(FreeConfdValues, Count_ReleasesSoManyFromTheFirst)
{
    Device device;
    std::array<confd_value_t, 3> copies = three_copies();
    ASSERT_EQ(device.open_things().values, 3U);
    BgpUtils::FreeConfdValues(copies.data(), 2);
    EXPECT_EQ(device.open_things().values, 1U);
    EXPECT_STREQ(CONFD_GET_STR(&copies[2]), "owned");
    BgpUtils::FreeConfdValues(&copies[2], 1);
    EXPECT_TRUE(device.open_things().none());
}

TEST(FreeConfdValues, ZeroOrNegativeCount_ReleasesNothing)
{
    Device device;
    std::array<confd_value_t, 3> copies = three_copies();
    BgpUtils::FreeConfdValues(copies.data(), 0);
    BgpUtils::FreeConfdValues(copies.data(), -3);
    BgpUtils::FreeConfdValues(nullptr, 0);
    EXPECT_EQ(device.open_things().values, 3U);
    BgpUtils::FreeConfdValues(copies.data(), 3);
}

// Runs a story in a process of its own, since the keepalive's interval is fixed once for the life of a process.
void in_fresh_process(const std::function<void(Device&, confd_trans_ctx*)>& story)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        Device device;
        device.open_upgrade();
        story(device, device.transaction_context());
        std::cout.flush();
        std::_Exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "see the failures of the process above";
}

TEST(SetMaapiKeepalive, FirstCall_ResetsTheTimeoutAtOnceToFourFifths)
{
    in_fresh_process([](Device& device, confd_trans_ctx* context) {
        EXPECT_EQ(BgpUtils::last_timeout, 0);
        wall_clock = 1700000000;
        EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 100), CONFD_OK);
        EXPECT_EQ(device.data_timeout(), 80);
        EXPECT_EQ(BgpUtils::last_timeout, 1700000000);
    });
}

TEST(SetMaapiKeepalive, WithinTheInterval_DoesNothing)
{
    in_fresh_process([](Device& device, confd_trans_ctx* context) {
        wall_clock = 1700000000;
        BgpUtils::SetMaapiKeepalive(context, 100);
        wall_clock += 79;
        EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 100), 0);
        EXPECT_EQ(device.data_timeout_calls(), 1U);
        EXPECT_EQ(device.trace().size(), 1U);
        EXPECT_EQ(BgpUtils::last_timeout, 1700000000);
    });
}

TEST(SetMaapiKeepalive, AfterTheInterval_ResetsWithTheFirstCallsInterval)
{
    in_fresh_process([](Device& device, confd_trans_ctx* context) {
        wall_clock = 1700000000;
        BgpUtils::SetMaapiKeepalive(context, 100);
        wall_clock += 10;
        EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 10), 0);
        EXPECT_EQ(device.data_timeout_calls(), 1U) << "a later timeout of 10 must not shorten the interval";
        wall_clock += 70;
        EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 10), CONFD_OK);
        EXPECT_EQ(device.data_timeout_calls(), 2U);
        EXPECT_EQ(device.data_timeout(), 80);
        EXPECT_EQ(BgpUtils::last_timeout, 1700000080);
    });
}

TEST(SetMaapiKeepalive, TimeoutBelowOneAndAQuarter_ResetsAtEveryCall)
{
    in_fresh_process([](Device& device, confd_trans_ctx* context) {
        wall_clock = 1700000000;
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 1.2), CONFD_OK);
        }
        EXPECT_EQ(device.data_timeout_calls(), 3U);
        EXPECT_EQ(device.data_timeout(), 0);
    });
}

TEST(SetMaapiKeepalive, Interval_IsCutToWholeSeconds)
{
    in_fresh_process([](Device& device, confd_trans_ctx* context) {
        wall_clock = 1700000000;
        BgpUtils::SetMaapiKeepalive(context, 12.4);  // 9.92
        EXPECT_EQ(device.data_timeout(), 9);
    });
}

TEST(SetMaapiKeepalive, FailedReset_IsReturnedAndItsTimeKept)
{
    in_fresh_process([](Device& device, confd_trans_ctx* context) {
        device.fault_plan().fail(Function::confd_data_set_timeout, {}, {}, 1);
        wall_clock = 1700000000;
        EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 100), CONFD_ERR);
        EXPECT_EQ(BgpUtils::last_timeout, 1700000000);
        wall_clock += 79;
        EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 100), 0);
        EXPECT_EQ(device.data_timeout_calls(), 0U);
    });
}

TEST(SetMaapiKeepalive, Reset_IsTracedWithItsSourcePosition)
{
    in_fresh_process([](Device& device, confd_trans_ctx* context) {
        wall_clock = 1700000000;
        BgpUtils::SetMaapiKeepalive(context, 100);
        ASSERT_EQ(device.trace().size(), 1U);
        const bgp_platform::TraceLine& line = device.trace().front();
        EXPECT_EQ(line.category, "bgp-app");
        EXPECT_EQ(line.level, 12);
        EXPECT_EQ(line.source, "src/daemon/bgp_utils");
        EXPECT_EQ(line.function, "SetMaapiKeepalive");
        EXPECT_EQ(line.line, 384);
        EXPECT_EQ(line.text, "Setting confd_data_set_timeout 80");
    });
}

TEST(SetMaapiKeepalive, LastTimeout_IsSharedByEveryCaller)
{
    in_fresh_process([](Device& device, confd_trans_ctx* context) {
        wall_clock = 1700000000;
        BgpUtils::last_timeout = wall_clock - 79;
        EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 100), 0);
        EXPECT_EQ(device.data_timeout_calls(), 0U);
        BgpUtils::last_timeout = wall_clock - 80;
        EXPECT_EQ(BgpUtils::SetMaapiKeepalive(context, 100), CONFD_OK);
        EXPECT_EQ(device.data_timeout_calls(), 1U);
    });
}

}  // namespace
