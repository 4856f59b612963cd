// Creation and removal for instances of any index among others: a removed instance leaves the configuration as it was
// before its creation, apart from its RTM entities and their joins with themselves; and the walk of a table takes and
// tells of the rows that a plain model of it does.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "conf_updt_log.h"
#include "confd_maapi.h"
#include "libvrfid.h"
#include "support/change_lines.h"
#include "support/router_mgr_fixture.h"

namespace {

using bgp_platform::Device;
using bgp_platform::UpgradeHandles;

// Every table whose rows are keyed by the entity index.
const char* kTables[] = {"/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry",
                         "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry",
                         "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry",
                         "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry",
                         "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry",
                         "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry",
                         "/DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry",
                         "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry",
                         "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry",
                         "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry",
                         "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get",
                         "/internal/neighbor-valid-hidden",
                         nullptr};

constexpr char kConfigs[] = "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry";

// Instances crowd together, so that one often stands next to another or shares its VRF.
rc::Gen<uint32_t> any_index()
{
    return rc::gen::map(rc::gen::pair(rc::gen::inRange<uint32_t>(0, 3), rc::gen::inRange<uint32_t>(1, 7)),
                        [](const std::pair<uint32_t, uint32_t>& place) { return place.first * 65536 + place.second; });
}

uint32_t component_of(uint32_t index)
{
    return libvrfid::VrfId::ComponentFromVrf(libvrfid::VrfId::VrfFromComponent(index));
}

void create(Device& device, const UpgradeHandles& upgrade, uint32_t index, std::string vrf_name)
{
    BgpRouterMgr(nullptr, nullptr)
        .Create(upgrade.maapi_socket, upgrade.thandle, "/router/bgp{65010}", index, 65010, vrf_name.data());
    RC_ASSERT(device.faults().empty());
}

void add_config(const UpgradeHandles& upgrade, uint32_t entity, uint32_t config)
{
    RC_ASSERT(maapi_create(upgrade.maapi_socket, upgrade.thandle, "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{%u %u}",
                           entity, config) == CONFD_OK);
}

// What stays of an instance that had its VRF for itself, as lines of changes.
std::vector<std::string> left_behind(uint32_t index)
{
    const std::string component = std::to_string(component_of(index));
    const std::string component6 = std::to_string(component_of(index) + 1);
    std::vector<std::string> lines;
    for (const auto& [rtm, family] : {std::pair(component, "ipv4"), std::pair(component6, "ipv6")}) {
        const std::string entity = "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{" + rtm + "}";
        const std::string join = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{" + rtm + " " + rtm + " ariPrtnrRtm}";
        lines.push_back("create " + entity);
        lines.push_back("set " + entity + "/rtmEntityAddressFamily " + family);
        lines.push_back("set " + entity + "/rtmEntityI3Index 1");
        lines.push_back("set " + entity + "/rtmEntityAdminStat up");
        lines.push_back("create " + join);
        lines.push_back("set " + join + "/rtmMjSafi unicast");
        lines.push_back("set " + join + "/rtmMjAdminStatus up");
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

RC_GTEST_PROP(BgpRouterMgr, CreateThenRemove_LeavesTheConfigurationAsItWas, ())
{
    const auto index = *any_index();
    auto others = *rc::gen::container<std::set<uint32_t>>(any_index());
    others.erase(index);
    const auto named = *rc::gen::arbitrary<bool>();

    Device device;
    bgp_test::interfaces(device, {"192.0.2.1"});
    device.load_text(
        bgp_test::config("<router xmlns=\"urn:bgp-update:yang:router\"><bgp><as-number>65010</as-number>"
                         "<administrative-status>up</administrative-status></bgp></router>"
                         "<internal xmlns=\"urn:bgp-update:yang:metacli-internal\"><router-id-default-hidden>true"
                         "</router-id-default-hidden></internal>"));
    UpgradeHandles upgrade = device.open_upgrade();
    bool vrf_is_shared = false;
    for (const uint32_t other : others) {
        create(device, upgrade, other, other % 2 == 0 ? "red" : "");
        add_config(upgrade, other, 1);
        vrf_is_shared |= component_of(other) == component_of(index);
    }
    device.commit();
    upgrade = device.open_upgrade();

    create(device, upgrade, index, named ? "blue" : "");
    add_config(upgrade, index, 1);
    add_config(upgrade, index, 4000000000);
    RC_ASSERT(BgpRouterMgr(nullptr, nullptr)
                  .Remove(upgrade.maapi_socket, device.transaction_context(), index, 0, kTables, nullptr) == 0);

    std::vector<std::string> changes = bgp_test::change_lines(device);
    std::sort(changes.begin(), changes.end());
    RC_ASSERT(changes == (vrf_is_shared ? std::vector<std::string>() : left_behind(index)));
    RC_ASSERT(device.open_things().none());
}

RC_GTEST_PROP(BgpRouterMgr, WalkOfATable_TakesTheInstancesRowsAndTellsOfTheNextIndex, ())
{
    const auto index = *rc::gen::inRange<uint32_t>(1, 5);
    const auto keys = *rc::gen::container<std::set<std::pair<uint32_t, uint32_t>>>(
        rc::gen::pair(rc::gen::inRange<uint32_t>(0, 8), rc::gen::inRange<uint32_t>(0, 4)));

    Device device;
    UpgradeHandles upgrade = device.open_upgrade();
    for (const auto& [entity, config] : keys) {
        add_config(upgrade, entity, config);
    }
    device.commit();
    upgrade = device.open_upgrade();
    const char* tables[] = {kConfigs, nullptr};
    BgpRouterMgr(nullptr, get_conf_updt_log_handle())
        .Remove(upgrade.maapi_socket, device.transaction_context(), index, 0, tables, nullptr);

    std::vector<std::string> deleted;
    std::vector<std::string> told = {"Calling Remove for " + std::to_string(index),
                                     "Removing table " + std::string(kConfigs)};
    for (const auto& [entity, config] : keys) {
        const std::string row =
            std::string(kConfigs) + "{" + std::to_string(entity) + " " + std::to_string(config) + "}";
        if (entity == index) {
            deleted.push_back("delete " + row);
        } else if (entity == index + 1) {
            told.push_back("the table entry " + row + " does not belong to this BGP instance!");
        }
    }
    if (index == 1) {
        told.emplace_back("Calling ClearVpnRouteAddrType for 1");
    }
    RC_ASSERT(bgp_test::change_lines(device) == deleted);
    RC_ASSERT(device.log() == told);
    RC_ASSERT(device.open_things().none());
}

}  // namespace
