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
    if (!inside(widest(type.vtype), number)) {
        return false;
    }
    return type.intervals.empty() || std::any_of(type.intervals.begin(), type.intervals.end(),
                                                 [=](const Interval& interval) { return inside(interval, number); });
}

// Lengths of texts count characters, not bytes.
uint64_t characters(std::string_view text)
{
    return static_cast<uint64_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
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
    std::string octets;
    octets.reserve((text.size() + 1) / 3);
    for (std::size_t at = 0; at < text.size(); at += 3) {
        if (text.size() - at < 2 || text.size() - at == 3 || (text.size() - at > 2 && text[at + 2] != ':')) {
            return false;
        }
        const int high = hex_digit(text[at]);
        const int low = hex_digit(text[at + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        octets += static_cast<char>(high << 4 | low);
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

bool parse_int(std::string_view text, Value* value)
{
    int64_t number = 0;
    if (!parse_number(text, &number)) {
        return false;
    }
    *value = Value::of_int(number);
    return true;
}

bool parse_uint(std::string_view text, Value* value)
{
    uint64_t number = 0;
    if (!parse_number(text, &number)) {
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

bool parse_empty(std::string_view text, Value* value)
{
    *value = Value::present();
    return text.empty();
}

// Reads the text by the base type alone; the intervals are left to check.
bool parse_base(const Type& type, std::string_view text, Value* value)
{
    switch (type.base) {
        case BaseType::Int:
            return parse_int(text, value);
        case BaseType::Uint:
            return parse_uint(text, value);
        case BaseType::Enum:
            return parse_enum(type, text, value);
        case BaseType::Bool:
            return parse_bool(text, value);
        case BaseType::Text:
            *value = Value::of_text(text);
            return true;
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
    if (Value read; parse_base(*this, text, &read) && within(read)) {
        *value = std::move(read);
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
            return intervals.empty() || inside_any(*this, characters(value.bytes()));
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
    const auto at = std::lower_bound(
        enums_by_name.begin(), enums_by_name.end(), wanted,
        [this](uint16_t index, std::string_view sought) { return std::string_view(enums[index].name) < sought; });
    return at != enums_by_name.end() && enums[*at].name == wanted ? &enums[*at] : nullptr;
}

}  // namespace bgp_platform::schema
