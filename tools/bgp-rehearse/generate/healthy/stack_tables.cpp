// The tables of the routing stack beside BGP: the RTM with its joins and rules, OSPF processes, the MPLS VPN entity.
#include "generate/address_text.h"
#include "generate/healthy/redistribution.h"
#include "generate/healthy/tables.h"
#include "generate/healthy/vrf.h"
#include "generate/mib_rows.h"

namespace bgp_generator::healthy {

namespace {

void write_rtm_entities(const Router& router, XmlRows* rows)
{
    rows->open("rtmEntityTable");
    write_rtm_entity(1, "ipv4", rows);
    write_rtm_entity(2, "ipv6", rows);
    for_each_vrf(router, [&](const Vrf& vrf) {
        write_rtm_entity(vrf.rtm_index, "ipv4", rows);
        write_rtm_entity(vrf.rtm_index + 1, "ipv6", rows);
    });
    rows->close("rtmEntityTable");
}

void write_stack_joins(const Router& router, XmlRows* rows)
{
    rows->open("rtmMjTable");
    for (const uint32_t rtm_index : {1U, 2U}) {
        write_rtm_join(rtm_index, rtm_index, "ariPrtnrRtm", rows);
        if (rtm_index == 1 || router.ipv6) {
            write_rtm_join(rtm_index, router.entity, "ariPrtnrBgp", rows);
        }
    }
    rows->close("rtmMjTable");
}

void write_rule(const Redistribution& rule, XmlRows* rows)
{
    rows->begin("rtmRedistEntry");
    rows->leaf("rtmRedistFteIndex", rule.rtm_index);
    rows->leaf("rtmRedistEntryId", rule.entry);
    rows->leaf("rtmRedistInfoDest", rule.destination);
    rows->leaf("rtmRedistAddrFilterType", rule.ipv6 ? "ipv6" : "ipv4");
    if (rule.network != 0) {
        rows->leaf("rtmRedistAddrFilter", ipv4_octets(rule.network));
        rows->leaf("rtmRedistAddrFilterLen", kNetworkLength);
    }
    rows->leaf("rtmRedistInfoSrc", rule.source);
    rows->leaf("rtmRedistRedistFlag", "redistribute");
    rows->leaf("rtmRedistAdminStat", "up");
    if (rule.in_vrf) {
        rows->leaf("rtmRedistOspfVpnPeCeSupport", "false");
    }
    rows->end("rtmRedistEntry");
}

void write_ospf_process(uint32_t index, XmlRows* rows)
{
    rows->begin("ospfPmEntEntry");
    rows->leaf("ospfPmEntIndex", index);
    rows->leaf("ospfPmEntVpnPeCeSupport", "false");
    rows->leaf("ospfPmEntAdminStatus", "up");
    rows->end("ospfPmEntEntry");
}

void write_ospf(const Router& router, XmlRows* rows)
{
    rows->open("DC-OSPF-MIB", R"( xmlns="http://tail-f.com/ns/mibs/DC-OSPF-MIB")");
    rows->open("ospfPmEntTable");
    if (router.ospf) {
        write_ospf_process(kOspfIndex, rows);
    }
    for_each_vrf(router, [&](const Vrf& vrf) {
        if (vrf.ospf_process != 0) {
            write_ospf_process(vrf.ospf_index, rows);
        }
    });
    rows->close("ospfPmEntTable");
    rows->close("DC-OSPF-MIB");
}

void write_mpls_vpn(const Router& router, XmlRows* rows)
{
    if (!router.mpls) {
        return;
    }
    rows->open("MPLS-VPN-MIB", R"( xmlns="http://tail-f.com/ns/mibs/MPLS-VPN-MIB")");
    rows->open("mplsVpnEntTable");
    rows->begin("mplsVpnEntEntry");
    rows->leaf("mplsVpnEntIndex", 1);
    if (!router.has(Flaw::NoMplsAnswer)) {
        rows->leaf("mplsVpnUseBgpRouting", "true");
    }
    rows->leaf("mplsVpnVpnRouteAddrType", "ipv4");
    rows->leaf("mplsVpnEntAdminStatus", "up");
    rows->end("mplsVpnEntEntry");
    rows->close("mplsVpnEntTable");
    rows->close("MPLS-VPN-MIB");
}

}  // namespace

void write_stack_tables(const Router& router, XmlRows* rows)
{
    rows->open("DC-RTM-MIB", R"( xmlns="http://tail-f.com/ns/mibs/DC-RTM-MIB")");
    write_rtm_entities(router, rows);
    write_stack_joins(router, rows);
    rows->open("rtmRedistTable");
    for_each_redistribution(router, [&](const Redistribution& rule) { write_rule(rule, rows); });
    rows->close("rtmRedistTable");
    rows->close("DC-RTM-MIB");
    write_ospf(router, rows);
    write_mpls_vpn(router, rows);
}

}  // namespace bgp_generator::healthy
