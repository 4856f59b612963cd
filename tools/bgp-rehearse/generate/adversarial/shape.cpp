#include "generate/adversarial/shape.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "generate/address_text.h"

namespace bgp_generator {

namespace {

constexpr uint32_t kFirstIpv4 = 0x0A000002;  // 10.0.0.2, then every fourth
constexpr uint32_t kIpv4Step = 4;

// Index 1 is the one that the global instance gets, 2 the one behind it.
constexpr uint32_t kGlobalIndex = 1;
constexpr uint32_t kIndexOfVrf1 = 65537;
constexpr uint32_t kIndexes[] = {kGlobalIndex, kGlobalIndex, 2, 5, 5, 5, 7, 100, 0, kIndexOfVrf1, 4294967295};

constexpr GlobalMaps kGlobalMaps[] = {GlobalMaps::None,      GlobalMaps::None,       GlobalMaps::None,
                                      GlobalMaps::None,      GlobalMaps::None,       GlobalMaps::Empty,
                                      GlobalMaps::OfOtherAs, GlobalMaps::OfTheEntity};

uint32_t ipv4_of(uint32_t number)
{
    return kFirstIpv4 + number * kIpv4Step;
}

}  // namespace

std::string Neighbor::local_octets() const
{
    switch (local) {
        case LocalAddress::Unknown:
            return {};
        case LocalAddress::AnyIpv4:
            return kAnyIpv4Octets;
        case LocalAddress::OwnIpv4:
            return ipv4_octets(ipv4_of(number) - 1);
        case LocalAddress::AnyIpv6:
            break;
    }
    return kAnyIpv6Octets;
}

std::string Neighbor::remote_octets() const
{
    return ipv6() ? "20:01:0d:b8:00:00:00:00:00:00:00:01:" + ipv4_octets(number) : ipv4_octets(ipv4_of(number));
}

std::string Neighbor::remote_text() const
{
    if (!ipv6()) {
        return ipv4_text(ipv4_of(number));
    }
    char text[sizeof "2001:db8::1:ffff:ffff"];
    std::snprintf(text, sizeof text, "2001:db8::1:%x:%x", number >> 16, number & 0xFFFF);
    return text;
}

const char* Neighbor::local_type() const noexcept
{
    if (local == LocalAddress::Unknown) {
        return "unknown";
    }
    return ipv6() ? "ipv6" : "ipv4";
}

LocalAddress Shape::Cuts::at(uint32_t position) const noexcept
{
    if (position < ends[0]) {
        return LocalAddress::Unknown;
    }
    if (position < ends[1]) {
        return LocalAddress::AnyIpv4;
    }
    return position < ends[2] ? LocalAddress::OwnIpv4 : LocalAddress::AnyIpv6;
}

Shape::Shape(const Settings& settings) : settings_(settings)
{
    Draw shape = draw(Subject::Shape);
    global_maps_ = shape.one_of(kGlobalMaps);
    draw_owners(shape);
    neighbors_ = share_out(settings.neighbors, shape.one_in(3));
    route_maps_ = share_out(settings.route_maps, shape.one_in(3));
    has_router_ = settings.vrfs > 0 || shape.one_in(2);
    router_as_ = shape.one_in(10) ? first().as + 1 : first().as;
    rules_in_list_ = 1 + shape.below(12);
}

void Shape::draw_owners(Draw& draw)
{
    constexpr uint32_t kBehind[] = {0, 1, 3};
    uint32_t index = draw.one_of(kIndexes);
    // With the maps there the entity stays under its index, which then must not be that of a VRF's instance.
    if (global_maps_ == GlobalMaps::OfTheEntity && index == kIndexOfVrf1) {
        index = kGlobalIndex;
    }
    const uint32_t as = 64512 + draw.below(1000);
    for (uint32_t i = 0; i < settings_.entities && i < std::size(kBehind); ++i) {
        owners_.push_back({index + kBehind[i], true, as + i});
    }
    // The rows of an entity that is gone: under the next index, or farther off.
    const uint32_t stranger = index + (settings_.entities < 2 && draw.one_in(2) ? 1 : 6);
    owners_.push_back({stranger, false, as});
    std::sort(owners_.begin(), owners_.end(), [](const Owner& a, const Owner& b) { return a.index < b.index; });
}

const Owner& Shape::first() const noexcept
{
    const auto entity =
        std::find_if(owners_.begin(), owners_.end(), [](const Owner& owner) { return owner.is_entity; });
    return entity == owners_.end() ? owners_.front() : *entity;
}

uint32_t Shape::lists() const noexcept
{
    return settings_.prefix_rules / rules_in_list_ + (settings_.prefix_rules % rules_in_list_ != 0);
}

// An eighth of the rows belongs to no entity; these repeat the numbers of others, or go on behind them.
std::vector<Block> Shape::share_out(uint32_t count, bool repeat) const
{
    const uint32_t stray = settings_.entities == 0 ? count : count / 8;
    const uint32_t regular = count - stray;
    std::vector<Block> blocks;
    uint32_t shared = 0;
    uint32_t entity = 0;
    for (const Owner& owner : owners_) {
        if (!owner.is_entity) {
            blocks.push_back({owner, repeat ? 0 : regular, stray});
            continue;
        }
        const uint32_t until = static_cast<uint32_t>(uint64_t{regular} * ++entity / settings_.entities);
        blocks.push_back({owner, shared, until - shared});
        shared = until;
    }
    return blocks;
}

Shape::Cuts Shape::cuts_of(std::size_t block) const
{
    Draw shares = draw(Subject::NeighborShares, block);
    const uint32_t count = neighbors_[block].count;
    Cuts cuts{{shares.below(count / 4 + 1), shares.below(count + 1), shares.below(count + 1)}};
    std::sort(std::begin(cuts.ends), std::end(cuts.ends));
    return cuts;
}

Vrf Shape::vrf(uint32_t position) const
{
    Draw of = draw(Subject::Vrf, position);
    char name[sizeof "vrf-00000"];
    std::snprintf(name, sizeof name, "vrf-%05u", (position + 1) % 100000);
    Vrf vrf;
    vrf.name = name;
    vrf.index = position + 1;
    vrf.mapped = !of.one_in(8);
    vrf.ipv4 = !of.one_in(4);
    vrf.ipv6 = of.one_in(2);
    return vrf;
}

}  // namespace bgp_generator
