// The functions of the C API that go to a device, by name: what the recorder shows, the fault plan matches and the
// counts are kept by.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bgp_platform::capi {

// X(name, effect) with effect Read, Write or Session.
#define BGP_PLATFORM_CAPI_FUNCTIONS(X) \
    X(cdb_connect, Session)            \
    X(cdb_start_session, Session)      \
    X(cdb_end_session, Session)        \
    X(cdb_close, Session)              \
    X(cdb_set_namespace, Session)      \
    X(cdb_get, Read)                   \
    X(cdb_get_enum_value, Read)        \
    X(cdb_get_u_int16, Read)           \
    X(cdb_get_list, Read)              \
    X(cdb_exists, Read)                \
    X(cdb_num_instances, Read)         \
    X(cdb_get_objects, Read)           \
    X(cdb_get_values, Read)            \
    X(maapi_set_namespace, Session)    \
    X(maapi_exists, Read)              \
    X(maapi_num_instances, Read)       \
    X(maapi_get_elem, Read)            \
    X(maapi_get_u_int32_elem, Read)    \
    X(maapi_get_u_int16_elem, Read)    \
    X(maapi_get_enum_value_elem, Read) \
    X(maapi_init_cursor, Read)         \
    X(maapi_get_next, Read)            \
    X(maapi_find_next, Read)           \
    X(maapi_create, Write)             \
    X(maapi_delete, Write)             \
    X(maapi_set_elem, Write)           \
    X(maapi_set_elem2, Write)          \
    X(maapi_set_values, Write)         \
    X(maapi_move, Write)               \
    X(confd_data_set_timeout, Session)

enum class Effect : uint8_t { Read, Write, Session };

enum class Function : uint8_t {
#define BGP_PLATFORM_ENUMERATOR(name, effect) name,
    BGP_PLATFORM_CAPI_FUNCTIONS(BGP_PLATFORM_ENUMERATOR)
#undef BGP_PLATFORM_ENUMERATOR
};

// NOLINTNEXTLINE(bugprone-macro-parentheses): a term of a sum
#define BGP_PLATFORM_ONE(name, effect) +1
constexpr std::size_t kFunctions = 0 BGP_PLATFORM_CAPI_FUNCTIONS(BGP_PLATFORM_ONE);
#undef BGP_PLATFORM_ONE

const char* name_of(Function function) noexcept;
Effect effect_of(Function function) noexcept;

}  // namespace bgp_platform::capi
