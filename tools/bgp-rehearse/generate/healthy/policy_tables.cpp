// Route maps, prefix access lists, and the named prefix lists that an earlier upgrade has made of them.
#include "generate/address_text.h"
#include "generate/healthy/policy.h"
#include "generate/healthy/tables.h"

namespace bgp_generator::healthy {

namespace {

// Rows that only a flaw adds stand under an index far from the entity's, or under the one that it moves to.
constexpr uint32_t kNewIndex = 1;
constexpr uint32_t kToStranger = 50;
constexpr uint32_t kStrangersMap = 800;

constexpr char kPrefixListModule[] = R"( xmlns="urn:bgp-update:yang:prefix-list")";

void write_entry(uint32_t entity, const MapEntry& entry, XmlRows* rows)
{
    rows->begin("bgpRouteMapEntry");
    rows->leaf("bgpRmEntIndex", entity);
    rows->leaf("bgpRouteMapIndex", entry.map);
    rows->leaf("bgpRouteMapEntryIndex", entry.entry);
    rows->leaf("bgpRouteMapMaAfiDef", "ipv4");
    rows->leaf("bgpRouteMapMaSafiDef", "unicast");
    rows->leaf("bgpRouteMapAction", entry.permit ? "permit" : "deny");
    if (entry.prefix_list != 0) {
        rows->leaf("bgpRouteMapMaPrefixList", entry.prefix_list);
    }
    if (entry.local_preference != 0) {
        rows->leaf("bgpRouteMapSetLocalPref", entry.local_preference);
    }
    rows->end("bgpRouteMapEntry");
}

void write_flaws(const Router& router, XmlRows* rows)
{
    if (router.has(Flaw::PlaceTaken)) {
        write_entry(kNewIndex, {1, 20, false, 0, 0}, rows);
    }
    if (router.has(Flaw::PlaceTakenUnused)) {
        write_entry(kNewIndex, {unused_map(router), 10, false, 0, 0}, rows);
        write_entry(router.entity, {unused_map(router), 10, true, 0, 100}, rows);
    }
    if (router.has(Flaw::OtherEntityRows)) {
        write_entry(router.entity + kToStranger, {kStrangersMap + unused_map(router), 10, true, 0, 100}, rows);
        write_entry(router.entity + kToStranger, {kStrangersMap + unused_map(router), 20, false, 0, 0}, rows);
    }
}

void write_access_rule(const AccessRule& rule, XmlRows* rows)
{
    rows->begin("aallPreAccessListEntry");
    rows->leaf("aallPreAccessListListIndex", rule.list);
    rows->leaf("aallPreAccessListRuleIndex", rule.rule);
    rows->leaf("aallPreAccessListAdminStatus", "up");
    rows->leaf("aallPreAccessListAddrType", "ipv4");
    rows->leaf("aallPreAccessListAddrPrefix", ipv4_octets(rule.prefix));
    rows->leaf("aallPreAccessListAddrPrefLen", rule.length);
    if (rule.at_least != 0) {
        rows->leaf("aallPreAccessListAddrPrefGe", rule.at_least);
    }
    if (rule.at_most != 0) {
        rows->leaf("aallPreAccessListAddrPrefLe", rule.at_most);
    }
    rows->leaf("aallPreAccessListIncluded", rule.permit ? "permit" : "deny");
    rows->end("aallPreAccessListEntry");
}

void write_sequence(const AccessRule& rule, XmlRows* rows)
{
    rows->begin("seq");
    rows->leaf("number", rule.rule);
    rows->leaf("address", ipv4_text(rule.prefix) + "/" + std::to_string(rule.length));
    if (rule.at_least != 0) {
        rows->leaf("ge", rule.at_least);
    }
    if (rule.at_most != 0) {
        rows->leaf("le", rule.at_most);
    }
    rows->leaf("action", rule.permit ? "permit" : "deny");
    rows->end("seq");
}

void write_lists(const Router& router, XmlRows* rows)
{
    uint32_t list = 0;
    for (uint32_t i = 0; i < router.sizes.prefix_rules && rows->good(); ++i) {
        const AccessRule rule = access_rule(router, i);
        if (rule.list != list) {
            if (list != 0) {
                rows->end("prefix-list");
            }
            list = rule.list;
            rows->begin("prefix-list", kPrefixListModule);
            rows->leaf("name", list_name(router, list));
        }
        write_sequence(rule, rows);
    }
    if (list != 0) {
        rows->end("prefix-list");
    }
}

}  // namespace

void write_route_maps(const Router& router, XmlRows* rows)
{
    rows->open("bgpRouteMapTable");
    for (uint32_t i = 0; i < router.sizes.route_maps && rows->good(); ++i) {
        write_entry(router.entity, map_entry(router, i), rows);
    }
    write_flaws(router, rows);
    rows->close("bgpRouteMapTable");
}

void write_access_lists(const Router& router, XmlRows* rows)
{
    rows->open("DC-AALL-MIB", R"( xmlns="http://tail-f.com/ns/mibs/DC-AALL-MIB")");
    rows->open("aallPreAccessListTable");
    for (uint32_t i = 0; i < router.sizes.prefix_rules && rows->good(); ++i) {
        write_access_rule(access_rule(router, i), rows);
    }
    rows->close("aallPreAccessListTable");
    rows->close("DC-AALL-MIB");
}

void write_prefix_lists(const Router& router, XmlRows* rows)
{
    if (router.role != Role::Upgraded || router.sizes.prefix_rules == 0) {
        return;
    }
    write_lists(router, rows);
    const uint32_t lists = access_lists(router);
    rows->open("prefix-list-internal", kPrefixListModule);
    for (uint32_t list = 1; list <= lists && rows->good(); ++list) {
        rows->begin("name-to-idx");
        rows->leaf("name", list_name(router, list));
        rows->leaf("idx", list);
        rows->end("name-to-idx");
    }
    for (uint32_t list = 1; list <= lists && rows->good(); ++list) {
        rows->begin("idx-to-name");
        rows->leaf("idx", list);
        rows->leaf("val", list_name(router, list));
        rows->end("idx-to-name");
    }
    rows->leaf("name-next-index", lists + 1);
    rows->close("prefix-list-internal");
}

}  // namespace bgp_generator::healthy
