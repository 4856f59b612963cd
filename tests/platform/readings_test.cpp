// The numbered questions that the published pages leave open: the reading taken of each, and that the device tells which
// of them a run depended on and where.
#include "calls/readings.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <regex.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "capi_device.h"

namespace {

using namespace capi_test;
using bgp_platform::capi::MetReading;

class ReadingsTest : public CapiTest {
protected:
    // "1 /depot/bay x2, 5 /depot/free x1"
    std::string met() const
    {
        std::string all;
        for (const MetReading& reading : device.readings()) {
            all += (all.empty() ? "" : ", ") + std::to_string(reading.number) + " " + reading.place + " x" +
                   std::to_string(reading.count);
        }
        return all;
    }
};

TEST_F(ReadingsTest, PlainRun_DependsOnNone)
{
    stored(bay(1, "left", "<note>dry</note><tag>a</tag>") + "<free>7</free>");
    open();
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{%d left}", 1), 1);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{%d left}", 2), 0);
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay{1 left}/crate"), 0) << "empty, and its entry is there";
    EXPECT_EQ(leaf("/depot/bay{1 left}/note"), "dry");
    EXPECT_EQ(leaf("/depot/label"), "-");
    EXPECT_EQ(maapi_create(maapi, th, "/depot/bay{2 left}"), CONFD_OK);
    EXPECT_EQ(maapi_set_elem2(maapi, th, "wet", "/depot/bay{2 left}/note"), CONFD_OK);
    confd_value_t keys[] = {u32(3), enumeration(2)};
    EXPECT_EQ(maapi_move(maapi, th, keys, 2, "/depot/bay{2 left}"), CONFD_OK);
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/bay"), CONFD_OK);
    while (maapi_get_next(&cursor) == CONFD_OK && cursor.n > 0) {
        EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{%*x}", cursor.n, cursor.keys), 1);
    }
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(maapi_delete(maapi, th, "/depot/bay{3 right}"), CONFD_OK);
    EXPECT_EQ(met(), "");
}

TEST_F(ReadingsTest, ListBelowMissingEntry_IsEmpty)
{
    open();
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay{1 left}/crate"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/crate"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/crate{4}"), 0);
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/bay{1 left}/crate"), 0);
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/bay{1 left}/crate"), CONFD_OK);
    EXPECT_EQ(maapi_get_next(&cursor), CONFD_OK);
    EXPECT_EQ(cursor.n, 0);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(met(), "1 /depot/bay{1 left}/crate x5");
}

TEST_F(ReadingsTest, MoveOntoOwnKeys_SucceedsAndChangesNothing)
{
    stored(bay(1, "left", "<note>dry</note>"));
    open();
    confd_value_t keys[] = {u32(1), enumeration(1)};
    EXPECT_EQ(maapi_move(maapi, th, keys, 2, "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(device.text(Datastore::Transaction), device.text(Datastore::Stored));
    EXPECT_EQ(met(), "2 /depot/bay{1 left} x1");
}

TEST_F(ReadingsTest, SetBelowMissingEntry_IsNoexists)
{
    open();
    EXPECT_TRUE(fails(maapi_set_elem2(maapi, th, "dry", "/depot/bay{1 left}/note"), CONFD_ERR_NOEXISTS,
                      "maapi_set_elem2", "/depot/bay{1 left}/note"));
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}"), 0);
    EXPECT_EQ(met(), "3 /depot/bay{1 left}/note x1");
}

// A crate of the bay with this id: its begin, its key, a content of the type given, its end.
std::vector<confd_tag_value_t> crate(uint32_t id, bool fits)
{
    std::vector<confd_tag_value_t> values(4);
    CONFD_SET_TAG_XMLBEGIN(&values[0], confd_str2hash("crate"), 0);
    CONFD_SET_TAG_UINT32(&values[1], confd_str2hash("id"), id);
    CONFD_SET_TAG_UINT32(&values[2], confd_str2hash("content"), 1);
    if (fits) {
        CONFD_SET_TAG_STR(&values[2], confd_str2hash("content"), "nails");
    }
    CONFD_SET_TAG_XMLEND(&values[3], confd_str2hash("crate"), 0);
    return values;
}

TEST_F(ReadingsTest, RowsBeforeTheFailingOne_StayWritten)
{
    stored(bay(1, "left"));
    open();
    std::vector<confd_tag_value_t> values = crate(1, true);
    const std::vector<confd_tag_value_t> second = crate(2, false);
    values.insert(values.end(), second.begin(), second.end());
    EXPECT_EQ(maapi_set_values(maapi, th, second.data(), 4, "/depot/bay{1 left}"), CONFD_ERR);
    EXPECT_EQ(met(), "") << "nothing stands before the failing one";
    EXPECT_EQ(maapi_set_values(maapi, th, values.data(), 8, "/depot/bay{1 left}"), CONFD_ERR);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/crate{1}"), 1);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/crate{2}"), 0);
    EXPECT_EQ(met(), "4 /depot/bay{1 left} x1");
}

TEST_F(ReadingsTest, EmptyLeafList_ReadsAsNoexists)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(leaf("/depot/free"), "-");
    confd_value_t* values = nullptr;
    int n = 0;
    EXPECT_TRUE(
        fails(cdb_get_list(cdb, &values, &n, "/depot/free"), CONFD_ERR_NOEXISTS, "cdb_get_list", "/depot/free"));
    confd_tag_value_t asked;
    CONFD_SET_TAG_NOEXISTS(&asked, confd_str2hash("tag"));
    EXPECT_EQ(cdb_get_values(cdb, &asked, 1, "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(asked.v.type, C_NOEXISTS);
    EXPECT_EQ(met(), "5 /depot/free x3");
}

TEST_F(ReadingsTest, HostBitsOfPrefix_AreKept)
{
    open();
    EXPECT_EQ(maapi_set_elem2(maapi, th, "192.0.2.0/24", "/depot/kinds/prefix"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/kinds/prefix"), "192.0.2.0/24");
    EXPECT_EQ(maapi_set_elem2(maapi, th, "0.0.0.0/0", "/depot/kinds/prefix"), CONFD_OK);
    EXPECT_EQ(met(), "");
    EXPECT_EQ(maapi_set_elem2(maapi, th, "192.0.2.1/24", "/depot/kinds/prefix"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/kinds/prefix"), "192.0.2.1/24");
    EXPECT_EQ(met(), "6 /depot/kinds/prefix x2");
}

TEST_F(ReadingsTest, ShortNumberInPath_IsTaken)
{
    stored("<free>7</free>");
    open();
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/free{%hu}", static_cast<unsigned short>(7)), 1);
    EXPECT_EQ(met(), "7 /depot/free{7} x1");
}

TEST_F(ReadingsTest, WholeListContainerAndLeafListEntry_AreDeleted)
{
    stored(bay(1, "left", "<door><width>3</width></door>") + "<free>7</free><free>8</free>");
    open();
    EXPECT_EQ(maapi_delete(maapi, th, "/depot/free{7}"), CONFD_OK);
    EXPECT_EQ(maapi_delete(maapi, th, "/depot/bay{1 left}/door"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{1 left}/door/width"), "-");
    EXPECT_EQ(maapi_delete(maapi, th, "/depot/bay"), CONFD_OK);
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay"), 0);
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/free"), 1);
    EXPECT_EQ(met(), "8 /depot/free{7} x3");
}

TEST_F(ReadingsTest, ListOfTenKeys_IsTaken)
{
    open();
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry"), CONFD_OK);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(met(), "9 /DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry x1");
}

TEST_F(ReadingsTest, LettersOfOctets_AreInLowerCase)
{
    confd_value_t value = octets("\x01\x23");
    EXPECT_EQ(printed(value), "0123");
    EXPECT_EQ(met(), "") << "no letters";
    value = octets("\x0A\xBC");
    EXPECT_EQ(printed(value), "0abc");
    char path[64];
    confd_format_keypath(path, sizeof path, "/depot/port{%x}", &value);
    EXPECT_STREQ(path, "/depot/port{0a:bc}");
    EXPECT_EQ(met(), "10 confd_pp_value x2");
}

TEST_F(ReadingsTest, OctetsInTheRecord_AreNoneOfTheProgram)
{
    open();
    device.recorder().start();
    confd_value_t value = octets("\x0A\xBC");
    EXPECT_EQ(maapi_set_elem(maapi, th, &value, "/depot/label"), CONFD_ERR);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/port{%x}", &value), 0);
    EXPECT_EQ(met(), "");
}

TEST_F(ReadingsTest, QuotedKeysAndBlanks_AreTaken)
{
    stored("<shelf><name>a b</name></shelf>");
    open();
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{%s}", "a b"), 1) << "an argument is not quoted";
    EXPECT_EQ(met(), "");
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{\"a b\"}"), 1);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{ %d }", 1), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf/{%d}", 1), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "%s", "/depot/shelf/{1}"), 0);
    char path[64];
    confd_format_keypath(path, sizeof path, "/depot/shelf{%s}", "a b");
    EXPECT_STREQ(path, "/depot/shelf{\"a b\"}");
    EXPECT_EQ(met(), "11 /depot/shelf{\"a b\"} x5");
}

TEST_F(ReadingsTest, EmptyPathIsBadpath_LeafWithDefaultAloneExists)
{
    stored(bay(1, "left"));
    open();
    EXPECT_TRUE(fails(maapi_exists(maapi, th, "%s", ""), CONFD_ERR_BADPATH, "maapi_exists", "an empty path"));
    EXPECT_TRUE(fails(maapi_exists(maapi, th, nullptr), CONFD_ERR_BADPATH, "maapi_exists", "an empty path"));
    EXPECT_EQ(met(), "12 maapi_exists x2");
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/height"), 1);
    EXPECT_EQ(met(), "12 maapi_exists x3");
    EXPECT_EQ(maapi_set_elem2(maapi, th, "40", "/depot/bay{1 left}/height"), CONFD_OK);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/height"), 1);
    EXPECT_EQ(met(), "12 maapi_exists x3") << "it is set";
}

TEST_F(ReadingsTest, SeveralDevices_AreNoticedByTheCallsMeanwhile)
{
    open();
    {
        const Device other;
        EXPECT_EQ(maapi_exists(maapi, th, "/depot/label"), 0);
        EXPECT_EQ(met(), "13 /depot/label x1");
    }
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/label"), 0);
    EXPECT_EQ(met(), "13 /depot/label x1");
}

TEST_F(ReadingsTest, SecondThread_IsToldSoByEachCall)
{
    open();
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/label"), 0);
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/bay"), CONFD_OK);
    const std::string why = "another thread has the platform, one at a time may call";
    testing::internal::CaptureStderr();
    std::thread second([&] {
        EXPECT_TRUE(fails(maapi_exists(maapi, th, "/depot/label"), CONFD_ERR_PROTOUSAGE, "maapi_exists", why));
        EXPECT_TRUE(fails(maapi_get_next(&cursor), CONFD_ERR_PROTOUSAGE, "maapi_get_next", why));
        EXPECT_TRUE(fails(cdb_close(cdb), CONFD_ERR_PROTOUSAGE, "cdb_close", why));
        EXPECT_TRUE(fails(cdb_connect(-1, CDB_READ_SOCKET, nullptr, 0), CONFD_ERR_PROTOUSAGE, "cdb_connect", why));
        maapi_destroy_cursor(&cursor);
    });
    second.join();
    std::string told;
    for (const char* function :
         {"maapi_exists", "maapi_get_next", "cdb_close", "cdb_connect", "maapi_destroy_cursor"}) {
        told += std::string(function) + ": " + confd_strerror(CONFD_ERR_PROTOUSAGE) + ": " + why + "\n";
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), told);
    EXPECT_EQ(met(), "13 maapi_exists x5");
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/label"), 0) << "the first goes on";
    EXPECT_EQ(cdb_exists(cdb, "/depot/label"), 0) << "its socket was not closed";
    EXPECT_EQ(device.open_things().cursors, 1U);
    maapi_destroy_cursor(&cursor);
}

TEST(ReadingsThreads, PlatformWithoutADevice_BelongsToTheNextThread)
{
    const auto run = [] {
        Device device(depot_options());
        const UpgradeHandles upgrade = device.open_upgrade();
        EXPECT_EQ(maapi_exists(upgrade.maapi_socket, upgrade.thandle, "/depot/label"), 0);
        EXPECT_TRUE(device.readings().empty());
    };
    run();
    std::thread(run).join();
    run();
}

std::string contents(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The texts between back quotes of a table's line, cell by cell ("" for a cell without).
std::vector<std::string> cells(const std::string& line)
{
    std::vector<std::string> found;
    std::size_t start = 2;
    for (std::size_t end = line.find(" |", start); end != std::string::npos; end = line.find(" |", start)) {
        found.push_back(line.substr(start, end - start));
        start = std::min(end + 3, line.size());
    }
    return found;
}

TEST(ReadingsTable, HoldsEachReadingByNumberNameAndTest)
{
    struct Named {
        int number;
        const char* name;
    };
    const Named readings[] = {
#define BGP_PLATFORM_NAMED(number, name) {number, #name},
        BGP_PLATFORM_READINGS(BGP_PLATFORM_NAMED)
#undef BGP_PLATFORM_NAMED
    };
    static_assert(std::size(readings) == bgp_platform::capi::kReadings);
    const std::string page = contents(BGP_SOURCE_DIR "/platform/README.md");
    const std::string tests = contents(BGP_SOURCE_DIR "/tests/platform/readings_test.cpp");
    for (const Named& reading : readings) {
        const std::size_t at = page.find("\n| " + std::to_string(reading.number) + " | ");
        ASSERT_NE(at, std::string::npos) << reading.number;
        const std::vector<std::string> row = cells(page.substr(at + 1, page.find('\n', at + 1) - at - 1));
        ASSERT_EQ(row.size(), 5U) << "number, question, reading, name, test: " << reading.number;
        EXPECT_EQ(row[3], "`" + std::string(reading.name) + "`");
        const std::string test = row[4].substr(1, row[4].size() - 2);
        EXPECT_NE(tests.find("TEST_F(ReadingsTest, " + test + ")"), std::string::npos) << test;
    }
    EXPECT_EQ(page.find("\n| " + std::to_string(std::size(readings) + 1) + " | "), std::string::npos);
}

}  // namespace
