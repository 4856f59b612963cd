#include "generate/healthy/flaw.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "base/given_value.h"
#include "base/nearest.h"

namespace bgp_generator::healthy {

namespace {

constexpr Roles kNotConverted = {Role::Edge, Role::ProviderEdge, Role::RouteReflector, Role::Leaf};

}  // namespace

// In the order of the enumeration.
const std::vector<KnownFlaw>& known_flaws()
{
    static const std::vector<KnownFlaw> flaws = {
        {Flaw::OtherEntityRows,
         "other-entity-rows",
         "route map entries of an entity index that has no entity",
         kNotConverted,
         {},
         false,
         "reference-broken",
         "note"},
        {Flaw::PlaceTaken,
         "place-taken",
         "an entry of a route map in use stands under index 1 already, where another moves to",
         kNotConverted,
         {1, 0, 0, 2},
         true,
         "row-left",
         "review"},
        {Flaw::PlaceTakenUnused,
         "place-taken-unused",
         "the same of a route map that nothing uses",
         kNotConverted,
         {},
         true,
         "row-left",
         "note"},
        {Flaw::BrokenReference,
         "broken-reference",
         "a neighbour's family refers to a route map that is not there",
         Roles::all(),
         {1, 0, 0, 0},
         false,
         "reference-broken",
         "note"},
        {Flaw::MissingIpv6Flag,
         "missing-ipv6-flag",
         "the entity does not say whether it supports IPv6",
         kNotConverted,
         {},
         false,
         "step-failed",
         "stop"},
        {Flaw::MissingLocalAs,
         "missing-local-as",
         "the entity has no local AS",
         {Role::Edge, Role::RouteReflector, Role::Leaf},
         {},
         false,
         "step-failed",
         "stop"},
        {Flaw::MissingNextIndex,
         "missing-next-index",
         "the next free number of an access list is not stored",
         kNotConverted,
         {0, 0, 1, 0},
         false,
         "step-failed",
         "stop"},
        {Flaw::CollidingNames,
         "colliding-names",
         "the last access list has the first one's name",
         kNotConverted,
         {0, 0, 2, 0},
         false,
         "row-left",
         "review"},
        {Flaw::HostBits,
         "host-bits",
         "an access list rule's prefix has host bits",
         kNotConverted,
         {0, 0, 1, 0},
         false,
         "stand-in-doubt",
         "review"},
        {Flaw::UnnamedList,
         "unnamed-list",
         "an access list that a route map uses has no name",
         kNotConverted,
         {1, 0, 1, 1},
         false,
         "row-left",
         "review"},
        {Flaw::UnnumberedVrf,
         "unnumbered-vrf",
         "a VRF below /router/bgp is in no map of names and indexes",
         {Role::ProviderEdge},
         {0, 1, 0, 0},
         false,
         "row-left",
         "review"},
        {Flaw::VrfWithoutStatus,
         "vrf-without-status",
         "a VRF has no administrative status",
         {Role::ProviderEdge},
         {0, 1, 0, 0},
         false,
         "ended",
         "stop"},
        {Flaw::LongName,
         "long-name",
         "a VRF's name is so long that a path of 512 bytes does not hold it",
         {Role::ProviderEdge},
         {0, 1, 0, 0},
         false,
         "ended",
         "stop"},
        {Flaw::ValueOutOfRange,
         "value-out-of-range",
         "the entity's default local preference is above what 32 bits hold",
         Roles::all(),
         {},
         false,
         "refused",
         "stop"},
        {Flaw::TwoEntities, "two-entities", "a second router entity", kNotConverted, {}, false, "step-failed", "stop"},
        {Flaw::NoMplsAnswer,
         "no-mpls-answer",
         "the MPLS VPN entity does not say whether it uses BGP",
         Roles::all(),
         {},
         false,
         "step-failed",
         "stop"},
        {Flaw::NoRouterId,
         "no-router-id",
         "no router id is stored, and VRFs need one",
         {Role::ProviderEdge},
         {0, 1, 0, 0},
         false,
         "identity-guessed",
         "review"},
        {Flaw::TakenRedistribution,
         "taken-redistribution",
         "a redistribution rule into OSPF stands where the rule of static routes moves to",
         {Role::Edge, Role::ProviderEdge, Role::Leaf},
         {},
         true,
         "row-left",
         "review"},
        {Flaw::AnnouncedNetworks,
         "announced-networks",
         "announced networks of an entity that moves: their hidden rows keep the old rule numbers",
         {Role::Edge, Role::ProviderEdge, Role::Leaf},
         {},
         true,
         "reference-broken",
         "review"},
        {Flaw::DeadJoin,
         "dead-join",
         "the join with the BVM partner is down, and moves before the step that removes it",
         {Role::ProviderEdge},
         {},
         true,
         "failed-as-expected",
         "note"},
    };
    return flaws;
}

const KnownFlaw& known(Flaw flaw)
{
    return known_flaws().at(static_cast<std::size_t>(flaw));
}

std::vector<std::string> role_names()
{
    std::vector<std::string> names;
    std::transform(std::begin(kRoles), std::end(kRoles), std::back_inserter(names),
                   [](const KnownRole& role) { return role.name; });
    return names;
}

std::vector<std::string> flaw_names()
{
    std::vector<std::string> names;
    std::transform(known_flaws().begin(), known_flaws().end(), std::back_inserter(names),
                   [](const KnownFlaw& flaw) { return flaw.name; });
    return names;
}

Role role_named(const std::string& name)
{
    return kRoles[bgp_rehearse::given_word(name, role_names())].role;
}

Flaw flaw_named(const std::string& name)
{
    const std::vector<std::string> names = flaw_names();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        throw std::invalid_argument("\"" + name + "\" is no flaw" + bgp_rehearse::did_you_mean(name, names));
    }
    return known_flaws()[static_cast<std::size_t>(found - names.begin())].flaw;
}

std::string names_of(Roles roles)
{
    std::string names;
    for (const KnownRole& role : kRoles) {
        if (roles.has(role.role)) {
            names += (names.empty() ? "" : ", ") + std::string(role.name);
        }
    }
    return names;
}

}  // namespace bgp_generator::healthy
