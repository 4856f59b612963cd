// CDB reads of single leaves, leaf-lists and lists.
#include "capi/read.h"
#include "confd_cdb.h"
#include "values/owned_values.h"

using namespace bgp_platform;
using namespace bgp_platform::capi;

int cdb_get(int sock, confd_value_t* v, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(cdb_get, Handle{sock}, fmt,
                           [v](Call& call, const store::Path& path) { return read_value(call, path, v); });
}

int cdb_get_enum_value(int sock, int32_t* rval, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(
        cdb_get_enum_value, Handle{sock}, fmt,
        typed_read<C_ENUM_VALUE>(rval, [](const confd_value_t& value) { return value.val.enumvalue; }));
}

int cdb_get_u_int16(int sock, uint16_t* rval, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(cdb_get_u_int16, Handle{sock}, fmt,
                           typed_read<C_UINT16>(rval, [](const confd_value_t& value) { return value.val.u16; }));
}

int cdb_get_list(int sock, confd_value_t** values, int* n, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(cdb_get_list, Handle{sock}, fmt, [values, n](Call& call, const store::Path& path) {
        if (path.node == nullptr || path.node->kind != schema::NodeKind::LeafList) {
            return call.fail(CONFD_ERR_BADPATH, "not a leaf-list");
        }
        const int count = read_count(call, path);
        if (count < 0) {
            return count;
        }
        const store::List* const list = call.view().find_list(path);
        if (list == nullptr || count == 0) {
            return fail_no_entries(call, list);
        }
        confd_value_t read;
        read_leaf_list(*path.node, *list, &read);
        *values = CONFD_GET_LIST(&read);
        *n = count;
        bgp_platform::values::forget(*values);  // the caller gives the array back with free()
        return CONFD_OK;
    });
}

int cdb_exists(int sock, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(cdb_exists, Handle{sock}, fmt, read_exists);
}

int cdb_num_instances(int sock, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(cdb_num_instances, Handle{sock}, fmt, read_count);
}
