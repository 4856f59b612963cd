// cdb_get_values: leaves picked by an array of tags.
#include "capi/read.h"
#include "capi/tagged.h"
#include "confd_cdb.h"

namespace bgp_platform::capi {

std::string tag_text(const schema::Schema& schema, const xml_tag& tag)
{
    const char* const name = schema.name_of(tag.tag);
    return "tag " + std::to_string(tag.tag) + (name == nullptr ? std::string() : " (" + std::string(name) + ")");
}

namespace {

class TaggedReader {
public:
    TaggedReader(Call& call, confd_tag_value_t* values, int n) : call_(call), at_(values, n) {}

    int read(const store::Row& row, const schema::Node& below)
    {
        const int result = read_level(row, below);
        if (result == CONFD_OK && !at_.at_end()) {
            return call_.fail(CONFD_ERR_PROTOUSAGE, "an end without its begin: " + tag());
        }
        return result;
    }

private:
    std::string tag() const { return tag_text(*call_.device().schema, at_->tag); }

    // Elements up to the end of the array or an end tag, which is left for the caller.
    int read_level(const store::Row& row, const schema::Node& below)
    {
        while (!at_.at_end() && at_->v.type != C_XMLEND) {
            const schema::Node* const node = at_.node_below(below);
            if (node == nullptr) {
                return call_.fail(CONFD_ERR_BADPATH, tag() + " does not belong below " + below.name);
            }
            const int result = read_element(row, *node);
            if (result != CONFD_OK) {
                return result;
            }
        }
        return CONFD_OK;
    }

    int read_element(const store::Row& row, const schema::Node& node)
    {
        const bool leaf = node.kind == schema::NodeKind::Leaf || node.kind == schema::NodeKind::LeafList;
        switch (at_->v.type) {
            case C_NOEXISTS:
                if (!leaf) {
                    break;
                }
                read_slot(call_, row, node, &at_->v);
                at_.next();
                return CONFD_OK;
            case C_XMLBEGIN:
                if (node.is_container()) {
                    return read_container(row, node);
                }
                if (node.kind == schema::NodeKind::List) {
                    return read_entry_of_keys(row, node);
                }
                break;
            case C_CDBBEGIN:
                if (node.kind == schema::NodeKind::List) {
                    return read_nth_entry(row, node);
                }
                break;
            default:
                break;
        }
        return call_.fail(CONFD_ERR_PROTOUSAGE, "a request that does not fit " + tag());
    }

    int read_nth_entry(const store::Row& row, const schema::Node& list)
    {
        const int position = at_->v.val.cdbbegin.instance;
        const store::Row* const entry =
            position < 0 ? nullptr : row.list(list.slot).at(static_cast<std::size_t>(position));
        if (entry == nullptr) {
            return call_.fail(CONFD_ERR_NOEXISTS, list.name + "[" + std::to_string(position) + "]");
        }
        at_.next();
        return read_inside(*entry, list);
    }

    int read_entry_of_keys(const store::Row& row, const schema::Node& list)
    {
        at_.next();
        std::vector<schema::Value> keys;
        if (const PathError error = take_keys(list, &at_, &keys)) {
            return call_.fail(error.code, error.detail);
        }
        const store::Row* const entry = row.list(list.slot).find(keys.data(), keys.size());
        if (entry == nullptr) {
            return call_.fail(CONFD_ERR_NOEXISTS, list.name + key_tuple_text(list, keys));
        }
        return read_inside(*entry, list);
    }

    int read_container(const store::Row& row, const schema::Node& node)
    {
        if (node.kind == schema::NodeKind::Presence && row.value(node.slot).absent()) {
            return call_.fail(CONFD_ERR_NOEXISTS, node.name);
        }
        at_.next();
        return read_inside(row, node);
    }

    int read_inside(const store::Row& row, const schema::Node& node)
    {
        const int result = read_level(row, node);
        if (result != CONFD_OK) {
            return result;
        }
        if (!at_.closes(node)) {
            return call_.fail(CONFD_ERR_PROTOUSAGE, node.name + " is not closed");
        }
        at_.next();
        return CONFD_OK;
    }

    Call& call_;
    TagCursor<confd_tag_value_t> at_;
};

int get_values(Call& call, const store::Path& path, confd_tag_value_t* values, int n)
{
    call.arguments(std::to_string(n) + " values");
    const bool entry = path.names_entry() && path.node->kind == schema::NodeKind::List;
    if (path.node == nullptr || !(entry || path.node->is_container())) {
        return call.fail(CONFD_ERR_BADPATH, "neither a container nor a list entry");
    }
    const store::Row* const row = call.view().find_row(path);
    if (row == nullptr || !call.view().exists(path)) {
        return call.fail(CONFD_ERR_NOEXISTS);
    }
    return TaggedReader(call, values, n).read(*row, *path.node);
}

}  // namespace

}  // namespace bgp_platform::capi

using namespace bgp_platform;
using namespace bgp_platform::capi;

int cdb_get_values(int sock, confd_tag_value_t* values, int n, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(cdb_get_values, Handle{sock}, fmt, [values, n](Call& call, const store::Path& path) {
        return get_values(call, path, values, n);
    });
}
