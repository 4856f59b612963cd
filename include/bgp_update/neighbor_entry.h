// The keys of a neighbour's rows in the routing stack's tables, as arrays of values for the C API's `%*x`.
#pragma once

#include "bgp_update/bgp_utils.h"

/**
 * The key of a row of "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", in the MIB's order:
 *
 * | position | type         | value                              |
 * | -------- | ------------ | ---------------------------------- |
 * | 0        | C_UINT32     | entity index                       |
 * | 1        | C_ENUM_VALUE | local address type: 1 IPv4, 2 IPv6 |
 * | 2        | C_BINARY     | local address, a hex list          |
 * | 3        | C_UINT32     | 0, the local port                  |
 * | 4        | C_ENUM_VALUE | remote address type                |
 * | 5        | C_BINARY     | remote address, a hex list         |
 * | 6        | C_UINT32     | 0, the remote port                 |
 * | 7        | C_UINT32     | 0, the scope id                    |
 */
class BGP_UPDATE_EXPORT BgpUtils::NeighborEntry {
public:
    /**
     * Fills the key. A null `remote`, and a `count` of 0 or less, end the process by a fault. Addresses are the values
     * that the platform's conversion makes (`BgpUtils::IpToHexlist`), 0.0.0.0 included; one that is no C_BINARY ends the
     * process by a failed assertion.
     *
     * @param entity the entity index of the neighbour's router
     * @param remote the neighbour's address, a C_IPV4 or C_IPV6; another type stands for 0.0.0.0. Borrowed for the
     * object's life
     * @param local  the address on this side, null for none (0.0.0.0); as `remote`
     * @param count  the number of values: 8, and more for keys that begin with a peer's. Those behind position 7 are
     * C_NOEXISTS, for the caller to fill
     */
    NeighborEntry(uint32_t entity, confd_value_t* remote, confd_value_t* local, int count);

    /** Releases the two addresses, at positions 2 and 5, and the array. What stands behind position 7 is not. */
    virtual ~NeighborEntry();

    NeighborEntry(const NeighborEntry&) = delete;
    NeighborEntry& operator=(const NeighborEntry&) = delete;

    /**
     * The values.
     *
     * @return the first of them; owned by the object, and the caller's to change
     */
    confd_value_t* entry_values();

private:
    // In this order; code built against this class may rely on the layout.
    uint32_t entity_;
    int count_;
    confd_value_t* values_;
    confd_value_t* remote_;
    confd_value_t* local_;
};

/**
 * The key of a row of "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry": a peer's key, then the address family at
 * position 8 and the subsequent address family at position 9.
 */
class BGP_UPDATE_EXPORT BgpUtils::NeighborAfiSafiEntry : public BgpUtils::NeighborEntry {
public:
    /**
     * Fills the key, with the faults of `NeighborEntry`.
     *
     * @param entity the entity index of the neighbour's router
     * @param remote the neighbour's address, as for `NeighborEntry`
     * @param local  the address on this side, as for `NeighborEntry`
     * @param afi    the address family, borrowed for the call: position 8 gets a copy by `confd_value_dup_to`. Null for
     * IPv4, C_ENUM_VALUE 1. A copy that owns memory is the caller's to give back
     * @param safi   likewise for position 9; null for unicast, C_ENUM_VALUE 1
     */
    NeighborAfiSafiEntry(uint32_t entity, confd_value* remote, confd_value* local, confd_value* afi, confd_value* safi);
    ~NeighborAfiSafiEntry() override;
};
