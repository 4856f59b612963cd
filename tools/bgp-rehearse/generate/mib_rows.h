// Columns and rows of the routing stack that every configuration has alike, whatever is drawn.
#pragma once

#include <cstdint>

#include "generate/xml_rows.h"

namespace bgp_generator {

// The key of a neighbour's row, which the rows of its address families and its status begin with, too.
template <typename Neighbor>
void write_neighbor_key(uint32_t entity, const Neighbor& neighbor, XmlRows* rows)
{
    rows->leaf("bgpRmEntIndex", entity);
    rows->leaf("bgpPeerLocalAddrType", neighbor.local_type());
    rows->leaf("bgpPeerLocalAddr", neighbor.local_octets());
    rows->leaf("bgpPeerLocalPort", 0);
    rows->leaf("bgpPeerRemoteAddrType", neighbor.remote_type());
    rows->leaf("bgpPeerRemoteAddr", neighbor.remote_octets());
    rows->leaf("bgpPeerRemotePort", 0);
    rows->leaf("bgpPeerLocalAddrScopeId", 0);
}

// A routing table of the RTM, which joins and rules refer to.
inline void write_rtm_entity(uint32_t index, const char* family, XmlRows* rows)
{
    rows->begin("rtmEntityEntry");
    rows->leaf("rtmEntityFteIndex", index);
    rows->leaf("rtmEntityAddressFamily", family);
    rows->leaf("rtmEntityI3Index", 1);
    rows->leaf("rtmEntityAdminStat", "up");
    rows->end("rtmEntityEntry");
}

inline void write_rtm_join(uint32_t rtm_index, uint32_t slave, const char* type, XmlRows* rows)
{
    rows->begin("rtmMjEntry");
    rows->leaf("rtmMjRtmFteIndex", rtm_index);
    rows->leaf("rtmMjSlaveFteId", slave);
    rows->leaf("rtmMjSlaveType", type);
    rows->leaf("rtmMjSafi", "unicast");
    rows->leaf("rtmMjAdminStatus", "up");
    rows->end("rtmMjEntry");
}

}  // namespace bgp_generator
