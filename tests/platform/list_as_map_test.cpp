// Lists against std::map: the same random writes and look-ups to both must give the same answers, and copies taken on
// the way must stay what they were.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "store/list.h"
#include "store_records.h"

namespace {

using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::RowRef;
using store_test::ListModel;
using store_test::num;
using store_test::text;
using store_test::Value;

using Key = std::pair<uint64_t, std::string>;
using Map = std::map<Key, uint64_t>;
using Keys = std::vector<Value>;

Keys keys_of(const Key& key)
{
    return {num(key.first), text(key.second)};
}

Key key_of(const Row& row)
{
    return {row.value(0).as_uint(), std::string(row.value(1).bytes())};
}

Map content(const List& list)
{
    Map all;
    list.for_each([&](const Row& row) { all.emplace_hint(all.end(), key_of(row), row.value(2).as_uint()); });
    return all;
}

// Does the same random things to a list and to a map, and keeps copies of both on the way.
class RandomTwin {
public:
    RandomTwin(unsigned seed, uint64_t key_range) : random_(seed), key_range_(key_range) {}

    void run(std::size_t operations)
    {
        for (std::size_t i = 0; i < operations && !testing::Test::HasFailure(); ++i) {
            operate();
            if (pick(operations / 8) == 0) {
                snapshots_.emplace_back(list_, map_);
            }
        }
        expect_equal(list_, map_);
        for (const auto& [list, map] : snapshots_) {
            expect_equal(list, map);
        }
    }

    void empty_one_by_one()
    {
        while (!map_.empty() && !testing::Test::HasFailure()) {
            const Key key =
                std::next(map_.begin(), static_cast<std::ptrdiff_t>(pick(std::min<std::size_t>(map_.size(), 50))))
                    ->first;
            erase(key);
        }
        EXPECT_TRUE(list_.empty());
        EXPECT_EQ(list_.node_bytes(), 0U);
    }

private:
    uint64_t pick(uint64_t below) { return std::uniform_int_distribution<uint64_t>(0, below - 1)(random_); }
    Key random_key() { return {pick(key_range_), std::string(1, static_cast<char>('a' + pick(5)))}; }

    void operate()
    {
        const Key key = random_key();
        switch (pick(10)) {
            case 0:
            case 1:
            case 2:
            case 3:
                insert(key, pick(1000));
                break;
            case 4:
            case 5:
                erase(key);
                break;
            case 6:
                change(key, pick(1000));
                break;
            default:
                look_up(key);
        }
        ASSERT_EQ(list_.size(), map_.size());
        ASSERT_EQ(list_.empty(), map_.empty());
    }

    void insert(const Key& key, uint64_t payload)
    {
        const bool added = list_.insert(model_.row(num(key.first), text(key.second), num(payload)));
        ASSERT_EQ(added, map_.emplace(key, payload).second);
    }

    void erase(const Key& key)
    {
        const Keys keys = keys_of(key);
        const RowRef taken = list_.take(keys.data(), keys.size());
        const auto there = map_.find(key);
        ASSERT_EQ(static_cast<bool>(taken), there != map_.end());
        if (taken) {
            ASSERT_EQ(key_of(*taken), key);
            ASSERT_EQ(taken->value(2), num(there->second));
            map_.erase(there);
        }
    }

    void change(const Key& key, uint64_t payload)
    {
        const Keys keys = keys_of(key);
        Row* row = list_.edit(keys.data(), keys.size());
        const auto there = map_.find(key);
        ASSERT_EQ(row != nullptr, there != map_.end());
        if (row != nullptr) {
            row->value(2) = num(payload);
            there->second = payload;
        }
    }

    // The iterator stands there, and goes on as the map does.
    void expect_walk(List::Iterator entry, Map::const_iterator expected)
    {
        constexpr int kSteps = 100;  // more than a leaf node holds
        for (int i = 0; i < kSteps && expected != map_.end(); ++i, ++entry, ++expected) {
            ASSERT_TRUE(entry);
            expect_row(*entry, expected);
        }
        if (expected == map_.end()) {
            ASSERT_FALSE(entry);
        }
    }

    void look_up(const Key& key)
    {
        const Keys keys = keys_of(key);
        expect_row(list_.find(keys.data(), 2), map_.find(key));
        expect_row(list_.find_from(keys.data(), 2), map_.lower_bound(key));
        expect_row(list_.find_after(keys.data(), 2), map_.upper_bound(key));
        const auto first_of_number = map_.lower_bound({key.first, ""});
        expect_row(list_.find_from(keys.data(), 1), first_of_number);
        expect_row(list_.find_after(keys.data(), 1), first_of_number);
        expect_walk(list_.iterate_after(keys.data(), 2), map_.upper_bound(key));
        expect_walk(list_.iterate_after(keys.data(), 1), first_of_number);
        ASSERT_EQ(list_.find(keys.data(), 1), nullptr);
        const std::size_t position = pick(map_.size() + 2);
        expect_row(list_.at(position), position < map_.size()
                                           ? std::next(map_.begin(), static_cast<std::ptrdiff_t>(position))
                                           : map_.end());
    }

    void expect_row(const Row* row, Map::const_iterator there)
    {
        ASSERT_EQ(row != nullptr, there != map_.end());
        if (row != nullptr) {
            ASSERT_EQ(key_of(*row), there->first);
            ASSERT_EQ(row->value(2), num(there->second));
        }
    }

    static void expect_equal(const List& list, const Map& map)
    {
        ASSERT_EQ(content(list), map);
        std::size_t position = 0;
        for (List::Iterator entry = list.begin(); entry; ++entry) {
            ASSERT_EQ(*entry, list.at(position++));
        }
        ASSERT_EQ(position, map.size());
    }

    ListModel model_{2, 3};
    std::mt19937 random_;
    uint64_t key_range_;
    List list_;
    Map map_;
    std::vector<std::pair<List, Map>> snapshots_;
};

class ListAsMap : public testing::TestWithParam<unsigned> {};

TEST_P(ListAsMap, SmallListWithManyWrites_BehavesLikeAMap)
{
    RandomTwin twin(GetParam(), 30);
    twin.run(4000);
    twin.empty_one_by_one();
}

TEST_P(ListAsMap, LargeListWithManyWrites_BehavesLikeAMap)
{
    RandomTwin twin(GetParam() + 100, 4000);
    twin.run(20'000);
    twin.empty_one_by_one();
}

INSTANTIATE_TEST_SUITE_P(Seeds, ListAsMap, testing::Range(0U, 6U));

}  // namespace
