// Two nodes of one name from two modules, side by side: prefixes and namespaces tell them apart.
#include <gtest/gtest.h>

#include "capi_device.h"

namespace {

using namespace capi_test;

constexpr char kHouse[] = R"(
module house {
  yang-version 1.1; namespace "urn:test:house"; prefix ho;
  container house {
    leaf owner { type string; }
    list room { key id; leaf id { type uint32; } leaf use { type string; } }
  }
})";

constexpr char kHotel[] = R"(
module hotel {
  yang-version 1.1; namespace "urn:test:hotel"; prefix te;
  import house { prefix ho; }
  augment "/ho:house" {
    leaf owner { type uint32; }
    leaf stars { type uint32; }
    list room { key name; leaf name { type string; } leaf use { type uint32; } }
  }
  augment "/ho:house/ho:room" { leaf use { type uint32; } }
})";

class Namesakes : public testing::Test {
protected:
    Namesakes()
    {
        device.load_text(
            "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
            "<house xmlns=\"urn:test:house\"><owner>ann</owner>"
            "<room><id>1</id><use>bath</use><use xmlns=\"urn:test:hotel\">11</use></room>"
            "<owner xmlns=\"urn:test:hotel\">4711</owner><stars xmlns=\"urn:test:hotel\">3</stars>"
            "<room xmlns=\"urn:test:hotel\"><name>suite</name><use>9</use></room></house></config>");
        const UpgradeHandles upgrade = device.open_upgrade();
        cdb = upgrade.cdb_socket;
        maapi = upgrade.maapi_socket;
        th = upgrade.thandle;
    }

    std::string read(const char* path) const
    {
        confd_value_t value;
        return cdb_get(cdb, &value, "%s", path) == CONFD_OK ? taken(&value) : confd_lasterr();
    }

    static Device::Options options()
    {
        Device::Options options;
        options.schema = Schema::from_modules({{"house", kHouse}, {"hotel", kHotel}});
        return options;
    }

    Device device{options()};
    int cdb = -1;
    int maapi = -1;
    int th = -1;
};

TEST_F(Namesakes, Prefix_TellsThemApart)
{
    EXPECT_EQ(read("/house/ho:owner"), "ann");
    EXPECT_EQ(read("/house/te:owner"), "4711");
    EXPECT_EQ(read("/ho:house/hotel:owner"), "4711") << "the module's name serves as well";
    EXPECT_EQ(read("/house/ho:room{1}/ho:use"), "bath");
    EXPECT_EQ(read("/house/ho:room{1}/te:use"), "11");
    EXPECT_EQ(read("/house/te:room{suite}/use"), "9") << "just one module has it there";
    EXPECT_EQ(read("/house/stars"), "3");
    confd_value_t owner = text_value("eve");
    EXPECT_EQ(maapi_set_elem(maapi, th, &owner, "/house/ho:owner"), CONFD_OK) << confd_lasterr();
    EXPECT_EQ(maapi_set_elem(maapi, th, &owner, "/house/te:owner"), CONFD_ERR) << "a number";
    EXPECT_EQ(confd_errno, CONFD_ERR_BADTYPE);
}

TEST_F(Namesakes, WithoutAPrefix_NoneIsMeant)
{
    EXPECT_EQ(read("/house/owner"), "cdb_get: bad path: /house/owner: more than one module has a owner below /house");
    EXPECT_EQ(read("/house/room{1}/ho:use"),
              "cdb_get: bad path: /house/room{1}/ho:use: more than one module has a room below /house");
    EXPECT_EQ(cdb_set_namespace(cdb, static_cast<int>(confd_str2hash("urn:test:hotel"))), CONFD_OK);
    EXPECT_EQ(read("/house/owner"), "cdb_get: bad path: /house/owner: more than one module has a owner below /house")
        << "the session's namespace is that of the first element";
}

TEST_F(Namesakes, TagsTakeTheirNamespaceAndWithoutOneThatAroundThem)
{
    confd_tag_value_t values[3];
    for (confd_tag_value_t& value : values) {
        CONFD_SET_TAG_NOEXISTS(&value, confd_str2hash("owner"));
    }
    CONFD_SET_TAG_NS(&values[1], confd_str2hash("urn:test:hotel"));
    CONFD_SET_TAG_NS(&values[2], confd_str2hash("urn:test:house"));
    ASSERT_EQ(cdb_get_values(cdb, values, 3, "/house"), CONFD_OK) << confd_lasterr();
    EXPECT_EQ(taken(&values[0].v), "ann");
    EXPECT_EQ(taken(&values[1].v), "4711");
    EXPECT_EQ(taken(&values[2].v), "ann");
}

TEST_F(Namesakes, Configuration_IsWrittenAndReadBackAsItWas)
{
    const std::string text = device.text(Datastore::Stored);
    Device again(options());
    again.load_text(text);
    EXPECT_EQ(again.text(Datastore::Stored), text);
    EXPECT_EQ(device.validate(Datastore::Stored), "");
}

}  // namespace
