// The lines of the upgrade log that tell of its steps, in the order that update() takes the steps in.
#pragma once

#include <array>

namespace bgp_rehearse {

// Beginnings of log lines; arrays are filled up with null pointers.
struct StepLines {
    using Lines = std::array<const char*, 3>;

    const char* name;       // of the step's function
    const char* start;      // its first line
    const char* end;        // its last line
    Lines nothing_to_do;    // its last lines when it had nothing to do
    Lines failed;           // its last lines when it gave up
    Lines passed_over;      // update()'s own lines when the step does not run
    const char* condition;  // why it did not run when update() writes no line about it
};

constexpr char kNotOneEntity[] = "No need to update others config\n";
constexpr char kNoRouterEntityIndex[] = "the index of the BGP router entity cannot be read";
constexpr char kStepMissing[] = "the log does not tell of it";

constexpr StepLines kUpgrade = {"update", "Starting BGP update\n", "Finishing BGP update\n", {}, {}, {}, kStepMissing};

constexpr StepLines kSteps[] = {
    {"update_router_bgp",
     "Starting BGP router update\n",
     "Finishing BGP router update\n",
     {"Router BGP high-level already exists ", "Failed to read as-number "},
     {"Failed to configure router bgp: "},
     {kNotOneEntity},
     kStepMissing},
    {"update_ipv6",
     "Update BGP Ipv6\n",
     "Finishing BGP Ipv6 update\n",
     {},
     {"Failed to read entity index BGP entry: "},
     {kNotOneEntity, "IPv6 is already enabled for BGP entry : ", "Failed to read IPv6 enable flag for BGP entry: "},
     kStepMissing},
    {"update_l3vpn",
     "Update BGP AfiSafi L3VPN\n",
     "Finishing BGP AfiSafi L3VPN\n",
     {"No need to update VpnEntry"},
     {"Failed to read mplsVpnUseBgpRouting, ", "Failed to read entity index BGP entry: "},
     {kNotOneEntity},
     kStepMissing},
    {"update_prefix_list",
     "Update Prefix List\n",
     "Finishing Prefix List update\n",
     {},
     {"Couldn't read next_free_index. ", "Could not get prefix list entries, ",
      "Couldn't set internal name-next-index value! "},
     {kNotOneEntity},
     "no access list rules are stored, a prefix list is there already, or the entity's index cannot be read"},
    {"update_rm_index",
     "Starting BGP RM index update\n",
     "Finishing BGP RM index update\n",
     {"No need to update rm index!\n"},
     {"Failed to get local as number, "},
     {kNotOneEntity},
     kNoRouterEntityIndex},
    {"update_vrf",
     "Update BGP VRF\n",
     "Finishing VRF update\n",
     {"No VRFs to update"},
     {"Could not allocate memory for vrf names\n", "Failed to read BGP VRF objects "},
     {kNotOneEntity, "num bgp: "},
     "the AS number of the BGP router entity cannot be read"},
    {"update_neigh_config_drop_warn",
     "enter update_neigh_config_drop_warn\n",
     "exit update_neigh_config_drop_warn\n",
     {"No need to update config - exit update_neigh_config_drop_warn\n"},
     {},
     {},
     kStepMissing},
    {"update_neigh_config_afi_safi",
     "enter update_neigh_config_afi_safi\n",
     "exit update_neigh_config_afi_safi\n",
     {"No need to update config - exit update_neigh_config_afi_safi\n", "No afi table entries to update\n"},
     {},
     {},
     kStepMissing},
    {"update_bgp_bvm_join",
     "Starting BGP and BVM join update\n",
     "Finishing BGP and BVM join update\n",
     {"No need to update BGP and BVM join update\n"},
     {"Failed to read entity index BGP entry: "},
     {},
     kStepMissing},
    {"update_vrf_ipv6",
     "Update BGP VRF IPv6\n",
     "Finishing VRF IPv6 update\n",
     {"No BGP config to update"},
     {"update_vrf_ipv6:162: "},
     {},
     kStepMissing},
};

}  // namespace bgp_rehearse
