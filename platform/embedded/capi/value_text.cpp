// Values, keypaths and tags as text.
#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

#include "capi/errors.h"
#include "keypath/keypath.h"
#include "registry.h"
#include "schema/name_hash.h"

using namespace bgp_platform;

namespace {

// A text cut to its buffer as snprintf cuts it; needs no memory.
class Printer {
public:
    Printer(char* buffer, int size) : buffer_(buffer), room_(size > 0 ? static_cast<std::size_t>(size) : 0) { end(); }

    Printer& operator<<(std::string_view text)
    {
        if (length_ < room_) {
            text.copy(buffer_ + length_, room_ - 1 - length_);
        }
        length_ += text.size();
        end();
        return *this;
    }
    template <typename Number>
    Printer& digits(Number number, int base = 10)
    {
        char text[24];
        const char* const behind = std::to_chars(text, text + sizeof text, number, base).ptr;
        return *this << std::string_view(text, static_cast<std::size_t>(behind - text));
    }

    // The length of the whole.
    int length() const { return static_cast<int>(std::min<std::size_t>(length_, INT_MAX)); }

private:
    void end()
    {
        if (room_ > 0) {
            buffer_[std::min(length_, room_ - 1)] = '\0';
        }
    }

    char* buffer_;
    std::size_t room_;
    std::size_t length_ = 0;
};

const char* name_of(uint32_t tag)
{
    const DeviceState* const device = Registry::instance().current();
    return device == nullptr ? nullptr : device->schema->name_of(tag);
}

void print_octet(unsigned char octet, Printer* out)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    const char pair[] = {kDigits[octet >> 4], kDigits[octet & 0xF]};
    *out << std::string_view(pair, sizeof pair);
}

void print_hex(const confd_buf_t& octets, Printer* out)
{
    for (unsigned int i = 0; i < octets.size; ++i) {
        print_octet(octets.ptr[i], out);
    }
}

// The octet of the lowest bits stands first in memory, and last in the number.
void print_bits(const confd_buf_t& octets, Printer* out)
{
    *out << "bits<";
    for (unsigned int i = octets.size; i > 0; --i) {
        print_octet(octets.ptr[i - 1], out);
    }
    *out << ">";
}

void print_double(double number, Printer* out)
{
    char text[std::numeric_limits<double>::max_exponent10 + 16];
    *out << std::string_view(text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%f", number)));
}

Printer& print_address(int family, const void* address, Printer* out)
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(family, address, text, sizeof text);
    return *out << text;
}

void print_tag(const xml_tag& tag, Printer* out)
{
    if (const char* const name = name_of(tag.tag)) {
        *out << name;
    } else {
        (*out << "tag<").digits(tag.tag) << ">";
    }
}

void print_value(const confd_value_t& value, Printer* out);

void print_list(const confd_list& list, Printer* out)
{
    *out << "[";
    for (unsigned int i = 0; i < list.size; ++i) {
        *out << (i == 0 ? "" : " ");
        print_value(list.ptr[i], out);
    }
    *out << "]";
}

void print_value(const confd_value_t& value, Printer* out)
{
    switch (value.type) {
        case C_STR:
            *out << (value.val.s == nullptr ? "" : value.val.s);
            break;
        case C_BUF:
            *out << std::string_view(reinterpret_cast<const char*>(value.val.buf.ptr), value.val.buf.size);
            break;
        case C_BINARY:
        case C_HEXSTR:
            print_hex(value.val.buf, out);
            break;
        case C_INT8:
            out->digits(value.val.i8);
            break;
        case C_INT16:
            out->digits(value.val.i16);
            break;
        case C_INT32:
            out->digits(value.val.i32);
            break;
        case C_INT64:
            out->digits(value.val.i64);
            break;
        case C_UINT8:
            out->digits(value.val.u8);
            break;
        case C_UINT16:
            out->digits(value.val.u16);
            break;
        case C_UINT32:
            out->digits(value.val.u32);
            break;
        case C_UINT64:
            out->digits(value.val.u64);
            break;
        case C_DOUBLE:
            print_double(value.val.d, out);
            break;
        case C_BOOL:
            *out << (value.val.boolean != 0 ? "true" : "false");
            break;
        case C_ENUM_VALUE:
            (*out << "enum<").digits(value.val.enumvalue) << ">";
            break;
        case C_BIT32:
            (*out << "bits<").digits(value.val.b32, 16) << ">";
            break;
        case C_BIT64:
            (*out << "bits<").digits(value.val.b64, 16) << ">";
            break;
        case C_BITBIG:
            print_bits(value.val.buf, out);
            break;
        case C_IPV4:
            print_address(AF_INET, &value.val.ip, out);
            break;
        case C_IPV6:
            print_address(AF_INET6, &value.val.ip6, out);
            break;
        case C_IPV4PREFIX:
            (print_address(AF_INET, &value.val.ipv4prefix.ip, out) << "/").digits(value.val.ipv4prefix.len);
            break;
        case C_IPV6PREFIX:
            (print_address(AF_INET6, &value.val.ipv6prefix.ip6, out) << "/").digits(value.val.ipv6prefix.len);
            break;
        case C_LIST:
            print_list(value.val.list, out);
            break;
        case C_XMLTAG:
        case C_XMLBEGIN:
        case C_XMLBEGINDEL:
        case C_XMLEND:
            print_tag(value.val.xmltag, out);
            break;
        case C_NOEXISTS:
            *out << "no value";
            break;
        default:
            (*out << "value of type ").digits(static_cast<int>(value.type));
            break;
    }
}

}  // namespace

int bgp_platform::capi::plain_value_text(char* buffer, int size, const confd_value_t& value)
{
    Printer out(buffer, size);
    print_value(value, &out);
    return out.length();
}

int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v)
{
    DeviceState* const device = Registry::instance().current();
    if (device != nullptr && capi::shows_letters(*v)) {
        device->readings.meet(capi::Reading::OctetsAreInLowerCase, [] { return std::string("confd_pp_value"); });
    }
    return capi::plain_value_text(buf, bufsiz, *v);
}

int confd_format_keypath(char* buf, int bufsiz, const char* fmt, ...)
{
    Printer out(buf, bufsiz);
    va_list arguments;
    va_start(arguments, fmt);
    const auto format = [&] {
        DeviceState* const device = Registry::instance().current();
        const std::string text = capi::format_template(fmt, arguments, device == nullptr ? nullptr : &device->keypaths);
        if (device != nullptr) {
            device->readings.meet_all(device->keypaths.met(), [&text]() -> const std::string& { return text; });
        }
        out << text;
        return out.length();
    };
    const int length = capi::unless_memory_ends(
        format, [] { return capi::fail_call("confd_format_keypath", CONFD_ERR_MALLOC, {}, {}); });
    va_end(arguments);
    return length;
}

uint32_t confd_str2hash(const char* str)
{
    const uint32_t hash = schema::name_hash(str);
    const char* const known = name_of(hash);
    return known != nullptr && std::strcmp(known, str) == 0 ? hash : 0;
}

char* confd_hash2str(uint32_t hash)
{
    return const_cast<char*>(name_of(hash));
}
