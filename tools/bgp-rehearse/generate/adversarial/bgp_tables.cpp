// The BGP tables of the routing stack: entities with what belongs to them, neighbours, route maps.
#include "generate/adversarial/tables.h"
#include "generate/mib_rows.h"

namespace bgp_generator {

namespace {

constexpr char kModule[] = "DC-BGP-MIB";
constexpr char kNamespace[] = R"( xmlns="http://tail-f.com/ns/mibs/DC-BGP-MIB")";

const char* status(Draw& draw)
{
    return draw.one_in(4) ? "down" : "up";
}

void write_entity(const Shape& shape, const Owner& owner, XmlRows* rows)
{
    Draw draw = shape.draw(Subject::Entity, owner.index);
    rows->begin("bgpRmEntEntry");
    rows->leaf("bgpRmEntIndex", owner.index);
    if (!draw.one_in(16)) {
        rows->leaf("bgpRmEntLocalAs", owner.as);
    }
    if (!draw.one_in(8)) {
        rows->leaf("bgpRmEntLocalIdentifier", "c0:00:02:01");
    }
    if (!draw.one_in(8)) {
        rows->leaf("bgpRmEntAdminStatus", status(draw));
    }
    if (!draw.one_in(8)) {
        rows->leaf("bgpRmEntAsSize", draw.one_in(3) ? "twoOctet" : "fourOctet");
    }
    if (draw.one_in(2)) {
        rows->leaf("bgpRmEntClusterId", "c0:00:02:63");
    }
    if (!draw.one_in(8)) {
        rows->leaf("bgpRmEntDefLocalPref", 100 + draw.below(100));
    }
    if (!draw.one_in(8)) {
        rows->leaf("bgpRmEntSupportIpv6", draw.one_in(2) ? "true" : "false");
    }
    rows->leaf("bgpRmEntSelectDeferTime", 120);
    rows->leaf("bgpRmEntStalePathTime", 60 + draw.below(120));
    rows->leaf("bgpRmEntI3EntIndex", 1);
    rows->end("bgpRmEntEntry");
}

void write_entities(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpRmEntTable");
    for (const Owner& owner : shape.owners()) {
        if (owner.is_entity) {
            write_entity(shape, owner, rows);
        }
    }
    rows->close("bgpRmEntTable");
}

void write_family(uint32_t owner, const char* afi, const char* safi, Draw& draw, XmlRows* rows)
{
    rows->begin("bgpRmAfiSafiEntry");
    rows->leaf("bgpRmEntIndex", owner);
    rows->leaf("bgpRmAfiSafiAfi", afi);
    rows->leaf("bgpRmAfiSafiSafi", safi);
    if (!draw.one_in(8)) {
        rows->leaf("bgpRmAfiSafiAdminStatus", status(draw));
    }
    rows->end("bgpRmAfiSafiEntry");
}

void write_families(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpRmAfiSafiTable");
    for (const Owner& owner : shape.owners()) {
        Draw draw = shape.draw(Subject::Families, owner.index);
        if (!draw.one_in(8)) {
            write_family(owner.index, "ipv4", "unicast", draw, rows);
        }
        if (draw.one_in(4)) {
            write_family(owner.index, "ipv4", "multicast", draw, rows);
        }
        if (draw.one_in(4)) {
            write_family(owner.index, "ipv4", "mplsBgpVpn", draw, rows);
        }
        if (draw.one_in(4)) {
            write_family(owner.index, "ipv6", "unicast", draw, rows);
        }
    }
    rows->close("bgpRmAfiSafiTable");
}

void write_join(uint32_t owner, uint32_t join, const char* afi, const char* admin_status, XmlRows* rows)
{
    rows->begin("bgpRmAfmJoinEntry");
    rows->leaf("bgpRmEntIndex", owner);
    rows->leaf("bgpRmAfmJoin", join);
    rows->leaf("bgpRmAfmPartnerIndex", join);
    rows->leaf("bgpRmAfmAfi", afi);
    rows->leaf("bgpRmAfmSafi", "unicast");
    if (*admin_status != '\0') {
        rows->leaf("bgpRmAfmAdminStatus", admin_status);
    }
    rows->end("bgpRmAfmJoinEntry");
}

// Joins 1 and 2 are those with the RTM, 3 the one with the BVM.
void write_joins(const Shape& shape, XmlRows* rows)
{
    constexpr const char* kBvmStatuses[] = {"down", "down", "up", ""};
    rows->open("bgpRmAfmJoinTable");
    for (const Owner& owner : shape.owners()) {
        Draw draw = shape.draw(Subject::Joins, owner.index);
        if (!draw.one_in(8)) {
            write_join(owner.index, 1, "ipv4", status(draw), rows);
        }
        if (draw.one_in(4)) {
            write_join(owner.index, 2, "ipv6", status(draw), rows);
        }
        if (draw.one_in(2)) {
            write_join(owner.index, 3, "ipv4", draw.one_of(kBvmStatuses), rows);
        }
    }
    rows->close("bgpRmAfmJoinTable");
}

void write_network_entities(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpNmEntTable");
    for (const Owner& owner : shape.owners()) {
        Draw draw = shape.draw(Subject::Listens, owner.index);
        if (draw.one_in(8)) {
            continue;
        }
        rows->begin("bgpNmEntEntry");
        rows->leaf("bgpNmEntIndex", owner.index);
        rows->leaf("bgpNmEntRmIndex", owner.index);
        rows->leaf("bgpNmEntSckIndex", 1);
        rows->leaf("bgpNmEntAdminStatus", status(draw));
        if (draw.one_in(4)) {
            rows->leaf("bgpNmEntBfdEntityIndex", 1);
        }
        rows->end("bgpNmEntEntry");
    }
    rows->close("bgpNmEntTable");
}

void write_listen(uint32_t owner, uint32_t index, bool ipv6, Draw& draw, XmlRows* rows)
{
    rows->begin("bgpNmListenEntry");
    rows->leaf("bgpNmEntIndex", owner);
    rows->leaf("bgpNmListenIndex", index);
    rows->leaf("bgpNmListenAddrType", ipv6 ? "ipv6" : "ipv4");
    rows->leaf("bgpNmListenAddr", ipv6 ? "00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00" : "00:00:00:00");
    rows->leaf("bgpNmListenPort", 179);
    rows->leaf("bgpNmListenAdminStatus", status(draw));
    rows->end("bgpNmListenEntry");
}

void write_listens(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpNmListenTable");
    for (const Owner& owner : shape.owners()) {
        Draw draw = shape.draw(Subject::Listens, owner.index);
        if (!draw.one_in(8)) {
            write_listen(owner.index, owner.index, false, draw, rows);
        }
        if (draw.one_in(3)) {
            write_listen(owner.index, owner.index + 1, true, draw, rows);
        }
        if (draw.one_in(6)) {
            write_listen(owner.index, owner.index + 7, draw.one_in(2), draw, rows);
        }
    }
    rows->close("bgpNmListenTable");
}

void write_neighbor(const Shape& shape, const Neighbor& neighbor, XmlRows* rows)
{
    Draw draw = shape.draw(Subject::Neighbor, neighbor.ordinal);
    rows->begin("bgpPeerEntry");
    write_neighbor_key(neighbor.owner, neighbor, rows);
    if (!draw.one_in(8)) {
        rows->leaf("bgpPeerLocalNm", neighbor.owner);
    }
    rows->leaf("bgpPeerConfigDropWarn", draw.one_in(4) ? "warn" : "drop");
    if (draw.one_in(2)) {
        rows->leaf("bgpPeerConfigMaxPrfx", 1000 * (1 + draw.below(1000)));
    }
    rows->leaf("bgpPeerRemoteAs", 64496 + draw.below(1024));
    rows->leaf("bgpPeerAdminStatus", status(draw));
    rows->leaf("bgpPeerConfigHoldTime", 90 + 30 * draw.below(4));
    if (draw.one_in(4)) {
        rows->leaf("bgpPeerConfigKeepAlive", 30);
    }
    if (draw.one_in(4)) {
        rows->leaf("bgpPeerConfigDescription", "neighbour " + std::to_string(neighbor.ordinal));
    }
    rows->end("bgpPeerEntry");
}

struct Family {
    const char* afi;
    const char* safi;
};
constexpr Family kFamilies[] = {{"ipv4", "unicast"}, {"ipv4", "multicast"}, {"ipv4", "mplsBgpVpn"},
                                {"ipv6", "unicast"}, {"ipv6", "multicast"}, {"l2vpn", "vpls"}};

// Which of kFamilies a neighbour has, a bit for each: none to three.
constexpr uint32_t kFamilySets[] = {0b000000, 0b000001, 0b000001, 0b000001, 0b000001, 0b001000, 0b001000, 0b001000,
                                    0b001001, 0b001001, 0b000011, 0b001011, 0b000101, 0b001101, 0b011000, 0b100001};

void write_neighbor_families(const Shape& shape, const Neighbor& neighbor, XmlRows* rows)
{
    constexpr const char* kDisabled[] = {"true", "true", "true", "false", "false", "false", "false", ""};
    Draw draw = shape.draw(Subject::Families, uint64_t{neighbor.ordinal} << 32);
    uint32_t bit = 1;
    const uint32_t set = draw.one_of(kFamilySets);
    for (const Family& family : kFamilies) {
        if ((set & bit) != 0) {
            rows->begin("bgpPeerAfiSafiEntry");
            write_neighbor_key(neighbor.owner, neighbor, rows);
            rows->leaf("bgpPeerAfiSafiAfi", family.afi);
            rows->leaf("bgpPeerAfiSafiSafi", family.safi);
            const char* disabled = draw.one_of(kDisabled);
            if (*disabled != '\0') {
                rows->leaf("bgpPeerAfiSafiDisable", disabled);
            }
            if (draw.one_in(4)) {
                rows->leaf("bgpPeerAfiSafiConfigDropWarn", "drop");
            }
            if (draw.one_in(4)) {
                rows->leaf("bgpPeerAfiSafiInMapIndex", 1 + draw.below(9));
            }
            rows->end("bgpPeerAfiSafiEntry");
        }
        bit <<= 1;
    }
}

void write_neighbors(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpPeerTable");
    shape.for_each_neighbor([&](const Neighbor& neighbor) {
        write_neighbor(shape, neighbor, rows);
        return rows->good();
    });
    rows->close("bgpPeerTable");
    rows->open("bgpPeerAfiSafiTable");
    shape.for_each_neighbor([&](const Neighbor& neighbor) {
        write_neighbor_families(shape, neighbor, rows);
        return rows->good();
    });
    rows->close("bgpPeerAfiSafiTable");
    rows->open("bgpPeerStatusTable");
    shape.for_each_neighbor([&](const Neighbor& neighbor) {
        if (shape.draw(Subject::NeighborHidden, neighbor.ordinal).one_in(2)) {
            rows->begin("bgpPeerStatusEntry");
            write_neighbor_key(neighbor.owner, neighbor, rows);
            rows->end("bgpPeerStatusEntry");
        }
        return rows->good();
    });
    rows->close("bgpPeerStatusTable");
}

void write_route_map(const Shape& shape, uint32_t owner, uint32_t number, XmlRows* rows)
{
    Draw draw = shape.draw(Subject::RouteMap, uint64_t{owner} << 32 | number);
    rows->begin("bgpRouteMapEntry");
    rows->leaf("bgpRmEntIndex", owner);
    rows->leaf("bgpRouteMapIndex", number / 3 + 1);
    rows->leaf("bgpRouteMapEntryIndex", 10 * (number % 3 + 1));
    if (draw.one_in(2)) {
        rows->leaf("bgpRouteMapMaAfiDef", draw.one_in(3) ? "ipv6" : "ipv4");
        rows->leaf("bgpRouteMapMaSafiDef", "unicast");
    }
    rows->leaf("bgpRouteMapAction", draw.one_in(4) ? "deny" : "permit");
    if (draw.one_in(2)) {
        rows->leaf("bgpRouteMapMaPrefixList", 1 + draw.below(9));
    }
    rows->end("bgpRouteMapEntry");
}

void write_route_maps(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpRouteMapTable");
    for (const Block& block : shape.route_map_blocks()) {
        for (uint32_t i = 0; i < block.count && rows->good(); ++i) {
            write_route_map(shape, block.owner.index, block.first + i, rows);
        }
    }
    rows->close("bgpRouteMapTable");
}

void write_records(const Shape& shape, XmlRows* rows)
{
    rows->open("bgpConfigTable");
    for (const Owner& owner : shape.owners()) {
        const uint32_t records = shape.draw(Subject::Hidden, owner.index).below(3);
        for (uint32_t i = 1; i <= records; ++i) {
            rows->begin("bgpConfigEntry");
            rows->leaf("bgpRmEntIndex", owner.index);
            rows->leaf("bgpConfigIndex", i);
            rows->leaf("bgpConfigAdminStatus", "up");
            rows->end("bgpConfigEntry");
        }
    }
    rows->close("bgpConfigTable");
}

}  // namespace

void write_bgp_tables(const Shape& shape, XmlRows* rows)
{
    rows->open(kModule, kNamespace);
    write_entities(shape, rows);
    write_families(shape, rows);
    write_joins(shape, rows);
    write_network_entities(shape, rows);
    write_listens(shape, rows);
    write_neighbors(shape, rows);
    write_route_maps(shape, rows);
    write_records(shape, rows);
    rows->close(kModule);
}

}  // namespace bgp_generator
