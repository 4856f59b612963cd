// MAAPI reads: the transaction as it stands, and the handles that name it.
#include <gtest/gtest.h>
#include <unistd.h>

#include "capi_device.h"

namespace {

using namespace capi_test;

using MaapiRead = CapiTest;

TEST_F(MaapiRead, Transaction_BeginsAsTheStoredConfiguration)
{
    stored("<label>west</label><free>5</free>" + bay(1, "left", "<note>n</note>"));
    open();
    EXPECT_EQ(leaf("/depot/label"), "west");
    EXPECT_EQ(leaf("/depot/bay{%u left}/note", 1U), "n");
    EXPECT_EQ(leaf("/depot/bay{1 left}/height"), "40") << "its default";
    EXPECT_EQ(leaf("/depot/bay{1 left}/status"), "-");
    EXPECT_EQ(leaf("/depot/bay{2 left}/height"), "-") << "no entry, no default";
    EXPECT_EQ(leaf("/depot/free"), "[5]");
    expect_nothing_open();
}

TEST_F(MaapiRead, EarlierWrites_AreSeen)
{
    stored("<label>west</label>" + bay(1, "left"));
    open();
    ASSERT_EQ(maapi_set_elem2(maapi, th, "east", "/depot/label"), CONFD_OK);
    ASSERT_EQ(maapi_create(maapi, th, "/depot/bay{2 left}"), CONFD_OK);
    ASSERT_EQ(maapi_delete(maapi, th, "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/label"), "east");
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{2 left}"), 1);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}"), 0);
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay"), 1);
}

TEST_F(MaapiRead, ExistsAndCount_AnswerAsCdbDoes)
{
    stored(bay(1, "left", "<tag>a</tag><tag>b</tag>"));
    open();
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/tag{a}"), 1);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/tag{c}"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/alarm"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{9 left}/crate{1}"), 0);
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay{1 left}/tag"), 2);
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay{9 left}/crate"), 0);
    EXPECT_TRUE(fails(maapi_num_instances(maapi, th, "/depot/label"), CONFD_ERR_BADPATH, "maapi_num_instances",
                      "/depot/label: neither a list nor a leaf-list"));
    EXPECT_TRUE(fails(maapi_exists(maapi, th, "/depot/bay{1}"), CONFD_ERR_BADPATH, "maapi_exists",
                      "/depot/bay{1}: the list bay has 2 keys, not 1"));
}

TEST_F(MaapiRead, TypedReads_TakeTheirTypeAlone)
{
    stored(bay(7, "right"));
    open();
    uint32_t number = 0;
    uint16_t height = 0;
    int32_t side = 0;
    EXPECT_EQ(maapi_get_u_int32_elem(maapi, th, &number, "/depot/bay{7 right}/number"), CONFD_OK);
    EXPECT_EQ(maapi_get_u_int16_elem(maapi, th, &height, "/depot/bay{7 right}/height"), CONFD_OK);
    EXPECT_EQ(maapi_get_enum_value_elem(maapi, th, &side, "/depot/bay{7 right}/side"), CONFD_OK);
    EXPECT_EQ(number, 7U);
    EXPECT_EQ(height, 40U);
    EXPECT_EQ(side, 2);
    EXPECT_TRUE(fails(maapi_get_u_int32_elem(maapi, th, &number, "/depot/bay{7 right}/height"), CONFD_ERR_BADTYPE,
                      "maapi_get_u_int32_elem", "/depot/bay{7 right}/height: the leaf is a uint16"));
    EXPECT_TRUE(fails(maapi_get_u_int16_elem(maapi, th, &height, "/depot/bay{7 right}/number"), CONFD_ERR_BADTYPE,
                      "maapi_get_u_int16_elem", "/depot/bay{7 right}/number: the leaf is a uint32"));
    EXPECT_TRUE(fails(maapi_get_enum_value_elem(maapi, th, &side, "/depot/label"), CONFD_ERR_BADTYPE,
                      "maapi_get_enum_value_elem", "/depot/label: the leaf is a string"));
    EXPECT_TRUE(fails(maapi_get_u_int32_elem(maapi, th, &number, "/depot/bay{8 right}/number"), CONFD_ERR_NOEXISTS,
                      "maapi_get_u_int32_elem", "/depot/bay{8 right}/number"));
    EXPECT_EQ(number, 7U) << "left alone by a failure";
}

TEST_F(MaapiRead, UnknownHandle_IsNoTransaction)
{
    open();
    const auto refused = [this](int thandle) {
        return fails(maapi_exists(maapi, thandle, "/depot"), CONFD_ERR_NOTRANS, "maapi_exists",
                     "/depot: no transaction " + std::to_string(thandle) + " on the socket");
    };
    EXPECT_TRUE(refused(th + 1));
    EXPECT_TRUE(refused(-1));
    EXPECT_EQ(maapi_exists(maapi, th, "/depot"), 1);
}

TEST_F(MaapiRead, HandleOfADroppedTransaction_IsNotKnownAgain)
{
    open();
    const int dropped = th;
    device.drop();
    open();
    ASSERT_NE(th, dropped);
    EXPECT_EQ(maapi_create(maapi, dropped, "/depot/bay{1 left}"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay"), 0);
}

TEST_F(MaapiRead, TransactionThatEnded_IsNotKnownAnyMore)
{
    for (const bool committed : {false, true}) {
        open();
        maapi_cursor cursor;
        ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/bay"), CONFD_OK);
        committed ? device.commit() : device.drop();
        const std::string gone = "no transaction " + std::to_string(th) + " on the socket";
        EXPECT_TRUE(fails(maapi_exists(maapi, th, "/depot"), CONFD_ERR_NOTRANS, "maapi_exists", "/depot: " + gone));
        EXPECT_TRUE(fails(maapi_get_next(&cursor), CONFD_ERR_NOTRANS, "maapi_get_next", "/depot/bay: " + gone));
        maapi_destroy_cursor(&cursor);
    }
}

TEST_F(MaapiRead, SocketsOfADroppedTransaction_AreClosed)
{
    open();
    device.drop();
    EXPECT_EQ(close(maapi), -1);
    EXPECT_TRUE(fails(cdb_exists(maapi, "/depot"), CONFD_ERR_OS, "cdb_exists",
                      "/depot: socket " + std::to_string(maapi) + " is not connected to a device"));
    EXPECT_TRUE(fails(cdb_exists(cdb, "/depot"), CONFD_ERR_OS, "cdb_exists",
                      "/depot: socket " + std::to_string(cdb) + " is not connected to a device"));
}

}  // namespace
