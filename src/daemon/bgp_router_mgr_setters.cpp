// Copies one attribute of the command line's router configuration into the routing-manager entity of a BGP instance.
// Does nothing when there is no such instance. A failed write ends the process.
#include "bgp_update/bgp_router_mgr.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/value.h"
#include "nz_address.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_router_mgr";
constexpr int kWholeAddress = 32;  // bits

enum class Form { AsItStands, HexList };

struct Attribute {
    const char* setter;
    const char* leaf;
    Form form;
    int fault_line;
};

enum { kRouterId, kAdminStatus, kAsSize, kClusterId, kDefLocPref };

constexpr Attribute kAttributes[] = {
    {"SetRouterId", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}/bgpRmEntLocalIdentifier", Form::HexList, 60},
    {"SetAdminStatus", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}/bgpRmEntAdminStatus", Form::AsItStands, 76},
    {"SetAsSize", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}/bgpRmEntAsSize", Form::AsItStands, 87},
    {"SetClusterId", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}/bgpRmEntClusterId", Form::HexList, 101},
    {"SetDefLocPref", "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}/bgpRmEntDefLocalPref", Form::AsItStands, 114},
};

// False when there is no such instance.
bool set_attribute(const confd::Transaction& transaction, uint32_t index, confd_value_t* value,
                   const Attribute& attribute)
{
    if (transaction.exists("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{%u}", index) != 1) {
        return false;
    }
    confd::Value hex_list;
    if (attribute.form == Form::HexList) {
        Ipv4TOhexlist(&hex_list, value, kWholeAddress);
        value = &hex_list;
    }
    if (transaction.set(value, attribute.leaf, index) != CONFD_OK) {
        confd::fault_last_error(attribute.setter, kSource, attribute.fault_line);
    }
    return true;
}

}  // namespace

int BgpRouterMgr::SetRouterId(int maapi_socket, int thandle, uint32_t index, confd_value* value)
{
    const confd::Transaction transaction{maapi_socket, thandle};
    if (set_attribute(transaction, index, value, kAttributes[kRouterId])) {
        confd_value_t is_default;
        CONFD_SET_ENUM_VALUE(&is_default, mib::kFalse);
        if (transaction.set(&is_default, "/internal/router-id-default-hidden") != CONFD_OK) {
            confd::fault_last_error("SetRouterId", kSource, 62);
        }
    }
    return 0;
}

int BgpRouterMgr::SetAdminStatus(int maapi_socket, int thandle, uint32_t index, confd_value* value)
{
    set_attribute({maapi_socket, thandle}, index, value, kAttributes[kAdminStatus]);
    return 0;
}

int BgpRouterMgr::SetAsSize(int maapi_socket, int thandle, uint32_t index, confd_value* value)
{
    set_attribute({maapi_socket, thandle}, index, value, kAttributes[kAsSize]);
    return 0;
}

int BgpRouterMgr::SetClusterId(int maapi_socket, int thandle, uint32_t index, confd_value* value)
{
    set_attribute({maapi_socket, thandle}, index, value, kAttributes[kClusterId]);
    return 0;
}

int BgpRouterMgr::SetDefLocPref(int maapi_socket, int thandle, uint32_t index, confd_value* value)
{
    set_attribute({maapi_socket, thandle}, index, value, kAttributes[kDefLocPref]);
    return 0;
}
