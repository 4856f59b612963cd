// Where a program's last calls went, as a parent learns it from memory that both share.
#include "keypath/last_calls.h"

#include <gmock/gmock.h>

#include <cstring>

#include "capi_device.h"
#include "confd_cdb.h"

namespace capi_test {
namespace {

using bgp_platform::capi::Effect;
using bgp_platform::capi::LastCalls;

class LastCallsTest : public CapiTest {
protected:
    void SetUp() override
    {
        stored(bay(3, "left", "<crate><id>7</id></crate>") + bay(4, "right"));
        stored("<shelf><name>top</name></shelf>");
        device.watch(&last);
        open();
    }

    std::string read() const { return last.read(device.configuration(Datastore::Stored)); }
    std::string written() const { return last.written(device.configuration(Datastore::Stored)); }

    // Of a read that goes there.
    template <typename... Arguments>
    std::string read_at(const char* path, Arguments... arguments)
    {
        cdb_exists(cdb, path, arguments...);
        return read();
    }

    LastCalls last;
};

TEST_F(LastCallsTest, NothingCalled_IsNowhere)
{
    EXPECT_EQ(read(), "");
    EXPECT_EQ(written(), "");
    EXPECT_STREQ(last.function(), "");
    EXPECT_EQ(last.calls(), 0U);
}

TEST_F(LastCallsTest, ReadAndWrite_AreKeptApart)
{
    leaf("/depot/bay{%u %s}/note", 3U, "left");
    maapi_create(maapi, th, "/depot/shelf{%s}", "low");
    EXPECT_EQ(read(), "/depot/bay{3 left}/note");
    EXPECT_EQ(written(), "/depot/shelf{low}");
    EXPECT_STREQ(last.function(), "maapi_create");
    EXPECT_FALSE(last.under_way());
}

TEST_F(LastCallsTest, CallsOfAllKinds_AreCounted)
{
    cdb_exists(cdb, "/depot/free");
    maapi_create(maapi, th, "/depot/shelf{low}");
    maapi_create(maapi, th, "/depot/shelf{low}");
    cdb_set_namespace(cdb, 0);
    EXPECT_EQ(last.calls(Effect::Read), 1U);
    EXPECT_EQ(last.calls(Effect::Write), 2U);
    EXPECT_EQ(last.failures(Effect::Write), 1U);
    EXPECT_EQ(last.calls(), 4U);
    EXPECT_EQ(read(), "/depot/free") << "a session's call goes to no place";
    EXPECT_STREQ(last.function(), "cdb_set_namespace");
}

TEST_F(LastCallsTest, EntryPickedByPosition_ShowsItsStoredKey)
{
    EXPECT_EQ(read_at("/depot/bay[%d]/note", 1), "/depot/bay{4 right}/note");
    EXPECT_EQ(read_at("/depot/bay[%d]/crate[%d]/content", 0, 0), "/depot/bay{3 left}/crate{7}/content");
    EXPECT_EQ(read_at("/depot/bay[%d]/note", 9), "/depot/bay[9]/note");
    EXPECT_EQ(read_at("/depot/bay[%d]/crate[%d]/content", 9, 1), "/depot/bay[9]/crate[1]/content");
}

TEST_F(LastCallsTest, KeyThatNeedsQuotes_HasThem)
{
    EXPECT_EQ(read_at("/depot/shelf{%s}", "two words"), "/depot/shelf{\"two words\"}");
    EXPECT_EQ(read_at("/depot/free{%d}", 7), "/depot/free{7}");
}

TEST_F(LastCallsTest, LongKey_IsCut)
{
    const std::string name(60, 'n');
    EXPECT_EQ(read_at("/depot/shelf{%s}/depth", name.c_str()), "/depot/shelf{" + std::string(44, 'n') + "…}/depth");
    const std::string kept(44, 'n');
    EXPECT_EQ(read_at("/depot/shelf{%s}", kept.c_str()), "/depot/shelf{" + kept + "}");
    const confd_value_t address = octets("0123456789abcdef01");
    EXPECT_EQ(read_at("/depot/port{%x}", &address),
              "/depot/port{30:31:32:33:34:35:36:37:38:39:61:62:63:64:65:66:30:31}");
}

TEST_F(LastCallsTest, CursorStep_IsAtTheEntryThatItCameTo)
{
    maapi_cursor cursor;
    maapi_init_cursor(maapi, th, &cursor, "/depot/bay");
    EXPECT_EQ(read(), "/depot/bay");
    maapi_get_next(&cursor);
    EXPECT_EQ(read(), "/depot/bay{3 left}");
    maapi_get_next(&cursor);
    EXPECT_EQ(read(), "/depot/bay{4 right}");
    maapi_get_next(&cursor);
    EXPECT_EQ(read(), "/depot/bay");
    confd_value_t from = u32(4);
    maapi_find_next(&cursor, CONFD_FIND_SAME_OR_NEXT, &from, 1);
    EXPECT_EQ(read(), "/depot/bay{4 right}");
    maapi_destroy_cursor(&cursor);
}

TEST_F(LastCallsTest, CursorOfAnInnerList_HasTheKeysAroundIt)
{
    maapi_cursor cursor;
    maapi_init_cursor(maapi, th, &cursor, "/depot/bay{3 left}/crate");
    maapi_get_next(&cursor);
    EXPECT_EQ(read(), "/depot/bay{3 left}/crate{7}");
    maapi_destroy_cursor(&cursor);
}

TEST_F(LastCallsTest, KeypathThatLeadsNowhere_IsItsText)
{
    EXPECT_EQ(read_at("/depot/cellar{%d}", 5), "/depot/cellar{5}");
    const std::string path = "/depot/" + std::string(250, 'x');
    EXPECT_EQ(read_at(path.c_str()), path.substr(0, 200) + "…");
}

TEST_F(LastCallsTest, NotWatched_NotesNothing)
{
    read_at("/depot/label");
    device.watch(nullptr);
    EXPECT_EQ(read_at("/depot/free"), "/depot/label");
    EXPECT_EQ(last.calls(), 1U);
}

TEST_F(LastCallsTest, EntryOfTaggedValues_IsNamedByItsKeys)
{
    confd_tag_value_t values[1];
    CONFD_SET_TAG_STR(&values[0], confd_str2hash("name"), "low");
    maapi_set_values(maapi, th, values, 1, "/depot/shelf");
    EXPECT_EQ(written(), "/depot/shelf{low}");
}

// The process that writes may write anything anywhere: whatever is there is read as some text, of bounded length.
TEST_F(LastCallsTest, AnyByteOverwritten_IsStillRead)
{
    auto* const bytes = reinterpret_cast<unsigned char*>(&last);
    for (std::size_t at = 0; at < sizeof last; ++at) {
        for (const int wild : {0x00, 0x7F, 0xA5, 0xFF}) {
            read_at("/depot/bay[%d]/crate{%d}/content", 0, 7);
            maapi_create(maapi, th, "/depot/shelf{%s}", "a name longer than fifteen");
            bytes[at] = static_cast<unsigned char>(wild);
            EXPECT_LT(read().size() + written().size(), 1000U) << at;
            EXPECT_LE(std::strlen(last.function()), 100U) << at;
            EXPECT_LE(static_cast<int>(last.under_way()), 1) << at;
        }
    }
}

}  // namespace
}  // namespace capi_test
