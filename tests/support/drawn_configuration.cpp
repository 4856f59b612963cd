#include "support/drawn_configuration.h"

#include "generate/configuration.h"

namespace bgp_test {

std::string adversarial(uint64_t seed, uint32_t entities)
{
    bgp_generator::Settings settings;
    settings.seed = seed;
    settings.entities = entities;
    settings.neighbors = static_cast<uint32_t>(seed * 7 % 33);
    settings.vrfs = static_cast<uint32_t>(seed % 4);
    settings.prefix_rules = static_cast<uint32_t>(seed * 11 % 70);
    settings.route_maps = static_cast<uint32_t>(seed * 5 % 24);
    return bgp_generator::configuration_text(settings);
}

std::string adversarial_of_any_entities(uint64_t seed)
{
    constexpr uint32_t kEntities[] = {1, 1, 1, 1, 1, 1, 1, 2, 3, 0};
    return adversarial(seed, kEntities[seed % 10]);
}

std::string healthy(uint64_t seed)
{
    bgp_generator::healthy::Request request;
    request.seed = seed;
    return bgp_generator::configuration_text(request);
}

}  // namespace bgp_test
