// MAAPI reads of the open transaction.
#include "capi/read.h"
#include "confd_maapi.h"

using namespace bgp_platform;
using namespace bgp_platform::capi;

int maapi_exists(int sock, int thandle, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_exists, (Handle{sock, thandle}), fmt, read_exists);
}

int maapi_num_instances(int sock, int thandle, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_num_instances, (Handle{sock, thandle}), fmt, read_count);
}

int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_get_elem, (Handle{sock, thandle}), fmt,
                           [v](Call& call, const store::Path& path) { return read_value(call, path, v); });
}

int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_get_u_int32_elem, (Handle{sock, thandle}), fmt,
                           typed_read<C_UINT32>(rval, [](const confd_value_t& value) { return value.val.u32; }));
}

int maapi_get_u_int16_elem(int sock, int thandle, uint16_t* rval, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_get_u_int16_elem, (Handle{sock, thandle}), fmt,
                           typed_read<C_UINT16>(rval, [](const confd_value_t& value) { return value.val.u16; }));
}

int maapi_get_enum_value_elem(int sock, int thandle, int32_t* rval, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(
        maapi_get_enum_value_elem, (Handle{sock, thandle}), fmt,
        typed_read<C_ENUM_VALUE>(rval, [](const confd_value_t& value) { return value.val.enumvalue; }));
}
