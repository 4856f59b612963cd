// What a row takes while it waits for its move: a table of a million rows is held at once, so an entry has room for the
// keys of its row and no more.
#include "bgp_update/rm_index_entries.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/heap_meter.h"

namespace {

constexpr char kTable[] = "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry";

// The heap's bytes for each of many entries with that number of keys. No transaction is needed to make them.
std::size_t bytes_per_entry(int32_t key_count)
{
    constexpr std::size_t kEntries = 1000;
    std::vector<confd_value_t> keys(static_cast<std::size_t>(key_count));
    for (confd_value_t& key : keys) {
        CONFD_SET_UINT32(&key, 5);
    }
    std::vector<std::unique_ptr<BaseEntry>> entries(kEntries);
    const std::size_t before = heap_meter::bytes;
    for (std::unique_ptr<BaseEntry>& entry : entries) {
        entry = std::make_unique<BaseEntry>(-1, -1, kTable, keys.data(), key_count);
    }
    return (heap_meter::bytes - before) / kEntries;
}

TEST(RmIndexEntriesMemory, RowOfOneKey_TakesLittle)
{
    EXPECT_GT(bytes_per_entry(1), sizeof(BaseEntry));
    EXPECT_LT(bytes_per_entry(1), 512U);
}

TEST(RmIndexEntriesMemory, RowOfTenKeys_TakesItsTenValuesMore)
{
    EXPECT_LT(bytes_per_entry(10), bytes_per_entry(1) + 10 * sizeof(confd_value_t) + 64);
}

TEST(RmIndexEntriesMemory, EntriesGone_LeaveNothing)
{
    bytes_per_entry(8);  // what is made once stays
    const std::size_t before = heap_meter::bytes;
    bytes_per_entry(8);
    EXPECT_EQ(heap_meter::bytes, before);
}

}  // namespace
