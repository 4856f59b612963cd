// The compound index of BGP instances and its allocator: what each operation writes, traces and gives, from a
// transaction and a running datastore that agree and that differ.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "libvrfid.h"
#include "support/compound_index_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::vrf_container;
using libvrfid::VrfId;

using CompoundIndex = bgp_test::CompoundIndexTest;
using CompoundIndexCandidate = bgp_test::CompoundIndexTest;
using CompoundIndexRelease = bgp_test::CompoundIndexTest;
using CompoundIndexOfVrf = bgp_test::CompoundIndexTest;

constexpr uint32_t kNone = 0xFFFFFFFF;

// Trace lines of one operation, from "11 text" each.
std::vector<std::string> lines_of(const std::string& operation, const std::vector<std::string>& lines)
{
    std::vector<std::string> traced;
    for (const std::string& line : lines) {
        traced.push_back(operation + " " + line);
    }
    return traced;
}

// Composition -------------------------------------------------------------------------------------------------------

TEST_F(CompoundIndex, InstanceIndex_IsAddedToTheVrfsBase)
{
    device();
    EXPECT_EQ(BgpUtils::GetBgpCompoundIdx(0x1234, 3), VrfId::ComponentFromVrf(3) + 0x1234);
    EXPECT_EQ(BgpUtils::GetBgpCompoundIdx(0x1234, 3), 1U + 3U * 65536U + 0x1234U);
    EXPECT_EQ(BgpUtils::GetInstIdxFromCompoundIdx(BgpUtils::GetBgpCompoundIdx(0x1234, 3)), 0x1234U);
}

TEST_F(CompoundIndex, OtherNumberingOfVrfs_IsThePlatforms)
{
    device().set_vrf_component(500, 100000);
    EXPECT_EQ(BgpUtils::GetBgpCompoundIdx(65535, 2), 500U + 200000U + 65535U);
    EXPECT_EQ(BgpUtils::GetInstIdxFromCompoundIdx(500U + 200000U + 65535U), 65535U);
}

TEST_F(CompoundIndex, BothEndsOfAVrfsRun_AreTakenApartAgain)
{
    device();
    for (const unsigned int vrf : {0U, 1U, 65534U}) {
        EXPECT_EQ(BgpUtils::GetInstIdxFromCompoundIdx(BgpUtils::GetBgpCompoundIdx(0, vrf)), 0U);
        EXPECT_EQ(BgpUtils::GetInstIdxFromCompoundIdx(BgpUtils::GetBgpCompoundIdx(65535, vrf)), 65535U);
    }
}

// Allocation --------------------------------------------------------------------------------------------------------

TEST_F(CompoundIndex, FirstOfAnUnknownVrf_StartsAtTheCountersDefault)
{
    EXPECT_EQ(create(65010), compound(0));
    expectChanges({"create /bgp-internal/bgp-vrf{7}", "set /bgp-internal/bgp-vrf{7}/bgp-next-index 1",
                   "create /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}",
                   "set /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}/inst-idx 0",
                   "create /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{0}",
                   "set /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{0}/as-number 65010"});
    expectTrace(lines_of("CreateBgpCompoundIdx",
                         {"11 >>> Enter - VRF index:7, AS: 65010", "11 Creating /bgp-internal/bgp-vrf{7}",
                          "11 Get BGP index from next-index", "11 <<< Returning BGP index 0"}));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndex, NextAs_GetsTheNextIndex)
{
    create(65010);
    traced();
    EXPECT_EQ(create(65020), compound(1));
    EXPECT_EQ(counter(), 2);
    expectTrace(lines_of("CreateBgpCompoundIdx", {"11 >>> Enter - VRF index:7, AS: 65020",
                                                  "11 Get BGP index from next-index", "11 <<< Returning BGP index 1"}));
}

TEST_F(CompoundIndex, SameAsInAnotherVrf_HasItsOwnIndex)
{
    create(65010);
    create(65020);
    EXPECT_EQ(BgpUtils::CreateBgpCompoundIdx(maapi(), thandle(), cdb(), 8, 65010), VrfId::ComponentFromVrf(8));
}

TEST_F(CompoundIndex, AsNumberAndVrfIndexOf32Bits_AreWrittenAsUnsigned)
{
    EXPECT_EQ(BgpUtils::CreateBgpCompoundIdx(maapi(), thandle(), cdb(), 4294967295U, 4294967295U),
              VrfId::ComponentFromVrf(4294967295U));
    EXPECT_EQ(traced().front(), "CreateBgpCompoundIdx 11 >>> Enter - VRF index:4294967295, AS: 4294967295");
    EXPECT_EQ(maapi_exists(maapi(), thandle(), "/bgp-internal/bgp-vrf{4294967295}/as-to-bgp-idx{4294967295}"), 1);
}

TEST_F(CompoundIndex, ReleasedIndices_AreUsedInTheirOrderBeforeTheCounter)
{
    stored(vrf_container({9, 5}, 12, {{65001, 1}}));
    EXPECT_EQ(create(65010), compound(5)) << "the list is sorted";
    EXPECT_EQ(create(65020), compound(9));
    EXPECT_EQ(counter(), 12);
    EXPECT_EQ(create(65030), compound(12));
    EXPECT_EQ(counter(), 13);
    expectTrace(lines_of("CreateBgpCompoundIdx",
                         {"11 >>> Enter - VRF index:7, AS: 65010", "11 Get BGP index from free-index, list size:2",
                          "11 <<< Returning BGP index 5", "11 >>> Enter - VRF index:7, AS: 65020",
                          "11 Get BGP index from free-index, list size:1", "11 <<< Returning BGP index 9",
                          "11 >>> Enter - VRF index:7, AS: 65030", "11 Get BGP index from next-index",
                          "11 <<< Returning BGP index 12"}));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndex, ReusedIndex_LeavesTheFreeListAndIsOwned)
{
    stored(vrf_container({5, 9}, 12, {{65001, 1}}));
    create(65010);
    expectChanges({"delete /bgp-internal/bgp-vrf{7}/bgp-free-index{5}",
                   "create /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}",
                   "set /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}/inst-idx 5",
                   "create /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{5}",
                   "set /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{5}/as-number 65010"});
}

TEST_F(CompoundIndex, CounterAtItsEnd_HandsItOutAndGoesOnAtZero)
{
    stored(vrf_container({}, 65535, {}));
    EXPECT_EQ(create(65010), compound(65535));
    EXPECT_EQ(counter(), 0);
    EXPECT_EQ(create(65020), compound(0));
    EXPECT_EQ(counter(), 1);
}

TEST_F(CompoundIndex, VrfGoneFromTheTransaction_IsRestoredFromTheRunningDatastore)
{
    stored(vrf_container({4, 6}, 12, {{65001, 1}}));
    forgetVrfInTransaction();
    EXPECT_EQ(create(65010), compound(4));
    expectTrace(lines_of("CreateBgpCompoundIdx",
                         {"11 >>> Enter - VRF index:7, AS: 65010", "11 Creating /bgp-internal/bgp-vrf{7}",
                          "11 Restoring free-index list and next-index from CDB",
                          "11 Get BGP index from free-index, list size:2", "11 <<< Returning BGP index 4"}));
    expectChanges(
        {"delete /bgp-internal/bgp-vrf{7}/bgp-free-index{4}", "delete /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65001}",
         "create /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}",
         "set /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}/inst-idx 4",
         "delete /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{1}", "create /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{4}",
         "set /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{4}/as-number 65010"});
    EXPECT_EQ(counter(), 12);
    expectNothingLeftOpen();
}

TEST_F(CompoundIndex, RestoredVrfWithoutReleasedIndices_GoesOnWithItsCounter)
{
    stored(vrf_container({}, 12, {{65001, 1}}));
    forgetVrfInTransaction();
    EXPECT_EQ(create(65010), compound(12));
    EXPECT_EQ(counter(), 13);
    expectNothingLeftOpen();
}

TEST_F(CompoundIndex, FreeListNotRead_RestoresTheCounterAlone)
{
    stored(vrf_container({4, 6}, 12, {}));
    forgetVrfInTransaction();
    faults().fail(Function::cdb_get_list);
    EXPECT_EQ(create(65010), compound(12));
    EXPECT_EQ(counter(), 13);
}

TEST_F(CompoundIndex, CounterNotRead_IsRestoredAsZero)
{
    stored(vrf_container({4}, 12, {}));
    forgetVrfInTransaction();
    faults().fail(Function::cdb_get_u_int16);
    EXPECT_EQ(create(65010), compound(4));
    EXPECT_EQ(counter(), 0);
}

TEST_F(CompoundIndex, RunningDatastoreNotRead_StartsFromTheDefaults)
{
    stored(vrf_container({4}, 12, {}));
    forgetVrfInTransaction();
    faults().fail(Function::cdb_exists);
    EXPECT_EQ(create(65010), compound(0));
    EXPECT_EQ(counter(), 1);
}

TEST_F(CompoundIndex, VrfOfTheTransaction_IsNotRestored)
{
    stored(vrf_container({4}, 12, {}));
    forgetVrfInTransaction();
    ASSERT_EQ(maapi_create(maapi(), thandle(), "/bgp-internal/bgp-vrf{7}"), CONFD_OK);
    EXPECT_EQ(create(65010), compound(0));
    EXPECT_EQ(device().calls().of(Function::cdb_exists), 0U);
}

TEST_F(CompoundIndex, FreeListThatCannotBeRead_LeavesTheCounter)
{
    stored(vrf_container({4}, 12, {}));
    faults().fail(Function::maapi_get_elem, "/bgp-internal/bgp-vrf{7}/bgp-free-index");
    EXPECT_EQ(create(65010), compound(12));
}

TEST_F(CompoundIndex, InACallback_ReadsThroughASessionOfItsOwn)
{
    stored(vrf_container({4}, 12, {}));
    forgetVrfInTransaction();
    EXPECT_EQ(createInCallback(65010), compound(4));
    EXPECT_EQ(device().calls().of(Function::cdb_connect), 1U);
    EXPECT_EQ(device().calls().of(Function::cdb_close), 1U);
    expectTrace(lines_of("CreateBgpCompoundIdx",
                         {"11 >>> Enter - VRF index:7, AS: 65010", "11 Creating /bgp-internal/bgp-vrf{7}",
                          "11 Restoring free-index list and next-index from CDB",
                          "11 Get BGP index from free-index, list size:1", "11 <<< Returning BGP index 4"}));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndex, InACallbackWithoutASession_StartsFromTheDefaults)
{
    stored(vrf_container({4}, 12, {}));
    forgetVrfInTransaction();
    faults().fail(Function::cdb_connect);
    EXPECT_EQ(createInCallback(65010), compound(0));
    expectNothingLeftOpen();
}

// Candidate ---------------------------------------------------------------------------------------------------------

TEST_F(CompoundIndexCandidate, AskedTwice_IsTheSameAndTheNextCreates)
{
    stored(vrf_container({5, 9}, 12, {}));
    EXPECT_EQ(candidate(65010), compound(5));
    EXPECT_EQ(candidate(65010), compound(5));
    expectChanges({});
    EXPECT_EQ(create(65010), compound(5));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexCandidate, WithReleasedIndices_IsTheFirstOfThem)
{
    stored(vrf_container({5, 9}, 12, {}));
    EXPECT_EQ(candidate(65010), compound(5));
    expectTrace(lines_of("GetNextBgpCompoundIdxCandidate",
                         {"11 >>> Enter - VRF index:7, AS: 65010", "11 Get BGP index from free-index, list size:2",
                          "11 <<< Returning BGP index 5"}));
    EXPECT_EQ(device().calls().of(Function::cdb_connect), 0U) << "a session only where the VRF was missing";
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexCandidate, WithoutReleasedIndices_IsTheCountersNext)
{
    stored(vrf_container({}, 12, {}));
    EXPECT_EQ(candidate(65010), compound(12));
    EXPECT_EQ(counter(), 12);
    expectTrace(lines_of("GetNextBgpCompoundIdxCandidate",
                         {"11 >>> Enter - VRF index:7, AS: 65010", "11 Get BGP index from next-index",
                          "11 <<< Returning BGP index 12"}));
    expectChanges({});
}

TEST_F(CompoundIndexCandidate, AsWithAnIndex_KeepsIt)
{
    stored(vrf_container({5}, 12, {{65010, 3}}));
    EXPECT_EQ(candidate(65010), compound(3));
    expectTrace(lines_of(
        "GetNextBgpCompoundIdxCandidate",
        {"11 >>> Enter - VRF index:7, AS: 65010", "11 Using already existent index", "11 <<< Returning BGP index 3"}));
    expectChanges({});
}

TEST_F(CompoundIndexCandidate, AsWithAnIndexSinceThisTransaction_KeepsIt)
{
    const uint32_t created = create(65010);
    EXPECT_EQ(candidate(65010), created);
}

TEST_F(CompoundIndexCandidate, UnknownVrf_IsCreatedAndNothingElse)
{
    EXPECT_EQ(candidate(65010), compound(0));
    EXPECT_EQ(candidate(65010), compound(0));
    EXPECT_EQ(create(65010), compound(0));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexCandidate, VrfGoneFromTheTransaction_IsRestoredAndNothingElse)
{
    stored(vrf_container({4, 6}, 12, {{65001, 1}}));
    forgetVrfInTransaction();
    EXPECT_EQ(candidate(65010), compound(4));
    expectTrace(lines_of("GetNextBgpCompoundIdxCandidate",
                         {"11 >>> Enter - VRF index:7, AS: 65010", "11 Creating /bgp-internal/bgp-vrf{7}",
                          "11 Restoring free-index list and next-index from CDB",
                          "11 Get BGP index from free-index, list size:2", "11 <<< Returning BGP index 4"}));
    expectChanges(
        {"delete /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65001}", "delete /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{1}"});
    EXPECT_EQ(counter(), 12);
    EXPECT_EQ(device().calls().of(Function::cdb_connect), 1U);
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexCandidate, WithoutASession_StartsFromTheDefaults)
{
    stored(vrf_container({4, 6}, 12, {}));
    forgetVrfInTransaction();
    faults().fail(Function::cdb_start_session);
    EXPECT_EQ(candidate(65010), compound(0));
    expectNothingLeftOpen();
}

// Release -----------------------------------------------------------------------------------------------------------

TEST_F(CompoundIndexRelease, OneOfTwo_LeavesTheVrfAndItsIndexForReuse)
{
    stored(vrf_container({}, 2, {{65010, 0}, {65020, 1}}));
    release(65010);
    expectChanges({"create /bgp-internal/bgp-vrf{7}/bgp-free-index{0}",
                   "delete /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}",
                   "delete /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{0}"});
    expectTrace(
        lines_of("DeleteBgpCompoundIdx", {"11 >>> Enter - VRF index:7, AS: 65010", "11 Deleting BGP instance index 0",
                                          "11 /bgp-internal/bgp-vrf{7}still has 1 instances", "11 <<< Returning"}));
    expectNothingLeftOpen();
    EXPECT_EQ(create(65030), compound(0));
    EXPECT_EQ(counter(), 2) << "the counter is never lowered";
}

TEST_F(CompoundIndexRelease, LastOne_RemovesTheVrf)
{
    stored(vrf_container({3}, 5, {{65010, 4}}));
    release(65010);
    expectChanges({"delete /bgp-internal/bgp-vrf{7}"});
    expectTrace(
        lines_of("DeleteBgpCompoundIdx", {"11 >>> Enter - VRF index:7, AS: 65010", "11 Deleting BGP instance index 4",
                                          "11 Removing /bgp-internal/bgp-vrf{7}", "11 <<< Returning"}));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexRelease, IndexOfARemovedVrf_IsNotReusedBeforeTheCommit)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    release(65010);
    EXPECT_EQ(create(65020), compound(1));
    EXPECT_EQ(counter(), 2);
    commit();
    EXPECT_EQ(create(65030), compound(2)) << "nor after it: the release was of the container that went";
}

TEST_F(CompoundIndexRelease, CommittedRelease_StartsTheVrfAnew)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    release(65010);
    commit();
    EXPECT_EQ(create(65020), compound(0));
}

TEST_F(CompoundIndexRelease, IndexChangedInTheTransaction_IsThatOfTheRunningDatastore)
{
    stored(vrf_container({}, 5, {{65010, 2}, {65020, 3}}));
    ASSERT_EQ(maapi_set_elem2(maapi(), thandle(), "4", "/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}/inst-idx"),
              CONFD_OK);
    release(65010);
    expectChanges({"create /bgp-internal/bgp-vrf{7}/bgp-free-index{2}",
                   "delete /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}",
                   "delete /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{2}"});
}

TEST_F(CompoundIndexRelease, IndexThatCannotBePutBack_IsLostToReuse)
{
    stored(vrf_container({0}, 2, {{65010, 0}, {65020, 1}}));
    release(65010);
    expectChanges(
        {"delete /bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}", "delete /bgp-internal/bgp-vrf{7}/idx-to-bgp-as{0}"});
    expectTrace(
        lines_of("DeleteBgpCompoundIdx", {"11 >>> Enter - VRF index:7, AS: 65010", "11 Deleting BGP instance index 0",
                                          "12 Error inserting BGP index back to free-index list",
                                          "11 /bgp-internal/bgp-vrf{7}still has 1 instances", "11 <<< Returning"}));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexRelease, InstancesThatCannotBeCounted_KeepTheVrf)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    faults().fail(Function::maapi_num_instances);
    release(65010);
    EXPECT_EQ(maapi_exists(maapi(), thandle(), "/bgp-internal/bgp-vrf{7}"), 1);
    expectTrace(
        lines_of("DeleteBgpCompoundIdx", {"11 >>> Enter - VRF index:7, AS: 65010", "11 Deleting BGP instance index 0",
                                          "11 /bgp-internal/bgp-vrf{7}still has -1 instances", "11 <<< Returning"}));
}

TEST_F(CompoundIndexRelease, VrfThatCannotBeSeen_IsTraced)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    faults().fail(Function::maapi_exists);
    release(65010);
    EXPECT_EQ(device().calls().of(Function::maapi_num_instances), 0U);
    expectTrace(
        lines_of("DeleteBgpCompoundIdx", {"11 >>> Enter - VRF index:7, AS: 65010", "11 Deleting BGP instance index 0",
                                          "12 /bgp-internal/bgp-vrf{7}not found for clean-up", "11 <<< Returning"}));
}

// Lookups -----------------------------------------------------------------------------------------------------------

TEST_F(CompoundIndexOfVrf, UnknownVrf_HasNone)
{
    EXPECT_EQ(ofVrf(), kNone);
    expectTrace(lines_of("GetBgpCompoundIdxFromVrfIdx",
                         {"11 >>> Enter - VRF index:7", "11 <<< Returning - compound_idx:4294967295"}));
}

TEST_F(CompoundIndexOfVrf, VrfWithoutInstances_HasNone)
{
    stored(vrf_container({1}, 3, {}));
    EXPECT_EQ(ofVrf(), kNone);
    expectTrace(
        lines_of("GetBgpCompoundIdxFromVrfIdx", {"11 >>> Enter - VRF index:7", "11 /bgp-internal/bgp-vrf{7} exists",
                                                 "11 <<< Returning - compound_idx:4294967295"}));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexOfVrf, SeveralInstances_GiveTheLowestIndex)
{
    stored(vrf_container({}, 1000, {{65001, 300}, {65002, 20}, {65003, 100}}));
    EXPECT_EQ(ofVrf(), compound(20));
    expectTrace(
        lines_of("GetBgpCompoundIdxFromVrfIdx", {"11 >>> Enter - VRF index:7", "11 /bgp-internal/bgp-vrf{7} exists",
                                                 "11 Got instance_idx 20 from /bgp-internal/bgp-vrf{7}/idx-to-bgp-as",
                                                 "11 <<< Returning - compound_idx:" + std::to_string(compound(20))}));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexOfVrf, InstanceOfTheRunningDatastoreOnly_IsNotSeen)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    forgetVrfInTransaction();
    EXPECT_EQ(ofVrf(), kNone);
}

TEST_F(CompoundIndexOfVrf, InstanceOfTheTransactionOnly_IsSeen)
{
    const uint32_t created = create(65010);
    EXPECT_EQ(ofVrf(), created);
}

TEST_F(CompoundIndexOfVrf, WalkThatFails_FindsNone)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    faults().fail(Function::maapi_get_next, {}, {}, 1);
    EXPECT_EQ(ofVrf(), kNone);
    faults().fail(Function::maapi_init_cursor);
    EXPECT_EQ(ofVrf(), kNone);
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexOfVrf, UnknownName_LeavesTheResultAlone)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    uint32_t compound_idx = 42;
    EXPECT_EQ(ofVrfName("red", compound_idx), -1);
    EXPECT_EQ(compound_idx, 42U);
    expectTrace({});
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexOfVrf, KnownNameWithoutInstances_GivesNone)
{
    nameVrf("red");
    uint32_t compound_idx = 42;
    EXPECT_EQ(ofVrfName("red", compound_idx), -1);
    EXPECT_EQ(compound_idx, kNone);
}

TEST_F(CompoundIndexOfVrf, KnownNameWithAnInstance_GivesIt)
{
    nameVrf("red one");
    stored(vrf_container({}, 10, {{65010, 9}}));
    uint32_t compound_idx = 42;
    EXPECT_EQ(ofVrfName("red one", compound_idx), 0);
    EXPECT_EQ(compound_idx, compound(9));
    expectNothingLeftOpen();
}

TEST_F(CompoundIndexOfVrf, NameOfTheRunningDatastoreOnly_IsFound)
{
    nameVrf("red");
    stored(vrf_container({}, 10, {{65010, 9}}));
    ASSERT_EQ(maapi_delete(maapi(), thandle(), "/metacli-internal:internal/vrf-config/stringTOindex{red}"), CONFD_OK);
    uint32_t compound_idx = 42;
    EXPECT_EQ(ofVrfName("red", compound_idx), 0);
    EXPECT_EQ(compound_idx, compound(9));
    expectNothingLeftOpen();
}

}  // namespace
