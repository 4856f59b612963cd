// Arrays of tagged values that are written: maapi_set_values.
#include <gtest/gtest.h>

#include "tagged_rows.h"

namespace {

using namespace capi_test;

class WriteByTags : public CapiTest {
protected:
    int write(Rows rows, const char* path) { return maapi_set_values(maapi, th, rows.data(), rows.size(), path); }
};

TEST_F(WriteByTags, ListPath_BeginsWithTheKeysAndCreatesTheEntry)
{
    open();
    EXPECT_EQ(
        write(Rows().leaf("number", u32(4)).leaf("side", enumeration(2)).leaf("note", text_value("new")), "/depot/bay"),
        CONFD_OK);
    EXPECT_EQ(leaf("/depot/bay{4 right}/note"), "new");
    EXPECT_EQ(leaf("/depot/bay{4 right}/status"), "-");
    EXPECT_EQ(maapi_num_instances(maapi, th, "/depot/bay"), 1);
}

TEST_F(WriteByTags, EntryPath_CreatesTheEntryItNames)
{
    open();
    EXPECT_EQ(write(Rows().leaf("note", text_value("new")), "/depot/bay{1 left}"), CONFD_OK);
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
    EXPECT_EQ(write(Rows().leaf("number", u32(1)).leaf("note", text_value("x")), "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_TRUE(fails(write(Rows().leaf("number", u32(2)), "/depot/bay{1 left}"), CONFD_ERR_NOT_WRITABLE,
                      "maapi_set_values", "/depot/bay{1 left}"));
}

TEST_F(WriteByTags, EntriesAndContainers_Nest)
{
    open();
    EXPECT_EQ(write(Rows()
                        .leaf("label", text_value("west"))
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
                        .leaf("content", text_value("tea"))
                        .end("crate")
                        .leaf("note", text_value("behind the crate"))
                        .end("bay")
                        .begin("alarm")
                        .end("alarm")
                        .begin("shelf")
                        .leaf("name", text_value("a"))
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
    confd_value_t tags[] = {text_value("new"), text_value("b"), text_value("a")};
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
    EXPECT_TRUE(fails(write(Rows().leaf("tag", text_value("a")), "/depot/bay{1 left}"), CONFD_ERR_PROTOUSAGE,
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
                        .leaf("name", text_value("a"))
                        .end("shelf")
                        .begin("bay")
                        .leaf("number", u32(1))
                        .leaf("side", enumeration(1))
                        .begin_of_deletion("crate")
                        .leaf("id", u32(7))
                        .end("crate")
                        .leaf("note", text_value("one crate less"))
                        .end("bay"),
                    "/depot"),
              CONFD_OK)
        << confd_lasterr();
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{a}"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/shelf{b}"), 1);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/crate{7}"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/depot/bay{1 left}/crate{8}"), 1);
    EXPECT_EQ(leaf("/depot/bay{1 left}/note"), "one crate less");
    EXPECT_TRUE(fails(write(Rows().begin_of_deletion("shelf").leaf("name", text_value("a")).end("shelf"), "/depot"),
                      CONFD_ERR_NOEXISTS, "maapi_set_values", "/depot: /depot/shelf{a}"));
    EXPECT_TRUE(fails(
        write(Rows().begin_of_deletion("shelf").leaf("name", text_value("b")).leaf("depth", u32(1)).end("shelf"),
              "/depot"),
        CONFD_ERR_PROTOUSAGE, "maapi_set_values", "/depot: more than the keys of what is deleted: " + named("depth")));
    EXPECT_TRUE(fails(write(Rows().begin_of_deletion("alarm").end("alarm"), "/depot"), CONFD_ERR_PROTOUSAGE,
                      "maapi_set_values", "/depot: a value that does not fit " + named("alarm")));
}

TEST_F(WriteByTags, EndThatIsMissingOrStray_WritesNothing)
{
    open();
    const Rows shelf = Rows().leaf("label", text_value("x")).begin("shelf").leaf("name", text_value("a")).end("shelf");
    EXPECT_TRUE(fails(write(Rows(shelf).end("shelf"), "/depot"), CONFD_ERR_PROTOUSAGE, "maapi_set_values",
                      "/depot: an end without its begin: " + named("shelf")));
    EXPECT_TRUE(fails(write(Rows(shelf).begin("shelf").leaf("name", text_value("b")), "/depot"), CONFD_ERR_PROTOUSAGE,
                      "maapi_set_values", "/depot: " + named("shelf") + " is not closed"));
    EXPECT_TRUE(fails(write(Rows(shelf).begin("kinds").begin("bay").end("kinds").end("bay"), "/depot"),
                      CONFD_ERR_PROTOUSAGE, "maapi_set_values", "/depot: " + named("bay") + " is not closed"));
    EXPECT_TRUE(fails(write(Rows(shelf).begin_of_deletion("shelf").leaf("name", text_value("a")), "/depot"),
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
                                .leaf("name", text_value("a"))
                                .leaf("depth", u32(1))
                                .end("shelf")
                                .begin("shelf")
                                .leaf("name", text_value("b"))
                                .leaf("depth", text_value("deep"))
                                .end("shelf")
                                .begin("shelf")
                                .leaf("name", text_value("c"))
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
