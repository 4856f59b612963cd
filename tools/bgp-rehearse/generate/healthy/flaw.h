// Flaws that a router can be drawn with, one known thing that is wrong each: what it is, which routers can have it, and
// what a rehearsal should say of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "generate/healthy/role.h"

namespace bgp_generator::healthy {

enum class Flaw {
    OtherEntityRows,
    PlaceTaken,
    PlaceTakenUnused,
    BrokenReference,
    MissingIpv6Flag,
    MissingLocalAs,
    MissingNextIndex,
    CollidingNames,
    HostBits,
    UnnamedList,
    UnnumberedVrf,
    VrfWithoutStatus,
    LongName,
    ValueOutOfRange,
    TwoEntities,
    NoMplsAnswer,
    NoRouterId,
    TakenRedistribution,
    AnnouncedNetworks,
    DeadJoin,
};

struct KnownFlaw {
    Flaw flaw;
    const char* name;
    const char* adds;
    Roles roles;           // that can have it
    Sizes needs;           // at least so many rows, for it to have a place
    bool other_index;      // it shows only where the entity's index is not 1 already
    const char* finding;   // the id of the finding; "refused": the file does not load
    const char* severity;  // stop, review or note; of "refused": stop
};

const std::vector<KnownFlaw>& known_flaws();
const KnownFlaw& known(Flaw flaw);

std::vector<std::string> role_names();
std::vector<std::string> flaw_names();

// Those of that name. Throw std::invalid_argument, with what may have been meant, where there is none.
Role role_named(const std::string& name);
Flaw flaw_named(const std::string& name);

// "edge, leaf"
std::string names_of(Roles roles);

}  // namespace bgp_generator::healthy
