// Addresses to hex lists and back. A hex list is C_BINARY whatever it was made from.
#include "nz_address.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

#include "values/owned_values.h"

namespace {

constexpr int kOk = 0;
constexpr int kBadInput = -1;
constexpr int kIpv4Bits = 32;

int refuse(confd_value_t* out)
{
    CONFD_SET_NOEXISTS(out);
    return kBadInput;
}

using Own = void (*)(confd_value_t*, std::string_view);

int store(confd_value_t* out, Own own, std::string_view bytes)
{
    try {
        own(out, bytes);
        return kOk;
    } catch (const std::bad_alloc&) {
        return refuse(out);
    }
}

template <typename Address>
std::string_view octets_of(const Address& address)
{
    return {reinterpret_cast<const char*>(&address), sizeof(address)};
}

template <typename Address>
int store_hexlist(confd_value_t* out, const Address& address)
{
    return store(out, bgp_platform::values::own_octets, octets_of(address));
}

template <typename Address>
int store_hexlist_text(confd_value_t* out, const Address& address)
{
    constexpr char kDigits[] = "0123456789abcdef";
    char text[3 * sizeof address];
    char* at = text;
    for (const char octet : octets_of(address)) {
        const auto bits = static_cast<unsigned char>(octet);
        *at++ = kDigits[bits >> 4U];
        *at++ = kDigits[bits & 0xFU];
        *at++ = ':';
    }
    return store(out, bgp_platform::values::own_text, {text, sizeof text - 1});
}

template <typename Address>
int hexlist_from_text(confd_value_t* out, int family, const char* text)
{
    Address address{};
    if (text == nullptr || inet_pton(family, text, &address) != 1) {
        return refuse(out);
    }
    return store_hexlist(out, address);
}

// Always fills *address; octets that the hex list does not have are zero.
template <typename Address>
int read_hexlist(const confd_value_t* in, Address* address)
{
    *address = Address{};
    if (in->type != C_BINARY) {
        return kBadInput;
    }
    const std::size_t size = std::min<std::size_t>(CONFD_GET_BINARY_SIZE(in), sizeof(*address));
    if (size > 0) {
        std::memcpy(address, CONFD_GET_BINARY_PTR(in), size);
    }
    return kOk;
}

in_addr network_of(in_addr address, int prefix_length)
{
    const uint32_t mask = prefix_length == 0 ? 0 : ~uint32_t{0} << static_cast<unsigned>(kIpv4Bits - prefix_length);
    address.s_addr &= htonl(mask);
    return address;
}

}  // namespace

extern "C" {

int Ipv4TOhexlist(confd_value_t* out, confd_value_t* in, int prefix_length)
{
    if (in->type != C_IPV4 || prefix_length < 0 || prefix_length > kIpv4Bits) {
        return refuse(out);
    }
    return store_hexlist(out, network_of(CONFD_GET_IPV4(in), prefix_length));
}

int Ipv6TOhexlist(confd_value_t* out, confd_value_t* in)
{
    return in->type == C_IPV6 ? store_hexlist(out, CONFD_GET_IPV6(in)) : refuse(out);
}

int Ipv4strTOhexlist(confd_value_t* out, const char* text)
{
    return hexlist_from_text<in_addr>(out, AF_INET, text);
}

int Ipv6strTOhexlist(confd_value_t* out, const char* text)
{
    return hexlist_from_text<in6_addr>(out, AF_INET6, text);
}

int Ipv4InAddrTOhexlist(confd_value_t* out, in_addr in)
{
    return store_hexlist(out, in);
}

int Ipv4TOhexliststr(confd_value_t* out, confd_value_t* in)
{
    return in->type == C_IPV4 ? store_hexlist_text(out, CONFD_GET_IPV4(in)) : refuse(out);
}

int Ipv6TOhexliststr(confd_value_t* out, confd_value_t* in)
{
    return in->type == C_IPV6 ? store_hexlist_text(out, CONFD_GET_IPV6(in)) : refuse(out);
}

int HexlistTOipv4str(confd_value_t* in, confd_value_t* out)
{
    in_addr address;
    const int result = read_hexlist(in, &address);
    char text[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &address, text, sizeof(text));
    const int stored = store(out, bgp_platform::values::own_text, text);
    return stored == kOk ? result : stored;
}

int HexlistTOipv4InAddr(confd_value_t* in, in_addr* out)
{
    return read_hexlist(in, out);
}

int HexlistTOipv6In6Addr(confd_value_t* in, in6_addr* out)
{
    return read_hexlist(in, out);
}

}  // extern "C"
