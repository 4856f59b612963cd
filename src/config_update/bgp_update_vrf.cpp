// Gives each VRF of the BGP router its instance in the routing stack's tables: an index, the instance's rows and, where
// the VRF has the IPv4 unicast family, that family switched on with its redistribution rule. The VRFs are those of
// "/router/bgp{%u}/vrf" in the stored configuration; one without a VRF index there is left out.
#include "bgp_update/vrf.h"

#include <cstddef>
#include <cstdlib>

#include "bgp_update/bgp_router_mgr.h"
#include "bgp_update/bgp_utils.h"
#include "bgp_update/bgp_vrf_redist_entry.h"
#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"
#include "confd_cdb.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_vrf";
constexpr int kPathSize = 512;

// The names of VRFs, zeroed until they are read, and given back when that succeeded. Their number comes from the stored
// configuration, so that there may be no room for them.
class VrfNames {
public:
    explicit VrfNames(int count)
        : count_(count),
          values_(static_cast<confd_value_t*>(std::calloc(static_cast<std::size_t>(count), sizeof(confd_value_t))))
    {
    }
    ~VrfNames()
    {
        if (read_) {
            BgpUtils::FreeConfdValues(values_, count_);
        }
        std::free(values_);
    }
    VrfNames(const VrfNames&) = delete;
    VrfNames& operator=(const VrfNames&) = delete;

    bool allocated() const { return values_ != nullptr; }

    // Reads the names of the router's VRFs from the first on. False after a failure.
    bool read(int cdb_socket, uint32_t as)
    {
        read_ = cdb_get_objects(cdb_socket, values_, 1, 0, count_, "/router/bgp{%u}/vrf", as) >= 0;
        return read_;
    }

    confd_value_t& operator[](int position) { return values_[position]; }

private:
    int count_;
    confd_value_t* values_;
    bool read_ = false;
};

}  // namespace

int bgp_vrf_afisafi_create(int maapi_socket, int thandle, uint32_t index, char* vrf_name, uint32_t /*as*/,
                           confd_value_t* afi, confd_value_t* safi)
{
    const confd::Transaction transaction{maapi_socket, thandle};

    BGP_REQUIRE_TYPE(40, afi, C_ENUM_VALUE);
    const uint32_t afm = CONFD_GET_ENUM_VALUE(afi) == mib::kIpv4 ? mib::kJoinIpv4Unicast : mib::kJoinIpv6Unicast;
    confd_value_t up;
    CONFD_SET_ENUM_VALUE(&up, mib::kUp);
    transaction.set(&up, "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{%u %x %x}/bgpRmAfiSafiAdminStatus", index,
                    afi, safi);
    if (transaction.exists("/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}", index, afm) == 1) {
        transaction.set(&up, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{%u %u}/bgpRmAfmAdminStatus", index, afm);
    }
    BgpUtils::BgpVrfRedistEntry::BgpVrfRedistCreateType(maapi_socket, thandle, get_conf_updt_log_handle(), nullptr,
                                                        vrf_name, RtmRedistInfoSource::kBgp, BgpUtils::is_IPv6(afi));
    return 0;
}

// Gives one VRF its instance; the path is that of its entry in the command-line model.
static void create_vrf_instance(const confd::Transaction& transaction, uint32_t as, char* name, uint32_t index,
                                nzmw_log_t* log)
{
    char path[kPathSize];
    confd_format_keypath(path, kPathSize, "/router/bgp{%u}/vrf{%s}", as, name);
    nzmw_log_debug(log, "BGP VRF high level path: %s", path);
    BgpRouterMgr(nullptr, log).Create(transaction.maapi_socket, transaction.thandle, path, index, as, name);
    if (transaction.exists("/router/bgp{%u}/vrf{%s}/address-family{ipv4 unicast}", as, name) == 1) {
        confd_value_t afi;
        CONFD_SET_ENUM_VALUE(&afi, mib::kIpv4);
        confd_value_t safi;
        CONFD_SET_ENUM_VALUE(&safi, mib::kUnicast);
        bgp_vrf_afisafi_create(transaction.maapi_socket, transaction.thandle, index, name, as, &afi, &safi);
    }
}

int32_t update_vrf(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket, uint32_t as)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();

    nzmw_log_debug(log, "Update BGP VRF\n");
    const int count = cdb_num_instances(cdb_socket, "/router/bgp{%u}/vrf", as);
    if (count < 0) {
        confd::fault_last_error("update_vrf", kSource, 203);
    }
    if (count == 0) {
        nzmw_log_debug(log, "No VRFs to update");
        return 0;
    }
    nzmw_log_debug(log, "Found %d bgp vrfs to update", count);
    VrfNames vl_names(count);
    if (!vl_names.allocated()) {
        nzmw_log_debug(log, "Could not allocate memory for vrf names\n");
        return -1;
    }
    if (!vl_names.read(cdb_socket, as)) {
        nzmw_log_debug(log, "Failed to read BGP VRF objects [%d]: %s \n", confd_errno, confd_lasterr());
        return -1;
    }
    for (int ivrf = 0; ivrf < count; ++ivrf) {
        BGP_REQUIRE_TYPE(227, &vl_names[ivrf], C_BUF);
        char* const name = reinterpret_cast<char*>(CONFD_GET_BUFPTR(&vl_names[ivrf]));
        nzmw_log_debug(log, "Will update VRF %s", name);
        confd::Value vl_vrf_idx;
        if (cdb_get(cdb_socket, &vl_vrf_idx,
                    "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{%s}/vrf-idx",
                    name) != CONFD_OK) {
            // The error stands where a name would be expected; readers of the log know the line so.
            nzmw_log_debug(log, "Trying to update a non existent VRF: %s", confd_lasterr());
            continue;
        }
        nzmw_log_debug(log, "Creating BGP index for VRF");
        BGP_REQUIRE_TYPE(240, &vl_vrf_idx, C_UINT32);
        const uint32_t index =
            BgpUtils::CreateBgpCompoundIdx(maapi_socket, thandle, cdb_socket, CONFD_GET_UINT32(&vl_vrf_idx), as);
        nzmw_log_debug(log, "Got BGP index %u for VRF", index);
        create_vrf_instance({maapi_socket, thandle}, as, name, index, log);
    }
    nzmw_log_debug(log, "Finishing VRF update\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
