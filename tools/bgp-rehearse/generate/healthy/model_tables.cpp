// The command line's own model: the router with its VRFs, the map of redistribution rules; and the maps of instance
// indexes.
#include "generate/address_text.h"
#include "generate/healthy/redistribution.h"
#include "generate/healthy/tables.h"
#include "generate/healthy/vrf.h"

namespace bgp_generator::healthy {

namespace {

constexpr int32_t kBgpXmlTag = 555337807;
constexpr int32_t kOspfXmlTag = 1794178062;

// Customer sites: links of four addresses in 203.0.113.0/24, and of IPv6 where the VRF has that.
void write_neighbor(const Router& router, const Vrf& vrf, uint32_t site, XmlRows* rows)
{
    constexpr uint32_t kSites = 0xCB007100;
    Draw draw = router.draw(Subject::VrfNeighbors, uint64_t{vrf.index} << 8 | site);
    const bool ipv6 = vrf.ipv6 && (!vrf.ipv4 || draw.one_in(3));
    const uint32_t link = 4 * (vrf.index % 16 * 4 + site);
    rows->begin("neighbor");
    if (ipv6) {
        rows->leaf("address", link_ipv6_text(vrf.index << 8 | site));
    } else {
        rows->leaf("address", ipv4_text(kSites + link + 2));
        if (draw.one_in(2)) {
            rows->leaf("update-source-address", ipv4_text(kSites + link + 1));
        }
    }
    rows->leaf("remote-as", 65300 + draw.below(200));
    rows->leaf("description", vrf.name + " site " + std::to_string(site + 1));
    rows->end("neighbor");
}

void write_vrf(const Router& router, const Vrf& vrf, XmlRows* rows)
{
    rows->begin("vrf");
    rows->leaf("name", vrf.name);
    if (vrf.has_status) {
        rows->leaf("administrative-status", vrf.up ? "up" : "down");
    }
    if (vrf.ipv4) {
        rows->line("<address-family><afi>ipv4</afi><safi>unicast</safi></address-family>");
    }
    if (vrf.ipv6) {
        rows->line("<address-family><afi>ipv6</afi><safi>unicast</safi></address-family>");
    }
    for (uint32_t site = 0; site < vrf.neighbors; ++site) {
        write_neighbor(router, vrf, site, rows);
    }
    rows->end("vrf");
}

void write_router(const Router& router, XmlRows* rows)
{
    rows->open("router", R"( xmlns="urn:bgp-update:yang:router")");
    rows->begin("bgp");
    rows->leaf("as-number", router.as);
    if (!router.has(Flaw::NoRouterId)) {
        rows->leaf("router-id", ipv4_text(router.identifier));
    }
    rows->leaf("as-size", "fourOctet");
    rows->leaf("administrative-status", "up");
    rows->begin("bgp");
    rows->leaf("default-local-preference", 100);
    if (router.reflects) {
        rows->leaf("cluster-id", ipv4_text(router.identifier));
    }
    rows->end("bgp");
    for_each_vrf(router, [&](const Vrf& vrf) { write_vrf(router, vrf, rows); });
    rows->end("bgp");
    rows->close("router");
}

void write_protocol(const Redistribution& rule, XmlRows* rows)
{
    rows->begin("redist-protocol", R"( xmlns="urn:bgp-update:yang:redist-protocol")");
    rows->leaf("rtm-index", rule.rtm_index);
    rows->leaf("entry", rule.entry);
    rows->leaf("protocol-xmltag", rule.into_bgp() ? kBgpXmlTag : kOspfXmlTag);
    rows->leaf("protocol-index", rule.instance);
    rows->end("redist-protocol");
}

}  // namespace

// An announced network is no protocol, and the map of rules leaves it out.
void write_command_line_model(const Router& router, XmlRows* rows)
{
    if (router.model) {
        write_router(router, rows);
    }
    for_each_redistribution(router, [&](const Redistribution& rule) {
        if (rule.network == 0) {
            write_protocol(rule, rows);
        }
    });
}

// An upgrade numbers the global instance 0, or 1 where the entity had index 1 before.
void write_index_maps(const Router& router, XmlRows* rows)
{
    if (router.role != Role::Upgraded) {
        return;
    }
    const uint32_t instance = router.draw(Subject::Hidden).below(2);
    rows->open("bgp-internal", R"( xmlns="urn:bgp-update:yang:bgp-internal")");
    rows->begin("bgp-vrf");
    rows->leaf("vrf-idx", 0);
    rows->leaf("bgp-next-index", instance + 1);
    rows->begin("as-to-bgp-idx");
    rows->leaf("as", router.as);
    rows->leaf("inst-idx", instance);
    rows->end("as-to-bgp-idx");
    rows->begin("idx-to-bgp-as");
    rows->leaf("idx", instance);
    rows->leaf("as-number", router.as);
    rows->end("idx-to-bgp-as");
    rows->end("bgp-vrf");
    rows->close("bgp-internal");
}

}  // namespace bgp_generator::healthy
