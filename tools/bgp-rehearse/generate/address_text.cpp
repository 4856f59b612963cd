#include "generate/address_text.h"

#include <cstdio>

namespace bgp_generator {

std::string ipv4_octets(uint32_t address)
{
    char text[sizeof "00:00:00:00"];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x", address >> 24, address >> 16 & 0xFF, address >> 8 & 0xFF,
                  address & 0xFF);
    return text;
}

std::string ipv4_text(uint32_t address)
{
    char text[sizeof "255.255.255.255"];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", address >> 24, address >> 16 & 0xFF, address >> 8 & 0xFF,
                  address & 0xFF);
    return text;
}

std::string link_ipv6_octets(uint32_t link)
{
    return "20:01:0d:b8:" + ipv4_octets(link) + ":00:00:00:00:00:00:00:02";
}

// In the short form: the longest run of zeros is left out.
std::string link_ipv6_text(uint32_t link)
{
    char text[sizeof "2001:db8:ffff:ffff::2"];
    const uint32_t low = link & 0xFFFF;
    if (low == 0) {
        std::snprintf(text, sizeof text, link == 0 ? "2001:db8::2" : "2001:db8:%x::2", link >> 16);
    } else {
        std::snprintf(text, sizeof text, "2001:db8:%x:%x::2", link >> 16, low);
    }
    return text;
}

}  // namespace bgp_generator
