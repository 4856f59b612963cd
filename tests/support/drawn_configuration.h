// Stored configurations drawn at random, the same for the same seed, of sizes that go with it.
#pragma once

#include <cstdint>
#include <string>

namespace bgp_test {

// Odd in all that may be odd.
std::string adversarial(uint64_t seed, uint32_t entities = 1);

// Of ten seeds seven have the one router entity that upgrades are for, the others two, three or none.
std::string adversarial_of_any_entities(uint64_t seed);

// As operators have them.
std::string healthy(uint64_t seed);

}  // namespace bgp_test
