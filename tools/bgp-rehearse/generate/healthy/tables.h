// The parts of a router's configuration, in the order in which they are written.
#pragma once

#include "generate/healthy/router.h"
#include "generate/xml_rows.h"

namespace bgp_generator::healthy {

void write_entity_tables(const Router& router, XmlRows* rows);       // DC-BGP-MIB: what belongs to the entity,
void write_neighbor_tables(const Router& router, XmlRows* rows);     // its neighbours,
void write_route_maps(const Router& router, XmlRows* rows);          // its route maps
void write_stack_tables(const Router& router, XmlRows* rows);        // DC-RTM-MIB, DC-OSPF-MIB, MPLS-VPN-MIB
void write_access_lists(const Router& router, XmlRows* rows);        // DC-AALL-MIB
void write_command_line_model(const Router& router, XmlRows* rows);  // router, redist-protocol
void write_prefix_lists(const Router& router, XmlRows* rows);        // prefix-list
void write_internal_tables(const Router& router, XmlRows* rows);     // metacli-internal
void write_index_maps(const Router& router, XmlRows* rows);          // bgp-internal

}  // namespace bgp_generator::healthy
