// maapi_set_values: leaves and whole entries given as an array of tagged values.
//
// An entry is written as one thing: its leaves are checked first, and only when all of them fit is the entry created
// (when it is not there) and are they set. Entries are written in the order of the array; those before a failing one
// stay.
#include <utility>

#include "capi/tagged.h"
#include "confd_maapi.h"

namespace bgp_platform::capi {

namespace {

class TaggedWriter {
public:
    TaggedWriter(Call& call, const confd_tag_value_t* values, int n) : call_(call), at_(values, n) {}

    int write(const store::Path& path)
    {
        const bool whole_list = path.node->kind == schema::NodeKind::List && !path.names_entry();
        const int result = whole_list ? write_entry(path) : write_row(path);
        if (result == CONFD_OK && !at_.at_end()) {
            return call_.fail(CONFD_ERR_PROTOUSAGE, "an end without its begin: " + tag());
        }
        return result;
    }

private:
    std::string tag() const { return tag_text(*call_.device().schema, at_->tag); }

    // An entry of the list at `path`: its keys, then its content.
    int write_entry(store::Path path)
    {
        const schema::Node& list = *path.node;
        store::Selector selector{&list, {}};
        for (std::size_t i = 0; i < list.entry->keys; ++i, at_.next()) {
            const schema::Node& key = *list.entry->values[i];
            const schema::Node* const given = at_.at_end() ? nullptr : at_.node_below(list);
            if (given == nullptr || given != &key) {
                return call_.fail(CONFD_ERR_BADTYPE, "the key " + key.name + " of " + list.name + " is missing");
            }
            selector.keys.emplace_back();
            if (!key.type->from_confd(at_->v, &selector.keys.back())) {
                return bad_type(key);
            }
        }
        path.entries.push_back(std::move(selector));
        return write_row(path);
    }

    // The content of the container or entry at `path`.
    int write_row(const store::Path& path)
    {
        std::vector<store::NodeValue> writes;
        bool written = false;
        const int result = write_level(path, *path.node, &writes, &written);
        return result == CONFD_OK && !written ? flush(path, &writes) : result;
    }

    // Elements up to the end of the array or an end tag, which is left for the caller. Leaves are gathered; an entry
    // below needs the row around it, so that is written first.
    int write_level(const store::Path& row, const schema::Node& below, std::vector<store::NodeValue>* writes,
                    bool* written)
    {
        while (!at_.at_end() && at_->v.type != C_XMLEND) {
            const schema::Node* const node = at_.node_below(below);
            if (node == nullptr) {
                return call_.fail(CONFD_ERR_BADPATH, tag() + " does not belong below " + below.name);
            }
            const int result = node->kind == schema::NodeKind::Leaf ? gather(*node, writes)
                               : at_->v.type != C_XMLBEGIN
                                   ? call_.fail(CONFD_ERR_PROTOUSAGE, "a value that does not fit " + tag())
                               : node->is_container() ? write_container(row, *node, writes, written)
                                                      : write_below(row, *node, writes, written);
            if (result != CONFD_OK) {
                return result;
            }
        }
        return *written && !writes->empty() ? flush(row, writes) : CONFD_OK;
    }

    int gather(const schema::Node& leaf, std::vector<store::NodeValue>* writes)
    {
        schema::Value value;
        const bool deletes = at_->v.type == C_NOEXISTS && !leaf.key;
        if (!deletes && !leaf.type->from_confd(at_->v, &value)) {
            return bad_type(leaf);
        }
        writes->push_back({&leaf, std::move(value)});
        at_.next();
        return CONFD_OK;
    }

    int write_container(const store::Path& row, const schema::Node& node, std::vector<store::NodeValue>* writes,
                        bool* written)
    {
        if (node.kind == schema::NodeKind::Presence) {
            writes->push_back({&node, schema::Value::present()});
        }
        at_.next();
        const int result = write_level(row, node, writes, written);
        return result == CONFD_OK ? close(node) : result;
    }

    int write_below(const store::Path& row, const schema::Node& list, std::vector<store::NodeValue>* writes,
                    bool* written)
    {
        int result = flush(row, writes);
        *written = true;
        if (result != CONFD_OK) {
            return result;
        }
        at_.next();
        store::Path entry = row;
        entry.node = &list;
        result = write_entry(std::move(entry));
        return result == CONFD_OK ? close(list) : result;
    }

    int close(const schema::Node& node)
    {
        if (!at_.closes(node)) {
            return call_.fail(CONFD_ERR_PROTOUSAGE, node.name + " is not closed");
        }
        at_.next();
        return CONFD_OK;
    }

    // Creates the entry where it is not there, and sets the gathered leaves.
    int flush(const store::Path& path, std::vector<store::NodeValue>* writes)
    {
        store::Configuration& transaction = call_.transaction();
        if (path.names_entry() && transaction.find_row(path) == nullptr) {
            const store::Result created = transaction.create(path);
            if (created != store::Result::Ok) {
                return call_.fail(created);
            }
        }
        return call_.fail(transaction.set_all(path, std::exchange(*writes, {})));
    }

    int bad_type(const schema::Node& leaf)
    {
        return call_.fail(CONFD_ERR_BADTYPE, leaf.name + " is a " + leaf.type->name);
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
        confd_pp_value(value, sizeof value, &values[i].v);
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
    return TaggedWriter(call, values, n).write(path);
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
