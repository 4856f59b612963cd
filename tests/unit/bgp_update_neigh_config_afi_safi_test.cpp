// The step that completes the neighbours' unicast address families: which rows gain a partner, and what is said of each
// row on the way.
#include "bgp_update/neigh_config_afi_safi.h"

#include "confd_maapi.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::leaf;
using bgp_test::planned;

constexpr char kTable[] = "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry";
constexpr char kPeerKeys[] = "5 ipv4 0a:00:00:01 0 ipv4 0a:00:00:02 179 7";
constexpr char kPrintedPeer[] = "5 ipv4 0a000001 0 ipv4 0a000002 179 7";

std::string table(const std::string& rows)
{
    return bgp_test::mib(leaf("bgpPeerAfiSafiTable", rows));
}

// A row of the neighbour 10.0.0.2, seen from 10.0.0.1; its flag left out where it is empty.
std::string row(const std::string& afi, const std::string& safi, const std::string& disable,
                const std::string& address_type = "ipv4")
{
    return leaf("bgpPeerAfiSafiEntry",
                bgp_test::peer_keys("5", "0a:00:00:01", "0a:00:00:02", "179", "7", address_type) +
                    leaf("bgpPeerAfiSafiAfi", afi) + leaf("bgpPeerAfiSafiSafi", safi) +
                    (disable.empty() ? std::string() : leaf("bgpPeerAfiSafiDisable", disable)));
}

std::string entry(const std::string& families)
{
    return std::string(kTable) + "{" + kPeerKeys + " " + families + "}";
}

// As the step's template, which has a blank inside each brace, is formatted.
std::string called_entry(const std::string& families)
{
    return std::string(kTable) + "{ " + kPeerKeys + " " + families + " }";
}

std::string checking(const std::string& families)
{
    return std::string("Checking Entry: DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{") + kPrintedPeer + " " +
           families + "}";
}

const std::vector<std::string> kCreated = {"Found an ENABLED AF, must check if we have the other AF",
                                           "Other AF entry not found, must create it as a disabled one",
                                           "Updated Succesfully"};

class NeighConfigAfiSafi : public bgp_test::UpdateTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }

    // What the look at a unicast row says, around its decision.
    static std::vector<std::string> look(int version, const std::vector<std::string>& decision)
    {
        std::vector<std::string> lines = {"enter check_neigh_config_entry\n",
                                          "Checking AF 'IPv" + std::to_string(version) + " Unicast':"};
        lines.insert(lines.end(), decision.begin(), decision.end());
        lines.push_back("exit check_neigh_config_entry\n");
        return lines;
    }

    // The log of a walk over the table that CDB counts so many rows of, from the lines of its rows.
    void expectWalk(int rows, const std::vector<std::vector<std::string>>& lines_of_rows)
    {
        std::vector<std::string> all = {"enter update_neigh_config_afi_safi\n",
                                        "enter update_neigh_config_unused_AFs\n",
                                        "Will process '" + std::to_string(rows) + "' neighbor entries\n"};
        for (const std::vector<std::string>& lines : lines_of_rows) {
            all.insert(all.end(), lines.begin(), lines.end());
        }
        all.push_back("exit update_neigh_config_unused_AFs\n");
        all.push_back("exit update_neigh_config_afi_safi\n");
        expectLog(all);
    }
};

TEST_F(NeighConfigAfiSafi, NeighborWithEnabledIpv4Alone_GainsDisabledIpv6)
{
    stored(table(row("ipv4", "unicast", "false")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1, {{checking("ipv4 unicast")},
                   look(4, kCreated),
                   {checking("ipv6 unicast")},  // the new row, met by the walk that created it
                   look(6, {})});
    expectChanges({"create " + entry("ipv6 unicast"), "set " + entry("ipv6 unicast") + "/bgpPeerAfiSafiDisable true"});
}

TEST_F(NeighConfigAfiSafi, NeighborWithEnabledIpv6Alone_GainsDisabledIpv4)
{
    stored(table(row("ipv6", "unicast", "false")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1, {{checking("ipv6 unicast")}, look(6, kCreated)});
    expectChanges({"create " + entry("ipv4 unicast"), "set " + entry("ipv4 unicast") + "/bgpPeerAfiSafiDisable true"});
}

TEST_F(NeighConfigAfiSafi, NeighborWithEnabledIpv4Alone_IsReadAndWrittenInTheFixedOrder)
{
    stored(table(row("ipv4", "unicast", "false")));
    device().recorder().start();
    run(update_neigh_config_afi_safi, 1);
    expectCalls({
        std::string("cdb_num_instances ") + kTable + " -> 1",
        std::string("maapi_init_cursor ") + kTable + " -> 0",
        std::string("maapi_get_next ") + kTable + " -> 0",
        "maapi_get_elem " + called_entry("ipv4 unicast") + "/bgpPeerAfiSafiDisable -> 0",
        "maapi_exists " + called_entry("ipv6 unicast") + " -> 0",
        "maapi_create " + called_entry("ipv6 unicast") + " -> 0",
        "maapi_set_elem " + called_entry("ipv6 unicast") + "/bgpPeerAfiSafiDisable true -> 0",
        std::string("maapi_get_next ") + kTable + " -> 0",
        "maapi_get_elem " + called_entry("ipv6 unicast") + "/bgpPeerAfiSafiDisable -> 0",
        std::string("maapi_get_next ") + kTable + " -> 0",
    });
}

TEST_F(NeighConfigAfiSafi, NeighborWithBothEnabled_IsLeftAlone)
{
    stored(table(row("ipv4", "unicast", "false") + row("ipv6", "unicast", "false")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    const std::vector<std::string> there = {"Found an ENABLED AF, must check if we have the other AF",
                                            "Other AF entry for this NEIGHBOR already exists: Will not update"};
    expectWalk(2, {{checking("ipv4 unicast")}, look(4, there), {checking("ipv6 unicast")}, look(6, there)});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, NeighborWithDisabledFamily_GainsNoPartner)
{
    stored(table(row("ipv4", "unicast", "true")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1, {{checking("ipv4 unicast")}, look(4, {})});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, NeighborWithoutFlag_GainsNoPartner)
{
    stored(table(row("ipv4", "unicast", "")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1, {{checking("ipv4 unicast")}, look(4, {})});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, OtherFamilies_AreOnlyNamed)
{
    stored(table(row("other", "unicast", "false") + row("ipv4", "none", "false") + row("ipv4", "multicast", "false") +
                 row("ipv4", "both", "false") + row("ipv4", "labeled", "false") + row("ipv4", "mplsBgpVpn", "false") +
                 row("ipv4", "private", "false") + row("ipv6", "mplsBgpVpn", "false") + row("l2vpn", "vpls", "false") +
                 row("l2vpn", "evpn", "false")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(10,
               {{checking("other unicast"), checking("ipv4 none"), checking("ipv4 multicast"), checking("ipv4 both"),
                 checking("ipv4 labeled"), checking("ipv4 mplsBgpVpn"), checking("ipv4 private"),
                 checking("ipv6 mplsBgpVpn"), checking("l2vpn vpls"), checking("l2vpn evpn")}});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, NumbersWithoutName_PrintNothing)
{
    leafHasType("DC-BGP-MIB", "bgpPeerAfiSafiAfi", "types:source");
    leafHasType("DC-BGP-MIB", "bgpPeerAfiSafiSafi", "types:source");
    stored(table(row("ospf", "bgp", "false", "unknown")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1,
               {{"Checking Entry: DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{5 0a000001 0 0a000002 179 7}"}});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, Ipv6Neighbor_IsNamedSo)
{
    stored(table(row("ipv4", "multicast", "false", "ipv6")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1,
               {{"Checking Entry: DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{5 ipv6 0a000001 0 ipv6 0a000002 "
                 "179 7 ipv4 multicast}"}});
}

TEST_F(NeighConfigAfiSafi, LongKey_IsCutInTheLogAndWholeInThePartner)
{
    std::string octets = "00";
    for (int i = 1; i < 200; ++i) {
        octets += ":ab";
    }
    std::string long_row = row("ipv4", "unicast", "false");
    long_row.replace(long_row.find("0a:00:00:01"), 11, octets);
    stored(table(long_row));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    std::string cut = "00";
    while (cut.size() < 255) {
        cut += cut.size() % 2 == 0 ? 'a' : 'b';
    }
    EXPECT_EQ(device().log()[3], "Checking Entry: DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{5 ipv4 " + cut +
                                     " 0 ipv4 0a000002 179 7 ipv4 unicast}");
    const std::string partner = std::string(kTable) + "{5 ipv4 " + octets + " 0 ipv4 0a:00:00:02 179 7 ipv6 unicast}";
    expectChanges({"create " + partner, "set " + partner + "/bgpPeerAfiSafiDisable true"});
}

TEST_F(NeighConfigAfiSafi, RowOfTheUpgradeItself_IsWalkedToo)
{
    stored(table(row("ipv4", "multicast", "false")));
    const bgp_platform::UpgradeHandles handles = open();
    ASSERT_EQ(maapi_create(handles.maapi_socket, handles.thandle, "%s", entry("ipv6 unicast").c_str()), CONFD_OK);
    ASSERT_EQ(maapi_set_elem2(handles.maapi_socket, handles.thandle, "false", "%s/bgpPeerAfiSafiDisable",
                              entry("ipv6 unicast").c_str()),
              CONFD_OK);
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1, {{checking("ipv4 multicast")}, {checking("ipv6 unicast")}, look(6, kCreated)});
    expectChanges({"create " + entry("ipv4 unicast"), "set " + entry("ipv4 unicast") + "/bgpPeerAfiSafiDisable true",
                   "create " + entry("ipv6 unicast"), "set " + entry("ipv6 unicast") + "/bgpPeerAfiSafiDisable false"});
}

TEST_F(NeighConfigAfiSafi, NoEntity_ReadsNothing)
{
    stored(table(row("ipv4", "unicast", "false")));
    device().recorder().start();
    EXPECT_EQ(run(update_neigh_config_afi_safi, 0), 0);
    expectLog(
        {"enter update_neigh_config_afi_safi\n", "No need to update config - exit update_neigh_config_afi_safi\n"});
    expectCalls({});
}

TEST_F(NeighConfigAfiSafi, SeveralEntities_AreHandledAsOne)
{
    stored(table(row("ipv6", "unicast", "false")));
    EXPECT_EQ(run(update_neigh_config_afi_safi, 2), 0);
    expectWalk(1, {{checking("ipv6 unicast")}, look(6, kCreated)});
}

TEST_F(NeighConfigAfiSafi, EmptyTable_IsSaidAndNotWalked)
{
    device().recorder().start();
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectLog({"enter update_neigh_config_afi_safi\n", "No afi table entries to update\n",
               "exit update_neigh_config_afi_safi\n"});
    expectCalls({std::string("cdb_num_instances ") + kTable + " -> 0"});
}

TEST_F(NeighConfigAfiSafi, FailedCount_IsWalkedAllTheSame)
{
    stored(table(row("ipv6", "unicast", "false")));
    faults().fail(Function::cdb_num_instances);
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(-1, {{checking("ipv6 unicast")}, look(6, kCreated)});
    expectChanges({"create " + entry("ipv4 unicast"), "set " + entry("ipv4 unicast") + "/bgpPeerAfiSafiDisable true"});
}

TEST_F(NeighConfigAfiSafi, CursorNotOpened_WalksNothing)
{
    stored(table(row("ipv6", "unicast", "false")));
    faults().fail(Function::maapi_init_cursor);
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1, {});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, FailedStep_EndsTheWalk)
{
    stored(table(row("ipv4", "multicast", "false") + row("ipv6", "unicast", "false")));
    faults().fail(Function::maapi_get_next, {}, {}, 0, 1);
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(2, {{checking("ipv4 multicast")}});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, UnreadableFlag_EndsTheLookAtTheRow)
{
    stored(table(row("ipv4", "unicast", "false") + row("l2vpn", "evpn", "false")));
    faults().fail(Function::maapi_get_elem);
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(2, {{checking("ipv4 unicast")}, look(4, {}), {checking("l2vpn evpn")}});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, FailedLookForThePartner_CountsAsAbsent)
{
    stored(table(row("ipv4", "unicast", "false") + row("ipv6", "unicast", "true")));
    faults().fail(Function::maapi_exists);
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(2, {{checking("ipv4 unicast")},
                   look(4, {"Found an ENABLED AF, must check if we have the other AF",
                            "Other AF entry not found, must create it as a disabled one",
                            "Failed to create the disabled entry"}),
                   {checking("ipv6 unicast")},
                   look(6, {})});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, PartnerNotCreated_IsSaidAndTheWalkGoesOn)
{
    stored(table(row("ipv6", "unicast", "false") + row("l2vpn", "evpn", "false")));
    faults().fail(Function::maapi_create);
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(2, {{checking("ipv6 unicast")},
                   look(6, {"Found an ENABLED AF, must check if we have the other AF",
                            "Other AF entry not found, must create it as a disabled one",
                            "Failed to create the disabled entry"}),
                   {checking("l2vpn evpn")}});
    expectChanges({});
}

TEST_F(NeighConfigAfiSafi, PartnerNotDisabled_IsSaidAndStaysWithoutFlag)
{
    stored(table(row("ipv6", "unicast", "false")));
    faults().fail(Function::maapi_set_elem);
    EXPECT_EQ(run(update_neigh_config_afi_safi, 1), 0);
    expectWalk(1, {{checking("ipv6 unicast")},
                   look(6, {"Found an ENABLED AF, must check if we have the other AF",
                            "Other AF entry not found, must create it as a disabled one", "Update FAILED"})});
    expectChanges({"create " + entry("ipv4 unicast")});
}

// Values of the wrong type.

class NeighConfigAfiSafiDeath : public NeighConfigAfiSafi {
protected:
    void expectAssertion(const std::string& function, const std::string& expression)
    {
        const bgp_platform::UpgradeHandles handles = open();
        EXPECT_DEATH(update_neigh_config_afi_safi(handles.maapi_socket, handles.thandle, handles.cdb_socket, 1),
                     "src/config_update/bgp_update_neigh_config_afi_safi:[0-9]+: void " + function + ": Assertion `" +
                         expression + "' failed\\.");
    }

    // A key of the row that has another type.
    void expectKeyAssertion(const std::string& key, const std::string& expression)
    {
        leafHasType("DC-BGP-MIB", key, "string");
        stored(table(row("ipv4", "unicast", "false")));
        expectAssertion("bgp_afi_safi_key_print\\(std::string&(, confd_value_t\\*){10}\\)", expression);
    }
};

TEST_F(NeighConfigAfiSafiDeath, EntityIndexOfAnotherType_FailsTheAssertion)
{
    expectKeyAssertion("bgpRmEntIndex", "\\(key0\\)->type == C_UINT32");
}

TEST_F(NeighConfigAfiSafiDeath, LocalAddressTypeOfAnotherType_FailsTheAssertion)
{
    expectKeyAssertion("bgpPeerLocalAddrType", "\\(key1\\)->type == C_ENUM_VALUE");
}

TEST_F(NeighConfigAfiSafiDeath, RemoteAddressTypeOfAnotherType_FailsTheAssertion)
{
    expectKeyAssertion("bgpPeerRemoteAddrType", "\\(key4\\)->type == C_ENUM_VALUE");
}

TEST_F(NeighConfigAfiSafiDeath, FamilyOfAnotherType_FailsTheAssertion)
{
    expectKeyAssertion("bgpPeerAfiSafiAfi", "\\(key8\\)->type == C_ENUM_VALUE");
}

TEST_F(NeighConfigAfiSafiDeath, SubsequentFamilyOfAnotherType_FailsTheAssertion)
{
    expectKeyAssertion("bgpPeerAfiSafiSafi", "\\(key9\\)->type == C_ENUM_VALUE");
}

TEST_F(NeighConfigAfiSafiDeath, FlagOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpPeerAfiSafiDisable", "uint32");
    stored(table(row("ipv4", "unicast", "2")));
    expectAssertion("check_neigh_config_entry\\(int32_t, int32_t, maapi_cursor&, nzmw_log_t\\*\\)",
                    "\\(&afi_disabled\\)->type == C_ENUM_VALUE");
}

}  // namespace
