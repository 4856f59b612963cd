// The neighbours with their address families and status rows.
#include "generate/healthy/neighbor.h"
#include "generate/healthy/tables.h"
#include "generate/mib_rows.h"

namespace bgp_generator::healthy {

namespace {

// An upgrade gives all neighbours one limit, at which they are warned of.
void write_limit(const Router& router, const NeighborGroup& group, Draw& draw, XmlRows* rows)
{
    const bool upgraded = router.role == Role::Upgraded;
    rows->leaf("bgpPeerConfigDropWarn", upgraded || draw.one_in(4) ? "warn" : "drop");
    if (upgraded) {
        rows->leaf("bgpPeerConfigMaxPrfx", 0);
    } else if (group.prefix_limit != 0) {
        rows->leaf("bgpPeerConfigMaxPrfx", group.prefix_limit * (1 + draw.below(2)));
    }
}

void write_neighbor(const Router& router, const Neighbor& neighbor, XmlRows* rows)
{
    const NeighborGroup& group = *neighbor.group;
    Draw draw = router.draw(Subject::Neighbor, neighbor.number);
    rows->begin("bgpPeerEntry");
    write_neighbor_key(neighbor.entity, neighbor, rows);
    rows->leaf("bgpPeerLocalNm", router.entity);
    write_limit(router, group, draw, rows);
    rows->leaf("bgpPeerRemoteAs", group.internal ? router.as : group.as + neighbor.number % group.as_numbers);
    rows->leaf("bgpPeerAdminStatus", neighbor.up ? "up" : "down");
    rows->leaf("bgpPeerConfigHoldTime", group.hold_time);
    rows->leaf("bgpPeerConfigKeepAlive", group.hold_time / 3);
    if (!draw.one_in(3)) {
        rows->leaf("bgpPeerConfigDescription", std::string(group.what) + " " + std::to_string(neighbor.number + 1));
    }
    rows->end("bgpPeerEntry");
}

void write_families(const Router& router, const Neighbor& neighbor, XmlRows* rows)
{
    for (const NeighborFamily& family : families(router, neighbor)) {
        rows->begin("bgpPeerAfiSafiEntry");
        write_neighbor_key(neighbor.entity, neighbor, rows);
        rows->leaf("bgpPeerAfiSafiAfi", family.afi);
        rows->leaf("bgpPeerAfiSafiSafi", family.safi);
        rows->leaf("bgpPeerAfiSafiDisable", family.on ? "false" : "true");
        rows->leaf("bgpPeerAfiSafiConfigDropWarn", router.role == Role::Upgraded ? "warn" : "drop");
        if (family.in_map != 0) {
            rows->leaf("bgpPeerAfiSafiInMapIndex", family.in_map);
        }
        if (family.out_map != 0) {
            rows->leaf("bgpPeerAfiSafiOutMapIndex", family.out_map);
        }
        rows->end("bgpPeerAfiSafiEntry");
    }
}

template <typename Write>
void write_table(const char* name, const Router& router, XmlRows* rows, Write&& write)
{
    rows->open(name);
    for_each_neighbor(router, [&](const Neighbor& neighbor) {
        write(neighbor);
        return rows->good();
    });
    rows->close(name);
}

}  // namespace

void write_neighbor_tables(const Router& router, XmlRows* rows)
{
    write_table("bgpPeerTable", router, rows,
                [&](const Neighbor& neighbor) { write_neighbor(router, neighbor, rows); });
    write_table("bgpPeerAfiSafiTable", router, rows,
                [&](const Neighbor& neighbor) { write_families(router, neighbor, rows); });
    write_table("bgpPeerStatusTable", router, rows, [&](const Neighbor& neighbor) {
        rows->begin("bgpPeerStatusEntry");
        write_neighbor_key(neighbor.entity, neighbor, rows);
        rows->end("bgpPeerStatusEntry");
    });
}

}  // namespace bgp_generator::healthy
