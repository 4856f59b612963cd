// A reference of the table (references.h) as the schema has it: which rows refer, to what, and whether it is there.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device.h"
#include "judge/path_template.h"
#include "judge/references.h"

namespace bgp_rehearse {

class CompiledReference {
public:
    // Throws std::invalid_argument, naming it, what of the reference does not fit the schema.
    CompiledReference(const bgp_platform::schema::Schema& schema, const Reference& reference);

    // Whether the row's key refers, or a part of it.
    bool by_key() const noexcept { return leaf == nullptr || leaf->key; }

    bool refers(const bgp_platform::store::Row& row) const;

    // "map 3"
    std::string which(const RowPlace& place) const;

    const Reference& said;
    const bgp_platform::schema::Node* list;
    const bgp_platform::schema::Node* leaf;  // null: the key refers
    std::vector<PathTemplate> targets;

private:
    void take_condition(std::string_view where);

    const bgp_platform::schema::Node* condition_ = nullptr;
    std::vector<bgp_platform::schema::Value> allowed_;
    std::optional<Operand> which_;
    std::string before_which_;
    bgp_platform::schema::Value zero_ = bgp_platform::schema::Value::of_uint(0);
    bgp_platform::schema::Value signed_zero_ = bgp_platform::schema::Value::of_int(0);
};

// Looks a reference up in a configuration. Both outlive it.
class ReferenceTargets {
public:
    ReferenceTargets(const CompiledReference& reference, const bgp_platform::store::Configuration& configuration);

    bool hold(const RowPlace& place);

    // Of the target looked up last, another one than that of the target before it.
    std::size_t number() const noexcept { return number_; }

private:
    std::vector<Lookup> lookups_;
    std::size_t number_ = 0;
};

}  // namespace bgp_rehearse
