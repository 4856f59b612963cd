#include "generate/configuration.h"

#include <stdexcept>

#include "generate/tables.h"

namespace bgp_generator {

namespace {

void refuse_above(uint32_t most, uint32_t number, const char* what)
{
    if (number > most) {
        throw std::invalid_argument("at most " + std::to_string(most) + " " + what + " can be drawn, not " +
                                    std::to_string(number));
    }
}

void check(const Settings& settings)
{
    refuse_above(kMostNeighbors, settings.neighbors, "neighbours");
    refuse_above(kMostVrfs, settings.vrfs, "VRFs");
    refuse_above(kMostPrefixRules, settings.prefix_rules, "prefix rules");
    refuse_above(kMostRouteMaps, settings.route_maps, "route map entries");
    refuse_above(kMostEntities, settings.entities, "entities");
}

}  // namespace

bool write_configuration(const Settings& settings, const Sink& sink)
{
    check(settings);
    const Shape shape(settings);
    XmlRows rows(sink);
    rows.line(R"(<?xml version="1.0" encoding="UTF-8"?>)");
    rows.open("config", R"( xmlns="http://tail-f.com/ns/config/1.0")");
    write_bgp_tables(shape, &rows);
    write_stack_tables(shape, &rows);
    write_access_lists(shape, &rows);
    write_command_line_model(shape, &rows);
    write_redistribution_map(shape, &rows);
    write_internal_tables(shape, &rows);
    write_index_maps(shape, &rows);
    rows.close("config");
    return rows.finish();
}

std::string configuration_text(const Settings& settings)
{
    std::string text;
    write_configuration(settings, [&text](std::string_view piece) {
        text += piece;
        return true;
    });
    return text;
}

}  // namespace bgp_generator
