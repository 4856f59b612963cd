// Hex lists: the octets under which the tables hold addresses, and their text form. The input is taken as a text and as
// octets, whatever it is.
//
// Text: it is refused, or means the octets that its pairs of digits say. Octets: as text they are read back the same;
// as an address they are cut or filled up with zeros, and the address is the same octets again. Nothing is left over.
#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "bgp_update/bgp_utils.h"
#include "nz_address.h"
#include "require.h"
#include "schema/schema.h"
#include "values/owned_values.h"

namespace {

using bgp_fuzz::require;
using bgp_platform::schema::Node;
using bgp_platform::schema::Schema;
using bgp_platform::schema::Type;
using bgp_platform::schema::Value;

const Type& hex_list()
{
    static const std::shared_ptr<const Schema> schema = Schema::builtin();
    static const Node* const entities = schema->top_node("DC-BGP-MIB", nullptr)->child("bgpRmEntTable");
    return *entities->child("bgpRmEntEntry")->child("bgpRmEntLocalIdentifier")->type;
}

// The octets of a C_BINARY or the text of a C_BUF, which is released.
std::string taken(confd_value_t* value, confd_vtype type)
{
    require(value->type == type, "a conversion gives its type", std::to_string(value->type));
    const confd_buf_t& owned = value->val.buf;
    std::string bytes(reinterpret_cast<const char*>(owned.ptr), owned.size);
    confd_free_value(value);
    return bytes;
}

bool is_pairs(const std::string& text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 3 == 2 ? text[i] != ':' : std::isxdigit(static_cast<unsigned char>(text[i])) == 0) {
            return false;
        }
    }
    return text.empty() || text.size() % 3 == 2;
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

void check_text(const std::string& text)
{
    Value value;
    std::string why;
    if (!hex_list().parse(text, &value, &why)) {
        require(!is_pairs(text), "pairs of digits are taken", text);
        require(!why.empty(), "a refusal has a reason", text);
        return;
    }
    require(is_pairs(text), "only pairs of digits are taken", text);
    require(hex_list().text(value) == lower(text), "the octets are those of the text", text);
}

// A text of octets means them, and so does the value that a program gets and gives back.
void check_octets(const std::string& octets)
{
    const Value stored = Value::of_octets(octets);
    const std::string text = hex_list().text(stored);
    Value again;
    require(hex_list().parse(text, &again) && again.bytes() == octets, "a text is read back the same", text);

    confd_value_t handed{};
    hex_list().to_confd(stored, &handed);
    require(hex_list().from_confd(handed, &again) && again.bytes() == octets, "a value is taken back the same", text);
    require(taken(&handed, C_BINARY) == octets, "a program gets the octets", text);
}

template <typename Address>
Address address_of(const std::string& octets)
{
    Address address{};
    std::memcpy(&address, octets.data(), std::min(octets.size(), sizeof address));
    return address;
}

template <typename Address>
std::string octets_of(const Address& address)
{
    return {reinterpret_cast<const char*>(&address), sizeof address};
}

// An address text, taken where the socket library takes it.
template <typename Address>
void check_address_text(const std::string& text, int family, int (*convert)(confd_value_t*, const char*))
{
    Address address{};
    const bool is_address = inet_pton(family, text.c_str(), &address) == 1;
    confd_value_t out{};
    require((convert(&out, text.c_str()) == 0) == is_address, "an address is taken, another text refused", text);
    if (is_address) {
        require(taken(&out, C_BINARY) == octets_of(address), "the octets are the address's", text);
    } else {
        require(out.type == C_NOEXISTS, "a refused text gives no value", text);
    }
}

void check_ipv4(const std::string& octets)
{
    confd_value_t in{};
    CONFD_SET_BINARY(&in, const_cast<char*>(octets.data()), octets.size());
    const auto expected = address_of<in_addr>(octets);
    in_addr address{};
    require(HexlistTOipv4InAddr(&in, &address) == 0 && address.s_addr == expected.s_addr, "the first four are read",
            hex_list().text(Value::of_octets(octets)));

    confd_value_t out{};
    require(HexlistTOipv4str(&in, &out) == 0, "any octets have a dotted text", "");
    const std::string dotted = taken(&out, C_BUF);
    require(Ipv4strTOhexlist(&out, dotted.c_str()) == 0, "the dotted text is an address", dotted);
    require(taken(&out, C_BINARY) == octets_of(expected), "the dotted text means the octets", dotted);
}

void check_ipv4_value(const std::string& octets, int prefix_length)
{
    const auto address = address_of<in_addr>(octets);
    confd_value_t in{};
    CONFD_SET_IPV4(&in, address);
    confd_value_t out{};
    int type = 0;
    require(BgpUtils::IpToHexlist(&in, &out, &type) == 0 && type == 1, "an IPv4 address has type 1", "");
    require(taken(&out, C_BINARY) == octets_of(address), "a hex list is the address's octets", "");
    require(Ipv4TOhexliststr(&out, &in) == 0, "an address has a text form", "");
    require(taken(&out, C_BUF) == hex_list().text(Value::of_octets(octets_of(address))), "both text forms agree", "");

    const bool in_range = prefix_length >= 0 && prefix_length <= 32;
    require((Ipv4TOhexlist(&out, &in, prefix_length) == 0) == in_range, "a prefix has 0 to 32 bits",
            std::to_string(prefix_length));
    if (!in_range) {
        return;
    }
    const uint64_t kept = ~uint64_t{0} << static_cast<unsigned>(32 - prefix_length);
    const auto masked = address_of<in_addr>(taken(&out, C_BINARY));
    require(ntohl(masked.s_addr) == (ntohl(address.s_addr) & kept), "the prefix's bits are kept",
            std::to_string(prefix_length));
}

void check_ipv6(const std::string& octets)
{
    confd_value_t in{};
    CONFD_SET_BINARY(&in, const_cast<char*>(octets.data()), octets.size());
    const auto expected = address_of<in6_addr>(octets);
    in6_addr address{};
    require(HexlistTOipv6In6Addr(&in, &address) == 0 && octets_of(address) == octets_of(expected),
            "the first sixteen are read", hex_list().text(Value::of_octets(octets)));

    CONFD_SET_IPV6(&in, expected);
    confd_value_t out{};
    int type = 0;
    require(BgpUtils::IpToHexlist(&in, &out, &type) == 0 && type == 2, "an IPv6 address has type 2", "");
    require(taken(&out, C_BINARY) == octets_of(expected), "a hex list is the address's octets", "");
    require(Ipv6TOhexliststr(&out, &in) == 0, "an address has a text form", "");
    require(taken(&out, C_BUF) == hex_list().text(Value::of_octets(octets_of(expected))), "both text forms agree", "");
}

// What is no address stands for 0.0.0.0, and no octets for no hex list.
void check_no_address(std::string text)
{
    confd_value_t in{};
    CONFD_SET_BUF(&in, text.data(), text.size());
    confd_value_t out{};
    int type = 0;
    require(BgpUtils::IpToHexlist(&in, &out, &type) == 0 && type == 1, "a text stands for 0.0.0.0", text);
    require(taken(&out, C_BINARY) == std::string(4, '\0'), "a text stands for 0.0.0.0", text);
    in_addr address{};
    require(HexlistTOipv4InAddr(&in, &address) < 0 && address.s_addr == 0, "a text is no hex list", text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    const std::string input(reinterpret_cast<const char*>(bytes), size);
    const std::size_t before = bgp_platform::values::live_owned_values();
    check_text(input);
    check_octets(input);
    check_address_text<in_addr>(input, AF_INET, Ipv4strTOhexlist);
    check_address_text<in6_addr>(input, AF_INET6, Ipv6strTOhexlist);
    check_ipv4(input);
    check_ipv4_value(input, size == 0 ? 32 : static_cast<signed char>(bytes[0]));
    check_ipv6(input);
    check_no_address(input);
    require(bgp_platform::values::live_owned_values() == before, "every value was given back", input);
    return 0;
}
