// Rows of the tables that are keyed by the router entity's index, as XML and as they are named in paths.
#pragma once

#include <string>

#include "support/stored_rows.h"

namespace bgp_test {

// Tables of a module, around their rows: bgp_mib("bgpNmEntTable", ...).
inline std::string bgp_mib(const std::string& table, const std::string& rows)
{
    return mib(leaf(table, rows));
}

inline std::string rtm_mib(const std::string& table, const std::string& rows)
{
    return R"(<DC-RTM-MIB xmlns="http://tail-f.com/ns/mibs/DC-RTM-MIB">)" + leaf(table, rows) + "</DC-RTM-MIB>";
}

// A router entity with the local AS 65010.
inline std::string entity_row(const std::string& index)
{
    return bgp_mib("bgpRmEntTable",
                   leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", index) + leaf("bgpRmEntLocalAs", "65010")));
}

// The eight keys of the neighbour 10.0.0.1 of an entity.
inline std::string peer_keys(const std::string& index)
{
    return peer_keys(index, "00:00:00:00", "0a:00:00:01");
}

inline std::string peer_row(const std::string& index)
{
    return bgp_mib("bgpPeerTable", leaf("bgpPeerEntry", peer_keys(index) + leaf("bgpPeerLocalNm", index)));
}

inline std::string network_entity_row(const std::string& index)
{
    return bgp_mib("bgpNmEntTable",
                   leaf("bgpNmEntEntry", leaf("bgpNmEntIndex", index) + leaf("bgpNmEntRmIndex", index)));
}

inline std::string listen_row(const std::string& index, const std::string& number)
{
    return bgp_mib("bgpNmListenTable",
                   leaf("bgpNmListenEntry", leaf("bgpNmEntIndex", index) + leaf("bgpNmListenIndex", number)));
}

// A redistribution rule of the table manager 1; `dest` is the leaf, or nothing.
inline std::string redist_row(const std::string& number, const std::string& dest)
{
    return rtm_mib("rtmRedistTable",
                   leaf("rtmRedistEntry", leaf("rtmRedistFteIndex", "1") + leaf("rtmRedistEntryId", number) + dest));
}

inline std::string protocol_row(const std::string& number, const std::string& leaves)
{
    return R"(<redist-protocol xmlns="urn:bgp-update:yang:redist-protocol">)" + leaf("rtm-index", "1") +
           leaf("entry", number) + leaves + "</redist-protocol>";
}

// A partner of the table manager 1.
inline std::string partner_row(const std::string& slave, const std::string& type)
{
    return rtm_mib("rtmMjTable", leaf("rtmMjEntry", leaf("rtmMjRtmFteIndex", "1") + leaf("rtmMjSlaveFteId", slave) +
                                                        leaf("rtmMjSlaveType", type)));
}

// The neighbour 10.0.0.1 as the command line keeps it; `keys` is the leaf, or nothing.
inline std::string global_peer_row(const std::string& index, const std::string& keys)
{
    return internal(leaf("bgpPeerEntry-global", leaf("entity", index) + leaf("peer", "10.0.0.1") + keys));
}

}  // namespace bgp_test
