// The redistribution rules by which the routing table manager (RTM) of a VRF hands its routes to BGP, and the OSPF
// PE-CE procedures of RFC 4577 for those that come from OSPF. Handles: update.h.
#pragma once

#include <nzmw_log.h>
#include <nzmw_trace.h>

#include <cstdint>

#include "bgp_update/bgp_utils.h"

/** Where redistributed routes come from. The numbers are the interface; what they stand for in the RTM is beside. */
enum class RtmRedistInfoSource : int {
    kOther = 0,       // 0x1
    kAll = 1,         // 0x0
    kBgp = 2,         // 0xE0000
    kManagement = 3,  // 0x30000
    kLocal = 4,       // 0x20000
    kOspf = 5,        // 0xD0000
};

/**
 * A namespace of static functions; there are no objects of it. Not for several threads at once.
 *
 * Failures are traced and passed over. A value of another type than the data model gives it ends the process by a
 * failed assertion. Texts are NUL-terminated, borrowed and not written to; trace lines have level 10.
 */
class BGP_UPDATE_EXPORT BgpUtils::BgpVrfRedistEntry {
public:
    BgpVrfRedistEntry() = delete;

    /**
     * The routing stack's number for a source, as the leaf rtmRedistInfoSrc has it.
     *
     * @param source the source; numbers that it does not have stand for all sources
     * @return the number, 0 for all sources
     */
    static uint32_t GetMetaswitchInfoSourceType(RtmRedistInfoSource source);

    /**
     * Writes the rule that hands the routes of one source of a VRF to BGP: the row of
     * "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry" with the VRF's RTM index and the source times 2^24 as its keys. A row
     * that is there is overwritten.
     *
     * The RTM index is looked up as `BgpUtils::GetRtmIndexFromVrf` does. For an unknown VRF nothing is written.
     *
     * @param log      not used
     * @param category the trace category to report to; null for no report
     * @param vrfName  the VRF's name
     * @param source   where the routes come from
     * @param ipv6     true for the IPv6 manager and IPv6 routes, false for IPv4
     * @return 0, also when nothing could be written
     */
    static int BgpVrfRedistCreateType(int maapi_socket, int thandle, nzmw_log_t* log, nzmw_trace_category_t category,
                                      char* vrfName, RtmRedistInfoSource source, bool ipv6);

    /**
     * Switches the OSPF PE-CE procedures of RFC 4577 of a VRF: in the rules that redistribute the routes of the VRF's
     * OSPF process, and in the process's entity ("/DC-OSPF-MIB:DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry"). They get
     * true when `enable` is set and the IPv4 VPN family of BGP entity 1 is administratively up, else false.
     *
     * Does nothing for a source other than OSPF, for an unknown VRF, for a VRF without an OSPF process, and when the
     * rule of that process is not there. The rule's number is the process number's low 16 bits and 0x2010000; the rule
     * 0x5000000 gets the switch too.
     *
     * @param tctx     not null when the source is OSPF
     * @param log      not used
     * @param category the trace category to report to; null for no report
     * @param vrfName  the VRF's name
     * @param source   where the routes come from
     * @param enable   whether the procedures are wanted
     * @param ipv6     true for the IPv6 manager of the VRF
     * @return 0, also when nothing could be written
     */
    static int Rfc4577Support(int maapi_socket, confd_trans_ctx* tctx, nzmw_log_t* log, nzmw_trace_category_t category,
                              char* vrfName, RtmRedistInfoSource source, bool enable, bool ipv6);

    /**
     * The OSPF process of a VRF, from "/internal/ospf-proc-id-to-index": as the transaction has it or, where that has
     * none that can be read, the running datastore.
     *
     * The first entry in list order decides whose VRF name begins `vrfName`: an entry for "red" is taken for "red2"
     * too.
     *
     * @param tctx       leads to the daemon's interface
     * @param category   the trace category to report to; null for no report
     * @param vrfName    the VRF's name
     * @param procId     receives the process number, a C_UINT32
     * @param compoundId receives the index of the process's OSPF entity, a C_UINT32
     * @return 0; -1 when a pointer other than `category` and `vrfName` is null or no process was found, in which case
     *         the values hold nothing to release
     */
    static int32_t GetOspfProcIdCompoundId(int32_t maapi_socket, confd_trans_ctx* tctx, nzmw_trace_category_t category,
                                           const char* vrfName, confd_value_t* procId, confd_value_t* compoundId);
};
