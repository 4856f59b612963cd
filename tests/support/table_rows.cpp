#include "support/table_rows.h"

#include <algorithm>
#include <stdexcept>

#include "store/list.h"

namespace bgp_test {

namespace {

using bgp_platform::Datastore;
using bgp_platform::Device;
using bgp_platform::schema::Node;
using bgp_platform::store::Row;

RowText row_text(const Row& row)
{
    RowText all;
    const auto& record = row.record();
    for (std::size_t slot = 0; slot < record.values.size(); ++slot) {
        const auto& value = row.value(static_cast<uint16_t>(slot));
        const Node& leaf = *record.values[slot];
        if (slot < record.keys) {
            all.key.push_back(leaf.type->text(value));
        } else if (!value.absent()) {
            all.leaves[leaf.name] = leaf.type->text(value);
        }
    }
    return all;
}

}  // namespace

std::string text(const Key& key)
{
    std::string all;
    for (const std::string& part : key) {
        all += part + " ";
    }
    return all;
}

const Node& node_of(const Device& device, std::string_view path)
{
    const Node* node = nullptr;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/', 1), path.size());
        const std::string name(path.substr(1, end - 1));
        node = node == nullptr ? device.schema().top_node(name, nullptr) : node->child(name);
        if (node == nullptr) {
            throw std::logic_error("the data model has no node " + name);
        }
        path.remove_prefix(end);
    }
    return *node;
}

Table rows_of(const Device& device, Datastore which, std::string_view path)
{
    Table rows;
    device.configuration(which).root().list(node_of(device, path).slot).for_each([&](const Row& row) {
        rows.push_back(row_text(row));
    });
    return rows;
}

std::map<Key, Leaves> by_key(const Table& rows)
{
    std::map<Key, Leaves> all;
    for (const RowText& row : rows) {
        all[row.key] = row.leaves;
    }
    return all;
}

uint32_t number(const std::string& text)
{
    return static_cast<uint32_t>(std::stoul(text));
}

std::optional<std::string> find(const Leaves& leaves, const std::string& name)
{
    const auto leaf = leaves.find(name);
    return leaf == leaves.end() ? std::nullopt : std::optional(leaf->second);
}
}  // namespace bgp_test
