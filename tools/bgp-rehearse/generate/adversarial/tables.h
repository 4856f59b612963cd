// The parts of a configuration, one for each group of modules, in the order in which they are written.
#pragma once

#include "generate/adversarial/shape.h"
#include "generate/xml_rows.h"

namespace bgp_generator {

void write_bgp_tables(const Shape& shape, XmlRows* rows);          // DC-BGP-MIB
void write_stack_tables(const Shape& shape, XmlRows* rows);        // DC-RTM-MIB, DC-OSPF-MIB, MPLS-VPN-MIB
void write_access_lists(const Shape& shape, XmlRows* rows);        // DC-AALL-MIB
void write_command_line_model(const Shape& shape, XmlRows* rows);  // router, prefix-list
void write_redistribution_map(const Shape& shape, XmlRows* rows);  // redist-protocol
void write_internal_tables(const Shape& shape, XmlRows* rows);     // metacli-internal
void write_index_maps(const Shape& shape, XmlRows* rows);          // bgp-internal

// A rule by which the RTM hands routes on, as its own table and the maps of rules see it.
struct Redistribution {
    enum class Destination { Bgp, Ospf, All, Missing };

    uint32_t entity = 0;
    uint32_t rtm_index = 0;
    uint32_t entry = 0;
    Destination destination = Destination::Bgp;
    uint32_t network = 0;  // announced network, 0 for none
};

// Calls visit(const Redistribution&) for the rules of all owners.
template <typename Visit>
void for_each_redistribution(const Shape& shape, Visit&& visit)
{
    using Destination = Redistribution::Destination;
    constexpr Destination kDestinations[] = {Destination::Bgp,  Destination::Bgp, Destination::Bgp,    Destination::Bgp,
                                             Destination::Ospf, Destination::All, Destination::Missing};
    constexpr uint32_t kSources[] = {1, 3, 4, 5};  // in the upper octet of the rule's number, the instance below
    constexpr uint32_t kFirstNetwork = 555337809;
    for (const uint32_t rtm_index : {1U, 2U}) {
        for (const uint32_t source : kSources) {
            for (const Owner& owner : shape.owners()) {
                Draw draw = shape.draw(Subject::Redistribution, uint64_t{owner.index} << 8 | rtm_index << 4 | source);
                const Destination destination = draw.one_of(kDestinations);
                if (draw.one_in(2)) {
                    visit(Redistribution{owner.index, rtm_index, (source << 24) + owner.index, destination, 0});
                }
            }
        }
        const uint32_t networks = shape.draw(Subject::Redistribution, rtm_index).below(4);
        for (uint32_t i = 0; i < networks; ++i) {
            visit(Redistribution{shape.first().index, rtm_index, kFirstNetwork + i, Destination::Bgp, i + 1});
        }
    }
}

}  // namespace bgp_generator
