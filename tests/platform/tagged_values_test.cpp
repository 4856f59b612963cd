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

TEST_F(ReadByTags, RequestThatDoesNotFitItsNode_IsAnError)
{
    stored(bay(1, "left"));
    open();
    const auto refused = [this](Rows rows, const char* path, const char* node) {
        return fails(read(rows, path), CONFD_ERR_PROTOUSAGE, "cdb_get_values",
                     std::string(path) + ": a request that does not fit " + named(node));
    };
    EXPECT_TRUE(refused(Rows().ask("bay"), "/depot", "bay"));
    EXPECT_TRUE(refused(Rows().begin("bay").end("bay"), "/depot", "bay")) << "a list wants a position";
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
                      "/depot: kinds is not closed"));
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
