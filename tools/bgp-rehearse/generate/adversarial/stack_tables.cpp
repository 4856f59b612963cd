// The other tables of the routing stack: the RTM's joins and rules, OSPF, MPLS VPN, and the prefix access lists.
#include <cstdio>

#include "generate/adversarial/tables.h"
#include "generate/mib_rows.h"

namespace bgp_generator {

namespace {

constexpr uint32_t kComponentStep = 65536;

void write_rtm_entities(const Shape& shape, XmlRows* rows)
{
    rows->open("rtmEntityTable");
    write_rtm_entity(1, "ipv4", rows);
    if (shape.draw(Subject::Joins).one_in(2)) {
        write_rtm_entity(2, "ipv6", rows);
    }
    shape.for_each_vrf([&](const Vrf& vrf) {
        if (vrf.mapped && shape.draw(Subject::Joins, uint64_t{vrf.index} << 40).one_in(2)) {
            write_rtm_entity(1 + kComponentStep * vrf.index, "ipv4", rows);
        }
    });
    rows->close("rtmEntityTable");
}

void write_rtm_joins(const Shape& shape, XmlRows* rows)
{
    rows->open("rtmMjTable");
    for (const uint32_t rtm_index : {1U, 2U}) {
        write_rtm_join(rtm_index, rtm_index, "ariPrtnrRtm", rows);
        for (const Owner& owner : shape.owners()) {
            Draw draw = shape.draw(Subject::Joins, uint64_t{owner.index} << 2 | rtm_index);
            if (!draw.one_in(rtm_index == 1 ? 8 : 2)) {
                write_rtm_join(rtm_index, owner.index, "ariPrtnrBgp", rows);
            }
        }
    }
    rows->close("rtmMjTable");
}

const char* destination_text(Redistribution::Destination destination)
{
    switch (destination) {
        case Redistribution::Destination::Bgp:
            return "bgp";
        case Redistribution::Destination::Ospf:
            return "ospf";
        case Redistribution::Destination::All:
            return "all";
        case Redistribution::Destination::Missing:
            break;
    }
    return "";
}

void write_rule(const Redistribution& rule, XmlRows* rows)
{
    rows->begin("rtmRedistEntry");
    rows->leaf("rtmRedistFteIndex", rule.rtm_index);
    rows->leaf("rtmRedistEntryId", rule.entry);
    if (rule.destination != Redistribution::Destination::Missing) {
        rows->leaf("rtmRedistInfoDest", destination_text(rule.destination));
    }
    if (rule.network != 0) {
        rows->leaf("rtmRedistAddrFilterType", "ipv4");
        rows->leaf("rtmRedistAddrFilter", "c6:33:64:0" + std::to_string(rule.network));
        rows->leaf("rtmRedistAddrFilterLen", 32);
    }
    rows->leaf("rtmRedistInfoSrc", "local");
    rows->leaf("rtmRedistRedistFlag", "redistribute");
    rows->leaf("rtmRedistAdminStat", "up");
    rows->end("rtmRedistEntry");
}

void write_rtm(const Shape& shape, XmlRows* rows)
{
    rows->open("DC-RTM-MIB", R"( xmlns="http://tail-f.com/ns/mibs/DC-RTM-MIB")");
    write_rtm_entities(shape, rows);
    write_rtm_joins(shape, rows);
    rows->open("rtmRedistTable");
    for_each_redistribution(shape, [&](const Redistribution& rule) { write_rule(rule, rows); });
    rows->close("rtmRedistTable");
    rows->close("DC-RTM-MIB");
}

void write_ospf(const Shape& shape, XmlRows* rows)
{
    const uint32_t processes = shape.draw(Subject::Redistribution, 1000).below(3);
    rows->open("DC-OSPF-MIB", R"( xmlns="http://tail-f.com/ns/mibs/DC-OSPF-MIB")");
    rows->open("ospfPmEntTable");
    for (uint32_t i = 1; i <= processes; ++i) {
        rows->begin("ospfPmEntEntry");
        rows->leaf("ospfPmEntIndex", i);
        rows->leaf("ospfPmEntVpnPeCeSupport", "false");
        rows->end("ospfPmEntEntry");
    }
    rows->close("ospfPmEntTable");
    rows->close("DC-OSPF-MIB");
}

// No MPLS VPN entity, or one that uses BGP, does not, or does not say.
void write_mpls_vpn(const Shape& shape, XmlRows* rows)
{
    constexpr const char* kUses[] = {"true", "true", "false", ""};
    Draw draw = shape.draw(Subject::Shape, 1);
    if (draw.one_in(2)) {
        return;
    }
    const char* uses = draw.one_of(kUses);
    rows->open("MPLS-VPN-MIB", R"( xmlns="http://tail-f.com/ns/mibs/MPLS-VPN-MIB")");
    rows->open("mplsVpnEntTable");
    rows->begin("mplsVpnEntEntry");
    rows->leaf("mplsVpnEntIndex", 1);
    if (*uses != '\0') {
        rows->leaf("mplsVpnUseBgpRouting", uses);
    }
    rows->leaf("mplsVpnVpnRouteAddrType", "ipv4");
    rows->end("mplsVpnEntEntry");
    rows->close("mplsVpnEntTable");
    rows->close("MPLS-VPN-MIB");
}

// A rule has its prefix, length and action always; bounds may be missing, which is 0.
void write_access_rule(const Shape& shape, uint32_t number, XmlRows* rows)
{
    constexpr const char* kBounds[] = {"", "", "0", "24", "32"};
    Draw draw = shape.draw(Subject::PrefixRule, number);
    char prefix[sizeof "0a:00:00:00"];
    std::snprintf(prefix, sizeof prefix, "%02x:%02x:%02x:00", 10 + (number >> 16 & 0x7F), number >> 8 & 0xFF,
                  number & 0xFF);
    rows->begin("aallPreAccessListEntry");
    rows->leaf("aallPreAccessListListIndex", number / shape.rules_in_list() + 1);
    rows->leaf("aallPreAccessListRuleIndex", 5 * (number % shape.rules_in_list() + 1));
    if (draw.one_in(2)) {
        rows->leaf("aallPreAccessListAdminStatus", "up");
        rows->leaf("aallPreAccessListAddrType", "ipv4");
    }
    rows->leaf("aallPreAccessListAddrPrefix", prefix);
    rows->leaf("aallPreAccessListAddrPrefLen", 8 + draw.below(17));
    for (const char* bound : {"aallPreAccessListAddrPrefGe", "aallPreAccessListAddrPrefLe"}) {
        const char* length = draw.one_of(kBounds);
        if (*length != '\0') {
            rows->leaf(bound, length);
        }
    }
    rows->leaf("aallPreAccessListIncluded", draw.one_in(3) ? "deny" : "permit");
    rows->end("aallPreAccessListEntry");
}

}  // namespace

void write_stack_tables(const Shape& shape, XmlRows* rows)
{
    write_rtm(shape, rows);
    write_ospf(shape, rows);
    write_mpls_vpn(shape, rows);
}

void write_access_lists(const Shape& shape, XmlRows* rows)
{
    rows->open("DC-AALL-MIB", R"( xmlns="http://tail-f.com/ns/mibs/DC-AALL-MIB")");
    rows->open("aallPreAccessListTable");
    for (uint32_t i = 0; i < shape.settings().prefix_rules && rows->good(); ++i) {
        write_access_rule(shape, i, rows);
    }
    rows->close("aallPreAccessListTable");
    rows->close("DC-AALL-MIB");
}

}  // namespace bgp_generator
