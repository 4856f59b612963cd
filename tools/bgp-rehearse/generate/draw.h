// Random numbers that are the same everywhere and can be drawn again: what is drawn about one thing - a neighbour, a
// VRF - depends on the seed and on that thing alone, so that each table that names it finds it as the others do.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bgp_generator {

enum class Subject : uint64_t {
    Shape = 1,
    Entity,
    NeighborShares,
    Neighbor,
    Families,
    NeighborHidden,
    RouteMap,
    PrefixRule,
    PrefixListName,
    Vrf,
    VrfNeighbors,
    Redistribution,
    Joins,
    Listens,
    Hidden,
    Router,
    Ospf,
};

// SplitMix64, started anew for each thing.
class Draw {
public:
    Draw(uint64_t seed, Subject subject, uint64_t number = 0)
        : state_(mixed(mixed(seed) ^ mixed(static_cast<uint64_t>(subject) << 56 ^ number)))
    {
    }

    uint64_t next() noexcept { return mixed(state_ += kStep); }

    // A number from 0 to below `end`, which is not 0.
    uint32_t below(uint32_t end) noexcept { return static_cast<uint32_t>((next() >> 32) * end >> 32); }
    bool one_in(uint32_t many) noexcept { return below(many) == 0; }

    template <typename T, std::size_t N>
    const T& one_of(const T (&choices)[N]) noexcept
    {
        return choices[below(static_cast<uint32_t>(N))];
    }

private:
    static constexpr uint64_t kStep = 0x9E3779B97F4A7C15;

    static uint64_t mixed(uint64_t bits) noexcept
    {
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
        return bits ^ bits >> 31;
    }

    uint64_t state_;
};

}  // namespace bgp_generator
