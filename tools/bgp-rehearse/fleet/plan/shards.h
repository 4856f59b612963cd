// Which inputs a shard has: about the same work in each, and the members of a compressed archive side by side, for each
// shard that has some of them unpacks the archive from its beginning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fleet/plan/found.h"

namespace bgp_rehearse {

// What rehearsing an input takes, in seconds: a guess from its size.
double seconds_of(const FoundInput& input);

// For each shard the inputs, by their places in `found`, in the order in which they are worked through: the members of
// archives in the archive's order, and what takes longest first. Every input is in one shard; some may stay empty.
std::vector<std::vector<uint32_t>> balanced_shards(const Found& found, std::size_t shards);

}  // namespace bgp_rehearse
