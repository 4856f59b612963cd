// The manager of BGP instances in the routing stack's tables, shared by the upgrade and the device's BGP daemon: it
// creates instances, copies attributes of the command line's configuration into them, and removes them.
// Handles: update.h.
#pragma once

#include <nzmw_log.h>
#include <nzmw_trace.h>

#include <cstdint>
#include <string>

#include "bgp_update/export.h"

struct confd_trans_ctx;
struct confd_value;
struct maapi_cursor;

/** An address family, and how BGP joins the RTM for it. The numbers are those of the leaf bgpRmAfmJoin. */
enum class AddressFamily : int {
    kIpv4Unicast = 1,
    kIpv6Unicast = 2,
    kIpv4Vpn = 3,  // sub-address family 128
    kIpv6Vpn = 4,  // sub-address family 128
};

/**
 * Creates, changes and removes BGP instances in an open MAAPI transaction. Nothing is committed.
 *
 * An instance is named by its index, the index of its routing-manager entity. C is its component index, the base
 * component of the VRF that the index belongs to (libvrfid.h); the instance's RTM entities are C for IPv4 and C + 1 for
 * IPv6.
 *
 * | operation               | reads                                  | writes                                         |
 * |-------------------------|----------------------------------------|------------------------------------------------|
 * | Create                  | administrative-status of a path; the   | bgpRmEntEntry, bgpNmEntEntry and what the four |
 * |                         | host's interfaces, else router-id of   | steps below write; router-id-default-hidden    |
 * |                         | /router/bgp                            | when the id comes from the interfaces          |
 * | ForceCreateRtmEntries   | nothing                                | rtmEntityEntry of one address family           |
 * | CreateBgpAfiSafiEntries | nothing                                | bgpRmAfiSafiEntry, four rows                   |
 * | CreateJoinEntries       | nothing                                | rtmMjEntry, two rows for the unicast families; |
 * |                         |                                        | bgpRmAfmJoinEntry                              |
 * | CreateBgpListenEntries  | nothing                                | bgpNmListenEntry, two rows                     |
 * | SetRouterId             | whether bgpRmEntEntry is there         | bgpRmEntLocalIdentifier;                       |
 * |                         |                                        | router-id-default-hidden                       |
 * | SetAdminStatus          | whether bgpRmEntEntry is there         | bgpRmEntAdminStatus                            |
 * | SetAsSize               | whether bgpRmEntEntry is there         | bgpRmEntAsSize                                 |
 * | SetClusterId            | whether bgpRmEntEntry is there         | bgpRmEntClusterId                              |
 * | SetDefLocPref           | whether bgpRmEntEntry is there         | bgpRmEntDefLocalPref                           |
 * | Remove                  | the rows of the tables given           | deletes the instance's rows of these tables,   |
 * |                         |                                        | its two BGP joins of rtmMjEntry and its        |
 * |                         |                                        | bgpRmEntEntry; what the operations below write |
 * | RemoveRedistEntry       | rtmRedistEntry, redist-protocol        | deletes the instance's rows of both            |
 * | RemoveRedistNetwork     | a row of rtmRedistEntry-get            | deletes that row and its rows of               |
 * |                         |                                        | rtmRedistEntry-set and rtmRedistEntry; after   |
 * |                         |                                        | the last, rtmRedistEntry_next_free_index       |
 * | RemoveSecondaryTables   | the number of rows of bgpRmEntEntry    | deletes the tables given                       |
 * | ClearVpnRouteAddrType   | mplsVpnVpnRouteAddrType of entity 1    | the same                                       |
 *
 * Failures. Creation and the setters return no failed write: they end the process by the fault path (call stack, fault
 * report with the operation, "src/daemon/bgp_router_mgr", a line and the error's text, exit status 1), and what they
 * wrote before stays. Removal passes failures over. A value of another type than the data model gives it ends the
 * process by a failed assertion.
 *
 * Values, texts and lists are borrowed for the time of a call. Not for several threads at once.
 */
class BGP_UPDATE_EXPORT BgpRouterMgr {
public:
    /**
     * Names where the manager reports to.
     *
     * @param trace_category a trace category, or null; borrowed for the manager's life
     * @param log            a log, or null; borrowed for the manager's life. It wins over the trace category
     */
    BgpRouterMgr(nzmw_trace_category_t trace_category, nzmw_log_t* log);

    /**
     * Reports one line: to the log when there is one, else at level 10 to the trace category when there is one, else
     * nowhere. The line is the formatted text as it is.
     *
     * @param format a printf format, followed by its arguments
     */
    void LogDebug(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /**
     * Creates a BGP instance: its RTM entities, routing-manager entity, address families, network-manager entity, joins
     * and listen rows, in this order. Rows that are there already are overwritten.
     *
     * The router id is derived from the host's interfaces (`BgpUtils::GetRouterIdIp`), and
     * "/internal/router-id-default-hidden" is then set to true; where none can be derived it is the router id of
     * "/router/bgp{as}", else 0.0.0.0.
     *
     * @param path     the keypath of the command-line entry whose "administrative-status" the instance gets, which must
     *                 be there: "/router/bgp{65010}", or a VRF below it
     * @param index    the instance's index
     * @param as       the local AS number
     * @param vrf_name the name of the VRF, or an empty text for the default instance; never null
     * @return 0
     */
    int Create(int maapi_socket, int thandle, const std::string& path, uint32_t index, uint32_t as, char* vrf_name);

    /**
     * The same for a daemon's callback. Its entry is logged here and again by the other form.
     *
     * @param tctx null ends the process
     */
    int Create(int maapi_socket, confd_trans_ctx* tctx, const std::string& path, uint32_t index, uint32_t as,
               char* vrf_name);

    /**
     * Creates the RTM entity of an instance for one address family: C, or C + 1 for IPv6.
     *
     * @param index the instance's index
     * @param afi   2 for IPv6; every other number stands for IPv4
     * @return 0
     */
    int ForceCreateRtmEntries(int maapi_socket, int thandle, uint32_t index, int afi);

    /**
     * Creates an instance's rows for the unicast and the VPN families of IPv4 and IPv6, administratively down.
     *
     * @param index the instance's index
     * @return 0
     */
    int CreateBgpAfiSafiEntries(int maapi_socket, int thandle, uint32_t index);

    /**
     * Ties an instance to the RTM for one address family: the RTM's joins with BGP and with itself, and BGP's join row.
     * The VPN families get BGP's join row only, with the partner 1.
     *
     * @param index the instance's index
     * @param afm   the address family
     * @return 0; -1 for a number that is no address family, with nothing written
     */
    int CreateJoinEntries(int maapi_socket, int thandle, uint32_t index, AddressFamily afm);

    /**
     * Has an instance listen on the BGP port of every IPv4 address (listen index `index`) and of every IPv6 address
     * (`index` + 1).
     *
     * @param index the instance's index
     * @return 0
     */
    int CreateBgpListenEntries(int maapi_socket, int thandle, uint32_t index);

    /**
     * Copies an attribute into the routing-manager entity of an instance; an instance that is not there is left alone.
     *
     * @param index the instance's index
     * @param value the attribute as the command line's configuration has it: an IPv4 address (C_IPV4) as router id and
     *              cluster id, an enumeration as status and AS size, a C_UINT32 as preference
     * @return 0
     */
    int SetRouterId(int maapi_socket, int thandle, uint32_t index, confd_value* value);
    int SetAdminStatus(int maapi_socket, int thandle, uint32_t index, confd_value* value);
    int SetAsSize(int maapi_socket, int thandle, uint32_t index, confd_value* value);
    int SetClusterId(int maapi_socket, int thandle, uint32_t index, confd_value* value);
    int SetDefLocPref(int maapi_socket, int thandle, uint32_t index, confd_value* value);

    /**
     * Removes an instance: its rows of the tables given, its joins between the RTM and BGP, and its routing-manager
     * entity. Its RTM entities, the RTM's joins with themselves and "/internal/router-id-default-hidden" stay, unless
     * the lists name their tables. The transaction is kept from timing out between the rows.
     *
     * A table is walked from the instance's first row: rows of the instance are deleted, rows of the next index are
     * reported and stay, the first greater index ends the walk. "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry" is left to
     * `RemoveRedistEntry`, and the rows of "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get" to
     * `RemoveRedistNetwork`. Removing instance 1 runs `ClearVpnRouteAddrType` too.
     *
     * @param tctx             null ends the process
     * @param index            the instance's index
     * @param unused           not looked at
     * @param tables           keypaths of lists whose first key is the instance's index (a C_UINT32), ended by null; a
     *                         null list ends the process
     * @param secondary_tables keypaths for `RemoveSecondaryTables`, ended by null; or null
     * @return 0
     */
    int Remove(int maapi_socket, confd_trans_ctx* tctx, uint32_t index, uint32_t unused, const char** tables,
               const char** secondary_tables);

    /**
     * Deletes the redistribution rules into BGP (destination 0xE0000) that "/redist-protocol" maps to an instance, with
     * their map entries. Rules of which that cannot be read stay.
     *
     * @param tctx  the context of the running callback, not null
     * @param index the instance's index
     * @return 0
     */
    int RemoveRedistEntry(int maapi_socket, confd_trans_ctx* tctx, uint32_t index);

    /**
     * Deletes a network that an instance announces: its two hidden rows and its redistribution rule. After the last
     * network the rule numbers of networks begin anew at 555337809.
     *
     * @param tctx   not null
     * @param index  the instance's index
     * @param cursor stands on the network's row of "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get"; not moved
     * @return 0
     */
    int RemoveRedistNetwork(int maapi_socket, confd_trans_ctx* tctx, uint32_t index, maapi_cursor* cursor);

    /**
     * Deletes whole tables along with the last instance: does nothing unless there is exactly one routing-manager
     * entity.
     *
     * @param tctx   not null
     * @param index  the index of the instance that is being removed
     * @param tables the tables' keypaths, ended by null; a null list ends the process
     * @return 0
     */
    int RemoveSecondaryTables(int maapi_socket, confd_trans_ctx* tctx, uint32_t index, const char** tables);

    /**
     * Sets the VPN route address type of the MPLS VPN entity 1 back to IPv4 (1), where it is set.
     *
     * @param tctx not null
     */
    void ClearVpnRouteAddrType(int maapi_socket, confd_trans_ctx* tctx);

private:
    // In this order; code built against this class may rely on the layout.
    nzmw_trace_category_t trace_category_;
    nzmw_log_t* log_;
};
