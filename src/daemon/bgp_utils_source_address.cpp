// The update-source address of a VRF's neighbour: from the open transaction, from the running configuration, or from
// the one and then the other.
#include "bgp_update/bgp_utils.h"
#include "bgp_update/nz_confd_cdb_session.h"
#include "confd/fault.h"
#include "confd/transaction.h"
#include "confd_cdb.h"
#include "confd_dp.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";
constexpr char kBadSocket[] = "Socket has an invalid file descriptor\n";

confd_value absent()
{
    confd_value value{};
    CONFD_SET_NOEXISTS(&value);
    return value;
}

}  // namespace

// As the running configuration has it; `function` is the name under which faults are reported.
static confd_value committed_source_address(const char* function, confd_trans_ctx* tctx, unsigned int as,
                                            const char* vrf, confd_value* neighbor)
{
    const NzConfdCdbSession session(NzConfdInterface::FromTransaction(tctx), CDB_RUNNING, true);
    if (session.Socket() < 0) {
        confd::fault(function, kSource, __LINE__, kBadSocket);
    }
    confd_value address = absent();
    if (cdb_exists(session.Socket(), "/router/bgp{%u}", as) != 1 ||
        cdb_exists(session.Socket(), "/router/bgp{%u}/vrf{%s}/neighbor{%x}/update-source-address", as, vrf, neighbor) !=
            1) {
        return address;
    }
    if (cdb_get(session.Socket(), &address, "/router/bgp{%u}/vrf{%s}/neighbor{%x}/update-source-address", as, vrf,
                neighbor) != CONFD_OK) {
        confd::fault_last_error(function, kSource, __LINE__);
    }
    return address;
}

confd_value BgpUtils::cdb_get_source_address(confd_trans_ctx* tctx, unsigned int as, char* vrf, confd_value* neighbor)
try {
    return committed_source_address("cdb_get_source_address", tctx, as, vrf, neighbor);
}
BGP_FAULT_ON_EXCEPTION(__func__)

confd_value BgpUtils::maapi_cdb_get_source_address(confd_trans_ctx* tctx, unsigned int as, char* vrf,
                                                   confd_value* neighbor)
try {
    constexpr char kFunction[] = "maapi_cdb_get_source_address";
    const NzConfdInterface* const confd = NzConfdInterface::FromTransaction(tctx);
    if (confd == nullptr || confd->MaapiSocket() < 0) {
        confd::fault(kFunction, kSource, __LINE__, kBadSocket);
    }
    const confd::Transaction transaction{confd->MaapiSocket(), tctx->thandle};
    // A failed test counts as an address that is there: the read then fails too, and is reported.
    if (transaction.exists("/router/bgp{%u}/vrf{%s}/neighbor{%x}/update-source-address", as, vrf, neighbor) == 0) {
        return committed_source_address(kFunction, tctx, as, vrf, neighbor);
    }
    confd_value address = absent();
    if (transaction.get(&address, "/router/bgp{%u}/vrf{%s}/neighbor{%x}/update-source-address", as, vrf, neighbor) !=
        CONFD_OK) {
        confd::fault_last_error(kFunction, kSource, __LINE__);
    }
    return address;
}
BGP_FAULT_ON_EXCEPTION(__func__)
