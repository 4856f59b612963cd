#include "support/exported_functions.h"

#include <sys/socket.h>

#include <stdexcept>

#include "bgp_update/bgp_router_mgr.h"
#include "bgp_update/bgp_vrf_redist_entry.h"
#include "bgp_update/ipv6.h"
#include "bgp_update/l3vpn.h"
#include "bgp_update/neigh_config_afi_safi.h"
#include "bgp_update/neigh_config_drop_warn.h"
#include "bgp_update/prefix_list.h"
#include "bgp_update/rm_index.h"
#include "bgp_update/router_bgp.h"
#include "bgp_update/update.h"
#include "bgp_update/vrf.h"
#include "conf_updt_log.h"
#include "confd_cdb.h"
#include "confd_dp.h"

namespace bgp_test {

namespace {

constexpr uint32_t kAs = 65010;
constexpr uint32_t kRmIndex = 5;
constexpr uint32_t kVrfIndex = 7;
constexpr char kRules[] = "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry";
constexpr char kNetworks[] = "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get";
constexpr int kRuleLeaves = 9;

// The operations of a row that are for its classes, opened to a caller.
class OpenEntry : public BaseEntry {
public:
    using BaseEntry::BaseEntry;
    using BaseEntry::current_path;
    using BaseEntry::log_update;
    using BaseEntry::move;
    using BaseEntry::move_to_index;
    using BaseEntry::set_index;
    using BaseEntry::set_key;
};

constexpr char kNmTable[] = "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry";

void take_row(Workbench& on)
{
    on.take_first_row<OpenEntry>(kNmTable);
}

OpenEntry& row_of(Workbench& on)
{
    return static_cast<OpenEntry&>(*on.row);
}

void move_row(Workbench& on)
{
    on.row->MoveEntry(kRmIndex, 6);
}

BgpRouterMgr manager()
{
    return {nullptr, get_conf_updt_log_handle()};
}

void create_instance(Workbench& on)
{
    manager().Create(on.maapi, on.thandle, "/router/bgp{65010}", kRmIndex, kAs, on.vrf.data());
}

// The AS has its index by the running datastore too, and another index waits for reuse.
void give_indices(Workbench& on)
{
    for (const uint32_t as : {kAs, kAs + 1}) {
        BgpUtils::CreateBgpCompoundIdx(on.maapi, on.thandle, on.cdb, kVrfIndex, as);
    }
    on.commit();
    BgpUtils::DeleteBgpCompoundIdx(on.maapi, on.tctx, kVrfIndex, kAs + 1);
    on.commit();
}

void forget_indices(Workbench& on)
{
    give_indices(on);
    maapi_delete(on.maapi, on.thandle, "/bgp-internal/bgp-vrf{%u}", kVrfIndex);
}

void read_rule(Workbench& on)
{
    on.batch.resize(kRuleLeaves);
    if (cdb_get_objects(on.cdb, on.batch.data(), kRuleLeaves, 0, 1, kRules) < 0) {
        throw std::logic_error(confd_lasterr());
    }
}

void create_list(Workbench& on)
{
    read_rule(on);
    create_hl_and_internal_entries(on.maapi, on.thandle, on.name, 7);
}

void make_key(Workbench& on)
{
    on.key = std::make_unique<BgpUtils::NeighborEntry>(kRmIndex, &on.value, nullptr, 8);
}

void make_family_key(Workbench& on)
{
    on.key = std::make_unique<BgpUtils::NeighborAfiSafiEntry>(kRmIndex, &on.value, nullptr, nullptr, nullptr);
}

void make_session(Workbench& on)
{
    on.session =
        std::make_unique<NzConfdCdbSession>(static_cast<NzConfdInterface*>(on.tctx->t_opaque), CDB_RUNNING, true);
}

void make_socket(Workbench& on)
{
    on.sock = socket(AF_INET, SOCK_STREAM, 0);
}

void start_session(Workbench& on)
{
    make_socket(on);
    BgpUtils::StartCdbSession(on.sock);
}

void value_is_number(Workbench& on)
{
    CONFD_SET_UINT32(&on.value, 86400);
}

// AS_PATH: flags, type, length, a segment of three AS numbers.
void value_is_path(Workbench& on)
{
    unsigned char attribute[] = {0x40, 2,    14,   2,    3,    0xff, 0xff, 0xff, 0xf0,
                                 0xff, 0xff, 0xff, 0xf1, 0xff, 0xff, 0xff, 0xf2};
    confd_value_t borrowed;
    CONFD_SET_BINARY(&borrowed, attribute, sizeof attribute);
    confd_value_dup_to(&borrowed, &on.value);
}

void value_is_text(Workbench& on)
{
    char text[] = "secret";
    confd_value_t borrowed;
    CONFD_SET_CBUF(&borrowed, text, sizeof text - 1);
    confd_value_dup_to(&borrowed, &on.value);
}

const char* kTables[] = {"/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry",
                         kNetworks, nullptr};

}  // namespace

const std::vector<ExportedFunction> kExportedFunctions = {
    {"update", Memory::NeededButForNames, [](Workbench& on) { update(on.maapi, on.thandle, on.cdb); }},
    {"update_router_bgp", Memory::None, [](Workbench& on) { update_router_bgp(on.maapi, on.thandle, on.cdb, 0); }},
    {"update_vrf(int, int, int, unsigned int)", Memory::NeededButForNames,
     [](Workbench& on) { update_vrf(on.maapi, on.thandle, on.cdb, kAs); }},
    {"bgp_vrf_afisafi_create(int, int, unsigned int, char*, unsigned int, confd_value*, confd_value*)", Memory::None,
     [](Workbench& on) {
         bgp_vrf_afisafi_create(on.maapi, on.thandle, kRmIndex, on.vrf.data(), kAs, &on.enumerated, &on.enumerated);
     }},
    {"update_vrf_ipv6(int, int, int, int)", Memory::None,
     [](Workbench& on) { update_vrf_ipv6(on.maapi, on.thandle, on.cdb, 1); }},
    {"update_ipv6(int, int, int)", Memory::Needed, [](Workbench& on) { update_ipv6(on.maapi, on.thandle, on.cdb); }},
    {"update_l3vpn(int, int, int)", Memory::Needed, [](Workbench& on) { update_l3vpn(on.maapi, on.thandle, on.cdb); }},
    {"update_bgp_bvm_join(int, int, int, int)", Memory::None,
     [](Workbench& on) { update_bgp_bvm_join(on.maapi, on.thandle, on.cdb, 1); }},
    {"update_prefix_list(int, int, int, unsigned int)", Memory::Needed,
     [](Workbench& on) { update_prefix_list(on.maapi, on.thandle, on.cdb, kRmIndex); }},
    {"update_entry(int, int, int, unsigned int, confd_value*, std::string, int)", Memory::Needed,
     [](Workbench& on) { update_entry(on.maapi, on.thandle, 0, 5, on.batch.data(), on.name, 7); }, read_rule},
    {"create_hl_and_internal_entries(int, int, std::string, int)", Memory::None,
     [](Workbench& on) { create_hl_and_internal_entries(on.maapi, on.thandle, on.name, 7); }},
    {"create_hl_sequence_entry(int, int, int, unsigned int, confd_value*, std::string, int)", Memory::None,
     [](Workbench& on) { create_hl_sequence_entry(on.maapi, on.thandle, 0, 5, on.batch.data(), on.name, 7); },
     create_list},
    {"update_rm_index(int, int, int, unsigned int)", Memory::Needed,
     [](Workbench& on) { update_rm_index(on.maapi, on.thandle, on.cdb, kRmIndex); }},
    {"update_as_to_idx_map(int, int, int, unsigned int, unsigned int)", Memory::None,
     [](Workbench& on) { update_as_to_idx_map(on.maapi, on.thandle, on.cdb, kAs, kRmIndex); }},
    {"update_neigh_config_drop_warn(int, int, int, int)", Memory::Needed,
     [](Workbench& on) { update_neigh_config_drop_warn(on.maapi, on.thandle, on.cdb, 1); }},
    {"update_neigh_config_afi_safi(int, int, int, int)", Memory::Needed,
     [](Workbench& on) { update_neigh_config_afi_safi(on.maapi, on.thandle, on.cdb, 1); }},

    {"BaseEntry::BaseEntry(int, int, std::string, confd_value const*, int)", Memory::Needed, take_row},
    {"BaseEntry::~BaseEntry()", Memory::None, [](Workbench& on) { on.row.reset(); }, take_row},
    {"BaseEntry::MoveEntry(unsigned int, int)", Memory::None,
     [](Workbench& on) { on.row->BaseEntry::MoveEntry(kRmIndex, 6); }, take_row},
    {"BaseEntry::current_path() const", Memory::Needed, [](Workbench& on) { on.name = row_of(on).current_path(); },
     take_row},
    {"BaseEntry::log_update() const", Memory::None, [](Workbench& on) { row_of(on).log_update(); }, take_row},
    {"BaseEntry::set_key(int, unsigned int)", Memory::None, [](Workbench& on) { row_of(on).set_key(0, 6); }, take_row},
    {"BaseEntry::move()", Memory::None, [](Workbench& on) { row_of(on).move(); }, take_row},
    {"BaseEntry::move_to_index(int)", Memory::None, [](Workbench& on) { row_of(on).move_to_index(6); }, take_row},
    {"BaseEntry::set_index(char const*, char const*, int) const", Memory::Needed,
     [](Workbench& on) { row_of(on).set_index("", "%s/bgpNmEntRmIndex", 6); }, take_row},
    {"RtmMjEntry::MoveEntry(unsigned int, int)", Memory::None, move_row,
     [](Workbench& on) { on.take_first_row<RtmMjEntry>("/DC-RTM-MIB/rtmMjTable/rtmMjEntry"); }},
    {"RtmRedistEntry::MoveEntry(unsigned int, int)", Memory::None, move_row,
     [](Workbench& on) { on.take_first_row<RtmRedistEntry>("/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry"); }},
    {"RtmRedistProtocolHiddenEntry::MoveEntry(unsigned int, int)", Memory::Needed, move_row,
     [](Workbench& on) { on.take_first_row<RtmRedistProtocolHiddenEntry>("/redist-protocol"); }},
    {"BgpPeerEntry::MoveEntry(unsigned int, int)", Memory::Needed, move_row,
     [](Workbench& on) { on.take_first_row<BgpPeerEntry>("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry"); }},
    {"BgpNmEntityEntry::MoveEntry(unsigned int, int)", Memory::Needed, move_row,
     [](Workbench& on) { on.take_first_row<BgpNmEntityEntry>(kNmTable); }},
    {"BgpNmListenEntry::MoveEntry(unsigned int, int)", Memory::None, move_row,
     [](Workbench& on) { on.take_first_row<BgpNmListenEntry>("/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry"); }},
    {"BgpPeerEntryGlobalHiddenEntry::MoveEntry(unsigned int, int)", Memory::Needed, move_row,
     [](Workbench& on) { on.take_first_row<BgpPeerEntryGlobalHiddenEntry>("/internal/bgpPeerEntry-global"); }},

    {"BgpRouterMgr::BgpRouterMgr(zlog_category_s*, nzmw_log_s*)", Memory::None, [](Workbench&) { manager(); }},
    {"BgpRouterMgr::LogDebug(char const*, ...)", Memory::None, [](Workbench&) { manager().LogDebug("%s", "a line"); }},
    {"BgpRouterMgr::Create(int, int, std::string const&, unsigned int, unsigned int, char*)", Memory::None,
     create_instance},
    {"BgpRouterMgr::Create(int, confd_trans_ctx*, std::string const&, unsigned int, unsigned int, char*)", Memory::None,
     [](Workbench& on) { manager().Create(on.maapi, on.tctx, "/router/bgp{65010}", kRmIndex, kAs, on.vrf.data()); }},
    {"BgpRouterMgr::ForceCreateRtmEntries(int, int, unsigned int, int)", Memory::None,
     [](Workbench& on) { manager().ForceCreateRtmEntries(on.maapi, on.thandle, kRmIndex, 2); }},
    {"BgpRouterMgr::CreateBgpAfiSafiEntries(int, int, unsigned int)", Memory::None,
     [](Workbench& on) { manager().CreateBgpAfiSafiEntries(on.maapi, on.thandle, kRmIndex); }},
    {"BgpRouterMgr::CreateJoinEntries(int, int, unsigned int, AddressFamily)", Memory::None,
     [](Workbench& on) { manager().CreateJoinEntries(on.maapi, on.thandle, kRmIndex, AddressFamily::kIpv6Unicast); }},
    {"BgpRouterMgr::CreateBgpListenEntries(int, int, unsigned int)", Memory::None,
     [](Workbench& on) { manager().CreateBgpListenEntries(on.maapi, on.thandle, kRmIndex); }},
    {"BgpRouterMgr::SetRouterId(int, int, unsigned int, confd_value*)", Memory::None,
     [](Workbench& on) { manager().SetRouterId(on.maapi, on.thandle, kRmIndex, &on.value); }},
    {"BgpRouterMgr::SetAdminStatus(int, int, unsigned int, confd_value*)", Memory::None,
     [](Workbench& on) { manager().SetAdminStatus(on.maapi, on.thandle, kRmIndex, &on.enumerated); }},
    {"BgpRouterMgr::SetAsSize(int, int, unsigned int, confd_value*)", Memory::None,
     [](Workbench& on) { manager().SetAsSize(on.maapi, on.thandle, kRmIndex, &on.enumerated); }},
    {"BgpRouterMgr::SetClusterId(int, int, unsigned int, confd_value*)", Memory::None,
     [](Workbench& on) { manager().SetClusterId(on.maapi, on.thandle, kRmIndex, &on.value); }},
    {"BgpRouterMgr::SetDefLocPref(int, int, unsigned int, confd_value*)", Memory::None,
     [](Workbench& on) { manager().SetDefLocPref(on.maapi, on.thandle, kRmIndex, &on.value); }, value_is_number},
    {"BgpRouterMgr::Remove(int, confd_trans_ctx*, unsigned int, unsigned int, char const**, char const**)",
     Memory::None, [](Workbench& on) { manager().Remove(on.maapi, on.tctx, kRmIndex, 0, kTables, kTables); }},
    {"BgpRouterMgr::RemoveRedistEntry(int, confd_trans_ctx*, unsigned int)", Memory::None,
     [](Workbench& on) { manager().RemoveRedistEntry(on.maapi, on.tctx, kRmIndex); }},
    {"BgpRouterMgr::RemoveRedistNetwork(int, confd_trans_ctx*, unsigned int, maapi_cursor*)", Memory::None,
     [](Workbench& on) { manager().RemoveRedistNetwork(on.maapi, on.tctx, kRmIndex, &on.cursor); },
     [](Workbench& on) { on.stand_on_first_row(kNetworks); }},
    {"BgpRouterMgr::RemoveSecondaryTables(int, confd_trans_ctx*, unsigned int, char const**)", Memory::None,
     [](Workbench& on) { manager().RemoveSecondaryTables(on.maapi, on.tctx, kRmIndex, kTables); }},
    {"BgpRouterMgr::ClearVpnRouteAddrType(int, confd_trans_ctx*)", Memory::None,
     [](Workbench& on) { manager().ClearVpnRouteAddrType(on.maapi, on.tctx); }},

    {"BgpUtils::StartCdbSession(int)", Memory::None, [](Workbench& on) { BgpUtils::StartCdbSession(on.sock); },
     make_socket},
    {"BgpUtils::EndCdbSession(int)", Memory::None, [](Workbench& on) { BgpUtils::EndCdbSession(on.sock); },
     start_session},
    {"BgpUtils::SetMaapiKeepalive(confd_trans_ctx*, double)", Memory::None,
     [](Workbench& on) { BgpUtils::SetMaapiKeepalive(on.tctx, 30); }},
    {"BgpUtils::FreeConfdValues(confd_value*, int)", Memory::None,
     [](Workbench& on) { BgpUtils::FreeConfdValues(&on.value, 1); }, value_is_text},
    {"BgpUtils::GetVrfIndex(int, int, char*, confd_value*)", Memory::None,
     [](Workbench& on) { BgpUtils::GetVrfIndex(on.maapi, on.thandle, on.name.data(), &on.out); }},
    {"BgpUtils::GetVrfNameFromIndex(int, int, unsigned int, confd_value*)", Memory::None,
     [](Workbench& on) { BgpUtils::GetVrfNameFromIndex(on.maapi, on.thandle, kVrfIndex, &on.out); }},
    {"BgpUtils::GetRtmIndexFromVrf(int, int, char*, confd_value*, int)", Memory::None,
     [](Workbench& on) { BgpUtils::GetRtmIndexFromVrf(on.maapi, on.thandle, on.vrf.data(), &on.out, 1); }},
    {"BgpUtils::RtmVrfRedistRemoveAll(int, int, char*, bool)", Memory::None,
     [](Workbench& on) { BgpUtils::RtmVrfRedistRemoveAll(on.maapi, on.thandle, on.vrf.data(), false); }},
    {"BgpUtils::GetBgpCompoundIdx(unsigned short, unsigned int)", Memory::None,
     [](Workbench&) { BgpUtils::GetBgpCompoundIdx(1, kVrfIndex); }},
    {"BgpUtils::GetInstIdxFromCompoundIdx(unsigned int)", Memory::None,
     [](Workbench&) { BgpUtils::GetInstIdxFromCompoundIdx(kRmIndex); }},
    {"BgpUtils::GetBgpCompoundIdxFromVrfIdx(int, int, unsigned int)", Memory::None,
     [](Workbench& on) { BgpUtils::GetBgpCompoundIdxFromVrfIdx(on.maapi, on.thandle, kVrfIndex); }, give_indices},
    {"BgpUtils::GetBgpCompoundIdxFromVrfName(int, int, std::string const&, unsigned int&)", Memory::Needed,
     [](Workbench& on) {
         uint32_t compound = 0;
         BgpUtils::GetBgpCompoundIdxFromVrfName(on.maapi, on.thandle, "a VRF with a long name", compound);
     }},
    {"BgpUtils::CreateBgpCompoundIdx(int, int, int, unsigned int, unsigned int)", Memory::Needed,
     [](Workbench& on) { BgpUtils::CreateBgpCompoundIdx(on.maapi, on.thandle, on.cdb, kVrfIndex, kAs); },
     forget_indices},
    {"BgpUtils::CreateBgpCompoundIdx(int, confd_trans_ctx*, unsigned int, unsigned int)", Memory::Needed,
     [](Workbench& on) { BgpUtils::CreateBgpCompoundIdx(on.maapi, on.tctx, kVrfIndex, kAs); }},
    {"BgpUtils::GetNextBgpCompoundIdxCandidate(int, confd_trans_ctx*, unsigned int, unsigned int)", Memory::Needed,
     [](Workbench& on) { BgpUtils::GetNextBgpCompoundIdxCandidate(on.maapi, on.tctx, kVrfIndex, kAs); },
     forget_indices},
    {"BgpUtils::DeleteBgpCompoundIdx(int, confd_trans_ctx*, unsigned int, unsigned int)", Memory::Needed,
     [](Workbench& on) { BgpUtils::DeleteBgpCompoundIdx(on.maapi, on.tctx, kVrfIndex, kAs); }, give_indices},
    {"BgpUtils::GetRouteMapIdx(int, int, char*, char*, confd_value*)", Memory::None,
     [](Workbench& on) { BgpUtils::GetRouteMapIdx(on.maapi, on.thandle, on.vrf.data(), on.name.data(), &on.out); }},
    {"BgpUtils::CreateRouteMapIdx(int, int, char*, char*)", Memory::Needed,
     [](Workbench& on) { BgpUtils::CreateRouteMapIdx(on.maapi, on.thandle, on.vrf.data(), on.name.data()); }},
    {"BgpUtils::DeleteRouteMapIdx(int, int, char*, char*)", Memory::Needed,
     [](Workbench& on) { BgpUtils::DeleteRouteMapIdx(on.maapi, on.thandle, on.vrf.data(), on.name.data()); },
     [](Workbench& on) { BgpUtils::CreateRouteMapIdx(on.maapi, on.thandle, on.vrf.data(), on.name.data()); }},
    {"BgpUtils::GetRoutePolicyIdx(int, int, char*, char*, confd_value*)", Memory::None,
     [](Workbench& on) { BgpUtils::GetRoutePolicyIdx(on.maapi, on.thandle, on.vrf.data(), on.name.data(), &on.out); }},
    {"BgpUtils::CreateRoutePolicyIdx(int, int, char*, char*)", Memory::Needed,
     [](Workbench& on) { BgpUtils::CreateRoutePolicyIdx(on.maapi, on.thandle, on.vrf.data(), on.name.data()); }},
    {"BgpUtils::DeleteRoutePolicyIdx(int, int, char*, char*)", Memory::Needed,
     [](Workbench& on) { BgpUtils::DeleteRoutePolicyIdx(on.maapi, on.thandle, on.vrf.data(), on.name.data()); },
     [](Workbench& on) { BgpUtils::CreateRoutePolicyIdx(on.maapi, on.thandle, on.vrf.data(), on.name.data()); }},

    {"BgpUtils::BgpVrfRedistEntry::GetMetaswitchInfoSourceType(RtmRedistInfoSource)", Memory::None,
     [](Workbench&) { BgpUtils::BgpVrfRedistEntry::GetMetaswitchInfoSourceType(RtmRedistInfoSource::kOspf); }},
    {"BgpUtils::BgpVrfRedistEntry::BgpVrfRedistCreateType(int, int, nzmw_log_s*, zlog_category_s*, char*, "
     "RtmRedistInfoSource, bool)",
     Memory::None,
     [](Workbench& on) {
         BgpUtils::BgpVrfRedistEntry::BgpVrfRedistCreateType(on.maapi, on.thandle, nullptr, nullptr, on.vrf.data(),
                                                             RtmRedistInfoSource::kBgp, true);
     }},
    {"BgpUtils::BgpVrfRedistEntry::Rfc4577Support(int, confd_trans_ctx*, nzmw_log_s*, zlog_category_s*, char*, "
     "RtmRedistInfoSource, bool, bool)",
     Memory::None,
     [](Workbench& on) {
         BgpUtils::BgpVrfRedistEntry::Rfc4577Support(on.maapi, on.tctx, nullptr,
                                                     nzmw_trace_register_category("bgp-app"), on.vrf.data(),
                                                     RtmRedistInfoSource::kOspf, true, false);
     }},
    {"BgpUtils::BgpVrfRedistEntry::GetOspfProcIdCompoundId(int, confd_trans_ctx*, zlog_category_s*, char const*, "
     "confd_value*, confd_value*)",
     Memory::None,
     [](Workbench& on) {
         BgpUtils::BgpVrfRedistEntry::GetOspfProcIdCompoundId(on.maapi, on.tctx, nullptr, on.vrf.data(), &on.out,
                                                              &on.more_out);
     },
     [](Workbench& on) { maapi_delete(on.maapi, on.thandle, "/internal/ospf-proc-id-to-index"); }},

    {"BgpUtils::Rd2str(std::string const&, bool)", Memory::Needed,
     [](Workbench&) { BgpUtils::Rd2str("192.0.2.1:5", false); }},
    {"BgpUtils::Rt2str(std::string const&)", Memory::Needed, [](Workbench&) { BgpUtils::Rt2str("65010:5"); }},
    {"BgpUtils::GetRoutesAsPath(confd_value*, int, confd_value*)", Memory::Needed,
     [](Workbench& on) { BgpUtils::GetRoutesAsPath(&on.value, 2, &on.out); }, value_is_path},
    {"BgpUtils::is_IPv6(confd_value*)", Memory::None, [](Workbench& on) { BgpUtils::is_IPv6(&on.enumerated); }},
    {"BgpUtils::IpToHexlist(confd_value*, confd_value*, int*)", Memory::None,
     [](Workbench& on) {
         int type = 0;
         BgpUtils::IpToHexlist(&on.value, &on.out, &type);
     }},
    {"BgpUtils::regexp_valid(char*)", Memory::None, [](Workbench& on) { BgpUtils::regexp_valid(on.name.data()); }},
    {"BgpUtils::pwdTOhexliststr(confd_value*, confd_value*)", Memory::None,
     [](Workbench& on) { BgpUtils::pwdTOhexliststr(&on.out, &on.value); }, value_is_text},
    {"BgpUtils::SecondsToDuration(confd_value*, confd_value*)", Memory::None,
     [](Workbench& on) { BgpUtils::SecondsToDuration(&on.out, &on.value); }, value_is_number},
    {"BgpUtils::Krfind(confd_hkeypath*, unsigned int, int, int)", Memory::None,
     [](Workbench& on) { BgpUtils::Krfind(on.keypath.get(), 1, 0, -1); }},
    {"BgpUtils::cdb_get_source_address(confd_trans_ctx*, unsigned int, char*, confd_value*)", Memory::None,
     [](Workbench& on) { on.out = BgpUtils::cdb_get_source_address(on.tctx, kAs, on.vrf.data(), &on.value); }},
    {"BgpUtils::maapi_cdb_get_source_address(confd_trans_ctx*, unsigned int, char*, confd_value*)", Memory::None,
     [](Workbench& on) { on.out = BgpUtils::maapi_cdb_get_source_address(on.tctx, kAs, on.vrf.data(), &on.value); }},
    {"BgpUtils::GetRouterIdIp(confd_value*)", Memory::None, [](Workbench& on) { BgpUtils::GetRouterIdIp(&on.out); }},

    {"BgpUtils::NeighborEntry::NeighborEntry(unsigned int, confd_value*, confd_value*, int)", Memory::Needed, make_key},
    {"BgpUtils::NeighborEntry::~NeighborEntry()", Memory::None, [](Workbench& on) { on.key.reset(); }, make_key},
    {"BgpUtils::NeighborEntry::entry_values()", Memory::None, [](Workbench& on) { on.key->entry_values(); }, make_key},
    {"BgpUtils::NeighborAfiSafiEntry::NeighborAfiSafiEntry(unsigned int, confd_value*, confd_value*, confd_value*, "
     "confd_value*)",
     Memory::Needed, make_family_key},
    {"BgpUtils::NeighborAfiSafiEntry::~NeighborAfiSafiEntry()", Memory::None, [](Workbench& on) { on.key.reset(); },
     make_family_key},

    {"NzConfdCdbSession::NzConfdCdbSession(NzConfdInterface*, cdb_db_type, bool)", Memory::None, make_session},
    {"NzConfdCdbSession::~NzConfdCdbSession()", Memory::None, [](Workbench& on) { on.session.reset(); }, make_session},
};

}  // namespace bgp_test
