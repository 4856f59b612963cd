#include "generate/healthy/neighbor.h"

#include "generate/address_text.h"
#include "generate/healthy/policy.h"

namespace bgp_generator::healthy {

namespace {

constexpr uint32_t kManyNeighbors = 0x0A000001;  // 10.0.0.1

bool is_last(const Router& router, const Neighbor& neighbor)
{
    return neighbor.number + 1 == router.sizes.neighbors;
}

// The group's map, or for every fourth neighbour one of those that no group has.
uint32_t in_map(const Router& router, const Neighbor& neighbor)
{
    if (router.has(Flaw::BrokenReference) && is_last(router, neighbor)) {
        return missing_map(router);
    }
    const uint32_t of_groups = named_maps(router.role);
    const uint32_t maps = route_maps(router);
    if (maps > of_groups && neighbor.number % 4 == 3) {
        return of_groups + 1 + neighbor.number / 4 % (maps - of_groups);
    }
    return neighbor.group->in_map <= maps ? neighbor.group->in_map : 0;
}

uint32_t out_map(const Router& router, const Neighbor& neighbor)
{
    return neighbor.group->out_map <= route_maps(router) ? neighbor.group->out_map : 0;
}

enum class State { Missing, Off, On };

State ipv4_unicast(const Router& router, const Neighbor& neighbor, Draw& draw)
{
    if (!neighbor.ipv6()) {
        return !neighbor.group->internal && draw.one_in(24) ? State::Off : State::On;
    }
    return router.role == Role::Upgraded || draw.one_in(2) ? State::Off : State::Missing;
}

State ipv6_unicast(const Router& router, const Neighbor& neighbor, Draw& draw)
{
    if (neighbor.ipv6()) {
        return State::On;
    }
    if (!router.ipv6) {
        const bool planned = router.planned_ipv6 && !neighbor.group->internal;
        return planned ? State::On : draw.one_in(8) ? State::Off : State::Missing;
    }
    if (neighbor.group->internal) {
        return State::On;
    }
    return router.role == Role::Upgraded || draw.one_in(2) ? State::Off : State::Missing;
}

}  // namespace

const char* Neighbor::local_type() const noexcept
{
    if (ipv6()) {
        return "ipv6";
    }
    return local == Local::Unknown ? "unknown" : "ipv4";
}

std::string Neighbor::local_octets() const
{
    if (ipv6()) {
        return kAnyIpv6Octets;
    }
    return local == Local::Unknown ? std::string() : ipv4_octets(local_address);
}

std::string Neighbor::remote_octets() const
{
    return ipv6() ? link_ipv6_octets(remote_address) : ipv4_octets(remote_address);
}

std::string Neighbor::remote_text() const
{
    return ipv6() ? link_ipv6_text(remote_address) : ipv4_text(remote_address);
}

Neighbor neighbor(const Router& router, const NeighborGroup& group, uint32_t position)
{
    Neighbor neighbor;
    neighbor.group = &group;
    neighbor.number = group.first + position;
    neighbor.entity = router.entity;
    if (group.ipv6_session) {
        neighbor.remote_address = neighbor.number + 1;
    } else {
        neighbor.remote_address =
            position < group.room ? group.network + group.step * position : kManyNeighbors + neighbor.number;
        neighbor.local = group.internal ? router.internal_local : Local::Any;
        neighbor.local_address = neighbor.local == Local::Own ? router.identifier : 0;
    }
    neighbor.up = !router.draw(Subject::NeighborShares, neighbor.number).one_in(12);
    return neighbor;
}

NeighborFamilies families(const Router& router, const Neighbor& neighbor)
{
    Draw draw = router.draw(Subject::Families, neighbor.number);
    const State ipv4 = ipv4_unicast(router, neighbor, draw);
    const State vpn = router.vpn && neighbor.group->vpn ? State::On : State::Missing;
    const State ipv6 = ipv6_unicast(router, neighbor, draw);
    NeighborFamilies all;
    const auto add = [&](const char* afi, const char* safi, State state) {
        if (state != State::Missing) {
            all.rows[all.count++] = {afi, safi, state == State::On, 0, 0};
        }
    };
    add("ipv4", "unicast", ipv4);
    add("ipv4", "mplsBgpVpn", vpn);
    add("ipv6", "unicast", ipv6);
    // The policies are those of the first family in use.
    uint32_t first = 0;
    while (first + 1 < all.count && !all.rows[first].on) {
        ++first;
    }
    all.rows[first].in_map = in_map(router, neighbor);
    all.rows[first].out_map = out_map(router, neighbor);
    return all;
}

}  // namespace bgp_generator::healthy
