#include "capi/read.h"

#include <climits>

#include "values/owned_values.h"

namespace bgp_platform::capi {

namespace {

bool is_value(const store::Path& path)
{
    return path.node != nullptr && !path.names_entry() &&
           (path.node->kind == schema::NodeKind::Leaf || path.node->kind == schema::NodeKind::LeafList);
}

}  // namespace

FilledValues::~FilledValues()
{
    for (confd_value_t* const value : values_) {
        confd_free_value(value);
        CONFD_SET_NOEXISTS(value);
    }
}

confd_value_t& FilledValues::add(confd_value_t* value)
{
    values_.push_back(value);
    CONFD_SET_NOEXISTS(value);
    return *value;
}

void read_leaf_list(const schema::Node& node, const store::List& list, confd_value_t* value)
{
    confd_value_t made;
    FilledValues filled;
    filled.add(&made);
    confd_value_t* entry = values::own_array(list.size());
    CONFD_SET_LIST(&made, entry, list.size());
    list.for_each([&](const store::Row& row) { schema::to_confd(node, row.value(0), entry++); });
    filled.keep();
    *value = made;
}

int read_value(Call& call, const store::Path& path, confd_value_t* value)
{
    if (!is_value(path)) {
        return call.fail(CONFD_ERR_BADPATH, "neither a leaf nor a leaf-list");
    }
    if (path.node->kind == schema::NodeKind::Leaf) {
        const schema::Value stored = call.view().get(path);
        if (stored.absent()) {
            return call.fail(CONFD_ERR_NOEXISTS);
        }
        call.meet_host_bits(stored);
        schema::to_confd(*path.node, stored, value);
        return CONFD_OK;
    }
    const store::List* const list = call.view().find_list(path);
    if (list == nullptr || list->empty()) {
        return fail_no_entries(call, list);
    }
    read_leaf_list(*path.node, *list, value);
    return CONFD_OK;
}

int read_typed(Call& call, const store::Path& path, confd_vtype type, confd_value_t* value)
{
    if (is_value(path) && (path.node->kind != schema::NodeKind::Leaf || path.node->type->vtype != type)) {
        return call.fail(CONFD_ERR_BADTYPE, "the leaf is a " + path.node->type->name);
    }
    return read_value(call, path, value);
}

int fail_no_entries(Call& call, const store::List* leaf_list)
{
    if (leaf_list != nullptr) {
        call.meet(Reading::EmptyLeafListIsAbsent);
    }
    return call.fail(CONFD_ERR_NOEXISTS);
}

int read_exists(Call& call, const store::Path& path)
{
    const store::Configuration& view = call.view();
    if (!view.exists(path)) {
        if (view.hangs(path)) {
            call.meet(Reading::ListBelowMissingEntryIsEmpty);
        }
        return 0;
    }
    if (path.node->kind == schema::NodeKind::Leaf && path.node->default_value &&
        view.find_row(path)->value(path.node->slot).absent()) {
        call.meet(Reading::EmptyPathIsBadDefaultExists);
    }
    return 1;
}

int read_count(Call& call, const store::Path& path)
{
    if (path.node == nullptr || !path.node->is_list() || path.names_entry()) {
        return call.fail(CONFD_ERR_BADPATH, "neither a list nor a leaf-list");
    }
    const std::size_t count = call.view().count(path);
    if (count == 0 && call.view().hangs(path)) {
        call.meet(Reading::ListBelowMissingEntryIsEmpty);
    }
    return count > INT_MAX ? call.fail(CONFD_ERR_INTERNAL, "more entries than an int counts") : static_cast<int>(count);
}

bool place_is_there(const store::Row& row, const schema::Node& node)
{
    for (const schema::Node* around = node.parent; around != nullptr && !around->is_list(); around = around->parent) {
        if (around->kind == schema::NodeKind::Presence && row.value(around->slot).absent()) {
            return false;
        }
    }
    return true;
}

void read_slot(Call& call, const store::Row& row, const schema::Node& node, confd_value_t* value)
{
    CONFD_SET_NOEXISTS(value);
    if (!place_is_there(row, node)) {
        return;
    }
    if (node.kind == schema::NodeKind::Leaf) {
        const schema::Value& stored = row.value(node.slot);
        call.meet_host_bits(stored);
        schema::to_confd(node, stored.absent() ? node.default_value : stored, value);
    } else if (node.kind == schema::NodeKind::LeafList && row.list(node.slot).empty()) {
        call.meet(Reading::EmptyLeafListIsAbsent);
    } else if (node.kind == schema::NodeKind::LeafList) {
        read_leaf_list(node, row.list(node.slot), value);
    }
}

}  // namespace bgp_platform::capi
