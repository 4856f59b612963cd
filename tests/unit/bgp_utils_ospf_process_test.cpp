// The OSPF process of a VRF, through the transaction and then the running datastore.
#include "bgp_update/bgp_vrf_redist_entry.h"
#include "confd/value.h"
#include "support/ospf_fixture.h"
#include "support/router_mgr_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_platform::capi::PlannedFailure;
using bgp_test::internal;
using bgp_test::ospf_numbers;
using bgp_test::ospf_process;
using bgp_test::planned;
using confd::Value;
using Redist = BgpUtils::BgpVrfRedistEntry;

constexpr char kProcesses[] = "/internal/ospf-proc-id-to-index";

class OspfProcess : public bgp_test::OspfTest {
protected:
    int32_t find(const char* vrf)
    {
        return Redist::GetOspfProcIdCompoundId(maapi(), context(), category(), vrf, &proc_id_, &compound_id_);
    }

    void expectFound(const char* vrf, uint32_t proc_id, uint32_t compound_id)
    {
        ASSERT_EQ(find(vrf), 0) << vrf;
        EXPECT_EQ(CONFD_GET_UINT32(&proc_id_), proc_id);
        EXPECT_EQ(CONFD_GET_UINT32(&compound_id_), compound_id);
    }

    void expectNothingFound()
    {
        EXPECT_EQ(proc_id_.type, C_NOEXISTS);
        EXPECT_EQ(compound_id_.type, C_NOEXISTS);
    }

    Value proc_id_;
    Value compound_id_;
};

TEST_F(OspfProcess, VrfOfTheTransaction_IsFoundWithoutASession)
{
    stored(internal(ospf_process(1, "blue", ospf_numbers(50, 500)) + ospf_process(2, "red", ospf_numbers(100, 900))));
    open();
    device().recorder().start();
    expectFound("red", 100, 900);
    expectCalls({"maapi_init_cursor /internal/ospf-proc-id-to-index -> 0",
                 "maapi_get_next /internal/ospf-proc-id-to-index -> 0",
                 "maapi_get_next /internal/ospf-proc-id-to-index -> 0",
                 "maapi_get_elem /internal/ospf-proc-id-to-index{2 red}/proc_id -> 0",
                 "maapi_get_elem /internal/ospf-proc-id-to-index{2 red}/index -> 0"});
    expectTrace({});
}

TEST_F(OspfProcess, StoredNameThatBeginsTheNameSought_IsTakenForIt)
{
    stored(internal(ospf_process(1, "red", ospf_numbers(100, 900)) + ospf_process(2, "red2", ospf_numbers(200, 901))));
    expectFound("red2", 100, 900);
    forgetProcessesInTransaction();
    expectFound("red2", 100, 900);
}

TEST_F(OspfProcess, FirstOfSeveralTakenNames_WinsInListOrder)
{
    stored(internal(ospf_process(1, "red2", ospf_numbers(200, 901)) + ospf_process(2, "red", ospf_numbers(100, 900))));
    expectFound("red2", 200, 901);
    forgetProcessesInTransaction();
    expectFound("red2", 200, 901);
}

TEST_F(OspfProcess, LongerStoredName_IsNotTaken)
{
    stored(internal(ospf_process(1, "red2", ospf_numbers(200, 901))));
    EXPECT_EQ(find("red"), -1);
    expectNothingFound();
    expectTrace({});
}

TEST_F(OspfProcess, NoSuchVrfAnywhere_FailsSilently)
{
    stored(internal(ospf_process(1, "blue", ospf_numbers(50, 500))));
    EXPECT_EQ(find("red"), -1);
    expectNothingFound();
    expectTrace({});
}

TEST_F(OspfProcess, EmptyMap_FailsSilently)
{
    EXPECT_EQ(find("red"), -1);
    expectTrace({});
}

TEST_F(OspfProcess, VrfOfTheRunningDatastoreOnly_IsFoundByPosition)
{
    stored(internal(ospf_process(1, "blue", ospf_numbers(50, 500)) + ospf_process(2, "red", ospf_numbers(100, 900))));
    forgetProcessesInTransaction();
    device().recorder().start();
    expectFound("red", 100, 900);
    expectCalls({"maapi_init_cursor /internal/ospf-proc-id-to-index -> 0",
                 "maapi_get_next /internal/ospf-proc-id-to-index -> 0", "cdb_connect -> 0", "cdb_start_session -> 0",
                 "cdb_num_instances /internal/ospf-proc-id-to-index -> 2",
                 "cdb_get /internal/ospf-proc-id-to-index[0]/vrf_name -> 0",
                 "cdb_get /internal/ospf-proc-id-to-index[1]/vrf_name -> 0",
                 "cdb_get /internal/ospf-proc-id-to-index[1]/proc_id -> 0",
                 "cdb_get /internal/ospf-proc-id-to-index[1]/index -> 0", "cdb_close -> 0"});
    expectTrace({});
}

TEST_F(OspfProcess, EntryOfTheTransactionThatCannotBeRead_LeavesTheRunningDatastore)
{
    stored(internal(ospf_process(1, "red", ospf_numbers(100, 900))));
    for (const char* leaf : {"/proc_id", "/index"}) {
        const std::string path = std::string(kProcesses) + "{1 red}" + leaf;
        faults().clear();
        faults().fail(Function::maapi_get_elem, path);
        expectFound("red", 100, 900);
        expectTrace({"GetOspfProcIdCompoundId 10 Failed to get OSPF proc ID or compound ID for VRF name red (" +
                     planned("maapi_get_elem", path) + ")"});
    }
}

TEST_F(OspfProcess, CursorThatCannotBeOpenedOrMoved_LeavesTheRunningDatastore)
{
    stored(internal(ospf_process(1, "red", ospf_numbers(100, 900))));
    faults().fail(Function::maapi_init_cursor, {}, {}, 1);
    expectFound("red", 100, 900);
    faults().clear();
    faults().fail(Function::maapi_get_next);
    expectFound("red", 100, 900);
    expectTrace({});
}

TEST_F(OspfProcess, EntryWithoutItsNumbersInBoth_IsTracedForBothAndFails)
{
    stored(internal(ospf_process(1, "red", "<proc_id>100</proc_id>")));
    EXPECT_EQ(find("red"), -1);
    expectNothingFound();
    expectTrace({"GetOspfProcIdCompoundId 10 Failed to get OSPF proc ID or compound ID for VRF name red (" +
                     bgp_test::absent("maapi_get_elem", "/internal/ospf-proc-id-to-index{1 red}/index") + ")",
                 "GetOspfProcIdCompoundId 10 Failed to get OSPF proc ID or compound ID for VRF name red from CDB (" +
                     bgp_test::absent("cdb_get", "/internal/ospf-proc-id-to-index[0]/index") + ")"});
}

TEST_F(OspfProcess, FirstTakenEntryWithoutItsNumbers_EndsTheSearch)
{
    stored(internal(ospf_process(1, "red", "") + ospf_process(2, "red", ospf_numbers(100, 900))));
    EXPECT_EQ(find("red"), -1);
    expectTrace({"GetOspfProcIdCompoundId 10 Failed to get OSPF proc ID or compound ID for VRF name red (" +
                     bgp_test::absent("maapi_get_elem", "/internal/ospf-proc-id-to-index{1 red}/proc_id") + ")",
                 "GetOspfProcIdCompoundId 10 Failed to get OSPF proc ID or compound ID for VRF name red from CDB (" +
                     bgp_test::absent("cdb_get", "/internal/ospf-proc-id-to-index[0]/proc_id") + ")"});
}

TEST_F(OspfProcess, NumberOfTheWrongTypeReadByHalf_LeavesNothingToRelease)
{
    leafHasType("metacli-internal", "proc_id", "string");
    stored(internal(ospf_process(1, "red", "<proc_id>a text that is kept outside of the row</proc_id>")));
    EXPECT_EQ(find("red"), -1);
    expectNothingFound();
}

TEST_F(OspfProcess, SessionRefused_FailsSilently)
{
    stored(internal(ospf_process(1, "red", ospf_numbers(100, 900))));
    forgetProcessesInTransaction();
    faults().fail(Function::cdb_start_session, {}, PlannedFailure::end_of_file());
    EXPECT_EQ(find("red"), -1);
    faults().clear();
    faults().fail(Function::cdb_connect);
    EXPECT_EQ(find("red"), -1);
    faults().clear();
    faults().fail(Function::cdb_num_instances);
    EXPECT_EQ(find("red"), -1);
    expectTrace({});
}

TEST_F(OspfProcess, CommittedNameThatCannotBeRead_IsPassedOver)
{
    stored(internal(ospf_process(1, "red", ospf_numbers(100, 900)) + ospf_process(2, "red", ospf_numbers(200, 901))));
    forgetProcessesInTransaction();
    faults().fail(Function::cdb_get, std::string(kProcesses) + "[0]/vrf_name");
    expectFound("red", 200, 901);
    expectTrace({});
}

TEST_F(OspfProcess, NullPointers_AreTracedAndNothingIsAsked)
{
    stored(internal(ospf_process(1, "red", ospf_numbers(100, 900))));
    confd_trans_ctx* const tctx = context();
    device().recorder().start();
    EXPECT_EQ(Redist::GetOspfProcIdCompoundId(maapi(), tctx, category(), "red", nullptr, &compound_id_), -1);
    EXPECT_EQ(Redist::GetOspfProcIdCompoundId(maapi(), tctx, category(), "red", &proc_id_, nullptr), -1);
    EXPECT_EQ(Redist::GetOspfProcIdCompoundId(maapi(), nullptr, category(), "red", &proc_id_, &compound_id_), -1);
    EXPECT_EQ(Redist::GetOspfProcIdCompoundId(maapi(), nullptr, nullptr, "red", &proc_id_, &compound_id_), -1);
    expectCalls({});
    expectTrace({"GetOspfProcIdCompoundId 10 Invalid NULL pointer", "GetOspfProcIdCompoundId 10 Invalid NULL pointer",
                 "GetOspfProcIdCompoundId 10 Invalid NULL pointer"});
}

TEST_F(OspfProcess, WithoutACategory_NothingIsTraced)
{
    stored(internal(ospf_process(1, "red", "")));
    EXPECT_EQ(Redist::GetOspfProcIdCompoundId(maapi(), context(), nullptr, "red", &proc_id_, &compound_id_), -1);
    expectTrace({});
}

class OspfProcessDeath : public OspfProcess {
protected:
    void SetUp() override
    {
        leafHasType("metacli-internal", "ospf-proc-id-to-index/vrf_name", "uint32");
        stored(internal(ospf_process(1, "7", ospf_numbers(100, 900))));
        open();
    }

    void expectAssertion(const std::string& expression)
    {
        EXPECT_DEATH(find("7"), bgp_test::asserts("static int32_t BgpUtils::BgpVrfRedistEntry::GetOspfProcIdCompoundId("
                                                  "int32_t, confd_trans_ctx*, nzmw_trace_category_t, const char*, "
                                                  "confd_value_t*, confd_value_t*)",
                                                  expression));
    }
};

TEST_F(OspfProcessDeath, VrfNameOfAnotherTypeInTheTransaction_FailsAnAssertion)
{
    expectAssertion("(&(vl_mc.keys[1]))->type == C_BUF");
}

TEST_F(OspfProcessDeath, VrfNameOfAnotherTypeInTheRunningDatastore_FailsAnAssertion)
{
    forgetProcessesInTransaction();
    expectAssertion("(&vl_vrf_name_tmp)->type == C_BUF");
}

}  // namespace
