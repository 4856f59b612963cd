// Where the router manager reports to: the log before the trace category, else nowhere.
#include "bgp_update/bgp_router_mgr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "conf_updt_log.h"
#include "device.h"

namespace {

using bgp_platform::Device;

TEST(BgpRouterMgr, WithALog_WritesToTheLog)
{
    Device device;
    BgpRouterMgr(nullptr, get_conf_updt_log_handle()).LogDebug("Calling %s for %u", "Create", 4000000000U);
    EXPECT_EQ(device.log(), std::vector<std::string>{"Calling Create for 4000000000"});
    EXPECT_TRUE(device.trace().empty());
}

TEST(BgpRouterMgr, WithATraceCategory_TracesAtLevelTenWithoutASourcePosition)
{
    Device device;
    BgpRouterMgr(nzmw_trace_register_category("bgp-app"), nullptr).LogDebug("row %d\n", -1);
    ASSERT_EQ(device.trace().size(), 1U);
    const bgp_platform::TraceLine& line = device.trace().front();
    EXPECT_EQ(line.category, "bgp-app");
    EXPECT_EQ(line.level, 10);
    EXPECT_EQ(line.text, "row -1\n");
    EXPECT_EQ(line.source, "");
    EXPECT_TRUE(device.log().empty());
}

TEST(BgpRouterMgr, WithBoth_WritesToTheLogOnly)
{
    Device device;
    BgpRouterMgr(nzmw_trace_register_category("bgp-app"), get_conf_updt_log_handle()).LogDebug("once");
    EXPECT_EQ(device.log(), std::vector<std::string>{"once"});
    EXPECT_TRUE(device.trace().empty());
}

TEST(BgpRouterMgr, WithNeither_IsSilent)
{
    Device device;
    BgpRouterMgr(nullptr, nullptr).LogDebug("%s", "nobody hears this");
    EXPECT_TRUE(device.log().empty());
    EXPECT_TRUE(device.trace().empty());
}

TEST(BgpRouterMgr, Layout_IsTheTraceCategoryThenTheLog)
{
    static_assert(std::is_standard_layout_v<BgpRouterMgr>);
    Device device;
    const nzmw_trace_category_t category = nzmw_trace_register_category("bgp-app");
    nzmw_log_t* const log = get_conf_updt_log_handle();
    const BgpRouterMgr manager(category, log);
    const void* members[2];
    static_assert(sizeof manager == sizeof members);
    std::memcpy(members, &manager, sizeof members);
    EXPECT_EQ(members[0], category);
    EXPECT_EQ(members[1], log);
}

}  // namespace
