// What the re-keying of the global instance does to each of its tables, modelled for tests without a line of the step:
// from how the contract says that each table carries the index.
#pragma once

#include <map>

#include "contract/rekeyed_tables.h"
#include "support/table_rows.h"

namespace bgp_test {

constexpr uint32_t kGlobalIndex = 1;  // the component of VRF 0

// Where each row goes, by the key that it has: to its new key, one row after the other, or nowhere when another row is
// there at that moment.
std::map<Key, Key> places(bgp_contract::Carries carries, const Table& rows, uint32_t old_index);

// The same where nothing is re-keyed.
std::map<Key, Key> at_home(const Table& rows);

}  // namespace bgp_test
