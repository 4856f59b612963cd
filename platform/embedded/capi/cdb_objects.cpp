// cdb_get_objects: many entries of a list, each as a run of values.
#include <algorithm>

#include "capi/read.h"
#include "confd_cdb.h"

using namespace bgp_platform;
using namespace bgp_platform::capi;

namespace {

// Fills up to `room` values with the entry's nodes in schema order; returns how many the entry has.
int read_entry(const store::Row& row, confd_value_t* values, int room)
{
    int count = 0;
    for (const schema::Node* node : row.record().sequence) {
        const int position = count++;
        if (position >= room) {
            continue;
        }
        const bool there = node->kind != schema::NodeKind::Presence || row.value(node->slot);
        if (node->is_container() && there) {
            CONFD_SET_XMLTAG(&values[position], node->tag, node->module->hash);
        } else {
            read_slot(row, *node, &values[position]);
        }
    }
    return count;
}

}  // namespace

int cdb_get_objects(int sock, confd_value_t* values, int n, int ix, int nobj, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(cdb_get_objects, Handle{sock}, fmt, [=](Call& call, const store::Path& path) {
        call.arguments(std::to_string(n) + " values of " + std::to_string(nobj) + " entries from " +
                       std::to_string(ix));
        const int entries = path.node != nullptr && path.node->kind == schema::NodeKind::List
                                ? read_count(call, path)
                                : call.fail(CONFD_ERR_BADPATH, "not a list");
        if (entries < 0) {
            return entries;
        }
        if (n < 0 || ix < 0 || nobj < 0 || ix > entries || nobj > entries - ix) {
            return call.fail(CONFD_ERR_NOEXISTS, "the list has " + std::to_string(entries) + " entries");
        }
        const store::List* const list = call.view().find_list(path);
        int most = 0;
        for (int i = 0; i < nobj; ++i) {
            const store::Row& row = *list->at(static_cast<std::size_t>(ix) + static_cast<std::size_t>(i));
            most = std::max(most, read_entry(row, values + static_cast<std::ptrdiff_t>(i) * n, n));
        }
        return most;
    });
}
