// MAAPI cursors: walks of a list that is written meanwhile, searches, and what they leave behind.
#include <gtest/gtest.h>

#include "capi_device.h"

namespace {

using namespace capi_test;

using Texts = std::vector<std::string>;

class MaapiCursor : public CapiTest {
protected:
    void begin(const char* path = "/depot/bay")
    {
        ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, path), CONFD_OK) << confd_lasterr();
    }

    // The keys the cursor stands on, "end" behind the last entry.
    std::string here() const
    {
        std::string keys;
        for (int i = 0; i < cursor.n; ++i) {
            keys += (i == 0 ? "" : " ") + printed(cursor.keys[i]);
        }
        return cursor.n == 0 ? "end" : keys;
    }

    std::string next() { return maapi_get_next(&cursor) == CONFD_OK ? here() : confd_lasterr(); }

    std::string find(confd_find_next_type type, std::vector<confd_value_t> keys)
    {
        const int result = maapi_find_next(&cursor, type, keys.data(), static_cast<int>(keys.size()));
        return result == CONFD_OK ? here() : confd_lasterr();
    }

    maapi_cursor cursor{};
};

TEST_F(MaapiCursor, Walk_MeetsEveryEntryInListOrder)
{
    stored(bay(10, "left") + bay(2, "right") + bay(2, "left"));
    open();
    begin();
    EXPECT_EQ(cursor.n, 0) << "before the first entry";
    EXPECT_EQ(next(), "2 enum<1>");
    EXPECT_EQ(next(), "2 enum<2>");
    EXPECT_EQ(next(), "10 enum<1>");
    EXPECT_EQ(next(), "end");
    EXPECT_EQ(next(), "end");
    maapi_destroy_cursor(&cursor);
    expect_nothing_open();
}

TEST_F(MaapiCursor, EmptyListAndListBelowAMissingEntry_HaveNoEntries)
{
    open();
    begin();
    EXPECT_EQ(next(), "end");
    maapi_destroy_cursor(&cursor);
    begin("/depot/bay{7 left}/crate");
    EXPECT_EQ(next(), "end");
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, LeafList_IsWalkedByItsValues)
{
    stored("<free>20</free><free>3</free>");
    open();
    begin("/depot/free");
    EXPECT_EQ(next(), "3");
    EXPECT_EQ(next(), "20");
    EXPECT_EQ(next(), "end");
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, EntriesWrittenDuringTheWalk_AreMetWhenTheyLieAhead)
{
    stored(bay(2, "left") + bay(4, "left"));
    open();
    begin();
    EXPECT_EQ(next(), "2 enum<1>");
    ASSERT_EQ(maapi_create(maapi, th, "/depot/bay{1 left}"), CONFD_OK);
    ASSERT_EQ(maapi_create(maapi, th, "/depot/bay{3 left}"), CONFD_OK);
    EXPECT_EQ(next(), "3 enum<1>");
    EXPECT_EQ(next(), "4 enum<1>");
    ASSERT_EQ(maapi_create(maapi, th, "/depot/bay{5 left}"), CONFD_OK);
    EXPECT_EQ(next(), "5 enum<1>");
    EXPECT_EQ(next(), "end");
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, EntryDeletedOrMovedUnderTheCursor_DoesNotStopTheWalk)
{
    stored(bay(1, "left") + bay(2, "left") + bay(3, "left"));
    open();
    begin();
    EXPECT_EQ(next(), "1 enum<1>");
    ASSERT_EQ(maapi_delete(maapi, th, "/depot/bay{1 left}"), CONFD_OK);
    ASSERT_EQ(maapi_delete(maapi, th, "/depot/bay{2 left}"), CONFD_OK);
    EXPECT_EQ(next(), "3 enum<1>");
    confd_value_t ahead[] = {u32(9), enumeration(2)};
    ASSERT_EQ(maapi_move(maapi, th, ahead, 2, "/depot/bay{%*x}", cursor.n, cursor.keys), CONFD_OK);
    EXPECT_EQ(here(), "3 enum<1>") << "the cursor keeps its keys";
    EXPECT_EQ(next(), "9 enum<2>") << "the moved entry is met again";
    ASSERT_EQ(maapi_delete(maapi, th, "/depot/bay"), CONFD_OK);
    EXPECT_EQ(next(), "end");
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, FindNext_StandsBehindTheKeys)
{
    stored(bay(2, "left") + bay(2, "right") + bay(4, "left"));
    open();
    begin();
    EXPECT_EQ(find(CONFD_FIND_NEXT, {u32(2), enumeration(1)}), "2 enum<2>");
    EXPECT_EQ(find(CONFD_FIND_NEXT, {u32(2), enumeration(2)}), "4 enum<1>");
    EXPECT_EQ(find(CONFD_FIND_NEXT, {u32(3), enumeration(1)}), "4 enum<1>") << "keys that no entry has";
    EXPECT_EQ(find(CONFD_FIND_NEXT, {u32(4), enumeration(1)}), "end");
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, FindSameOrNext_StandsOnTheKeysWhereTheyAre)
{
    stored(bay(2, "left") + bay(4, "left"));
    open();
    begin();
    EXPECT_EQ(find(CONFD_FIND_SAME_OR_NEXT, {u32(2), enumeration(1)}), "2 enum<1>");
    EXPECT_EQ(find(CONFD_FIND_SAME_OR_NEXT, {u32(2), enumeration(2)}), "4 enum<1>");
    EXPECT_EQ(find(CONFD_FIND_SAME_OR_NEXT, {u32(5), enumeration(1)}), "end");
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, FewerKeys_LieBeforeEveryEntryThatBeginsWithThem)
{
    stored(bay(2, "left") + bay(2, "right") + bay(4, "left"));
    open();
    begin();
    for (const confd_find_next_type type : {CONFD_FIND_NEXT, CONFD_FIND_SAME_OR_NEXT}) {
        EXPECT_EQ(find(type, {u32(2)}), "2 enum<1>");
        EXPECT_EQ(find(type, {u32(3)}), "4 enum<1>");
        EXPECT_EQ(find(type, {u32(5)}), "end");
        EXPECT_EQ(find(type, {}), "2 enum<1>");
    }
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, WalkGoesOnFromWhereASearchStopped)
{
    stored(bay(1, "left") + bay(2, "left") + bay(3, "left"));
    open();
    begin();
    EXPECT_EQ(find(CONFD_FIND_SAME_OR_NEXT, {u32(2)}), "2 enum<1>");
    EXPECT_EQ(next(), "3 enum<1>");
    EXPECT_EQ(next(), "end");
    EXPECT_EQ(find(CONFD_FIND_NEXT, {}), "1 enum<1>") << "a search leaves the end again";
    EXPECT_EQ(next(), "2 enum<1>");
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, ItsOwnKeys_MayBeSearchedFor)
{
    stored("<shelf><name>a name longer than fifteen</name></shelf><shelf><name>b</name></shelf>");
    open();
    begin("/depot/shelf");
    EXPECT_EQ(next(), "a name longer than fifteen");
    EXPECT_EQ(maapi_find_next(&cursor, CONFD_FIND_NEXT, cursor.keys, cursor.n), CONFD_OK);
    EXPECT_EQ(here(), "b");
    maapi_destroy_cursor(&cursor);
    expect_nothing_open();
}

TEST_F(MaapiCursor, SearchWithKeysTheListDoesNotTake_FailsAndTheCursorStays)
{
    stored(bay(1, "left") + bay(2, "left"));
    open();
    begin();
    EXPECT_EQ(next(), "1 enum<1>");
    EXPECT_EQ(find(CONFD_FIND_NEXT, {enumeration(1)}),
              "maapi_find_next: bad type: /depot/bay: key number is no uint32");
    EXPECT_EQ(find(CONFD_FIND_NEXT, {u32(1), enumeration(1), u32(1)}),
              "maapi_find_next: bad path: /depot/bay: the list bay has 2 keys, not 3");
    EXPECT_EQ(next(), "2 enum<1>");
    maapi_destroy_cursor(&cursor);
}

TEST_F(MaapiCursor, Keys_BelongToTheCursorUntilTheNextStep)
{
    stored("<shelf><name>a name longer than fifteen</name></shelf><shelf><name>b</name></shelf>");
    open();
    begin("/depot/shelf");
    EXPECT_EQ(device.open_things().cursors, 1U);
    EXPECT_EQ(device.open_things().values, 0U);
    next();
    EXPECT_EQ(device.open_things().values, 1U);
    next();
    EXPECT_EQ(device.open_things().values, 1U) << "the keys before are given back";
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(cursor.n, 0);
    expect_nothing_open();
}

TEST_F(MaapiCursor, DestroyedTwice_CountsOnce)
{
    open();
    begin();
    maapi_destroy_cursor(&cursor);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(device.open_things().cursors, 0U);
    EXPECT_TRUE(
        fails(maapi_get_next(&cursor), CONFD_ERR_PROTOUSAGE, "maapi_get_next", "the cursor is not initialised"));
    EXPECT_TRUE(fails(maapi_find_next(&cursor, CONFD_FIND_NEXT, nullptr, 0), CONFD_ERR_PROTOUSAGE, "maapi_find_next",
                      "the cursor is not initialised"));
}

TEST_F(MaapiCursor, FailedInit_LeavesACursorThatMayBeDestroyed)
{
    stored(bay(1, "left"));
    open();
    cursor.n = 5;  // what was in the memory before
    for (const char* path : {"/depot/label", "/depot/bay{1 left}", "/depot/kinds"}) {
        EXPECT_TRUE(fails(maapi_init_cursor(maapi, th, &cursor, path), CONFD_ERR_BADPATH, "maapi_init_cursor",
                          std::string(path) + ": not a list"));
        maapi_destroy_cursor(&cursor);
    }
    EXPECT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/dock"), CONFD_ERR);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(maapi_init_cursor(maapi, th + 1, &cursor, "/depot/bay"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(device.open_things().cursors, 0U);
}

TEST_F(MaapiCursor, StepAfterTheTransactionIsGone_Fails)
{
    stored(bay(1, "left"));
    open();
    begin();
    device.drop();
    open();
    EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(device.open_things().cursors, 0U);
}

TEST(MaapiCursorAlone, DestroyedAfterItsDevice_IsHarmless)
{
    maapi_cursor cursor;
    {
        Device device(depot_options());
        const UpgradeHandles upgrade = device.open_upgrade();
        ASSERT_EQ(maapi_init_cursor(upgrade.maapi_socket, upgrade.thandle, &cursor, "/depot/bay"), CONFD_OK);
    }
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(cursor.position, nullptr);
}

}  // namespace
