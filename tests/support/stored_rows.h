// Stored rows as XML: leaves, the modules around their tables, and the keys that a neighbour's rows have.
#pragma once

#include <string>

namespace bgp_test {

inline std::string leaf(const std::string& name, const std::string& value)
{
    return "<" + name + ">" + value + "</" + name + ">";
}

// Tables of the BGP stack.
inline std::string mib(const std::string& tables)
{
    return R"(<DC-BGP-MIB xmlns="http://tail-f.com/ns/mibs/DC-BGP-MIB">)" + tables + "</DC-BGP-MIB>";
}

// The command line's bookkeeping.
inline std::string internal(const std::string& content)
{
    return R"(<internal xmlns="urn:bgp-update:yang:metacli-internal">)" + content + "</internal>";
}

// The router of the command-line model, /router/bgp{as}.
inline std::string router(const std::string& as, const std::string& content)
{
    return R"(<router xmlns="urn:bgp-update:yang:router"><bgp>)" + leaf("as-number", as) + content + "</bgp></router>";
}

// The eight keys of a neighbour's rows; the addresses as octets, "0a:00:00:01".
inline std::string peer_keys(const std::string& entity, const std::string& local, const std::string& remote,
                             const std::string& remote_port = "0", const std::string& scope_id = "0",
                             const std::string& address_type = "ipv4")
{
    return leaf("bgpRmEntIndex", entity) + leaf("bgpPeerLocalAddrType", address_type) +
           leaf("bgpPeerLocalAddr", local) + leaf("bgpPeerLocalPort", "0") +
           leaf("bgpPeerRemoteAddrType", address_type) + leaf("bgpPeerRemoteAddr", remote) +
           leaf("bgpPeerRemotePort", remote_port) + leaf("bgpPeerLocalAddrScopeId", scope_id);
}

}  // namespace bgp_test
