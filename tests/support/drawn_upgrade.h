// Upgrades of configurations drawn at random.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "device.h"
#include "support/table_rows.h"

namespace bgp_test {

constexpr uint64_t kSeeds = 200;
constexpr uint32_t kProfile = 77;  // the user profile of their devices

// What decides, in the stored configuration, which steps are taken.
struct Facts {
    std::size_t entities = 0;
    uint32_t first_index = 0;
    std::optional<uint32_t> as;
    bool without_ipv6 = false;
    bool mapped = false;       // VRF 0 has the map of the entity's AS
    bool container_0 = false;  // VRF 0 has maps at all

    bool rekeys() const { return entities == 1 && as && !mapped; }
    // The map of the AS finds no place: each upgrade re-keys.
    bool rekeys_each_time() const { return rekeys() && container_0; }
};

// A device with a stored configuration, and upgrades of it.
class Upgrade {
public:
    explicit Upgrade(uint64_t seed);
    explicit Upgrade(const std::string& configuration);

    bgp_platform::Device& device() { return device_; }
    const Facts& facts() const { return facts_; }
    Table stored(const char* path) const { return rows_of(device_, bgp_platform::Datastore::Stored, path); }
    Table upgraded(const char* path) const { return rows_of(device_, bgp_platform::Datastore::Transaction, path); }
    std::vector<std::string> changes() const;

    void run();

    // The steps before the re-keying that write to its tables, instead of a whole upgrade.
    void run_until_rekeying();

    // What the run made is the stored configuration; runs again.
    void run_again();

private:
    bgp_platform::Device device_;
    Facts facts_;
};

// Runs the body for every seed, with the seed in the message of what fails.
template <typename Body>
void for_each_seed(Body&& body)
{
    for (uint64_t seed = 0; seed < kSeeds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        body(seed);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}
}  // namespace bgp_test
