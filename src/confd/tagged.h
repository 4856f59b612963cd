// Tagged values for maapi_set_values(), so that a row reads as a table: in each line a tag, its type and its value.
//
//     const confd_tag_value_t row[] = {
//         confd::tagged::uint32(tag::rtmEntityFteIndex, 7),
//         confd::tagged::enum_value(tag::rtmEntityAddressFamily, 1),
//     };
//
// Texts and octets are borrowed: they must live as long as the row.
#pragma once

#include <cstdint>

#include "confd_lib.h"

namespace confd::tagged {

inline confd_tag_value_t uint32(uint32_t tag, uint32_t number)
{
    confd_tag_value_t value{};
    CONFD_SET_TAG_UINT32(&value, tag, number);
    return value;
}

inline confd_tag_value_t enum_value(uint32_t tag, int32_t number)
{
    confd_tag_value_t value{};
    CONFD_SET_TAG_ENUM_VALUE(&value, tag, number);
    return value;
}

inline confd_tag_value_t str(uint32_t tag, char* text)
{
    confd_tag_value_t value{};
    CONFD_SET_TAG_STR(&value, tag, text);
    return value;
}

// A value of any type as it stands.
inline confd_tag_value_t value_of(uint32_t tag, const confd_value_t& borrowed)
{
    confd_tag_value_t value{};
    CONFD_SET_TAG_VALUE(&value, tag, &borrowed);
    return value;
}

}  // namespace confd::tagged
