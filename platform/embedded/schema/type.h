// The type of a leaf: which values it takes, and their three forms - stored (Value), text (XML, keypaths, messages) and
// ConfD's (confd_value_t).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "confd_lib.h"
#include "schema/value.h"

namespace bgp_platform::schema {

enum class BaseType : uint8_t { Int, Uint, Enum, Bool, Text, Octets, Ipv4, Ipv6, Ip, Ipv4Prefix, Empty };

struct EnumName {
    std::string name;
    int32_t number;
};

struct Interval {  // of numbers, or of text lengths, both ends included; signed for BaseType::Int
    int64_t low;
    uint64_t high;  // read as signed for BaseType::Int
};

class Type {
public:
    BaseType base = BaseType::Text;
    confd_vtype vtype = C_BUF;        // what a read hands out; for Ip, C_IPV4 or C_IPV6 by value
    std::string name;                 // as the YANG module says it ("uint32", "status"), for messages
    std::vector<Interval> intervals;  // allowed numbers or lengths; empty: all that the base type holds
    std::vector<EnumName> enums;      // sorted by number

    // Reads a text. False: not a value of this type, and *why (when given) says what is expected.
    bool parse(std::string_view text, Value* value, std::string* why = nullptr) const;

    // Appends the text form: an enumeration's name, octets with colons, numbers in decimal.
    void append_text(const Value& value, std::string* text) const;
    std::string text(const Value& value) const;

    // Takes a program's value. False where ConfD answers BADTYPE: another type, a number outside the intervals, an
    // enumeration number that the type does not have. C_STR is taken where C_BUF is.
    bool from_confd(const confd_value_t& confd, Value* value) const;

    // Fills *confd with a value the program will own (values/owned_values.h); for an absent value C_NOEXISTS, for one of
    // type empty a C_XMLTAG without a name.
    void to_confd(const Value& value, confd_value_t* confd) const;

    const EnumName* find_enum(int32_t number) const noexcept;
    const EnumName* find_enum(std::string_view name) const noexcept;

private:
    bool within(const Value& value) const noexcept;  // the intervals, the enumeration's numbers
};

}  // namespace bgp_platform::schema
