// MAAPI writes of entries and leaves.
#include "capi/write.h"
#include "confd_maapi.h"

using namespace bgp_platform;
using namespace bgp_platform::capi;

int bgp_platform::capi::read_entries(Call& call, const schema::Node& leaf_list, const confd_value_t& given,
                                     store::List* entries)
{
    if (given.type != C_LIST) {
        return call.fail(CONFD_ERR_BADTYPE, leaf_list.name + " is a leaf-list");
    }
    for (unsigned int i = 0; i < given.val.list.size; ++i) {
        store::RowRef entry(*leaf_list.entry);
        schema::Value& value = entry.edit().value(0);
        if (!schema::from_confd(leaf_list, given.val.list.ptr[i], &value)) {
            return call.fail(CONFD_ERR_BADTYPE, leaf_list.name + " has entries of " + leaf_list.type->name);
        }
        if (!entries->insert(std::move(entry))) {
            return call.fail(CONFD_ERR_ALREADY_EXISTS, leaf_list.name + " is given a value twice");
        }
    }
    return CONFD_OK;
}

namespace {

int set_leaf(Call& call, const store::Path& path, schema::Value value)
{
    call.meet_host_bits(value);
    const store::Result result = call.transaction().set(path, std::move(value));
    call.meet_missing_entry(result, path);
    return call.fail(result);
}

bool is_leaf(const store::Path& path)
{
    return path.node != nullptr && path.node->kind == schema::NodeKind::Leaf;
}

bool is_leaf_list(const store::Path& path)
{
    return path.node != nullptr && path.node->kind == schema::NodeKind::LeafList && !path.names_entry();
}

int set_leaf_list(Call& call, const store::Path& path, const confd_value_t& given)
{
    store::NodeValue entries{path.node, {}};
    const int result = read_entries(call, *path.node, given, &entries.entries);
    if (result != CONFD_OK) {
        return result;
    }
    const store::Result set = call.transaction().set_all(path, {std::move(entries)});
    call.meet_missing_entry(set, path);
    return call.fail(set);
}

int set_elem(Call& call, const store::Path& path, const confd_value_t& given)
{
    call.argument(path.node, given);
    if (is_leaf_list(path)) {
        return set_leaf_list(call, path, given);
    }
    if (!is_leaf(path)) {
        return call.fail(CONFD_ERR_BADPATH, "not a leaf");
    }
    schema::Value value;
    if (!schema::from_confd(*path.node, given, &value)) {
        return call.fail(CONFD_ERR_BADTYPE, "the leaf is a " + path.node->type->name);
    }
    return set_leaf(call, path, std::move(value));
}

int set_text(Call& call, const store::Path& path, const char* text)
{
    confd_value_t as_text;
    CONFD_SET_STR(&as_text, text);
    call.argument(path.node, as_text);
    if (!is_leaf(path)) {
        return call.fail(CONFD_ERR_BADPATH, "not a leaf");
    }
    if (text == nullptr) {
        return call.fail(CONFD_ERR_BADTYPE, "no text");
    }
    schema::Value value;
    std::string why;
    if (!parse_value(*path.node, text, &value, &why)) {
        return call.fail(CONFD_ERR_BADTYPE, why);
    }
    return set_leaf(call, path, std::move(value));
}

// Whether a node is deleted as a whole: a list, a container without presence, a leaf-list or an entry of it.
bool is_whole(const store::Path& path)
{
    const schema::NodeKind kind = path.node->kind;
    return kind == schema::NodeKind::Container || kind == schema::NodeKind::LeafList ||
           (kind == schema::NodeKind::List && !path.names_entry());
}

int remove(Call& call, const store::Path& path)
{
    const store::Result result = call.transaction().remove(path);
    if (result == store::Result::Ok && is_whole(path)) {
        call.meet(Reading::WholeListOrContainerIsDeleted);
    }
    return call.fail(result);
}

int move_entry(Call& call, const store::Path& path, const confd_value_t* tokey, int n)
{
    if (!path.names_entry() || path.node->kind != schema::NodeKind::List) {
        return call.fail(CONFD_ERR_NOTMOVABLE, "not a list entry");
    }
    std::vector<schema::Value> keys;
    if (const PathError error = read_keys(*path.node, tokey, n, &keys)) {
        return call.fail(error.code, error.detail);
    }
    if (keys.size() != path.node->entry->keys) {
        return call.fail(CONFD_ERR_BADPATH, "not a whole key");
    }
    if (call.recorded()) {
        store::Path to = path;
        to.entries.back() = {path.node, keys};
        call.arguments("to " + keypath_text(to));
    }
    const store::Result result = call.transaction().move(path, keys);
    if (result == store::Result::Ok && keys == path.entries.back().keys) {
        call.meet(Reading::MoveOntoOwnKeysSucceeds);
    }
    return call.fail(result);
}

}  // namespace

int maapi_create(int sock, int thandle, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_create, (Handle{sock, thandle}), fmt, [](Call& call, const store::Path& path) {
        return call.fail(call.transaction().create(path));
    });
}

int maapi_delete(int sock, int thandle, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_delete, (Handle{sock, thandle}), fmt,
                           [](Call& call, const store::Path& path) { return remove(call, path); });
}

int maapi_set_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_set_elem, (Handle{sock, thandle}), fmt,
                           [v](Call& call, const store::Path& path) { return set_elem(call, path, *v); });
}

int maapi_set_elem2(int sock, int thandle, const char* strval, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_set_elem2, (Handle{sock, thandle}), fmt,
                           [strval](Call& call, const store::Path& path) { return set_text(call, path, strval); });
}

int maapi_move(int sock, int thandle, confd_value_t* tokey, int n, const char* fmt, ...)
{
    BGP_PLATFORM_PATH_CALL(maapi_move, (Handle{sock, thandle}), fmt, [tokey, n](Call& call, const store::Path& path) {
        return move_entry(call, path, tokey, n);
    });
}
