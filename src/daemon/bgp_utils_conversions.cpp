// Small conversions between the command line's values and the routing stack's: addresses, passwords, durations; the
// search in a keypath, and the test of a regular expression.
#include <regex.h>
#include <string.h>

#include <array>
#include <cstdio>

#include "bgp_update/bgp_utils.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/type_check.h"
#include "nz_address.h"
#include "nzos_passwd.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";

constexpr int kWholeAddress = 32;  // a prefix length

constexpr std::size_t kDurationSize = 20;
constexpr std::size_t kRangeTextSize = 64;
constexpr unsigned int kNotFound = 0xFFFFFFFF;

constexpr uint32_t kMinute = 60;
constexpr uint32_t kHour = 60 * kMinute;
constexpr uint32_t kDay = 24 * kHour;
constexpr uint32_t kWeek = 7 * kDay;
constexpr uint32_t kMonth = 30 * kDay;
constexpr uint32_t kYear = 12 * kMonth;

uint32_t seconds_of(const confd_value& value)
{
    switch (value.type) {
        case C_INT32:
            return static_cast<uint32_t>(CONFD_GET_INT32(&value));
        case C_UINT32:
            return CONFD_GET_UINT32(&value);
        default:
            return 0;
    }
}

std::array<char, kDurationSize> duration_text(uint32_t total)
{
    const int years = static_cast<int>(total / kYear);
    const int months = static_cast<int>(total % kYear / kMonth);
    const int weeks = static_cast<int>(total % kYear % kMonth / kWeek);
    const int days = static_cast<int>(total % kYear % kMonth % kWeek / kDay);
    const int hours = static_cast<int>(total % kDay / kHour);
    const int minutes = static_cast<int>(total % kHour / kMinute);
    const int seconds = static_cast<int>(total % kMinute);
    std::array<char, kDurationSize> text{};
    if (years > 0) {
        std::snprintf(text.data(), text.size(), "%02dy%02dm%02dw", years, months, weeks);
    } else if (months > 0) {
        std::snprintf(text.data(), text.size(), "%02dm%02dw%02dd", months, weeks, days);
    } else if (weeks > 0) {
        std::snprintf(text.data(), text.size(), "%02dw%02dd%02dh", weeks, days, hours);
    } else if (days > 0) {
        std::snprintf(text.data(), text.size(), "%02dd%02dh%02dm", days, hours, minutes);
    } else {
        std::snprintf(text.data(), text.size(), "%02d:%02d:%02d", hours, minutes, seconds);
    }
    return text;
}

}  // namespace

bool BgpUtils::is_IPv6(confd_value_t* val)
{
    BGP_REQUIRE_TYPE(__LINE__, val, C_ENUM_VALUE);
    return CONFD_GET_ENUM_VALUE(val) == mib::kIpv6;
}

int BgpUtils::IpToHexlist(confd_value* in, confd_value* out, int* addr_type)
{
    *addr_type = mib::kIpv4;
    if (in != nullptr && in->type == C_IPV4) {
        return Ipv4TOhexlist(out, in, kWholeAddress);
    }
    if (in != nullptr && in->type == C_IPV6) {
        *addr_type = mib::kIpv6;
        return Ipv6TOhexlist(out, in);
    }
    return Ipv4strTOhexlist(out, "0.0.0.0");
}

bool BgpUtils::regexp_valid(char* pattern)
{
    regex_t compiled;
    if (regcomp(&compiled, pattern, REG_EXTENDED | REG_NOSUB) != 0) {
        return false;
    }
    regfree(&compiled);
    return true;
}

void BgpUtils::pwdTOhexliststr(confd_value_t* out, confd_value_t* val_in)
{
    BGP_REQUIRE_TYPE(__LINE__, val_in, C_BUF);
    char* const decrypted = nzos_passwd_decrypt(CONFD_GET_CBUFPTR(val_in), 0);
    void* const plain = decrypted != nullptr ? decrypted : static_cast<void*>(CONFD_GET_BUFPTR(val_in));
    confd_value_t octets;
    CONFD_SET_BINARY(&octets, plain, strlen(static_cast<const char*>(plain)));
    confd_value_dup_to(&octets, out);
    explicit_bzero(plain, CONFD_GET_BINARY_SIZE(&octets));
    // Without a decrypted text this releases the octets of val_in, deliberately: callers count on being rid of them.
    confd_free_dup_to_value(&octets);
}

confd_value* BgpUtils::SecondsToDuration(confd_value* out, confd_value* in)
{
    const std::array<char, kDurationSize> text = duration_text(seconds_of(*in));
    confd_value_t borrowed;
    CONFD_SET_CBUF(&borrowed, text.data(), strlen(text.data()));
    return confd_value_dup_to(&borrowed, out);
}

unsigned int BgpUtils::Krfind(confd_hkeypath_t* keypath, unsigned int tag, int lower, int upper)
{
    if (lower < 0) {
        confd::fault("Krfind", kSource, __LINE__, "lower index should be gt > -1");
    }
    if (upper != -1 && (lower >= upper || upper > keypath->len)) {
        char text[kRangeTextSize];
        std::snprintf(text, sizeof text, "invalid lower and upper range, len %d", keypath->len);
        confd::fault("Krfind", kSource, __LINE__, text);
    }
    const int end = upper == -1 ? keypath->len : upper;
    for (int i = lower; i < end; ++i) {
        const confd_value_t& first = keypath->v[i][0];
        if (first.type == C_XMLTAG && CONFD_GET_XMLTAG(&first) == tag) {
            return static_cast<unsigned int>(i);
        }
    }
    return kNotFound;
}
