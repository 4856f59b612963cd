// Texts of routes: from a route distinguisher or route target as the command line writes it to its octets, and from a
// route's AS_PATH attribute to the AS numbers that are shown.
#include <arpa/inet.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>

#include "bgp_update/bgp_utils.h"
#include "confd/fault.h"
#include "confd/type_check.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";

constexpr uint64_t kRouteTarget = 0x02;  // the subtype of extended communities
constexpr uint32_t kFirstWideAs = 65536;

// The forms of ADMIN: the type of a route distinguisher, and the type octet of an extended community.
enum class Admin : uint64_t { TwoOctetAs = 0, Ipv4 = 1, FourOctetAs = 2 };

constexpr std::size_t kTypeCode = 1;  // position in a path attribute
constexpr uint32_t kAsPath = 2;
constexpr uint32_t kExtendedLength = 0x10;  // of the attribute's flags
constexpr char kInvalidAsPath[] = "invalid_as_path";

uint64_t type_octets(Admin form, bool route_target)
{
    const auto type = static_cast<uint64_t>(form);
    return (route_target ? type << 8U | kRouteTarget : type) << 48U;
}

uint64_t with_wide_admin(Admin form, bool route_target, uint32_t admin, uint32_t number)
{
    return type_octets(form, route_target) | uint64_t{admin} << 16U | (number & 0xFFFFU);
}

uint32_t decimal(const std::string& text)
{
    return static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
}

// The eight octets, the first one highest. Without a value for texts that are neither distinguisher nor target.
std::optional<uint64_t> route_octets(const std::string& text, bool route_target)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) {
        return std::nullopt;
    }
    const std::string admin = text.substr(0, colon);
    const uint32_t number = decimal(text.substr(colon + 1));
    if (text.find('.') != std::string::npos) {
        in_addr address{};
        if (inet_pton(AF_INET, admin.c_str(), &address) != 1) {
            return std::nullopt;
        }
        return with_wide_admin(Admin::Ipv4, route_target, ntohl(address.s_addr), number);
    }
    const uint32_t as = decimal(admin);
    if (as >= kFirstWideAs) {
        return with_wide_admin(Admin::FourOctetAs, route_target, as, number);
    }
    return type_octets(Admin::TwoOctetAs, route_target) | uint64_t{as} << 32U | number;
}

// Octets of a path attribute. Behind their end they are zero.
struct Octets {
    const unsigned char* first;
    std::size_t size;

    uint32_t number(std::size_t position, std::size_t width) const
    {
        uint32_t number = 0;
        for (std::size_t i = position; i < position + width; ++i) {
            number = number << 8U | (i < size ? first[i] : 0U);
        }
        return number;
    }
};

std::string as_numbers(const Octets& attribute, std::size_t width)
{
    const std::size_t start = (attribute.number(0, 1) & kExtendedLength) != 0 ? 6 : 5;
    std::string text;
    for (std::size_t position = start; position < attribute.size; position += width) {
        text += std::to_string(attribute.number(position, width));
        if (position + width != attribute.size) {
            text += ' ';
        }
    }
    return text;
}

}  // namespace

std::string BgpUtils::Rd2str(const std::string& text, bool route_target)
try {
    const uint64_t octets = route_octets(text, route_target).value_or(0);
    std::array<char, sizeof "00:00:00:00:00:00:00:00"> hex{};
    const auto octet = [octets](unsigned int i) { return static_cast<unsigned int>(octets >> (56U - 8U * i) & 0xFFU); };
    std::snprintf(hex.data(), hex.size(), "%02x:%02x:%02x:%02x:%02x:%02x:%02x:%02x", octet(0), octet(1), octet(2),
                  octet(3), octet(4), octet(5), octet(6), octet(7));
    return hex.data();
}
BGP_FAULT_ON_EXCEPTION(__func__)

std::string BgpUtils::Rt2str(const std::string& text)
{
    return Rd2str(text, true);
}

int BgpUtils::GetRoutesAsPath(confd_value_t* in_vl_as_path, int as_width, confd_value_t* out)
try {
    BGP_REQUIRE_TYPE(__LINE__, in_vl_as_path, C_BINARY);
    const Octets attribute{CONFD_GET_BINARY_PTR(in_vl_as_path), CONFD_GET_BINARY_SIZE(in_vl_as_path)};
    std::string text;
    if (attribute.number(kTypeCode, 1) == kAsPath) {
        text = as_numbers(attribute, as_width == 1 ? 2 : 4);
    } else {
        // Does not survive the assignment below: another attribute shows as an empty text, as it always has.
        CONFD_SET_CBUF(out, kInvalidAsPath, sizeof kInvalidAsPath - 1);
    }
    char* const octets = strndup(text.c_str(), text.size());
    if (octets == nullptr) {
        throw std::bad_alloc();
    }
    CONFD_SET_CBUF(out, octets, text.size());
    return 0;
}
BGP_FAULT_ON_EXCEPTION(__func__)
