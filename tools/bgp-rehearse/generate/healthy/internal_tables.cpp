// The maps of names and the hidden tables, each agreeing with the rows that it stands for.
#include "generate/address_text.h"
#include "generate/healthy/neighbor.h"
#include "generate/healthy/policy.h"
#include "generate/healthy/redistribution.h"
#include "generate/healthy/tables.h"
#include "generate/healthy/vrf.h"

namespace bgp_generator::healthy {

namespace {

constexpr char kPolicy[] = "PREFER-UPSTREAM";

void write_vrf_number(const std::string& name, uint32_t index, uint32_t rtm_index, XmlRows* rows)
{
    rows->begin("stringTOindex");
    rows->leaf("name", name);
    rows->leaf("vrf-idx", index);
    rows->leaf("rtmIndex", rtm_index);
    rows->leaf("rtmIndexV6", rtm_index + 1);
    rows->end("stringTOindex");
}

void write_vrf_name(uint32_t index, const std::string& name, XmlRows* rows)
{
    rows->begin("indexTOstring");
    rows->leaf("index", index);
    rows->leaf("vname", name);
    rows->end("indexTOstring");
}

void write_vrf_maps(const Router& router, XmlRows* rows)
{
    write_vrf_number("global", 0, 1, rows);
    for_each_vrf(router, [&](const Vrf& vrf) {
        if (vrf.numbered) {
            write_vrf_number(vrf.name, vrf.index, vrf.rtm_index, rows);
        }
    });
    write_vrf_name(0, "global", rows);
    for_each_vrf(router, [&](const Vrf& vrf) {
        if (vrf.numbered) {
            write_vrf_name(vrf.index, vrf.name, rows);
        }
    });
}

void write_map_number(const Router& router, uint32_t map, XmlRows* rows)
{
    rows->begin("stringTOindex");
    rows->leaf("name", map_name(router, map));
    rows->leaf("map-idx", map);
    rows->end("stringTOindex");
}

void write_map_numbers(const Router& router, XmlRows* rows)
{
    const uint32_t maps = route_maps(router) + (router.has(Flaw::PlaceTakenUnused) ? 1 : 0);
    rows->open("route-map");
    rows->begin("vrf");
    rows->leaf("name", "global");
    if (router.spare_map) {
        rows->leaf("free-index", maps + 1);
    }
    rows->leaf("next-index", maps + (router.spare_map ? 2 : 1));
    for (uint32_t map = 1; map <= maps && rows->good(); ++map) {
        write_map_number(router, map, rows);
    }
    rows->end("vrf");
    rows->close("route-map");
    if (router.policies) {
        rows->open("route-policy");
        rows->begin("vrf");
        rows->leaf("name", "global");
        rows->leaf("next-index", 2);
        rows->begin("stringTOindex");
        rows->leaf("name", kPolicy);
        rows->leaf("pol-idx", 1);
        rows->end("stringTOindex");
        rows->end("vrf");
        rows->close("route-policy");
    }
}

void write_networks(const Router& router, XmlRows* rows)
{
    const auto each = [&](const std::function<void(const Redistribution&)>& write) {
        for_each_redistribution(router, [&](const Redistribution& rule) {
            if (rule.network != 0) {
                write(rule);
            }
        });
    };
    rows->open("rtmRedistEntry-hidden");
    each([&](const Redistribution& rule) {
        rows->begin("rtmRedistEntry-set");
        rows->leaf("entity", router.entity);
        rows->leaf("rtm-index", rule.rtm_index);
        rows->leaf("address", ipv4_octets(rule.network));
        rows->leaf("length", kNetworkLength);
        rows->end("rtmRedistEntry-set");
    });
    each([&](const Redistribution& rule) {
        rows->begin("rtmRedistEntry-get");
        rows->leaf("entity", router.entity);
        rows->leaf("rtm-index", rule.rtm_index);
        rows->leaf("entry", rule.entry);
        rows->leaf("rtmRedistAddrFilterType", "ipv4");
        rows->leaf("rtmRedistAddrFilter", ipv4_octets(rule.network));
        rows->leaf("rtmRedistAddrFilterLen", kNetworkLength);
        rows->end("rtmRedistEntry-get");
    });
    rows->leaf("rtmRedistEntry_next_free_index", kFirstNetwork + router.networks);
    rows->close("rtmRedistEntry-hidden");
}

void write_map_rows(const Router& router, const char* list, XmlRows* rows)
{
    const auto write = [&](uint32_t map, uint32_t entry) {
        rows->begin(list);
        rows->leaf("entity", router.entity);
        rows->leaf("map", map);
        rows->leaf("entry", entry);
        rows->end(list);
    };
    for (uint32_t i = 0; i < router.sizes.route_maps && rows->good(); ++i) {
        const MapEntry entry = map_entry(router, i);
        write(entry.map, entry.entry);
    }
    if (router.has(Flaw::PlaceTakenUnused)) {
        write(unused_map(router), 10);
    }
}

void write_route_map_rows(const Router& router, XmlRows* rows)
{
    rows->open("bgpRouteMapEntry-hidden");
    for (const char* list : {"bgpRouteMapEntry", "bgpRouteMapEntry-get", "bgpRouteMapEntry-set"}) {
        write_map_rows(router, list, rows);
    }
    rows->close("bgpRouteMapEntry-hidden");
}

void write_hidden_records(const Router& router, XmlRows* rows)
{
    rows->open("bgpConfigEntry-hidden");
    for (const char* list : {"bgpConfigEntry", "bgpConfigEntry-get", "bgpConfigEntry-set"}) {
        rows->begin(list);
        rows->leaf("entity", router.entity);
        rows->leaf("index", 1);
        rows->end(list);
    }
    rows->close("bgpConfigEntry-hidden");
}

// A neighbour's key as text, as the device keeps it beside the neighbour's name.
std::string keys_text(const Neighbor& neighbor)
{
    const std::string local = neighbor.local_octets();
    return std::to_string(neighbor.entity) + " " + neighbor.local_type() + " " + (local.empty() ? "\"\"" : local) +
           " 0 " + neighbor.remote_type() + " " + neighbor.remote_octets() + " 0 0";
}

bool has_policy(const Router& router, const Neighbor& neighbor)
{
    for (const NeighborFamily& family : families(router, neighbor)) {
        if (family.in_map != 0 || family.out_map != 0) {
            return true;
        }
    }
    return false;
}

template <typename Chosen, typename Leaves>
void write_peers(const Router& router, const char* list, const char* name, XmlRows* rows, Chosen&& chosen,
                 Leaves&& leaves)
{
    for_each_neighbor(router, [&](const Neighbor& neighbor) {
        if (chosen(neighbor)) {
            rows->begin(list);
            rows->leaf("entity", neighbor.entity);
            rows->leaf(name, neighbor.remote_text());
            leaves(neighbor);
            rows->end(list);
        }
        return rows->good();
    });
}

// That IPv4 unicast is on is written down where IPv6 can be on beside it.
void write_neighbors(const Router& router, XmlRows* rows)
{
    const auto nothing = [](const Neighbor&) {};
    write_peers(
        router, "bgpPeerEntry-global", "peer", rows, [](const Neighbor&) { return true; },
        [&](const Neighbor& neighbor) { rows->leaf("keys", keys_text(neighbor)); });
    write_peers(
        router, "bgpPeerEntry-prefix-list-hidden", "peer", rows,
        [&](const Neighbor& neighbor) { return access_lists(router) != 0 && has_policy(router, neighbor); }, nothing);
    write_peers(
        router, "neighbor-valid-hidden", "address", rows, [](const Neighbor&) { return true; }, nothing);
    write_peers(
        router, "neighbor-afi-safi-hidden", "address", rows,
        [&](const Neighbor& neighbor) { return router.ipv6 && !neighbor.ipv6(); },
        [&](const Neighbor&) {
            rows->leaf("afi", "ipv4");
            rows->leaf("safi", "unicast");
        });
}

void write_entity_rows(const Router& router, XmlRows* rows)
{
    const std::string entity = "<entity>" + std::to_string(router.entity) + "</entity>";
    for (uint32_t list = 1; list <= access_lists(router) && rows->good(); ++list) {
        rows->begin("match-ip-list-hidden");
        rows->leaf("entity", router.entity);
        rows->leaf("list", list);
        rows->end("match-ip-list-hidden");
    }
    if (router.policies) {
        rows->begin("route-policy-valid-hidden");
        rows->leaf("entity", router.entity);
        rows->leaf("name", kPolicy);
        rows->end("route-policy-valid-hidden");
    }
    if (router.ipv6) {
        rows->line("<router-afi-safi-hidden>" + entity +
                   "<afi>ipv4</afi><safi>unicast</safi></router-afi-safi-hidden>");
    }
}

void write_list_names(const Router& router, XmlRows* rows)
{
    rows->open("aallPreAccessListEntry-hidden");
    for (uint32_t list = 1; list <= access_lists(router) && rows->good(); ++list) {
        if (is_named(router, list)) {
            rows->begin("aallPreAccessListEntry-get");
            rows->leaf("entity", router.entity);
            rows->leaf("list", list);
            rows->leaf("name", list_name(router, list));
            rows->end("aallPreAccessListEntry-get");
        }
    }
    if (!router.has(Flaw::MissingNextIndex)) {
        rows->leaf("aallPreAccessListEntry_next_free_index", access_lists(router) + 1);
    }
    rows->close("aallPreAccessListEntry-hidden");
}

void write_ospf_process(uint32_t process, const std::string& vrf, uint32_t index, XmlRows* rows)
{
    rows->begin("ospf-proc-id-to-index");
    rows->leaf("process", process);
    rows->leaf("vrf_name", vrf);
    rows->leaf("proc_id", process);
    rows->leaf("index", index);
    rows->end("ospf-proc-id-to-index");
}

void write_ospf_processes(const Router& router, XmlRows* rows)
{
    if (router.ospf) {
        write_ospf_process(kOspfProcess, "global", kOspfIndex, rows);
    }
    for_each_vrf(router, [&](const Vrf& vrf) {
        if (vrf.ospf_process != 0) {
            write_ospf_process(vrf.ospf_process, vrf.name, vrf.ospf_index, rows);
        }
    });
}

}  // namespace

void write_internal_tables(const Router& router, XmlRows* rows)
{
    rows->open("internal", R"( xmlns="urn:bgp-update:yang:metacli-internal")");
    rows->open("vrf-config");
    write_vrf_maps(router, rows);
    write_map_numbers(router, rows);
    rows->close("vrf-config");
    write_networks(router, rows);
    write_route_map_rows(router, rows);
    write_hidden_records(router, rows);
    write_neighbors(router, rows);
    write_entity_rows(router, rows);
    write_list_names(router, rows);
    write_ospf_processes(router, rows);
    if (!router.has(Flaw::NoRouterId)) {
        rows->line("<router-id-default-hidden>false</router-id-default-hidden>");
    }
    rows->close("internal");
}

}  // namespace bgp_generator::healthy
