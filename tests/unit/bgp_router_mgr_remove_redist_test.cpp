// Removal of what a BGP instance redistributes: the rules into it with their map entries, and the networks it
// announces.
#include "support/due_keepalive.h"
#include "support/router_mgr_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::configs;
using bgp_test::internal;
using bgp_test::rows;
using bgp_test::table;

constexpr char kConfigs[] = "/DC-BGP-MIB/bgpConfigTable/bgpConfigEntry";
constexpr char kRedistRules[] = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry";
constexpr char kNetworks[] = "/internal/rtmRedistEntry-hidden/rtmRedistEntry-get";

// Redistribution rules ----------------------------------------------------------------------------------------------

std::string redist_rule(const char* rtm, const char* entry, const std::string& leaves)
{
    return std::string("<rtmRedistFteIndex>") + rtm + "</rtmRedistFteIndex><rtmRedistEntryId>" + entry +
           "</rtmRedistEntryId>" + leaves;
}

std::string redist_rules(const std::vector<std::string>& leaves)
{
    return table("DC-RTM-MIB", "rtmRedistTable", rows("rtmRedistEntry", leaves));
}

std::string redist_protocol(const char* rtm, const char* entry, const std::string& leaves)
{
    return std::string("<redist-protocol xmlns=\"urn:bgp-update:yang:redist-protocol\"><rtm-index>") + rtm +
           "</rtm-index><entry>" + entry + "</entry>" + leaves + "</redist-protocol>";
}

constexpr char kIntoBgp[] = "<rtmRedistInfoDest>bgp</rtmRedistInfoDest>";

class RemoveRedistEntry : public bgp_test::RemoveTest {
protected:
    int remove_rules(uint32_t index) { return manager().RemoveRedistEntry(open().maapi_socket, context(), index); }
};

TEST_F(RemoveRedistEntry, RulesOfTheInstance_GoWithTheirMapEntries)
{
    stored(redist_rules({redist_rule("1", "33554432", kIntoBgp), redist_rule("2", "33554432", kIntoBgp),
                         redist_rule("2", "50331648", kIntoBgp)}) +
           redist_protocol("1", "33554432", "<protocol-index>6</protocol-index>") +
           redist_protocol("2", "33554432", "<protocol-index>9</protocol-index>") +
           redist_protocol("2", "50331648", "<protocol-index>6</protocol-index>"));
    EXPECT_EQ(remove_rules(6), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 33554432}",
                   "delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{2 50331648}",
                   "delete /redist-protocol{1 33554432}", "delete /redist-protocol{2 50331648}"});
    expectLog({"Calling RemoveRedistEntry for 6", "Got protocol index 6", "Will delete entry", "Got protocol index 9",
               "Got protocol index 6", "Will delete entry"});
    expectNothingLeftOpen();
}

TEST_F(RemoveRedistEntry, RulesThatAreNotIntoBgpOrNotMapped_Stay)
{
    stored(redist_rules({redist_rule("1", "1", "<rtmRedistInfoDest>ospf</rtmRedistInfoDest>"),
                         redist_rule("1", "2", ""),  //
                         redist_rule("1", "3", kIntoBgp), redist_rule("1", "4", kIntoBgp)}) +
           redist_protocol("1", "1", "<protocol-index>6</protocol-index>") +
           redist_protocol("1", "2", "<protocol-index>6</protocol-index>") + redist_protocol("1", "4", ""));
    EXPECT_EQ(remove_rules(6), 0);
    expectChanges({});
    expectLog({"Calling RemoveRedistEntry for 6"});
    expectNothingLeftOpen();
}

TEST_F(RemoveRedistEntry, EveryRow_KeepsTheTransactionAlive)
{
    stored(redist_rules({redist_rule("1", "1", "<rtmRedistInfoDest>ospf</rtmRedistInfoDest>"),
                         redist_rule("1", "2", kIntoBgp), redist_rule("1", "3", kIntoBgp)}) +
           redist_protocol("1", "2", "<protocol-index>9</protocol-index>") +
           redist_protocol("1", "3", "<protocol-index>6</protocol-index>"));
    open();
    device().recorder().start();
    EXPECT_EQ(remove_rules(6), 0);
    EXPECT_EQ(bgp_test::listing(recordedWrites()),
              bgp_test::listing({"confd_data_set_timeout 24 -> 0", "confd_data_set_timeout 24 -> 0",
                                 "maapi_delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 3} -> 0",
                                 "maapi_delete /redist-protocol{1 3} -> 0", "confd_data_set_timeout 24 -> 0"}));
}

TEST_F(RemoveRedistEntry, FailedDeletes_ArePassedOver)
{
    stored(redist_rules({redist_rule("1", "2", kIntoBgp), redist_rule("1", "3", kIntoBgp)}) +
           redist_protocol("1", "2", "<protocol-index>6</protocol-index>") +
           redist_protocol("1", "3", "<protocol-index>6</protocol-index>"));
    faults().fail(Function::maapi_delete, kRedistRules, {}, 1);
    EXPECT_EQ(remove_rules(6), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 3}", "delete /redist-protocol{1 2}",
                   "delete /redist-protocol{1 3}"});
    expectNothingLeftOpen();
}

TEST_F(RemoveRedistEntry, EmptyTable_IsLeftAlone)
{
    EXPECT_EQ(remove_rules(6), 0);
    expectChanges({});
    expectNothingLeftOpen();
}

TEST_F(RemoveRedistEntry, RuleTableAmongTheTables_IsWalkedForItsProtocolsAndNotByItsKeys)
{
    stored(redist_rules({redist_rule("1", "2", kIntoBgp), redist_rule("6", "1", "")}) + configs({{"6", "1"}}) +
           redist_protocol("1", "2", "<protocol-index>6</protocol-index>"));
    EXPECT_EQ(remove(6, {kRedistRules, kConfigs}), 0);
    expectChanges({"delete /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry{6 1}",
                   "delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 2}", "delete /redist-protocol{1 2}"});
    expectLog({"Calling Remove for 6", "Removing table /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry",
               "Calling RemoveRedistEntry for 6", "Got protocol index 6", "Will delete entry",
               "Removing table /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry"});
}

// Networks ----------------------------------------------------------------------------------------------------------

constexpr char kIpv6Prefix[] = "20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:00";

std::string set_row(const char* entity, const char* rtm, const char* address, const char* length)
{
    return std::string("<rtmRedistEntry-set><entity>") + entity + "</entity><rtm-index>" + rtm +
           "</rtm-index><address>" + address + "</address><length>" + length + "</length></rtmRedistEntry-set>";
}

std::string get_row(const char* entity, const char* rtm, const char* entry, const std::string& leaves)
{
    return std::string("<rtmRedistEntry-get><entity>") + entity + "</entity><rtm-index>" + rtm + "</rtm-index><entry>" +
           entry + "</entry>" + leaves + "</rtmRedistEntry-get>";
}

std::string prefix(const char* type, const char* address, const char* length)
{
    return std::string("<rtmRedistAddrFilterType>") + type + "</rtmRedistAddrFilterType><rtmRedistAddrFilter>" +
           address + "</rtmRedistAddrFilter><rtmRedistAddrFilterLen>" + length + "</rtmRedistAddrFilterLen>";
}

std::string networks(const std::string& rows_and_index)
{
    return internal("<rtmRedistEntry-hidden>" + rows_and_index + "</rtmRedistEntry-hidden>");
}

const char* const kNextIndex = "<rtmRedistEntry_next_free_index>555337900</rtmRedistEntry_next_free_index>";

class RemoveRedistNetwork : public bgp_test::RemoveTest {};

TEST_F(RemoveRedistNetwork, LastNetwork_GoesEverywhereAndTheNextIndexBeginsAnew)
{
    stored(networks(set_row("6", "1", "0a:00:00:00", "8") +
                    get_row("6", "1", "555337809", prefix("ipv4", "0a:00:00:00", "8")) + kNextIndex) +
           redist_rules({redist_rule("1", "555337809", "")}));
    EXPECT_EQ(remove(6, {kNetworks}), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 555337809}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-set{6 1 0a:00:00:00 8}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{6 1 555337809}",
                   "set /internal/rtmRedistEntry-hidden/rtmRedistEntry_next_free_index 555337809"});
    expectLog({"Calling Remove for 6", "Removing table /internal/rtmRedistEntry-hidden/rtmRedistEntry-get",
               "Calling RemoveRedistNetwork for 6", "Checking num hidden set instances...",
               "Num instances 0, setting default index..."});
    expectNothingLeftOpen();
}

TEST_F(RemoveRedistNetwork, OneOfSeveral_LeavesTheOthersAndTheNextIndex)
{
    stored(networks(set_row("6", "1", "0a:00:00:00", "8") + set_row("6", "2", kIpv6Prefix, "32") +
                    set_row("8", "1", "0b:00:00:00", "8") +
                    get_row("6", "1", "555337809", prefix("ipv4", "0a:00:00:00", "8")) +
                    get_row("6", "2", "555337810", prefix("ipv6", kIpv6Prefix, "32")) +
                    get_row("7", "1", "555337812", "") +
                    get_row("8", "1", "555337811", prefix("ipv4", "0b:00:00:00", "8")) + kNextIndex) +
           redist_rules({redist_rule("1", "555337809", ""), redist_rule("1", "555337811", ""),
                         redist_rule("2", "555337810", "")}));
    EXPECT_EQ(remove(6, {kNetworks}), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 555337809}",
                   "delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{2 555337810}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-set{6 1 0a:00:00:00 8}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-set{6 2 " + std::string(kIpv6Prefix) + " 32}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{6 1 555337809}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{6 2 555337810}"});
    expectLog({"Calling Remove for 6", "Removing table /internal/rtmRedistEntry-hidden/rtmRedistEntry-get",
               "Calling RemoveRedistNetwork for 6", "Checking num hidden set instances...",
               "Calling RemoveRedistNetwork for 6", "Checking num hidden set instances...",
               "the table entry /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{7 1 555337812} does not belong to "
               "this BGP instance!"});
    expectNothingLeftOpen();
}

TEST_F(RemoveRedistNetwork, NetworkWithoutAPrefix_IsTakenForTheIpv6ZeroPrefix)
{
    stored(networks(set_row("6", "1", "00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00", "0") +
                    get_row("6", "1", "555337809", "")) +
           redist_rules({redist_rule("1", "555337809", "")}));
    EXPECT_EQ(remove(6, {kNetworks}), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 555337809}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-set{6 1 "
                   "00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00 0}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{6 1 555337809}",
                   "set /internal/rtmRedistEntry-hidden/rtmRedistEntry_next_free_index 555337809"});
    expectNothingLeftOpen();
}

TEST_F(RemoveRedistNetwork, MissingSetRowAndRule_AreToldOfAndTheNetworkGoesAllTheSame)
{
    stored(networks(set_row("8", "1", "0b:00:00:00", "8") +
                    get_row("6", "1", "555337809", prefix("ipv4", "0a:00:00:00", "8"))));
    EXPECT_EQ(remove(6, {kNetworks}), 0);
    expectChanges({"delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{6 1 555337809}"});
    expectLog(
        {"Calling Remove for 6", "Removing table /internal/rtmRedistEntry-hidden/rtmRedistEntry-get",
         "Calling RemoveRedistNetwork for 6",
         "Failed to delete hidden set entry (err: " +
             bgp_test::absent("maapi_delete", "/internal/rtmRedistEntry-hidden/rtmRedistEntry-set{6 1 0a:00:00:00 8}") +
             ")",
         "Failed to delete redist entry (err: " +
             bgp_test::absent("maapi_delete", "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 555337809}") + ")",
         "Checking num hidden set instances..."});
    expectNothingLeftOpen();
}

TEST_F(RemoveRedistNetwork, CountThatFails_LeavesTheNextIndex)
{
    stored(networks(set_row("6", "1", "0a:00:00:00", "8") +
                    get_row("6", "1", "555337809", prefix("ipv4", "0a:00:00:00", "8")) + kNextIndex));
    faults().fail(Function::maapi_num_instances);
    EXPECT_EQ(remove(6, {kNetworks}), 0);
    expectChanges({"delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-set{6 1 0a:00:00:00 8}",
                   "delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{6 1 555337809}"});
}

TEST_F(RemoveRedistNetwork, EveryNetwork_KeepsTheTransactionAlive)
{
    stored(networks(set_row("6", "1", "0a:00:00:00", "8") +
                    get_row("6", "1", "555337809", prefix("ipv4", "0a:00:00:00", "8")) +
                    get_row("7", "1", "555337812", "")));
    open();
    device().recorder().start();
    EXPECT_EQ(remove(6, {kNetworks}), 0);
    const std::vector<std::string> writes = recordedWrites();
    ASSERT_GE(writes.size(), 6U);
    EXPECT_EQ(bgp_test::listing({writes.begin(), writes.begin() + 6}),
              bgp_test::listing(
                  {"maapi_delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-set{6 1 0a:00:00:00 8} -> 0",
                   "maapi_delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{1 555337809} -> -1 (item does not exist)",
                   "maapi_set_elem /internal/rtmRedistEntry-hidden/rtmRedistEntry_next_free_index 555337809 -> 0",
                   "maapi_delete /internal/rtmRedistEntry-hidden/rtmRedistEntry-get{6 1 555337809} -> 0",
                   "confd_data_set_timeout 24 -> 0", "confd_data_set_timeout 24 -> 0"}));
}

}  // namespace
