// maapi_set_values: leaves and whole entries given as an array of tagged values.
//
// An entry is written as one thing: its leaves are checked first, and only when all of them fit is the entry created
// (when it is not there) and are they set. Entries are written in the order of the array; those before a failing one
// stay. An array whose begins and ends do not match writes nothing.
#include <utility>

#include "capi/tagged.h"
#include "capi/write.h"
#include "confd_maapi.h"

namespace bgp_platform::capi {

namespace {

// One container or entry that is being written: what its leaves get, and whether it has been written yet.
struct Pending {
    const store::Path& path;
    std::vector<store::NodeValue> values;
    bool written = false;
};

class TaggedWriter {
public:
    TaggedWriter(Call& call, const confd_tag_value_t* values, int n) : call_(call), at_(values, n) {}

    int write(const store::Path& path)
    {
        const int nested = check_nesting();
        if (nested != CONFD_OK) {
            return nested;
        }
        const bool whole_list = path.node->kind == schema::NodeKind::List && !path.names_entry();
        return whole_list ? write_entry(path) : write_row(path);
    }

private:
    const schema::Schema& schema() const { return *call_.device().schema; }
    std::string tag() const { return tag_text(schema(), at_->tag); }

    // Every begin must have its end: a malformed array writes nothing.
    int check_nesting()
    {
        std::vector<xml_tag> open;
        for (auto at = at_; !at.at_end(); at.next()) {
            if (at->v.type == C_XMLBEGIN || at->v.type == C_XMLBEGINDEL) {
                open.push_back(at->tag);
            } else if (at->v.type == C_XMLEND && open.empty()) {
                return call_.fail(CONFD_ERR_PROTOUSAGE, "an end without its begin: " + tag_text(schema(), at->tag));
            } else if (at->v.type == C_XMLEND) {
                if (at->tag.tag != open.back().tag) {
                    break;
                }
                open.pop_back();
            }
        }
        return open.empty() ? CONFD_OK
                            : call_.fail(CONFD_ERR_PROTOUSAGE, tag_text(schema(), open.back()) + " is not closed");
    }

    // An entry of the list at `path`: its keys, then its content.
    int write_entry(store::Path path)
    {
        const int result = add_keys(&path);
        return result == CONFD_OK ? write_row(path) : result;
    }

    // Makes the path of a list that of the entry whose keys are at hand.
    int add_keys(store::Path* path)
    {
        store::Selector selector{path->node, {}};
        if (const PathError error = take_keys(*path->node, &at_, &selector.keys)) {
            return call_.fail(error.code, error.detail);
        }
        path->entries.push_back(std::move(selector));
        call_.go_to(*path);
        return CONFD_OK;
    }

    // The content of the container or entry at `path`.
    int write_row(const store::Path& path)
    {
        Pending row{path, {}};
        const int result = write_inside(*path.node, &row);
        const bool complete = row.written && row.values.empty();
        return result == CONFD_OK && !complete ? flush(&row) : result;
    }

    // Elements up to the end of the array or an end tag, which is left for the caller. Leaves are gathered; an entry
    // below needs the row around it, so that is written first.
    int write_inside(const schema::Node& around, Pending* row)
    {
        if (around.kind == schema::NodeKind::Presence) {
            row->values.push_back({&around, schema::Value::present()});
        }
        while (!at_.at_end() && at_->v.type != C_XMLEND) {
            const schema::Node* const node = at_.node_below(around);
            if (node == nullptr) {
                return call_.fail(CONFD_ERR_BADPATH, tag() + " does not belong below " + around.name);
            }
            const int result = write_element(*node, row);
            if (result != CONFD_OK) {
                return result;
            }
            at_.next();
        }
        return CONFD_OK;
    }

    // The element at hand; stands at its last value afterwards.
    int write_element(const schema::Node& node, Pending* row)
    {
        const confd_vtype type = at_->v.type;
        switch (node.kind) {
            case schema::NodeKind::Leaf:
                return gather(node, row);
            case schema::NodeKind::LeafList:
                if (type == C_LIST) {
                    return gather_entries(node, row);
                }
                break;
            case schema::NodeKind::Presence:
                if (type == C_NOEXISTS) {
                    row->values.push_back({&node, schema::Value()});
                    return CONFD_OK;
                }
                [[fallthrough]];
            case schema::NodeKind::Container:
                if (type == C_XMLBEGIN) {
                    at_.next();
                    return write_inside(node, row);
                }
                break;
            case schema::NodeKind::List:
                if (type == C_XMLBEGIN) {
                    return write_below(node, row);
                }
                if (type == C_XMLBEGINDEL) {
                    return delete_below(node, row);
                }
                break;
        }
        return call_.fail(CONFD_ERR_PROTOUSAGE, "a value that does not fit " + tag());
    }

    int gather(const schema::Node& leaf, Pending* row)
    {
        schema::Value value;
        const bool deletes = at_->v.type == C_NOEXISTS && !leaf.key;
        if (!deletes && !schema::from_confd(leaf, at_->v, &value)) {
            return call_.fail(CONFD_ERR_BADTYPE, leaf.name + " is a " + leaf.type->name);
        }
        if (leaf.key) {
            return value == row->path.entries.back().keys[leaf.slot] ? CONFD_OK : call_.fail(CONFD_ERR_NOT_WRITABLE);
        }
        call_.meet_host_bits(value);
        row->values.push_back({&leaf, std::move(value)});
        return CONFD_OK;
    }

    int gather_entries(const schema::Node& leaf_list, Pending* row)
    {
        store::NodeValue given{&leaf_list, {}};
        const int result = read_entries(call_, leaf_list, at_->v, &given.entries);
        if (result == CONFD_OK) {
            row->values.push_back(std::move(given));
        }
        return result;
    }

    int write_below(const schema::Node& list, Pending* row)
    {
        const int result = flush(row);
        if (result != CONFD_OK) {
            return result;
        }
        at_.next();
        return write_entry(path_below(list, *row));
    }

    int delete_below(const schema::Node& list, Pending* row)
    {
        int result = row->values.empty() ? CONFD_OK : flush(row);
        store::Path entry = path_below(list, *row);
        if (result == CONFD_OK) {
            at_.next();
            result = add_keys(&entry);
        }
        if (result != CONFD_OK) {
            return result;
        }
        if (at_->v.type != C_XMLEND) {
            return call_.fail(CONFD_ERR_PROTOUSAGE, "more than the keys of what is deleted: " + tag());
        }
        row->written = true;
        const store::Result removed = call_.transaction().remove(entry);
        return removed == store::Result::NotFound ? call_.fail(CONFD_ERR_NOEXISTS, keypath_text(entry))
                                                  : call_.fail(removed);
    }

    static store::Path path_below(const schema::Node& list, const Pending& row)
    {
        store::Path path = row.path;
        path.node = &list;
        return path;
    }

    // Creates the entry where it is not there, and gives it what was gathered.
    int flush(Pending* row)
    {
        row->written = true;
        store::Configuration& transaction = call_.transaction();
        if (row->path.names_entry() && transaction.find_row(row->path) == nullptr) {
            const store::Result created = transaction.create(row->path);
            if (created != store::Result::Ok) {
                call_.meet_missing_entry(created, row->path);
                return call_.fail(created);
            }
        }
        const store::Result result = transaction.set_all(row->path, std::exchange(row->values, {}));
        call_.meet_missing_entry(result, row->path);
        return call_.fail(result);
    }

    Call& call_;
    TagCursor<const confd_tag_value_t> at_;
};

// For the record: each value by the name of its tag.
std::string values_text(const schema::Schema& schema, const confd_tag_value_t* values, int n)
{
    std::string text;
    for (int i = 0; i < n; ++i) {
        const char* const known = schema.name_of(values[i].tag.tag);
        const std::string name = known == nullptr ? std::to_string(values[i].tag.tag) : known;
        char value[256];
        plain_value_text(value, sizeof value, values[i].v);
        text.append(i == 0 ? "" : " ").append(name).append("=").append(schema::is_secret(name) ? kMasked : value);
    }
    return text;
}

int set_values(Call& call, const store::Path& path, const confd_tag_value_t* values, int n)
{
    if (call.recorded()) {
        call.arguments(std::to_string(n) + " values");
        call.values(values_text(*call.device().schema, values, n));
    }
    const bool rows = path.node != nullptr && (path.node->is_container() || path.node->kind == schema::NodeKind::List);
    if (!rows) {
        return call.fail(CONFD_ERR_BADPATH, "neither a container nor a list");
    }
    const uint64_t openings = call.transaction().openings();
    const int result = TaggedWriter(call, values, n).write(path);
    if (result != CONFD_OK && call.transaction().openings() != openings) {
        call.meet(Reading::RowsBeforeTheFailingOneStay);
    }
    return result;
}

}  // namespace

}  // namespace bgp_platform::capi

using namespace bgp_platform;
using namespace bgp_platform::capi;

int maapi_set_values(int sock, int thandle, const confd_tag_value_t* values, int n, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(
        maapi_set_values, (Handle{sock, thandle}), fmt,
        [values, n](Call& call, const store::Path& path) { return set_values(call, path, values, n); });
}
