// What the upgrade shares with the device's BGP daemon, apart from the router manager: private sessions on the running
// configuration, the keepalive of long transactions, the release of values, the numbers of VRFs, BGP instances, route
// maps and route policies, and conversions between the command line's values and the routing stack's encodings.
// Handles: update.h.
#pragma once

#include <confd_lib.h>

#include <cstdint>
#include <string>

#include "bgp_update/export.h"

struct confd_trans_ctx;

/** A namespace of static functions; there are no objects of it. Not for several threads at once. */
class BGP_UPDATE_EXPORT BgpUtils {
public:
    BgpUtils() = delete;

    /**
     * Connects a socket to the device's ConfD (127.0.0.1, port 4565) and starts a read session on the running
     * datastore.
     *
     * @param sock a fresh stream socket, as `socket(AF_INET, SOCK_STREAM, 0)` makes it. On success it stays the
     * caller's, to be given to `EndCdbSession`; on failure it has been closed
     * @return 0, or -1 when the connection or the session could not be had
     */
    static int32_t StartCdbSession(int32_t sock);

    /**
     * Ends the session of a socket and closes it.
     *
     * @param sock a socket of `StartCdbSession`; it is closed also when it has no session
     * @return 0, whatever ending and closing report
     */
    static int32_t EndCdbSession(int32_t sock);

    /**
     * Keeps a long transaction from timing out; to be called between its pieces of work.
     *
     * The first call of the process fixes the interval for all later ones: `timeout` times 0.8, cut to whole seconds.
     * When that interval has passed since the last reset (at the first call: always), gives the running callback as
     * many seconds as the interval has, traces that to the category "bgp-app", and takes the time of the reset down in
     * `last_timeout`.
     *
     * @param timeout the transaction's timeout in seconds, counted only at the first call of the process; its 0.8-fold
     *                must fit a 32-bit integer
     * @return 0 when the interval has not passed, else the result of `confd_data_set_timeout`: CONFD_OK or CONFD_ERR
     */
    static int SetMaapiKeepalive(confd_trans_ctx* tctx, double timeout);

    /**
     * Releases what consecutive values own, each with `confd_free_dup_to_value`. The array itself stays the caller's.
     *
     * @param values the first of the values; not looked at when there are none
     * @param count  their number; 0 or less does nothing
     */
    static void FreeConfdValues(confd_value* values, int count);

    // Numbers of VRFs ------------------------------------------------------------------------------------------------
    //
    // The command-line layer keeps them below "/metacli-internal:internal/metacli-internal:vrf-config". A lookup reads
    // through the transaction first and, where that has no value, through a private session on the running datastore,
    // so that a VRF is found that is committed and not (or no longer) in the transaction. Texts are NUL-terminated,
    // borrowed and not written to. Failures are returned and nothing is traced.

    /**
     * The index of a VRF, by name.
     *
     * @param vrfName the VRF's name
     * @param out     receives a C_UINT32
     * @return 0; -1 when `out` is null or no session could be had; else the negative result of the failing `cdb_get`
     */
    static int GetVrfIndex(int maapi_socket, int thandle, char* vrfName, confd_value* out);

    /**
     * The name of a VRF, by index.
     *
     * @param vrfIdx the VRF's index
     * @param out    receives a C_BUF, which the caller gives back with `confd_free_value`
     * @return as `GetVrfIndex`
     */
    static int GetVrfNameFromIndex(int maapi_socket, int thandle, unsigned int vrfIdx, confd_value* out);

    /**
     * The index of a VRF's routing table manager (RTM), by the VRF's name.
     *
     * @param vrfName the VRF's name
     * @param out     receives a C_UINT32
     * @param ipv6    0 for the IPv4 manager, any other number for the IPv6 manager
     * @return as `GetVrfIndex`
     */
    static int GetRtmIndexFromVrf(int maapi_socket, int thandle, char* vrfName, confd_value* out, int ipv6);

    /**
     * Deletes all redistribution rows ("/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry") of a VRF's routing table manager
     * from the transaction. An index of another type than C_UINT32 ends the process by a failed assertion.
     *
     * @param vrfName the VRF's name
     * @param ipv6    true for the IPv6 manager
     * @return 0, also when there was no row; -1 when the manager's index could not be read, or when a row could not be
     *         deleted, in which case those after it are left
     */
    static int RtmVrfRedistRemoveAll(int maapi_socket, int thandle, char* vrfName, bool ipv6);

    // Numbers of BGP instances ---------------------------------------------------------------------------------------
    //
    // In each VRF, an AS number owns a 16-bit instance index; with the VRF it makes the compound index by which the
    // routing stack knows the instance. Both directions, the released indices and the counter are kept below
    // "/bgp-internal/bgp-vrf{VRF index}" and nowhere else, so that an allocation commits and rolls back with its
    // transaction.
    //
    // The operations that allocate and release trace to the category "bgp-app". A failed write, and a counter or a
    // released index that cannot be read, ends the process through the fault path; a value of another type than the
    // data model gives it, by a failed assertion.

    /**
     * The compound index of an instance: the VRF's base component (`libvrfid::VrfId::ComponentFromVrf`) plus the
     * instance index, in unsigned 32-bit arithmetic.
     *
     * @param instIdx the instance index (mind the order: instance first)
     * @param vrfIdx  the VRF's index
     * @return the compound index
     */
    static uint32_t GetBgpCompoundIdx(unsigned short instIdx, unsigned int vrfIdx);

    /**
     * The instance index in a compound index: its distance from the base component of the VRF that it belongs to
     * (`libvrfid::VrfId::VrfFromComponent`).
     *
     * @param compound a compound index
     * @return the instance index
     */
    static uint32_t GetInstIdxFromCompoundIdx(unsigned int compound);

    /**
     * The compound index of a VRF's first instance, the one with the lowest instance index.
     *
     * @param vrfIdx the VRF's index
     * @return the compound index, 0xFFFFFFFF when the transaction has no instance in the VRF
     */
    static uint32_t GetBgpCompoundIdxFromVrfIdx(int maapi_socket, int thandle, unsigned int vrfIdx);

    /**
     * The same by the VRF's name, which is looked up as `GetVrfIndex` does.
     *
     * @param vrfName  the VRF's name
     * @param compound receives the compound index, or 0xFFFFFFFF for a known VRF without an instance; left alone when
     *                 the VRF is not known
     * @return 0 when `compound` received a compound index, else -1
     */
    static int GetBgpCompoundIdxFromVrfName(int maapi_socket, int thandle, const std::string& vrfName,
                                            uint32_t& compound);

    /**
     * Gives an AS an instance index in a VRF: the first of the released ones, or else the counter's next. The AS must
     * have none there yet. After 65535 the counter goes on at 0 and hands out indices that may be in use.
     *
     * Where the transaction does not have the VRF's container, it is created, with the released indices and the counter
     * of the running datastore.
     *
     * @param cdb_socket its read session is on the datastore that holds the committed data
     * @param vrfIdx     the VRF's index
     * @param asNumber   the AS number
     * @return the compound index of the instance
     */
    static uint32_t CreateBgpCompoundIdx(int maapi_socket, int thandle, int32_t cdb_socket, uint32_t vrfIdx,
                                         uint32_t asNumber);

    /**
     * The same for a transaction's callback, with a CDB session of its own on the running datastore.
     *
     * @param vrfIdx   the VRF's index
     * @param asNumber the AS number
     * @return the compound index of the instance
     */
    static uint32_t CreateBgpCompoundIdx(int maapi_socket, confd_trans_ctx* tctx, uint32_t vrfIdx, uint32_t asNumber);

    /**
     * The compound index that an AS has in a VRF or, if it has none, would be given by `CreateBgpCompoundIdx`. Nothing
     * is allocated; where the transaction does not have the VRF's container, it is created and filled as there.
     *
     * @param vrfIdx   the VRF's index
     * @param asNumber the AS number
     * @return the compound index
     */
    static uint32_t GetNextBgpCompoundIdxCandidate(int maapi_socket, confd_trans_ctx* tctx, uint32_t vrfIdx,
                                                   uint32_t asNumber);

    /**
     * Releases the instance index that an AS has in a VRF by the running datastore; one that was given in the open
     * transaction cannot be released and ends the process through the fault path. The index waits for reuse, unless it
     * cannot be put back, which is traced and no more. With its last instance the VRF's container goes, and the
     * released indices and the counter with it.
     *
     * @param vrfIdx   the VRF's index
     * @param asNumber the AS number
     */
    static void DeleteBgpCompoundIdx(int maapi_socket, confd_trans_ctx* tctx, uint32_t vrfIdx, uint32_t asNumber);

    // Numbers of route maps and route policies -----------------------------------------------------------------------
    //
    // The routing stack knows route maps and route policies by number. Each VRF has its own numbers for its route maps,
    // and others for its route policies, kept below "/metacli-internal:internal/metacli-internal:vrf-config" in
    // metacli-internal:route-map and metacli-internal:route-policy by the VRF's name. Texts are NUL-terminated,
    // borrowed and not written to.
    //
    // All operations trace to the category "bgp-app". A failure of the counter, or of taking a released number off its
    // list, ends the process through the fault path, and a value of another type than the data model gives it by a
    // failed assertion; any other failure is traced and passed over.

    /**
     * The number of a route map as the transaction has it or, where it has none, the running datastore.
     *
     * @param vrfName  the VRF's name
     * @param mapName  the route map's name
     * @param vl_index receives a C_UINT32: the number, and 0 on failure
     * @return 0; -1 when `vl_index` is null or no session could be had; else the negative result of the failing
     *         `cdb_get`
     */
    static int GetRouteMapIdx(int maapi_socket, int thandle, char* vrfName, char* mapName, confd_value* vl_index);

    /**
     * Gives a route map a number: the one that it has, or the first of the released ones, or the counter's next. After
     * 2^32 - 1 the counter goes on at 0.
     *
     * A route map that is in the transaction without a number gets none; the number taken for it is lost.
     *
     * @param vrfName the VRF's name
     * @param mapName the route map's name
     * @return the number that is now stored for the route map, 0 when none is
     */
    static uint32_t CreateRouteMapIdx(int maapi_socket, int thandle, char* vrfName, char* mapName);

    /**
     * Takes a route map's number from it, to be given to another. The counter stays as it is, and so does the entry of
     * a VRF that has no route map left.
     *
     * @param vrfName the VRF's name
     * @param mapName the route map's name
     * @return 0, also when the number could not be put back; -1 when the route map has no number
     */
    static int DeleteRouteMapIdx(int maapi_socket, int thandle, char* vrfName, char* mapName);

    /** The number of a route policy; as `GetRouteMapIdx`. */
    static int GetRoutePolicyIdx(int maapi_socket, int thandle, char* vrfName, char* policyName, confd_value* vl_index);

    /** Gives a route policy a number, apart from those of route maps; as `CreateRouteMapIdx`. */
    static uint32_t CreateRoutePolicyIdx(int maapi_socket, int thandle, char* vrfName, char* policyName);

    /** Takes a route policy's number from it; as `DeleteRouteMapIdx`. */
    static int DeleteRoutePolicyIdx(int maapi_socket, int thandle, char* vrfName, char* policyName);

    /**
     * The eight octets of a route distinguisher (RFC 4364) or of a route target (RFC 4360), as the text form of a hex
     * list: two lower-case hex digits an octet, joined by colons.
     *
     * | ADMIN                | type of a distinguisher, of a target | the other six octets                  |
     * | -------------------- | ------------------------------------ | ------------------------------------- |
     * | decimal, below 65536 | 00:00, 00:02                         | ADMIN in two octets, NUMBER in four   |
     * | decimal from 65536   | 00:02, 02:02                         | ADMIN in four octets, NUMBER in two   |
     * | IPv4 address         | 00:01, 01:02                         | the address in four, NUMBER in two    |
     *
     * ADMIN ends at the first colon. A dot anywhere in the text makes ADMIN an IPv4 address. Both decimals are read as
     * `strtoul` reads them, so what follows their digits is left out, and are cut to 32 bits; a NUMBER of two octets is
     * cut to its low 16 bits. Nothing is reported.
     *
     * @param text         ADMIN:NUMBER, "100:1" or "192.0.2.1:5"
     * @param route_target true for a route target, false for a route distinguisher
     * @return "00:00:00:64:00:00:00:01" for the distinguisher "100:1"; eight zero octets for an empty text, a text
     * without a colon, and an ADMIN that should be an IPv4 address and is none
     */
    static std::string Rd2str(const std::string& text, bool route_target);

    /**
     * The eight octets of a route target: `Rd2str` with its flag true.
     *
     * @param text ADMIN:NUMBER
     * @return "00:02:00:64:00:00:00:01" for "100:1"
     */
    static std::string Rt2str(const std::string& text);

    /**
     * The AS numbers of a route's AS_PATH attribute (RFC 4271, section 4.3) as text, in order, a blank between them.
     *
     * The attribute is taken to hold one segment: all octets behind the first segment's header are AS numbers, and the
     * lengths that the attribute states are not looked at. Where the octets end within a number, the number is read as
     * if zeros followed, and a blank stands behind it.
     *
     * @param in_vl_as_path the whole attribute with its flags, type and length, a C_BINARY; another type ends the
     * process by a failed assertion. Borrowed, not changed
     * @param as_width      1 when AS numbers are two octets wide; with any other value they are four
     * @param out           receives a C_BUF, NUL-terminated beyond its size, whose octets the caller gives back with
     * `free` or `confd_free_value`. What it held is not released. Empty for an attribute of another type code and for
     * one without AS numbers
     * @return 0
     */
    static int GetRoutesAsPath(confd_value_t* in_vl_as_path, int as_width, confd_value_t* out);

    /**
     * Whether an address type of the MIBs is IPv6.
     *
     * @param val a C_ENUM_VALUE, 1 for IPv4 and 2 for IPv6; another type ends the process by a failed assertion
     * @return true for 2, false for every other number
     */
    static bool is_IPv6(confd_value_t* val);

    /**
     * An address as the hex list and the address type under which the MIB tables hold it.
     *
     * @param in        a C_IPV4 or C_IPV6, borrowed. Null and every other type stand for 0.0.0.0
     * @param out       receives the hex list as the platform's conversion makes it, for the caller to give back with
     *                  `confd_free_value`. 0.0.0.0 is made from its text (`Ipv4strTOhexlist`) and the others from their
     *                  octets, and not every platform gives both the same type
     * @param addr_type receives 2 for a C_IPV6, else 1; also when the conversion failed
     * @return the result of the platform's conversion: 0, or a negative number
     */
    static int IpToHexlist(confd_value* in, confd_value* out, int* addr_type);

    /** The keys of a peer's row and of its address families' rows; defined in bgp_update/neighbor_entry.h. */
    class NeighborEntry;
    class NeighborAfiSafiEntry;

    /** The redistribution rules of a VRF; defined in bgp_update/bgp_vrf_redist_entry.h. */
    class BgpVrfRedistEntry;

    /**
     * Whether a text is an extended regular expression of POSIX.
     *
     * @param pattern the expression, NUL-terminated, not null
     * @return whether `regcomp` takes it
     */
    static bool regexp_valid(char* pattern);

    /**
     * The plain form of a stored password, as the octets that the routing stack's tables hold. A text that is not an
     * encrypted password counts as plain already. Nothing of it is logged or traced.
     *
     * @param out    receives a C_BINARY without a terminator, which the caller gives back with `confd_free_value`. What
     * it held is not released; it must be another value than `val_in`
     * @param val_in the stored text, a C_BUF that owns its octets and is NUL-terminated; another type ends the process
     * by a failed assertion. When it is not an encrypted password, its octets are released and the caller must not
     * release or use the value again; when it is one, the value stays the caller's to release. A caller that cannot
     * know hands over a copy and forgets it
     */
    static void pwdTOhexliststr(confd_value_t* out, confd_value_t* val_in);

    /**
     * A number of seconds as a short text of three fields, from the largest unit that is not zero. A year has 360 days
     * and a month 30.
     *
     * | largest unit | text                              |
     * | ------------ | --------------------------------- |
     * | years        | 01y02m03w, years, months, weeks   |
     * | months       | 01m02w03d, months, weeks, days    |
     * | weeks        | 01w02d03h, weeks, days, hours     |
     * | days         | 01d02h03m, days, hours, minutes   |
     * | smaller      | 01:02:03, hours, minutes, seconds |
     *
     * @param out receives a C_BUF that the caller gives back with `confd_free_dup_to_value`; what it held is not
     * released
     * @param in  a C_UINT32, or a C_INT32 whose bits are taken as unsigned; every other type stands for 0 seconds
     * @return `out`, or null when out of memory: the result of `confd_value_dup_to`
     */
    static confd_value* SecondsToDuration(confd_value* out, confd_value* in);

    /**
     * Finds a node's name in a hashed keypath, from the leaf (element 0) towards the root.
     *
     * A range that makes no sense ends the process by a fault: `lower` below 0, `upper` above the keypath's length, and
     * `lower` not below an `upper` other than -1.
     *
     * @param keypath the keypath, borrowed
     * @param tag     the tag of the name
     * @param lower   the first element to look at, 0 or more
     * @param upper   the element before which to stop; -1 for the keypath's length
     * @return the index of the first element that is that name, whatever its namespace; 0xFFFFFFFF when there is none
     */
    static unsigned int Krfind(confd_hkeypath_t* keypath, unsigned int tag, int lower, int upper);

    /**
     * The update-source address of a VRF's neighbour in the running configuration:
     * "/router/bgp{as}/vrf{vrf}/neighbor{neighbor}/update-source-address". To be called in a callback of a transaction.
     *
     * A private session that cannot be had, and a read that fails, end the process by a fault. That an entry or the
     * address is not there is no failure.
     *
     * @param tctx     leads to the daemon's interface
     * @param as       the AS number of the BGP router
     * @param vrf      the name of the VRF, borrowed
     * @param neighbor the neighbour's address, borrowed
     * @return the address, which the caller gives back with `confd_free_value`; C_NOEXISTS when none is configured
     */
    static confd_value cdb_get_source_address(confd_trans_ctx* tctx, unsigned int as, char* vrf, confd_value* neighbor);

    /**
     * The same as the open transaction has it, so that an address set and not yet committed is found; where the
     * transaction has none, as the running configuration has it. Arguments, result and faults are those of
     * `cdb_get_source_address`; a context without a MAAPI socket ends the process by a fault too.
     */
    static confd_value maapi_cdb_get_source_address(confd_trans_ctx* tctx, unsigned int as, char* vrf,
                                                    confd_value* neighbor);

    /**
     * Derives a router id from the IPv4 addresses of the host's interfaces: the greatest of them, loopback left out,
     * compared as the numbers in which they are stored (network order read in the host's order, not the dotted order).
     * 0.0.0.0 when there is no such address, and when the interfaces cannot be listed.
     *
     * When 127.0.0.1 is the last IPv4 address of the host's list, no id is derived, whatever the other addresses are.
     * An address that cannot be written as text and read back ends the process through the fault path.
     *
     * @param out receives the id, 0.0.0.0 included, as the hex list that `Ipv4InAddrTOhexlist` of the platform makes,
     *            for the caller to give back with `confd_free_value`. Left alone when none is derived
     * @return whether an id was derived
     */
    static bool GetRouterIdIp(confd_value* out);

    /** When `SetMaapiKeepalive` last reset a timeout: wall-clock seconds since 1970, 0 when it never did. */
    static int64_t last_timeout;
};
