// How the allocators of route map and route policy numbers end the process: the fault that each failed call reports,
// and the assertion that each value of a wrong type fails, under the name of the operation that was called.
#include <gtest/gtest.h>

#include <string>

#include "support/map_index_fixture.h"
#include "support/show_faults.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::planned;
using confd::Value;

class MapIndexDeath : public bgp_test::MapIndexTest {
protected:
    // Fails one call while a name is numbered, and expects the fault that tells of it.
    void expectFatal(Function function, const std::string& name, const std::string& path)
    {
        EXPECT_EXIT(
            {
                bgp_test::show_faults(device());
                faults().fail(function, path);
                create("in");
            },
            testing::ExitedWithCode(1),
            bgp_test::reports_error(CONFD_ERR_INTERNAL, allocator().create_name, planned(name, path)));
    }

    std::string getSignature()
    {
        return "static int BgpUtils::" + std::string(allocator().get_name) + "(int, int, char*, char*, confd_value*)";
    }
    std::string createSignature()
    {
        return "static uint32_t BgpUtils::" + std::string(allocator().create_name) + "(int, int, char*, char*)";
    }
};

INSTANTIATE_TEST_SUITE_P(Both, MapIndexDeath, testing::Values(&bgp_test::kRouteMaps, &bgp_test::kRoutePolicies),
                         bgp_test::allocator_name);

TEST_P(MapIndexDeath, ReleasedNumberThatStaysListed_EndsTheProcess)
{
    storeVrf({5}, "12", {});
    expectFatal(Function::maapi_delete, "maapi_delete", freeIndex() + "{5}");
}

TEST_P(MapIndexDeath, CounterThatCannotBeRead_EndsTheProcess)
{
    storeVrf({}, "12", {});
    expectFatal(Function::maapi_get_u_int32_elem, "maapi_get_u_int32_elem", nextIndex());
}

TEST_P(MapIndexDeath, CounterThatCannotBeWritten_EndsTheProcess)
{
    storeVrf({}, "12", {});
    expectFatal(Function::maapi_set_elem, "maapi_set_elem", nextIndex());
}

TEST_P(MapIndexDeath, VrfThatCannotBeCreated_ShowsWhenItsCounterIsRead)
{
    EXPECT_EXIT(
        {
            bgp_test::show_faults(device());
            faults().fail(Function::maapi_create, vrf());
            create("in");
        },
        testing::ExitedWithCode(1),
        bgp_test::reports_error(CONFD_ERR_NOEXISTS, allocator().create_name,
                                bgp_test::absent("maapi_get_u_int32_elem", nextIndex())));
}

TEST_P(MapIndexDeath, NumberOfAnotherType_FailsAnAssertionOfTheLookup)
{
    leafHasType("metacli-internal", allocator().leaf, "uint16");
    storeVrf({}, "4", {{"in", "3"}});
    Value found;
    const auto assertion = bgp_test::asserts(getSignature(), "(vl_index)->type == C_UINT32");
    EXPECT_DEATH(get("in", &found), assertion);
    EXPECT_DEATH(create("in"), assertion);
    EXPECT_DEATH(remove("in"), assertion);
}

TEST_P(MapIndexDeath, CommittedNumberOfAnotherType_FailsAnAssertionOfTheLookup)
{
    leafHasType("metacli-internal", allocator().leaf, "uint16");
    storeVrf({}, "4", {{"in", "3"}});
    deleteInTransaction(vrf());
    Value found;
    EXPECT_DEATH(get("in", &found), bgp_test::asserts(getSignature(), "(vl_index)->type == C_UINT32"));
}

TEST_P(MapIndexDeath, FreeListThatIsNoList_FailsAnAssertion)
{
    leafListIsLeaf("metacli-internal", "free-index");
    storeVrf({5}, "4", {});
    EXPECT_DEATH(create("in"), bgp_test::asserts(createSignature(), "(&free_list)->type == C_LIST"));
}

TEST_P(MapIndexDeath, ListedNumberOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "free-index", "uint16");
    storeVrf({5}, "4", {});
    EXPECT_DEATH(create("in"), bgp_test::asserts(createSignature(), "(first)->type == C_UINT32"));
}

}  // namespace
