// The numbers of route maps and of route policies: what each operation writes, traces and gives, from a transaction and
// a running datastore that agree and that differ. Every test but the last ones runs for both.
#include <gtest/gtest.h>

#include <string>

#include "support/map_index_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_platform::capi::PlannedFailure;
using bgp_test::absent;
using bgp_test::Name;
using bgp_test::planned;
using confd::Value;

using MapIndexLookup = bgp_test::MapIndexTest;
using MapIndexCreate = bgp_test::MapIndexTest;
using MapIndexDelete = bgp_test::MapIndexTest;

const auto kBoth = testing::Values(&bgp_test::kRouteMaps, &bgp_test::kRoutePolicies);
INSTANTIATE_TEST_SUITE_P(Both, MapIndexLookup, kBoth, bgp_test::allocator_name);
INSTANTIATE_TEST_SUITE_P(Both, MapIndexCreate, kBoth, bgp_test::allocator_name);
INSTANTIATE_TEST_SUITE_P(Both, MapIndexDelete, kBoth, bgp_test::allocator_name);

// Lookup ------------------------------------------------------------------------------------------------------------

TEST_P(MapIndexLookup, NumberedName_IsFoundInTheTransaction)
{
    storeVrf({}, "4", {{"in", "3"}});
    Value found;
    ASSERT_EQ(get("in", &found), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found), 3U);
    expectTrace({getLine("10 Entry Point"), getLine("10 Recovered idx['red','in'] = 3")});
    EXPECT_EQ(device().calls().of(Function::cdb_connect), 0U);
    expectChanges({});
}

TEST_P(MapIndexLookup, NameDeletedInTheTransaction_IsFoundInTheRunningDatastore)
{
    storeVrf({}, "4", {{"in", "3"}});
    deleteInTransaction(entry("in"));
    Value found;
    ASSERT_EQ(get("in", &found), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found), 3U);
    expectTrace({getLine("10 Entry Point"), getLine("10 Recovered idx['red','in'] = 3")});
    expectNothingLeftOpen();
}

TEST_P(MapIndexLookup, NumberOf32Bits_IsFoundWholeAndTracedAsSigned)
{
    storeVrf({}, "4", {{"in", "4294967295"}});
    Value found;
    ASSERT_EQ(get("in", &found), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found), 4294967295U);
    expectTrace({getLine("10 Entry Point"), getLine("10 Recovered idx['red','in'] = -1")});
}

TEST_P(MapIndexLookup, UnknownName_GivesTheResultOfTheReadAndZero)
{
    storeVrf({}, "4", {{"in", "3"}});
    Value found;
    EXPECT_EQ(get("out", &found), CONFD_ERR);
    ASSERT_EQ(found.type, C_UINT32);
    EXPECT_EQ(CONFD_GET_UINT32(&found), 0U);
    expectTrace({getLine("10 Entry Point"), getLine("10 " + std::string(allocator().not_found))});
    expectNothingLeftOpen();
}

TEST_P(MapIndexLookup, OtherEndClosing_IsTheResultOfTheRead)
{
    faults().fail(Function::cdb_get, {}, PlannedFailure::end_of_file());
    Value found;
    EXPECT_EQ(get("in", &found), CONFD_EOF);
    expectTrace({getLine("10 Entry Point"), getLine("10 " + std::string(allocator().not_found))});
    expectNothingLeftOpen();
}

TEST_P(MapIndexLookup, SessionRefused_FailsWithoutALine)
{
    storeVrf({}, "4", {{"in", "3"}});
    deleteInTransaction(entry("in"));
    faults().fail(Function::cdb_start_session, {}, PlannedFailure::end_of_file());
    Value found;
    EXPECT_EQ(get("in", &found), -1);
    EXPECT_EQ(CONFD_GET_UINT32(&found), 0U);
    expectTrace({getLine("10 Entry Point")});
    expectNothingLeftOpen();
}

TEST_P(MapIndexLookup, WithoutAPlaceForTheResult_NothingIsAsked)
{
    storeVrf({}, "4", {{"in", "3"}});
    open();
    device().recorder().start();
    EXPECT_EQ(get("in", nullptr), -1);
    expectCalls({});
    expectTrace({getLine("10 Entry Point")});
}

// Creation ----------------------------------------------------------------------------------------------------------

TEST_P(MapIndexCreate, FirstOfANewVrf_IsTheCountersDefault)
{
    EXPECT_EQ(create("in"), 1U);
    EXPECT_EQ(counter(), 2U);
    expectChanges({changed("create", ""), changed("set", "/next-index", "2"), changed("create", "/stringTOindex{in}"),
                   changed("set", "/stringTOindex{in}/" + std::string(allocator().leaf), "1")});
    expectNothingLeftOpen();
}

TEST_P(MapIndexCreate, FirstOfANewVrf_IsTracedStepByStep)
{
    EXPECT_EQ(create("in"), 1U);
    // The error told with a result of 0 is the last there was.
    expectTrace(
        {createLine(entered()), getLine("10 Entry Point"), getLine("10 " + std::string(allocator().not_found)),
         createLine("11 " + freeIndex()), createLine("10 Entry Point"),
         createLine("11 " + std::string(allocator().vrf_created) + "0 error: " + absent("cdb_get", number("in"))),
         createLine("11 " + std::string(allocator().from_counter)), createLine("11 Set next-index to 1"),
         createLine("10 Entry Point"),
         createLine("11 Creating '" + entry("in") + "' ret:0 error:'" + absent("maapi_get_elem", freeIndex()) + "'"),
         getLine("10 Entry Point"), getLine("10 Recovered idx['red','in'] = 1"),
         createLine("11 " + std::string(allocator().returning) + "1")});
}

TEST_P(MapIndexCreate, CreatedTwice_KeepsItsNumberAndTakesNoOther)
{
    EXPECT_EQ(create("in"), 1U);
    traced();
    EXPECT_EQ(create("in"), 1U);
    EXPECT_EQ(counter(), 2U);
    expectTrace({createLine(entered()), getLine("10 Entry Point"), getLine("10 Recovered idx['red','in'] = 1"),
                 createLine("11 " + std::string(allocator().already_set) + "1")});
}

TEST_P(MapIndexCreate, NextName_GetsTheNextNumber)
{
    EXPECT_EQ(create("in"), 1U);
    EXPECT_EQ(create("out"), 2U);
    EXPECT_EQ(counter(), 3U);
    EXPECT_EQ(allocator().create(maapi(), thandle(), Name("blue"), Name("in")), 1U) << "each VRF has its own";
}

TEST_P(MapIndexCreate, NamesWithBlanksAndBraces_AreNamesLikeOthers)
{
    const Name vrf("red {one}");
    EXPECT_EQ(allocator().create(maapi(), thandle(), Name(vrf), Name("in \"a\"")), 1U);
    EXPECT_EQ(allocator().create(maapi(), thandle(), Name(vrf), Name("in \"a\"")), 1U);
    EXPECT_EQ(allocator().create(maapi(), thandle(), Name(vrf), Name("in b")), 2U);
    EXPECT_EQ(allocator().remove(maapi(), thandle(), Name(vrf), Name("in \"a\"")), 0);
    EXPECT_EQ(allocator().create(maapi(), thandle(), Name(vrf), Name("in c")), 1U);
}

TEST_P(MapIndexCreate, LongNames_AreNotCut)
{
    const std::string base(300, 'x');
    EXPECT_EQ(create((base + "1").c_str()), 1U);
    EXPECT_EQ(create((base + "2").c_str()), 2U);
    EXPECT_EQ(create((base + "1").c_str()), 1U);
    EXPECT_EQ(maapi_exists(maapi(), thandle(), "%s", entry(base + "2").c_str()), 1);
}

TEST_P(MapIndexCreate, ReleasedNumbers_AreUsedInTheirOrderBeforeTheCounter)
{
    storeVrf({9, 5}, "12", {});
    EXPECT_EQ(create("a"), 5U) << "the list is sorted";
    EXPECT_EQ(create("b"), 9U);
    EXPECT_EQ(counter(), 12U);
    EXPECT_EQ(create("c"), 12U);
    expectNothingLeftOpen();
}

TEST_P(MapIndexCreate, ReusedNumber_LeavesTheFreeListAndIsTraced)
{
    storeVrf({5, 9}, "12", {});
    EXPECT_EQ(create("in"), 5U);
    expectChanges({changed("delete", "/free-index{5}"), changed("create", "/stringTOindex{in}"),
                   changed("set", "/stringTOindex{in}/" + std::string(allocator().leaf), "5")});
    const std::string not_there = absent("cdb_get", number("in"));
    expectTrace({createLine(entered()), getLine("10 Entry Point"), getLine("10 " + std::string(allocator().not_found)),
                 createLine("11 " + freeIndex()), createLine("11 " + std::string(allocator().from_free_list) + "2"),
                 createLine("11 Got reusable inst-idx: 5"), createLine("10 Entry Point"),
                 createLine("11 Creating '" + entry("in") + "' ret:0 error:'" + not_there + "'"),
                 getLine("10 Entry Point"), getLine("10 Recovered idx['red','in'] = 5"),
                 createLine("11 " + std::string(allocator().returning) + "5")});
}

TEST_P(MapIndexCreate, CounterAtItsEnd_HandsItOutAndGoesOnAtZero)
{
    storeVrf({}, "4294967295", {});
    EXPECT_EQ(create("in"), 4294967295U);
    EXPECT_EQ(counter(), 0U);
    EXPECT_EQ(create("out"), 0U);
}

TEST_P(MapIndexCreate, NameOfTheRunningDatastoreOnly_KeepsItsNumberAndIsNotWritten)
{
    storeVrf({}, "4", {{"in", "3"}});
    deleteInTransaction(vrf());
    EXPECT_EQ(create("in"), 3U);
    expectChanges({changed("delete", "")});
    expectNothingLeftOpen();
}

TEST_P(MapIndexCreate, NameDeletedWhileCommitted_IsFoundWithItsNumberThoughListed)
{
    storeVrf({}, "4", {{"in", "3"}});
    EXPECT_EQ(remove("in"), 0);
    EXPECT_EQ(create("in"), 3U);
    expectChanges({changed("create", "/free-index{3}"), changed("delete", "/stringTOindex{in}")});
    EXPECT_EQ(create("out"), 3U) << "the lookup of the committed name does not take the number off the list";
}

TEST_P(MapIndexCreate, NameWithoutANumber_GetsNoneAndTheNumberTakenIsLost)
{
    storeVrf({}, "4", {{"in", ""}});
    EXPECT_EQ(create("in"), 0U);
    expectChanges({changed("set", "/next-index", "5")});
    const std::vector<std::string> lines = traced();
    EXPECT_EQ(lines.back(), createLine("11 " + std::string(allocator().returning) + "0"));
    expectNothingLeftOpen();
}

TEST_P(MapIndexCreate, EntryThatCannotBeCreated_IsTracedAndPassedOver)
{
    storeVrf({}, "4", {});
    faults().fail(Function::maapi_create, entry("in"));
    EXPECT_EQ(create("in"), 0U);
    expectChanges({changed("set", "/next-index", "5")});
    EXPECT_THAT(traced(), testing::Contains(createLine("11 Creating '" + entry("in") + "' ret:-1 error:'" +
                                                       planned("maapi_create", entry("in")) + "'")));
    expectNothingLeftOpen();
}

TEST_P(MapIndexCreate, NumberThatCannotBeSet_IsPassedOver)
{
    storeVrf({}, "4", {});
    faults().fail(Function::maapi_set_elem, number("in"));
    EXPECT_EQ(create("in"), 0U);
    expectChanges({changed("set", "/next-index", "5"), changed("create", "/stringTOindex{in}")});
}

TEST_P(MapIndexCreate, WithoutASession_ANewNameIsNumbered)
{
    faults().fail(Function::cdb_connect);
    EXPECT_EQ(create("in"), 1U);
    expectNothingLeftOpen();
}

// Deletion ----------------------------------------------------------------------------------------------------------

TEST_P(MapIndexDelete, NumberedName_GoesAndItsNumberWaitsForReuse)
{
    storeVrf({}, "4", {{"in", "3"}, {"out", "2"}});
    EXPECT_EQ(remove("in"), 0);
    expectChanges({changed("create", "/free-index{3}"), changed("delete", "/stringTOindex{in}")});
    expectTrace({deleteLine(entered()), getLine("10 Entry Point"), getLine("10 Recovered idx['red','in'] = 3"),
                 deleteLine("10 Entry Point"), deleteLine("11 Deleting '" + entry("in") + "'"),
                 deleteLine("11 Deleting '" + entry("in") + "' ret:0 error:'" + std::string(confd_lasterr()) + "'"),
                 deleteLine("11 " + freeIndex() + ":3")});
    expectNothingLeftOpen();
    EXPECT_EQ(create("new"), 3U);
    EXPECT_EQ(counter(), 4U);
}

TEST_P(MapIndexDelete, LastName_LeavesTheVrfAndItsCounter)
{
    storeVrf({}, "4", {{"in", "3"}});
    EXPECT_EQ(remove("in"), 0);
    EXPECT_EQ(maapi_exists(maapi(), thandle(), "%s", vrf().c_str()), 1);
    EXPECT_EQ(counter(), 4U);
}

TEST_P(MapIndexDelete, NameOfThisTransaction_IsDeletedToo)
{
    EXPECT_EQ(create("in"), 1U);
    EXPECT_EQ(remove("in"), 0);
    EXPECT_EQ(remove("in"), -1);
    EXPECT_EQ(create("out"), 1U);
}

TEST_P(MapIndexDelete, UnknownName_Fails)
{
    storeVrf({}, "4", {{"out", "2"}});
    EXPECT_EQ(remove("in"), -1);
    expectChanges({});
    expectTrace({deleteLine(entered()), getLine("10 Entry Point"), getLine("10 " + std::string(allocator().not_found)),
                 deleteLine("11 " + std::string(allocator().not_set))});
    expectNothingLeftOpen();
}

TEST_P(MapIndexDelete, DeletedTwiceWhileCommitted_FindsItsNumberOnTheListAlready)
{
    storeVrf({}, "4", {{"in", "3"}});
    EXPECT_EQ(remove("in"), 0);
    traced();
    EXPECT_EQ(remove("in"), 0);
    expectTrace({deleteLine(entered()), getLine("10 Entry Point"), getLine("10 Recovered idx['red','in'] = 3"),
                 deleteLine("11 " + freeIndex() + ":3"),
                 deleteLine("12 Error inserting index '3' back to free-index list:'" + freeIndex() + "'")});
    expectChanges({changed("create", "/free-index{3}"), changed("delete", "/stringTOindex{in}")});
    commit();
    EXPECT_EQ(remove("in"), -1);
    expectNothingLeftOpen();
}

TEST_P(MapIndexDelete, VrfOfTheRunningDatastoreOnly_CannotTakeTheNumberBack)
{
    storeVrf({}, "4", {{"in", "3"}});
    deleteInTransaction(vrf());
    EXPECT_EQ(remove("in"), 0);
    EXPECT_THAT(traced().back(), testing::StartsWith(deleteLine("12 Error inserting index '3' back to free-index")));
    expectChanges({changed("delete", "")});
}

TEST_P(MapIndexDelete, EntryThatCannotBeDeleted_IsTracedAndItsNumberListed)
{
    storeVrf({}, "4", {{"in", "3"}});
    faults().fail(Function::maapi_delete, entry("in"));
    EXPECT_EQ(remove("in"), 0);
    expectChanges({changed("create", "/free-index{3}")});
    EXPECT_THAT(traced(), testing::Contains(deleteLine("11 Deleting '" + entry("in") + "' ret:-1 error:'" +
                                                       planned("maapi_delete", entry("in")) + "'")));
}

TEST_P(MapIndexDelete, NumberThatCannotBeListed_IsTracedAndLost)
{
    storeVrf({}, "4", {{"in", "3"}});
    const std::string listed = freeIndex() + "{3}";
    faults().fail(Function::maapi_create, listed);
    EXPECT_EQ(remove("in"), 0);
    expectChanges({changed("delete", "/stringTOindex{in}")});
    EXPECT_EQ(traced().back(),
              deleteLine("12 Error inserting index '3' back to free-index list:'" + freeIndex() + "'"));
}

// Both at once ------------------------------------------------------------------------------------------------------

class MapIndexApart : public bgp_test::DaemonTest {};

TEST_F(MapIndexApart, RouteMapAndRoutePolicyOfOneName_HaveNumbersOfTheirOwn)
{
    const auto map = [this](const char* name) {
        return BgpUtils::CreateRouteMapIdx(maapi(), thandle(), Name("red"), Name(name));
    };
    const auto policy = [this](const char* name) {
        return BgpUtils::CreateRoutePolicyIdx(maapi(), thandle(), Name("red"), Name(name));
    };
    EXPECT_EQ(map("other"), 1U);
    EXPECT_EQ(map("both"), 2U);
    EXPECT_EQ(policy("both"), 1U);
    EXPECT_EQ(BgpUtils::DeleteRouteMapIdx(maapi(), thandle(), Name("red"), Name("both")), 0);
    EXPECT_EQ(policy("both"), 1U);
    EXPECT_EQ(policy("next"), 2U) << "not the number that the route map gave back";
    EXPECT_EQ(map("next"), 2U);
}

}  // namespace
