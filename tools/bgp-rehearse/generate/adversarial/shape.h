// What is drawn once for a whole configuration: who owns rows, which neighbours and VRFs there are, what is missing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "generate/draw.h"
#include "generate/settings.h"

namespace bgp_generator {

// An entity index that rows are keyed by: of a router entity, or of none that is there any more.
struct Owner {
    uint32_t index = 0;
    bool is_entity = false;
    uint32_t as = 0;
};

// Rows of one owner, numbered on from `first`.
struct Block {
    Owner owner;
    uint32_t first = 0;
    uint32_t count = 0;
};

enum class LocalAddress { Unknown, AnyIpv4, OwnIpv4, AnyIpv6 };

struct Neighbor {
    uint32_t owner = 0;
    LocalAddress local = LocalAddress::AnyIpv4;
    uint32_t number = 0;   // tells the address; two owners may have a neighbour of the same number
    uint32_t ordinal = 0;  // among all neighbours

    bool ipv6() const noexcept { return local == LocalAddress::AnyIpv6; }
    std::string local_octets() const;   // "0a:00:00:01"
    std::string remote_octets() const;  //
    std::string remote_text() const;    // "10.0.0.1"
    const char* local_type() const noexcept;
    const char* remote_type() const noexcept { return ipv6() ? "ipv6" : "ipv4"; }
};

struct Vrf {
    std::string name;
    uint32_t index = 0;
    bool mapped = false;  // in the VRF maps
    bool ipv4 = false;    // address families of the command-line model
    bool ipv6 = false;
};

// What stands below /bgp-internal for VRF 0.
enum class GlobalMaps { None, Empty, OfOtherAs, OfTheEntity };

class Shape {
public:
    explicit Shape(const Settings& settings);

    Draw draw(Subject subject, uint64_t number = 0) const { return {settings_.seed, subject, number}; }
    const Settings& settings() const noexcept { return settings_; }

    // In the order of their indexes; one of them is no entity.
    const std::vector<Owner>& owners() const noexcept { return owners_; }
    const std::vector<Block>& route_map_blocks() const noexcept { return route_maps_; }

    // The first entity; without any, the owner that is none.
    const Owner& first() const noexcept;

    bool has_router() const noexcept { return has_router_; }  // /router/bgp
    uint32_t router_as() const noexcept { return router_as_; }
    GlobalMaps global_maps() const noexcept { return global_maps_; }
    uint32_t rules_in_list() const noexcept { return rules_in_list_; }
    uint32_t lists() const noexcept;  // prefix access lists

    // Calls visit(const Neighbor&) for all, in key order, until it returns false.
    template <typename Visit>
    void for_each_neighbor(Visit&& visit) const
    {
        uint32_t ordinal = 0;
        for (std::size_t block = 0; block < neighbors_.size(); ++block) {
            const Cuts cuts = cuts_of(block);
            for (uint32_t i = 0; i < neighbors_[block].count; ++i) {
                const Block& of = neighbors_[block];
                if (!visit(Neighbor{of.owner.index, cuts.at(i), of.first + i, ordinal++})) {
                    return;
                }
            }
        }
    }

    template <typename Visit>
    void for_each_vrf(Visit&& visit) const
    {
        for (uint32_t i = 0; i < settings_.vrfs; ++i) {
            visit(vrf(i));
        }
    }

private:
    // Where in a block one kind of local address ends and the next begins.
    struct Cuts {
        uint32_t ends[3];
        LocalAddress at(uint32_t position) const noexcept;
    };

    void draw_owners(Draw& draw);
    std::vector<Block> share_out(uint32_t count, bool repeat) const;
    Cuts cuts_of(std::size_t block) const;
    Vrf vrf(uint32_t position) const;

    Settings settings_;
    std::vector<Owner> owners_;
    std::vector<Block> neighbors_;
    std::vector<Block> route_maps_;
    GlobalMaps global_maps_ = GlobalMaps::None;
    bool has_router_ = false;
    uint32_t router_as_ = 0;
    uint32_t rules_in_list_ = 1;
};

}  // namespace bgp_generator
