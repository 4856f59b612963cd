// Arrays of tagged values: cdb_get_values and maapi_set_values.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "capi_device.h"

namespace {

using namespace capi_test;

// A row of an array reads like a table: what, tag, value.
class Rows {
public:
    Rows& leaf(const char* name, confd_value_t value)
    {
        rows_.push_back({{confd_str2hash(name), 0}, value});
        return *this;
    }
    Rows& ask(const char* name) { return leaf(name, no_value()); }
    Rows& begin(const char* name)
    {
        rows_.emplace_back();
        CONFD_SET_TAG_XMLBEGIN(&rows_.back(), confd_str2hash(name), 0);
        return *this;
    }
    Rows& begin_of_deletion(const char* name)
    {
        rows_.emplace_back();
        CONFD_SET_TAG_XMLBEGINDEL(&rows_.back(), confd_str2hash(name), 0);
        return *this;
    }
    Rows& nth(const char* name, int position)
    {
        rows_.emplace_back();
        CONFD_SET_TAG_CDBBEGIN(&rows_.back(), confd_str2hash(name), 0, position);
        return *this;
    }
    Rows& end(const char* name)
    {
        rows_.emplace_back();
        CONFD_SET_TAG_XMLEND(&rows_.back(), confd_str2hash(name), 0);
        return *this;
    }
    Rows& name_space(const char* uri)
    {
        CONFD_SET_TAG_NS(&rows_.back(), confd_str2hash(uri));
        return *this;
    }

    confd_tag_value_t* data() { return rows_.data(); }
    int size() const { return static_cast<int>(rows_.size()); }

    // The values that stand at leaves, in order; they are given back.
    std::vector<std::string> taken_leaves()
    {
        std::vector<std::string> out;
        for (confd_tag_value_t& row : rows_) {
            if (row.v.type != C_XMLBEGIN && row.v.type != C_XMLEND && row.v.type != C_CDBBEGIN) {
                out.push_back(taken(&row.v));
            }
        }
        return out;
    }

private:
    std::vector<confd_tag_value_t> rows_;
};

std::string named(const char* name)
{
    return "tag " + std::to_string(confd_str2hash(name)) + " (" + name + ")";
}

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

class WriteByTags : public CapiTest {
protected:
    int write(Rows rows, const char* path) { return maapi_set_values(maapi, th, rows.data(), rows.size(), path); }
};

TEST_F(WriteByTags, ListPath_BeginsWithTheKeysAndCreatesTheEntry)
{
    open();
    EXPECT_EQ(write(Rows().leaf("number", u32(4)).leaf("side", enumeration(2)).leaf("note", text("new")), "/depot/bay"),
              CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{4 right}/note"), "new");
    EXPECT_EQ(leaf("/depot/bay{4 right}/status"), "-");
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay"), 1);
}

TEST_F(WriteByTags, EntryPath_CreatesTheEntryItNames)
{
    open();
    EXPECT_EQ(write(Rows().leaf("note", text("new")), "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{1 left}/note"), "new");
    EXPECT_EQ(write(Rows(), "/depot/bay{2 left}"), CONFD_OK);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{2 left}"), 1);
}

TEST_F(WriteByTags, WhatTheArrayOmits_Stays)
{
    stored(bay(1, "left", "<note>old</note><status>up</status><tag>t</tag><crate><id>1</id></crate>"));
    open();
    EXPECT_EQ(write(Rows()
                        .leaf("number", u32(1))
                        .leaf("side", enumeration(1))
                        .leaf("height",
                              [] {
                                  confd_value_t height;
                                  CONFD_SET_UINT16(&height, 9);
                                  return height;
                              }()),
                    "/depot/bay"),
              CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{1 left}/note"), "old");
    EXPECT_EQ(leaf("/depot/bay{1 left}/status"), "enum<1>");
    EXPECT_EQ(leaf("/depot/bay{1 left}/height"), "9");
    EXPECT_EQ(leaf("/depot/bay{1 left}/tag"), "[t]");
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay{1 left}/crate"), 1);
}

TEST_F(WriteByTags, NoValue_DeletesALeaf)
{
    stored(bay(1, "left", "<note>old</note><height>9</height>"));
    open();
    EXPECT_EQ(write(Rows().ask("note").ask("height").ask("status"), "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{1 left}/note"), "-");
    EXPECT_EQ(leaf("/depot/bay{1 left}/height"), "40") << "its default again";
}

TEST_F(WriteByTags, NoValueAsAKey_IsBadType)
{
    stored(bay(1, "left"));
    open();
    EXPECT_TRUE(fails(write(Rows().leaf("number", u32(1)).ask("side"), "/depot/bay"), CONFD_ERR_BADTYPE,
                      "maapi_set_values", "/depot/bay: side is a enumeration"));
    EXPECT_TRUE(fails(write(Rows().ask("number"), "/depot/bay{1 left}"), CONFD_ERR_BADTYPE, "maapi_set_values",
                      "/depot/bay{1 left}: number is a uint32"));
    EXPECT_EQ(leaf("/depot/bay{1 left}/number"), "1");
}

TEST_F(WriteByTags, KeyMissingOrOutOfOrder_IsBadType)
{
    open();
    EXPECT_TRUE(fails(write(Rows().leaf("side", enumeration(1)), "/depot/bay"), CONFD_ERR_BADTYPE, "maapi_set_values",
                      "/depot/bay: the key number of bay is missing"));
    EXPECT_TRUE(fails(write(Rows().leaf("number", u32(1)), "/depot/bay"), CONFD_ERR_BADTYPE, "maapi_set_values",
                      "/depot/bay: the key side of bay is missing"));
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay"), 0);
}

TEST_F(WriteByTags, OwnKeysAgain_AreTakenAndOthersAreNot)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(write(Rows().leaf("number", u32(1)).leaf("note", text("x")), "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_TRUE(fails(write(Rows().leaf("number", u32(2)), "/depot/bay{1 left}"), CONFD_ERR_NOT_WRITABLE,
                      "maapi_set_values", "/depot/bay{1 left}"));
}

TEST_F(WriteByTags, EntriesAndContainers_Nest)
{
    open();
    EXPECT_EQ(write(Rows()
                        .leaf("label", text("west"))
                        .begin("bay")
                        .leaf("number", u32(1))
                        .leaf("side", enumeration(1))
                        .begin("door")
                        .leaf("code", u32(3))
                        .begin("lock")
                        .leaf("turns", u32(4))
                        .end("lock")
                        .end("door")
                        .begin("crate")
                        .leaf("id", u32(9))
                        .leaf("content", text("tea"))
                        .end("crate")
                        .leaf("note", text("behind the crate"))
                        .end("bay")
                        .begin("alarm")
                        .end("alarm")
                        .begin("shelf")
                        .leaf("name", text("a"))
                        .end("shelf"),
                    "/depot"),
              CONFD_OK)
        << confd_lasterr();
    EXPECT_EQ(leaf("/depot/label"), "west");
    EXPECT_EQ(leaf("/depot/bay{1 left}/door/code"), "3");
    EXPECT_EQ(leaf("/depot/bay{1 left}/door/lock/turns"), "4");
    EXPECT_EQ(leaf("/depot/bay{1 left}/crate{9}/content"), "tea");
    EXPECT_EQ(leaf("/depot/bay{1 left}/note"), "behind the crate");
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/alarm"), 1);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{a}"), 1);
    EXPECT_EQ(device.validate(Datastore::Transaction), "");
}

TEST_F(WriteByTags, ContainerThatThePathNames_IsCreated)
{
    stored(bay(1, "left"));
    open();
    EXPECT_EQ(write(Rows().leaf("delay", u32(3)), "/depot/alarm"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/alarm/delay"), "3");
    EXPECT_EQ(write(Rows(), "/depot/bay{1 left}/door/lock"), CONFD_OK);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/door/lock"), 1);
    EXPECT_EQ(write(Rows().leaf("width",
                                [] {
                                    confd_value_t width;
                                    CONFD_SET_INT32(&width, 4);
                                    return width;
                                }()),
                    "/depot/bay{1 left}/door"),
              CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{1 left}/door/width"), "4");
}

TEST_F(WriteByTags, NoValueForAPresenceContainer_DeletesItWithItsContent)
{
    stored("<alarm><delay>4</delay></alarm>" + bay(1, "left", "<door><lock><turns>3</turns></lock></door>"));
    open();
    EXPECT_EQ(write(Rows().ask("alarm").nth("bay", 0).end("bay"), "/depot"), CONFD_ERR) << "no positions in a write";
    EXPECT_EQ(write(Rows().ask("alarm"), "/depot"), CONFD_OK);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/alarm"), 0);
    EXPECT_EQ(write(Rows().begin("door").ask("lock").begin("lock").end("lock").end("door"), "/depot/bay{1 left}"),
              CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{1 left}/door/lock/turns"), "2") << "made anew, with its default";
    EXPECT_EQ(write(Rows().ask("alarm"), "/depot"), CONFD_OK) << "none there";
}

TEST_F(WriteByTags, List_IsAllOfALeafList)
{
    stored(bay(1, "left", "<tag>old</tag><tag>b</tag>"));
    open();
    confd_value_t tags[] = {text("new"), text("b"), text("a")};
    confd_value_t list;
    CONFD_SET_LIST(&list, tags, 3);
    EXPECT_EQ(write(Rows().leaf("tag", list), "/depot/bay{1 left}"), CONFD_OK) << confd_lasterr();
    EXPECT_EQ(leaf("/depot/bay{1 left}/tag"), "[a b new]");
    CONFD_SET_LIST(&list, tags, 0);
    EXPECT_EQ(write(Rows().leaf("tag", list), "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{1 left}/tag"), "-");
    tags[2] = tags[1];
    CONFD_SET_LIST(&list, tags, 3);
    EXPECT_TRUE(fails(write(Rows().leaf("tag", list), "/depot/bay{1 left}"), CONFD_ERR_ALREADY_EXISTS,
                      "maapi_set_values", "/depot/bay{1 left}: tag is given a value twice"));
    tags[2] = u32(3);
    EXPECT_TRUE(fails(write(Rows().leaf("tag", list), "/depot/bay{1 left}"), CONFD_ERR_BADTYPE, "maapi_set_values",
                      "/depot/bay{1 left}: tag has entries of string"));
    EXPECT_TRUE(fails(write(Rows().leaf("tag", text("a")), "/depot/bay{1 left}"), CONFD_ERR_PROTOUSAGE,
                      "maapi_set_values", "/depot/bay{1 left}: a value that does not fit " + named("tag")));
}

TEST_F(WriteByTags, LeafOfTypeEmpty_IsSetByItsTag)
{
    open();
    confd_value_t mark;
    CONFD_SET_XMLTAG(&mark, confd_str2hash("mark"), 0);
    EXPECT_EQ(write(Rows().leaf("mark", mark), "/depot/kinds"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/kinds/mark"), "mark");
    EXPECT_EQ(write(Rows().ask("mark"), "/depot/kinds"), CONFD_OK);
    EXPECT_EQ(leaf("/depot/kinds/mark"), "-");
    CONFD_SET_XMLTAG(&mark, confd_str2hash("u8"), 0);
    EXPECT_TRUE(fails(write(Rows().leaf("mark", mark), "/depot/kinds"), CONFD_ERR_BADTYPE, "maapi_set_values",
                      "/depot/kinds: mark is a empty"))
        << "another leaf's tag";
}

TEST_F(WriteByTags, BeginOfADeletion_DeletesTheEntryOfItsKeys)
{
    stored("<shelf><name>a</name></shelf><shelf><name>b</name></shelf>" +
           bay(1, "left", "<crate><id>7</id></crate><crate><id>8</id></crate>"));
    open();
    EXPECT_EQ(write(Rows()
                        .begin_of_deletion("shelf")
                        .leaf("name", text("a"))
                        .end("shelf")
                        .begin("bay")
                        .leaf("number", u32(1))
                        .leaf("side", enumeration(1))
                        .begin_of_deletion("crate")
                        .leaf("id", u32(7))
                        .end("crate")
                        .leaf("note", text("one crate less"))
                        .end("bay"),
                    "/depot"),
              CONFD_OK)
        << confd_lasterr();
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{a}"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{b}"), 1);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/crate{7}"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/crate{8}"), 1);
    EXPECT_EQ(leaf("/depot/bay{1 left}/note"), "one crate less");
    EXPECT_TRUE(fails(write(Rows().begin_of_deletion("shelf").leaf("name", text("a")).end("shelf"), "/depot"),
                      CONFD_ERR_NOEXISTS, "maapi_set_values", "/depot: /depot/shelf{a}"));
    EXPECT_TRUE(fails(
        write(Rows().begin_of_deletion("shelf").leaf("name", text("b")).leaf("depth", u32(1)).end("shelf"), "/depot"),
        CONFD_ERR_PROTOUSAGE, "maapi_set_values", "/depot: more than the keys of what is deleted: " + named("depth")));
    EXPECT_TRUE(fails(write(Rows().begin_of_deletion("alarm").end("alarm"), "/depot"), CONFD_ERR_PROTOUSAGE,
                      "maapi_set_values", "/depot: a value that does not fit " + named("alarm")));
}

TEST_F(WriteByTags, EndThatIsMissingOrStray_WritesNothing)
{
    open();
    const Rows shelf = Rows().leaf("label", text("x")).begin("shelf").leaf("name", text("a")).end("shelf");
    EXPECT_TRUE(fails(write(Rows(shelf).end("shelf"), "/depot"), CONFD_ERR_PROTOUSAGE, "maapi_set_values",
                      "/depot: an end without its begin: " + named("shelf")));
    EXPECT_TRUE(fails(write(Rows(shelf).begin("shelf").leaf("name", text("b")), "/depot"), CONFD_ERR_PROTOUSAGE,
                      "maapi_set_values", "/depot: " + named("shelf") + " is not closed"));
    EXPECT_TRUE(fails(write(Rows(shelf).begin("kinds").begin("bay").end("kinds").end("bay"), "/depot"),
                      CONFD_ERR_PROTOUSAGE, "maapi_set_values", "/depot: " + named("bay") + " is not closed"));
    EXPECT_TRUE(fails(write(Rows(shelf).begin_of_deletion("shelf").leaf("name", text("a")), "/depot"),
                      CONFD_ERR_PROTOUSAGE, "maapi_set_values", "/depot: " + named("shelf") + " is not closed"));
    EXPECT_EQ(leaf("/depot/label"), "-");
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf"), 0);
}

// Its values are checked before it is created.
TEST_F(WriteByTags, EntryThatFails_IsNotCreated)
{
    open();
    EXPECT_TRUE(fails(write(Rows().leaf("number", u32(1)), "/depot/bay{2 left}"), CONFD_ERR_NOT_WRITABLE,
                      "maapi_set_values", "/depot/bay{2 left}"));
    EXPECT_TRUE(fails(write(Rows().leaf("note", u32(1)), "/depot/bay{2 left}"), CONFD_ERR_BADTYPE, "maapi_set_values",
                      "/depot/bay{2 left}: note is a string"));
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay"), 0);
}

TEST_F(WriteByTags, RowsBeforeTheFailingOne_StayWritten)
{
    open();
    EXPECT_TRUE(fails(write(Rows()
                                .begin("shelf")
                                .leaf("name", text("a"))
                                .leaf("depth", u32(1))
                                .end("shelf")
                                .begin("shelf")
                                .leaf("name", text("b"))
                                .leaf("depth", text("deep"))
                                .end("shelf")
                                .begin("shelf")
                                .leaf("name", text("c"))
                                .end("shelf"),
                            "/depot"),
                      CONFD_ERR_BADTYPE, "maapi_set_values", "/depot: depth is a uint32"));
    EXPECT_EQ(leaf("/depot/shelf{a}/depth"), "1");
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{b}"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{c}"), 0);
}

TEST_F(WriteByTags, ValueTheLeafDoesNotTake_IsBadType)
{
    stored(bay(1, "left"));
    open();
    const char* const path = "/depot/bay{1 left}";
    EXPECT_TRUE(fails(write(Rows().leaf("status", enumeration(3)), path), CONFD_ERR_BADTYPE, "maapi_set_values",
                      std::string(path) + ": status is a status"));
    EXPECT_TRUE(fails(write(Rows().leaf("note", u32(3)), path), CONFD_ERR_BADTYPE, "maapi_set_values",
                      std::string(path) + ": note is a string"));
    EXPECT_TRUE(fails(write(Rows().leaf("height", u32(3)), path), CONFD_ERR_BADTYPE, "maapi_set_values",
                      std::string(path) + ": height is a uint16"));
}

TEST_F(WriteByTags, MalformedArrays_AreErrors)
{
    stored(bay(1, "left"));
    open();
    EXPECT_TRUE(fails(write(Rows().leaf("depth", u32(1)), "/depot/bay{1 left}"), CONFD_ERR_BADPATH, "maapi_set_values",
                      "/depot/bay{1 left}: " + named("depth") + " does not belong below bay"));
    EXPECT_TRUE(fails(write(Rows().leaf("kinds", u32(1)), "/depot"), CONFD_ERR_PROTOUSAGE, "maapi_set_values",
                      "/depot: a value that does not fit " + named("kinds")));
    EXPECT_TRUE(fails(write(Rows().begin("kinds"), "/depot"), CONFD_ERR_PROTOUSAGE, "maapi_set_values",
                      "/depot: " + named("kinds") + " is not closed"));
    EXPECT_TRUE(fails(write(Rows().end("kinds"), "/depot"), CONFD_ERR_PROTOUSAGE, "maapi_set_values",
                      "/depot: an end without its begin: " + named("kinds")));
    EXPECT_TRUE(fails(write(Rows(), "/depot/label"), CONFD_ERR_BADPATH, "maapi_set_values",
                      "/depot/label: neither a container nor a list"));
}

TEST_F(WriteByTags, EntryAroundThatIsNotThere_IsNotCreated)
{
    open();
    EXPECT_TRUE(fails(write(Rows().leaf("id", u32(1)), "/depot/bay{1 left}/crate"), CONFD_ERR_NOEXISTS,
                      "maapi_set_values", "/depot/bay{1 left}/crate"));
    EXPECT_TRUE(fails(write(Rows().leaf("code", u32(1)), "/depot/bay{1 left}/door"), CONFD_ERR_NOEXISTS,
                      "maapi_set_values", "/depot/bay{1 left}/door"));
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay"), 0);
}

}  // namespace
