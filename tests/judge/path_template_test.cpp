// Paths as data: where they lead, and what does not fit the schema.
#include "judge/path_template.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "judge/references.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace bgp_test {
namespace {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;
using bgp_rehearse::find_node;
using bgp_rehearse::Lookup;
using bgp_rehearse::PathTemplate;
using bgp_rehearse::RowPlace;

constexpr char kMaps[] = "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry";
constexpr char kFamilies[] = "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry";

std::string map_row(const std::string& entity, const std::string& map, const std::string& entry,
                    const std::string& list = "0")
{
    return leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", entity) + leaf("bgpRouteMapIndex", map) +
                                        leaf("bgpRouteMapEntryIndex", entry) + leaf("bgpRouteMapMaPrefixList", list));
}

std::string family_row(const std::string& in_map)
{
    return leaf("bgpPeerAfiSafiEntry", peer_keys("5", "", "c0:00:02:02") + leaf("bgpPeerAfiSafiAfi", "ipv4") +
                                           leaf("bgpPeerAfiSafiSafi", "unicast") +
                                           leaf("bgpPeerAfiSafiInMapIndex", in_map));
}

class PathTemplates : public UpdateTest {
protected:
    const Node* node(const std::string& path) { return find_node(device().schema(), path); }
    const Row& row(const std::string& list, std::size_t position = 0)
    {
        return *device().configuration(Datastore::Stored).root().list(node(list)->slot).at(position);
    }
    std::string refusal(const std::string& text)
    {
        try {
            const PathTemplate path(device().schema(), text, node(kFamilies));
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return "taken";
    }
};

TEST_F(PathTemplates, AnyEntryBehindItsFirstKeys_IsTheFirstOne)
{
    stored(mib(leaf("bgpRouteMapTable", map_row("5", "2", "10") + map_row("5", "3", "10") + map_row("5", "3", "20") +
                                            map_row("6", "4", "10")) +
               leaf("bgpPeerAfiSafiTable", family_row("3"))));
    const PathTemplate path(device().schema(), std::string(kMaps) + "{$bgpRmEntIndex $value *}", node(kFamilies),
                            node(std::string(kFamilies) + "/bgpPeerAfiSafiInMapIndex"));
    Lookup lookup(path, device().configuration(Datastore::Stored));
    EXPECT_EQ(lookup.row({{}, row(kFamilies)}), &row(kMaps, 1));
}

TEST_F(PathTemplates, AnyEntry_IsOfThatMapAlone)
{
    stored(mib(leaf("bgpRouteMapTable", map_row("5", "2", "10") + map_row("5", "4", "10")) +
               leaf("bgpPeerAfiSafiTable", family_row("3"))));
    const PathTemplate path(device().schema(), std::string(kMaps) + "{$bgpRmEntIndex $value *}", node(kFamilies),
                            node(std::string(kFamilies) + "/bgpPeerAfiSafiInMapIndex"));
    Lookup lookup(path, device().configuration(Datastore::Stored));
    EXPECT_EQ(lookup.row({{}, row(kFamilies)}), nullptr);
}

TEST_F(PathTemplates, NumbersOfOtherTypes_AreConverted)
{
    stored(mib(leaf("bgpRouteMapTable", map_row("5", "2", "10", "7"))) +
           R"(<prefix-list xmlns="urn:bgp-update:yang:prefix-list"><name>X</name></prefix-list>
              <prefix-list-internal xmlns="urn:bgp-update:yang:prefix-list"><name-to-idx><name>X</name><idx>7</idx>
              </name-to-idx><idx-to-name><idx>7</idx><val>X</val></idx-to-name></prefix-list-internal>)");
    const Node* const index = node("/prefix-list-internal/name-to-idx/idx");
    const PathTemplate path(device().schema(), "/prefix-list-internal/idx-to-name{$value}/val=$name",
                            node("/prefix-list-internal/name-to-idx"), index);
    Lookup lookup(path, device().configuration(Datastore::Stored));
    EXPECT_NE(lookup.row({{}, row("/prefix-list-internal/name-to-idx")}), nullptr);
    ASSERT_NE(lookup.value({{}, row("/prefix-list-internal/name-to-idx")}), nullptr);
    EXPECT_EQ(lookup.value({{}, row("/prefix-list-internal/name-to-idx")})->bytes(), "X");
}

TEST_F(PathTemplates, LeafWithAnotherValue_LeadsNowhere)
{
    stored(R"(<prefix-list-internal xmlns="urn:bgp-update:yang:prefix-list"><name-to-idx><name>X</name><idx>7</idx>
              </name-to-idx><idx-to-name><idx>7</idx><val>Y</val></idx-to-name></prefix-list-internal>)");
    const PathTemplate path(device().schema(), "/prefix-list-internal/idx-to-name{$value}/val=$name",
                            node("/prefix-list-internal/name-to-idx"), node("/prefix-list-internal/name-to-idx/idx"));
    Lookup lookup(path, device().configuration(Datastore::Stored));
    EXPECT_EQ(lookup.row({{}, row("/prefix-list-internal/name-to-idx")}), nullptr);
}

TEST_F(PathTemplates, KeyOfTheRowAround_IsTaken)
{
    stored(R"(<bgp-internal xmlns="urn:bgp-update:yang:bgp-internal"><bgp-vrf><vrf-idx>7</vrf-idx>
              <as-to-bgp-idx><as>65010</as><inst-idx>2</inst-idx></as-to-bgp-idx>
              <idx-to-bgp-as><idx>2</idx><as-number>65010</as-number></idx-to-bgp-as></bgp-vrf></bgp-internal>)");
    const Node* const maps = node("/bgp-internal/bgp-vrf/as-to-bgp-idx");
    const PathTemplate path(device().schema(), "/bgp-internal/bgp-vrf{$vrf-idx}/idx-to-bgp-as{$value}/as-number=$as",
                            maps, maps->child("inst-idx"));
    Lookup lookup(path, device().configuration(Datastore::Stored));
    const Row& vrf = row("/bgp-internal/bgp-vrf");
    const Trail around = {&vrf};
    EXPECT_NE(lookup.row({around, *vrf.list(maps->slot).at(0)}), nullptr);
}

TEST_F(PathTemplates, LookUpOfAnotherRow_IsAnsweredAnew)
{
    stored(mib(leaf("bgpRouteMapTable", map_row("5", "2", "10", "7") + map_row("6", "2", "10", "7")) +
               leaf("bgpRmEntTable", leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", "5")))));
    const PathTemplate path(device().schema(), "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{$bgpRmEntIndex}", node(kMaps));
    Lookup lookup(path, device().configuration(Datastore::Stored));
    EXPECT_NE(lookup.row({{}, row(kMaps, 0)}), nullptr);
    EXPECT_TRUE(lookup.fresh());
    EXPECT_NE(lookup.row({{}, row(kMaps, 0)}), nullptr);
    EXPECT_FALSE(lookup.fresh());
    EXPECT_EQ(lookup.row({{}, row(kMaps, 1)}), nullptr);
    EXPECT_TRUE(lookup.fresh());
    EXPECT_NE(lookup.row({{}, row(kMaps, 0)}), nullptr);
}

TEST_F(PathTemplates, WhatDoesNotFitTheSchema_IsRefusedByName)
{
    using testing::HasSubstr;
    EXPECT_THAT(refusal("/DC-BGP-MIB/bgpRmEntTab/bgpRmEntEntry{1}"), HasSubstr("there is no node bgpRmEntTab"));
    EXPECT_THAT(refusal("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{$bgpRmIndex}"), HasSubstr("has no bgpRmIndex"));
    EXPECT_THAT(refusal("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1 2}"), HasSubstr("has 1 keys"));
    EXPECT_THAT(refusal("/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{1 ipv4}"), HasSubstr("has 3 keys"));
    EXPECT_THAT(refusal("/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{1 ipv5 unicast}"), HasSubstr("\"ipv5\""));
    EXPECT_THAT(refusal("/DC-BGP-MIB/bgpRmEntTable"), HasSubstr("neither to an entry nor to a leaf"));
    EXPECT_THAT(refusal("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry"), HasSubstr("has no keys"));
    EXPECT_THAT(refusal("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}=5"), HasSubstr("too much"));
    EXPECT_EQ(refusal("/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{1 ipv6 unicast}/bgpRmAfiSafiAdminStatus=up"),
              "taken");
}

TEST_F(PathTemplates, EachReferenceOfTheTable_FitsTheSchema)
{
    EXPECT_NO_THROW(bgp_rehearse::compile_references(device().schema()));
}

}  // namespace
}  // namespace bgp_test
