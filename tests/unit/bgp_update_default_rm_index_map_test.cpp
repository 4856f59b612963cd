// The maps between the global BGP instance's AS and its index: what is written, and what a failure leaves undone.
#include "bgp_update/rm_index.h"
#include "confd_lib.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::error_text;
using bgp_test::planned;

constexpr uint32_t kOwnAs = 100;
constexpr char kGlobal[] = "/bgp-internal/bgp-vrf{0}";
constexpr char kAsOfIndex[] = "/bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}";
constexpr char kIndexOfAs[] = "/bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}";
constexpr char kNextIndex[] = "/bgp-internal/bgp-vrf{0}/bgp-next-index";

constexpr char kSetsAs[] = "Will set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}/as-number";
constexpr char kSetsIndex[] = "Will set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}/inst-idx";

class AsToIdxMap : public bgp_test::UpdateTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }
};

TEST_F(AsToIdxMap, InstanceOne_IsMappedBothWaysAndTwoComesNext)
{
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 2U), 0);
    expectLog({kSetsAs, kSetsIndex});
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "set /bgp-internal/bgp-vrf{0}/bgp-next-index 2",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}/inst-idx 1",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}/as-number 100"});
}

TEST_F(AsToIdxMap, ComponentItself_IsInstanceZero)
{
    EXPECT_EQ(run(update_as_to_idx_map, 4294967295U, 1U), 0);
    expectLog({"Will set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}/as-number",
               "Will set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{4294967295}/inst-idx"});
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "set /bgp-internal/bgp-vrf{0}/bgp-next-index 1",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{4294967295}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{4294967295}/inst-idx 0",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{0}/as-number 4294967295"});
}

TEST_F(AsToIdxMap, LastInstance_IsFollowedByZero)
{
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 65536U), 0);
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "set /bgp-internal/bgp-vrf{0}/bgp-next-index 0",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}/inst-idx 65535",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{65535}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{65535}/as-number 100"});
}

TEST_F(AsToIdxMap, InstanceOfAnotherVrf_IsMappedInTheGlobalOne)
{
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 3 * 65536U + 1 + 7), 0);
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "set /bgp-internal/bgp-vrf{0}/bgp-next-index 8",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}/inst-idx 7",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{7}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{7}/as-number 100"});
}

TEST_F(AsToIdxMap, Instance_IsWrittenInTheFixedOrder)
{
    device().recorder().start();
    run(update_as_to_idx_map, kOwnAs, 2U);
    expectCalls({
        "maapi_create /bgp-internal/bgp-vrf{0} -> 0",
        "maapi_create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1} -> 0",
        "maapi_set_elem /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}/as-number 100 -> 0",
        "maapi_create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100} -> 0",
        "maapi_set_elem /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}/inst-idx 1 -> 0",
        "maapi_set_elem /bgp-internal/bgp-vrf{0}/bgp-next-index 2 -> 0",
    });
}

TEST_F(AsToIdxMap, MapsThatAreThere_AreLeftAlone)
{
    stored(R"(<bgp-internal xmlns="urn:bgp-update:yang:bgp-internal"><bgp-vrf><vrf-idx>0</vrf-idx></bgp-vrf>
        </bgp-internal>)");
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 2U), 0);
    expectLog({std::string("Failed Create /bgp-internal/bgp-vrf{0}, err: ") +
               error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS, kGlobal)});
    expectChanges({});
}

TEST_F(AsToIdxMap, MapsThatCannotBeCreated_AreNoErrorEither)
{
    faults().fail(Function::maapi_create, kGlobal);
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 2U), 0);
    expectLog({"Failed Create /bgp-internal/bgp-vrf{0}, err: " + planned("maapi_create", kGlobal)});
    expectChanges({});
}

TEST_F(AsToIdxMap, EntryOfTheIndexThatCannotBeCreated_EndsTheStepWithAnError)
{
    faults().fail(Function::maapi_create, kAsOfIndex);
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 2U), -1);
    expectLog({"Failed to create BGP internal map for inst-idx: 1, err: " + planned("maapi_create", kAsOfIndex)});
    expectChanges({"create /bgp-internal/bgp-vrf{0}"});
}

TEST_F(AsToIdxMap, AsNumberThatCannotBeSet_IsLoggedWithTheVrfAsItsValueAndTheRestIsWritten)
{
    const std::string path = std::string(kAsOfIndex) + "/as-number";
    faults().fail(Function::maapi_set_elem, path);
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 2U), 0);
    expectLog({kSetsAs,
               "Failed to set val 0 to as-number in entry /bgp-internal/bgp-vrf{100}/idx-to-bgp-as{1}, err: " +
                   planned("maapi_set_elem", path),
               kSetsIndex});
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "set /bgp-internal/bgp-vrf{0}/bgp-next-index 2",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}/inst-idx 1",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}"});
}

TEST_F(AsToIdxMap, EntryOfTheAsThatCannotBeCreated_EndsTheStepWithAnError)
{
    faults().fail(Function::maapi_create, kIndexOfAs);
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 2U), -1);
    expectLog(
        {kSetsAs, "Failed to create BGP internal map for as-number: 100, err: " + planned("maapi_create", kIndexOfAs)});
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}/as-number 100"});
}

TEST_F(AsToIdxMap, IndexThatCannotBeSet_IsLoggedAndTheNextIsWritten)
{
    const std::string path = std::string(kIndexOfAs) + "/inst-idx";
    faults().fail(Function::maapi_set_elem, path);
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 2U), 0);
    expectLog({kSetsAs, kSetsIndex,
               "Failed to set val 1 to inst-idx in entry /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}, err: " +
                   planned("maapi_set_elem", path)});
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "set /bgp-internal/bgp-vrf{0}/bgp-next-index 2",
                   "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}/as-number 100"});
}

TEST_F(AsToIdxMap, NextIndexThatCannotBeSet_IsLogged)
{
    faults().fail(Function::maapi_set_elem, kNextIndex);
    EXPECT_EQ(run(update_as_to_idx_map, kOwnAs, 2U), 0);
    expectLog({kSetsAs, kSetsIndex,
               "Failed to set val 2 to /bgp-internal/bgp-vrf{0}/bgp-next-index, err: " +
                   planned("maapi_set_elem", kNextIndex)});
    expectChanges({"create /bgp-internal/bgp-vrf{0}", "create /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}",
                   "set /bgp-internal/bgp-vrf{0}/as-to-bgp-idx{100}/inst-idx 1",
                   "create /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}",
                   "set /bgp-internal/bgp-vrf{0}/idx-to-bgp-as{1}/as-number 100"});
}

}  // namespace
