// Rows: one block each, shared until they are written.
#include "store/row.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "heap_meter.h"
#include "store/list.h"
#include "store_records.h"

namespace store = bgp_platform::store;
using store::List;
using store::Row;
using store::RowRef;
using store_test::ListModel;
using store_test::num;
using store_test::text;

namespace {

const char* const kLongText = "a description that does not fit into a value";

int compare(const RowRef& row, const std::vector<store_test::Value>& keys)
{
    return store::compare_key(*row, keys.data(), keys.size());
}

TEST(RowTest, NewRow_HasAbsentValuesAndEmptyLists)
{
    ListModel inner(1, 1);
    ListModel model(1, 3);
    model.add_list(inner);
    model.add_list(inner);
    const RowRef row(model.record());
    EXPECT_EQ(&row->record(), &model.record());
    for (uint16_t slot = 0; slot < 3; ++slot) {
        EXPECT_TRUE(row->value(slot).absent()) << slot;
    }
    EXPECT_TRUE(row->list(0).empty());
    EXPECT_TRUE(row->list(1).empty());
}

TEST(RowTest, EmptyReference_IsFalse)
{
    RowRef none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.get(), nullptr);
    const RowRef copy = none;
    EXPECT_FALSE(copy);
}

TEST(RowTest, UnsharedRow_IsEditedInPlace)
{
    ListModel model(1, 2);
    RowRef row = model.row(num(1));
    const Row* before = row.get();
    row.edit().value(1) = num(5);
    EXPECT_EQ(row.get(), before);
    EXPECT_EQ(row->value(1), num(5));
}

TEST(RowTest, SharedRow_IsCopiedOnEditAndTheOtherStays)
{
    ListModel model(1, 3);
    RowRef row = model.row(num(1), text("short"), text(kLongText));
    RowRef copy = row;
    EXPECT_EQ(copy.get(), row.get());
    copy.edit().value(1) = text("changed");
    EXPECT_NE(copy.get(), row.get());
    EXPECT_EQ(row->value(1), text("short"));
    EXPECT_EQ(copy->value(0), num(1));
    EXPECT_EQ(copy->value(1), text("changed"));
    EXPECT_EQ(copy->value(2), text(kLongText));
}

TEST(RowTest, RowWhoseOtherReferenceEnded_IsEditedInPlace)
{
    ListModel model(1, 2);
    RowRef row = model.row(num(1));
    {
        const RowRef other = row;
        EXPECT_EQ(other.get(), row.get());
    }
    const Row* before = row.get();
    row.edit();
    EXPECT_EQ(row.get(), before);
}

TEST(RowTest, AssignedReference_LetsItsOldRowGo)
{
    ListModel model(1, 1);
    RowRef first = model.row(num(1));
    RowRef second = model.row(num(2));
    const std::size_t blocks = heap_meter::blocks;
    first = second;
    EXPECT_EQ(heap_meter::blocks, blocks - 1);
    EXPECT_EQ(first.get(), second.get());
    const RowRef& itself = first;
    first = itself;
    EXPECT_EQ(first->value(0), num(2));
}

TEST(RowTest, CopiedRow_SharesTheEntriesOfItsLists)
{
    ListModel inner(1, 2);
    ListModel model(1, 1);
    model.add_list(inner);
    RowRef row = model.row(num(1));
    row.edit().list(0).insert(inner.row(num(7), num(70)));
    RowRef copy = row;
    List& list = copy.edit().list(0);
    const auto seven = num(7);
    EXPECT_EQ(list.find(&seven, 1), row->list(0).find(&seven, 1));
    list.edit(&seven, 1)->value(1) = num(71);
    list.insert(inner.row(num(8)));
    EXPECT_EQ(row->list(0).size(), 1U);
    EXPECT_EQ(row->list(0).find(&seven, 1)->value(1), num(70));
    EXPECT_EQ(copy->list(0).size(), 2U);
    EXPECT_EQ(copy->list(0).find(&seven, 1)->value(1), num(71));
}

TEST(RowTest, LastReference_FreesRowValuesAndEntries)
{
    ListModel inner(1, 2);
    ListModel model(1, 2);
    model.add_list(inner);
    const std::size_t blocks = heap_meter::blocks;
    {
        RowRef row = model.row(num(1), text(kLongText));
        row.edit().list(0).insert(inner.row(num(7), text(kLongText)));
        const RowRef copy = row;
        row.edit();
        EXPECT_GT(heap_meter::blocks, blocks);
    }
    EXPECT_EQ(heap_meter::blocks, blocks);
}

TEST(RowTest, CompareKey_GoesKeyByKey)
{
    ListModel model(2, 3);
    const RowRef row = model.row(num(5), text("m"), text("not a key"));
    EXPECT_EQ(compare(row, {num(5), text("m")}), 0);
    EXPECT_LT(compare(row, {num(5), text("n")}), 0);
    EXPECT_GT(compare(row, {num(5), text("a")}), 0);
    EXPECT_LT(compare(row, {num(6), text("a")}), 0);
    EXPECT_GT(compare(row, {num(4), text("z")}), 0);
}

TEST(RowTest, ShorterTuple_LiesBeforeTheRowsThatBeginWithIt)
{
    ListModel model(2, 2);
    const RowRef row = model.row(num(5), text("m"));
    EXPECT_GT(compare(row, {num(5)}), 0);
    EXPECT_LT(compare(row, {num(6)}), 0);
    EXPECT_GT(compare(row, {}), 0);
}

TEST(RowTest, RowOfFourteenSmallLeaves_StaysFarBelowAHundredBytesALeaf)
{
    constexpr uint16_t kLeaves = 14;
    constexpr std::size_t kRows = 10'000;
    ListModel model(1, kLeaves);
    const std::size_t before = heap_meter::bytes;
    List list;
    for (std::size_t key = 0; key < kRows; ++key) {
        RowRef row = model.row(num(key), text("up to fifteen b"));
        for (uint16_t slot = 2; slot < kLeaves; ++slot) {
            row.edit().value(slot) = num(slot);
        }
        list.insert(std::move(row));
    }
    const std::size_t bytes_per_row = (heap_meter::bytes - before) / kRows;
    RecordProperty("bytes_per_row_of_14_leaves", static_cast<int>(bytes_per_row));
    RecordProperty("bytes_per_leaf", static_cast<int>(bytes_per_row / kLeaves));
    EXPECT_GE(bytes_per_row, sizeof(Row) + kLeaves * sizeof(store_test::Value));
    EXPECT_LE(bytes_per_row, 100U * kLeaves);
}

}  // namespace
