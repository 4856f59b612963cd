// Moves among created and deleted entries, small ones one by one and random ones against what a move is: for one key leaf
// after the other, two free entries of a list that are alike but for that leaf, when no third one is.
#include "report/change_moves.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/store_records.h"
#include "store/list.h"

namespace bgp_test {
namespace {

using bgp_platform::store::Row;
using bgp_platform::store::RowRef;
using bgp_rehearse::Change;
using store_test::ListModel;
using store_test::num;
using testing::ElementsAre;

constexpr uint16_t kKeys = 3;

// An entry: its key, and what it holds in a leaf and as keys of entries below it.
struct Entry {
    Entry(std::vector<uint64_t> its_key, uint64_t its_leaf = 0, std::set<uint64_t> its_below = {})
        : key(std::move(its_key)), leaf(its_leaf), below(std::move(its_below))
    {
    }

    std::vector<uint64_t> key;
    uint64_t leaf;
    std::set<uint64_t> below;
};

bool operator<(const Entry& left, const Entry& right)
{
    return left.key < right.key;
}

// Changes of a list and the rows they point to.
class Changes {
public:
    Changes() { model_.add_list(below_); }

    // A list's changes, in the order of the keys.
    void add(const std::string& list, const std::vector<Entry>& created, const std::vector<Entry>& deleted)
    {
        const auto name = std::make_shared<const std::string>(list);
        std::map<Entry, Change::Kind> all;
        for (const Entry& each : created) {
            all.emplace(each, Change::Kind::Created);
        }
        for (const Entry& each : deleted) {
            all.emplace(each, Change::Kind::Deleted);
        }
        for (const auto& [entry, kind] : all) {
            changes.push_back({kind, name, row(entry), nullptr, {}});
        }
    }

    // What find_moves() leaves, an entry a text: "+{1 0 0}", "-{5 0 0}", "{5 0 0}->{1 0 0}".
    std::vector<std::string> found()
    {
        bgp_rehearse::find_moves(&changes);
        std::vector<std::string> texts;
        for (const Change& each : changes) {
            const char* const mark = each.kind == Change::Kind::Created   ? "+"
                                     : each.kind == Change::Kind::Deleted ? "-"
                                                                          : "";
            texts.push_back(mark + (each.from != nullptr ? key_of(*each.from) + "->" : "") + key_of(*each.entry));
        }
        return texts;
    }

    static std::string key_of(const Row& row) { return "{" + text_of(row, 0, kKeys) + "}"; }

    // The key but for a leaf, and the content, as a text.
    static std::string all_but(uint16_t position, const Row& row)
    {
        std::string text = text_of(row, 0, position) + "/" + text_of(row, position + 1, kKeys + 1) + "/";
        row.list(0).for_each([&text](const Row& below) { text += text_of(below, 0, 1) + ","; });
        return text;
    }

    std::vector<Change> changes;

private:
    static std::string text_of(const Row& row, int first, int end)
    {
        std::string text;
        for (int slot = first; slot < end; ++slot) {
            text += (slot > first ? " " : "") + std::to_string(row.value(static_cast<uint16_t>(slot)).as_uint());
        }
        return text;
    }

    const Row* row(const Entry& entry)
    {
        RowRef row = model_.row(num(entry.key[0]), num(entry.key[1]), num(entry.key[2]), num(entry.leaf));
        for (const uint64_t each : entry.below) {
            row.edit().list(0).insert(below_.row(num(each)));
        }
        rows_.push_back(std::move(row));
        return rows_.back().get();
    }

    ListModel below_{1, 1};
    ListModel model_{kKeys, kKeys + 1};
    std::vector<RowRef> rows_;
};

// The moves by their definition, as pairs of entries from and to.
std::set<std::pair<const Row*, const Row*>> defined_moves(const std::vector<Change>& changes)
{
    std::set<std::pair<const Row*, const Row*>> moves;
    std::set<const Row*> taken;
    for (uint16_t position = 0; position < kKeys; ++position) {
        std::map<std::string, std::vector<const Change*>> alike;
        for (const Change& each : changes) {
            if (taken.count(each.entry) == 0) {
                alike[*each.list + Changes::all_but(position, *each.entry)].push_back(&each);
            }
        }
        for (const auto& [text, group] : alike) {
            if (group.size() == 2 && group[0]->kind != group[1]->kind) {
                const bool first_created = group[0]->kind == Change::Kind::Created;
                moves.emplace(group[first_created ? 1 : 0]->entry, group[first_created ? 0 : 1]->entry);
                taken.insert({group[0]->entry, group[1]->entry});
            }
        }
    }
    return moves;
}

TEST(ChangeMoves, EntriesWithAnotherIndex_Moved)
{
    Changes changes;
    changes.add("a", {{{1, 1, 1}, 7}, {{1, 2, 1}, 8, {3}}}, {{{5, 1, 1}, 7}, {{5, 2, 1}, 8, {3}}});
    EXPECT_THAT(changes.found(), ElementsAre("{5 1 1}->{1 1 1}", "{5 2 1}->{1 2 1}"));
}

TEST(ChangeMoves, EntriesOfTwoIndexesThatBecameOne_Moved)
{
    Changes changes;
    changes.add("a", {{{1, 1, 1}}, {{1, 2, 1}}, {{1, 3, 1}}}, {{{5, 2, 1}}, {{6, 1, 1}}, {{6, 3, 1}}});
    EXPECT_THAT(changes.found(), ElementsAre("{6 1 1}->{1 1 1}", "{5 2 1}->{1 2 1}", "{6 3 1}->{1 3 1}"));
}

TEST(ChangeMoves, EntryThatFitsInTwoLeaves_MovedInTheEarlierOne)
{
    Changes changes;
    changes.add("a", {{{1, 1, 1}}}, {{{1, 1, 4}}, {{5, 1, 1}}});
    EXPECT_THAT(changes.found(), ElementsAre("{5 1 1}->{1 1 1}", "-{1 1 4}"));
}

TEST(ChangeMoves, EntryLeftOverByAnEarlierLeaf_MovesInALaterOne)
{
    Changes changes;
    changes.add("a", {{{1, 1, 1}}, {{1, 1, 2}}}, {{{1, 1, 4}}, {{5, 1, 1}}});
    EXPECT_THAT(changes.found(), ElementsAre("{5 1 1}->{1 1 1}", "{1 1 4}->{1 1 2}"));
}

TEST(ChangeMoves, EntriesThatDifferInContent_StayCreatedAndDeleted)
{
    Changes changes;
    changes.add("a", {{{1, 1, 1}, 7}, {{1, 2, 1}, 8, {3}}}, {{{5, 1, 1}, 6}, {{5, 2, 1}, 8, {4}}});
    EXPECT_THAT(changes.found(), ElementsAre("+{1 1 1}", "+{1 2 1}", "-{5 1 1}", "-{5 2 1}"));
}

TEST(ChangeMoves, EntriesOfOtherLists_AreNoCandidates)
{
    Changes changes;
    changes.add("a", {{{1, 1, 1}}}, {});
    changes.add("b", {}, {{{5, 1, 1}}});
    EXPECT_THAT(changes.found(), ElementsAre("+{1 1 1}", "-{5 1 1}"));
}

// Random entries of few values, so that many are alike.
class RandomMoves : public testing::TestWithParam<unsigned> {
protected:
    uint64_t pick(uint64_t below) { return std::uniform_int_distribution<uint64_t>(0, below - 1)(random_); }

    Entry entry(uint64_t values)
    {
        Entry entry({pick(values), pick(values), pick(values)}, pick(2));
        if (pick(3) == 0) {
            entry.below.insert(pick(2));
        }
        return entry;
    }

    // Entries, each created or deleted.
    void add_list(const std::string& name)
    {
        const uint64_t values = 2 + pick(6);
        std::set<Entry> drawn;
        for (uint64_t left = pick(60); left > 0; --left) {
            drawn.insert(entry(values));
        }
        std::vector<Entry> created;
        std::vector<Entry> deleted;
        for (const Entry& each : drawn) {
            (pick(2) == 0 ? created : deleted).push_back(each);
        }
        changes.add(name, created, deleted);
    }

    std::mt19937 random_{GetParam()};
    Changes changes;
};

TEST_P(RandomMoves, AreThoseOfTheDefinition)
{
    add_list("a");
    add_list("b");
    const std::vector<Change> before = changes.changes;
    const auto expected = defined_moves(before);
    bgp_rehearse::find_moves(&changes.changes);
    auto left = changes.changes.begin();
    std::set<std::pair<const Row*, const Row*>> found;
    for (const Change& each : before) {
        const bool source =
            std::any_of(expected.begin(), expected.end(), [&](const auto& move) { return move.first == each.entry; });
        if (source) {
            continue;
        }
        ASSERT_NE(left, changes.changes.end());
        EXPECT_EQ(left->entry, each.entry);
        if (left->kind == Change::Kind::Moved) {
            found.emplace(left->from, left->entry);
        } else {
            EXPECT_EQ(left->kind, each.kind);
        }
        ++left;
    }
    EXPECT_EQ(left, changes.changes.end());
    EXPECT_EQ(found, expected);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomMoves, testing::Range(0U, 200U));

}  // namespace
}  // namespace bgp_test
