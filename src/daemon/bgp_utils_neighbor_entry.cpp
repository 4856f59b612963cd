// The keys of a neighbour's rows: from its addresses to the key values of the peer tables.
#include <algorithm>

#include "bgp_update/neighbor_entry.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/type_check.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";

// Positions in the key.
constexpr int kEntity = 0;
constexpr int kLocalAddressType = 1;
constexpr int kLocalAddress = 2;
constexpr int kLocalPort = 3;
constexpr int kRemoteAddressType = 4;
constexpr int kRemoteAddress = 5;
constexpr int kRemotePort = 6;
constexpr int kScopeId = 7;
constexpr int kPeerKeys = 8;
constexpr int kAfi = 8;
constexpr int kSafi = 9;
constexpr int kAfiSafiKeys = 10;

// Room for a peer's key at least, so that a count that is too small leaves nothing outside of the array.
confd_value_t* absent_values(int count)
{
    const auto room = static_cast<std::size_t>(std::max(count, kPeerKeys));
    auto* const values = new confd_value_t[room]();
    for (std::size_t i = 0; i < room; ++i) {
        CONFD_SET_NOEXISTS(&values[i]);
    }
    return values;
}

void copy_or_default(const confd_value* given, int32_t otherwise, confd_value* value)
{
    if (given != nullptr) {
        confd_value_dup_to(given, value);
    } else {
        CONFD_SET_ENUM_VALUE(value, otherwise);
    }
}

}  // namespace

// cppcheck-suppress uninitMemberVar ; it does not see the initialisers of a try block
BgpUtils::NeighborEntry::NeighborEntry(uint32_t entity, confd_value_t* remote, confd_value_t* local, int count)
try : entity_(entity), count_(count), values_(nullptr), remote_(remote), local_(local) {
    if (remote_ == nullptr || count_ <= 0) {
        confd::fault("NeighborEntry", kSource, __LINE__, "a peer's key needs a remote address and a count above 0");
    }
    int local_type = 0;
    confd_value_t local_ip_val;
    CONFD_SET_NOEXISTS(&local_ip_val);
    IpToHexlist(local_, &local_ip_val, &local_type);
    BGP_REQUIRE_TYPE(__LINE__, &local_ip_val, C_BINARY);
    int remote_type = 0;
    confd_value_t remote_ip;
    CONFD_SET_NOEXISTS(&remote_ip);
    IpToHexlist(remote_, &remote_ip, &remote_type);
    BGP_REQUIRE_TYPE(__LINE__, &remote_ip, C_BINARY);

    values_ = absent_values(count_);
    CONFD_SET_UINT32(&values_[kEntity], entity_);
    CONFD_SET_ENUM_VALUE(&values_[kLocalAddressType], local_type);
    values_[kLocalAddress] = local_ip_val;
    CONFD_SET_UINT32(&values_[kLocalPort], 0);
    CONFD_SET_ENUM_VALUE(&values_[kRemoteAddressType], remote_type);
    values_[kRemoteAddress] = remote_ip;
    CONFD_SET_UINT32(&values_[kRemotePort], 0);
    CONFD_SET_UINT32(&values_[kScopeId], 0);
}
BGP_FAULT_ON_EXCEPTION(__func__)

BgpUtils::NeighborEntry::~NeighborEntry()
{
    confd_free_value(&values_[kLocalAddress]);
    confd_free_value(&values_[kRemoteAddress]);
    delete[] values_;
}

confd_value_t* BgpUtils::NeighborEntry::entry_values()
{
    return values_;
}

BgpUtils::NeighborAfiSafiEntry::NeighborAfiSafiEntry(uint32_t entity, confd_value* remote, confd_value* local,
                                                     confd_value* afi, confd_value* safi)
    : NeighborEntry(entity, remote, local, kAfiSafiKeys)
{
    copy_or_default(afi, mib::kIpv4, &entry_values()[kAfi]);
    copy_or_default(safi, mib::kUnicast, &entry_values()[kSafi]);
}

BgpUtils::NeighborAfiSafiEntry::~NeighborAfiSafiEntry() = default;
