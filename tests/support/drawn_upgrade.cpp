#include "support/drawn_upgrade.h"

#include <arpa/inet.h>

#include <iostream>

#include "bgp_update/ipv6.h"
#include "bgp_update/l3vpn.h"
#include "bgp_update/router_bgp.h"
#include "bgp_update/update.h"
#include "store/list.h"
#include "support/change_lines.h"
#include "support/drawn_configuration.h"

namespace bgp_test {

namespace {

using bgp_platform::Datastore;
using bgp_platform::Device;
using bgp_platform::UpgradeHandles;
using bgp_platform::schema::Node;
using bgp_platform::store::Row;

Facts facts_of(const Device& device)
{
    Facts facts;
    const Table entities = rows_of(device, Datastore::Stored, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry");
    facts.entities = entities.size();
    if (entities.empty()) {
        return facts;
    }
    const Leaves& leaves = entities.front().leaves;
    facts.first_index = number(entities.front().key.front());
    facts.without_ipv6 = find(leaves, "bgpRmEntSupportIpv6") == "false";
    if (const auto as = find(leaves, "bgpRmEntLocalAs")) {
        facts.as = number(*as);
    }
    const Node& vrfs = node_of(device, "/bgp-internal/bgp-vrf");
    device.configuration(Datastore::Stored).root().list(vrfs.slot).for_each([&](const Row& vrf) {
        if (vrf.value(0).as_uint() == 0) {
            facts.container_0 = true;
            vrf.list(vrfs.child("as-to-bgp-idx")->slot).for_each([&](const Row& map) {
                facts.mapped = facts.mapped || map.value(0).as_uint() == facts.as;
            });
        }
    });
    return facts;
}

}  // namespace

Upgrade::Upgrade(uint64_t seed) : Upgrade(adversarial_of_any_entities(seed))
{
    // A fault ends the test process: its last words tell the seed.
    device_.fault_sink = [seed](const bgp_platform::Fault& fault) {
        std::cerr << "seed " << seed << ": " << fault.function << ", " << fault.text << std::endl;
    };
}

Upgrade::Upgrade(const std::string& configuration)
{
    device_.set_interfaces({in_addr{htonl(0xC0000201)}});
    device_.set_user_profile(kProfile);
    device_.load_text(configuration);
    facts_ = facts_of(device_);
}

std::vector<std::string> Upgrade::changes() const
{
    return change_lines(device_);
}

void Upgrade::run()
{
    const UpgradeHandles upgrade = device_.open_upgrade();
    EXPECT_EQ(update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket), 0);
}

void Upgrade::run_until_rekeying()
{
    const UpgradeHandles upgrade = device_.open_upgrade();
    if (facts_.entities != 1) {
        return;
    }
    update_router_bgp(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket, 0);
    if (facts_.without_ipv6) {
        update_ipv6(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket);
    }
    update_l3vpn(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket);
}

void Upgrade::run_again()
{
    device_.commit();
    run();
}

}  // namespace bgp_test
