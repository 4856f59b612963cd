// The prefix-list step where a call fails or a value is of another type: what it says, what it still writes, and where it
// ends.
#include "bgp_update/prefix_list.h"

#include "confd_lib.h"
#include "support/prefix_list_fixture.h"

namespace {

using namespace bgp_test::prefix_list;
using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::error_text;
using bgp_test::planned;

TEST_F(PrefixList, NextNumberAbsent_WritesNothingAndFails)
{
    stored(rules(plain_rule(7, 5)));
    stored(hidden("", name(kRmIndex, 7, "customers")));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), -1);
    expectLog({"Update Prefix List\n", "Couldn't read next_free_index. err: " + absent("cdb_get", kNextFree) + " \n"});
    expectChanges({});
}

TEST_F(PrefixList, NextNumberNotWritten_Fails)
{
    stored(hidden("8", ""));
    faults().fail(Function::maapi_set_elem, kNameNext);
    EXPECT_EQ(run(update_prefix_list, kRmIndex), -1);
    expectLog({"Update Prefix List\n", "It will set name-next-index as 8", "Number of entries is 0",
               "Couldn't set internal name-next-index value! err: " + planned("maapi_set_elem", kNameNext)});
    expectChanges({});
}

TEST_F(PrefixList, FailedCount_CountsAsNoRules)
{
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    faults().fail(Function::cdb_num_instances);
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLog({"Update Prefix List\n", "It will set name-next-index as 8", "Number of entries is -1",
               "Finishing Prefix List update\n"});
    expectChanges({"set /prefix-list-internal/name-next-index 8"});
}

TEST_F(PrefixList, UnreadableBatch_FailsAndKeepsWhatEarlierBatchesGave)
{
    std::string rows;
    for (uint32_t number = 1; number <= 51; ++number) {
        rows += plain_rule(7, number);
    }
    stored(rules(rows));
    stored(list_there("customers", ""));
    stored(hidden("8", name(kRmIndex, 7, "customers")));
    faults().fail(Function::cdb_get_objects, {}, {}, 1, 1);
    EXPECT_EQ(run(update_prefix_list, kRmIndex), -1);
    EXPECT_EQ(device().log().back(),
              "Could not get prefix list entries, ret: -1 (err: " + planned("cdb_get_objects", kRules) + ")");
    EXPECT_EQ(device().calls().of(Function::maapi_create), 50U);
    EXPECT_EQ(device().calls().of(Function::maapi_set_elem), 100U) << "addresses and actions, no next number";
}

TEST_F(PrefixList, RowsOfLessThanNineValues_FailTheBatch)
{
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    faults().fail(Function::cdb_get_objects, {}, {CONFD_ERR_INTERNAL, 8});
    EXPECT_EQ(run(update_prefix_list, kRmIndex), -1);
    expectLog({"Update Prefix List\n", "It will set name-next-index as 8", "Number of entries is 1",
               "Trying to get next 1 entries\n",
               "Could not get prefix list entries, ret: 8 (err: " + planned("cdb_get_objects", kRules) + ")"});
    expectChanges({});
}

TEST_F(PrefixList, ListNotCreated_IsReportedAndItsSequenceTriedAllTheSame)
{
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    faults().fail(Function::maapi_create, "/prefix-list/{customers}", {}, 1);
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLogOfOneBatch(
        1, {"Found prefix-list idx 7, seq 5", "Found name customers for idx 7",
            "Failed to create prefix-list entry named customers, err: " +
                planned("maapi_create", "/prefix-list/{customers}"),
            "Failed to create prefix-list seq 5, err: " + absent("maapi_create", "/prefix-list/{customers}/seq{5}")});
    expectChanges({"set /prefix-list-internal/name-next-index 8"});
}

// A write of the list's maps that fails: its line, and what was written of the maps before it.
struct UnwritableMap {
    const char* name;
    Function call;
    const char* call_name;
    const char* path;
    const char* message;
    std::vector<std::string> maps;
};

const UnwritableMap kUnwritableMaps[] = {
    {"NameToIdx",
     Function::maapi_create,
     "maapi_create",
     "/prefix-list-internal/name-to-idx{customers}",
     "Failed to create name-to-idx map for name customers, err: ",
     {}},
    {"Idx",
     Function::maapi_set_elem,
     "maapi_set_elem",
     "/prefix-list-internal/name-to-idx{customers}/idx",
     "Could not set idx 7 for name-to-idx map (pfx_name: customers), err: ",
     {"create /prefix-list-internal/name-to-idx{customers}"}},
    {"IdxToName",
     Function::maapi_create,
     "maapi_create",
     "/prefix-list-internal/idx-to-name{7}",
     "Failed to create idx-to-name map for idx 7, err: ",
     {"create /prefix-list-internal/name-to-idx{customers}", "set /prefix-list-internal/name-to-idx{customers}/idx 7"}},
    {"Val",
     Function::maapi_set_elem,
     "maapi_set_elem",
     "/prefix-list-internal/idx-to-name{7}/val",
     "Could not set name customers for idx-to-name map (pfx_index: 7), err: ",
     {"create /prefix-list-internal/name-to-idx{customers}", "set /prefix-list-internal/name-to-idx{customers}/idx 7",
      "create /prefix-list-internal/idx-to-name{7}"}},
};

class UnwritablePrefixListMap : public PrefixList, public testing::WithParamInterface<UnwritableMap> {};

TEST_P(UnwritablePrefixListMap, IsLoggedAndTheSequenceIsWritten)
{
    const UnwritableMap& unwritable = GetParam();
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    faults().fail(unwritable.call, unwritable.path);
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLogOfOneBatch(1, {"Found prefix-list idx 7, seq 5", "Found name customers for idx 7",
                            unwritable.message + planned(unwritable.call_name, unwritable.path)});
    std::vector<std::string> changes = {"create /prefix-list{customers}", "create /prefix-list{customers}/seq{5}",
                                        "set /prefix-list{customers}/seq{5}/address 10.7.0.0/16",
                                        "set /prefix-list{customers}/seq{5}/action permit"};
    changes.insert(changes.end(), unwritable.maps.begin(), unwritable.maps.end());
    changes.push_back("set /prefix-list-internal/name-next-index 8");
    expectChanges(changes);
}

INSTANTIATE_TEST_SUITE_P(PrefixList, UnwritablePrefixListMap, testing::ValuesIn(kUnwritableMaps),
                         [](const auto& unwritable) { return std::string(unwritable.param.name); });

// Leaves of a sequence in the order in which they are written.
const char* const kSequenceLeaves[] = {"address", "ge", "le", "action"};
const char* const kSequenceValues[] = {"10.7.0.0/16", "24", "28", "permit"};

class UnwritableSequenceLeaf : public PrefixList, public testing::WithParamInterface<std::size_t> {};

TEST_P(UnwritableSequenceLeaf, IsLoggedByTheSequenceNumberAndEndsTheSequence)
{
    const std::size_t failing = GetParam();
    storeOneRule(prefix("0a:07:00:00", 16) + bounds("24", "28") + action("permit"));
    stored(list_there("customers", ""));
    const std::string path = std::string("/prefix-list/{customers}/seq{5}/") + kSequenceLeaves[failing];
    faults().fail(Function::maapi_set_elem, path);
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    expectLogOfOneBatch(1, {"Found prefix-list idx 7, seq 5", "Found name customers for idx 7", not_set(5, path)});
    std::vector<std::string> changes = {"create /prefix-list{customers}/seq{5}"};
    for (std::size_t i = 0; i < failing; ++i) {
        changes.push_back(std::string("set /prefix-list{customers}/seq{5}/") + kSequenceLeaves[i] + " " +
                          kSequenceValues[i]);
    }
    changes.push_back("set /prefix-list-internal/name-next-index 8");
    expectChanges(changes);
}

INSTANTIATE_TEST_SUITE_P(PrefixList, UnwritableSequenceLeaf, testing::Range<std::size_t>(0, 4),
                         [](const auto& failing) { return std::string(kSequenceLeaves[failing.param]); });

TEST_F(PrefixList, PrefixLengthThatNoAddressHas_IsRefusedByTheModelAndReported)
{
    storeOneRule(prefix("0a:07:00:00", 33) + action("permit"));
    stored(list_there("customers", ""));
    EXPECT_EQ(run(update_prefix_list, kRmIndex), 0);
    EXPECT_EQ(device().log()[6].rfind("Could not set address for prefix list (pfx_name: customers, pfx_index: 5), "
                                      "err: maapi_set_elem: bad type: ",
                                      0),
              0U)
        << device().log()[6];
    expectChanges({"create /prefix-list{customers}/seq{5}", "set /prefix-list-internal/name-next-index 8"});
}

TEST_F(PrefixList, AnyCallFailing_LeavesNothingOpen)
{
    const std::string rows = rules(plain_rule(7, 5) + plain_rule(9, 1));
    const std::string names = hidden("8", name(kRmIndex, 7, "customers") + name(kRmIndex + 1, 9, "transit"));
    std::size_t n = 1;
    for (bool failed = true; failed; ++n) {
        bgp_platform::Device swept;
        swept.load_text(bgp_test::config(rows + names));
        const bgp_platform::UpgradeHandles handles = swept.open_upgrade();
        swept.fault_plan().fail_call(n);
        update_prefix_list(handles.maapi_socket, handles.thandle, handles.cdb_socket, kRmIndex);
        EXPECT_TRUE(swept.open_things().none()) << "call " << n;
        failed = swept.fault_plan().seen() >= n;
    }
    EXPECT_EQ(n, 27U) << "calls of the step, and two";
}

// Values of the wrong type.

class PrefixListDeath : public PrefixList {
protected:
    void expectAssertion(const std::string& function, const std::string& expression)
    {
        const bgp_platform::UpgradeHandles handles = open();
        EXPECT_DEATH(update_prefix_list(handles.maapi_socket, handles.thandle, handles.cdb_socket, kRmIndex),
                     "src/config_update/bgp_update_prefix_list:[0-9]+: int32_t " + function + ": Assertion `" +
                         expression + "' failed\\.");
    }
};

constexpr char kStep[] = "update_prefix_list\\(int32_t, int32_t, int32_t, uint32_t\\)";
constexpr char kSequenceEntry[] =
    "create_hl_sequence_entry\\(int32_t, int32_t, int, uint32_t, confd_value_t\\*, std::string, int32_t\\)";

std::string column(const std::string& name, const std::string& type)
{
    return "\\(&pfx_entries\\[jpfx \\* aallPreAccessListLast \\+ aallPreAccessList" + name + "\\]\\)->type == " + type;
}

TEST_F(PrefixListDeath, NextNumberOfAnotherType_FailsTheAssertion)
{
    leafHasType("metacli-internal", "aallPreAccessListEntry_next_free_index", "uint32");
    stored(hidden("8", ""));
    expectAssertion(kStep, "\\(&free_index_val\\)->type == C_INT32");
}

TEST_F(PrefixListDeath, ListNumberOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-AALL-MIB", "aallPreAccessListListIndex", "uint32");
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    expectAssertion(kStep, column("ListIndex", "C_INT32"));
}

TEST_F(PrefixListDeath, RuleNumberOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-AALL-MIB", "aallPreAccessListRuleIndex", "int32");
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    expectAssertion(kStep, column("RuleIndex", "C_UINT32"));
}

TEST_F(PrefixListDeath, NameOfAnotherType_FailsTheAssertion)
{
    leafHasType("metacli-internal", "aallPreAccessListEntry-get/name", "uint32");
    stored(rules(plain_rule(7, 5)));
    stored(hidden("8", name(kRmIndex, 7, "77")));
    expectAssertion(kStep, "\\(&myval\\)->type == C_BUF");
}

TEST_F(PrefixListDeath, PrefixLengthOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-AALL-MIB", "aallPreAccessListAddrPrefLen", "int32");
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    expectAssertion(kSequenceEntry, column("AddrPrefLen", "C_UINT32"));
}

TEST_F(PrefixListDeath, PrefixLengthAbsent_FailsTheAssertion)
{
    storeOneRule(leaf("aallPreAccessListAddrPrefix", "0a:07:00:00") + action("permit"));
    expectAssertion(kSequenceEntry, column("AddrPrefLen", "C_UINT32"));
}

TEST_F(PrefixListDeath, LowerBoundOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-AALL-MIB", "aallPreAccessListAddrPrefGe", "uint32");
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    expectAssertion(kSequenceEntry, column("AddrPrefGe", "C_INT32"));
}

TEST_F(PrefixListDeath, UpperBoundOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-AALL-MIB", "aallPreAccessListAddrPrefLe", "uint32");
    storeOneRule(prefix("0a:07:00:00", 16) + action("permit"));
    expectAssertion(kSequenceEntry, column("AddrPrefLe", "C_INT32"));
}

TEST_F(PrefixListDeath, ActionOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-AALL-MIB", "aallPreAccessListIncluded", "uint32");
    storeOneRule(prefix("0a:07:00:00", 16) + action("1"));
    expectAssertion(kSequenceEntry, column("Included", "C_ENUM_VALUE"));
}

}  // namespace
