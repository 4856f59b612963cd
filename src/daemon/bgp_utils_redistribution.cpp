// The redistribution rule that hands the routes of one source of a VRF to BGP: a row of the routing table manager's
// "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry".
#include <array>

#include "bgp_update/bgp_vrf_redist_entry.h"
#include "confd/mib_values.h"
#include "confd/tagged.h"
#include "confd/tags.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "daemon/trace.h"

using confd::tagged::enum_value;
using confd::tagged::uint32;

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";

constexpr int32_t kRedistribute = 1;
constexpr int kSourceShift = 24;  // of the source within a rule's number

// The routing stack's numbers, by source.
constexpr uint32_t kAllSources = 0;
constexpr std::array<uint32_t, 6> kInfoSources = {0x1, kAllSources, 0xE0000, 0x30000, 0x20000, 0xD0000};

}  // namespace

uint32_t BgpUtils::BgpVrfRedistEntry::GetMetaswitchInfoSourceType(RtmRedistInfoSource source)
{
    const auto number = static_cast<uint32_t>(source);
    return number < kInfoSources.size() ? kInfoSources[number] : kAllSources;
}

int BgpUtils::BgpVrfRedistEntry::BgpVrfRedistCreateType(int maapi_socket, int thandle, nzmw_log_t* /*log*/,
                                                        nzmw_trace_category_t category, char* vrfName,
                                                        RtmRedistInfoSource source, bool ipv6)
{
    const confd::Transaction transaction{maapi_socket, thandle};

    confd::Value myval;
    if (GetRtmIndexFromVrf(maapi_socket, thandle, vrfName, &myval, ipv6) != CONFD_OK) {
        BGP_TRACE_TO(category, __func__, trace_level::kLookup, "Trying to configure a non existent VRF!");
        return 0;
    }
    BGP_REQUIRE_TYPE(__LINE__, &myval, C_UINT32);
    const uint32_t rtm_index = CONFD_GET_UINT32(&myval);
    BGP_TRACE_TO(category, __func__, trace_level::kLookup, "Creating/Updating redist rule RTM: %u, src_type: %d",
                 rtm_index, static_cast<int>(source));
    const confd_tag_value_t row[] = {
        uint32(tag::rtmRedistFteIndex, rtm_index),
        uint32(tag::rtmRedistEntryId, static_cast<uint32_t>(source) << kSourceShift),
        enum_value(tag::rtmRedistInfoDest, mib::kRedistIntoBgp),
        enum_value(tag::rtmRedistAddrFilterType, ipv6 ? mib::kIpv6 : mib::kIpv4),
        enum_value(tag::rtmRedistInfoSrc, static_cast<int32_t>(GetMetaswitchInfoSourceType(source))),
        enum_value(tag::rtmRedistRedistFlag, kRedistribute),
        enum_value(tag::rtmRedistAdminStat, mib::kUp),
    };
    transaction.set_values(row, "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry");
    return 0;
}
