// Builds a schema: YANG texts through libyang, then the compiled tree into nodes and records.
#pragma once

#include <libyang/libyang.h>

#include <memory>
#include <string>
#include <vector>

#include "schema/schema.h"
#include "schema/schema_types.h"

namespace bgp_platform::schema {

class SchemaReader {
public:
    static std::shared_ptr<const Schema> read(const std::vector<ModuleText>& modules);

private:
    explicit SchemaReader(Schema* schema);
    void add_module(const lys_module& module);
    void add_children(const lysc_node* first, Node* parent, Record* record);
    Node& add_node(const lysc_node& compiled, Node* parent, Record* record);
    void add_container(const lysc_node& compiled, Node* node, Record* record);
    void add_list(const lysc_node& compiled, Node* node, Record* record);
    void add_leaf(const lysc_node& compiled, Node* node, Record* record);
    void add_leaf_list(const lysc_node& compiled, Node* node, Record* record);
    Record& add_entry_record(Node* list, Record* around);
    void add_name(const std::string& name);
    void mark_namesakes();
    const Module* module_of(const lysc_node& compiled) const;

    Schema* schema_;
    Schema::Storage& storage_;
    TypeReader types_;
    Record* root_;
};

}  // namespace bgp_platform::schema
