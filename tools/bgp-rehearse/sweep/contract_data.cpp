// The contract on failures, step by step in the order of the upgrade. Steps log a failure and go on; the code that the
// BGP daemon shares ends the process on a failed write. Reads whose failure counts as "not there" have no line of their
// own.
#include "sweep/contract_data.h"

namespace bgp_rehearse {

namespace {

using F = bgp_platform::capi::Function;

constexpr char kUpdateVrf[] = "src/config_update/bgp_update_vrf";
constexpr char kRmIndex[] = "src/config_update/bgp_update_default_rm_index";
constexpr char kUtils[] = "src/daemon/bgp_utils";
constexpr char kRouterMgr[] = "src/daemon/bgp_router_mgr";

Demand goes_on()
{
    return {};
}

Demand logs(const char* beginning)
{
    return {Must::Log, beginning, "", {0, 0}, {}};
}

Demand faults(const char* function, const char* source, unsigned int line = 0, unsigned int other_line = 0)
{
    return {Must::Fault, function, source, {line, other_line}, {}};
}

Demand asserts(const char* signature, const char* source)
{
    return {Must::Assert, signature, source, {0, 0}, {}};
}

// What a lost read can bring, as keypaths to explain.
using Keypaths = std::vector<const char*>;

// A VRF that got no instance from update_vrf gets its joins from update_vrf_ipv6 all the same; and without an entry of
// its own in the command-line model, the VRFs are those of another router.
Keypaths vrf_joins()
{
    return {"/DC-BGP-MIB/bgpRmAfmJoinTable", "/DC-RTM-MIB/rtmMjTable"};
}

// The neighbours' rows are written under another index of their entity.
Keypaths neighbor_rows()
{
    return {"/DC-BGP-MIB/bgpPeerTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable"};
}

// The closing steps find the rows under the entity's old index.
Keypaths without_rekeying()
{
    return {"/DC-BGP-MIB/bgpPeerTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable", "/DC-BGP-MIB/bgpRmAfmJoinTable"};
}

// The closing steps work on rows that none of the entity's steps has been at.
Keypaths without_entity_steps()
{
    return {"/DC-BGP-MIB/bgpPeerTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable", "/DC-BGP-MIB/bgpRmAfmJoinTable",
            "/DC-RTM-MIB/rtmMjTable"};
}

// An instance that is not seen to be re-keyed already is re-keyed once more.
Keypaths once_more()
{
    return {"/redist-protocol", "/internal/", "/DC-BGP-MIB/", "/DC-RTM-MIB/", "/bgp-internal/"};
}

// Where update_ipv6 has made no row, another entity's row can move to that key.
Keypaths ipv6_rows()
{
    return {"/internal/router-afi-safi-hidden", "/internal/neighbor-afi-safi-hidden", "/DC-BGP-MIB/bgpRmAfiSafiTable",
            "/DC-BGP-MIB/bgpRmAfmJoinTable",    "/DC-BGP-MIB/bgpNmListenTable",       "/DC-RTM-MIB/rtmMjTable",
            "/DC-BGP-MIB/bgpPeerAfiSafiTable"};
}

// The same of the hidden rows of neighbours; a second neighbour with the address then is the first to get one.
Keypaths neighbor_families()
{
    return {"/internal/neighbor-afi-safi-hidden", "/DC-BGP-MIB/bgpPeerAfiSafiTable"};
}

// An MPLS-VPN entity that is not seen makes the family wanted; its rows are then treated like any other.
Keypaths vpn_families()
{
    return {"/DC-BGP-MIB/bgpRmAfiSafiTable", "/DC-BGP-MIB/bgpPeerAfiSafiTable"};
}

}  // namespace

Demand without_memory()
{
    return goes_on().explaining(vrf_joins());
}

Demand Demand::explaining(std::vector<const char*> keypaths) const
{
    Demand demand = *this;
    demand.writes = std::move(keypaths);
    return demand;
}

const std::vector<StepRules>& step_rules()
{
    static const std::vector<StepRules> rules = {
        {"update",
         {
             {F::cdb_set_namespace, "", goes_on()},
             {F::cdb_num_instances, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry",
              goes_on().explaining(without_entity_steps())},
             {F::cdb_get_enum_value, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntSupportIpv6",
              logs("Failed to read IPv6 enable flag for BGP entry: ").explaining(ipv6_rows())},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
              goes_on().explaining(without_rekeying())},
             {F::cdb_num_instances, "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry", goes_on()},
             {F::cdb_num_instances, "/prefix-list", goes_on().explaining({"/prefix-list"})},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
              goes_on().explaining(vrf_joins())},
             {F::cdb_num_instances, "/router/bgp{}/vrf", goes_on().explaining(vrf_joins())},
         }},
        {"update_router_bgp",
         {
             {F::cdb_set_namespace, "", goes_on()},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
              logs("Failed to read as-number  err: ").explaining(vrf_joins())},
             {F::cdb_exists, "/router/bgp{}", goes_on()},
             {F::maapi_create, "/router/bgp{}", logs("Failed to configure router bgp: ").explaining(vrf_joins())},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalIdentifier",
              logs("Failed to get bgpRmEntLocalIdentifier, err: ")},
             {F::maapi_set_elem2, "/router/bgp{}/router-id", logs("Failed to configure router-id: ")},
             {F::cdb_get_enum_value, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntAsSize",
              logs("Failed to get bgpRmEntAsSize, err: ")},
             {F::maapi_set_elem, "/router/bgp{}/as-size", logs("Failed to configure as-size: ")},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntAdminStatus",
              logs("Failed to get bgpRmEntAdminStatus, err: ")},
             {F::maapi_set_elem, "/router/bgp{}/administrative-status",
              logs("Failed to configure administrative-status: ")},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntDefLocalPref",
              logs("Failed to get bgpRmEntDefLocalPref, err: ")},
             {F::maapi_set_elem, "/router/bgp{}/bgp/default-local-preference",
              logs("Failed to configure default-local-preference: ")},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntClusterId",
              logs("Failed to get bgpRmEntClusterId, err: ")},
             {F::maapi_set_elem2, "/router/bgp{}/bgp/cluster-id", logs("Failed to configure bgp cluster-id: ")},
         }},
        {"update_ipv6",
         {
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
              logs("Failed to read entity index BGP entry: ").explaining(ipv6_rows())},
             {F::maapi_set_namespace, "", goes_on()},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{}/bgpRmEntSupportIpv6",
              logs("Failed to enable IPv6 for BGP entity id: ").explaining(ipv6_rows())},
             {F::maapi_create, "/internal/router-afi-safi-hidden{}",
              logs("Failed to create BGP RM AFI/SAFI ipv4 unicast internal hidden entry for BGP entity id: ")
                  .explaining(ipv6_rows())},
             {F::maapi_create, "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{}",
              logs("Failed to create BGP RM AFI/SAFI ipv6 unicast entry for BGP entity id: ").explaining(ipv6_rows())},
             {F::maapi_create, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}",
              logs("Failed to create BGP RM AFM JOIN ipv6 entry for BGP entity id: ").explaining(ipv6_rows())},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmPartnerIndex",
              logs("Failed to set val ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAfi",
              logs("Failed to set val ")},
             {F::maapi_exists, "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{}",
              logs("Path /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{}/bgpNmEntBfdEntityIndex",
              logs("Failed to set val 0 to bgpNmEntBfdEntityIndex in entry BGP NM entity id: ")},
             {F::maapi_create, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{}",
              logs("Failed to create BGP NM LISTEN ipv6 entry for BGP NM entity id: ").explaining(ipv6_rows())},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{}/bgpNmListenAdminStatus",
              logs("Failed to set val 1 to bgpNmListenAdminStatus in entry BGP NM entity id: ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{}/bgpNmListenAddrType",
              logs("Failed to set val 2 to bgpNmListenAddrType in entry NM entity id: ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{}/bgpNmListenAddr",
              logs("Failed to set val 0000")},
             {F::maapi_create, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}",
              logs("Failed to create RTM JOIN ipv6 ariPrtnrBgp entry for BGP entity id: ").explaining(ipv6_rows())},
             {F::maapi_set_elem, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}/rtmMjSafi",
              logs("Failed to set val 1 to rtmMjSafi in entry RTM JOIN BGP entity id: ")},
             {F::cdb_num_instances, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", goes_on().explaining(neighbor_families())},
             {F::cdb_get_objects, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry",
              logs("Could not get peer entries, err: ").explaining(neighbor_families())},
             {F::maapi_create, "/internal/neighbor-afi-safi-hidden{}",
              logs("Failed to create BGP Peer AFI/SAFI ipv4 unicast internal hidden entry for BGP entity id: ")
                  .explaining(neighbor_families())},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
              logs("Failed to set val 1 to bgpPeerAfiSafiDisable in entry BGP Peer AFI/SAFI ")
                  .explaining(neighbor_families())},
             {F::cdb_num_instances, "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", goes_on()},
             {F::cdb_get_objects, "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry",
              logs("Could not get RouteMap entries, err: ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{}/bgpRouteMapMaAfiDef",
              logs("Failed to set val 2 to bgpRouteMapMaAfiDef in entry BGP RouteMap ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{}/bgpRouteMapMaSafiDef",
              logs("Failed to set val 2 to bgpRouteMapMaSafiDef in entry BGP RouteMap ")},
         }},
        {"update_l3vpn",
         {
             {F::cdb_exists, "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{}", goes_on().explaining(vpn_families())},
             {F::cdb_get, "/MPLS-VPN-MIB/mplsVpnEntTable/mplsVpnEntEntry{}/mplsVpnUseBgpRouting",
              logs("Failed to read mplsVpnUseBgpRouting, err: ")},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
              logs("Failed to read entity index BGP entry: ").explaining(vpn_families())},
             {F::maapi_create, "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{}",
              logs("Failed to create BGP RM AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: ")
                  .explaining(vpn_families())},
             {F::cdb_num_instances, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", goes_on()},
             {F::cdb_get_objects, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", logs("Could not get peer entries, err: ")},
             {F::maapi_create, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}",
              logs("Failed to create BGP Peer AFI/SAFI ipv4 mplsBgpVpn entry for BGP entity id: ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
              logs("Failed to set val 1 to bgpPeerAfiSafiDisable in entry BGP Peer AFI/SAFI ")},
         }},
        {"update_prefix_list",
         {
             {F::cdb_get, "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry_next_free_index",
              logs("Couldn't read next_free_index. err: ")},
             {F::cdb_num_instances, "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry", goes_on()},
             {F::cdb_get_objects, "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry",
              logs("Could not get prefix list entries, ret: ")},
             {F::cdb_get, "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry-get{}/name",
              logs("Could not get name for prefix list (rm_index: ")},
             {F::maapi_exists, "/prefix-list/{}", goes_on()},
             {F::maapi_create, "/prefix-list/{}", logs("Failed to create prefix-list entry named ")},
             {F::maapi_create, "/prefix-list-internal/name-to-idx{}",
              logs("Failed to create name-to-idx map for name ")},
             {F::maapi_set_elem, "/prefix-list-internal/name-to-idx{}/idx", logs("Could not set idx ")},
             {F::maapi_create, "/prefix-list-internal/idx-to-name{}",
              logs("Failed to create idx-to-name map for idx ")},
             {F::maapi_set_elem, "/prefix-list-internal/idx-to-name{}/val", logs("Could not set name ")},
             {F::maapi_create, "/prefix-list/{}/seq{}", logs("Failed to create prefix-list seq ")},
             {F::maapi_set_elem, "/prefix-list/{}/seq{}/address",
              logs("Could not set address for prefix list (pfx_name: ")},
             {F::maapi_set_elem, "/prefix-list/{}/seq{}/ge", logs("Could not set address for prefix list (pfx_name: ")},
             {F::maapi_set_elem, "/prefix-list/{}/seq{}/le", logs("Could not set address for prefix list (pfx_name: ")},
             {F::maapi_set_elem, "/prefix-list/{}/seq{}/action",
              logs("Could not set address for prefix list (pfx_name: ")},
             {F::maapi_set_elem, "/prefix-list-internal/name-next-index",
              logs("Couldn't set internal name-next-index value! err: ")},
         }},
        {"update_rm_index",
         {
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
              logs("Failed to get local as number, err: ").explaining(without_rekeying())},
             {F::cdb_exists, "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}", goes_on().explaining(once_more())},
             {F::maapi_get_elem, "/redist-protocol{}/protocol-xmltag",
              logs("Failed to get protocol-xmltag for path: ")},
             {F::maapi_set_elem, "/redist-protocol{}/protocol-index",
              asserts("RtmRedistProtocolHiddenEntry::MoveEntry(", kRmIndex)},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{}/bgpPeerLocalNm",
              asserts("BgpPeerEntry::MoveEntry(", kRmIndex)},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{}/bgpNmEntRmIndex",
              asserts("BgpNmEntityEntry::MoveEntry(", kRmIndex)},
             {F::maapi_get_elem, "/internal/bgpPeerEntry-global{}/keys", logs("Failed read path ")},
             {F::maapi_set_elem2, "/internal/bgpPeerEntry-global{}/keys", logs("Failed set val ")},
             {F::maapi_get_elem, "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{}/rtmRedistInfoDest",
              logs("Failed to get rtmRedistInfoDest for path: ")},
             {F::maapi_create, "/bgp-internal/bgp-vrf{}", logs("Failed Create /bgp-internal/bgp-vrf{")},
             {F::maapi_create, "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}",
              logs("Failed to create BGP internal map for inst-idx: ")},
             {F::maapi_set_elem, "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}/as-number", logs("Failed to set val ")},
             {F::maapi_create, "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}",
              logs("Failed to create BGP internal map for as-number: ")},
             {F::maapi_set_elem, "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}/inst-idx", logs("Failed to set val ")},
             {F::maapi_set_elem, "/bgp-internal/bgp-vrf{}/bgp-next-index", logs("Failed to set val ")},
         }},
        {"update_vrf",
         {
             {F::cdb_num_instances, "/router/bgp{}/vrf", faults("update_vrf", kUpdateVrf, 203)},
             {F::cdb_get_objects, "/router/bgp{}/vrf",
              logs("Failed to read BGP VRF objects [").explaining(vrf_joins())},
             {F::cdb_get, "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/vrf-idx",
              logs("Trying to update a non existent VRF: ").explaining(vrf_joins())},
             {F::maapi_exists, "/bgp-internal/bgp-vrf{}", goes_on()},
             {F::maapi_create, "/bgp-internal/bgp-vrf{}", faults("CreateBgpCompoundIdx", kUtils)},
             {F::cdb_exists, "/bgp-internal/bgp-vrf{}", goes_on()},
             {F::maapi_get_elem, "/bgp-internal/bgp-vrf{}/bgp-free-index",
              goes_on().explaining({"/bgp-internal/bgp-vrf", "/DC-BGP-MIB/", "/DC-RTM-MIB/"})},
             {F::maapi_delete, "/bgp-internal/bgp-vrf{}/bgp-free-index{}", faults("CreateBgpCompoundIdx", kUtils)},
             {F::maapi_get_u_int16_elem, "/bgp-internal/bgp-vrf{}/bgp-next-index",
              faults("CreateBgpCompoundIdx", kUtils)},
             {F::maapi_set_elem, "/bgp-internal/bgp-vrf{}/bgp-next-index", faults("CreateBgpCompoundIdx", kUtils)},
             {F::maapi_create, "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}", faults("CreateBgpCompoundIdx", kUtils)},
             {F::maapi_set_elem, "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}/inst-idx",
              faults("CreateBgpCompoundIdx", kUtils)},
             {F::maapi_create, "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}", faults("CreateBgpCompoundIdx", kUtils)},
             {F::maapi_set_elem, "/bgp-internal/bgp-vrf{}/idx-to-bgp-as{}/as-number",
              faults("CreateBgpCompoundIdx", kUtils)},
             {F::maapi_set_values, "/DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable/rtmEntityEntry",
              faults("ForceCreateRtmEntries", kRouterMgr, 147)},
             {F::maapi_get_elem, "/router/bgp{}/vrf{}/administrative-status", faults("Create", kRouterMgr)},
             {F::maapi_set_elem, "/internal/router-id-default-hidden", faults("Create", kRouterMgr)},
             {F::maapi_get_elem, "/router/bgp{}/router-id",
              goes_on().explaining({"/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry"})},
             {F::maapi_set_values, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", faults("Create", kRouterMgr, 392)},
             {F::maapi_set_values, "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry",
              faults("CreateBgpAfiSafiEntries", kRouterMgr, 168, 196)},
             {F::maapi_set_values, "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry", faults("Create", kRouterMgr, 414)},
             {F::maapi_set_values, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry", faults("CreateJoinEntries", kRouterMgr)},
             {F::maapi_set_values, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry",
              faults("CreateJoinEntries", kRouterMgr)},
             {F::maapi_set_values, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry",
              faults("CreateBgpListenEntries", kRouterMgr, 312)},
             {F::maapi_exists, "/router/bgp{}/vrf{}/address-family{}", goes_on()},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{}/bgpRmAfiSafiAdminStatus",
              goes_on()},
             {F::maapi_exists, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}", goes_on()},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus", goes_on()},
             {F::maapi_get_elem, "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/rtmIndex",
              goes_on()},
             {F::cdb_connect, "", goes_on()},
             {F::cdb_start_session, "", goes_on()},
             {F::cdb_get, "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/rtmIndex", goes_on()},
             {F::cdb_end_session, "", goes_on()},
             {F::cdb_close, "", goes_on()},
             {F::maapi_set_values, "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry", goes_on()},
         }},
        {"update_neigh_config_drop_warn",
         {
             {F::cdb_num_instances, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", goes_on()},
             {F::cdb_get_values, "/DC-BGP-MIB/bgpPeerTable", logs("Failed to get bgpPeerTable err: ")},
             {F::maapi_set_values, "/DC-BGP-MIB/bgpPeerTable", logs("Failed to set bgpPeerTable err: ")},
             {F::cdb_num_instances, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on()},
             {F::cdb_get_values, "/DC-BGP-MIB/bgpPeerAfiSafiTable", logs("Failed to get BgpPeerAfiSafiTable err: ")},
             {F::maapi_set_values, "/DC-BGP-MIB/bgpPeerAfiSafiTable", logs("Failed to set BgpPeerAfiSafiTable err: ")},
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs",
              logs("Failed to get local as number, err: ").explaining(neighbor_rows())},
             {F::cdb_exists, "/bgp-internal/bgp-vrf{}/as-to-bgp-idx{}", goes_on().explaining(neighbor_rows())},
             {F::maapi_exists, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{}", goes_on().explaining(neighbor_rows())},
         }},
        {"update_neigh_config_afi_safi",
         {
             {F::cdb_num_instances, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on()},
             {F::maapi_init_cursor, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on()},
             {F::maapi_get_next, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", goes_on()},
             {F::maapi_get_elem, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
              goes_on()},
             {F::maapi_exists, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}", goes_on()},
             {F::maapi_create, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}",
              logs("Failed to create the disabled entry")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable",
              logs("Update FAILED")},
         }},
        {"update_bgp_bvm_join",
         {
             {F::cdb_get, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntIndex",
              logs("Failed to read entity index BGP entry: ")},
             {F::cdb_get_enum_value, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus",
              goes_on()},
             {F::maapi_delete, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}", goes_on()},
         }},
        {"update_vrf_ipv6",
         {
             {F::maapi_init_cursor, "/router/bgp", logs("get_local_as:136: ")},
             {F::maapi_get_next, "/router/bgp", goes_on()},
             {F::maapi_init_cursor, "/router/bgp{}/vrf", logs("update_vrf_ipv6:162: ")},
             {F::maapi_get_next, "/router/bgp{}/vrf", goes_on()},
             {F::maapi_get_elem, "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{}/vrf-idx",
              logs("update_vrf_ipv6:171: ")},
             {F::maapi_exists, "/router/bgp{}/vrf{}/address-family{}", goes_on().explaining(vrf_joins())},
             {F::maapi_create, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}",
              logs("update_bgpRmAfmJoinTable:80: ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmPartnerIndex",
              logs("update_bgpRmAfmJoinTable:87: ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAfi",
              logs("update_bgpRmAfmJoinTable:94: ")},
             {F::maapi_set_elem, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}/bgpRmAfmAdminStatus",
              logs("update_bgpRmAfmJoinTable:101: ")},
             {F::maapi_create, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}", logs("update_rtmMjEntry:117: ")},
             {F::maapi_set_elem, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{}/rtmMjSafi", logs("update_rtmMjEntry:124: ")},
         }},
    };
    return rules;
}

const std::vector<RekeyedTable>& rekeyed_tables()
{
    static const std::vector<RekeyedTable> tables = {
        {"/redist-protocol", {}},
        {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-set", {}},
        {"/internal/rtmRedistEntry-hidden/rtmRedistEntry-get", {}},
        {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry", {}},
        {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-get", {}},
        {"/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-set", {}},
        {"/internal/bgpConfigEntry-hidden/bgpConfigEntry", {}},
        {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-get", {}},
        {"/internal/bgpConfigEntry-hidden/bgpConfigEntry-set", {}},
        {"/internal/bgpPeerEntry-global", {}},
        {"/internal/bgpPeerEntry-prefix-list-hidden", {}},
        {"/internal/match-ip-list-hidden", {}},
        {"/internal/neighbor-valid-hidden", {}},
        {"/internal/route-policy-valid-hidden", {}},
        {"/internal/router-afi-safi-hidden", {}},
        {"/internal/neighbor-afi-safi-hidden", {}},
        {"/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry", neighbor_rows()},
        {"/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry", {}},
        {"/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", neighbor_rows()},
        {"/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry", neighbor_rows()},
        {"/DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry", {}},
        {"/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", {}},
        {"/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry", {}},
        {"/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry", {}},
        {"/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry", {}},
        {"/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry", {}},
        {"/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry", {}},
        {"/DC-RTM-MIB/rtmMjTable/rtmMjEntry", {}},
    };
    return tables;
}

}  // namespace bgp_rehearse
