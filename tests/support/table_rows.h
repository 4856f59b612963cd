// The rows of a configuration's tables as text, for tests that compare whole tables.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device.h"

namespace bgp_test {

using Key = std::vector<std::string>;
using Leaves = std::map<std::string, std::string>;

struct RowText {
    Key key;
    Leaves leaves;
};
using Table = std::vector<RowText>;  // in the order of the keys' values

// A node by its path from the top, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry". Throws std::logic_error when there is none.
const bgp_platform::schema::Node& node_of(const bgp_platform::Device& device, std::string_view path);

// The rows of a list that stands in no other, in their order.
Table rows_of(const bgp_platform::Device& device, bgp_platform::Datastore which, std::string_view path);

std::map<Key, Leaves> by_key(const Table& rows);
std::string text(const Key& key);
uint32_t number(const std::string& text);
std::optional<std::string> find(const Leaves& leaves, const std::string& name);

}  // namespace bgp_test
