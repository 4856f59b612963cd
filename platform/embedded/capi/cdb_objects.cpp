// cdb_get_objects: many entries of a list, each as a run of values.
#include <algorithm>

#include "capi/read.h"
#include "confd_cdb.h"

using namespace bgp_platform;
using namespace bgp_platform::capi;

namespace {

// Fills an entry's room with its nodes in schema order, as far as it reaches, and counts them all.
class EntryReader {
public:
    EntryReader(Call& call, const store::Row& row, confd_value_t* values, int room, FilledValues* filled)
        : call_(call), row_(row), values_(values), room_(room), filled_(*filled)
    {
    }

    int read()
    {
        read_nodes(row_.record().owner->children);
        return count_;
    }

private:
    void read_nodes(const std::vector<const schema::Node*>& nodes)
    {
        for (const schema::Node* const node : nodes) {
            read_node(*node);
        }
    }

    void read_node(const schema::Node& node)
    {
        const bool there = node.kind != schema::NodeKind::Presence || row_.value(node.slot);
        if (count_ < room_) {
            confd_value_t& value = filled_.add(&values_[count_]);
            if (node.is_container() && there) {
                CONFD_SET_XMLTAG(&value, node.tag, node.module->hash);
            } else {
                read_slot(call_, row_, node, &value);
            }
        }
        ++count_;
        if (node.is_container() && there) {
            read_nodes(node.children);
        }
    }

    Call& call_;
    const store::Row& row_;
    confd_value_t* values_;
    int room_;
    FilledValues& filled_;
    int count_ = 0;
};

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
        FilledValues filled;
        int most = 0;
        for (int i = 0; i < nobj; ++i) {
            const store::Row& row = *list->at(static_cast<std::size_t>(ix) + static_cast<std::size_t>(i));
            most =
                std::max(most, EntryReader(call, row, values + static_cast<std::ptrdiff_t>(i) * n, n, &filled).read());
        }
        filled.keep();
        return most;
    });
}
