// Values, keypaths and tags as text.
#include <arpa/inet.h>

#include <string>

#include "keypath/keypath.h"
#include "registry.h"
#include "schema/name_hash.h"

using namespace bgp_platform;

namespace {

std::string hex_digits(const confd_buf_t& octets)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * octets.size);
    for (unsigned int i = 0; i < octets.size; ++i) {
        text += kDigits[octets.ptr[i] >> 4];
        text += kDigits[octets.ptr[i] & 0xF];
    }
    return text;
}

std::string address_text(int family, const void* address)
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(family, address, text, sizeof text);
    return text;
}

std::string text_of(const confd_value_t& value);

std::string list_text(const confd_list& list)
{
    std::string text = "[";
    for (unsigned int i = 0; i < list.size; ++i) {
        text += i == 0 ? "" : " ";
        text += text_of(list.ptr[i]);
    }
    return text + "]";
}

std::string text_of(const confd_value_t& value)
{
    switch (value.type) {
        case C_STR:
            return value.val.s;
        case C_BUF:
            return {reinterpret_cast<const char*>(value.val.buf.ptr), value.val.buf.size};
        case C_BINARY:
        case C_HEXSTR:
            return hex_digits(value.val.buf);
        case C_INT8:
            return std::to_string(value.val.i8);
        case C_INT16:
            return std::to_string(value.val.i16);
        case C_INT32:
            return std::to_string(value.val.i32);
        case C_INT64:
            return std::to_string(value.val.i64);
        case C_UINT8:
            return std::to_string(value.val.u8);
        case C_UINT16:
            return std::to_string(value.val.u16);
        case C_UINT32:
            return std::to_string(value.val.u32);
        case C_UINT64:
            return std::to_string(value.val.u64);
        case C_DOUBLE:
            return std::to_string(value.val.d);
        case C_BOOL:
            return value.val.boolean != 0 ? "true" : "false";
        case C_ENUM_VALUE:
            return "enum<" + std::to_string(value.val.enumvalue) + ">";
        case C_IPV4:
            return address_text(AF_INET, &value.val.ip);
        case C_IPV6:
            return address_text(AF_INET6, &value.val.ip6);
        case C_IPV4PREFIX:
            return address_text(AF_INET, &value.val.ipv4prefix.ip) + "/" + std::to_string(value.val.ipv4prefix.len);
        case C_IPV6PREFIX:
            return address_text(AF_INET6, &value.val.ipv6prefix.ip6) + "/" + std::to_string(value.val.ipv6prefix.len);
        case C_LIST:
            return list_text(value.val.list);
        case C_XMLTAG:
        case C_XMLBEGIN:
        case C_XMLEND:
            return "<" + std::to_string(value.val.xmltag.tag) + ">";
        case C_NOEXISTS:
            return "no value";
        default:
            return "value of type " + std::to_string(static_cast<int>(value.type));
    }
}

// Cut to the buffer as snprintf does; the length of the whole.
int print(char* buffer, int size, const std::string& text)
{
    if (size > 0) {
        buffer[text.copy(buffer, static_cast<std::size_t>(size) - 1)] = '\0';
    }
    return static_cast<int>(text.size());
}

}  // namespace

int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v)
{
    return print(buf, bufsiz, text_of(*v));
}

int confd_format_keypath(char* buf, int bufsiz, const char* fmt, ...)
{
    DeviceState* const device = Registry::instance().current();
    va_list arguments;
    va_start(arguments, fmt);
    const std::string text = capi::format_template(fmt, arguments, device == nullptr ? nullptr : &device->keypaths);
    va_end(arguments);
    return print(buf, bufsiz, text);
}

uint32_t confd_str2hash(const char* str)
{
    return schema::name_hash(str);
}

char* confd_hash2str(uint32_t hash)
{
    const DeviceState* const device = Registry::instance().current();
    return device == nullptr ? nullptr : const_cast<char*>(device->schema->name_of(hash));
}
