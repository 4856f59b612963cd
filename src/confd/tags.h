// The tags of the data model: for each node name that is written or read as a tagged value, the number that ConfD
// hashes it to. The numbers in the table are those published with the data model; the compiler checks each against its
// name.
#pragma once

#include <cstdint>

#include "bgp_update/name_hash.h"

// X(name, number)
#define BGP_UPDATE_TAGS(X)                 \
    X(bgpRmEntIndex, 0x6553535E)           \
    X(bgpRmEntSelectDeferTime, 0x7E3B5CE0) \
    X(bgpRmEntStalePathTime, 0x03A22EFF)   \
    X(bgpRmEntAsSize, 0x35F32D06)          \
    X(bgpRmEntLocalAs, 0x5AFDF531)         \
    X(bgpRmEntAdminStatus, 0x6B08A5D1)     \
    X(bgpRmEntI3EntIndex, 0x1DEC19F6)      \
    X(bgpRmEntSupportIpv6, 0x40B1EE55)     \
    X(bgpRmEntLocalIdentifier, 0x037C186D) \
    X(bgpRmEntVrfName, 0x71CB58FD)         \
    X(bgpRmAfiSafiAfi, 0x6D007C5B)         \
    X(bgpRmAfiSafiSafi, 0x5DFD20D8)        \
    X(bgpRmAfiSafiAdminStatus, 0x315D27DA) \
    X(bgpNmEntIndex, 0x2EF8227E)           \
    X(bgpNmEntRmIndex, 0x7AAA6E13)         \
    X(bgpNmEntSckIndex, 0x25710DF4)        \
    X(bgpNmEntAdminStatus, 0x64751288)     \
    X(bgpNmEntVrfName, 0x7D91224B)         \
    X(bgpNmListenIndex, 0x3CF2D57B)        \
    X(bgpNmListenAddrType, 0x56C758C3)     \
    X(bgpNmListenAddr, 0x2E5F6A91)         \
    X(bgpNmListenPort, 0x2D7D2A72)         \
    X(bgpNmListenAdminStatus, 0x79538CBE)  \
    X(bgpRmAfmJoin, 0x25E71C2E)            \
    X(bgpRmAfmPartnerIndex, 0x00FDB8CE)    \
    X(bgpRmAfmAfi, 0x77ED81B4)             \
    X(bgpRmAfmSafi, 0x73CA79E4)            \
    X(bgpRmAfmAdminStatus, 0x158C5770)     \
    X(rtmEntityFteIndex, 0x09333AAC)       \
    X(rtmEntityAddressFamily, 0x3BECF52E)  \
    X(rtmEntityI3Index, 0x26DCB9FD)        \
    X(rtmEntityAdminStat, 0x01F1987F)      \
    X(rtmMjRtmFteIndex, 0x60B77A41)        \
    X(rtmMjSlaveFteId, 0x0F39AC2A)         \
    X(rtmMjSlaveType, 0x3247A0F6)          \
    X(rtmMjSafi, 0x28CC170B)               \
    X(rtmMjAdminStatus, 0x7E6EA064)        \
    X(rtmRedistFteIndex, 0x6A914910)       \
    X(rtmRedistEntryId, 0x7495DEB9)        \
    X(rtmRedistInfoDest, 0x41BBFC01)       \
    X(rtmRedistAddrFilterType, 0x27B53C74) \
    X(rtmRedistInfoSrc, 0x4673DA6D)        \
    X(rtmRedistRedistFlag, 0x0FC4103E)     \
    X(rtmRedistAdminStat, 0x7EDD4BB5)      \
    X(bgpPeerEntry, 2019868348)            \
    X(bgpPeerAfiSafiEntry, 633450320)      \
    X(bgpPeerLocalAddrType, 511158643)     \
    X(bgpPeerLocalAddr, 1732659340)        \
    X(bgpPeerLocalPort, 117318093)         \
    X(bgpPeerRemoteAddrType, 1849096296)   \
    X(bgpPeerRemoteAddr, 986037174)        \
    X(bgpPeerRemotePort, 601373218)        \
    X(bgpPeerLocalAddrScopeId, 1874805553) \
    X(bgpPeerConfigDropWarn, 1083461765)   \
    X(bgpPeerConfigMaxPrfx, 1532911794)    \
    X(bgpPeerAfiSafiAfi, 1978102995)       \
    X(bgpPeerAfiSafiSafi, 976835779)       \
    X(bgpPeerAfiSafiConfigDropWarn, 238551178)

namespace tag {

// NOLINTBEGIN(bugprone-macro-parentheses): the name is declared
#define BGP_UPDATE_TAG(name, number)                        \
    constexpr uint32_t name = bgp_update::name_hash(#name); \
    static_assert(name == number, #name " has another number");
BGP_UPDATE_TAGS(BGP_UPDATE_TAG)
// NOLINTEND(bugprone-macro-parentheses)
#undef BGP_UPDATE_TAG

// The namespace in which paths under "/DC-BGP-MIB" begin, as cdb_set_namespace() and maapi_set_namespace() take it.
constexpr int kBgpMibNamespace = static_cast<int>(bgp_update::name_hash("http://tail-f.com/ns/mibs/DC-BGP-MIB"));
static_assert(kBgpMibNamespace == 82011741);

}  // namespace tag
