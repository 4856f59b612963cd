// Planned failures: which calls they hit, and that a hit call does no work.
#include <gtest/gtest.h>

#include "capi_device.h"
#include "support/change_lines.h"

namespace {

using namespace capi_test;
using bgp_platform::capi::PlannedFailure;

class Planned : public CapiTest {
protected:
    // Results of five calls in a row, as "1 1 -1 1 1".
    std::string five(const char* path = "/depot/bay{1 left}")
    {
        std::string out;
        for (int i = 0; i < 5; ++i) {
            out += (i == 0 ? "" : " ") + std::to_string(maapi_exists(maapi, th, path));
        }
        return out;
    }

    void SetUp() override
    {
        stored(bay(1, "left"));
        open();
    }
};

TEST_F(Planned, NthCall_FailsAlone)
{
    device.fault_plan().fail_call(3);
    EXPECT_EQ(five(), "1 1 -1 1 1");
    EXPECT_EQ(confd_errno, CONFD_ERR_INTERNAL);
    EXPECT_STREQ(confd_lasterr(), "maapi_exists: internal error: /depot/bay{1 left}: as planned");
    EXPECT_EQ(device.fault_plan().seen(), 5U);
}

TEST_F(Planned, NthCall_IsCountedFromNow)
{
    device.fault_plan().fail_call(100);
    five();
    device.fault_plan().fail_call(2);
    EXPECT_EQ(five(), "1 -1 1 1 1");
}

TEST_F(Planned, FromThereOn_EveryCallFails)
{
    device.fault_plan().fail_call(3, {}, true);
    EXPECT_EQ(five(), "1 1 -1 -1 -1");
    EXPECT_EQ(five(), "-1 -1 -1 -1 -1");
}

TEST_F(Planned, Cleared_NothingFails)
{
    device.fault_plan().fail_call(1, {}, true);
    device.fault_plan().fail(Function::maapi_exists);
    EXPECT_TRUE(device.fault_plan().active());
    device.fault_plan().clear();
    EXPECT_FALSE(device.fault_plan().active());
    EXPECT_EQ(five(), "1 1 1 1 1");
}

TEST_F(Planned, OneFunction_FailsAndOthersDoNot)
{
    device.fault_plan().fail(Function::maapi_exists);
    EXPECT_EQ(five(), "-1 -1 -1 -1 -1");
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay"), 1);
    EXPECT_EQ(cdb_exists(cdb, "/depot/bay{1 left}"), 1);
}

TEST_F(Planned, OnePath_FailsWithAllThatBeginsWithIt)
{
    device.fault_plan().fail(Function::maapi_exists, "/depot/bay{1 left}");
    EXPECT_EQ(five("/depot/bay{1 left}"), "-1 -1 -1 -1 -1");
    EXPECT_EQ(five("/depot/bay{1 left}/side"), "-1 -1 -1 -1 -1");
    EXPECT_EQ(five("/depot/bay{1 right}"), "0 0 0 0 0");
    EXPECT_EQ(five("/depot/bay"), "1 1 1 1 1");
}

TEST_F(Planned, PathIsMatchedAsItIsPrinted)
{
    device.fault_plan().fail(Function::maapi_exists, "/depot/bay{1 left}/note");
    const confd_value_t keys[] = {u32(1), enumeration(1)};
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{%*x}/note", 2, keys), CONFD_ERR);
    EXPECT_EQ(maapi_exists(maapi, th, "%s/%s", "/depot/bay{1 left}", "note"), CONFD_ERR);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{%u %s}/status", 1U, "left"), 0);
}

TEST_F(Planned, SkipAndTimes_ChooseAmongTheMatchingCalls)
{
    device.fault_plan().fail(Function::maapi_exists, {}, {}, 2, 1);
    EXPECT_EQ(five(), "1 -1 -1 1 1");
    device.fault_plan().clear();
    device.fault_plan().fail(Function::maapi_exists, {}, {}, 0, 3);
    EXPECT_EQ(five(), "1 1 1 -1 -1");
    device.fault_plan().clear();
    device.fault_plan().fail(Function::maapi_exists, {}, {}, 1);
    EXPECT_EQ(five(), "-1 1 1 1 1");
}

TEST_F(Planned, CodeAndResult_AreAsOrdered)
{
    device.fault_plan().fail(Function::maapi_exists, {}, {CONFD_ERR_TIMEOUT, CONFD_ERR}, 1);
    EXPECT_TRUE(
        fails(maapi_exists(maapi, th, "/depot/bay"), CONFD_ERR_TIMEOUT, "maapi_exists", "/depot/bay: as planned"));
    device.fault_plan().fail(Function::maapi_create, {}, PlannedFailure::end_of_file());
    EXPECT_EQ(maapi_create(maapi, th, "/depot/alarm"), CONFD_EOF);
    EXPECT_EQ(confd_errno, CONFD_ERR_EOF);
    EXPECT_STREQ(confd_lasterr(), "maapi_create: connection closed: /depot/alarm: as planned");
}

TEST_F(Planned, WritesThatFail_DoNoWork)
{
    device.fault_plan().fail_call(1, {}, true);
    confd_value_t value = text_value("new");
    confd_value_t keys[] = {u32(2), enumeration(2)};
    confd_tag_value_t tagged;
    CONFD_SET_TAG_STR(&tagged, confd_str2hash("note"), "new");
    EXPECT_EQ(maapi_create(maapi, th, "/depot/bay{2 left}"), CONFD_ERR);
    EXPECT_EQ(maapi_delete(maapi, th, "/depot/bay{1 left}"), CONFD_ERR);
    EXPECT_EQ(maapi_set_elem(maapi, th, &value, "/depot/label"), CONFD_ERR);
    EXPECT_EQ(maapi_set_elem2(maapi, th, "new", "/depot/label"), CONFD_ERR);
    EXPECT_EQ(maapi_set_values(maapi, th, &tagged, 1, "/depot/bay{1 left}"), CONFD_ERR);
    EXPECT_EQ(maapi_move(maapi, th, keys, 2, "/depot/bay{1 left}"), CONFD_ERR);
    EXPECT_EQ(bgp_test::change_lines(device), std::vector<std::string>{});
    EXPECT_EQ(device.calls().failed_write_count(), 6U);
}

TEST_F(Planned, ReadsThatFail_LeaveTheResultAlone)
{
    device.fault_plan().fail_call(1, {}, true);
    confd_value_t value = u32(77);
    confd_value_t* values = nullptr;
    int count = 5;
    EXPECT_EQ(cdb_get(cdb, &value, "/depot/bay{1 left}/side"), CONFD_ERR);
    EXPECT_EQ(cdb_get_objects(cdb, &value, 1, 0, 1, "/depot/bay"), CONFD_ERR);
    EXPECT_EQ(cdb_get_list(cdb, &values, &count, "/depot/free"), CONFD_ERR);
    EXPECT_EQ(printed(value), "77");
    EXPECT_EQ(values, nullptr);
    EXPECT_EQ(count, 5);
    expect_nothing_open();
}

TEST_F(Planned, SessionCallsThatFail_DoNoWork)
{
    device.fault_plan().fail_call(1, {}, true);
    EXPECT_EQ(cdb_end_session(cdb), CONFD_ERR);
    EXPECT_EQ(cdb_set_namespace(cdb, static_cast<int>(confd_str2hash("urn:test:annex"))), CONFD_ERR);
    EXPECT_EQ(confd_data_set_timeout(device.transaction_context(), 5), CONFD_ERR);
    device.fault_plan().clear();
    EXPECT_EQ(cdb_exists(cdb, "/depot"), 1) << "the session is still open";
    EXPECT_EQ(cdb_exists(cdb, "/shared"), CONFD_ERR) << "no namespace is set";
    EXPECT_EQ(device.data_timeout(), -1);
}

TEST_F(Planned, CursorCallsThatFail_LeaveTheCursorWhereItIs)
{
    maapi_cursor cursor;
    device.fault_plan().fail(Function::maapi_init_cursor, {}, {}, 1);
    EXPECT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/bay"), CONFD_ERR);
    maapi_destroy_cursor(&cursor);
    ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/bay"), CONFD_OK);
    device.fault_plan().fail(Function::maapi_get_next, "/depot/bay", {}, 1);
    EXPECT_TRUE(fails(maapi_get_next(&cursor), CONFD_ERR_INTERNAL, "maapi_get_next", "/depot/bay: as planned"));
    EXPECT_EQ(cursor.n, 0);
    EXPECT_EQ(maapi_get_next(&cursor), CONFD_OK);
    EXPECT_EQ(cursor.n, 2) << "the first entry is still to come";
    maapi_destroy_cursor(&cursor);
    expect_nothing_open();
}

TEST_F(Planned, CallsThatFailByThemselves_KeepTheirOwnReason)
{
    device.fault_plan().fail_call(1, {}, true);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/dock"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
    EXPECT_EQ(maapi_exists(maapi, th + 1, "/depot"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
}

}  // namespace
