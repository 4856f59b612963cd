// What the command line and the upgrade's newer model hold: the router with its VRFs, prefix lists, the maps of
// redistribution rules and of instance indexes.
#include "generate/adversarial/tables.h"

namespace bgp_generator {

namespace {

constexpr int32_t kBgpXmlTag = 555337807;
constexpr int32_t kOtherXmlTag = 1794178062;

void write_vrf_neighbors(const Shape& shape, const Vrf& vrf, XmlRows* rows)
{
    Draw draw = shape.draw(Subject::VrfNeighbors, vrf.index);
    const uint32_t count = draw.below(3);
    for (uint32_t i = 0; i < count; ++i) {
        const std::string network = "203.0." + std::to_string(vrf.index % 200) + ".";
        rows->begin("neighbor");
        rows->leaf("address", network + std::to_string(4 * i + 2));
        if (draw.one_in(2)) {
            rows->leaf("update-source-address", network + std::to_string(4 * i + 1));
        }
        rows->leaf("remote-as", 64496 + draw.below(16));
        rows->end("neighbor");
    }
}

void write_vrf(const Shape& shape, const Vrf& vrf, XmlRows* rows)
{
    rows->begin("vrf");
    rows->leaf("name", vrf.name);
    rows->leaf("administrative-status", vrf.index % 3 == 0 ? "down" : "up");
    if (vrf.ipv4) {
        rows->line("<address-family><afi>ipv4</afi><safi>unicast</safi></address-family>");
    }
    if (vrf.ipv6) {
        rows->line("<address-family><afi>ipv6</afi><safi>unicast</safi></address-family>");
    }
    write_vrf_neighbors(shape, vrf, rows);
    rows->end("vrf");
}

void write_router(const Shape& shape, XmlRows* rows)
{
    if (!shape.has_router()) {
        return;
    }
    Draw draw = shape.draw(Subject::Shape, 2);
    rows->open("router", R"( xmlns="urn:bgp-update:yang:router")");
    rows->begin("bgp");
    rows->leaf("as-number", shape.router_as());
    if (draw.one_in(2)) {
        rows->leaf("router-id", "192.0.2.1");
    }
    rows->leaf("administrative-status", "up");
    if (draw.one_in(2)) {
        rows->line("<bgp><default-local-preference>100</default-local-preference></bgp>");
    }
    shape.for_each_vrf([&](const Vrf& vrf) { write_vrf(shape, vrf, rows); });
    rows->end("bgp");
    rows->close("router");
}

// In an eighth of the configurations a prefix list of the newer model is there already.
void write_prefix_lists(const Shape& shape, XmlRows* rows)
{
    Draw draw = shape.draw(Subject::Shape, 3);
    if (!draw.one_in(8)) {
        return;
    }
    rows->begin("prefix-list", R"( xmlns="urn:bgp-update:yang:prefix-list")");
    rows->leaf("name", "there-before");
    rows->line("<seq><number>5</number><address>192.0.2.0/24</address><action>permit</action></seq>");
    rows->end("prefix-list");
    rows->open("prefix-list-internal", R"( xmlns="urn:bgp-update:yang:prefix-list")");
    rows->line("<name-to-idx><name>there-before</name><idx>1</idx></name-to-idx>");
    rows->line("<idx-to-name><idx>1</idx><val>there-before</val></idx-to-name>");
    rows->line("<name-next-index>2</name-next-index>");
    rows->close("prefix-list-internal");
}

void write_vrf_index(uint32_t vrf, const std::string& content, XmlRows* rows)
{
    rows->begin("bgp-vrf");
    rows->leaf("vrf-idx", vrf);
    rows->line(content);
    rows->end("bgp-vrf");
}

std::string instance(uint32_t as)
{
    const std::string number = std::to_string(as);
    return "<bgp-next-index>1</bgp-next-index><as-to-bgp-idx><as>" + number +
           "</as><inst-idx>0</inst-idx></as-to-bgp-idx><idx-to-bgp-as><idx>0</idx><as-number>" + number +
           "</as-number></idx-to-bgp-as>";
}

}  // namespace

void write_command_line_model(const Shape& shape, XmlRows* rows)
{
    write_router(shape, rows);
    write_prefix_lists(shape, rows);
}

void write_redistribution_map(const Shape& shape, XmlRows* rows)
{
    for_each_redistribution(shape, [&](const Redistribution& rule) {
        Draw draw = shape.draw(Subject::Redistribution, uint64_t{rule.entry} << 16 | rule.rtm_index);
        if (draw.one_in(8)) {
            return;
        }
        rows->begin("redist-protocol", R"( xmlns="urn:bgp-update:yang:redist-protocol")");
        rows->leaf("rtm-index", rule.rtm_index);
        rows->leaf("entry", rule.entry);
        if (!draw.one_in(8)) {
            const bool bgp = rule.destination == Redistribution::Destination::Bgp;
            rows->leaf("protocol-xmltag", bgp ? kBgpXmlTag : kOtherXmlTag);
        }
        if (!draw.one_in(4)) {
            rows->leaf("protocol-index", rule.entity);
        }
        rows->end("redist-protocol");
    });
}

// VRF 0 has the map of the entity's AS, that of another AS, or an empty one; most often it has none. A VRF may have
// kept the numbers of instances that are gone.
void write_index_maps(const Shape& shape, XmlRows* rows)
{
    rows->open("bgp-internal", R"( xmlns="urn:bgp-update:yang:bgp-internal")");
    switch (shape.global_maps()) {
        case GlobalMaps::None:
            break;
        case GlobalMaps::Empty:
            write_vrf_index(0, "", rows);
            break;
        case GlobalMaps::OfOtherAs:
            write_vrf_index(0, instance(shape.first().as + 10), rows);
            break;
        case GlobalMaps::OfTheEntity:
            write_vrf_index(0, instance(shape.first().as), rows);
            break;
    }
    shape.for_each_vrf([&](const Vrf& vrf) {
        if (shape.draw(Subject::Vrf, uint64_t{vrf.index} << 32).one_in(8)) {
            write_vrf_index(vrf.index,
                            "<bgp-free-index>3</bgp-free-index><bgp-free-index>4</bgp-free-index>"
                            "<bgp-next-index>5</bgp-next-index>",
                            rows);
        }
    });
    rows->close("bgp-internal");
}

}  // namespace bgp_generator
