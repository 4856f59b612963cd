// An upgrade as a story: stored(...), upgrade() or run(step), then expectLog({...}) and expectChanges({...}), both
// compared whole.
//
//     TEST_F(RouterBgp, EntityWithoutClusterId_GetsTheOtherAttributes)
//     {
//         stored(bgp_entity("<bgpRmEntIndex>5</bgpRmEntIndex>..."));
//         EXPECT_EQ(run(update_router_bgp, 0), 0);
//         expectChanges({"create /router/bgp{65010}", ...});
//     }
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "device.h"

namespace bgp_test {

inline constexpr char kLocalAs[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs";

// Top elements in the load format's wrapper.
std::string config(std::string_view top_elements);

// A row of the BGP router entity table, from its leaves as XML.
std::string bgp_entity(std::string_view leaves);

// The text that confd_lasterr() has after a call failed: "cdb_get: item does not exist: /router/bgp{1}".
std::string error_text(std::string_view function, int code, std::string_view path, std::string_view detail = {});
std::string absent(std::string_view function, std::string_view path);   // CONFD_ERR_NOEXISTS
std::string planned(std::string_view function, std::string_view path);  // a failure of the device's fault plan

class UpdateTest : public testing::Test {
protected:
    // Gives a leaf or leaf-list of a module another type, to be called before anything is stored: the way to a value of
    // the wrong type. A name that the module has several times is told by its list, "vrf/name". Or makes a leaf-list a
    // leaf.
    void leafHasType(std::string_view module, std::string_view leaf, std::string_view type);
    void leafListIsLeaf(std::string_view module, std::string_view name);

    // Adds top elements to the stored configuration.
    void stored(std::string_view top_elements);

    // Runs update() and expects 0, or one step with further arguments behind its three handles. Gives the step's
    // result.
    void upgrade();
    template <typename Step, typename... Arguments>
    auto run(Step step, Arguments... arguments)
    {
        const bgp_platform::UpgradeHandles upgrade = open();
        return step(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket, arguments...);
    }

    // Opens the upgrade where it is not open yet.
    bgp_platform::UpgradeHandles open();

    // What the transaction has becomes the stored configuration; the next open() opens another.
    void commit();

    void expectLog(const std::vector<std::string>& lines);
    void expectChanges(const std::vector<std::string>& lines);
    void expectCalls(const std::vector<std::string>& lines);  // what the recorder has, once it was started
    void expectNothingLeftOpen();

    bgp_platform::Device& device();
    bgp_platform::capi::FaultPlan& faults() { return device().fault_plan(); }

private:
    std::string& moduleText(std::string_view module);

    std::vector<std::pair<std::string, std::string>> modules_;  // name and text, where they are not the platform's own
    std::optional<bgp_platform::Device> device_;
    std::optional<bgp_platform::UpgradeHandles> upgrade_;
};

// Lines one under another, control characters shown, for a comparison that tells the line that differs.
std::string listing(const std::vector<std::string>& lines);

}  // namespace bgp_test
