// How the allocator of compound indices ends the process: the fault that each failed call reports, and the assertion
// that each value of a wrong type fails.
#include <gtest/gtest.h>

#include "support/compound_index_fixture.h"
#include "support/show_faults.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::planned;
using bgp_test::vrf_container;

using CompoundIndexDeath = bgp_test::CompoundIndexTest;

// Each write and read whose failure ends the process: what is to fail, and where.
struct FatalCall {
    Function function;
    const char* name;  // of the function, as in error texts
    const char* path;
};

const FatalCall kContainer = {Function::maapi_create, "maapi_create", "/bgp-internal/bgp-vrf{7}"};
const FatalCall kRestoredIndex = {Function::maapi_create, "maapi_create", "/bgp-internal/bgp-vrf{7}/bgp-free-index{4}"};
const FatalCall kSetCounter = {Function::maapi_set_elem, "maapi_set_elem", "/bgp-internal/bgp-vrf{7}/bgp-next-index"};

class CompoundIndexFaultDeath : public bgp_test::CompoundIndexTest {
protected:
    // Runs in the child of a death test.
    void fails(const FatalCall& call)
    {
        bgp_test::show_faults(device());
        faults().fail(call.function, call.path);
    }
    static auto reported(const std::string& operation, const FatalCall& call)
    {
        return bgp_test::reports_error(CONFD_ERR_INTERNAL, operation, planned(call.name, call.path));
    }
    void expectFatalCreate(const FatalCall& call)
    {
        EXPECT_EXIT((fails(call), create(65010)), testing::ExitedWithCode(1), reported("CreateBgpCompoundIdx", call))
            << call.name << " " << call.path;
    }
    void expectFatalCandidate(const FatalCall& call)
    {
        EXPECT_EXIT((fails(call), candidate(65010)), testing::ExitedWithCode(1),
                    reported("GetNextBgpCompoundIdxCandidate", call))
            << call.name << " " << call.path;
    }
    void expectFatalRelease(const FatalCall& call)
    {
        EXPECT_EXIT((fails(call), release(65010)), testing::ExitedWithCode(1), reported("DeleteBgpCompoundIdx", call))
            << call.name << " " << call.path;
    }
};

TEST_F(CompoundIndexFaultDeath, AllocationFromTheCounter_EndsWithAnyFailedStep)
{
    for (const FatalCall& call :
         {kContainer,
          FatalCall{Function::maapi_get_u_int16_elem, "maapi_get_u_int16_elem",
                    "/bgp-internal/bgp-vrf{7}/bgp-next-index"},
          kSetCounter,
          FatalCall{Function::maapi_create, "maapi_create", "/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}"},
          FatalCall{Function::maapi_set_elem, "maapi_set_elem",
                    "/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}/inst-idx"},
          FatalCall{Function::maapi_create, "maapi_create", "/bgp-internal/bgp-vrf{7}/idx-to-bgp-as{0}"},
          FatalCall{Function::maapi_set_elem, "maapi_set_elem",
                    "/bgp-internal/bgp-vrf{7}/idx-to-bgp-as{0}/as-number"}}) {
        expectFatalCreate(call);
    }
}

TEST_F(CompoundIndexFaultDeath, RestoringAVrf_EndsWithAnyFailedWrite)
{
    stored(vrf_container({4}, 12, {}));
    forgetVrfInTransaction();
    for (const FatalCall& call : {kContainer, kRestoredIndex, kSetCounter}) {
        expectFatalCreate(call);
        expectFatalCandidate(call);
    }
}

TEST_F(CompoundIndexFaultDeath, ReleasedIndexThatStaysListed_EndsTheAllocation)
{
    stored(vrf_container({4}, 12, {}));
    expectFatalCreate({Function::maapi_delete, "maapi_delete", "/bgp-internal/bgp-vrf{7}/bgp-free-index{4}"});
}

TEST_F(CompoundIndexFaultDeath, CounterThatCannotBeRead_EndsTheCandidate)
{
    expectFatalCandidate({Function::maapi_get_elem, "maapi_get_elem", "/bgp-internal/bgp-vrf{7}/bgp-next-index"});
}

TEST_F(CompoundIndexFaultDeath, Release_EndsWithAnyFailedRemoval)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    for (const char* const path :
         {"/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}", "/bgp-internal/bgp-vrf{7}/idx-to-bgp-as{0}"}) {
        expectFatalRelease({Function::maapi_delete, "maapi_delete", path});
    }
}

TEST_F(CompoundIndexFaultDeath, VrfThatStays_EndsTheReleaseOfItsLastInstance)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    const auto container_stays = [this] {
        bgp_test::show_faults(device());
        faults().fail(Function::maapi_delete, "/bgp-internal/bgp-vrf{7}", {}, 1, 2);  // after the two maps' entries
        release(65010);
    };
    EXPECT_EXIT(container_stays(), testing::ExitedWithCode(1),
                bgp_test::reports_error(CONFD_ERR_INTERNAL, "DeleteBgpCompoundIdx",
                                        planned("maapi_delete", "/bgp-internal/bgp-vrf{7}")));
}

TEST_F(CompoundIndexFaultDeath, SecondAllocationOfAnAs_EndsTheProcess)
{
    create(65010);
    bgp_test::show_faults(device());
    EXPECT_EXIT(create(65010), testing::ExitedWithCode(1),
                bgp_test::reports_error(CONFD_ERR_ALREADY_EXISTS, "CreateBgpCompoundIdx",
                                        bgp_test::error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS,
                                                             "/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}")));
}

TEST_F(CompoundIndexFaultDeath, CounterBackAtAnIndexInUse_EndsTheProcess)
{
    stored(vrf_container({}, 0, {{65010, 0}}));
    bgp_test::show_faults(device());
    EXPECT_EXIT(create(65020), testing::ExitedWithCode(1),
                bgp_test::reports_error(CONFD_ERR_ALREADY_EXISTS, "CreateBgpCompoundIdx",
                                        bgp_test::error_text("maapi_create", CONFD_ERR_ALREADY_EXISTS,
                                                             "/bgp-internal/bgp-vrf{7}/idx-to-bgp-as{0}")));
}

TEST_F(CompoundIndexFaultDeath, ReleaseOfAnAsOfThisTransaction_EndsTheProcess)
{
    create(65010);
    bgp_test::show_faults(device());
    EXPECT_EXIT(release(65010), testing::ExitedWithCode(1),
                bgp_test::reports_error(
                    CONFD_ERR_NOEXISTS, "DeleteBgpCompoundIdx",
                    bgp_test::absent("cdb_get_u_int16", "/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}/inst-idx")));
}

TEST_F(CompoundIndexFaultDeath, ReleaseOfAnAsAlreadyReleasedInThisTransaction_EndsTheProcess)
{
    stored(vrf_container({}, 2, {{65010, 0}, {65020, 1}}));
    release(65010);
    bgp_test::show_faults(device());
    EXPECT_EXIT(
        release(65010), testing::ExitedWithCode(1),
        bgp_test::reports_error(CONFD_ERR_NOEXISTS, "DeleteBgpCompoundIdx",
                                bgp_test::absent("maapi_delete", "/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}")));
}

TEST_F(CompoundIndexFaultDeath, ReleaseWithoutASession_EndsTheProcess)
{
    stored(vrf_container({}, 1, {{65010, 0}}));
    open();
    bgp_test::show_faults(device());
    faults().fail(Function::cdb_connect);
    EXPECT_EXIT(release(65010), testing::ExitedWithCode(1),
                bgp_test::reports_error(CONFD_ERR_OS, "DeleteBgpCompoundIdx",
                                        bgp_test::error_text("cdb_get_u_int16", CONFD_ERR_OS,
                                                             "/bgp-internal/bgp-vrf{7}/as-to-bgp-idx{65010}/inst-idx",
                                                             "socket -1 is not connected to a device")));
}

// Types -------------------------------------------------------------------------------------------------------------

constexpr char kCreateSignature[] =
    "static uint32_t BgpUtils::CreateBgpCompoundIdx(int, int, int32_t, uint32_t, uint32_t)";
constexpr char kCandidateSignature[] =
    "static uint32_t BgpUtils::GetNextBgpCompoundIdxCandidate(int, confd_trans_ctx*, uint32_t, uint32_t)";

TEST_F(CompoundIndexDeath, RestoredIndexOfAnotherType_FailsAnAssertionInTheCallersName)
{
    leafHasType("bgp-internal", "bgp-free-index", "uint32");
    stored(vrf_container({4}, 12, {}));
    forgetVrfInTransaction();
    EXPECT_DEATH(create(65010), bgp_test::asserts(kCreateSignature, "(&free_list[i])->type == C_UINT16"));
    EXPECT_DEATH(createInCallback(65010), bgp_test::asserts(kCreateSignature, "(&free_list[i])->type == C_UINT16"));
    EXPECT_DEATH(candidate(65010), bgp_test::asserts(kCandidateSignature, "(&free_list[i])->type == C_UINT16"));
}

TEST_F(CompoundIndexDeath, FreeListThatIsNoList_FailsAnAssertionInTheCallersName)
{
    leafListIsLeaf("bgp-internal", "bgp-free-index");
    stored(vrf_container({4}, 12, {}));
    EXPECT_DEATH(create(65010), bgp_test::asserts(kCreateSignature, "(&free_list)->type == C_LIST"));
    EXPECT_DEATH(candidate(65010), bgp_test::asserts(kCandidateSignature, "(&free_list)->type == C_LIST"));
}

TEST_F(CompoundIndexDeath, ListedIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("bgp-internal", "bgp-free-index", "uint32");
    stored(vrf_container({4}, 12, {}));
    EXPECT_DEATH(create(65010), bgp_test::asserts(kCreateSignature, "(first)->type == C_UINT16"));
    EXPECT_DEATH(candidate(65010), bgp_test::asserts(kCandidateSignature, "(&vl_inst_idx)->type == C_UINT16"));
}

TEST_F(CompoundIndexDeath, OwnedIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("bgp-internal", "inst-idx", "uint32");
    stored(vrf_container({}, 12, {{65010, 3}}));
    EXPECT_DEATH(candidate(65010), bgp_test::asserts(kCandidateSignature, "(&vl_inst_idx)->type == C_UINT16"));
}

TEST_F(CompoundIndexDeath, CounterOfAnotherType_FailsAnAssertionOfTheCandidate)
{
    leafHasType("bgp-internal", "bgp-next-index", "uint32");
    stored(vrf_container({}, 12, {}));
    EXPECT_DEATH(candidate(65010), bgp_test::asserts(kCandidateSignature, "(&vl_inst_idx)->type == C_UINT16"));
}

TEST_F(CompoundIndexDeath, KeyOfAnotherType_FailsAnAssertion)
{
    leafHasType("bgp-internal", "idx", "uint32");
    stored(vrf_container({}, 12, {{65010, 3}}));
    EXPECT_DEATH(ofVrf(),
                 bgp_test::asserts("static uint32_t BgpUtils::GetBgpCompoundIdxFromVrfIdx(int, int, unsigned int)",
                                   "(&mc.keys[0])->type == C_UINT16"));
}

TEST_F(CompoundIndexDeath, VrfIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "vrf-idx", "uint16");
    nameVrf("red");
    uint32_t compound_idx = 0;
    EXPECT_DEATH(
        ofVrfName("red", compound_idx),
        bgp_test::asserts("static int BgpUtils::GetBgpCompoundIdxFromVrfName(int, int, const std::string&, uint32_t&)",
                          "(&vrf_idx)->type == C_UINT32"));
}

}  // namespace
