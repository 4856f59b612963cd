// The recorder and the counts: what the program asked of the C API, and what it was answered.
#include <gtest/gtest.h>

#include <cstdlib>

#include "capi_device.h"

namespace {

using namespace capi_test;

class Recorded : public CapiTest {
protected:
    // The calls recorded since the last time, as lines.
    std::string lines()
    {
        std::string out;
        for (const auto& call : device.recorder().calls()) {
            out += call.text() + "\n";
        }
        device.recorder().clear();
        return out;
    }

    void record()
    {
        open();
        device.recorder().start();
    }
};

TEST_F(Recorded, Reads_ShowPathAndResult)
{
    stored("<label>w</label><free>1</free>" + bay(1, "left"));
    record();
    confd_value_t value;
    confd_value_t* values = nullptr;
    int count = 0;
    int32_t side = 0;
    uint16_t height = 0;
    cdb_get(cdb, &value, "/depot/bay{%u left}/number", 1U);
    cdb_get(cdb, &value, "/depot/bay{%u left}/note", 1U);
    cdb_get_enum_value(cdb, &side, "/depot/bay[%d]/side", 0);
    cdb_get_u_int16(cdb, &height, "/depot/bay[0]/height");
    ASSERT_EQ(cdb_get_list(cdb, &values, &count, "/depot/free"), CONFD_OK);
    std::free(values);
    cdb_exists(cdb, "/depot/bay{2 left}");
    cdb_num_instances(cdb, "/depot/bay");
    cdb_get_objects(cdb, &value, 1, 0, 1, "/depot/bay");
    confd_tag_value_t tagged;
    CONFD_SET_TAG_NOEXISTS(&tagged, confd_str2hash("number"));
    cdb_get_values(cdb, &tagged, 1, "/depot/bay[0]");
    EXPECT_EQ(lines(),
              "cdb_get /depot/bay{1 left}/number -> 0\n"
              "cdb_get /depot/bay{1 left}/note -> -1 (item does not exist)\n"
              "cdb_get_enum_value /depot/bay[0]/side -> 0\n"
              "cdb_get_u_int16 /depot/bay[0]/height -> 0\n"
              "cdb_get_list /depot/free -> 0\n"
              "cdb_exists /depot/bay{2 left} -> 0\n"
              "cdb_num_instances /depot/bay -> 1\n"
              "cdb_get_objects /depot/bay 1 values of 1 entries from 0 -> 11\n"
              "cdb_get_values /depot/bay[0] 1 values -> 0\n");
}

TEST_F(Recorded, Writes_ShowWhatTheyBring)
{
    stored(bay(1, "left"));
    record();
    confd_value_t status = enumeration(2);
    confd_value_t wrong = u32(9);
    confd_value_t keys[] = {u32(2), enumeration(2)};
    confd_tag_value_t tagged;
    CONFD_SET_TAG_UINT32(&tagged, confd_str2hash("number"), 1);
    maapi_create(maapi, th, "/depot/bay{%u %s}", 3U, "right");
    maapi_set_elem(maapi, th, &status, "/depot/bay{1 left}/status");
    maapi_set_elem(maapi, th, &wrong, "/depot/bay{1 left}/status");
    maapi_set_elem2(maapi, th, "a note", "/depot/bay{1 left}/note");
    maapi_set_values(maapi, th, &tagged, 1, "/depot/bay{1 left}");
    maapi_move(maapi, th, keys, 2, "/depot/bay{1 left}");
    confd_value_t crate = u32(8);
    maapi_move(maapi, th, &crate, 1, "/depot/bay{2 right}/crate{7}");
    maapi_delete(maapi, th, "/depot/bay{1 left}");
    EXPECT_EQ(lines(),
              "maapi_create /depot/bay{3 right} -> 0\n"
              "maapi_set_elem /depot/bay{1 left}/status down -> 0\n"
              "maapi_set_elem /depot/bay{1 left}/status 9 -> -1 (bad type)\n"
              "maapi_set_elem2 /depot/bay{1 left}/note a note -> 0\n"
              "maapi_set_values /depot/bay{1 left} 1 values -> 0\n"
              "maapi_move /depot/bay{1 left} to /depot/bay{2 right} -> 0\n"
              "maapi_move /depot/bay{2 right}/crate{7} to /depot/bay{2 right}/crate{8} -> -1 (item does not exist)\n"
              "maapi_delete /depot/bay{1 left} -> -1 (item does not exist)\n");
}

TEST_F(Recorded, TransactionReadsAndCursors_AreShownToo)
{
    stored(bay(1, "left"));
    record();
    uint32_t number = 0;
    uint16_t height = 0;
    int32_t side = 0;
    confd_value_t value;
    maapi_exists(maapi, th, "/depot/bay{1 left}");
    maapi_num_instances(maapi, th, "/depot/bay");
    maapi_get_elem(maapi, th, &value, "/depot/bay{1 left}/number");
    maapi_get_u_int32_elem(maapi, th, &number, "/depot/bay{1 left}/number");
    maapi_get_u_int16_elem(maapi, th, &height, "/depot/bay{1 left}/height");
    maapi_get_enum_value_elem(maapi, th, &side, "/depot/bay{1 left}/side");
    maapi_cursor cursor;
    maapi_init_cursor(maapi, th, &cursor, "/depot/bay");
    maapi_get_next(&cursor);
    confd_value_t keys[] = {u32(1), enumeration(2)};
    maapi_find_next(&cursor, CONFD_FIND_NEXT, keys, 2);
    maapi_find_next(&cursor, CONFD_FIND_SAME_OR_NEXT, keys, 1);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(lines(),
              "maapi_exists /depot/bay{1 left} -> 1\n"
              "maapi_num_instances /depot/bay -> 1\n"
              "maapi_get_elem /depot/bay{1 left}/number -> 0\n"
              "maapi_get_u_int32_elem /depot/bay{1 left}/number -> 0\n"
              "maapi_get_u_int16_elem /depot/bay{1 left}/height -> 0\n"
              "maapi_get_enum_value_elem /depot/bay{1 left}/side -> 0\n"
              "maapi_init_cursor /depot/bay -> 0\n"
              "maapi_get_next /depot/bay -> 0\n"
              "maapi_find_next /depot/bay after {1 right} -> 0\n"
              "maapi_find_next /depot/bay from {1} -> 0\n");
}

TEST_F(Recorded, SessionCalls_AreShownToo)
{
    record();
    cdb_end_session(cdb);
    cdb_start_session(cdb, CDB_RUNNING);
    cdb_set_namespace(cdb, 82011741);
    maapi_set_namespace(maapi, th, 17);
    confd_data_set_timeout(device.transaction_context(), 30);
    cdb_close(cdb);
    EXPECT_EQ(lines(),
              "cdb_end_session -> 0\n"
              "cdb_start_session -> 0\n"
              "cdb_set_namespace 82011741 -> 0\n"
              "maapi_set_namespace 17 -> -1 (item does not exist)\n"
              "confd_data_set_timeout 30 -> 0\n"
              "cdb_close -> 0\n");
}

TEST_F(Recorded, Passwords_AreMaskedEverywhere)
{
    record();
    confd_value_t secret = text_value("open sesame");
    EXPECT_EQ(maapi_set_elem(maapi, th, &secret, "/depot/gatePassword"), CONFD_OK);
    EXPECT_EQ(maapi_set_elem2(maapi, th, "open sesame", "/depot/gatePassword"), CONFD_OK);
    confd_value_t wrong = octets("open sesame");
    EXPECT_EQ(maapi_set_elem(maapi, th, &wrong, "/depot/gatePassword"), CONFD_ERR);
    EXPECT_STREQ(confd_lasterr(), "maapi_set_elem: bad type: /depot/gatePassword: the leaf is a string");
    EXPECT_EQ(lines(),
              "maapi_set_elem /depot/gatePassword ******** -> 0\n"
              "maapi_set_elem2 /depot/gatePassword ******** -> 0\n"
              "maapi_set_elem /depot/gatePassword ******** -> -1 (bad type)\n");
    EXPECT_EQ(leaf("/depot/gatePassword"), "open sesame") << "the value itself is untouched";
}

TEST_F(Recorded, PathThatDoesNotResolve_IsShownAsItWasMeant)
{
    record();
    const confd_value_t side = enumeration(2);
    cdb_exists(cdb, "/depot/dock{%u %x}", 5U, &side);
    cdb_exists(cdb, "/depot/bay{%x %x}", &side, &side);
    EXPECT_EQ(lines(),
              "cdb_exists /depot/dock{5 enum<2>} -> -1 (bad path)\n"
              "cdb_exists /depot/bay{enum<2> right} -> -1 (bad type)\n");
}

TEST_F(Recorded, NothingIsKeptWhileTheRecorderIsOff)
{
    open();
    cdb_exists(cdb, "/depot");
    EXPECT_EQ(lines(), "");
    device.recorder().start();
    cdb_exists(cdb, "/depot");
    device.recorder().stop();
    cdb_exists(cdb, "/depot/label");
    EXPECT_EQ(lines(), "cdb_exists /depot -> 1\n");
}

TEST_F(Recorded, CountsAreKeptAlways)
{
    stored(bay(1, "left"));
    open();
    cdb_exists(cdb, "/depot");
    cdb_exists(cdb, "/depot/dock");
    maapi_create(maapi, th, "/depot/bay{2 left}");
    maapi_create(maapi, th, "/depot/bay{1 left}");
    maapi_delete(maapi, th, "/depot/bay{7 left}");
    const auto& counts = device.calls();
    EXPECT_EQ(counts.of(Function::cdb_exists), 2U);
    EXPECT_EQ(counts.failures[static_cast<std::size_t>(Function::cdb_exists)], 1U);
    EXPECT_EQ(counts.of(Function::maapi_create), 2U);
    EXPECT_EQ(counts.reads(), 2U);
    EXPECT_EQ(counts.writes(), 3U);
    EXPECT_EQ(counts.failed_write_count(), 2U);
}

}  // namespace
