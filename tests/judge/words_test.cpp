// Rows and values in the words of the network.
#include "judge/words.h"

#include <gtest/gtest.h>

#include "judge/path_template.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace bgp_test {
namespace {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

constexpr char kAny[] = "00:00:00:00";

class Words : public UpdateTest {
protected:
    // The first row of a list in the stored configuration, in words; the lists around it have one row each.
    std::string row(const std::string& path)
    {
        const Node* node = bgp_rehearse::find_node(device().schema(), path);
        std::vector<const Node*> way;
        for (; node != nullptr; node = node->parent) {
            if (node->kind == NodeKind::List) {
                way.insert(way.begin(), node);
            }
        }
        Trail around;
        const Row* row = &device().configuration(Datastore::Stored).root();
        for (const Node* list : way) {
            if (row->record().owner != nullptr) {
                around.push_back(row);
            }
            row = row->list(list->slot).at(0);
        }
        return bgp_rehearse::words_of_row(around, *row);
    }

    std::string peer(const std::string& keys)
    {
        stored(mib(leaf("bgpPeerTable", leaf("bgpPeerEntry", keys))));
        return row("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry");
    }
};

TEST_F(Words, Neighbour_IsItsRemoteAddress)
{
    EXPECT_EQ(peer(peer_keys("5", kAny, "c0:00:02:02")), "neighbour 192.0.2.2");
}

TEST_F(Words, NeighbourWithoutLocalOctets_IsItsRemoteAddress)
{
    EXPECT_EQ(peer(peer_keys("5", "", "c0:00:02:02")), "neighbour 192.0.2.2");
}

TEST_F(Words, NeighbourWithALocalAddress_SaysFromWhere)
{
    EXPECT_EQ(peer(peer_keys("5", "0a:00:00:01", "c0:00:02:02")), "neighbour 192.0.2.2 from 10.0.0.1");
}

TEST_F(Words, NeighbourOfIpv6_IsInColonForm)
{
    EXPECT_EQ(peer(peer_keys("5", "", "20:01:0d:b8:00:00:00:01:00:00:00:00:00:00:00:02", "0", "0", "ipv6")),
              "neighbour 2001:db8:0:1::2");
}

TEST_F(Words, NeighboursPortAndScope_AreSaidWhereTheyAreOwn)
{
    EXPECT_EQ(peer(peer_keys("5", "", "fe:80:00:00:00:00:00:00:00:00:00:00:00:00:00:02", "1790", "3", "ipv6")),
              "neighbour fe80::2%3 port 1790");
}

TEST_F(Words, NeighbourFamily_IsSaidBehindTheNeighbour)
{
    stored(mib(leaf("bgpPeerAfiSafiTable", leaf("bgpPeerAfiSafiEntry", peer_keys("5", kAny, "c0:00:02:02") +
                                                                           leaf("bgpPeerAfiSafiAfi", "ipv6") +
                                                                           leaf("bgpPeerAfiSafiSafi", "unicast")))));
    EXPECT_EQ(row("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry"), "neighbour 192.0.2.2 IPv6 unicast");
}

TEST_F(Words, RouteMapRow_IsMapAndEntry)
{
    stored(mib(
        leaf("bgpRouteMapTable", leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRouteMapIndex", "3") +
                                                              leaf("bgpRouteMapEntryIndex", "20")))));
    EXPECT_EQ(row("/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry"), "map 3 entry 20");
}

TEST_F(Words, RowBelowAnother_NamesTheOneAround)
{
    stored(R"(<prefix-list xmlns="urn:bgp-update:yang:prefix-list"><name>X</name><seq><number>10</number></seq>
              </prefix-list>)" +
           router("65010", leaf("vrf", leaf("name", "red") +
                                           leaf("address-family", leaf("afi", "ipv4") + leaf("safi", "unicast")))));
    EXPECT_EQ(row("/prefix-list/seq"), "prefix list X sequence 10");
    EXPECT_EQ(row("/router/bgp/vrf"), "VRF red");
    EXPECT_EQ(row("/router/bgp/vrf/address-family"), "VRF red IPv4 unicast");
}

TEST_F(Words, AnnouncedNetwork_IsReadableThoughItsKeyIsText)
{
    stored(internal(leaf("rtmRedistEntry-hidden",
                         leaf("rtmRedistEntry-set", leaf("entity", "5") + leaf("rtm-index", "1") +
                                                        leaf("address", "c6:33:64:00") + leaf("length", "24")))));
    EXPECT_EQ(row("/internal/rtmRedistEntry-hidden/rtmRedistEntry-set"),
              "internal row of network 198.51.100.0/24 of routing table 1");
}

// A new list without words of its own would be told as a "row".
TEST_F(Words, EachListOfTheDataModel_HasANoun)
{
    std::vector<const Node*> nodes = device().schema().top_nodes();
    std::size_t lists = 0;
    while (!nodes.empty()) {
        const Node* const node = nodes.back();
        nodes.pop_back();
        if (node->kind == NodeKind::List) {
            ++lists;
            EXPECT_STRNE(bgp_rehearse::noun_of(*node).one, "row") << node->path();
        }
        nodes.insert(nodes.end(), node->children.begin(), node->children.end());
    }
    EXPECT_GT(lists, 40U);
}

TEST_F(Words, Key_HasItsAddressesReadable)
{
    stored(mib(leaf("bgpPeerTable", leaf("bgpPeerEntry", peer_keys("5", "", "c0:00:02:02")))));
    const Node& list = *bgp_rehearse::find_node(device().schema(), "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry");
    const Row& row = *device().configuration(Datastore::Stored).root().list(list.slot).at(0);
    EXPECT_EQ(bgp_rehearse::words_of_key(row), "5 ipv4 \"\" 0 ipv4 192.0.2.2 0 0");
}

TEST_F(Words, Values_AreReadableAndSecretsAreNot)
{
    stored(mib(leaf("bgpPeerTable", leaf("bgpPeerEntry", peer_keys("5", kAny, "c0:00:02:02") +
                                                             leaf("bgpPeerConfigPassword", "hushhush")))));
    const Node& list = *bgp_rehearse::find_node(device().schema(), "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry");
    const Row& row = *device().configuration(Datastore::Stored).root().list(list.slot).at(0);
    const auto value = [&](const char* name) {
        const Node& leaf = *list.child(name);
        return bgp_rehearse::words_of_value(leaf, bgp_rehearse::value_in(row, leaf));
    };
    EXPECT_EQ(value("bgpPeerRemoteAddr"), "192.0.2.2");
    EXPECT_EQ(value("bgpPeerRemotePort"), "0");
    EXPECT_EQ(value("bgpPeerRemoteAs"), "(not set)");
    EXPECT_EQ(value("bgpPeerConfigPassword").find("hushhush"), std::string::npos);
}

TEST_F(Words, HiddenKeys_HaveTheirAddressesReadable)
{
    stored(internal(leaf("bgpPeerEntry-global", leaf("entity", "5") + leaf("peer", "192.0.2.2") +
                                                    leaf("keys", "5 ipv4 00:00:00:00 0 ipv4 c0:00:02:02 0 0"))));
    const Node& list = *bgp_rehearse::find_node(device().schema(), "/internal/bgpPeerEntry-global");
    const Row& row = *device().configuration(Datastore::Stored).root().list(list.slot).at(0);
    const Node& keys = *list.child("keys");
    EXPECT_EQ(bgp_rehearse::words_of_value(keys, bgp_rehearse::value_in(row, keys)),
              "5 ipv4 0.0.0.0 0 ipv4 192.0.2.2 0 0");
}

TEST_F(Words, PlaceOfTheTree_IsItsRowThereOrNot)
{
    const auto words = [this](const char* path) { return bgp_rehearse::words_of_path(*device().path_of(path)); };
    EXPECT_EQ(
        words("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{ 5 ipv4 \"\" 0 ipv4 c0:00:02:02 0 0 ipv6 unicast }/"
              "bgpPeerAfiSafiDisable"),
        "neighbour 192.0.2.2 IPv6 unicast");
    EXPECT_EQ(words("/router/bgp{65010}/vrf{red}/neighbor{192.0.2.2}"), "VRF red neighbour 192.0.2.2");
    EXPECT_EQ(words("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry"), "the neighbour families");
    EXPECT_EQ(words("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs"), "") << "which row is not said";
    EXPECT_EQ(words("/internal/router-id-default-hidden"), "") << "in no row";
}

TEST(CountedWords, AreGroupedByThousands)
{
    EXPECT_EQ(bgp_rehearse::counted(1, {"route map row", "route map rows"}), "1 route map row");
    EXPECT_EQ(bgp_rehearse::counted(2000, {"route map row", "route map rows"}), "2,000 route map rows");
}

TEST(AddressWords, OctetsOfNoAddress_StayOctets)
{
    EXPECT_EQ(bgp_rehearse::address_words(std::string("\x0a\x00\xff", 3)), "0a:00:ff");
    EXPECT_EQ(bgp_rehearse::address_words(""), "");
}

}  // namespace
}  // namespace bgp_test
