// Arrays of tagged values that are filled: cdb_get_values.
#include <gtest/gtest.h>

#include "tagged_rows.h"

namespace {

using namespace capi_test;

using Texts = std::vector<std::string>;

class ReadByTags : public CapiTest {
protected:
    int read(Rows& rows, const char* path) { return cdb_get_values(cdb, rows.data(), rows.size(), path); }
};

TEST_F(ReadByTags, Leaves_AreFilledWhereTheyAre)
{
    stored(bay(1, "left", "<note>a note longer than fifteen</note><tag>b</tag><tag>a</tag>"));
    open();
    Rows rows;
    rows.ask("status").ask("note").ask("height").ask("number").ask("tag");
    EXPECT_EQ(read(rows, "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(rows.taken_leaves(), (Texts{"no value", "a note longer than fifteen", "40", "1", "[a b]"}));
    expect_nothing_open();
}

TEST_F(ReadByTags, EntriesAndContainers_Nest)
{
    stored("<label>west</label><kinds><u8>5</u8></kinds>" + bay(1, "left", "<door><width>3</width></door>") +
           bay(2, "right",
               "<door><lock/></door><crate><id>7</id><content>tea</content></crate><crate><id>8</id></crate>"));
    open();
    Rows rows;
    rows.nth("bay", 1)
        .ask("number")
        .begin("door")
        .ask("width")
        .begin("lock")
        .ask("turns")
        .end("lock")
        .ask("code")
        .end("door")
        .nth("crate", 0)
        .ask("content")
        .end("crate")
        .nth("crate", 1)
        .ask("id")
        .end("crate")
        .ask("side")
        .end("bay")
        .ask("label")
        .begin("kinds")
        .ask("u8")
        .end("kinds");
    EXPECT_EQ(read(rows, "/depot"), CONFD_OK) << confd_lasterr();
    EXPECT_EQ(rows.taken_leaves(), (Texts{"2", "no value", "2", "7", "tea", "8", "enum<2>", "west", "5"}));
    EXPECT_EQ(rows.data()[0].v.type, C_CDBBEGIN) << "positions do not move";
    EXPECT_EQ(CONFD_GET_CDBBEGIN(CONFD_GET_TAG_VALUE(rows.data())), 1);
}

TEST_F(ReadByTags, EntryThatIsNotThere_IsAnError)
{
    stored(bay(1, "left"));
    open();
    Rows past;
    past.nth("bay", 1).ask("number").end("bay");
    EXPECT_TRUE(fails(read(past, "/depot"), CONFD_ERR_NOEXISTS, "cdb_get_values", "/depot: bay[1]"));
    Rows negative;
    negative.nth("bay", -1).ask("number").end("bay");
    EXPECT_TRUE(fails(read(negative, "/depot"), CONFD_ERR_NOEXISTS, "cdb_get_values", "/depot: bay[-1]"));
    Rows lock;
    lock.begin("lock").ask("turns").end("lock");
    EXPECT_TRUE(fails(read(lock, "/depot/bay{1 left}/door"), CONFD_ERR_NOEXISTS, "cdb_get_values",
                      "/depot/bay{1 left}/door: lock"));
    Rows number;
    number.ask("number");
    EXPECT_TRUE(fails(read(number, "/depot/bay{2 left}"), CONFD_ERR_NOEXISTS, "cdb_get_values", "/depot/bay{2 left}"));
    Rows delay;
    delay.ask("delay");
    EXPECT_TRUE(fails(read(delay, "/depot/alarm"), CONFD_ERR_NOEXISTS, "cdb_get_values", "/depot/alarm"));
}

TEST_F(ReadByTags, TagThatDoesNotBelong_IsAnErrorAndWhatCameBeforeIsFilled)
{
    stored(bay(1, "left", "<note>x</note>"));
    open();
    Rows rows;
    rows.ask("note").ask("depth");
    EXPECT_TRUE(fails(read(rows, "/depot/bay{1 left}"), CONFD_ERR_BADPATH, "cdb_get_values",
                      "/depot/bay{1 left}: " + named("depth") + " does not belong below bay"));
    EXPECT_EQ(rows.taken_leaves(), (Texts{"x", "no value"}));
    Rows foreign;
    foreign.ask("note").name_space("urn:test:annex");
    EXPECT_EQ(read(foreign, "/depot/bay{1 left}"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
    Rows own;
    own.ask("note").name_space(kDepotNamespace);
    EXPECT_EQ(read(own, "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(own.taken_leaves(), Texts{"x"});
}

TEST_F(ReadByTags, KeysBehindTheBeginOfAList_PickItsEntry)
{
    stored(bay(1, "left", "<note>first</note>") +
           bay(2, "right", "<note>second</note><crate><id>7</id><content>tea</content></crate>"));
    open();
    Rows rows;
    rows.begin("bay")
        .leaf("number", u32(2))
        .leaf("side", enumeration(2))
        .ask("note")
        .begin("crate")
        .leaf("id", u32(7))
        .ask("content")
        .end("crate")
        .ask("height")
        .end("bay");
    EXPECT_EQ(read(rows, "/depot"), CONFD_OK) << confd_lasterr();
    EXPECT_EQ(rows.taken_leaves(), (Texts{"2", "enum<2>", "second", "7", "tea", "40"}));
    expect_nothing_open();
}

TEST_F(ReadByTags, KeysOfNoEntry_AreErrors)
{
    stored(bay(1, "left"));
    open();
    const auto refused = [this](Rows rows, int code, const std::string& why) {
        return fails(read(rows, "/depot"), code, "cdb_get_values", "/depot: " + why);
    };
    EXPECT_TRUE(refused(Rows().begin("bay").leaf("number", u32(2)).leaf("side", enumeration(1)).end("bay"),
                        CONFD_ERR_NOEXISTS, "bay{2 left}"));
    EXPECT_TRUE(refused(Rows().begin("bay").leaf("number", u32(1)).end("bay"), CONFD_ERR_BADTYPE,
                        "the key side of bay is missing"));
    EXPECT_TRUE(refused(Rows().begin("bay").ask("number").leaf("side", enumeration(1)).end("bay"), CONFD_ERR_BADTYPE,
                        "number is a uint32"));
}

TEST_F(ReadByTags, FailedRead_LeavesWhatItFilledToTheProgram)
{
    stored("<label>a label longer than fifteen</label>" + bay(1, "left", "<tag>a</tag><tag>b</tag>"));
    open();
    Rows rows;
    rows.ask("label").nth("bay", 0).ask("tag").end("bay").nth("bay", 9).end("bay");
    EXPECT_EQ(read(rows, "/depot"), CONFD_ERR);
    EXPECT_EQ(rows.taken_leaves(), (Texts{"a label longer than fifteen", "[a b]"}));
    expect_nothing_open();
}

TEST_F(ReadByTags, LeafOfTypeEmpty_IsItsTag)
{
    stored("<kinds><mark/></kinds>");
    open();
    Rows rows;
    rows.ask("mark");
    EXPECT_EQ(read(rows, "/depot/kinds"), CONFD_OK);
    const confd_value_t mark = rows.data()->v;
    ASSERT_EQ(mark.type, C_XMLTAG);
    EXPECT_EQ(CONFD_GET_XMLTAG(&mark), confd_str2hash("mark"));
    EXPECT_EQ(CONFD_GET_XMLTAG_NS(&mark), confd_str2hash(kDepotNamespace));
}

TEST_F(ReadByTags, RequestThatDoesNotFitItsNode_IsAnError)
{
    stored(bay(1, "left"));
    open();
    const auto refused = [this](Rows rows, const char* path, const char* node) {
        return fails(read(rows, path), CONFD_ERR_PROTOUSAGE, "cdb_get_values",
                     std::string(path) + ": a request that does not fit " + named(node));
    };
    EXPECT_TRUE(refused(Rows().ask("bay"), "/depot", "bay"));
    EXPECT_TRUE(refused(Rows().begin("label").end("label"), "/depot", "label"));
    EXPECT_TRUE(refused(Rows().nth("kinds", 0).end("kinds"), "/depot", "kinds"));
    EXPECT_TRUE(refused(Rows().leaf("label", u32(1)), "/depot", "label"));
}

TEST_F(ReadByTags, BeginAndEnd_MustMatch)
{
    stored(bay(1, "left"));
    open();
    Rows open_end;
    open_end.nth("bay", 0).ask("number");
    EXPECT_TRUE(fails(read(open_end, "/depot"), CONFD_ERR_PROTOUSAGE, "cdb_get_values", "/depot: bay is not closed"));
    Rows wrong_end;
    wrong_end.nth("bay", 0).end("kinds");
    EXPECT_TRUE(fails(read(wrong_end, "/depot"), CONFD_ERR_PROTOUSAGE, "cdb_get_values", "/depot: bay is not closed"));
    Rows lone_end;
    lone_end.ask("label").end("bay");
    EXPECT_TRUE(fails(read(lone_end, "/depot"), CONFD_ERR_PROTOUSAGE, "cdb_get_values",
                      "/depot: an end without its begin: " + named("bay")));
}

TEST_F(ReadByTags, PathToALeafOrAWholeList_IsBadPath)
{
    stored(bay(1, "left"));
    open();
    Rows rows;
    rows.ask("number");
    for (const char* path : {"/depot/bay", "/depot/label"}) {
        EXPECT_TRUE(fails(read(rows, path), CONFD_ERR_BADPATH, "cdb_get_values",
                          std::string(path) + ": neither a container nor a list entry"));
    }
    EXPECT_EQ(cdb_get_values(cdb, nullptr, 0, "/depot/bay{1 left}"), CONFD_OK) << "nothing asked";
}

}  // namespace
