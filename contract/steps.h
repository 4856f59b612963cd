// The upgrade's steps, in the order that update() takes them in. This is the one list of them: the report of a run and the
// fault sweep both go by it.
#pragma once

#include "contract/steps/update.h"
#include "contract/steps/update_bgp_bvm_join.h"
#include "contract/steps/update_ipv6.h"
#include "contract/steps/update_l3vpn.h"
#include "contract/steps/update_neigh_config_afi_safi.h"
#include "contract/steps/update_neigh_config_drop_warn.h"
#include "contract/steps/update_prefix_list.h"
#include "contract/steps/update_rm_index.h"
#include "contract/steps/update_router_bgp.h"
#include "contract/steps/update_vrf.h"
#include "contract/steps/update_vrf_ipv6.h"

namespace bgp_contract {

// update() itself comes first.
inline constexpr Step kSteps[] = {
    kUpdate,
    kUpdateRouterBgp,
    kUpdateIpv6,
    kUpdateL3vpn,
    kUpdatePrefixList,
    kUpdateRmIndex,
    kUpdateVrf,
    kUpdateNeighConfigDropWarn,
    kUpdateNeighConfigAfiSafi,
    kUpdateBgpBvmJoin,
    kUpdateVrfIpv6,
};

}  // namespace bgp_contract
