// How a row of each class moves to another router entity index: keys, leaves that follow, what is said, what fails.
#include "bgp_update/rm_index_entries.h"

#include <memory>
#include <type_traits>

#include "confd/cursor.h"
#include "support/rm_index_rows.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::global_peer_row;
using bgp_test::leaf;
using bgp_test::planned;

constexpr char kEntityTable[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry";
constexpr char kPeerTable[] = "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry";
constexpr char kNetworkEntityTable[] = "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry";
constexpr char kListenTable[] = "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry";
constexpr char kRedistTable[] = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
constexpr char kPartnerTable[] = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry";
constexpr char kProtocolTable[] = "/redist-protocol";
constexpr char kGlobalPeerTable[] = "/internal/bgpPeerEntry-global";

constexpr char kPeerKeys[] = " ipv4 00:00:00:00 0 ipv4 0a:00:00:01 0 0}";
constexpr char kBgpTag[] = "<protocol-xmltag>555337807</protocol-xmltag>";
constexpr char kBgpDest[] = "<rtmRedistInfoDest>bgp</rtmRedistInfoDest>";

std::string updating(const std::string& path)
{
    return "Updating path: " + path + "\n";
}

std::string not_moved(const std::string& path, const std::string& error)
{
    return "Failed to move path: " + path + " (err: " + error + ")\n";
}

class RmIndexEntries : public bgp_test::UpdateTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }

    // Finds all rows of a table, then moves them in order.
    template <typename Entry>
    void move(const char* table, uint32_t old_index, int new_index)
    {
        const bgp_platform::UpgradeHandles upgrade = open();
        std::vector<std::unique_ptr<Entry>> entries;
        confd::Cursor rows(upgrade.maapi_socket, upgrade.thandle, table);
        while (rows.next()) {
            entries.push_back(
                std::make_unique<Entry>(upgrade.maapi_socket, upgrade.thandle, table, rows.keys(), rows.n()));
        }
        for (const std::unique_ptr<Entry>& entry : entries) {
            EXPECT_EQ(entry->MoveEntry(old_index, new_index), 0);
        }
    }
};

static_assert(std::has_virtual_destructor_v<BaseEntry> && !std::is_copy_constructible_v<BaseEntry>);

TEST_F(RmIndexEntries, PlainRow_GetsTheIndexAsItsFirstKeyAndKeepsTheRest)
{
    stored(bgp_test::bgp_mib(
        "bgpRouteMapTable",
        leaf("bgpRouteMapEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRouteMapIndex", "5") +
                                     leaf("bgpRouteMapEntryIndex", "10") + leaf("bgpRouteMapMaAfiDef", "ipv6"))));
    move<BaseEntry>("/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry", 5, 1);
    expectLog({updating("/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{5 5 10}")});
    expectChanges({"create /DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{1 5 10}",
                   "set /DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{1 5 10}/bgpRouteMapMaAfiDef ipv6",
                   "delete /DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{5 5 10}"});
}

TEST_F(RmIndexEntries, PlainRowOfAnotherIndex_MovesAsWell)
{
    stored(bgp_test::entity_row("9"));
    move<BaseEntry>(kEntityTable, 5, 1);
    expectLog({updating("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{9}")});
    expectChanges({"create /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}",
                   "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}/bgpRmEntLocalAs 65010",
                   "delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{9}"});
}

TEST_F(RmIndexEntries, RowAtItsIndex_MovesOntoItselfAndChangesNothing)
{
    stored(bgp_test::entity_row("1"));
    move<BaseEntry>(kEntityTable, 1, 1);
    expectLog({updating("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{1}")});
    expectChanges({});
}

TEST_F(RmIndexEntries, RowWhoseNewPlaceIsTaken_StaysAndIsLogged)
{
    stored(bgp_test::entity_row("1") + bgp_test::entity_row("5"));
    move<BaseEntry>(kEntityTable, 5, 1);
    const std::string path = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}";
    ASSERT_EQ(device().log().size(), 3U);
    EXPECT_EQ(device().log()[1], updating(path));
    EXPECT_EQ(device().log()[2].rfind("Failed to move path: " + path + " (err: maapi_move: ", 0), 0U)
        << device().log()[2];
    expectChanges({});
}

TEST_F(RmIndexEntries, IndexAbove31Bits_IsWrittenAsUnsigned)
{
    stored(bgp_test::entity_row("5"));
    move<BaseEntry>(kEntityTable, 5, -2);
    expectChanges({"delete /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{5}",
                   "create /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{4294967294}",
                   "set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{4294967294}/bgpRmEntLocalAs 65010"});
}

TEST_F(RmIndexEntries, FirstKeyThatIsText_IsGivenBackAndTheRowStays)
{
    leafHasType("DC-BGP-MIB", "bgpNmEntEntry/bgpNmEntIndex", "string");
    stored(bgp_test::network_entity_row("5"));
    move<BgpNmEntityEntry>(kNetworkEntityTable, 5, 1);
    ASSERT_EQ(device().log().size(), 2U);
    EXPECT_EQ(device().log()[0], updating("/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{5}"));
    EXPECT_EQ(device().log()[1].rfind("Failed to move path: /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{5} (err: "
                                      "maapi_move: bad type",
                                      0),
              0U)
        << device().log()[1];
    expectChanges({});
}

TEST_F(RmIndexEntries, PathOver511Characters_IsCutAndTheRowStays)
{
    const std::string name(600, 'n');
    stored(bgp_test::internal(leaf("route-policy-valid-hidden", leaf("entity", "5") + leaf("name", name))));
    move<BaseEntry>("/internal/route-policy-valid-hidden", 5, 1);
    const std::string whole = "/internal/route-policy-valid-hidden{5 " + name + "}";
    const std::string cut = whole.substr(0, 511);
    ASSERT_EQ(device().log().size(), 2U);
    EXPECT_EQ(device().log()[0], updating(cut));
    EXPECT_EQ(device().log()[1].rfind("Failed to move path: " + cut + " (err: ", 0), 0U) << device().log()[1];
    expectChanges({});
}

TEST_F(RmIndexEntries, KeysArePassedByCopy)
{
    stored(bgp_test::peer_row("5"));
    const bgp_platform::UpgradeHandles upgrade = open();
    std::unique_ptr<BaseEntry> entry;
    {
        confd::Cursor rows(upgrade.maapi_socket, upgrade.thandle, kPeerTable);
        ASSERT_TRUE(rows.next());
        entry = std::make_unique<BaseEntry>(upgrade.maapi_socket, upgrade.thandle, kPeerTable, rows.keys(), rows.n());
        EXPECT_FALSE(rows.next());
    }
    EXPECT_EQ(entry->entry_path(), std::string(kPeerTable) + "{5" + kPeerKeys);
    EXPECT_EQ(entry->MoveEntry(5, 1), 0);
    expectLog({updating(std::string(kPeerTable) + "{5" + kPeerKeys)});
}

TEST_F(RmIndexEntries, BgpPartner_GetsTheIndexAsItsSecondKey)
{
    stored(bgp_test::partner_row("5", "ariPrtnrBgp"));
    move<RtmMjEntry>(kPartnerTable, 5, 3);
    expectLog({updating("/DC-RTM-MIB/rtmMjTable/rtmMjEntry{1 5 ariPrtnrBgp}")});
    expectChanges({"create /DC-RTM-MIB/rtmMjTable/rtmMjEntry{1 3 ariPrtnrBgp}",
                   "delete /DC-RTM-MIB/rtmMjTable/rtmMjEntry{1 5 ariPrtnrBgp}"});
}

TEST_F(RmIndexEntries, OtherPartner_KeepsItsKeys)
{
    stored(bgp_test::partner_row("5", "ariPrtnrRtm"));
    move<RtmMjEntry>(kPartnerTable, 5, 1);
    expectLog({"Not a BGP slave partner: 1\n"});
    expectChanges({});
}

TEST_F(RmIndexEntries, BgpPartnerThatCannotMove_IsLogged)
{
    stored(bgp_test::partner_row("5", "ariPrtnrBgp"));
    faults().fail(Function::maapi_move);
    move<RtmMjEntry>(kPartnerTable, 5, 1);
    const std::string path = "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{1 5 ariPrtnrBgp}";
    expectLog({updating(path), not_moved(path, planned("maapi_move", path))});
    expectChanges({});
}

TEST_F(RmIndexEntries, RuleToBgp_MovesByTheDistanceOfTheIndexes)
{
    stored(bgp_test::redist_row("7", kBgpDest));
    move<RtmRedistEntry>(kRedistTable, 5, 1);
    expectLog({updating("/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 7}")});
    expectChanges({"create /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 3}",
                   "set /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 3}/rtmRedistInfoDest bgp",
                   "delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 7}"});
}

TEST_F(RmIndexEntries, RuleToBgp_MovesUpwardsAndAroundTheEndOf32Bits)
{
    stored(bgp_test::redist_row("7", kBgpDest));
    stored(bgp_test::redist_row("4294967295", kBgpDest));
    move<RtmRedistEntry>(kRedistTable, 5, 15);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 7}",
                   "create /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 9}",
                   "set /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 9}/rtmRedistInfoDest bgp",
                   "create /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 17}",
                   "set /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 17}/rtmRedistInfoDest bgp",
                   "delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 4294967295}"});
}

TEST_F(RmIndexEntries, RuleToAnotherProtocol_KeepsItsKeys)
{
    stored(bgp_test::redist_row("7", leaf("rtmRedistInfoDest", "ospf")));
    move<RtmRedistEntry>(kRedistTable, 5, 1);
    expectLog({"Not a BGP redist dest: 851968\n"});
    expectChanges({});
}

TEST_F(RmIndexEntries, RuleWithoutDestination_IsLoggedAndStays)
{
    stored(bgp_test::redist_row("7", ""));
    move<RtmRedistEntry>(kRedistTable, 5, 1);
    const std::string path = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 7}";
    expectLog({"Failed to get rtmRedistInfoDest for path: " + path +
               " (err: " + absent("maapi_get_elem", path + "/rtmRedistInfoDest") + ")\n"});
    expectChanges({});
}

TEST_F(RmIndexEntries, RuleThatCannotMove_IsLogged)
{
    stored(bgp_test::redist_row("7", kBgpDest));
    faults().fail(Function::maapi_move);
    move<RtmRedistEntry>(kRedistTable, 5, 1);
    const std::string path = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 7}";
    expectLog({updating(path), not_moved(path, planned("maapi_move", path))});
    expectChanges({});
}

TEST_F(RmIndexEntries, BgpProtocol_MovesByTheDistanceAndGetsTheIndex)
{
    stored(bgp_test::protocol_row("7", kBgpTag + leaf("protocol-index", "5")));
    move<RtmRedistProtocolHiddenEntry>(kProtocolTable, 5, 1);
    expectLog({updating("/redist-protocol{1 7}")});
    expectChanges({"create /redist-protocol{1 3}", "set /redist-protocol{1 3}/protocol-xmltag 555337807",
                   "set /redist-protocol{1 3}/protocol-index 1", "delete /redist-protocol{1 7}"});
}

TEST_F(RmIndexEntries, OtherProtocol_KeepsItsKeysAndIndex)
{
    stored(bgp_test::protocol_row("7", leaf("protocol-xmltag", "-12") + leaf("protocol-index", "5")));
    move<RtmRedistProtocolHiddenEntry>(kProtocolTable, 5, 1);
    expectLog({"Not BGP redist protocol tag: -12\n"});
    expectChanges({});
}

TEST_F(RmIndexEntries, ProtocolWithoutTag_IsLoggedAndStays)
{
    stored(bgp_test::protocol_row("7", ""));
    move<RtmRedistProtocolHiddenEntry>(kProtocolTable, 5, 1);
    expectLog({"Failed to get protocol-xmltag for path: /redist-protocol{1 7} (err: " +
               absent("maapi_get_elem", "/redist-protocol{1 7}/protocol-xmltag") + ")\n"});
    expectChanges({});
}

TEST_F(RmIndexEntries, ProtocolThatCannotMove_KeepsItsIndex)
{
    stored(bgp_test::protocol_row("7", kBgpTag + leaf("protocol-index", "5")));
    faults().fail(Function::maapi_move);
    move<RtmRedistProtocolHiddenEntry>(kProtocolTable, 5, 1);
    expectLog({updating("/redist-protocol{1 7}"),
               not_moved("/redist-protocol{1 7}", planned("maapi_move", "/redist-protocol{1 7}"))});
    expectChanges({});
}

TEST_F(RmIndexEntries, Peer_MovesAndNamesItsNewNetworkEntity)
{
    stored(bgp_test::peer_row("5"));
    move<BgpPeerEntry>(kPeerTable, 5, 1);
    const std::string before = std::string(kPeerTable) + "{5" + kPeerKeys;
    const std::string after = std::string(kPeerTable) + "{1" + kPeerKeys;
    expectLog({updating(before)});
    expectChanges({"create " + after, "set " + after + "/bgpPeerLocalNm 1", "delete " + before});
}

TEST_F(RmIndexEntries, PeerThatCannotMove_KeepsItsNetworkEntity)
{
    stored(bgp_test::peer_row("5"));
    faults().fail(Function::maapi_move);
    move<BgpPeerEntry>(kPeerTable, 5, 1);
    const std::string path = std::string(kPeerTable) + "{5" + kPeerKeys;
    expectLog({updating(path), not_moved(path, planned("maapi_move", path))});
    expectChanges({});
}

TEST_F(RmIndexEntries, NetworkEntity_MovesAndNamesItsNewRouterEntity)
{
    stored(bgp_test::network_entity_row("5"));
    move<BgpNmEntityEntry>(kNetworkEntityTable, 5, 1);
    expectLog({updating("/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{5}")});
    expectChanges({"create /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{1}",
                   "set /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{1}/bgpNmEntRmIndex 1",
                   "delete /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{5}"});
}

TEST_F(RmIndexEntries, NetworkEntityThatCannotMove_KeepsItsRouterEntity)
{
    stored(bgp_test::network_entity_row("5"));
    faults().fail(Function::maapi_move);
    move<BgpNmEntityEntry>(kNetworkEntityTable, 5, 1);
    const std::string path = "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{5}";
    expectLog({updating(path), not_moved(path, planned("maapi_move", path))});
    expectChanges({});
}

TEST_F(RmIndexEntries, ListenRows_GetTheIndexAndTheNumberAfterIt)
{
    stored(bgp_test::listen_row("5", "5") + bgp_test::listen_row("5", "6"));
    move<BgpNmListenEntry>(kListenTable, 5, 1);
    expectLog({updating("/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{5 5}"),
               updating("/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{5 6}")});
    expectChanges({"create /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{1 1}",
                   "create /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{1 2}",
                   "delete /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{5 5}",
                   "delete /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{5 6}"});
}

TEST_F(RmIndexEntries, ListenRowWithANumberOfItsOwn_GetsTheNumberAfterTheIndex)
{
    stored(bgp_test::listen_row("5", "4"));
    move<BgpNmListenEntry>(kListenTable, 5, 1);
    expectChanges({"create /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{1 2}",
                   "delete /DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{5 4}"});
}

TEST_F(RmIndexEntries, ListenRowThatCannotMove_IsLogged)
{
    stored(bgp_test::listen_row("5", "5"));
    faults().fail(Function::maapi_move);
    move<BgpNmListenEntry>(kListenTable, 5, 1);
    const std::string path = "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry{5 5}";
    expectLog({updating(path), not_moved(path, planned("maapi_move", path))});
    expectChanges({});
}

// The text of a neighbour's keys before and after a move from index 5 to 1.
struct KeysTextCase {
    const char* name;
    const char* before;
    const char* after;
};

const KeysTextCase kKeysTexts[] = {
    {"NumberAndRest_GetsTheIndexAndTheRest", "5 10.0.0.1 1", "1 10.0.0.1 1"},
    {"AnotherNumber_IsReplacedAsWell", "4294967295 10.0.0.1", "1 10.0.0.1"},
    {"SeveralBlanks_BecomeOne", "  5   10.0.0.1", "1 10.0.0.1"},
    {"TabAfterTheNumber_BecomesABlank", "5\t10.0.0.1", "1 10.0.0.1"},
    {"BlanksInTheRest_Stay", "5 a  b ", "1 a  b "},
    {"RestBehindATab_IsDropped", "5 10.0.0.1\t1", "1 10.0.0.1"},
    {"RestBehindALineEnd_IsDropped", "5 10.0.0.1\n1", "1 10.0.0.1"},
    {"NoBlank_TakesWhatFollowsTheDigits", "5x y", "1 x y"},
    {"NumberAlone_LeavesNothingBehindTheBlank", "5", "1 "},
    {"Word_LeavesNothingBehindTheBlank", "peer 10.0.0.1", "1 "},
    {"NoText_LeavesNothingBehindTheBlank", "", "1 "},
};

class KeysText : public RmIndexEntries, public testing::WithParamInterface<KeysTextCase> {};

TEST_P(KeysText, OfAMovedNeighbour)
{
    stored(global_peer_row("5", leaf("keys", GetParam().before)));
    move<BgpPeerEntryGlobalHiddenEntry>(kGlobalPeerTable, 5, 1);
    expectLog({updating("/internal/bgpPeerEntry-global{5 10.0.0.1}")});
    expectChanges({"create /internal/bgpPeerEntry-global{1 10.0.0.1}",
                   std::string("set /internal/bgpPeerEntry-global{1 10.0.0.1}/keys ") + GetParam().after,
                   "delete /internal/bgpPeerEntry-global{5 10.0.0.1}"});
}

INSTANTIATE_TEST_SUITE_P(RmIndexEntries, KeysText, testing::ValuesIn(kKeysTexts),
                         [](const auto& text) { return std::string(text.param.name); });

TEST_F(RmIndexEntries, LongKeysText_IsKeptWhole)
{
    const std::string rest(5000, 'k');
    stored(global_peer_row("5", leaf("keys", "5 " + rest)));
    move<BgpPeerEntryGlobalHiddenEntry>(kGlobalPeerTable, 5, 1);
    expectChanges({"create /internal/bgpPeerEntry-global{1 10.0.0.1}",
                   "set /internal/bgpPeerEntry-global{1 10.0.0.1}/keys 1 " + rest,
                   "delete /internal/bgpPeerEntry-global{5 10.0.0.1}"});
}

TEST_F(RmIndexEntries, NeighbourWithoutKeysText_MovesAndIsLogged)
{
    stored(global_peer_row("5", ""));
    move<BgpPeerEntryGlobalHiddenEntry>(kGlobalPeerTable, 5, 1);
    const std::string path = "/internal/bgpPeerEntry-global{1 10.0.0.1}";
    expectLog({updating("/internal/bgpPeerEntry-global{5 10.0.0.1}"),
               "Failed read path " + path + "/keys (err: " + absent("maapi_get_elem", path + "/keys") + ")\n"});
    expectChanges({"create " + path, "delete /internal/bgpPeerEntry-global{5 10.0.0.1}"});
}

TEST_F(RmIndexEntries, KeysTextThatCannotBeWritten_IsLoggedAndStaysAsItWas)
{
    stored(global_peer_row("5", leaf("keys", "5 10.0.0.1 1")));
    faults().fail(Function::maapi_set_elem2);
    move<BgpPeerEntryGlobalHiddenEntry>(kGlobalPeerTable, 5, 1);
    const std::string path = "/internal/bgpPeerEntry-global{1 10.0.0.1}";
    expectLog({updating("/internal/bgpPeerEntry-global{5 10.0.0.1}"),
               "Failed set val 1 10.0.0.1 1 to path " + path +
                   "/keys (err: " + planned("maapi_set_elem2", path + "/keys") + ")\n"});
    expectChanges(
        {"create " + path, "set " + path + "/keys 5 10.0.0.1 1", "delete /internal/bgpPeerEntry-global{5 10.0.0.1}"});
}

TEST_F(RmIndexEntries, NeighbourThatCannotMove_KeepsItsKeysText)
{
    stored(global_peer_row("5", leaf("keys", "5 10.0.0.1 1")));
    faults().fail(Function::maapi_move);
    move<BgpPeerEntryGlobalHiddenEntry>(kGlobalPeerTable, 5, 1);
    const std::string path = "/internal/bgpPeerEntry-global{5 10.0.0.1}";
    expectLog({updating(path), not_moved(path, planned("maapi_move", path))});
    expectChanges({});
}

class RmIndexEntriesDeath : public RmIndexEntries {
protected:
    // The process stops at an assertion of the class's MoveEntry().
    template <typename Entry>
    void expectAssertion(const char* table, const std::string& class_name, const std::string& expression)
    {
        open();
        EXPECT_DEATH(move<Entry>(table, 5, 1),
                     "src/config_update/bgp_update_default_rm_index:[0-9]+: virtual int32_t " + class_name +
                         "::MoveEntry\\(uint32_t, int\\): Assertion `\\(&" + expression + "' failed\\.");
    }
};

TEST_F(RmIndexEntriesDeath, ThirdKeyThatIsNoPartnerType_FailsTheAssertion)
{
    stored(bgp_test::internal(
        leaf("bgpRouteMapEntry-hidden",
             leaf("bgpRouteMapEntry", leaf("entity", "1") + leaf("map", "5") + leaf("entry", "4")))));
    expectAssertion<RtmMjEntry>("/internal/bgpRouteMapEntry-hidden/bgpRouteMapEntry", "RtmMjEntry",
                                "entry_keys_\\[2\\]\\)->type == C_ENUM_VALUE");
}

TEST_F(RmIndexEntriesDeath, DestinationOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-RTM-MIB", "rtmRedistInfoDest", "uint32");
    stored(bgp_test::redist_row("7", leaf("rtmRedistInfoDest", "917504")));
    expectAssertion<RtmRedistEntry>(kRedistTable, "RtmRedistEntry", "temp\\)->type == C_ENUM_VALUE");
}

TEST_F(RmIndexEntriesDeath, RuleNumberOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-RTM-MIB", "rtmRedistEntryId", "int32");
    stored(bgp_test::redist_row("7", kBgpDest));
    expectAssertion<RtmRedistEntry>(kRedistTable, "RtmRedistEntry", "entry_keys_\\[1\\]\\)->type == C_UINT32");
}

TEST_F(RmIndexEntriesDeath, ProtocolTagOfAnotherType_FailsTheAssertion)
{
    leafHasType("redist-protocol", "protocol-xmltag", "uint32");
    stored(bgp_test::protocol_row("7", kBgpTag));
    expectAssertion<RtmRedistProtocolHiddenEntry>(kProtocolTable, "RtmRedistProtocolHiddenEntry",
                                                  "temp\\)->type == C_INT32");
}

TEST_F(RmIndexEntriesDeath, ProtocolNumberOfAnotherType_FailsTheAssertion)
{
    leafHasType("redist-protocol", "entry", "int32");
    stored(bgp_test::protocol_row("7", kBgpTag));
    expectAssertion<RtmRedistProtocolHiddenEntry>(kProtocolTable, "RtmRedistProtocolHiddenEntry",
                                                  "entry_keys_\\[1\\]\\)->type == C_UINT32");
}

TEST_F(RmIndexEntriesDeath, ListenEntityOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpNmListenEntry/bgpNmEntIndex", "int32");
    stored(bgp_test::listen_row("5", "5"));
    expectAssertion<BgpNmListenEntry>(kListenTable, "BgpNmListenEntry", "entry_keys_\\[0\\]\\)->type == C_UINT32");
}

TEST_F(RmIndexEntriesDeath, ListenNumberOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpNmListenIndex", "int32");
    stored(bgp_test::listen_row("5", "5"));
    expectAssertion<BgpNmListenEntry>(kListenTable, "BgpNmListenEntry", "entry_keys_\\[1\\]\\)->type == C_UINT32");
}

TEST_F(RmIndexEntriesDeath, KeysTextOfAnotherType_FailsTheAssertion)
{
    leafHasType("metacli-internal", "bgpPeerEntry-global/keys", "uint32");
    stored(global_peer_row("5", leaf("keys", "5")));
    expectAssertion<BgpPeerEntryGlobalHiddenEntry>(kGlobalPeerTable, "BgpPeerEntryGlobalHiddenEntry",
                                                   "temp\\)->type == C_BUF");
}

TEST_F(RmIndexEntriesDeath, RowOfFewerKeysThanItsClassLooksAt_FailsTheAssertion)
{
    stored(bgp_test::entity_row("5"));
    expectAssertion<RtmMjEntry>(kEntityTable, "RtmMjEntry", "entry_keys_\\[2\\]\\)->type == C_ENUM_VALUE");
}

TEST_F(RmIndexEntriesDeath, ProtocolIndexThatCannotBeWritten_FailsTheAssertion)
{
    stored(bgp_test::protocol_row("7", kBgpTag));
    faults().fail(Function::maapi_set_elem, "/redist-protocol{1 3}/protocol-index");
    expectAssertion<RtmRedistProtocolHiddenEntry>(kProtocolTable, "RtmRedistProtocolHiddenEntry",
                                                  "temp\\)->type == C_INT32");
}

TEST_F(RmIndexEntriesDeath, PeersNetworkEntityThatCannotBeWritten_FailsTheAssertion)
{
    stored(bgp_test::peer_row("5"));
    faults().fail(Function::maapi_set_elem, std::string(kPeerTable) + "{1" + kPeerKeys + "/bgpPeerLocalNm");
    expectAssertion<BgpPeerEntry>(kPeerTable, "BgpPeerEntry", "temp\\)->type == C_INT32");
}

TEST_F(RmIndexEntriesDeath, RouterEntityThatCannotBeWritten_FailsTheAssertion)
{
    stored(bgp_test::network_entity_row("5"));
    faults().fail(Function::maapi_set_elem, "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry{1}/bgpNmEntRmIndex");
    expectAssertion<BgpNmEntityEntry>(kNetworkEntityTable, "BgpNmEntityEntry", "temp\\)->type == C_INT32");
}

}  // namespace
