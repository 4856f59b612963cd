// Values of a leaf from and to text, and what a message says about a text that is no value.
#include "schema/type.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "schema/quote.h"

namespace bgp_platform::schema {

namespace {

template <typename T>
Interval interval_of()
{
    return {static_cast<int64_t>(std::numeric_limits<T>::min()), static_cast<uint64_t>(std::numeric_limits<T>::max())};
}

// The numbers that fit a number type; lengths of anything else.
Interval widest(confd_vtype vtype)
{
    switch (vtype) {
        case C_INT8:
            return interval_of<int8_t>();
        case C_INT16:
            return interval_of<int16_t>();
        case C_INT32:
            return interval_of<int32_t>();
        case C_INT64:
            return interval_of<int64_t>();
        case C_UINT8:
            return interval_of<uint8_t>();
        case C_UINT16:
            return interval_of<uint16_t>();
        case C_UINT32:
            return interval_of<uint32_t>();
        default:
            return interval_of<uint64_t>();
    }
}

bool inside(const Interval& interval, int64_t number)
{
    return number >= interval.low && number <= static_cast<int64_t>(interval.high);
}

bool inside(const Interval& interval, uint64_t number)
{
    return number >= static_cast<uint64_t>(interval.low) && number <= interval.high;
}

template <typename Number>
bool inside_any(const Type& type, Number number)
{
    if (type.intervals.empty()) {
        return inside(widest(type.vtype), number);
    }
    return std::any_of(type.intervals.begin(), type.intervals.end(),
                       [=](const Interval& interval) { return inside(interval, number); });
}

// Lengths of texts count characters, not bytes.
uint64_t characters(std::string_view text)
{
    return static_cast<uint64_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

bool has_allowed_length(const Type& type, std::string_view text)
{
    return type.intervals.empty() || inside_any(type, characters(text));
}

template <typename Number>
bool parse_number(std::string_view text, Number* number)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *number);
    return error == std::errc() && stop == end;
}

template <typename Number>
void append_number(Number number, std::string* text)
{
    char digits[std::numeric_limits<Number>::digits10 + 3];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    text->append(digits, end);
}

int hex_digit(char digit)
{
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// "0a:00:ff"; the empty text is no octets.
bool parse_octets(std::string_view text, Value* value)
{
    constexpr std::size_t kWidth = 3;  // two digits and the colon before the next
    if (!text.empty() && text.size() % kWidth != kWidth - 1) {
        return false;
    }
    std::string octets((text.size() + 1) / kWidth, '\0');
    const char* digits = text.data();
    for (char& octet : octets) {
        const int high = hex_digit(digits[0]);
        const int low = hex_digit(digits[1]);
        if (high < 0 || low < 0 || (&octet != &octets.back() && digits[2] != ':')) {
            return false;
        }
        octet = static_cast<char>(high << 4 | low);
        digits += kWidth;
    }
    *value = Value::of_octets(octets);
    return true;
}

void append_octets(std::string_view octets, std::string* text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    constexpr std::size_t kWidth = 3;  // two digits and the colon before the next
    if (octets.empty()) {
        return;
    }
    const std::size_t start = text->size();
    text->resize(start + octets.size() * kWidth - 1, ':');
    char* place = text->data() + start;
    for (const char octet : octets) {
        place[0] = kDigits[static_cast<unsigned char>(octet) >> 4];
        place[1] = kDigits[static_cast<unsigned char>(octet) & 0x0F];
        place += kWidth;
    }
}

template <typename Address>
bool parse_address(int family, std::string_view text, Address* address)
{
    char terminated[INET6_ADDRSTRLEN];
    if (text.size() >= sizeof terminated || text.find('\0') != std::string_view::npos) {
        return false;
    }
    terminated[text.copy(terminated, sizeof terminated)] = '\0';
    return inet_pton(family, terminated, address) == 1;
}

bool parse_ipv4(std::string_view text, Value* value)
{
    in_addr address{};
    if (!parse_address(AF_INET, text, &address)) {
        return false;
    }
    *value = Value::of_ipv4(address);
    return true;
}

bool parse_ipv6(std::string_view text, Value* value)
{
    in6_addr address{};
    if (!parse_address(AF_INET6, text, &address)) {
        return false;
    }
    *value = Value::of_ipv6(address);
    return true;
}

// "192.0.2.0/24". Bits behind the prefix are kept as they are given.
bool parse_ipv4_prefix(std::string_view text, Value* value)
{
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) {
        return false;
    }
    const std::string_view bits = text.substr(slash + 1);
    in_addr address{};
    uint8_t length = 0;
    if (!parse_address(AF_INET, text.substr(0, slash), &address) || !parse_number(bits, &length) ||
        length > kIpv4Bits || (bits.size() > 1 && bits.front() == '0')) {
        return false;
    }
    *value = Value::of_ipv4_prefix(address, length);
    return true;
}

template <typename Address>
void append_address(int family, const Address& address, std::string* text)
{
    char printed[INET6_ADDRSTRLEN];
    *text += inet_ntop(family, &address, printed, sizeof printed);
}

// Appends "1 to 5 or 8 to 9".
void append_intervals(const Type& type, std::string* text)
{
    const std::vector<Interval> all{widest(type.vtype)};
    const std::vector<Interval>& intervals = type.intervals.empty() ? all : type.intervals;
    for (const Interval& interval : intervals) {
        *text += &interval == intervals.data() ? "" : " or ";
        if (type.base == BaseType::Int) {
            append_number(interval.low, text);
            *text += " to ";
            append_number(static_cast<int64_t>(interval.high), text);
        } else {
            append_number(static_cast<uint64_t>(interval.low), text);
            *text += " to ";
            append_number(interval.high, text);
        }
    }
}

// A number that the type does not have, which no stored value is, is shown as it is.
void append_enum(const Type& type, int32_t number, std::string* text)
{
    if (const EnumName* const known = type.find_enum(number)) {
        *text += known->name;
    } else {
        append_number(number, text);
    }
}

void append_enum_names(const Type& type, std::string* text)
{
    for (const EnumName& known : type.enums) {
        *text += &known == type.enums.data() ? "" : ", ";
        *text += known.name;
    }
}

// What is wrong with a text that is none of the type's values.
std::string refusal(const Type& type, std::string_view text)
{
    std::string why = in_quotes(text);
    switch (type.base) {
        case BaseType::Int:
        case BaseType::Uint:
            why += " is not a number from ";
            append_intervals(type, &why);
            break;
        case BaseType::Enum:
            why += " is not one of ";
            append_enum_names(type, &why);
            break;
        case BaseType::Bool:
            why += " is not one of true, false";
            break;
        case BaseType::Text:
            why += " is not a text of ";
            append_intervals(type, &why);
            why += " characters";
            break;
        case BaseType::Octets:
            why += " is not octets in hex with colons between them, as in 0a:00:00:01";
            break;
        case BaseType::Ipv4:
            why += " is not an IPv4 address, as in 192.0.2.1";
            break;
        case BaseType::Ipv6:
            why += " is not an IPv6 address, as in 2001:db8::1";
            break;
        case BaseType::Ip:
            why += " is not an IPv4 or IPv6 address, as in 192.0.2.1 or 2001:db8::1";
            break;
        case BaseType::Ipv4Prefix:
            why += " is not an IPv4 prefix, as in 192.0.2.0/24";
            break;
        case BaseType::Empty:
            why += " stands in a leaf that takes no text";
            break;
    }
    return why;
}

bool parse_int(const Type& type, std::string_view text, Value* value)
{
    int64_t number = 0;
    if (!parse_number(text, &number) || !inside_any(type, number)) {
        return false;
    }
    *value = Value::of_int(number);
    return true;
}

bool parse_uint(const Type& type, std::string_view text, Value* value)
{
    uint64_t number = 0;
    if (!parse_number(text, &number) || !inside_any(type, number)) {
        return false;
    }
    *value = Value::of_uint(number);
    return true;
}

bool parse_enum(const Type& type, std::string_view text, Value* value)
{
    const EnumName* const known = type.find_enum(text);
    if (known == nullptr) {
        return false;
    }
    *value = Value::of_enum(known->number);
    return true;
}

bool parse_bool(std::string_view text, Value* value)
{
    if (text != "true" && text != "false") {
        return false;
    }
    *value = Value::of_bool(text == "true");
    return true;
}

bool parse_text(const Type& type, std::string_view text, Value* value)
{
    if (!has_allowed_length(type, text)) {
        return false;
    }
    *value = Value::of_text(text);
    return true;
}

bool parse_empty(std::string_view text, Value* value)
{
    if (!text.empty()) {
        return false;
    }
    *value = Value::present();
    return true;
}

bool parse_any(const Type& type, std::string_view text, Value* value)
{
    switch (type.base) {
        case BaseType::Int:
            return parse_int(type, text, value);
        case BaseType::Uint:
            return parse_uint(type, text, value);
        case BaseType::Enum:
            return parse_enum(type, text, value);
        case BaseType::Bool:
            return parse_bool(text, value);
        case BaseType::Text:
            return parse_text(type, text, value);
        case BaseType::Octets:
            return parse_octets(text, value);
        case BaseType::Ipv4:
            return parse_ipv4(text, value);
        case BaseType::Ipv6:
            return parse_ipv6(text, value);
        case BaseType::Ip:
            return parse_ipv4(text, value) || parse_ipv6(text, value);
        case BaseType::Ipv4Prefix:
            return parse_ipv4_prefix(text, value);
        case BaseType::Empty:
            return parse_empty(text, value);
    }
    return false;
}

}  // namespace

bool Type::parse(std::string_view text, Value* value, std::string* why) const
{
    if (parse_any(*this, text, value)) {
        return true;
    }
    if (why != nullptr) {
        *why = refusal(*this, text);
    }
    return false;
}

bool Type::within(const Value& value) const noexcept
{
    switch (base) {
        case BaseType::Int:
            return inside_any(*this, value.as_int());
        case BaseType::Uint:
            return inside_any(*this, value.as_uint());
        case BaseType::Enum:
            return find_enum(value.as_enum()) != nullptr;
        case BaseType::Text:
            return has_allowed_length(*this, value.bytes());
        default:
            return true;
    }
}

void Type::append_text(const Value& value, std::string* text) const
{
    switch (value.kind()) {
        case Value::Kind::Int:
            append_number(value.as_int(), text);
            break;
        case Value::Kind::Uint:
            append_number(value.as_uint(), text);
            break;
        case Value::Kind::Enum:
            append_enum(*this, value.as_enum(), text);
            break;
        case Value::Kind::Bool:
            *text += value.as_bool() ? "true" : "false";
            break;
        case Value::Kind::Ipv4:
            append_address(AF_INET, value.as_ipv4(), text);
            break;
        case Value::Kind::Ipv6:
            append_address(AF_INET6, value.as_ipv6(), text);
            break;
        case Value::Kind::Ipv4Prefix:
            append_address(AF_INET, value.as_ipv4(), text);
            *text += '/';
            append_number(static_cast<unsigned>(value.prefix_length()), text);
            break;
        case Value::Kind::Text:
        case Value::Kind::LongText:
            *text += value.bytes();
            break;
        case Value::Kind::Octets:
        case Value::Kind::LongOctets:
            append_octets(value.bytes(), text);
            break;
        case Value::Kind::Absent:
        case Value::Kind::Present:
            break;
    }
}

std::string Type::text(const Value& value) const
{
    std::string text;
    append_text(value, &text);
    return text;
}

const EnumName* Type::find_enum(int32_t number) const noexcept
{
    const auto at = std::lower_bound(enums.begin(), enums.end(), number,
                                     [](const EnumName& known, int32_t wanted) { return known.number < wanted; });
    return at != enums.end() && at->number == number ? &*at : nullptr;
}

const EnumName* Type::find_enum(std::string_view wanted) const noexcept
{
    const auto at =
        std::find_if(enums.begin(), enums.end(), [=](const EnumName& known) { return known.name == wanted; });
    return at != enums.end() ? &*at : nullptr;
}

}  // namespace bgp_platform::schema
