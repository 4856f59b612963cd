#include "generate/configuration.h"

#include <stdexcept>

#include "generate/adversarial/tables.h"
#include "generate/healthy/tables.h"

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

// Puts what every configuration begins and ends with around the parts.
template <typename WriteParts>
bool write_around(const Sink& sink, WriteParts&& write_parts)
{
    XmlRows rows(sink);
    rows.line(R"(<?xml version="1.0" encoding="UTF-8"?>)");
    rows.open("config", R"( xmlns="http://tail-f.com/ns/config/1.0")");
    write_parts(&rows);
    rows.close("config");
    return rows.finish();
}

template <typename Wanted>
std::string text_of(const Wanted& wanted)
{
    std::string text;
    write_configuration(wanted, [&text](std::string_view piece) {
        text += piece;
        return true;
    });
    return text;
}

}  // namespace

bool write_configuration(const Settings& settings, const Sink& sink)
{
    check(settings);
    const Shape shape(settings);
    return write_around(sink, [&shape](XmlRows* rows) {
        write_bgp_tables(shape, rows);
        write_stack_tables(shape, rows);
        write_access_lists(shape, rows);
        write_command_line_model(shape, rows);
        write_redistribution_map(shape, rows);
        write_internal_tables(shape, rows);
        write_index_maps(shape, rows);
    });
}

bool write_configuration(const healthy::Request& request, const Sink& sink)
{
    const healthy::Router router = healthy::draw_router(request);
    return write_around(sink, [&router](XmlRows* rows) {
        rows->open("DC-BGP-MIB", R"( xmlns="http://tail-f.com/ns/mibs/DC-BGP-MIB")");
        write_entity_tables(router, rows);
        write_neighbor_tables(router, rows);
        write_route_maps(router, rows);
        rows->close("DC-BGP-MIB");
        write_stack_tables(router, rows);
        write_access_lists(router, rows);
        write_command_line_model(router, rows);
        write_prefix_lists(router, rows);
        write_index_maps(router, rows);
        write_internal_tables(router, rows);
    });
}

std::string configuration_text(const Settings& settings)
{
    return text_of(settings);
}

std::string configuration_text(const healthy::Request& request)
{
    return text_of(request);
}

}  // namespace bgp_generator
