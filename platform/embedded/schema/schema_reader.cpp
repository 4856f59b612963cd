// Builds a schema: YANG texts through libyang, then the compiled tree into nodes and records.
#include "schema/schema_reader.h"

#include <algorithm>
#include <map>
#include <utility>

#include "schema/name_hash.h"
#include "schema/schema_storage.h"

namespace bgp_platform::schema {

namespace {

[[noreturn]] void refuse(const lysc_node& compiled, const char* why)
{
    throw SchemaError(schema_path(compiled) + ": " + why);
}

NodeKind kind_of(const lysc_node& compiled)
{
    switch (compiled.nodetype) {
        case LYS_CONTAINER:
            return (compiled.flags & LYS_PRESENCE) != 0 ? NodeKind::Presence : NodeKind::Container;
        case LYS_LIST:
            return NodeKind::List;
        case LYS_LEAF:
            return NodeKind::Leaf;
        case LYS_LEAFLIST:
            return NodeKind::LeafList;
        default:
            break;
    }
    const std::string why = std::string("a node of kind ") + lys_nodetype2str(compiled.nodetype) + " is not supported";
    refuse(compiled, why.c_str());
}

// Of state data libyang says so too, whatever its module says.
bool ordered_by_user(const lysc_node& compiled)
{
    return (compiled.flags & LYS_ORDBY_USER) != 0 && (compiled.flags & LYS_CONFIG_R) == 0;
}

uint16_t append_slot(std::vector<const Node*>* slots, const Node* node)
{
    slots->push_back(node);
    return static_cast<uint16_t>(slots->size() - 1);
}

Value default_of(const lysc_node& compiled, const Type& type)
{
    const auto& leaf = reinterpret_cast<const lysc_node_leaf&>(compiled);
    Value value;
    if (leaf.dflt != nullptr) {
        std::string why;
        if (!type.parse(lyd_value_get_canonical(compiled.module->ctx, leaf.dflt), &value, &why)) {
            throw SchemaError(schema_path(compiled) + ": default " + why);
        }
    }
    return value;
}

}  // namespace

std::shared_ptr<const Schema> SchemaReader::read(const std::vector<ModuleText>& modules)
{
    const std::shared_ptr<Schema> schema(new Schema);
    schema->storage_->context = context_of(modules);
    const ly_ctx* const context = schema->storage_->context.get();

    SchemaReader reader(schema.get());
    for (const ModuleText& module : modules) {
        reader.add_module(*ly_ctx_get_module_implemented(context, std::string(module.name).c_str()));
    }
    for (const ModuleText& module : modules) {
        const lys_module* const loaded = ly_ctx_get_module_implemented(context, std::string(module.name).c_str());
        reader.add_children(loaded->compiled->data, nullptr, reader.root_);
    }
    reader.mark_namesakes();
    return schema;
}

SchemaReader::SchemaReader(Schema* schema)
    : schema_(schema),
      storage_(*schema->storage_),
      types_(storage_.context.get(), &storage_.types),
      root_(&storage_.records.emplace_back())
{
    schema_->root_ = root_;
}

void SchemaReader::add_module(const lys_module& module)
{
    storage_.modules.push_back({module.name, module.prefix, module.ns, name_hash(module.ns)});
    add_name(storage_.modules.back().uri);
}

void SchemaReader::add_children(const lysc_node* first, Node* parent, Record* record)
{
    for (const lysc_node* compiled = first; compiled != nullptr; compiled = compiled->next) {
        Node& node = add_node(*compiled, parent, record);
        switch (node.kind) {
            case NodeKind::Container:
            case NodeKind::Presence:
                add_container(*compiled, &node, record);
                break;
            case NodeKind::List:
                add_list(*compiled, &node, record);
                break;
            case NodeKind::Leaf:
                add_leaf(*compiled, &node, record);
                break;
            case NodeKind::LeafList:
                add_leaf_list(*compiled, &node, record);
                break;
        }
    }
}

Node& SchemaReader::add_node(const lysc_node& compiled, Node* parent, Record* record)
{
    const NodeKind kind = kind_of(compiled);
    Node& node = storage_.nodes.emplace_back();
    node.name = compiled.name;
    node.module = module_of(compiled);
    node.tag = name_hash(node.name);
    node.kind = kind;
    node.parent = parent;
    node.record = record;
    node.state = (compiled.flags & LYS_CONFIG_R) != 0;
    node.secret = is_secret(node.name);
    add_name(node.name);
    (parent != nullptr ? parent->children : schema_->top_).push_back(&node);
    return node;
}

void SchemaReader::add_container(const lysc_node& compiled, Node* node, Record* record)
{
    if (node->kind == NodeKind::Presence) {
        node->slot = append_slot(&record->values, node);
    }
    add_children(lysc_node_child(&compiled), node, record);
}

void SchemaReader::add_list(const lysc_node& compiled, Node* node, Record* record)
{
    if ((compiled.flags & LYS_KEYLESS) != 0) {
        refuse(compiled, "a list without keys is not supported");
    }
    if (ordered_by_user(compiled)) {
        refuse(compiled, "a list ordered by the user is not supported");
    }
    Record& entry = add_entry_record(node, record);
    add_children(lysc_node_child(&compiled), node, &entry);
    if (entry.keys >= MAXKEYLEN) {  // one place is the end marker's
        const std::string why = "a list of " + std::to_string(entry.keys) + " keys is not supported: a cursor holds " +
                                std::to_string(MAXKEYLEN - 1);
        refuse(compiled, why.c_str());
    }
}

void SchemaReader::add_leaf(const lysc_node& compiled, Node* node, Record* record)
{
    node->type = types_.type_of(compiled);
    node->default_value = default_of(compiled, *node->type);
    node->slot = append_slot(&record->values, node);
    if ((compiled.flags & LYS_KEY) != 0) {  // libyang puts the keys first, in key order
        node->key = true;
        ++record->keys;
    }
}

void SchemaReader::add_leaf_list(const lysc_node& compiled, Node* node, Record* record)
{
    if (ordered_by_user(compiled)) {
        refuse(compiled, "a leaf-list ordered by the user is not supported");
    }
    if (reinterpret_cast<const lysc_node_leaflist&>(compiled).dflts != nullptr) {
        refuse(compiled, "a leaf-list with defaults is not supported");
    }
    node->type = types_.type_of(compiled);
    Record& entry = add_entry_record(node, record);
    entry.keys = 1;
    entry.values.push_back(node);
}

Record& SchemaReader::add_entry_record(Node* list, Record* around)
{
    list->slot = append_slot(&around->lists, list);
    Record& entry = storage_.records.emplace_back();
    entry.owner = list;
    list->entry = &entry;
    return entry;
}

void SchemaReader::add_name(const std::string& name)
{
    const uint32_t hash = name_hash(name);
    const auto [at, added] = storage_.names.emplace(hash, &name);
    if (!added && *at->second != name) {
        throw SchemaError("the names " + *at->second + " and " + name + " have the same tag " + std::to_string(hash) +
                          "; rename one of them");
    }
}

void SchemaReader::mark_namesakes()
{
    std::map<std::pair<const Node*, std::string_view>, Node*> known;
    for (Node& node : storage_.nodes) {
        const auto [at, first] = known.emplace(std::pair(node.parent, std::string_view(node.name)), &node);
        if (!first) {
            at->second->has_namesake = node.has_namesake = true;
        }
    }
}

const Module* SchemaReader::module_of(const lysc_node& compiled) const
{
    const auto at = std::find_if(storage_.modules.begin(), storage_.modules.end(),
                                 [&](const Module& module) { return module.name == compiled.module->name; });
    return &*at;
}

}  // namespace bgp_platform::schema
