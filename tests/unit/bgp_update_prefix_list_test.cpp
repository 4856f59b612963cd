// The prefix-list step: from the routing stack's numbered rules to named lists with sequences, and the maps between
// names and numbers.
#include "bgp_update/prefix_list.h"

#include "confd_lib.h"
#include "support/prefix_list_fixture.h"

namespace {

using namespace bgp_test::prefix_list;
using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::error_text;
using bgp_test::planned;

TEST_F(PrefixList, TwoRulesOfAList_GiveOneListWithTwoSequencesAndItsMaps)
{
    stored(rules(plain_rule(7, 5) + rule(7, 10, prefix("c0:00:02:00", 24) + bounds("25", "32") + action("deny"))));
    stored(hidden("8", name(kRmIndex, 7, "customers")));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLogOfOneBatch(2, {"Found prefix-list idx 7, seq 5", "Found name customers for idx 7",
                            "Found prefix-list idx 7, seq 10", "Found name customers for idx 7"});
    expectChanges({
        "create /prefix-list{customers}",
        "create /prefix-list{customers}/seq{5}",
        "set /prefix-list{customers}/seq{5}/address 10.7.0.0/16",
        "set /prefix-list{customers}/seq{5}/action permit",
        "create /prefix-list{customers}/seq{10}",
        "set /prefix-list{customers}/seq{10}/address 192.0.2.0/24",
        "set /prefix-list{customers}/seq{10}/ge 25",
        "set /prefix-list{customers}/seq{10}/le 32",
        "set /prefix-list{customers}/seq{10}/action deny",
        "create /prefix-list-internal/name-to-idx{customers}",
        "set /prefix-list-internal/name-to-idx{customers}/idx 7",
        "create /prefix-list-internal/idx-to-name{7}",
        "set /prefix-list-internal/idx-to-name{7}/val customers",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, TwoRulesOfAList_AreReadAndWrittenInTheFixedOrder)
{
    stored(rules(rule(7, 5, prefix("0a:07:00:00", 16) + bounds("24", "28") + action("permit")) + plain_rule(7, 10)));
    stored(hidden("8", name(kRmIndex, 7, "customers")));
    device().recorder().start();
    run(update_prefix_list, kRmIndex);
    expectCalls({
        std::string("cdb_get ") + kNextFree + " -> 0",
        std::string("cdb_num_instances ") + kRules + " -> 2",
        std::string("cdb_get_objects ") + kRules + " 9 values of 2 entries from 0 -> 9",
        "cdb_get " + name_path(5, 7) + " -> 0",
        "maapi_exists /prefix-list/{customers} -> 0",
        "maapi_create /prefix-list/{customers} -> 0",
        "maapi_create /prefix-list-internal/name-to-idx{customers} -> 0",
        "maapi_set_elem /prefix-list-internal/name-to-idx{customers}/idx 7 -> 0",
        "maapi_create /prefix-list-internal/idx-to-name{7} -> 0",
        "maapi_set_elem /prefix-list-internal/idx-to-name{7}/val customers -> 0",
        "maapi_create /prefix-list/{customers}/seq{5} -> 0",
        "maapi_set_elem /prefix-list/{customers}/seq{5}/address 10.7.0.0/16 -> 0",
        "maapi_set_elem /prefix-list/{customers}/seq{5}/ge 24 -> 0",
        "maapi_set_elem /prefix-list/{customers}/seq{5}/le 28 -> 0",
        "maapi_set_elem /prefix-list/{customers}/seq{5}/action permit -> 0",
        "maapi_exists /prefix-list/{customers} -> 1",
        "maapi_create /prefix-list/{customers}/seq{10} -> 0",
        "maapi_set_elem /prefix-list/{customers}/seq{10}/address 10.7.0.0/16 -> 0",
        "maapi_set_elem /prefix-list/{customers}/seq{10}/action permit -> 0",
        std::string("maapi_set_elem ") + kNameNext + " 8 -> 0",
    });
}

TEST_F(PrefixList, LowerBoundAlone_GivesNoUpperBound)
{
    storeOneRule(prefix("0a:07:00:00", 16) + bounds("24", "0") + action("permit"));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectChanges({
        "create /prefix-list{customers}",
        "create /prefix-list{customers}/seq{5}",
        "set /prefix-list{customers}/seq{5}/address 10.7.0.0/16",
        "set /prefix-list{customers}/seq{5}/ge 24",
        "set /prefix-list{customers}/seq{5}/action permit",
        "create /prefix-list-internal/name-to-idx{customers}",
        "set /prefix-list-internal/name-to-idx{customers}/idx 7",
        "create /prefix-list-internal/idx-to-name{7}",
        "set /prefix-list-internal/idx-to-name{7}/val customers",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, UpperBoundAlone_GivesNoLowerBound)
{
    storeOneRule(prefix("0a:07:00:00", 16) + bounds("0", "-1") + action("permit"));
    stored(list_there("customers", ""));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectChanges({
        "create /prefix-list{customers}/seq{5}",
        "set /prefix-list{customers}/seq{5}/address 10.7.0.0/16",
        "set /prefix-list{customers}/seq{5}/le -1",
        "set /prefix-list{customers}/seq{5}/action permit",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, LongPrefixLength_IsCutToEightBits)
{
    storeOneRule(prefix("0a:07:00:00", 256 + 16) + action("permit"));
    stored(list_there("customers", ""));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectChanges({
        "create /prefix-list{customers}/seq{5}",
        "set /prefix-list{customers}/seq{5}/address 10.7.0.0/16",
        "set /prefix-list{customers}/seq{5}/action permit",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, RuleWithoutPrefix_GetsTheZeroAddress)
{
    storeOneRule(leaf("aallPreAccessListAddrPrefLen", "0") + action("deny"));
    stored(list_there("customers", ""));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectChanges({
        "create /prefix-list{customers}/seq{5}",
        "set /prefix-list{customers}/seq{5}/address 0.0.0.0/0",
        "set /prefix-list{customers}/seq{5}/action deny",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, ActionNumber_IsWrittenWithoutTranslation)
{
    leafHasType("prefix-list", "action", "types:drop-warn");
    storeOneRule(prefix("0a:07:00:00", 16) + action("deny"));
    stored(list_there("customers", ""));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectChanges({
        "create /prefix-list{customers}/seq{5}",
        "set /prefix-list{customers}/seq{5}/address 10.7.0.0/16",
        "set /prefix-list{customers}/seq{5}/action warn",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, HundredAndTwentyRules_AreReadInBatchesOfFiftyAndTheRest)
{
    std::string rows;
    for (uint32_t number = 1; number <= 120; ++number) {
        rows += plain_rule(7, number);
    }
    stored(rules(rows));
    stored(hidden("8", name(kRmIndex, 7, "customers")));
    device().recorder().start();
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);

    std::vector<std::string> batches;
    for (const auto& call : device().recorder().calls()) {
        if (call.function == Function::cdb_get_objects) {
            batches.push_back(call.arguments);
        }
    }
    EXPECT_EQ(batches, (std::vector<std::string>{"9 values of 50 entries from 0", "9 values of 50 entries from 50",
                                                 "9 values of 20 entries from 100"}));
    EXPECT_EQ(device().calls().of(Function::cdb_get), 2U) << "the next free number and, once, the list's name";
    const std::vector<std::string>& log = device().log();
    ASSERT_EQ(log.size(), 3U + 3U + 2U * 120U + 1U);
    EXPECT_EQ(log[3], "Trying to get next 50 entries\n");
    EXPECT_EQ(log[104], "Trying to get next 50 entries\n");
    EXPECT_EQ(log[205], "Trying to get next 20 entries\n");
    EXPECT_EQ(log[244], "Found prefix-list idx 7, seq 120");
}

TEST_F(PrefixList, SeveralLists_GetTheirOwnNames)
{
    stored(rules(rule(-3, 1, prefix("0a:0d:00:00", 16) + action("permit")) + plain_rule(2, 1) +
                 plain_rule(9, 4294967295)));
    stored(hidden("10", name(kRmIndex, -3, "a b") + name(kRmIndex, 2, "peers") + name(kRmIndex, 9, "transit")));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectChanges({
        "create /prefix-list{\"a b\"}",
        "create /prefix-list{\"a b\"}/seq{1}",
        "set /prefix-list{\"a b\"}/seq{1}/address 10.13.0.0/16",
        "set /prefix-list{\"a b\"}/seq{1}/action permit",
        "create /prefix-list{peers}",
        "create /prefix-list{peers}/seq{1}",
        "set /prefix-list{peers}/seq{1}/address 10.2.0.0/16",
        "set /prefix-list{peers}/seq{1}/action permit",
        "create /prefix-list{transit}",
        "create /prefix-list{transit}/seq{4294967295}",
        "set /prefix-list{transit}/seq{4294967295}/address 10.9.0.0/16",
        "set /prefix-list{transit}/seq{4294967295}/action permit",
        "create /prefix-list-internal/name-to-idx{\"a b\"}",
        "set /prefix-list-internal/name-to-idx{\"a b\"}/idx 4294967293",
        "create /prefix-list-internal/name-to-idx{peers}",
        "set /prefix-list-internal/name-to-idx{peers}/idx 2",
        "create /prefix-list-internal/name-to-idx{transit}",
        "set /prefix-list-internal/name-to-idx{transit}/idx 9",
        "create /prefix-list-internal/idx-to-name{-3}",
        "set /prefix-list-internal/idx-to-name{-3}/val a b",
        "create /prefix-list-internal/idx-to-name{2}",
        "set /prefix-list-internal/idx-to-name{2}/val peers",
        "create /prefix-list-internal/idx-to-name{9}",
        "set /prefix-list-internal/idx-to-name{9}/val transit",
        "set /prefix-list-internal/name-next-index 10",
    });
}

TEST_F(PrefixList, NameUnderTheNextEntity_IsUsedAfterOneComplaint)
{
    stored(rules(plain_rule(7, 5)));
    stored(list_there("customers", ""));
    stored(hidden("8", name(kRmIndex + 1, 7, "customers")));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLogOfOneBatch(1, {"Found prefix-list idx 7, seq 5", no_name(7, absent("cdb_get", name_path(5, 7))),
                            "Found name customers for idx 7"});
    expectChanges({
        "create /prefix-list{customers}/seq{5}",
        "set /prefix-list{customers}/seq{5}/address 10.7.0.0/16",
        "set /prefix-list{customers}/seq{5}/action permit",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, NameUnderBothEntities_IsThatOfTheEntityItself)
{
    stored(rules(plain_rule(7, 5)));
    stored(list_there("customers", ""));
    stored(hidden("8", name(kRmIndex, 7, "customers") + name(kRmIndex + 1, 7, "others")));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLogOfOneBatch(1, {"Found prefix-list idx 7, seq 5", "Found name customers for idx 7"});
}

TEST_F(PrefixList, RulesWithoutName_LookForItAgainEachAndAreLeftOut)
{
    stored(rules(plain_rule(7, 5) + plain_rule(7, 6) + plain_rule(9, 1)));
    stored(hidden("8", name(kRmIndex + 2, 7, "customers") + name(kRmIndex, 9, "transit")));
    stored(list_there("transit", ""));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    const std::string here = no_name(7, absent("cdb_get", name_path(5, 7)));
    const std::string next = no_name(7, absent("cdb_get", name_path(6, 7)));
    expectLogOfOneBatch(3, {"Found prefix-list idx 7, seq 5", here, next, "Found prefix-list idx 7, seq 6", here, next,
                            "Found prefix-list idx 9, seq 1", "Found name transit for idx 9"});
    expectChanges({
        "create /prefix-list{transit}/seq{1}",
        "set /prefix-list{transit}/seq{1}/address 10.9.0.0/16",
        "set /prefix-list{transit}/seq{1}/action permit",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, EntityAfterTheLastNumber_IsNumberZero)
{
    stored(rules(plain_rule(7, 5)));
    stored(list_there("customers", ""));
    stored(hidden("8", name(0, 7, "customers")));
    EXPECT_EQ(run(update_prefix_list, 4294967295U), 0);
    expectLogOfOneBatch(1, {"Found prefix-list idx 7, seq 5",
                            "Could not get name for prefix list (rm_index: 4294967295, pfx_index: 7), err: " +
                                absent("cdb_get", name_path(4294967295U, 7)),
                            "Found name customers for idx 7"});
}

TEST_F(PrefixList, NoRules_CarryOverTheNextNumberAlone)
{
    stored(hidden("8", ""));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLog({"Update Prefix List\n", "It will set name-next-index as 8", "Number of entries is 0",
               "Finishing Prefix List update\n"});
    expectChanges({"set /prefix-list-internal/name-next-index 8"});
}

TEST_F(PrefixList, NextNumberOfMinusOne_IsWrittenAsTheSameBits)
{
    stored(hidden("-1", ""));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLog({"Update Prefix List\n", "It will set name-next-index as -1", "Number of entries is 0",
               "Finishing Prefix List update\n"});
    expectChanges({"set /prefix-list-internal/name-next-index 4294967295"});
}

TEST_F(PrefixList, ListThere_KeepsItsMapsAndGainsTheSequence)
{
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    stored(list_there("customers", leaf("seq", leaf("number", "1"))));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectChanges({
        "create /prefix-list{customers}/seq{5}",
        "set /prefix-list{customers}/seq{5}/address 10.7.0.0/16",
        "set /prefix-list{customers}/seq{5}/action permit",
        "set /prefix-list-internal/name-next-index 8",
    });
}

TEST_F(PrefixList, SequenceThere_IsReportedAndTheNextOneWritten)
{
    stored(rules(plain_rule(7, 5) + plain_rule(7, 6)));
    stored(hidden("8", name(kRmIndex, 7, "customers")));
    stored(list_there("customers", leaf("seq", leaf("number", "5") + leaf("ge", "30"))));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLogOfOneBatch(2, {"Found prefix-list idx 7, seq 5", "Found name customers for idx 7",
                            "Failed to create prefix-list seq 5, err: " +
                                error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS, "/prefix-list/{customers}/seq{5}"),
                            "Found prefix-list idx 7, seq 6", "Found name customers for idx 7"});
    expectChanges({
        "create /prefix-list{customers}/seq{6}",
        "set /prefix-list{customers}/seq{6}/address 10.7.0.0/16",
        "set /prefix-list{customers}/seq{6}/action permit",
        "set /prefix-list-internal/name-next-index 8",
    });
}

// The pieces as callers of the library see them.

class PrefixListPieces : public PrefixList {
protected:
    // Two rows of a batch; the step's row is the second.
    PrefixListPieces()
    {
        for (confd_value_t& value : batch_) {
            CONFD_SET_NOEXISTS(&value);
        }
        CONFD_SET_BINARY(&batch_[13], octets_, sizeof octets_);
        CONFD_SET_UINT32(&batch_[14], 24);
        CONFD_SET_INT32(&batch_[15], 0);
        CONFD_SET_INT32(&batch_[16], 0);
        CONFD_SET_ENUM_VALUE(&batch_[17], 1);
    }

    int maapi() { return open().maapi_socket; }
    int thandle() { return open().thandle; }

    unsigned char octets_[4] = {192, 0, 2, 0};
    confd_value_t batch_[18];
};

TEST_F(PrefixListPieces, Sequence_IsTakenFromTheRowAtItsPlaceInTheBatch)
{
    stored(list_there("transit", ""));
    EXPECT_EQ(create_hl_sequence_entry(maapi(), thandle(), 1, 20, batch_, "transit", 9), 0);
    expectLog({});
    expectChanges({"create /prefix-list{transit}/seq{20}", "set /prefix-list{transit}/seq{20}/address 192.0.2.0/24",
                   "set /prefix-list{transit}/seq{20}/action permit"});
}

TEST_F(PrefixListPieces, SequenceOfAnAbsentList_IsRefused)
{
    EXPECT_EQ(create_hl_sequence_entry(maapi(), thandle(), 1, 20, batch_, "transit", 9), -1);
    expectLog(
        {"Failed to create prefix-list seq 20, err: " + absent("maapi_create", "/prefix-list/{transit}/seq{20}")});
    expectChanges({});
}

TEST_F(PrefixListPieces, SequenceLeafNotWritten_GivesMinusOne)
{
    stored(list_there("transit", ""));
    for (const char* const leaf : {"address", "action"}) {
        const uint32_t sequence = leaf[1] == 'd' ? 20 : 21;
        faults().fail(Function::maapi_set_elem, "/prefix-list/{transit}/seq{" + std::to_string(sequence) + "}/" + leaf);
        EXPECT_EQ(create_hl_sequence_entry(maapi(), thandle(), 1, sequence, batch_, "transit", 9), -1) << leaf;
    }
}

TEST_F(PrefixListPieces, ListAndMaps_AreCreatedOnce)
{
    EXPECT_EQ(create_hl_and_internal_entries(maapi(), thandle(), "transit", 9), 0);
    EXPECT_EQ(create_hl_and_internal_entries(maapi(), thandle(), "transit", 10), 0);
    expectLog({});
    expectChanges({"create /prefix-list{transit}", "create /prefix-list-internal/name-to-idx{transit}",
                   "set /prefix-list-internal/name-to-idx{transit}/idx 9",
                   "create /prefix-list-internal/idx-to-name{9}",
                   "set /prefix-list-internal/idx-to-name{9}/val transit"});
}

TEST_F(PrefixListPieces, ListOrMapNotWritten_GivesMinusOne)
{
    for (std::size_t n = 2; n <= 6; ++n) {
        const std::string name = "list" + std::to_string(n);
        faults().clear();
        faults().fail_call(n);
        EXPECT_EQ(create_hl_and_internal_entries(maapi(), thandle(), name, static_cast<int>(n)), -1) << "call " << n;
    }
}

TEST_F(PrefixListPieces, FailedLookForTheList_CountsAsAbsent)
{
    stored(list_there("transit", ""));
    faults().fail(Function::maapi_exists);
    EXPECT_EQ(create_hl_and_internal_entries(maapi(), thandle(), "transit", 9), -1);
    expectLog({"Failed to create prefix-list entry named transit, err: " +
               error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS, "/prefix-list/{transit}")});
    expectChanges({});
}

TEST_F(PrefixListPieces, Entry_IsListMapsAndSequenceAndAlwaysZero)
{
    EXPECT_EQ(update_entry(maapi(), thandle(), 1, 20, batch_, "transit", 9), 0);
    faults().fail_call(1, {}, true);
    EXPECT_EQ(update_entry(maapi(), thandle(), 1, 21, batch_, "peers", 10), 0);
    expectLog(
        {"Found name transit for idx 9", "Found name peers for idx 10",
         "Failed to create prefix-list entry named peers, err: " + planned("maapi_create", "/prefix-list/{peers}"),
         "Failed to create prefix-list seq 21, err: " + planned("maapi_create", "/prefix-list/{peers}/seq{21}")});
    expectChanges(
        {"create /prefix-list{transit}", "create /prefix-list{transit}/seq{20}",
         "set /prefix-list{transit}/seq{20}/address 192.0.2.0/24", "set /prefix-list{transit}/seq{20}/action permit",
         "create /prefix-list-internal/name-to-idx{transit}", "set /prefix-list-internal/name-to-idx{transit}/idx 9",
         "create /prefix-list-internal/idx-to-name{9}", "set /prefix-list-internal/idx-to-name{9}/val transit"});
}

}  // namespace
