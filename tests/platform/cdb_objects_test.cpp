// cdb_get_objects: batches of list entries, each a run of values in schema order.
#include <gtest/gtest.h>

#include <vector>

#include "capi_device.h"

namespace {

using namespace capi_test;

class CdbObjects : public CapiTest {
protected:
    // What a bay has: number, side, note, height, tag, door, door/width, door/code, door/lock, door/lock/turns, crate,
    // status.
    static constexpr int kBayNodes = 12;

    // Reads entries and prints their values, one entry after the other; the result itself is in `most`.
    std::vector<std::string> objects(int n, int first, int count, const char* path = "/depot/bay")
    {
        std::vector<confd_value_t> values(static_cast<std::size_t>(n) * static_cast<std::size_t>(count) + 1,
                                          untouched());
        most = cdb_get_objects(cdb, values.data(), n, first, count, path);
        std::vector<std::string> out;
        for (confd_value_t& value : values) {
            out.push_back(taken(&value));
        }
        EXPECT_EQ(out.back(), "4711") << "written beyond the array";
        out.pop_back();
        return out;
    }

    static confd_value_t untouched() { return u32(4711); }

    int most = -7;
};

TEST_F(CdbObjects, EveryNode_StandsAtItsPlaceInTheSchema)
{
    stored(bay(1, "left",
               "<note>n</note><height>50</height><tag>b</tag><tag>a</tag><door><width>-2</width><code>8</code>"
               "<lock><turns>5</turns></lock></door><crate><id>1</id></crate><status>up</status>"));
    open();
    EXPECT_EQ(objects(kBayNodes, 0, 1), (std::vector<std::string>{"1", "enum<1>", "n", "50", "[a b]", "door", "-2", "8",
                                                                  "lock", "5", "no value", "enum<1>"}));
    EXPECT_EQ(most, kBayNodes);
    expect_nothing_open();
}

TEST_F(CdbObjects, AbsentNodes_AreNoValuesAndDefaultsStandWhereTheirParentIs)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(objects(kBayNodes, 0, 1),
              (std::vector<std::string>{"1", "enum<1>", "no value", "40", "no value", "door", "no value", "7",
                                        "no value", "no value", "no value", "4711"}))
        << "the lock is not there: one value, and none for its leaf";
    EXPECT_EQ(most, kBayNodes - 1);
}

// A presence container that is not there hides containers in it, too.
TEST_F(CdbObjects, AbsentPresenceContainer_IsOneValue)
{
    const auto schema = Schema::from_modules({{"yard", R"(
module yard {
  yang-version 1.1; namespace "urn:test:yard"; prefix yard;
  list lot {
    key id;
    leaf id { type uint32; }
    container fence {
      presence "has a fence";
      leaf height { type uint32; default 2; }
      container gate { leaf width { type uint32; } leaf open { type empty; } }
      list post { key id; leaf id { type uint32; } }
    }
    leaf paved { type empty; }
  }
})"}});
    Device::Options options;
    options.schema = schema;
    options.port = CONFD_PORT + 1;
    Device yard(options);
    yard.load_text(
        "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
        "<lot xmlns=\"urn:test:yard\"><id>1</id><paved/></lot><lot xmlns=\"urn:test:yard\"><id>2</id>"
        "<fence><gate><open/></gate></fence></lot></config>");
    cdb = yard.open_upgrade().cdb_socket;
    EXPECT_EQ(objects(8, 0, 2, "/lot"),
              (std::vector<std::string>{"1", "no value", "paved", "4711", "4711", "4711", "4711", "4711",  //
                                        "2", "fence", "2", "gate", "no value", "open", "no value", "no value"}));
    EXPECT_EQ(most, 8);
}

TEST_F(CdbObjects, SeveralEntries_StandOneAfterAnother)
{
    stored(bay(1, "left") + bay(2, "left") + bay(3, "right"));
    open();
    EXPECT_EQ(objects(2, 1, 2), (std::vector<std::string>{"2", "enum<1>", "3", "enum<2>"}));
    EXPECT_EQ(most, kBayNodes - 1) << "more than there was room for";
}

TEST_F(CdbObjects, MoreRoomThanNodes_LeavesTheRestAlone)
{
    stored("<shelf><name>a</name><depth>3</depth></shelf><shelf><name>b</name></shelf>");
    open();
    EXPECT_EQ(objects(3, 0, 2, "/depot/shelf"), (std::vector<std::string>{"a", "3", "4711", "b", "no value", "4711"}));
    EXPECT_EQ(most, 2);
}

TEST_F(CdbObjects, RangePastTheEnd_DoesNotExist)
{
    stored(bay(1, "left") + bay(2, "left"));
    open();
    confd_value_t values[6] = {};
    const std::string why = "/depot/bay: the list has 2 entries";
    for (const auto& [first, count] :
         {std::pair<int, int>{0, 3}, {2, 1}, {1, 2}, {3, 0}, {-1, 1}, {0, -1}, {1, 2147483647}}) {
        EXPECT_TRUE(fails(cdb_get_objects(cdb, values, 2, first, count, "/depot/bay"), CONFD_ERR_NOEXISTS,
                          "cdb_get_objects", why))
            << first << " " << count;
    }
    EXPECT_EQ(cdb_get_objects(cdb, values, 2, 2, 0, "/depot/bay"), 0) << "none, from the end";
    EXPECT_EQ(cdb_get_objects(cdb, values, 2, 0, 0, "/depot/bay{9 left}/crate"), 0) << "none of an empty list";
    EXPECT_TRUE(fails(cdb_get_objects(cdb, values, 2, 0, 1, "/depot/bay{9 left}/crate"), CONFD_ERR_NOEXISTS,
                      "cdb_get_objects", "/depot/bay{9 left}/crate: the list has 0 entries"));
}

TEST_F(CdbObjects, WhatIsNoList_IsBadPath)
{
    stored(bay(1, "left") + "<free>1</free>");
    open();
    confd_value_t value;
    EXPECT_TRUE(fails(cdb_get_objects(cdb, &value, 1, 0, 1, "/depot/kinds"), CONFD_ERR_BADPATH, "cdb_get_objects",
                      "/depot/kinds: not a list"));
    EXPECT_TRUE(fails(cdb_get_objects(cdb, &value, 1, 0, 1, "/depot/free"), CONFD_ERR_BADPATH, "cdb_get_objects",
                      "/depot/free: not a list"));
    EXPECT_TRUE(fails(cdb_get_objects(cdb, &value, 1, 0, 1, "/depot/bay{1 left}"), CONFD_ERR_BADPATH, "cdb_get_objects",
                      "/depot/bay{1 left}: neither a list nor a leaf-list"));
}

}  // namespace
