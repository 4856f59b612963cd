// What a report tells of a changed row beside its keys: its leaves, and which step did it.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "judge/row_changes.h"

namespace bgp_rehearse {

// The leaves of a changed row, each with its writer, and the writer that stands for the row: who made, moved or removed it
// or, where it only changed, who wrote all of its leaves; 0 for several or none that is known.
struct RowLeaves {
    explicit RowLeaves(const RowChange& change);

    std::vector<LeafChange> leaves;
    bgp_platform::store::Writer writer = 0;
};

// A node's path from the row it is in, "bgp/cluster-id".
std::string name_in_row(const bgp_platform::schema::Node& node);

// The same, for the leaves of many rows.
class NamesInRow {
public:
    const std::string& of(const bgp_platform::schema::Node& node);

private:
    std::unordered_map<const bgp_platform::schema::Node*, std::string> names_;
};

// A value as in a configuration file, but for a secret, which is masked; of a presence container nothing.
void append_value(const bgp_platform::schema::Node& leaf, const bgp_platform::schema::Value& value, std::string* text);

}  // namespace bgp_rehearse
