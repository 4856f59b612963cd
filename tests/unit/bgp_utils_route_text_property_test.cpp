// What holds for every text of a route: route distinguishers and targets against an encoder written from RFC 4364 and
// RFC 4360, AS paths against the numbers that they were made from.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "bgp_update/bgp_utils.h"

namespace {

using Octets = std::vector<unsigned int>;

// RFC 4364, section 4.2: a two-octet type, then the administrator and the assigned number. RFC 4360, section 4: a type
// octet and a sub-type octet, then the same.
struct RouteText {
    std::string text;
    unsigned int type;
    Octets value;
};

void append(Octets* octets, uint64_t number, unsigned int width)
{
    for (unsigned int i = width; i > 0; --i) {
        octets->push_back(static_cast<unsigned int>(number >> (8 * (i - 1))) % 256);
    }
}

std::string hex_list(const Octets& octets)
{
    std::ostringstream text;
    for (std::size_t i = 0; i < octets.size(); ++i) {
        text << (i == 0 ? "" : ":") << std::hex << std::setw(2) << std::setfill('0') << octets[i];
    }
    return text.str();
}

RouteText two_octet_as(uint16_t as, uint32_t number)
{
    RouteText route{std::to_string(as) + ":" + std::to_string(number), 0, {}};
    append(&route.value, as, 2);
    append(&route.value, number, 4);
    return route;
}

RouteText four_octet_as(uint32_t as, uint16_t number)
{
    RouteText route{std::to_string(as) + ":" + std::to_string(number), 2, {}};
    append(&route.value, as, 4);
    append(&route.value, number, 2);
    return route;
}

RouteText ipv4_address(const std::array<uint8_t, 4>& address, uint16_t number)
{
    RouteText route{{}, 1, {}};
    for (const uint8_t octet : address) {
        route.text += (route.text.empty() ? "" : ".") + std::to_string(octet);
        route.value.push_back(octet);
    }
    route.text += ":" + std::to_string(number);
    append(&route.value, number, 2);
    return route;
}

std::string distinguisher(const RouteText& route)
{
    Octets octets = {0, route.type};
    octets.insert(octets.end(), route.value.begin(), route.value.end());
    return hex_list(octets);
}

std::string target(const RouteText& route)
{
    Octets octets = {route.type, 2};
    octets.insert(octets.end(), route.value.begin(), route.value.end());
    return hex_list(octets);
}

void assert_encoded(const RouteText& route)
{
    RC_ASSERT(BgpUtils::Rd2str(route.text, false) == distinguisher(route));
    RC_ASSERT(BgpUtils::Rd2str(route.text, true) == target(route));
    RC_ASSERT(BgpUtils::Rt2str(route.text) == target(route));
}

// Numbers of the whole range: rapidcheck's own begin small and would seldom need more than a few bits.
template <typename Number>
Number any_number(Number from = 0)
{
    const auto end = uint64_t{std::numeric_limits<Number>::max()} + 1;
    return static_cast<Number>(*rc::gen::inRange<uint64_t>(from, end));
}

RC_GTEST_PROP(RouteTextProperty, TwoOctetAs_IsEncodedAsTheRfcsSay, ())
{
    assert_encoded(two_octet_as(any_number<uint16_t>(), any_number<uint32_t>()));
}

RC_GTEST_PROP(RouteTextProperty, FourOctetAs_IsEncodedAsTheRfcsSay, ())
{
    assert_encoded(four_octet_as(any_number<uint32_t>(65536), any_number<uint16_t>()));
}

RC_GTEST_PROP(RouteTextProperty, Ipv4Address_IsEncodedAsTheRfcsSay, ())
{
    std::array<uint8_t, 4> address{};
    for (uint8_t& octet : address) {
        octet = any_number<uint8_t>();
    }
    assert_encoded(ipv4_address(address, any_number<uint16_t>()));
}

std::vector<unsigned char> attribute(const std::vector<uint32_t>& numbers, unsigned int width, bool extended)
{
    const auto length = static_cast<unsigned int>(2 + numbers.size() * width);
    Octets octets = {extended ? 0x50U : 0x40U, 2};
    append(&octets, length, extended ? 2 : 1);
    octets.push_back(2);
    append(&octets, numbers.size(), 1);
    for (const uint32_t number : numbers) {
        append(&octets, number, width);
    }
    return {octets.begin(), octets.end()};
}

std::vector<uint32_t> numbers_shown(std::vector<unsigned char> octets, int as_width)
{
    confd_value_t value;
    CONFD_SET_BINARY(&value, octets.data(), octets.size());
    confd_value_t out{};
    BgpUtils::GetRoutesAsPath(&value, as_width, &out);
    std::istringstream text(std::string(CONFD_GET_CBUFPTR(&out), CONFD_GET_BUFSIZE(&out)));
    confd_free_value(&out);
    std::vector<uint32_t> numbers;
    for (std::string number; std::getline(text, number, ' ');) {
        numbers.push_back(static_cast<uint32_t>(std::stoul(number)));
    }
    return numbers;
}

RC_GTEST_PROP(AsPathProperty, FourOctetNumbers_ComeBackTheSame, (bool extended))
{
    const auto numbers =
        *rc::gen::container<std::vector<uint32_t>>(rc::gen::exec([] { return any_number<uint32_t>(); }));
    RC_ASSERT(numbers_shown(attribute(numbers, 4, extended), 2) == numbers);
}

RC_GTEST_PROP(AsPathProperty, TwoOctetNumbers_ComeBackTheSame, (bool extended))
{
    const auto numbers =
        *rc::gen::container<std::vector<uint32_t>>(rc::gen::exec([] { return uint32_t{any_number<uint16_t>()}; }));
    RC_ASSERT(numbers_shown(attribute(numbers, 2, extended), 1) == numbers);
}

}  // namespace
