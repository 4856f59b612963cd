// MAAPI writes of entries and leaves, with every result they have.
#include <gtest/gtest.h>

#include "capi_device.h"
#include "support/change_lines.h"

namespace {

using namespace capi_test;

using Lines = std::vector<std::string>;

class MaapiWrite : public CapiTest {
protected:
    int create(const char* path) { return maapi_create(maapi, th, path); }
    int remove(const char* path) { return maapi_delete(maapi, th, path); }
    int set(const char* path, confd_value_t value) { return maapi_set_elem(maapi, th, &value, path); }
    int set_text(const char* path, const char* value) { return maapi_set_elem2(maapi, th, value, path); }
    int move(const char* path, std::vector<confd_value_t> keys)
    {
        return maapi_move(maapi, th, keys.data(), static_cast<int>(keys.size()), path);
    }
    Lines changes() { return bgp_test::change_lines(device); }
};

TEST_F(MaapiWrite, Create_MakesEntriesAndPresenceContainers)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(create("/depot/bay{2 right}"), CONFD_OK);
    EXPECT_EQ(create("/depot/bay{1 left}/crate{5}"), CONFD_OK);
    EXPECT_EQ(create("/depot/bay{1 left}/tag{a}"), CONFD_OK);
    EXPECT_EQ(create("/depot/free{7}"), CONFD_OK);
    EXPECT_EQ(create("/depot/alarm"), CONFD_OK);
    EXPECT_EQ(create("/depot/bay{1 left}/door/lock"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/free"), "[7]");
    EXPECT_EQ(leaf("/depot/bay{2 right}/side"), "enum<2>");
    EXPECT_EQ(leaf("/depot/alarm/delay"), "9");
    EXPECT_EQ(changes().size(), 6U);
}

TEST_F(MaapiWrite, LeafOfTypeEmpty_IsCreatedAndDeleted)
{
    open();
    const char* const mark = "/depot/kinds/mark";
    EXPECT_EQ(maapi_exists(maapi, th, mark), 0);
    EXPECT_EQ(create(mark), CONFD_OK);
    EXPECT_EQ(maapi_exists(maapi, th, mark), 1);
    EXPECT_TRUE(fails(create(mark), CONFD_ERR_ALREADY_EXISTS, "maapi_create", mark));
    confd_value_t value;
    ASSERT_EQ(maapi_get_elem(maapi, th, &value, mark), CONFD_OK);
    ASSERT_EQ(value.type, C_XMLTAG) << "C_EMPTY occurs within unions alone";
    EXPECT_EQ(CONFD_GET_XMLTAG(&value), confd_str2hash("mark"));
    EXPECT_EQ(remove(mark), CONFD_OK);
    EXPECT_TRUE(fails(remove(mark), CONFD_ERR_NOEXISTS, "maapi_delete", mark));
    EXPECT_EQ(set(mark, value), CONFD_OK);
    EXPECT_EQ(leaf(mark), "mark");
    CONFD_SET_EMPTY(&value);
    EXPECT_TRUE(
        fails(set(mark, value), CONFD_ERR_BADTYPE, "maapi_set_elem", std::string(mark) + ": the leaf is a empty"));
}

TEST_F(MaapiWrite, LeafList_IsSetAsAWhole)
{
    stored(bay(1, "left", "<tag>old</tag>"));
    open();
    confd_value_t tags[] = {text_value("b"), text_value("a")};
    confd_value_t list;
    CONFD_SET_LIST(&list, tags, 2);
    EXPECT_EQ(set("/depot/bay{1 left}/tag", list), CONFD_OK) << confd_lasterr();
    EXPECT_EQ(leaf("/depot/bay{1 left}/tag"), "[a b]");
    const Lines written = changes();
    EXPECT_EQ(set("/depot/bay{1 left}/tag", list), CONFD_OK) << "the same again";
    EXPECT_EQ(changes(), written);
    EXPECT_TRUE(
        fails(set("/depot/bay{2 left}/tag", list), CONFD_ERR_NOEXISTS, "maapi_set_elem", "/depot/bay{2 left}/tag"));
    EXPECT_TRUE(fails(set("/depot/bay{1 left}/tag", text_value("a")), CONFD_ERR_BADTYPE, "maapi_set_elem",
                      "/depot/bay{1 left}/tag: tag is a leaf-list"));
}

TEST_F(MaapiWrite, SetOfNoText_IsBadType)
{
    open();
    EXPECT_TRUE(
        fails(set_text("/depot/label", nullptr), CONFD_ERR_BADTYPE, "maapi_set_elem2", "/depot/label: no text"));
}

TEST_F(MaapiWrite, CreateOfWhatIsThere_AlreadyExists)
{
    stored("<free>7</free><alarm/>" + bay(1, "left"));
    open();
    for (const char* path : {"/depot/bay{1 left}", "/depot/free{7}", "/depot/alarm"}) {
        EXPECT_TRUE(fails(create(path), CONFD_ERR_ALREADY_EXISTS, "maapi_create", path));
    }
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(MaapiWrite, CreateBelowWhatIsNotThere_DoesNotExist)
{
    open();
    for (const char* path :
         {"/depot/bay{1 left}/crate{5}", "/depot/bay{1 left}/tag{a}", "/depot/bay{1 left}/door/lock"}) {
        EXPECT_TRUE(fails(create(path), CONFD_ERR_NOEXISTS, "maapi_create", path));
    }
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(MaapiWrite, CreateOfOtherNodes_IsRefused)
{
    stored(bay(1, "left"));
    open();
    for (const char* path : {"/depot/label", "/depot/kinds", "/depot/bay", "/depot/bay{1 left}/note"}) {
        EXPECT_TRUE(fails(create(path), CONFD_ERR_NOTCREATABLE, "maapi_create", path));
    }
}

TEST_F(MaapiWrite, Delete_TakesAwayEachKindOfNode)
{
    stored(
        "<label>w</label><free>1</free><free>2</free><alarm/><kinds><u8>1</u8><u16>2</u16></kinds>"
        "<shelf><name>a</name></shelf>" +
        bay(1, "left", "<note>n</note><crate><id>1</id></crate>") + bay(2, "left"));
    open();
    for (const char* path : {"/depot/bay{1 left}/note", "/depot/bay{2 left}", "/depot/free{1}", "/depot/alarm",
                             "/depot/kinds", "/depot/shelf", "/depot/label"}) {
        EXPECT_EQ(remove(path), CONFD_OK) << confd_lasterr();
    }
    EXPECT_EQ(changes(), (Lines{"delete /depot/label", "delete /depot/bay{1 left}/note", "delete /depot/bay{2 left}",
                                "delete /depot/shelf{a}", "delete /depot/free{1}", "delete /depot/alarm",
                                "delete /depot/kinds/u8", "delete /depot/kinds/u16"}));
}

TEST_F(MaapiWrite, DeletedEntry_TakesAllBelowAlong)
{
    stored(bay(1, "left", "<crate><id>1</id></crate><tag>t</tag>"));
    open();
    EXPECT_EQ(remove("/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(create("/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay{1 left}/crate"), 0);
    EXPECT_EQ(leaf("/depot/bay{1 left}/tag"), "-");
}

TEST_F(MaapiWrite, DeleteOfWhatIsNotThere_DoesNotExist)
{
    stored(bay(1, "left"));
    open();
    for (const char* path :
         {"/depot/bay{2 left}", "/depot/bay{1 left}/note", "/depot/bay{1 left}/height", "/depot/free{1}",
          "/depot/alarm", "/depot/shelf", "/depot/kinds", "/depot/bay{2 left}/note"}) {
        EXPECT_TRUE(fails(remove(path), CONFD_ERR_NOEXISTS, "maapi_delete", path));
    }
    EXPECT_TRUE(
        fails(remove("/depot/bay{1 left}/side"), CONFD_ERR_NOTDELETABLE, "maapi_delete", "/depot/bay{1 left}/side"))
        << "a key stays with its entry";
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(MaapiWrite, Set_TakesTheLeafsOwnType)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(set("/depot/label", text_value("west")), CONFD_OK);
    EXPECT_EQ(set("/depot/bay{1 left}/note", buffer("a note longer than fifteen")), CONFD_OK);
    EXPECT_EQ(set("/depot/bay{1 left}/status", enumeration(2)), CONFD_OK);
    EXPECT_EQ(set("/depot/kinds/u32", u32(8)), CONFD_OK);
    EXPECT_EQ(set("/depot/kinds/octets", octets(std::string_view("\x0a\0", 2))), CONFD_OK);
    EXPECT_EQ(changes(),
              (Lines{"set /depot/label west", "set /depot/bay{1 left}/note a note longer than fifteen",
                     "set /depot/bay{1 left}/status down", "set /depot/kinds/u32 8", "set /depot/kinds/octets 0a:00"}));
}

TEST_F(MaapiWrite, SetValue_IsACopy)
{
    open();
    char letters[] = "a text longer than fifteen";
    ASSERT_EQ(set("/depot/label", text_value(letters)), CONFD_OK);
    letters[0] = 'X';
    EXPECT_EQ(leaf("/depot/label"), "a text longer than fifteen");
}

TEST_F(MaapiWrite, SetOfAnotherType_IsBadType)
{
    stored(bay(1, "left"));
    open();
    EXPECT_TRUE(fails(set("/depot/kinds/u8", u32(1)), CONFD_ERR_BADTYPE, "maapi_set_elem",
                      "/depot/kinds/u8: the leaf is a uint8"));
    EXPECT_TRUE(fails(set("/depot/bay{1 left}/status", enumeration(3)), CONFD_ERR_BADTYPE, "maapi_set_elem",
                      "/depot/bay{1 left}/status: the leaf is a status"));
    EXPECT_TRUE(fails(set("/depot/bay{1 left}/status", text_value("up")), CONFD_ERR_BADTYPE, "maapi_set_elem",
                      "/depot/bay{1 left}/status: the leaf is a status"));
    EXPECT_TRUE(fails(set("/depot/kinds/octets", buffer("0a")), CONFD_ERR_BADTYPE, "maapi_set_elem",
                      "/depot/kinds/octets: the leaf is a hex-list"));
    EXPECT_TRUE(fails(set("/depot/label", no_value()), CONFD_ERR_BADTYPE, "maapi_set_elem",
                      "/depot/label: the leaf is a string"));
    EXPECT_TRUE(fails(set("/depot/kinds/small", u32(6)), CONFD_ERR_BADTYPE, "maapi_set_elem",
                      "/depot/kinds/small: the leaf is a uint32"))
        << "out of its range";
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(MaapiWrite, SetBelowAnEntryThatIsNotThere_DoesNotCreateIt)
{
    open();
    for (const char* path : {"/depot/bay{1 left}/note", "/depot/bay{1 left}/door/lock/turns"}) {
        EXPECT_TRUE(fails(set_text(path, "5"), CONFD_ERR_NOEXISTS, "maapi_set_elem2", path));
    }
    EXPECT_TRUE(fails(set("/depot/alarm/delay", u32(1)), CONFD_ERR_NOEXISTS, "maapi_set_elem", "/depot/alarm/delay"));
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(MaapiWrite, SetOfAKey_MayOnlyRepeatIt)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(set("/depot/bay{1 left}/number", u32(1)), CONFD_OK);
    EXPECT_TRUE(fails(set("/depot/bay{1 left}/number", u32(2)), CONFD_ERR_NOT_WRITABLE, "maapi_set_elem",
                      "/depot/bay{1 left}/number"));
}

TEST_F(MaapiWrite, SetOfWhatIsNoLeaf_IsBadPath)
{
    stored(bay(1, "left"));
    open();
    for (const char* path : {"/depot/bay{1 left}", "/depot/kinds", "/depot/free{1}"}) {
        EXPECT_TRUE(fails(set(path, u32(1)), CONFD_ERR_BADPATH, "maapi_set_elem", std::string(path) + ": not a leaf"));
        EXPECT_TRUE(
            fails(set_text(path, "1"), CONFD_ERR_BADPATH, "maapi_set_elem2", std::string(path) + ": not a leaf"));
    }
    EXPECT_TRUE(fails(set_text("/depot/free", "1"), CONFD_ERR_BADPATH, "maapi_set_elem2", "/depot/free: not a leaf"))
        << "as C_LIST alone";
}

TEST_F(MaapiWrite, SetFromText_IsReadByTheLeafsType)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(set_text("/depot/bay{1 left}/status", "down"), CONFD_OK);
    EXPECT_EQ(set_text("/depot/kinds/octets", "0A:ff"), CONFD_OK);
    EXPECT_EQ(set_text("/depot/kinds/i8", "-5"), CONFD_OK);
    EXPECT_EQ(set_text("/depot/kinds/flag", "true"), CONFD_OK);
    EXPECT_EQ(set_text("/depot/kinds/ipv4", "192.0.2.1"), CONFD_OK);
    EXPECT_EQ(set_text("/depot/kinds/ip", "2001:db8::1"), CONFD_OK);
    EXPECT_EQ(set_text("/depot/kinds/prefix", "192.0.2.0/24"), CONFD_OK);
    EXPECT_EQ(changes(),
              (Lines{"set /depot/bay{1 left}/status down", "set /depot/kinds/i8 -5", "set /depot/kinds/flag true",
                     "set /depot/kinds/ipv4 192.0.2.1", "set /depot/kinds/ip 2001:db8::1",
                     "set /depot/kinds/prefix 192.0.2.0/24", "set /depot/kinds/octets 0a:ff"}));
    EXPECT_TRUE(fails(set_text("/depot/bay{1 left}/status", "sideways"), CONFD_ERR_BADTYPE, "maapi_set_elem2",
                      "/depot/bay{1 left}/status: \"sideways\" is not one of up, down"));
    EXPECT_TRUE(fails(set_text("/depot/kinds/u8", "256"), CONFD_ERR_BADTYPE, "maapi_set_elem2",
                      "/depot/kinds/u8: \"256\" is not a number from 0 to 255"));
}

TEST_F(MaapiWrite, Move_GivesTheEntryOtherKeysAndKeepsAllBelow)
{
    stored(bay(1, "left", "<note>n</note><tag>t</tag><crate><id>1</id><content>tea</content></crate>"));
    open();
    EXPECT_EQ(move("/depot/bay{1 left}", {u32(2), enumeration(2)}), CONFD_OK);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}"), 0);
    EXPECT_EQ(leaf("/depot/bay{2 right}/note"), "n");
    EXPECT_EQ(leaf("/depot/bay{2 right}/tag"), "[t]");
    EXPECT_EQ(leaf("/depot/bay{2 right}/crate{1}/content"), "tea");
    EXPECT_EQ(leaf("/depot/bay{2 right}/number"), "2");
    EXPECT_EQ(move("/depot/bay{2 right}/crate{1}", {u32(3)}), CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{2 right}/crate{3}/content"), "tea");
}

TEST_F(MaapiWrite, MoveOntoItsOwnKeys_ChangesNothing)
{
    stored(bay(1, "left", "<note>n</note>"));
    open();
    EXPECT_EQ(move("/depot/bay{1 left}", {u32(1), enumeration(1)}), CONFD_OK);
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(MaapiWrite, MoveThatCannotBe_IsRefusedAndChangesNothing)
{
    stored(bay(1, "left") + bay(2, "left"));
    open();
    EXPECT_TRUE(fails(move("/depot/bay{1 left}", {u32(2), enumeration(1)}), CONFD_ERR_ALREADY_EXISTS, "maapi_move",
                      "/depot/bay{1 left}"));
    EXPECT_TRUE(fails(move("/depot/bay{3 left}", {u32(4), enumeration(1)}), CONFD_ERR_NOEXISTS, "maapi_move",
                      "/depot/bay{3 left}"));
    EXPECT_TRUE(fails(move("/depot/bay{1 left}", {u32(4), enumeration(3)}), CONFD_ERR_BADTYPE, "maapi_move",
                      "/depot/bay{1 left}: key side is no enumeration"));
    EXPECT_TRUE(fails(move("/depot/bay{1 left}", {u32(4)}), CONFD_ERR_BADPATH, "maapi_move",
                      "/depot/bay{1 left}: not a whole key"));
    EXPECT_TRUE(fails(move("/depot/bay{1 left}", {u32(4), enumeration(1), u32(1)}), CONFD_ERR_BADPATH, "maapi_move",
                      "/depot/bay{1 left}: the list bay has 2 keys, not 3"));
    EXPECT_TRUE(
        fails(move("/depot/label", {u32(4)}), CONFD_ERR_NOTMOVABLE, "maapi_move", "/depot/label: not a list entry"));
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(MaapiWrite, KeyOfTheEntryItself_MayBeTheNewKey)
{
    stored("<shelf><name>a name longer than fifteen</name></shelf>");
    open();
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/shelf"), CONFD_OK);
    ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
    EXPECT_EQ(maapi_move(maapi, th, cursor.keys, cursor.n, "/depot/shelf{%*x}", cursor.n, cursor.keys), CONFD_OK);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(changes(), Lines{});
    expect_nothing_open();
}

}  // namespace
