// The router entity and what belongs to it: address families, joins, the network manager with its listen rows.
#include "generate/address_text.h"
#include "generate/healthy/tables.h"

namespace bgp_generator::healthy {

namespace {

constexpr uint32_t kBgpPort = 179;

// A second entity, where the router has that flaw, stands behind the first.
constexpr uint32_t kToSecondEntity = 20;

void write_entity(const Router& router, uint32_t entity, uint32_t as, XmlRows* rows)
{
    rows->begin("bgpRmEntEntry");
    rows->leaf("bgpRmEntIndex", entity);
    if (!router.has(Flaw::MissingLocalAs)) {
        rows->leaf("bgpRmEntLocalAs", as);
    }
    if (!router.has(Flaw::NoRouterId)) {
        rows->leaf("bgpRmEntLocalIdentifier", ipv4_octets(router.identifier));
    }
    rows->leaf("bgpRmEntAdminStatus", "up");
    rows->leaf("bgpRmEntAsSize", "fourOctet");
    if (router.reflects) {
        rows->leaf("bgpRmEntClusterId", ipv4_octets(router.identifier));
    }
    rows->leaf("bgpRmEntDefLocalPref", router.has(Flaw::ValueOutOfRange) ? "4294967296" : "100");
    if (!router.has(Flaw::MissingIpv6Flag)) {
        rows->leaf("bgpRmEntSupportIpv6", router.ipv6 ? "true" : "false");
    }
    rows->leaf("bgpRmEntSelectDeferTime", 120);
    rows->leaf("bgpRmEntStalePathTime", 120);
    rows->leaf("bgpRmEntI3EntIndex", 1);
    if (router.role == Role::Upgraded) {
        rows->leaf("bgpRmEntVrfName", "global");
    }
    rows->end("bgpRmEntEntry");
}

void write_entities(const Router& router, XmlRows* rows)
{
    rows->open("bgpRmEntTable");
    write_entity(router, router.entity, router.as, rows);
    if (router.has(Flaw::TwoEntities)) {
        write_entity(router, router.entity + kToSecondEntity, router.as + 1, rows);
    }
    rows->close("bgpRmEntTable");
}

void write_family(const Router& router, const char* afi, const char* safi, XmlRows* rows)
{
    rows->begin("bgpRmAfiSafiEntry");
    rows->leaf("bgpRmEntIndex", router.entity);
    rows->leaf("bgpRmAfiSafiAfi", afi);
    rows->leaf("bgpRmAfiSafiSafi", safi);
    rows->leaf("bgpRmAfiSafiAdminStatus", "up");
    rows->end("bgpRmAfiSafiEntry");
}

void write_families(const Router& router, XmlRows* rows)
{
    rows->open("bgpRmAfiSafiTable");
    write_family(router, "ipv4", "unicast", rows);
    if (router.vpn) {
        write_family(router, "ipv4", "mplsBgpVpn", rows);
    }
    if (router.ipv6) {
        write_family(router, "ipv6", "unicast", rows);
    }
    rows->close("bgpRmAfiSafiTable");
}

void write_join(const Router& router, uint32_t join, const char* afi, const char* safi, bool up, XmlRows* rows)
{
    rows->begin("bgpRmAfmJoinEntry");
    rows->leaf("bgpRmEntIndex", router.entity);
    rows->leaf("bgpRmAfmJoin", join);
    rows->leaf("bgpRmAfmPartnerIndex", join);
    rows->leaf("bgpRmAfmAfi", afi);
    rows->leaf("bgpRmAfmSafi", safi);
    rows->leaf("bgpRmAfmAdminStatus", up ? "up" : "down");
    rows->end("bgpRmAfmJoinEntry");
}

// Joins 1 and 2 are those with the RTM, 3 the one with the BVM: a dead one is removed where it does not move.
void write_joins(const Router& router, XmlRows* rows)
{
    rows->open("bgpRmAfmJoinTable");
    write_join(router, 1, "ipv4", "unicast", true, rows);
    if (router.ipv6) {
        write_join(router, 2, "ipv6", "unicast", true, rows);
    }
    if (router.vpn) {
        const bool removable = router.entity == 1 && router.role == Role::ProviderEdge;
        const bool dead = router.has(Flaw::DeadJoin) || (removable && router.draw(Subject::Joins).one_in(2));
        write_join(router, 3, "ipv4", "mplsBgpVpn", !dead, rows);
    }
    rows->close("bgpRmAfmJoinTable");
}

void write_network_manager(const Router& router, XmlRows* rows)
{
    rows->open("bgpNmEntTable");
    rows->begin("bgpNmEntEntry");
    rows->leaf("bgpNmEntIndex", router.entity);
    rows->leaf("bgpNmEntRmIndex", router.entity);
    rows->leaf("bgpNmEntSckIndex", 1);
    rows->leaf("bgpNmEntAdminStatus", "up");
    if (router.ipv6) {
        rows->leaf("bgpNmEntBfdEntityIndex", 0);
    }
    if (router.role == Role::Upgraded) {
        rows->leaf("bgpNmEntVrfName", "global");
    }
    rows->end("bgpNmEntEntry");
    rows->close("bgpNmEntTable");
}

void write_listen(const Router& router, uint32_t index, const char* type, const char* address, XmlRows* rows)
{
    rows->begin("bgpNmListenEntry");
    rows->leaf("bgpNmEntIndex", router.entity);
    rows->leaf("bgpNmListenIndex", index);
    rows->leaf("bgpNmListenAddrType", type);
    rows->leaf("bgpNmListenAddr", address);
    rows->leaf("bgpNmListenPort", kBgpPort);
    rows->leaf("bgpNmListenAdminStatus", "up");
    rows->end("bgpNmListenEntry");
}

void write_listens(const Router& router, XmlRows* rows)
{
    rows->open("bgpNmListenTable");
    write_listen(router, router.entity, "ipv4", kAnyIpv4Octets, rows);
    if (router.ipv6) {
        write_listen(router, router.entity + 1, "ipv6", kAnyIpv6Octets, rows);
    }
    rows->close("bgpNmListenTable");
}

void write_records(const Router& router, XmlRows* rows)
{
    rows->open("bgpConfigTable");
    rows->begin("bgpConfigEntry");
    rows->leaf("bgpRmEntIndex", router.entity);
    rows->leaf("bgpConfigIndex", 1);
    rows->leaf("bgpConfigAdminStatus", "up");
    rows->end("bgpConfigEntry");
    rows->close("bgpConfigTable");
}

}  // namespace

void write_entity_tables(const Router& router, XmlRows* rows)
{
    write_entities(router, rows);
    write_families(router, rows);
    write_joins(router, rows);
    write_network_manager(router, rows);
    write_listens(router, rows);
    write_records(router, rows);
}

}  // namespace bgp_generator::healthy
