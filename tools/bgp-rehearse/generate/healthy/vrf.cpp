#include "generate/healthy/vrf.h"

#include <iterator>

namespace bgp_generator::healthy {

namespace {

constexpr const char* kCustomers[] = {"ALPHA", "BRAVO",  "CHARLIE", "DELTA", "ECHO", "FOXTROT",  "GOLF",  "HOTEL",
                                      "INDIA", "JULIET", "KILO",    "LIMA",  "MIKE", "NOVEMBER", "OSCAR", "PAPA"};
constexpr uint32_t kRtmStep = 65536;
constexpr std::size_t kPathLength = 512;  // of the buffer that an upgrade makes a path in

std::string name_of(uint32_t position)
{
    const auto customers = static_cast<uint32_t>(std::size(kCustomers));
    const std::string name = std::string("CUST-") + kCustomers[position % customers];
    return position < customers ? name : name + "-" + std::to_string(position / customers + 1);
}

}  // namespace

// What a flaw takes from a VRF it takes from the first.
Vrf vrf(const Router& router, uint32_t position)
{
    Draw draw = router.draw(Subject::Vrf, position);
    Vrf vrf;
    vrf.name = name_of(position);
    if (position == 0 && router.has(Flaw::LongName)) {
        vrf.name.append(kPathLength, 'A');
    }
    vrf.index = position + 1;
    vrf.rtm_index = 1 + kRtmStep * vrf.index;
    vrf.numbered = position != 0 || !router.has(Flaw::UnnumberedVrf);
    vrf.has_status = position != 0 || !router.has(Flaw::VrfWithoutStatus);
    vrf.up = !draw.one_in(8);
    vrf.ipv6 = router.ipv6 && draw.one_in(2);
    vrf.ipv4 = !vrf.ipv6 || !draw.one_in(6);
    vrf.neighbors = draw.below(4);
    if (vrf.numbered && draw.one_in(2)) {
        vrf.ospf_process = 100 + vrf.index % 60000;
        vrf.ospf_index = vrf.index + 1;
    }
    return vrf;
}

}  // namespace bgp_generator::healthy
