// Log and trace lines: that they reach the device as they were written, and go nowhere without one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

#include "conf_updt_log.h"
#include "device.h"
#include "nzmw_log.h"
#include "nzmw_trace.h"
#include "zlog.h"

namespace {

using bgp_platform::Device;
using bgp_platform::TraceLine;
using testing::ElementsAre;
using testing::IsEmpty;

__attribute__((format(printf, 3, 4))) void trace(nzmw_trace_category_t category, int level, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    nzmw_vtrace(category, level, format, args);
    va_end(args);
}

__attribute__((format(printf, 2, 3))) void vlog(nzmw_log_t* log, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    nzmw_vlog_debug(log, format, args);
    va_end(args);
}

TEST(Log, Lines_ArriveInOrderWithNothingAddedOrCut)
{
    Device device;
    nzmw_log_t* const log = get_conf_updt_log_handle();
    nzmw_log_debug(log, "Starting BGP update\n");
    nzmw_log_debug(log, "Will create bgp router-id ");
    vlog(log, "Found %d BGP entities, err: %s", 2, "none");
    EXPECT_THAT(device.log(),
                ElementsAre("Starting BGP update\n", "Will create bgp router-id ", "Found 2 BGP entities, err: none"));
}

TEST(Log, LongLine_ArrivesWhole)
{
    Device device;
    const std::string text(100000, 'x');
    nzmw_log_debug(get_conf_updt_log_handle(), "<%s>", text.c_str());
    EXPECT_THAT(device.log(), ElementsAre("<" + text + ">"));
}

TEST(Log, WithoutALog_NothingIsWritten)
{
    Device device;
    nzmw_log_debug(nullptr, "lost");
    EXPECT_THAT(device.log(), IsEmpty());
}

TEST(Log, LineOfARefusedFormat_IsNotMadeWhereNoneIsKept)
{
    Device device;
    std::string seen;
    device.log_sink = [&seen](std::string_view line) { seen += line; };
    device.log_filter = [](const char* format) { return std::string(format) == "wanted %d\n"; };
    nzmw_log_t* const log = get_conf_updt_log_handle();
    vlog(log, "kept all the same\n");
    device.keep_reports(false);
    vlog(log, "refused %d\n", 1);
    vlog(log, "wanted %d\n", 2);
    EXPECT_EQ(seen, "kept all the same\nwanted 2\n");
    EXPECT_THAT(device.log(), ElementsAre("kept all the same\n"));
}

TEST(Log, Handle_IsTheSameWithAndWithoutADevice)
{
    nzmw_log_t* const before = get_conf_updt_log_handle();
    ASSERT_NE(before, nullptr);
    nzmw_log_debug(before, "to nobody %d", 1);
    Device device;
    EXPECT_EQ(get_conf_updt_log_handle(), before);
    nzmw_log_debug(before, "to the device %d", 2);
    EXPECT_THAT(device.log(), ElementsAre("to the device 2"));
}

TEST(Trace, Category_IsOneForEachName)
{
    nzmw_trace_category_t const app = nzmw_trace_register_category("bgp-app");
    ASSERT_NE(app, nullptr);
    EXPECT_EQ(nzmw_trace_register_category("bgp-app"), app);
    EXPECT_NE(nzmw_trace_register_category("bgp-other"), app);
    EXPECT_EQ(nzmw_trace_register_category(nullptr), nullptr);
}

TEST(Trace, Line_CarriesCategoryLevelAndText)
{
    Device device;
    trace(nzmw_trace_register_category("bgp-app"), 11, "Set next-index to %d", 7);
    ASSERT_EQ(device.trace().size(), 1U);
    const TraceLine& line = device.trace().front();
    EXPECT_EQ(line.category, "bgp-app");
    EXPECT_EQ(line.level, 11);
    EXPECT_EQ(line.text, "Set next-index to 7");
    EXPECT_EQ(line.source, "");
    EXPECT_EQ(line.function, "");
    EXPECT_EQ(line.line, 0);
}

TEST(Trace, LineWithASourcePosition_CarriesItToo)
{
    Device device;
    const std::string source = "src/daemon/bgp_utils.and more";
    const std::string function = "SetMaapiKeepalive(more)";
    zlog(nzmw_trace_register_category("bgp-app"), source.c_str(), 20, function.c_str(), 17, 384, 12, "Setting %d", 80);
    ASSERT_EQ(device.trace().size(), 1U);
    const TraceLine& line = device.trace().front();
    EXPECT_EQ(line.category, "bgp-app");
    EXPECT_EQ(line.level, 12);
    EXPECT_EQ(line.source, "src/daemon/bgp_utils");
    EXPECT_EQ(line.function, "SetMaapiKeepalive");
    EXPECT_EQ(line.line, 384);
    EXPECT_EQ(line.text, "Setting 80");
}

TEST(Trace, WithoutACategory_NothingIsWritten)
{
    Device device;
    trace(nullptr, 10, "lost");
    zlog(nullptr, "f", 1, "g", 1, 1, 10, "lost");
    EXPECT_THAT(device.trace(), IsEmpty());
}

TEST(Trace, WhereReportsAreNotKept_LinesGoNowhere)
{
    Device device;
    device.keep_reports(false);
    trace(nzmw_trace_register_category("bgp-app"), 10, "lost");
    EXPECT_THAT(device.trace(), IsEmpty());
}

TEST(Trace, WithoutADevice_LinesGoNowhere)
{
    nzmw_trace_category_t const category = nzmw_trace_register_category("bgp-app");
    trace(category, 10, "to nobody");
    const Device device;
    EXPECT_THAT(device.trace(), IsEmpty());
}

}  // namespace
