// The maps of names and the hidden tables, filled to fit the rows that they stand for.
#include "generate/adversarial/tables.h"

namespace bgp_generator {

namespace {

void write_vrf_maps(const Shape& shape, XmlRows* rows)
{
    rows->line("<stringTOindex><name>global</name><vrf-idx>0</vrf-idx><rtmIndex>1</rtmIndex></stringTOindex>");
    shape.for_each_vrf([&](const Vrf& vrf) {
        if (!vrf.mapped) {
            return;
        }
        const uint32_t component = 1 + 65536 * vrf.index;
        rows->begin("stringTOindex");
        rows->leaf("name", vrf.name);
        rows->leaf("vrf-idx", vrf.index);
        if (vrf.index % 5 != 0) {
            rows->leaf("rtmIndex", component);
        }
        if (vrf.index % 4 != 0) {
            rows->leaf("rtmIndexV6", component + 1);
        }
        rows->end("stringTOindex");
    });
    rows->line("<indexTOstring><index>0</index><vname>global</vname></indexTOstring>");
    shape.for_each_vrf([&](const Vrf& vrf) {
        if (vrf.mapped) {
            rows->begin("indexTOstring");
            rows->leaf("index", vrf.index);
            rows->leaf("vname", vrf.name);
            rows->end("indexTOstring");
        }
    });
}

void write_name_maps(XmlRows* rows)
{
    rows->line(
        "<route-map><vrf><name>global</name><free-index>2</free-index><next-index>3</next-index>"
        "<stringTOindex><name>IN</name><map-idx>1</map-idx></stringTOindex></vrf></route-map>");
    rows->line(
        "<route-policy><vrf><name>global</name><next-index>2</next-index>"
        "<stringTOindex><name>OUT</name><pol-idx>1</pol-idx></stringTOindex></vrf></route-policy>");
}

void write_redistribution(const Shape& shape, XmlRows* rows)
{
    rows->open("rtmRedistEntry-hidden");
    for_each_redistribution(shape, [&](const Redistribution& rule) {
        if (rule.network == 0) {
            return;
        }
        rows->begin("rtmRedistEntry-set");
        rows->leaf("entity", rule.entity);
        rows->leaf("rtm-index", rule.rtm_index);
        rows->leaf("address", "c6:33:64:0" + std::to_string(rule.network));
        rows->leaf("length", 32);
        rows->end("rtmRedistEntry-set");
    });
    for_each_redistribution(shape, [&](const Redistribution& rule) {
        if (rule.network == 0) {
            return;
        }
        rows->begin("rtmRedistEntry-get");
        rows->leaf("entity", rule.entity);
        rows->leaf("rtm-index", rule.rtm_index);
        rows->leaf("entry", rule.entry);
        rows->leaf("rtmRedistAddrFilterType", "ipv4");
        rows->leaf("rtmRedistAddrFilter", "c6:33:64:0" + std::to_string(rule.network));
        rows->leaf("rtmRedistAddrFilterLen", 32);
        rows->end("rtmRedistEntry-get");
    });
    if (!shape.draw(Subject::Hidden, 2).one_in(4)) {
        rows->leaf("rtmRedistEntry_next_free_index", 4);
    }
    rows->close("rtmRedistEntry-hidden");
}

void write_hidden_route_maps(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpRouteMapEntry-hidden");
    for (const char* list : {"bgpRouteMapEntry", "bgpRouteMapEntry-get", "bgpRouteMapEntry-set"}) {
        for (const Block& block : shape.route_map_blocks()) {
            for (uint32_t i = block.first; i < block.first + block.count && rows->good(); ++i) {
                if (shape.draw(Subject::RouteMap, uint64_t{block.owner.index} << 32 | i).one_in(2)) {
                    rows->begin(list);
                    rows->leaf("entity", block.owner.index);
                    rows->leaf("map", i / 3 + 1);
                    rows->leaf("entry", 10 * (i % 3 + 1));
                    rows->end(list);
                }
            }
        }
    }
    rows->close("bgpRouteMapEntry-hidden");
}

void write_hidden_records(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpConfigEntry-hidden");
    for (const char* list : {"bgpConfigEntry", "bgpConfigEntry-get", "bgpConfigEntry-set"}) {
        for (const Owner& owner : shape.owners()) {
            const uint32_t records = shape.draw(Subject::Hidden, owner.index).below(3);
            for (uint32_t i = 1; i <= records; ++i) {
                rows->begin(list);
                rows->leaf("entity", owner.index);
                rows->leaf("index", i);
                rows->end(list);
            }
        }
    }
    rows->close("bgpConfigEntry-hidden");
}

// A neighbour's key as text, as the device keeps it beside the neighbour's name.
std::string keys_text(const Neighbor& neighbor)
{
    const std::string local = neighbor.local_octets();
    return std::to_string(neighbor.owner) + " " + neighbor.local_type() + " " + (local.empty() ? "\"\"" : local) +
           " 0 " + neighbor.remote_type() + " " + neighbor.remote_octets() + " 0 0";
}

void write_neighbor(const Shape& shape, const Neighbor& neighbor, const char* list, const char* name, XmlRows* rows)
{
    Draw draw = shape.draw(Subject::NeighborHidden, uint64_t{neighbor.ordinal} << 32);
    rows->begin(list);
    rows->leaf("entity", neighbor.owner);
    rows->leaf(name, neighbor.remote_text());
    if (list == std::string_view("bgpPeerEntry-global") && !draw.one_in(8)) {
        rows->leaf("keys", keys_text(neighbor));
    }
    rows->end(list);
}

// Neighbours that share owner and address and differ in the local address alone do not occur: numbers tell them apart.
void write_hidden_neighbors(const Shape& shape, XmlRows* rows)
{
    struct Table {
        const char* list;
        const char* name;
        uint32_t one_in;
    };
    constexpr Table kTables[] = {{"bgpPeerEntry-global", "peer", 1},
                                 {"bgpPeerEntry-prefix-list-hidden", "peer", 8},
                                 {"neighbor-valid-hidden", "address", 2}};
    for (const Table& table : kTables) {
        shape.for_each_neighbor([&](const Neighbor& neighbor) {
            if (shape.draw(Subject::NeighborHidden, neighbor.ordinal).one_in(table.one_in)) {
                write_neighbor(shape, neighbor, table.list, table.name, rows);
            }
            return rows->good();
        });
    }
    shape.for_each_neighbor([&](const Neighbor& neighbor) {
        if (shape.draw(Subject::NeighborHidden, neighbor.ordinal).one_in(6)) {
            rows->begin("neighbor-afi-safi-hidden");
            rows->leaf("entity", neighbor.owner);
            rows->leaf("address", neighbor.remote_text());
            rows->leaf("afi", "ipv4");
            rows->leaf("safi", "unicast");
            rows->end("neighbor-afi-safi-hidden");
        }
        return rows->good();
    });
}

void write_owner(const Shape& shape, const Owner& owner, XmlRows* rows)
{
    Draw draw = shape.draw(Subject::Hidden, uint64_t{owner.index} << 32);
    const std::string entity = "<entity>" + std::to_string(owner.index) + "</entity>";
    if (draw.one_in(2)) {
        rows->line("<match-ip-list-hidden>" + entity + "<list>1</list></match-ip-list-hidden>");
    }
    if (draw.one_in(2)) {
        rows->line("<route-policy-valid-hidden>" + entity + "<name>OUT</name></route-policy-valid-hidden>");
    }
    if (draw.one_in(3)) {
        rows->line("<router-afi-safi-hidden>" + entity +
                   "<afi>ipv4</afi><safi>unicast</safi></router-afi-safi-hidden>");
    }
    if (draw.one_in(4)) {
        rows->line("<router-afi-safi-hidden>" + entity +
                   "<afi>ipv6</afi><safi>unicast</safi></router-afi-safi-hidden>");
    }
}

// Most names stand under the entity's index, some under the next one, some nowhere; a few lists share one name.
void write_list_names(const Shape& shape, XmlRows* rows)
{
    rows->open("aallPreAccessListEntry-hidden");
    for (uint32_t list = 1; list <= shape.lists() && rows->good(); ++list) {
        Draw draw = shape.draw(Subject::PrefixListName, list);
        const uint32_t place = draw.below(8);
        if (place == 0) {
            continue;
        }
        rows->begin("aallPreAccessListEntry-get");
        rows->leaf("entity", shape.first().index + (place == 1 ? 1 : 0));
        rows->leaf("list", list);
        rows->leaf("name", "list-" + std::to_string(draw.one_in(16) ? 1 : list));
        rows->end("aallPreAccessListEntry-get");
    }
    if (!shape.draw(Subject::Hidden, 1).one_in(8)) {
        rows->leaf("aallPreAccessListEntry_next_free_index", shape.lists() + 1);
    }
    rows->close("aallPreAccessListEntry-hidden");
}

}  // namespace

void write_internal_tables(const Shape& shape, XmlRows* rows)
{
    rows->open("internal", R"( xmlns="urn:bgp-update:yang:metacli-internal")");
    rows->open("vrf-config");
    write_vrf_maps(shape, rows);
    write_name_maps(rows);
    rows->close("vrf-config");
    write_redistribution(shape, rows);
    write_hidden_route_maps(shape, rows);
    write_hidden_records(shape, rows);
    write_hidden_neighbors(shape, rows);
    for (const Owner& owner : shape.owners()) {
        write_owner(shape, owner, rows);
    }
    write_list_names(shape, rows);
    shape.for_each_vrf([&](const Vrf& vrf) {
        if (vrf.mapped && vrf.index % 7 == 1) {
            rows->begin("ospf-proc-id-to-index");
            rows->leaf("process", vrf.index);
            rows->leaf("vrf_name", vrf.name);
            rows->leaf("proc_id", vrf.index);
            rows->leaf("index", vrf.index + 1);
            rows->end("ospf-proc-id-to-index");
        }
    });
    if (shape.draw(Subject::Hidden, 3).one_in(2)) {
        rows->line("<router-id-default-hidden>false</router-id-default-hidden>");
    }
    rows->close("internal");
}

}  // namespace bgp_generator
