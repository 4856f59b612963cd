// Values of a leaf from and to the C API's form.
#include "schema/schema.h"
#include "values/owned_values.h"

#include <utility>

namespace bgp_platform::schema {

namespace {

Value int_from_confd(const confd_value_t& confd)
{
    switch (confd.type) {
        case C_INT8:
            return Value::of_int(confd.val.i8);
        case C_INT16:
            return Value::of_int(confd.val.i16);
        case C_INT32:
            return Value::of_int(confd.val.i32);
        default:
            return Value::of_int(confd.val.i64);
    }
}

Value uint_from_confd(const confd_value_t& confd)
{
    switch (confd.type) {
        case C_UINT8:
            return Value::of_uint(confd.val.u8);
        case C_UINT16:
            return Value::of_uint(confd.val.u16);
        case C_UINT32:
            return Value::of_uint(confd.val.u32);
        default:
            return Value::of_uint(confd.val.u64);
    }
}

std::string_view borrowed(const confd_buf_t& buffer)
{
    return {reinterpret_cast<const char*>(buffer.ptr), buffer.size};
}

Value prefix_from_confd(const confd_ipv4_prefix& prefix)
{
    return prefix.len <= kIpv4Bits ? Value::of_ipv4_prefix(prefix.ip, prefix.len) : Value();
}

// The value that the type's base makes of a program's value; absent when it does not take one of that kind.
Value base_from_confd(const Type& type, const confd_value_t& confd)
{
    switch (type.base) {
        case BaseType::Int:
            return confd.type == type.vtype ? int_from_confd(confd) : Value();
        case BaseType::Uint:
            return confd.type == type.vtype ? uint_from_confd(confd) : Value();
        case BaseType::Enum:
            return confd.type == C_ENUM_VALUE ? Value::of_enum(confd.val.enumvalue) : Value();
        case BaseType::Bool:
            return confd.type == C_BOOL ? Value::of_bool(confd.val.boolean != 0) : Value();
        case BaseType::Text:
            if (confd.type == C_STR && confd.val.s != nullptr) {
                return Value::of_text(confd.val.s);
            }
            return confd.type == C_BUF ? Value::of_text(borrowed(confd.val.buf)) : Value();
        case BaseType::Octets:
            return confd.type == C_BINARY ? Value::of_octets(borrowed(confd.val.buf)) : Value();
        case BaseType::Ipv4:
            return confd.type == C_IPV4 ? Value::of_ipv4(confd.val.ip) : Value();
        case BaseType::Ipv6:
            return confd.type == C_IPV6 ? Value::of_ipv6(confd.val.ip6) : Value();
        case BaseType::Ip:
            if (confd.type == C_IPV4) {
                return Value::of_ipv4(confd.val.ip);
            }
            return confd.type == C_IPV6 ? Value::of_ipv6(confd.val.ip6) : Value();
        case BaseType::Ipv4Prefix:
            return confd.type == C_IPV4PREFIX ? prefix_from_confd(confd.val.ipv4prefix) : Value();
        case BaseType::Empty:
            return confd.type == C_XMLTAG ? Value::present() : Value();
    }
    return {};
}

void int_to_confd(confd_vtype vtype, int64_t number, confd_value_t* confd)
{
    switch (vtype) {
        case C_INT8:
            CONFD_SET_INT8(confd, static_cast<int8_t>(number));
            break;
        case C_INT16:
            CONFD_SET_INT16(confd, static_cast<int16_t>(number));
            break;
        case C_INT32:
            CONFD_SET_INT32(confd, static_cast<int32_t>(number));
            break;
        default:
            CONFD_SET_INT64(confd, number);
            break;
    }
}

void uint_to_confd(confd_vtype vtype, uint64_t number, confd_value_t* confd)
{
    switch (vtype) {
        case C_UINT8:
            CONFD_SET_UINT8(confd, static_cast<uint8_t>(number));
            break;
        case C_UINT16:
            CONFD_SET_UINT16(confd, static_cast<uint16_t>(number));
            break;
        case C_UINT32:
            CONFD_SET_UINT32(confd, static_cast<uint32_t>(number));
            break;
        default:
            CONFD_SET_UINT64(confd, number);
            break;
    }
}

}  // namespace

bool Type::from_confd(const confd_value_t& confd, Value* value) const
{
    Value made = base_from_confd(*this, confd);
    if (made.absent() || !within(made)) {
        return false;
    }
    *value = std::move(made);
    return true;
}

void Type::to_confd(const Value& value, confd_value_t* confd) const
{
    switch (value.kind()) {
        case Value::Kind::Absent:
            CONFD_SET_NOEXISTS(confd);
            break;
        case Value::Kind::Present:
            CONFD_SET_XMLTAG(confd, 0, 0);
            break;
        case Value::Kind::Int:
            int_to_confd(vtype, value.as_int(), confd);
            break;
        case Value::Kind::Uint:
            uint_to_confd(vtype, value.as_uint(), confd);
            break;
        case Value::Kind::Enum:
            CONFD_SET_ENUM_VALUE(confd, value.as_enum());
            break;
        case Value::Kind::Bool:
            CONFD_SET_BOOL(confd, value.as_bool() ? 1 : 0);
            break;
        case Value::Kind::Ipv4:
            CONFD_SET_IPV4(confd, value.as_ipv4());
            break;
        case Value::Kind::Ipv6:
            CONFD_SET_IPV6(confd, value.as_ipv6());
            break;
        case Value::Kind::Ipv4Prefix: {
            const confd_ipv4_prefix prefix{value.as_ipv4(), value.prefix_length()};
            CONFD_SET_IPV4PREFIX(confd, prefix);
            break;
        }
        case Value::Kind::Text:
        case Value::Kind::LongText:
            values::own_text(confd, value.bytes());
            break;
        case Value::Kind::Octets:
        case Value::Kind::LongOctets:
            values::own_octets(confd, value.bytes());
            break;
    }
}

bool from_confd(const Node& leaf, const confd_value_t& confd, Value* value)
{
    const xml_tag& name = confd.val.xmltag;
    const bool named =
        confd.type != C_XMLTAG || (name.tag == leaf.tag && (name.ns == 0 || name.ns == leaf.module->hash));
    return named && leaf.type->from_confd(confd, value);
}

void to_confd(const Node& leaf, const Value& value, confd_value_t* confd)
{
    leaf.type->to_confd(value, confd);
    if (value.kind() == Value::Kind::Present) {
        CONFD_SET_XMLTAG(confd, leaf.tag, leaf.module->hash);
    }
}

}  // namespace bgp_platform::schema
