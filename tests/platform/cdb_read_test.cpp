// CDB reads of leaves, leaf-lists, lists and existence.
#include <gtest/gtest.h>

#include <cstdlib>

#include "capi_device.h"

namespace {

using namespace capi_test;

class CdbRead : public CapiTest {
protected:
    // A leaf's text and type, as "12 65010".
    std::string get(const char* path)
    {
        confd_value_t value;
        if (cdb_get(cdb, &value, path) != CONFD_OK) {
            return confd_lasterr();
        }
        const std::string type = std::to_string(value.type);
        return type + " " + taken(&value);
    }
};

TEST_F(CdbRead, LeafOfEachType_ComesInItsOwnType)
{
    stored(
        "<kinds><i8>-8</i8><i16>-16</i16><i32>-32</i32><i64>-64</i64><u8>8</u8><u16>16</u16><u32>32</u32>"
        "<u64>64</u64><flag>true</flag><ipv4>192.0.2.1</ipv4><ipv6>2001:db8::1</ipv6><ip>2001:db8::2</ip>"
        "<prefix>192.0.2.0/24</prefix><octets>0a:00:ff</octets><mark/></kinds><label>west</label>" +
        bay(1, "right"));
    open();
    EXPECT_EQ(get("/depot/kinds/i8"), "6 -8");
    EXPECT_EQ(get("/depot/kinds/i16"), "7 -16");
    EXPECT_EQ(get("/depot/kinds/i32"), "8 -32");
    EXPECT_EQ(get("/depot/kinds/i64"), "9 -64");
    EXPECT_EQ(get("/depot/kinds/u8"), "10 8");
    EXPECT_EQ(get("/depot/kinds/u16"), "11 16");
    EXPECT_EQ(get("/depot/kinds/u32"), "12 32");
    EXPECT_EQ(get("/depot/kinds/u64"), "13 64");
    EXPECT_EQ(get("/depot/kinds/flag"), "17 true");
    EXPECT_EQ(get("/depot/kinds/ipv4"), "15 192.0.2.1");
    EXPECT_EQ(get("/depot/kinds/ipv6"), "16 2001:db8::1");
    EXPECT_EQ(get("/depot/kinds/ip"), "16 2001:db8::2");
    EXPECT_EQ(get("/depot/kinds/prefix"), "40 192.0.2.0/24");
    EXPECT_EQ(get("/depot/kinds/octets"), "39 0a00ff");
    EXPECT_EQ(get("/depot/kinds/mark"), "2 mark");
    EXPECT_EQ(get("/depot/label"), "5 west");
    EXPECT_EQ(get("/depot/bay{1 right}/side"), "28 enum<2>");
    EXPECT_EQ(get("/depot/bay{1 right}/number"), "12 1");
    expect_nothing_open();
}

TEST_F(CdbRead, Text_IsTerminatedBeyondItsSize)
{
    stored("<label>a text longer than fifteen</label><kinds><octets>01:02</octets></kinds>");
    open();
    confd_value_t value;
    ASSERT_EQ(cdb_get(cdb, &value, "/depot/label"), CONFD_OK);
    EXPECT_EQ(CONFD_GET_BUFSIZE(&value), 26U);
    EXPECT_STREQ(CONFD_GET_CBUFPTR(&value), "a text longer than fifteen");
    confd_free_value(&value);
    ASSERT_EQ(cdb_get(cdb, &value, "/depot/kinds/octets"), CONFD_OK);
    EXPECT_EQ(CONFD_GET_BINARY_SIZE(&value), 2U);
    EXPECT_STREQ(reinterpret_cast<const char*>(CONFD_GET_BINARY_PTR(&value)), "\x01\x02");
    confd_free_value(&value);
}

TEST_F(CdbRead, UnsetLeaf_HasItsDefaultWhereItsParentIs)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(get("/depot/bay{1 left}/height"), "11 40");
    EXPECT_EQ(get("/depot/bay{1 left}/door/code"), "12 7") << "a container without presence is always there";
    EXPECT_EQ(get("/depot/bay{2 left}/height"), "cdb_get: item does not exist: /depot/bay{2 left}/height");
    EXPECT_EQ(get("/depot/alarm/delay"), "cdb_get: item does not exist: /depot/alarm/delay") << "no alarm";
    EXPECT_EQ(get("/depot/bay{1 left}/note"), "cdb_get: item does not exist: /depot/bay{1 left}/note");
}

TEST_F(CdbRead, PresenceContainerThatIsThere_GivesItsLeavesTheirDefaults)
{
    stored("<alarm/>" + bay(1, "left", "<door><lock/></door>"));
    open();
    EXPECT_EQ(get("/depot/alarm/delay"), "12 9");
    EXPECT_EQ(get("/depot/bay{1 left}/door/lock/turns"), "12 2");
}

TEST_F(CdbRead, NodeThatHoldsNoValue_IsBadPath)
{
    stored(bay(1, "left", "<tag>a</tag>"));
    open();
    const std::string why = ": neither a leaf nor a leaf-list";
    EXPECT_EQ(get("/depot/bay"), "cdb_get: bad path: /depot/bay" + why);
    EXPECT_EQ(get("/depot/bay{1 left}"), "cdb_get: bad path: /depot/bay{1 left}" + why);
    EXPECT_EQ(get("/depot/kinds"), "cdb_get: bad path: /depot/kinds" + why);
    EXPECT_EQ(get("/depot/bay{1 left}/tag{a}"), "cdb_get: bad path: /depot/bay{1 left}/tag{a}" + why);
}

TEST_F(CdbRead, FailedRead_LeavesTheResultAlone)
{
    open();
    confd_value_t value = u32(77);
    int32_t number = 55;
    uint16_t small = 33;
    EXPECT_EQ(cdb_get(cdb, &value, "/depot/label"), CONFD_ERR);
    EXPECT_EQ(cdb_get_enum_value(cdb, &number, "/depot/bay{1 left}/side"), CONFD_ERR);
    EXPECT_EQ(cdb_get_u_int16(cdb, &small, "/depot/bay{1 left}/height"), CONFD_ERR);
    EXPECT_EQ(printed(value), "77");
    EXPECT_EQ(number, 55);
    EXPECT_EQ(small, 33);
}

TEST_F(CdbRead, Position_CountsInListOrder)
{
    stored(bay(2, "left") + bay(1, "right") + bay(10, "left") + bay(1, "left"));
    open();
    EXPECT_EQ(get("/depot/bay[0]/side"), "28 enum<1>");
    EXPECT_EQ(get("/depot/bay[1]/side"), "28 enum<2>");
    EXPECT_EQ(get("/depot/bay[2]/number"), "12 2");
    EXPECT_EQ(get("/depot/bay[3]/number"), "12 10") << "numbers by value";
    EXPECT_EQ(get("/depot/bay[4]/number"), "cdb_get: item does not exist: /depot/bay[4]/number");
}

TEST_F(CdbRead, Lists_AreSortedByTheNaturalOrderOfTheirKeys)
{
    stored(
        "<shelf><name>b</name></shelf><shelf><name>ab</name></shelf><shelf><name>a</name></shelf>"
        "<port><address>0b</address></port><port><address>0a:ff</address></port><port><address>0a</address></port>"
        "<free>30</free><free>4</free><free>200</free>");
    open();
    EXPECT_EQ(get("/depot/shelf[0]/name"), "5 a");
    EXPECT_EQ(get("/depot/shelf[1]/name"), "5 ab") << "a shorter one first when it is a prefix";
    EXPECT_EQ(get("/depot/shelf[2]/name"), "5 b");
    EXPECT_EQ(get("/depot/port[0]/address"), "39 0a");
    EXPECT_EQ(get("/depot/port[1]/address"), "39 0aff");
    EXPECT_EQ(get("/depot/free"), "31 [4 30 200]");
}

TEST_F(CdbRead, TypedRead_TakesItsTypeAlone)
{
    stored("<label>west</label><free>1</free>" + bay(1, "right", "<status>down</status>"));
    open();
    int32_t number = 0;
    uint16_t small = 0;
    EXPECT_EQ(cdb_get_enum_value(cdb, &number, "/depot/bay{1 right}/side"), CONFD_OK);
    EXPECT_EQ(number, 2);
    EXPECT_EQ(cdb_get_u_int16(cdb, &small, "/depot/bay{1 right}/height"), CONFD_OK);
    EXPECT_EQ(small, 40) << "its default";
    EXPECT_TRUE(fails(cdb_get_enum_value(cdb, &number, "/depot/label"), CONFD_ERR_BADTYPE, "cdb_get_enum_value",
                      "/depot/label: the leaf is a string"));
    EXPECT_TRUE(fails(cdb_get_u_int16(cdb, &small, "/depot/bay{1 right}/number"), CONFD_ERR_BADTYPE, "cdb_get_u_int16",
                      "/depot/bay{1 right}/number: the leaf is a uint32"));
    EXPECT_TRUE(fails(cdb_get_u_int16(cdb, &small, "/depot/free"), CONFD_ERR_BADTYPE, "cdb_get_u_int16",
                      "/depot/free: the leaf is a uint16"))
        << "a leaf-list is no number";
    EXPECT_TRUE(fails(cdb_get_enum_value(cdb, &number, "/depot/bay{2 right}/side"), CONFD_ERR_NOEXISTS,
                      "cdb_get_enum_value", "/depot/bay{2 right}/side"));
    EXPECT_EQ(cdb_get_enum_value(cdb, &number, "/depot/bay"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
}

TEST_F(CdbRead, LeafList_ComesAsAnArray)
{
    stored(bay(1, "left", "<tag>two</tag><tag>a text longer than fifteen</tag>"));
    open();
    confd_value_t* values = nullptr;
    int count = 0;
    ASSERT_EQ(cdb_get_list(cdb, &values, &count, "/depot/bay{%u left}/tag", 1U), CONFD_OK);
    ASSERT_EQ(count, 2);
    EXPECT_EQ(taken(&values[0]), "a text longer than fifteen");
    EXPECT_EQ(taken(&values[1]), "two");
    std::free(values);
    expect_nothing_open();
}

TEST_F(CdbRead, EmptyLeafList_DoesNotExist)
{
    stored(bay(1, "left"));
    open();
    confd_value_t* values = nullptr;
    int count = 0;
    EXPECT_TRUE(fails(cdb_get_list(cdb, &values, &count, "/depot/bay{1 left}/tag"), CONFD_ERR_NOEXISTS, "cdb_get_list",
                      "/depot/bay{1 left}/tag"));
    EXPECT_EQ(get("/depot/free"), "cdb_get: item does not exist: /depot/free");
    EXPECT_TRUE(fails(cdb_get_list(cdb, &values, &count, "/depot/label"), CONFD_ERR_BADPATH, "cdb_get_list",
                      "/depot/label: not a leaf-list"));
    EXPECT_EQ(values, nullptr);
}

TEST_F(CdbRead, Exists_TellsOfEveryKindOfNode)
{
    stored("<free>7</free>" + bay(1, "left", "<note>x</note>"));
    open();
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay{1 left}"), 1);
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay{1 right}"), 0);
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay[0]"), 1);
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay[1]"), 0);
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay{1 left}/note"), 1);
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay{1 left}/status"), 0);
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay{1 left}/height"), 1) << "by its default";
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay{2 left}/height"), 0);
    EXPECT_EQ(cdb_exists(cdb, "/depot/free{7}"), 1);
    EXPECT_EQ(cdb_exists(cdb, "/depot/free{8}"), 0);
    EXPECT_EQ(cdb_exists(cdb, "/depot/alarm"), 0);
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay{2 left}/crate"), 0) << "below an entry that is not there";
    EXPECT_EQ(cdb_exists(cdb, "/depot/dock"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
}

TEST_F(CdbRead, Count_IsOfListsAndLeafLists)
{
    stored("<free>7</free><free>9</free>" + bay(1, "left", "<crate><id>1</id></crate>") + bay(2, "left"));
    open();
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/bay"), 2);
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/free"), 2);
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/bay{1 left}/crate"), 1);
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/bay[1]/crate"), 0);
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/shelf"), 0);
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/bay{3 left}/crate"), 0) << "below an entry that is not there";
    const std::string why = ": neither a list nor a leaf-list";
    EXPECT_TRUE(
        fails(cdb_num_instances(cdb, "/depot/kinds"), CONFD_ERR_BADPATH, "cdb_num_instances", "/depot/kinds" + why));
    EXPECT_TRUE(fails(cdb_num_instances(cdb, "/depot/bay{1 left}"), CONFD_ERR_BADPATH, "cdb_num_instances",
                      "/depot/bay{1 left}" + why));
}

TEST_F(CdbRead, TransactionsWrites_AreNotSeen)
{
    stored("<label>old</label>");
    open();
    ASSERT_EQ(maapi_set_elem2(maapi, th, "new", "/depot/label"), CONFD_OK);
    ASSERT_EQ(maapi_create(maapi, th, "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(get("/depot/label"), "5 old");
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/bay"), 0);
}

}  // namespace
