// The history of a configuration that is written: where rows come from, who wrote what, and what it takes.
#include "store/history.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "heap_meter.h"
#include "store_schema.h"

namespace {

using bgp_platform::schema::Record;
using bgp_platform::store::Configuration;
using bgp_platform::store::History;
using bgp_platform::store::Path;
using bgp_platform::store::Result;
using bgp_platform::store::Row;
using store_test::num;
using store_test::plant;
using store_test::plant_schema;
using store_test::PlantPath;
using store_test::rack;
using store_test::text;

class HistoryTest : public testing::Test {
protected:
    HistoryTest()
    {
        for (const char* name : {"north", "south", "west"}) {
            must(stored_.create(rack(1, name)));
        }
        must(stored_.create(rack(1, "south").to("power").to("feed", {num(7)})));
        written_ = stored_;
        history_ = std::make_unique<History>(stored_);
        written_.note_in(history_.get());
        history_->set_writer(3);
    }

    static void must(Result result) { ASSERT_EQ(result, Result::Ok); }
    const Row& row(const Path& path) const { return *written_.find_row(path); }
    const Row* stored_row(const Path& path) const { return stored_.find_row(path); }
    const Row* came_from(const Path& path) const { return history_->stored_row(written_, path.entries); }

    Configuration stored_{plant_schema()};
    Configuration written_{plant_schema()};
    std::unique_ptr<History> history_;
};

TEST_F(HistoryTest, MovedRow_IsKnownByItsStoredRow)
{
    must(written_.move(rack(1, "north"), {num(2), text("north")}));

    const Row& moved = row(rack(2, "north"));
    EXPECT_EQ(history_->origin(moved), stored_row(rack(1, "north")));
    EXPECT_EQ(history_->writer_of(moved), 3);
    EXPECT_EQ(history_->number(moved), history_->number(*stored_row(rack(1, "north"))));
    EXPECT_FALSE(history_->is_new(moved));
}

TEST_F(HistoryTest, MovesInAChain_LeadToTheFirstRow)
{
    must(written_.set(rack(1, "north").to("note"), text("before the first move")));
    must(written_.move(rack(1, "north"), {num(2), text("north")}));
    history_->set_writer(4);
    must(written_.move(rack(2, "north"), {num(3), text("north")}));
    must(written_.set(rack(3, "north").to("width"), num(21)));

    const Row& moved = row(rack(3, "north"));
    EXPECT_EQ(history_->origin(moved), stored_row(rack(1, "north")));
    EXPECT_EQ(history_->writer_of(moved), 4);
    EXPECT_EQ(history_->writer_of(moved, rack(1, "x").to("note").node()), 3);
    EXPECT_EQ(history_->writer_of(moved, rack(1, "x").to("width").node()), 4);
}

TEST_F(HistoryTest, RowMovedBack_CameFromItself)
{
    must(written_.move(rack(1, "north"), {num(2), text("north")}));
    must(written_.move(rack(2, "north"), {num(1), text("north")}));
    EXPECT_EQ(came_from(rack(1, "north")), stored_row(rack(1, "north")));
}

TEST_F(HistoryTest, RowDeletedAndMadeAnew_IsNew)
{
    must(written_.remove(rack(1, "north")));
    must(written_.create(rack(1, "north")));
    EXPECT_TRUE(history_->is_new(row(rack(1, "north"))));
    EXPECT_EQ(came_from(rack(1, "north")), nullptr);
    EXPECT_EQ(history_->writer_of(*stored_row(rack(1, "north"))), 3) << "who took it away";
}

TEST_F(HistoryTest, NewRowThatIsMoved_StaysNew)
{
    must(written_.create(rack(5, "new")));
    must(written_.move(rack(5, "new"), {num(6), text("new")}));
    EXPECT_TRUE(history_->is_new(row(rack(6, "new"))));
    EXPECT_EQ(history_->origin(row(rack(6, "new"))), nullptr);
}

TEST_F(HistoryTest, FailedMove_LeavesNothing)
{
    EXPECT_EQ(written_.move(rack(1, "north"), {num(1), text("south")}), Result::AlreadyExists);
    EXPECT_EQ(written_.set(rack(9, "none").to("note"), text("lost")), Result::NotFound);
    EXPECT_EQ(history_->number(row(rack(1, "north"))), History::kNone);
    EXPECT_EQ(history_->size(), 0U);
}

TEST_F(HistoryTest, RowBelowAMovedOne_IsFoundWhereItWas)
{
    must(written_.move(rack(1, "south"), {num(8), text("south")}));
    const PlantPath feed = rack(8, "south").to("power").to("feed", {num(7)});
    EXPECT_EQ(came_from(feed), stored_row(rack(1, "south").to("power").to("feed", {num(7)})));

    must(written_.move(feed, {num(9)}));
    const Row& moved = row(rack(8, "south").to("power").to("feed", {num(9)}));
    EXPECT_EQ(history_->origin(moved), stored_row(rack(1, "south").to("power").to("feed", {num(7)})));
}

TEST_F(HistoryTest, RowAtAPlaceThatAnotherLeft_IsTheOneThatCame)
{
    must(written_.move(rack(1, "north"), {num(2), text("north")}));
    must(written_.move(rack(1, "west"), {num(1), text("north")}));
    EXPECT_EQ(came_from(rack(1, "north")), stored_row(rack(1, "west")));
    EXPECT_EQ(came_from(rack(2, "north")), stored_row(rack(1, "north")));
}

TEST_F(HistoryTest, Writer_IsToldOfEachLeafAndLeafList)
{
    must(written_.set(rack(1, "north").to("width"), num(21)));
    history_->set_writer(15);
    must(written_.create(rack(1, "north").to("tag", {text("spare")})));
    must(written_.create(rack(1, "north").to("power").to("backup")));
    must(written_.set(plant().to("label"), text("outside of all lists")));

    const Row& north = row(rack(1, "north"));
    EXPECT_EQ(history_->writer_of(north, rack(1, "x").to("width").node()), 3);
    EXPECT_EQ(history_->writer_of(north, rack(1, "x").to("tag").node()), 15);
    EXPECT_EQ(history_->writer_of(north, rack(1, "x").to("power").to("backup").node()), 15);
    EXPECT_EQ(history_->writer_of(north, rack(1, "x").to("note").node()), 0);
    EXPECT_EQ(history_->writer_of(north), 0) << "nobody made or moved it";
    EXPECT_EQ(history_->writer_of(written_.root(), plant().to("label").node()), 15);
}

TEST_F(HistoryTest, ClearedContainer_TakesItsEntriesAway)
{
    must(written_.remove(rack(1, "south").to("power")));
    EXPECT_EQ(history_->writer_of(*stored_row(rack(1, "south").to("power").to("feed", {num(7)}))), 3);
}

TEST_F(HistoryTest, CopyOfTheWrittenConfiguration_NotesNothing)
{
    Configuration copy = written_;
    must(copy.set(rack(1, "north").to("width"), num(21)));
    EXPECT_EQ(history_->size(), 0U);
}

TEST_F(HistoryTest, MarksOfAnEarlierHistory_MeanNothing)
{
    must(written_.move(rack(1, "north"), {num(2), text("north")}));
    must(written_.create(rack(4, "new")));
    const History next(written_);
    EXPECT_EQ(next.number(row(rack(2, "north"))), History::kNone);
    EXPECT_FALSE(next.is_new(row(rack(4, "new"))));
}

// Bytes on the heap for writing a leaf in each of many racks, in a configuration that notes it or does not.
std::size_t bytes_of_writing(bool noted, std::size_t rows)
{
    Configuration stored(plant_schema());
    for (std::size_t i = 0; i < rows; ++i) {
        EXPECT_EQ(stored.create(rack(i, "r")), Result::Ok);
    }
    Configuration written = stored;
    History history(stored);
    written.note_in(noted ? &history : nullptr);
    const std::size_t before = heap_meter::bytes;
    for (std::size_t i = 0; i < rows; i += 2) {
        EXPECT_EQ(written.set(rack(i, "r").to("width"), num(21)), Result::Ok);
        EXPECT_EQ(written.move(rack(i, "r"), {num(rows + i), text("r")}), Result::Ok);
    }
    return heap_meter::bytes - before;
}

TEST(HistoryMemory, WrittenRow_CostsTwentyFourBytesUntouchedNothing)
{
    constexpr std::size_t kRows = 20000;  // half of them are written
    constexpr std::size_t kChunk = 1024;  // records that are fetched at a time
    const std::size_t plain = bytes_of_writing(false, kRows);
    const std::size_t noted = bytes_of_writing(true, kRows);
    EXPECT_GT(noted, plain);
    EXPECT_LE(noted - plain, 24 * (kRows / 2 + kChunk));
}

// A row of more slots than a record of the history has room for would have leaves whose writer is not kept.
TEST(HistoryOfTheDataModel, EachRecord_FitsWithAllItsWriters)
{
    const auto schema = bgp_platform::schema::Schema::builtin();
    const std::function<void(const Record&)> check = [&](const Record& record) {
        const auto leaf_lists =
            std::count_if(record.lists.begin(), record.lists.end(),
                          [](const auto* list) { return list->kind == bgp_platform::schema::NodeKind::LeafList; });
        const std::size_t slots = leaf_lists > 0 ? record.values.size() + record.lists.size() : record.values.size();
        EXPECT_LE(slots - record.keys + 1, 30U) << (record.owner == nullptr ? "/" : record.owner->path());
        for (const auto* list : record.lists) {
            if (list->kind == bgp_platform::schema::NodeKind::List) {
                check(*list->entry);
            }
        }
    };
    check(schema->root());
}

}  // namespace
