// Lists: the ordered tree of rows, what copies of a list share, and the walk over their differences.
#include "store/list.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

#include "heap_meter.h"
#include "store_records.h"

namespace {

using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::RowRef;
using store_test::ListModel;
using store_test::num;
using store_test::Value;

const Row* find(const List& list, uint64_t key)
{
    const Value value = num(key);
    return list.find(&value, 1);
}

RowRef take(List& list, uint64_t key)
{
    const Value value = num(key);
    return list.take(&value, 1);
}

Row* edit(List& list, uint64_t key)
{
    const Value value = num(key);
    return list.edit(&value, 1);
}

// A list with the keys first, first + step, ... and the payload ten times the key.
List numbers(const ListModel& model, std::size_t count, uint64_t first = 0, uint64_t step = 1)
{
    List list;
    for (std::size_t i = 0; i < count; ++i) {
        const uint64_t key = first + i * step;
        EXPECT_TRUE(list.insert(model.row(num(key), num(key * 10))));
    }
    return list;
}

class ListTest : public testing::Test {
protected:
    ListModel model_{1, 2};
};

TEST_F(ListTest, EmptyList_HasNothing)
{
    List list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.size(), 0U);
    EXPECT_EQ(list.node_bytes(), 0U);
    EXPECT_FALSE(list.begin());
    EXPECT_EQ(find(list, 1), nullptr);
    EXPECT_EQ(list.at(0), nullptr);
    EXPECT_EQ(list.find_from(nullptr, 0), nullptr);
    EXPECT_EQ(edit(list, 1), nullptr);
    EXPECT_FALSE(take(list, 1));
}

TEST_F(ListTest, TupleOfNoKeys_FindsTheFirstEntry)
{
    const List list = numbers(model_, 1000, 5);
    EXPECT_EQ(list.find_from(nullptr, 0), list.at(0));
    EXPECT_EQ(list.find_after(nullptr, 0), list.at(0));
}

TEST_F(ListTest, KeyThatIsThere_IsNotInsertedAgain)
{
    List list = numbers(model_, 3);
    const List copy = list;
    EXPECT_FALSE(list.insert(model_.row(num(1), num(99))));
    EXPECT_EQ(list.size(), 3U);
    EXPECT_EQ(find(list, 1)->value(1), num(10));
    EXPECT_EQ(list.at(1), copy.at(1));
}

TEST_F(ListTest, RefusedWrites_UnshareNothing)
{
    List list = numbers(model_, 10'000);
    const List copy = list;
    const std::size_t bytes = heap_meter::bytes;
    EXPECT_FALSE(take(list, 10'001));
    EXPECT_EQ(edit(list, 10'001), nullptr);
    EXPECT_EQ(heap_meter::bytes, bytes);
}

TEST_F(ListTest, EntryTakenByItsOwnKeys_IsTakenOut)
{
    List list = numbers(model_, 5000);
    const List copy = list;
    const Row* row = list.at(4321);
    const RowRef taken = list.take(row->keys(), 1);
    EXPECT_EQ(taken.get(), row);
    EXPECT_EQ(find(list, 4321), nullptr);
    EXPECT_EQ(find(copy, 4321), row);
}

TEST_F(ListTest, DescendingAndInterleavedKeys_ComeOutInOrder)
{
    List list;
    for (uint64_t key = 10'000; key-- > 0;) {
        ASSERT_TRUE(list.insert(model_.row(num(key * 2))));
    }
    for (uint64_t key = 0; key < 10'000; ++key) {
        ASSERT_TRUE(list.insert(model_.row(num(key * 2 + 1))));
    }
    ASSERT_EQ(list.size(), 20'000U);
    uint64_t expected = 0;
    list.for_each([&](const Row& row) { EXPECT_EQ(row.value(0).as_uint(), expected++); });
    EXPECT_EQ(expected, 20'000U);
}

TEST_F(ListTest, AscendingKeys_FillTheNodes)
{
    const List list = numbers(model_, 100'000);
    EXPECT_LE(list.node_bytes(), 100'000 * sizeof(RowRef) * 11 / 10);
    EXPECT_GE(list.node_bytes(), 100'000 * sizeof(RowRef));
}

TEST_F(ListTest, EntryAmongTheLastOfFullNodes_SplitsThemAndKeepsThePositions)
{
    List list = numbers(model_, std::size_t{64} * 64, 0, 2);  // every node is full
    ASSERT_TRUE(list.insert(model_.row(num(8100 - 1))));
    ASSERT_EQ(list.size(), 4097U);
    std::size_t position = 0;
    for (List::Iterator entry = list.begin(); entry; ++entry) {
        ASSERT_EQ(list.at(position++), *entry);
    }
    EXPECT_EQ(position, 4097U);
}

TEST_F(ListTest, ListOfOneEntry_TakesOneSmallNode)
{
    EXPECT_LE(numbers(model_, 1).node_bytes(), 64U);
}

TEST_F(ListTest, ErasedEntries_GiveTheirNodesBack)
{
    List list = numbers(model_, 100'000);
    for (uint64_t key = 0; key < 100'000; ++key) {
        if (key % 100 != 0) {
            ASSERT_TRUE(take(list, key));
        }
    }
    EXPECT_EQ(list.size(), 1000U);
    EXPECT_LE(list.node_bytes(), 1000 * sizeof(RowRef) * 8);
    for (uint64_t key = 0; key < 100'000; key += 100) {
        ASSERT_TRUE(take(list, key));
    }
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.node_bytes(), 0U);
}

TEST_F(ListTest, ClearedList_IsEmptyAndItsCopyStays)
{
    List list = numbers(model_, 500);
    const List copy = list;
    list.clear();
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(copy.size(), 500U);
}

TEST_F(ListTest, MovedList_LeavesNothingBehind)
{
    List list = numbers(model_, 500);
    const List moved = std::move(list);
    EXPECT_EQ(moved.size(), 500U);
    list = List();
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(moved.size(), 500U);
}

TEST_F(ListTest, EditedFirstEntry_IsFoundInBothListsAsEachHasIt)
{
    List list = numbers(model_, 5000);
    List copy = list;
    edit(copy, 0)->value(1) = num(1);
    edit(copy, 64)->value(1) = num(2);
    EXPECT_EQ(find(list, 0)->value(1), num(0));
    EXPECT_EQ(find(list, 64)->value(1), num(640));
    EXPECT_EQ(copy.at(0)->value(1), num(1));
    EXPECT_EQ(copy.at(64)->value(1), num(2));
    list.clear();
    EXPECT_EQ(find(copy, 0)->value(1), num(1));
    EXPECT_EQ(find(copy, 64)->value(1), num(2));
    EXPECT_EQ(copy.find_from(copy.at(64)->keys(), 1), copy.at(64));
}

TEST_F(ListTest, OneWriteInACopy_CopiesOnlyItsRoad)
{
    const List list = numbers(model_, 100'000);
    List copy = list;
    const std::size_t bytes = heap_meter::bytes;
    const std::size_t blocks = heap_meter::blocks;
    edit(copy, 54'321)->value(1) = num(1);
    EXPECT_EQ(heap_meter::blocks - blocks, 4U);  // three nodes and the row
    EXPECT_LE(heap_meter::bytes - bytes, 3 * (64 * sizeof(RowRef) + 64));
}

// Walks two lists of the same keys at once, and counts the steps it takes.
std::size_t steps_through(const List& left, const List& right)
{
    std::size_t steps = 0;
    List::Iterator left_entry = left.begin();
    List::Iterator right_entry = right.begin();
    for (; left_entry && right_entry; ++steps) {
        if (!List::Iterator::skip_shared(&left_entry, &right_entry)) {
            ++left_entry;
            ++right_entry;
        }
    }
    EXPECT_FALSE(left_entry);
    EXPECT_FALSE(right_entry);
    return steps;
}

TEST_F(ListTest, SharedNodes_AreSteppedOverWhole)
{
    const List list = numbers(model_, 100'000);
    List copy = list;
    EXPECT_EQ(steps_through(list, copy), 1U);
    edit(copy, 54'321)->value(1) = num(1);
    EXPECT_LE(steps_through(list, copy), 3U * 64U);
    EXPECT_EQ(steps_through(list, numbers(model_, 100'000)), 100'000U);
}

using Difference = std::pair<const Row*, const Row*>;

std::vector<Difference> differences(const List& before, const List& after)
{
    std::vector<Difference> all;
    List::walk_differences(before, after,
                           [&](const Row* old_row, const Row* new_row) { all.emplace_back(old_row, new_row); });
    return all;
}

// The same by looking at every entry of both.
std::vector<Difference> naive_differences(const List& before, const List& after)
{
    std::map<uint64_t, Difference> by_key;
    before.for_each([&](const Row& row) { by_key[row.value(0).as_uint()].first = &row; });
    after.for_each([&](const Row& row) { by_key[row.value(0).as_uint()].second = &row; });
    std::vector<Difference> all;
    for (const auto& [key, difference] : by_key) {
        if (difference.first != difference.second) {
            all.push_back(difference);
        }
    }
    return all;
}

TEST_F(ListTest, OneEditedEntryOfManyThousand_IsTheOnlyDifference)
{
    const List list = numbers(model_, 100'000);
    List copy = list;
    edit(copy, 54'321)->value(1) = num(1);
    EXPECT_EQ(differences(list, copy), (std::vector<Difference>{{find(list, 54'321), find(copy, 54'321)}}));
}

TEST_F(ListTest, DifferencesToAnEmptyList_AreAllEntries)
{
    const List list = numbers(model_, 200);
    const std::vector<Difference> created = differences(List(), list);
    const std::vector<Difference> deleted = differences(list, List());
    ASSERT_EQ(created.size(), 200U);
    ASSERT_EQ(deleted.size(), 200U);
    for (std::size_t i = 0; i < 200; ++i) {
        EXPECT_EQ(created[i], Difference(nullptr, list.at(i)));
        EXPECT_EQ(deleted[i], Difference(list.at(i), nullptr));
    }
    EXPECT_TRUE(differences(list, list).empty());
    EXPECT_TRUE(differences(List(), List()).empty());
}

TEST_F(ListTest, DifferencesOfTreesOfOtherHeights_AreFound)
{
    const List high = numbers(model_, 10'000);
    List low = high;
    for (uint64_t key = 30; key < 10'000; ++key) {
        take(low, key);
    }
    EXPECT_EQ(differences(high, low), naive_differences(high, low));
    EXPECT_EQ(differences(low, high), naive_differences(low, high));
    EXPECT_EQ(differences(low, high).size(), 9970U);
}

class ListDifferences : public testing::TestWithParam<unsigned> {};

TEST_P(ListDifferences, RandomEditsOnBothSides_AreFoundAsByComparingAll)
{
    ListModel model(1, 2);
    std::mt19937 random(GetParam());
    const auto pick = [&](uint64_t below) { return std::uniform_int_distribution<uint64_t>(0, below - 1)(random); };
    List before = numbers(model, 3000 * (1 + pick(4)), 0, 3);
    List after = before;
    for (const std::size_t edits : {1U, 5U, 40U, 700U, 9000U}) {
        for (std::size_t i = 0; i < edits; ++i) {
            List& side = pick(3) == 0 ? before : after;
            const uint64_t key = pick(12'000);
            switch (pick(3)) {
                case 0:
                    side.insert(model.row(num(key), num(i)));
                    break;
                case 1:
                    take(side, key);
                    break;
                default:
                    edit(side, key);
            }
        }
        ASSERT_EQ(differences(before, after), naive_differences(before, after)) << edits;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ListDifferences, testing::Range(0U, 8U));

struct MillionRows {
    const ListModel* model;
    std::size_t size = 0;
    std::size_t node_bytes = 0;
};

void* build_and_destroy(void* argument)
{
    auto* rows = static_cast<MillionRows*>(argument);
    List list = numbers(*rows->model, 1'000'000);
    List copy = list;
    edit(copy, 999'999);
    rows->size = copy.size();
    rows->node_bytes = list.node_bytes();
    return nullptr;
}

TEST_F(ListTest, MillionRows_AreBuiltAndDestroyedOnASmallStack)
{
    const std::size_t blocks = heap_meter::blocks;
    MillionRows rows{&model_};
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256U * 1024U), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, build_and_destroy, &rows), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(rows.size, 1'000'000U);
    EXPECT_LE(rows.node_bytes, 9'000'000U);
    EXPECT_LE(heap_meter::blocks, blocks + 16);  // what the C++ library keeps for the thread aside
}

}  // namespace
