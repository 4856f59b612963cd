#include "generate/healthy/redistribution.h"

#include <string_view>

#include "generate/healthy/vrf.h"

namespace bgp_generator::healthy {

namespace {

using Visit = std::function<void(const Redistribution&)>;

// A rule's number: the source in the upper octet, the instance that is handed the routes below.
constexpr uint32_t kInstanceBits = 24;
constexpr uint32_t kBgp = 2;
constexpr uint32_t kStatic = 3;
constexpr uint32_t kConnected = 4;
constexpr uint32_t kOspf = 5;
constexpr uint32_t kOspfProcesses = 0x10000;

constexpr uint32_t kNetworks[] = {0xC6336400, 0xCB007100, 0xC0000200};  // 198.51.100.0, 203.0.113.0, 192.0.2.0

Redistribution into_bgp(const Router& router, uint32_t rtm_index, uint32_t source)
{
    constexpr const char* kSources[] = {"", "", "bgp", "netmgmt", "local", "ospf"};
    Redistribution rule;
    rule.rtm_index = rtm_index;
    rule.entry = (source << kInstanceBits) + router.entity;
    rule.source = kSources[source];
    rule.instance = router.entity;
    return rule;
}

Redistribution into_ospf(uint32_t rtm_index, uint32_t process, uint32_t ospf_index)
{
    Redistribution rule;
    rule.rtm_index = rtm_index;
    rule.entry = (kBgp << kInstanceBits) + kOspfProcesses + process;
    rule.source = "bgp";
    rule.destination = "ospf";
    rule.instance = ospf_index;
    return rule;
}

// The number that the rule of static routes moves to when the entity's index becomes 1.
Redistribution in_the_way()
{
    Redistribution rule = into_ospf(1, kOspfProcess, kOspfIndex);
    rule.entry = (kStatic << kInstanceBits) + 1;
    rule.source = "netmgmt";
    return rule;
}

void visit_ipv4(const Router& router, const Visit& visit)
{
    Draw draw = router.draw(Subject::Redistribution, 1);
    if (router.ospf && draw.one_in(2)) {
        visit(into_ospf(1, kOspfProcess, kOspfIndex));
    }
    const bool edge = router.role == Role::Edge;
    const bool taken = router.has(Flaw::TakenRedistribution);
    if (taken) {
        visit(in_the_way());
    }
    if (edge || taken || draw.one_in(2)) {
        visit(into_bgp(router, 1, kStatic));
    }
    if (router.role == Role::Leaf || draw.one_in(2)) {
        visit(into_bgp(router, 1, kConnected));
    }
    if (router.ospf) {
        visit(into_bgp(router, 1, kOspf));
    }
    for (uint32_t i = 0; i < router.networks; ++i) {
        Redistribution rule = into_bgp(router, 1, kStatic);
        rule.entry = kFirstNetwork + i;
        rule.network = kNetworks[i];
        visit(rule);
    }
}

void visit_ipv6(const Router& router, const Visit& visit)
{
    if (router.ipv6 && router.draw(Subject::Redistribution, 2).one_in(2)) {
        Redistribution rule = into_bgp(router, 2, kConnected);
        rule.ipv6 = true;
        visit(rule);
    }
}

void visit_vrf(const Router& router, const Vrf& vrf, const Visit& visit)
{
    if (vrf.ospf_process == 0) {
        return;
    }
    Redistribution rule = into_ospf(vrf.rtm_index, vrf.ospf_process, vrf.ospf_index);
    rule.in_vrf = true;
    visit(rule);
    rule = into_bgp(router, vrf.rtm_index, kOspf);
    rule.in_vrf = true;
    visit(rule);
}

}  // namespace

bool Redistribution::into_bgp() const noexcept
{
    return destination == std::string_view("bgp");
}

void for_each_redistribution(const Router& router, const Visit& visit)
{
    if (router.role != Role::RouteReflector) {
        visit_ipv4(router, visit);
        visit_ipv6(router, visit);
    }
    for_each_vrf(router, [&](const Vrf& vrf) { visit_vrf(router, vrf, visit); });
}

}  // namespace bgp_generator::healthy
