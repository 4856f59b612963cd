// Creates a BGP instance in the routing stack's tables: the RTM entities it routes through, its routing-manager and
// network-manager entities, its address families, its joins to the RTM and its listen rows. Every failed write ends the
// process; what was written before it stays.
#include <netinet/in.h>

#include "bgp_update/bgp_router_mgr.h"
#include "bgp_update/bgp_utils.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/tagged.h"
#include "confd/tags.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_dp.h"
#include "libvrfid.h"
#include "nz_address.h"

using confd::tagged::enum_value;
using confd::tagged::str;
using confd::tagged::uint32;
using confd::tagged::value_of;

namespace {

constexpr char kSource[] = "src/daemon/bgp_router_mgr";

constexpr int32_t kFourOctetAs = 2;
constexpr uint32_t kI3Entity = 1;
constexpr uint32_t kSocketEntity = 1;
constexpr uint32_t kRestartSeconds = 120;
constexpr uint32_t kBgpPort = 179;
constexpr uint32_t kVpnPartner = 1;

// The address families of an instance's RTM entities.
constexpr int kRtmAfis[] = {mib::kIpv4, mib::kIpv6, -1};

struct AfiSafi {
    int32_t afi;
    int32_t safi;
    int fault_line;
};

constexpr AfiSafi kAfiSafis[] = {
    {mib::kIpv4, mib::kUnicast, 168},
    {mib::kIpv6, mib::kUnicast, 168},
    {mib::kIpv4, mib::kVpn, 196},
    {mib::kIpv6, mib::kVpn, 196},
};

// How an address family joins the RTM. The VPN families have no RTM join rows, deliberately: their partner is a fixed
// one.
struct Join {
    AddressFamily afm;
    uint32_t rtm_offset;  // of the RTM entity from the instance's component
    int32_t afi;
    int32_t safi;
    bool joins_rtm;
};

constexpr Join kJoins[] = {
    {AddressFamily::kIpv4Unicast, 0, mib::kIpv4, mib::kUnicast, true},
    {AddressFamily::kIpv6Unicast, 1, mib::kIpv6, mib::kUnicast, true},
    {AddressFamily::kIpv4Vpn, 0, mib::kIpv4, mib::kVpn, false},
    {AddressFamily::kIpv6Vpn, 0, mib::kIpv6, mib::kVpn, false},
};

// Where an instance listens: on every address of each family.
struct Listen {
    uint32_t offset;  // of the listen index from the instance's index
    int32_t address_type;
    int (*convert)(confd_value_t*, const char*);
    const char* address;
};

constexpr Listen kListens[] = {
    {0, mib::kIpv4, Ipv4strTOhexlist, "0.0.0.0"},
    {1, mib::kIpv6, Ipv6strTOhexlist, "0000:0000:0000:0000:0000:0000:0000:0000"},
};

const Join* find_join(AddressFamily afm)
{
    for (const Join& join : kJoins) {
        if (join.afm == afm) {
            return &join;
        }
    }
    return nullptr;
}

uint32_t component_of(uint32_t index)
{
    return libvrfid::VrfId::ComponentFromVrf(libvrfid::VrfId::VrfFromComponent(index));
}

bool is_named(const char* vrf_name)
{
    return vrf_name[0] != '\0';
}

// Writes an entity's row, whose last value is the name of the VRF; the default instance has none.
template <std::size_t n>
void create_entity(BgpRouterMgr& manager, const confd::Transaction& transaction, const confd_tag_value_t (&row)[n],
                   const char* vrf_name, const char* table, int fault_line)
{
    if (is_named(vrf_name)) {
        manager.LogDebug("Add BGP VRF name entry");
    }
    if (transaction.set_values(row, static_cast<int>(is_named(vrf_name) ? n : n - 1), table) != CONFD_OK) {
        confd::fault_last_error("Create", kSource, fault_line);
    }
}

void create_rm_entity(BgpRouterMgr& manager, const confd::Transaction& transaction, uint32_t index, uint32_t as,
                      int32_t admin_status, const confd_value_t& router_id, char* vrf_name)
{
    const confd_tag_value_t row[] = {
        uint32(tag::bgpRmEntIndex, index),
        uint32(tag::bgpRmEntSelectDeferTime, kRestartSeconds),
        uint32(tag::bgpRmEntStalePathTime, kRestartSeconds),
        enum_value(tag::bgpRmEntAsSize, kFourOctetAs),
        uint32(tag::bgpRmEntLocalAs, as),
        enum_value(tag::bgpRmEntAdminStatus, admin_status),
        uint32(tag::bgpRmEntI3EntIndex, kI3Entity),
        enum_value(tag::bgpRmEntSupportIpv6, mib::kTrue),
        value_of(tag::bgpRmEntLocalIdentifier, router_id),
        str(tag::bgpRmEntVrfName, vrf_name),
    };
    create_entity(manager, transaction, row, vrf_name, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry",
                  is_named(vrf_name) ? 392 : 388);
}

void create_nm_entity(BgpRouterMgr& manager, const confd::Transaction& transaction, uint32_t index, char* vrf_name)
{
    const confd_tag_value_t row[] = {
        uint32(tag::bgpNmEntIndex, index),
        uint32(tag::bgpNmEntRmIndex, index),
        uint32(tag::bgpNmEntSckIndex, kSocketEntity),
        enum_value(tag::bgpNmEntAdminStatus, mib::kUp),
        str(tag::bgpNmEntVrfName, vrf_name),
    };
    create_entity(manager, transaction, row, vrf_name, "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry",
                  is_named(vrf_name) ? 414 : 410);
}

// A join of the RTM with a partner, of the kind that `slave_type` says.
void create_rtm_join(const confd::Transaction& transaction, uint32_t rtm_index, uint32_t partner, int32_t slave_type)
{
    // clang-format off
    const confd_tag_value_t row[] = {
        uint32(tag::rtmMjRtmFteIndex, rtm_index),
        uint32(tag::rtmMjSlaveFteId, partner),
        enum_value(tag::rtmMjSlaveType, slave_type),
        enum_value(tag::rtmMjSafi, mib::kUnicast),
        enum_value(tag::rtmMjAdminStatus, mib::kUp),
    };
    // clang-format on
    if (transaction.set_values(row, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry") != CONFD_OK) {
        confd::fault_last_error("CreateJoinEntries", kSource, __LINE__);
    }
}

}  // namespace

int BgpRouterMgr::Create(int maapi_socket, int thandle, const std::string& path, uint32_t index, uint32_t as,
                         char* vrf_name)
{
    const confd::Transaction transaction{maapi_socket, thandle};

    LogDebug("Calling %s for %u", "Create", index);
    for (const int* afi = kRtmAfis; *afi != -1; ++afi) {
        ForceCreateRtmEntries(maapi_socket, thandle, index, *afi);
    }

    confd::Value myval;
    if (transaction.get(&myval, "%s/administrative-status", path.c_str()) != CONFD_OK) {
        confd::fault_last_error("Create", kSource, __LINE__);
    }
    BGP_REQUIRE_TYPE(__LINE__, &myval, C_ENUM_VALUE);
    const int32_t admin_status = CONFD_GET_ENUM_VALUE(&myval);

    confd::Value vl_router_id;
    if (BgpUtils::GetRouterIdIp(&vl_router_id)) {
        confd_value_t is_default;
        CONFD_SET_ENUM_VALUE(&is_default, mib::kTrue);
        if (transaction.set(&is_default, "/internal/router-id-default-hidden") != CONFD_OK) {
            confd::fault_last_error("Create", kSource, __LINE__);
        }
    } else {
        LogDebug("Could not derive router-id from local interfaces");
        if (transaction.get(&myval, "/router/bgp{%u}/router-id", as) != CONFD_OK) {
            CONFD_SET_IPV4(&myval, in_addr{INADDR_ANY});
        }
        BGP_REQUIRE_TYPE(__LINE__, &myval, C_IPV4);
        Ipv4InAddrTOhexlist(&vl_router_id, CONFD_GET_IPV4(&myval));
    }
    BGP_REQUIRE_TYPE(__LINE__, &vl_router_id, C_BINARY);
    create_rm_entity(*this, transaction, index, as, admin_status, vl_router_id, vrf_name);

    LogDebug("Create afi/safi entries");
    CreateBgpAfiSafiEntries(maapi_socket, thandle, index);
    create_nm_entity(*this, transaction, index, vrf_name);

    LogDebug("Setting master join entries");
    CreateJoinEntries(maapi_socket, thandle, index, AddressFamily::kIpv4Unicast);
    CreateJoinEntries(maapi_socket, thandle, index, AddressFamily::kIpv6Unicast);

    LogDebug("Create listen entries");
    CreateBgpListenEntries(maapi_socket, thandle, index);
    return 0;
}

int BgpRouterMgr::Create(int maapi_socket, confd_trans_ctx* tctx, const std::string& path, uint32_t index, uint32_t as,
                         char* vrf_name)
{
    LogDebug("Calling %s for %u", "Create", index);
    if (tctx == nullptr) {
        confd::fault("Create", kSource, 325, "");
    }
    return Create(maapi_socket, tctx->thandle, path, index, as, vrf_name);
}

int BgpRouterMgr::ForceCreateRtmEntries(int maapi_socket, int thandle, uint32_t index, int afi)
try {
    const confd::Transaction transaction{maapi_socket, thandle};

    const uint32_t component = component_of(index);
    const confd_tag_value_t row[] = {
        uint32(tag::rtmEntityFteIndex, afi == mib::kIpv6 ? component + 1 : component),
        enum_value(tag::rtmEntityAddressFamily, afi == mib::kIpv6 ? mib::kIpv6 : mib::kIpv4),
        uint32(tag::rtmEntityI3Index, kI3Entity),
        enum_value(tag::rtmEntityAdminStat, mib::kUp),
    };
    if (transaction.set_values(row, "/DC-RTM-MIB:DC-RTM-MIB/rtmEntityTable/rtmEntityEntry") != CONFD_OK) {
        confd::fault_last_error("ForceCreateRtmEntries", kSource, 147);
    }
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)

int BgpRouterMgr::CreateBgpAfiSafiEntries(int maapi_socket, int thandle, uint32_t index)
{
    const confd::Transaction transaction{maapi_socket, thandle};

    for (const AfiSafi& family : kAfiSafis) {
        const confd_tag_value_t row[] = {
            uint32(tag::bgpRmEntIndex, index),
            enum_value(tag::bgpRmAfiSafiAfi, family.afi),
            enum_value(tag::bgpRmAfiSafiSafi, family.safi),
            enum_value(tag::bgpRmAfiSafiAdminStatus, mib::kDown),
        };
        if (transaction.set_values(row, "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry") != CONFD_OK) {
            confd::fault_last_error("CreateBgpAfiSafiEntries", kSource, family.fault_line);
        }
    }
    return 0;
}

int BgpRouterMgr::CreateJoinEntries(int maapi_socket, int thandle, uint32_t index, AddressFamily afm)
try {
    const confd::Transaction transaction{maapi_socket, thandle};

    const Join* join = find_join(afm);
    if (join == nullptr) {
        return -1;
    }
    const uint32_t rtm_index = component_of(index) + join->rtm_offset;
    LogDebug("rm_index=%u rtm_index=%u afi=%d safi=%d afm=%d", index, rtm_index, join->afi, join->safi,
             static_cast<int>(afm));
    if (join->joins_rtm) {
        create_rtm_join(transaction, rtm_index, index, mib::kPartnerBgp);
        create_rtm_join(transaction, rtm_index, rtm_index, mib::kPartnerRtm);
    }
    const confd_tag_value_t row[] = {
        uint32(tag::bgpRmEntIndex, index),
        uint32(tag::bgpRmAfmJoin, static_cast<uint32_t>(afm)),
        uint32(tag::bgpRmAfmPartnerIndex, join->joins_rtm ? rtm_index : kVpnPartner),
        enum_value(tag::bgpRmAfmAfi, join->afi),
        enum_value(tag::bgpRmAfmSafi, join->safi),
        enum_value(tag::bgpRmAfmAdminStatus, mib::kDown),
    };
    if (transaction.set_values(row, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry") != CONFD_OK) {
        confd::fault_last_error("CreateJoinEntries", kSource, __LINE__);
    }
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)

int BgpRouterMgr::CreateBgpListenEntries(int maapi_socket, int thandle, uint32_t index)
{
    const confd::Transaction transaction{maapi_socket, thandle};

    for (const Listen& listen : kListens) {
        confd::Value myval;
        listen.convert(&myval, listen.address);
        BGP_REQUIRE_TYPE(__LINE__, &myval, C_BINARY);
        const confd_tag_value_t row[] = {
            uint32(tag::bgpNmEntIndex, index),
            uint32(tag::bgpNmListenIndex, index + listen.offset),
            enum_value(tag::bgpNmListenAddrType, listen.address_type),
            value_of(tag::bgpNmListenAddr, myval),
            uint32(tag::bgpNmListenPort, kBgpPort),
            enum_value(tag::bgpNmListenAdminStatus, mib::kUp),
        };
        if (transaction.set_values(row, "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry") != CONFD_OK) {
            confd::fault_last_error("CreateBgpListenEntries", kSource, 312);
        }
    }
    return 0;
}
