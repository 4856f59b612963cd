#include "judge/stored_condition.h"

#include <fmt/format.h>

#include <optional>
#include <stdexcept>
#include <utility>

namespace bgp_rehearse {

namespace {

using bgp_contract::Condition;
using bgp_platform::Datastore;
using bgp_platform::Device;
using bgp_platform::store::Configuration;
using bgp_platform::store::Path;

// Throws for a path that the schema does not have.
Path known_path(const char* path, const Device& device)
{
    std::optional<Path> known = device.path_of(path);
    if (!known) {
        throw std::logic_error(fmt::format("the data model has no {}", path));
    }
    return std::move(*known);
}

}  // namespace

bool holds(const Condition& condition, const Device& device)
{
    const Path path = known_path(condition.path, device);
    const Configuration& stored = device.configuration(Datastore::Stored);
    switch (condition.kind) {
        case Condition::Kind::Value:
            return !stored.get(path).absent();
        case Condition::Kind::Rows:
            return stored.count(path) > 0;
        case Condition::Kind::NoRows:
            break;
    }
    return stored.count(path) == 0;
}

UpgradeSteps::Holds conditions_on(const Device& device)
{
    return [&device](const Condition& condition) { return holds(condition, device); };
}

}  // namespace bgp_rehearse
