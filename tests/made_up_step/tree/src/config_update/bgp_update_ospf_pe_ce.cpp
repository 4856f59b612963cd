// Says of each OSPF entity whether it applies the PE-CE procedures: one of "/DC-OSPF-MIB/ospfPmEntTable" that has no word
// on it does not. Entities that have one are left alone.
#include "bgp_update/ospf_pe_ce.h"

#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_ospf_pe_ce";

}  // namespace

int32_t update_ospf_pe_ce(int32_t maapi_socket, int32_t thandle, int32_t /*cdb_socket*/)
try {
    nzmw_log_t* log = get_conf_updt_log_handle();
    const confd::Transaction transaction{maapi_socket, thandle};

    nzmw_log_debug(log, "Starting OSPF PE-CE update\n");
    confd::Cursor entities = transaction.cursor("/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry");
    while (entities.next()) {
        confd::Value stored;
        if (transaction.get(&stored, "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{%*x}/ospfPmEntVpnPeCeSupport",
                            entities.n(), entities.keys()) == CONFD_OK) {
            BGP_REQUIRE_TYPE(__LINE__, &stored, C_ENUM_VALUE);
            nzmw_log_debug(log, "PE-CE support is %d already\n", CONFD_GET_ENUM_VALUE(&stored));
            continue;
        }
        confd_value_t support;
        CONFD_SET_ENUM_VALUE(&support, mib::kFalse);
        if (transaction.set(&support, "/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{%*x}/ospfPmEntVpnPeCeSupport",
                            entities.n(), entities.keys()) != CONFD_OK) {
            nzmw_log_debug(log, "Failed to set the PE-CE support, err: %s\n", confd_lasterr());
        }
    }
    nzmw_log_debug(log, "Finishing OSPF PE-CE update\n");
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
