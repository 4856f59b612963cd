// The step that re-keys the global BGP instance: when it acts, which tables it walks in which order, and the index that
// the maps get.
#include "bgp_update/rm_index.h"
#include "confd_lib.h"
#include "contract/rekeyed_tables.h"
#include "support/rm_index_rows.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::bgp_mib;
using bgp_test::entity_row;
using bgp_test::global_peer_row;
using bgp_test::internal;
using bgp_test::kLocalAs;
using bgp_test::leaf;
using bgp_test::listen_row;
using bgp_test::network_entity_row;
using bgp_test::partner_row;
using bgp_test::peer_keys;
using bgp_test::peer_row;
using bgp_test::planned;
using bgp_test::protocol_row;
using bgp_test::redist_row;

constexpr uint32_t kRmIndex = 5;
constexpr char kInstance[] = "/bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}";

// In each of the re-keyed tables, in their order: the keys of a row of entity 5 before and after.
struct Keys {
    const char* before;
    const char* after;
};

constexpr Keys kKeys[] = {
    {"{1 7}", "{1 3}"},
    {"{5 1 0a:00:00:00 8}", "{1 1 0a:00:00:00 8}"},
    {"{5 1 7}", "{1 1 7}"},
    {"{5 2 10}", "{1 2 10}"},
    {"{5 2 11}", "{1 2 11}"},
    {"{5 2 12}", "{1 2 12}"},
    {"{5 20}", "{1 20}"},
    {"{5 21}", "{1 21}"},
    {"{5 22}", "{1 22}"},
    {"{5 10.0.0.1}", "{1 10.0.0.1}"},
    {"{5 10.0.0.1}", "{1 10.0.0.1}"},
    {"{5 -3}", "{1 -3}"},
    {"{5 10.0.0.1}", "{1 10.0.0.1}"},
    {"{5 \"to peers\"}", "{1 \"to peers\"}"},
    {"{5 ipv4 unicast}", "{1 ipv4 unicast}"},
    {"{5 10.0.0.1 ipv6 unicast}", "{1 10.0.0.1 ipv6 unicast}"},
    {"{5}", "{1}"},
    {"{5 ipv4 unicast}", "{1 ipv4 unicast}"},
    {"{5 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}", "{1 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}"},
    {"{5 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0 l2vpn evpn}",
     "{1 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0 l2vpn evpn}"},
    {"{5 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}", "{1 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}"},
    {"{5 2 10}", "{1 2 10}"},
    {"{5 20}", "{1 20}"},
    {"{5 3}", "{1 3}"},
    {"{5}", "{1}"},
    {"{5 6}", "{1 2}"},
    {"{1 7}", "{1 3}"},
    {"{1 5 ariPrtnrBgp}", "{1 1 ariPrtnrBgp}"},
};
static_assert(std::size(kKeys) == std::size(bgp_contract::kRekeyedTables));

// A table of the walk with that row.
struct Table {
    const char* path;
    const char* leaf;
    const char* before;
    const char* after;
};

std::vector<Table> tables()
{
    std::vector<Table> all;
    for (std::size_t i = 0; i < std::size(kKeys); ++i) {
        const bgp_contract::RekeyedTable& table = bgp_contract::kRekeyedTables[i];
        all.push_back({table.path, table.leaf, kKeys[i].before, kKeys[i].after});
    }
    return all;
}

std::string hidden_row(const std::string& list, const std::string& keys)
{
    return leaf(list, leaf("entity", "5") + keys);
}

// The rows of tables(), but for the entity's own.
std::string row_of_every_other_table()
{
    const std::string map = leaf("map", "2");
    const std::string address = leaf("address", "10.0.0.1");
    const std::string peer = leaf("peer", "10.0.0.1");
    return protocol_row("7", leaf("protocol-xmltag", "555337807") + leaf("protocol-index", "5")) +
           internal(leaf("rtmRedistEntry-hidden",
                         hidden_row("rtmRedistEntry-set",
                                    leaf("rtm-index", "1") + leaf("address", "0a:00:00:00") + leaf("length", "8")) +
                             hidden_row("rtmRedistEntry-get", leaf("rtm-index", "1") + leaf("entry", "7"))) +
                    leaf("bgpRouteMapEntry-hidden", hidden_row("bgpRouteMapEntry", map + leaf("entry", "10")) +
                                                        hidden_row("bgpRouteMapEntry-get", map + leaf("entry", "11")) +
                                                        hidden_row("bgpRouteMapEntry-set", map + leaf("entry", "12"))) +
                    leaf("bgpConfigEntry-hidden", hidden_row("bgpConfigEntry", leaf("index", "20")) +
                                                      hidden_row("bgpConfigEntry-get", leaf("index", "21")) +
                                                      hidden_row("bgpConfigEntry-set", leaf("index", "22"))) +
                    hidden_row("bgpPeerEntry-prefix-list-hidden", peer) +
                    hidden_row("match-ip-list-hidden", leaf("list", "-3")) +
                    hidden_row("neighbor-valid-hidden", address) +
                    hidden_row("route-policy-valid-hidden", leaf("name", "to peers")) +
                    hidden_row("router-afi-safi-hidden", leaf("afi", "ipv4") + leaf("safi", "unicast")) +
                    hidden_row("neighbor-afi-safi-hidden", address + leaf("afi", "ipv6") + leaf("safi", "unicast"))) +
           global_peer_row("5", leaf("keys", "5 10.0.0.1 1")) +
           bgp_mib("bgpRmAfiSafiTable",
                   leaf("bgpRmAfiSafiEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRmAfiSafiAfi", "ipv4") +
                                                 leaf("bgpRmAfiSafiSafi", "unicast"))) +
           peer_row("5") +
           bgp_mib("bgpPeerAfiSafiTable",
                   leaf("bgpPeerAfiSafiEntry",
                        peer_keys("5") + leaf("bgpPeerAfiSafiAfi", "l2vpn") + leaf("bgpPeerAfiSafiSafi", "evpn"))) +
           bgp_mib("bgpPeerStatusTable", leaf("bgpPeerStatusEntry", peer_keys("5"))) +
           bgp_mib("bgpRouteMapTable",
                   leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRouteMapIndex", "2") +
                                                leaf("bgpRouteMapEntryIndex", "10"))) +
           bgp_mib("bgpConfigTable",
                   leaf("bgpConfigEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpConfigIndex", "20"))) +
           bgp_mib("bgpRmAfmJoinTable",
                   leaf("bgpRmAfmJoinEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRmAfmJoin", "3"))) +
           network_entity_row("5") + listen_row("5", "6") + redist_row("7", leaf("rtmRedistInfoDest", "bgp")) +
           partner_row("5", "ariPrtnrBgp");
}

std::string before(const Table& table)
{
    return std::string(table.path) + table.before;
}

std::string after(const Table& table)
{
    return std::string(table.path) + table.after;
}

using Lines = std::vector<std::string>;

class RmIndex : public bgp_test::UpdateTest {
protected:
    void SetUp() override { error_before_ = confd_lasterr(); }
    void TearDown() override { expectNothingLeftOpen(); }

    // The log of a step that finds no maps, with what is said of each table's rows and of the instance in the maps.
    template <typename RowLines>
    void expectWalk(uint32_t rm_index, uint32_t map_index, RowLines about_rows_of, const Lines& about_maps)
    {
        Lines lines = {"Starting BGP RM index update\n", "BGP entry entity index: " + std::to_string(rm_index),
                       "BGP internal map not found (err: " + error_before_ + "), upgrading config...\n",
                       "Adjusting BGP Global RM index from " + std::to_string(rm_index) + " to " +
                           std::to_string(map_index) + "!\n",
                       "Updating BGP RM index on BGP tables\n"};
        for (const Table& table : tables()) {
            append(lines, {std::string("Updating table ") + table.path + "\n"});
            append(lines, about_rows_of(table));
            append(lines, {"Finish updating table\n"});
        }
        append(lines, {"Finish updating BGP RM index on BGP tables\n"});
        append(lines, about_maps);
        append(lines, {"Finishing BGP RM index update\n"});
        expectLog(lines);
    }

    static void append(Lines& lines, const Lines& more) { lines.insert(lines.end(), more.begin(), more.end()); }

    std::string error_before_;
};

// What is said of the only row of a configuration, the entity's.
Lines about_entity(const Table& table, const std::string& index)
{
    const std::string list = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry";
    if (table.path != list) {
        return {};
    }
    return {"Processing path: " + list + "{" + index + "}\n", "Updating path: " + list + "{" + index + "}\n"};
}

Lines about_instance(int index)
{
    return {"Will set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{" + std::to_string(index) + "}/as-number",
            "Will set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}/inst-idx"};
}

TEST_F(RmIndex, RowOfEachTable_MovesInTheOrderOfTheTables)
{
    stored(entity_row("5") + row_of_every_other_table());
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectWalk(
        5, 1,
        [](const Table& table) {
            return Lines{"Processing path: " + before(table) + "\n", "Updating path: " + before(table) + "\n"};
        },
        about_instance(0));
}

TEST_F(RmIndex, RowOfEachTable_IsUnderTheComponentWithItsLeaves)
{
    stored(entity_row("5") + row_of_every_other_table());
    run(update_rm_index, kRmIndex);
    expectChanges({
        "create /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}",
        "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}/bgpRmEntLocalAs 65010",
        "delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}",
        "create /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{1 ipv4 unicast}",
        "delete /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{5 ipv4 unicast}",
        "create /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{1 3}",
        "delete /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{5 3}",
        "create /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{1}",
        "set /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{1}/bgpNmEntRmIndex 1",
        "delete /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{5}",
        "create /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{1 2}",
        "delete /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{5 6}",
        "create /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{1 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}",
        "set /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{1 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}/bgpPeerLocalNm 1",
        "delete /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{5 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}",
        "create /DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{1 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0 l2vpn "
        "evpn}",
        "delete /DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{5 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0 l2vpn "
        "evpn}",
        "create /DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry{1 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}",
        "delete /DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry{5 ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}",
        "create /DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{1 2 10}",
        "delete /DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{5 2 10}",
        "create /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{1 20}",
        "delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{5 20}",
        "create /DC-RTM-MIB/rtmMjTable/rtmMjEntry{1 1 ariPrtnrBgp}",
        "delete /DC-RTM-MIB/rtmMjTable/rtmMjEntry{1 5 ariPrtnrBgp}",
        "create /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 3}",
        "set /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 3}/rtmRedistInfoDest bgp",
        "delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 7}",
        "create /bgp-internal/bgp-vrf{0}",
        "set /bgp-internal/bgp-vrf{0}/bgp-next-index 1",
        "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}",
        "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}/inst-idx 0",
        "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}",
        "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}/as-number 65010",
        "create /internal/rtmRedistEntry-hidden/rtmRedistEntry-set{1 1 0a:00:00:00 8}",
        "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-set{5 1 0a:00:00:00 8}",
        "create /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{1 1 7}",
        "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{5 1 7}",
        "create /internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry{1 2 10}",
        "delete /internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry{5 2 10}",
        "create /internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-get{1 2 11}",
        "delete /internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-get{5 2 11}",
        "create /internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-set{1 2 12}",
        "delete /internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry-set{5 2 12}",
        "create /internal/bgpConfigEntry-hidden/bgpConfigEntry{1 20}",
        "delete /internal/bgpConfigEntry-hidden/bgpConfigEntry{5 20}",
        "create /internal/bgpConfigEntry-hidden/bgpConfigEntry-get{1 21}",
        "delete /internal/bgpConfigEntry-hidden/bgpConfigEntry-get{5 21}",
        "create /internal/bgpConfigEntry-hidden/bgpConfigEntry-set{1 22}",
        "delete /internal/bgpConfigEntry-hidden/bgpConfigEntry-set{5 22}",
        "create /internal/bgpPeerEntry-global{1 10.0.0.1}",
        "set /internal/bgpPeerEntry-global{1 10.0.0.1}/keys 1 10.0.0.1 1",
        "delete /internal/bgpPeerEntry-global{5 10.0.0.1}",
        "create /internal/bgpPeerEntry-prefix-list-hidden{1 10.0.0.1}",
        "delete /internal/bgpPeerEntry-prefix-list-hidden{5 10.0.0.1}",
        "create /internal/match-ip-list-hidden{1 -3}",
        "delete /internal/match-ip-list-hidden{5 -3}",
        "create /internal/neighbor-valid-hidden{1 10.0.0.1}",
        "delete /internal/neighbor-valid-hidden{5 10.0.0.1}",
        "create /internal/route-policy-valid-hidden{1 \"to peers\"}",
        "delete /internal/route-policy-valid-hidden{5 \"to peers\"}",
        "create /internal/router-afi-safi-hidden{1 ipv4 unicast}",
        "delete /internal/router-afi-safi-hidden{5 ipv4 unicast}",
        "create /internal/neighbor-afi-safi-hidden{1 10.0.0.1 ipv6 unicast}",
        "delete /internal/neighbor-afi-safi-hidden{5 10.0.0.1 ipv6 unicast}",
        "create /redist-protocol{1 3}",
        "set /redist-protocol{1 3}/protocol-xmltag 555337807",
        "set /redist-protocol{1 3}/protocol-index 1",
        "delete /redist-protocol{1 7}",
    });
}

TEST_F(RmIndex, RowOfEachTable_MovesByOneCall)
{
    stored(entity_row("5") + row_of_every_other_table());
    device().recorder().start();
    run(update_rm_index, kRmIndex);
    Lines moved;
    for (const auto& call : device().recorder().calls()) {
        if (call.function == Function::maapi_move) {
            moved.push_back(call.text());
        }
    }
    Lines expected;
    for (const Table& table : tables()) {
        expected.push_back("maapi_move " + before(table) + " to " + after(table) + " -> 0");
    }
    EXPECT_EQ(bgp_test::listing(moved), bgp_test::listing(expected));
}

TEST_F(RmIndex, LeafThatFollowsTheKeys_IsSetInEachTableThatHasOne)
{
    stored(entity_row("5") + row_of_every_other_table());
    device().recorder().start();
    run(update_rm_index, kRmIndex);
    Lines set;
    for (const auto& call : device().recorder().calls()) {
        const bool sets = call.function == Function::maapi_set_elem || call.function == Function::maapi_set_elem2;
        if (sets && call.path.rfind("/bgp-internal/", 0) != 0) {
            set.push_back(call.path);
        }
    }
    Lines expected;
    for (const Table& table : tables()) {
        if (*table.leaf != '\0') {
            expected.push_back(after(table) + "/" + table.leaf);
        }
    }
    EXPECT_EQ(bgp_test::listing(set), bgp_test::listing(expected));
}

TEST_F(RmIndex, EmptyTables_AreJustWalked)
{
    stored(entity_row("5"));
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectWalk(
        5, 1, [](const Table& table) { return about_entity(table, "5"); }, about_instance(0));
    expectChanges({"create /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}",
                   "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}/bgpRmEntLocalAs 65010",
                   "delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}", "create /bgp-internal/bgp-vrf{0}",
                   "set /bgp-internal/bgp-vrf{0}/bgp-next-index 1",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}/inst-idx 0",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}/as-number 65010"});
}

TEST_F(RmIndex, EntityAtTheComponent_StaysAndIsInstanceOne)
{
    stored(entity_row("1"));
    EXPECT_EQ(run(update_rm_index, 1U), 0);
    expectWalk(
        1, 2, [](const Table& table) { return about_entity(table, "1"); }, about_instance(1));
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "set /bgp-internal/bgp-vrf{0}/bgp-next-index 2",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}/inst-idx 1",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}/as-number 65010"});
}

TEST_F(RmIndex, ComponentOfTheGlobalVrf_IsThePlatforms)
{
    stored(entity_row("5"));
    device().set_vrf_component(300, 65536);
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectWalk(
        5, 300, [](const Table& table) { return about_entity(table, "5"); }, about_instance(0));
    expectChanges(
        {"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}", "create /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{300}",
         "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{300}/bgpRmEntLocalAs 65010", "create /bgp-internal/bgp-vrf{0}",
         "set /bgp-internal/bgp-vrf{0}/bgp-next-index 1", "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}",
         "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{65010}/inst-idx 0",
         "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}",
         "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}/as-number 65010"});
}

TEST_F(RmIndex, InstanceInTheStoredMaps_LeavesEverythingAlone)
{
    stored(entity_row("5") + row_of_every_other_table());
    stored(R"(<bgp-internal xmlns="urn:bgp-update:yang:bgp-internal"><bgp-vrf><vrf-idx>0</vrf-idx>
        <as-to-bgp-idx><as>65010</as><inst-idx>0</inst-idx></as-to-bgp-idx></bgp-vrf></bgp-internal>)");
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectLog({"Starting BGP RM index update\n", "BGP entry entity index: 5", "No need to update rm index!\n"});
    expectChanges({});
}

TEST_F(RmIndex, InstanceOfAnotherAsInTheStoredMaps_StopsNoRowButTheMaps)
{
    stored(entity_row("5"));
    stored(R"(<bgp-internal xmlns="urn:bgp-update:yang:bgp-internal"><bgp-vrf><vrf-idx>0</vrf-idx>
        <as-to-bgp-idx><as>65020</as><inst-idx>0</inst-idx></as-to-bgp-idx></bgp-vrf></bgp-internal>)");
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectWalk(5, 1, [](const Table& table) { return about_entity(table, "5"); },
               {"Failed Create /bgp-internal/bgp-vrf{0}, err: " +
                bgp_test::error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS, "/bgp-internal/bgp-vrf{0}")});
    expectChanges({"create /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}",
                   "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}/bgpRmEntLocalAs 65010",
                   "delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}"});
}

TEST_F(RmIndex, LocalAsAbsent_IsLoggedAndNothingMoves)
{
    stored(bgp_test::bgp_entity("<bgpRmEntIndex>5</bgpRmEntIndex>"));
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectLog({"Starting BGP RM index update\n", "BGP entry entity index: 5",
               "Failed to get local as number, err: " + absent("cdb_get", kLocalAs) + "\n"});
    expectChanges({});
}

TEST_F(RmIndex, FailedLookOfTheMaps_CountsAsNotFound)
{
    stored(entity_row("5"));
    faults().fail(Function::cdb_exists, kInstance);
    error_before_ = planned("cdb_exists", kInstance);
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectWalk(
        5, 1, [](const Table& table) { return about_entity(table, "5"); }, about_instance(0));
}

TEST_F(RmIndex, TableThatCannotBeWalked_IsPassedAsAnEmptyOne)
{
    stored(entity_row("5"));
    faults().fail(Function::maapi_init_cursor, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry");
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectWalk(
        5, 1, [](const Table&) { return Lines{}; }, about_instance(0));
}

TEST_F(RmIndex, WalkThatFails_MovesTheRowsFoundBefore)
{
    const std::string list = "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry";
    stored(entity_row("5"));
    for (const char* number : {"1", "2", "3"}) {
        stored(bgp_mib("bgpConfigTable",
                       leaf("bgpConfigEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpConfigIndex", number))));
    }
    faults().fail(Function::maapi_get_next, list, {}, 0, 2);
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectWalk(
        5, 1,
        [&list](const Table& table) {
            if (table.path != list) {
                return about_entity(table, "5");
            }
            return Lines{"Processing path: " + list + "{5 1}\n", "Processing path: " + list + "{5 2}\n",
                         "Updating path: " + list + "{5 1}\n", "Updating path: " + list + "{5 2}\n"};
        },
        about_instance(0));
}

// Component 300 is behind the rows, where a cursor that goes on while they move would meet them again.
TEST_F(RmIndex, RowsThatMoveBehindTheOthers_MoveOnce)
{
    const std::string list = "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry";
    stored(entity_row("5") + listen_row("5", "5") + listen_row("5", "6"));
    device().set_vrf_component(300, 65536);
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    expectWalk(
        5, 300,
        [&list](const Table& table) {
            if (table.path != list) {
                return about_entity(table, "5");
            }
            return Lines{"Processing path: " + list + "{5 5}\n", "Processing path: " + list + "{5 6}\n",
                         "Updating path: " + list + "{5 5}\n", "Updating path: " + list + "{5 6}\n"};
        },
        about_instance(0));
}

TEST_F(RmIndex, StepOfAnOldConfiguration_FindsNothingToDoOnceItIsCommitted)
{
    stored(entity_row("5") + row_of_every_other_table());
    EXPECT_EQ(run(update_rm_index, kRmIndex), 0);
    commit();
    EXPECT_EQ(run(update_rm_index, 1U), 0);
    expectChanges({});
    EXPECT_EQ(device().log().back(), "No need to update rm index!\n");
}

// But for the three leaves whose failure stops the process.
TEST_F(RmIndex, AnyCallFailing_StillEndsTheStep)
{
    const std::string rows = entity_row("5") + listen_row("5", "6") + partner_row("5", "ariPrtnrBgp") +
                             redist_row("7", leaf("rtmRedistInfoDest", "bgp")) +
                             global_peer_row("5", leaf("keys", "5 10.0.0.1 1"));
    std::size_t n = 1;
    for (bool failed = true; failed; ++n) {
        bgp_platform::Device swept;
        swept.load_text(bgp_test::config(rows));
        const bgp_platform::UpgradeHandles handles = swept.open_upgrade();
        swept.fault_plan().fail_call(n);
        EXPECT_EQ(update_rm_index(handles.maapi_socket, handles.thandle, handles.cdb_socket, kRmIndex), 0);
        EXPECT_EQ(swept.log().front(), "Starting BGP RM index update\n") << "call " << n;
        if (n > 1) {
            EXPECT_EQ(swept.log().back(), "Finishing BGP RM index update\n") << "call " << n;
        }
        EXPECT_TRUE(swept.open_things().none()) << "call " << n;
        failed = swept.fault_plan().seen() >= n;
    }
    EXPECT_GT(n, 2U + 2 * 28 + 5 + 6) << "the sweep ended before the step did";
}

using RmIndexDeath = RmIndex;

TEST_F(RmIndexDeath, LocalAsOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntLocalAs", "int32");
    stored(entity_row("5"));
    const bgp_platform::UpgradeHandles handles = open();
    EXPECT_DEATH(update_rm_index(handles.maapi_socket, handles.thandle, handles.cdb_socket, kRmIndex),
                 "src/config_update/bgp_update_default_rm_index:[0-9]+: "
                 "int32_t update_rm_index\\(int32_t, int32_t, int32_t, uint32_t\\): "
                 "Assertion `\\(&temp\\)->type == C_UINT32' failed\\.");
}

}  // namespace
