// VRF and RTM numbers by name and back, through the transaction and then the running datastore, and the removal of a
// VRF's redistribution rows.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>

#include "confd/value.h"
#include "support/daemon_fixture.h"
#include "support/show_faults.h"

namespace {

bool row_key_type_is_wrong = false;

}  // namespace

// Stands before the platform's: a row found by a C_UINT32 key has a key of that type, so the wrong one is made here.
extern "C" int maapi_find_next(maapi_cursor* mc, confd_find_next_type type, confd_value_t* inkeys, int n_inkeys)
{
    using FindNext = int (*)(maapi_cursor*, confd_find_next_type, confd_value_t*, int);
    static const auto platform = reinterpret_cast<FindNext>(dlsym(RTLD_NEXT, "maapi_find_next"));
    const int result = platform(mc, type, inkeys, n_inkeys);
    if (row_key_type_is_wrong) {
        mc->keys[0].type = C_INT32;
    }
    return result;
}

namespace {

using bgp_platform::capi::Function;
using bgp_platform::capi::PlannedFailure;
using bgp_test::Name;
using confd::Value;

constexpr char kRedVrf[] = R"(<internal xmlns="urn:bgp-update:yang:metacli-internal"><vrf-config>
    <stringTOindex><name>red</name><vrf-idx>7</vrf-idx><rtmIndex>70</rtmIndex><rtmIndexV6>76</rtmIndexV6></stringTOindex>
    <indexTOstring><index>7</index><vname>red</vname></indexTOstring></vrf-config></internal>)";
constexpr char kRedIndexPath[] = "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{red}/vrf-idx";

std::string redistribution_row(int rtm, int id)
{
    return "<rtmRedistEntry><rtmRedistFteIndex>" + std::to_string(rtm) + "</rtmRedistFteIndex><rtmRedistEntryId>" +
           std::to_string(id) + "</rtmRedistEntryId></rtmRedistEntry>";
}

std::string redistribution_rows(const std::string& rows)
{
    return "<DC-RTM-MIB xmlns=\"http://tail-f.com/ns/mibs/DC-RTM-MIB\"><rtmRedistTable>" + rows +
           "</rtmRedistTable></DC-RTM-MIB>";
}

// No more descriptors than are open now, for the time of a scope.
class NoMoreDescriptors {
public:
    NoMoreDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit none{0, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

private:
    rlimit before_{};
};

class VrfLookup : public bgp_test::DaemonTest {
protected:
    int vrfIndex(const char* name) { return BgpUtils::GetVrfIndex(maapi(), thandle(), Name(name), &found_); }
    int vrfName(unsigned int index) { return BgpUtils::GetVrfNameFromIndex(maapi(), thandle(), index, &found_); }
    int rtmIndex(const char* name, int ipv6)
    {
        return BgpUtils::GetRtmIndexFromVrf(maapi(), thandle(), Name(name), &found_, ipv6);
    }
    void forgetInTransaction(const char* path) { ASSERT_EQ(maapi_delete(maapi(), thandle(), path), CONFD_OK); }

    // Found in the transaction, no session was made.
    void expectNoSession() { EXPECT_EQ(device().calls().of(Function::cdb_connect), 0U); }

    Value found_;
};

class VrfRedistribution : public VrfLookup {
protected:
    int removeAll(bool ipv6) { return BgpUtils::RtmVrfRedistRemoveAll(maapi(), thandle(), Name("red"), ipv6); }
};

TEST_F(VrfLookup, VrfOfTheTransaction_IsFoundThere)
{
    open();
    ASSERT_EQ(maapi_create(maapi(), thandle(), "/metacli-internal:internal/vrf-config/stringTOindex{blue}"), CONFD_OK);
    ASSERT_EQ(
        maapi_set_elem2(maapi(), thandle(), "9", "/metacli-internal:internal/vrf-config/stringTOindex{blue}/vrf-idx"),
        CONFD_OK);
    ASSERT_EQ(vrfIndex("blue"), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 9U);
    expectNoSession();
}

TEST_F(VrfLookup, VrfChangedInTheTransaction_IsFoundAsChanged)
{
    stored(kRedVrf);
    ASSERT_EQ(maapi_set_elem2(maapi(), thandle(), "8", "%s", kRedIndexPath), CONFD_OK);
    ASSERT_EQ(vrfIndex("red"), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 8U);
    expectNoSession();
}

TEST_F(VrfLookup, VrfDeletedInTheTransaction_IsFoundInTheRunningDatastore)
{
    stored(kRedVrf);
    forgetInTransaction("/metacli-internal:internal/vrf-config/stringTOindex{red}");
    ASSERT_EQ(vrfIndex("red"), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 7U);
    EXPECT_EQ(device().calls().of(Function::cdb_get), 1U);
    expectNothingLeftOpen();
    expectTrace({});
}

TEST_F(VrfLookup, Fallback_OpensOneSessionForOneRead)
{
    stored(kRedVrf);
    forgetInTransaction("/metacli-internal:internal/vrf-config/stringTOindex{red}");
    device().recorder().start();
    ASSERT_EQ(vrfIndex("red"), 0);
    const std::string path = kRedIndexPath;
    expectCalls({"maapi_get_elem " + path + " -> -1 (item does not exist)", "cdb_connect -> 0",
                 "cdb_start_session -> 0", "cdb_get " + path + " -> 0", "cdb_end_session -> 0", "cdb_close -> 0"});
}

TEST_F(VrfLookup, TransactionThatCannotBeRead_LeavesTheRunningDatastore)
{
    stored(kRedVrf);
    faults().fail(Function::maapi_get_elem);
    ASSERT_EQ(vrfIndex("red"), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 7U);
}

TEST_F(VrfLookup, UnknownVrf_GivesTheResultOfTheRead)
{
    stored(kRedVrf);
    EXPECT_EQ(vrfIndex("green"), CONFD_ERR);
    EXPECT_EQ(found_.type, C_NOEXISTS);
    EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
    EXPECT_EQ(vrfName(99), CONFD_ERR);
    EXPECT_EQ(rtmIndex("green", 0), CONFD_ERR);
    expectNothingLeftOpen();
}

TEST_F(VrfLookup, OtherEndClosing_IsTheResultOfTheRead)
{
    open();
    faults().fail(Function::cdb_get, {}, PlannedFailure::end_of_file());
    EXPECT_EQ(vrfIndex("red"), CONFD_EOF);
    EXPECT_EQ(vrfName(7), CONFD_EOF);
    EXPECT_EQ(rtmIndex("red", 1), CONFD_EOF);
    expectNothingLeftOpen();
}

TEST_F(VrfLookup, SessionRefused_FailsAndLeavesNothingOpen)
{
    stored(kRedVrf);
    forgetInTransaction("/metacli-internal:internal/vrf-config");
    faults().fail(Function::cdb_start_session, {}, PlannedFailure::end_of_file());
    EXPECT_EQ(vrfIndex("red"), -1);
    EXPECT_EQ(vrfName(7), -1);
    EXPECT_EQ(rtmIndex("red", 0), -1);
    EXPECT_EQ(device().calls().of(Function::cdb_get), 0U);
    expectNothingLeftOpen();
}

TEST_F(VrfLookup, ConnectionRefused_Fails)
{
    stored(kRedVrf);
    forgetInTransaction("/metacli-internal:internal/vrf-config");
    faults().fail(Function::cdb_connect);
    EXPECT_EQ(vrfIndex("red"), -1);
    expectNothingLeftOpen();
}

TEST_F(VrfLookup, NoSocketToBeHad_Fails)
{
    stored(kRedVrf);
    forgetInTransaction("/metacli-internal:internal/vrf-config");
    {
        const NoMoreDescriptors limit;
        EXPECT_EQ(vrfIndex("red"), -1);
    }
    expectNoSession();
}

TEST_F(VrfLookup, WithoutAPlaceForTheResult_NothingIsAsked)
{
    stored(kRedVrf);
    open();
    device().recorder().start();
    EXPECT_EQ(BgpUtils::GetVrfIndex(maapi(), thandle(), Name("red"), nullptr), -1);
    EXPECT_EQ(BgpUtils::GetVrfNameFromIndex(maapi(), thandle(), 7, nullptr), -1);
    EXPECT_EQ(BgpUtils::GetRtmIndexFromVrf(maapi(), thandle(), Name("red"), nullptr, 1), -1);
    expectCalls({});
}

TEST_F(VrfLookup, NameOfAnIndex_IsATextOfTheCallers)
{
    stored(kRedVrf);
    ASSERT_EQ(vrfName(7), 0);
    ASSERT_EQ(found_.type, C_BUF);
    EXPECT_STREQ(CONFD_GET_CBUFPTR(&found_), "red");
    EXPECT_EQ(device().open_things().values, 1U);
    found_.release();
    expectNoSession();
    expectNothingLeftOpen();
}

TEST_F(VrfLookup, NameDeletedInTheTransaction_IsFoundInTheRunningDatastore)
{
    stored(kRedVrf);
    forgetInTransaction("/metacli-internal:internal/vrf-config/indexTOstring{7}");
    ASSERT_EQ(vrfName(7), 0);
    EXPECT_STREQ(CONFD_GET_CBUFPTR(&found_), "red");
    found_.release();
    expectNothingLeftOpen();
}

TEST_F(VrfLookup, RtmIndex_IsThatOfTheAddressFamily)
{
    stored(kRedVrf);
    ASSERT_EQ(rtmIndex("red", 0), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 70U);
    ASSERT_EQ(rtmIndex("red", 1), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 76U);
    ASSERT_EQ(rtmIndex("red", -3), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 76U);
    expectNoSession();
}

TEST_F(VrfLookup, RtmIndexDeletedInTheTransaction_IsFoundInTheRunningDatastore)
{
    stored(kRedVrf);
    forgetInTransaction("/metacli-internal:internal/vrf-config/stringTOindex{red}/rtmIndex");
    forgetInTransaction("/metacli-internal:internal/vrf-config/stringTOindex{red}/rtmIndexV6");
    ASSERT_EQ(rtmIndex("red", 0), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 70U);
    ASSERT_EQ(rtmIndex("red", 1), 0);
    EXPECT_EQ(CONFD_GET_UINT32(&found_), 76U);
    expectNothingLeftOpen();
}

TEST_F(VrfRedistribution, RowsOfTheVrf_GoAndThoseOfOthersStay)
{
    stored(kRedVrf);
    stored(redistribution_rows(redistribution_row(69, 1) + redistribution_row(70, 1) + redistribution_row(70, 5) +
                               redistribution_row(71, 1) + redistribution_row(76, 2)));
    EXPECT_EQ(removeAll(false), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{70 1}",
                   "delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{70 5}"});
    expectNothingLeftOpen();
}

TEST_F(VrfRedistribution, Ipv6_RemovesTheRowsOfTheIpv6Manager)
{
    stored(kRedVrf);
    stored(redistribution_rows(redistribution_row(70, 1) + redistribution_row(76, 2) + redistribution_row(80, 1)));
    EXPECT_EQ(removeAll(true), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{76 2}"});
    expectNothingLeftOpen();
}

TEST_F(VrfRedistribution, WalkGoesOnToTheEndOfTheTable)
{
    stored(kRedVrf);
    stored(redistribution_rows(redistribution_row(69, 1) + redistribution_row(70, 1) + redistribution_row(71, 1) +
                               redistribution_row(72, 1)));
    open();
    device().recorder().start();
    EXPECT_EQ(removeAll(false), 0);
    EXPECT_EQ(device().recorder().calls()[2].text(),
              "maapi_find_next /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry from {70} -> 0");
    EXPECT_EQ(device().calls().of(Function::maapi_get_next), 3U) << "71, 72 and the end";
}

TEST_F(VrfRedistribution, ManagerWithoutRows_IsSuccess)
{
    stored(kRedVrf);
    stored(redistribution_rows(redistribution_row(69, 1) + redistribution_row(71, 1)));
    EXPECT_EQ(removeAll(false), 0);
    expectChanges({});
    expectNothingLeftOpen();
}

TEST_F(VrfRedistribution, EmptyTable_IsSuccess)
{
    stored(kRedVrf);
    EXPECT_EQ(removeAll(false), 0);
    expectChanges({});
    expectNothingLeftOpen();
}

TEST_F(VrfRedistribution, VrfKnownToTheRunningDatastoreOnly_LosesItsRows)
{
    stored(kRedVrf);
    stored(redistribution_rows(redistribution_row(70, 1)));
    forgetInTransaction("/metacli-internal:internal/vrf-config/stringTOindex{red}/rtmIndex");
    EXPECT_EQ(removeAll(false), 0);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{70 1}",
                   "delete /internal/vrf-config/stringTOindex{red}/rtmIndex"});
}

TEST_F(VrfRedistribution, UnknownVrf_Fails)
{
    stored(redistribution_rows(redistribution_row(70, 1)));
    EXPECT_EQ(removeAll(false), -1);
    faults().fail(Function::cdb_get, {}, PlannedFailure::end_of_file());
    EXPECT_EQ(removeAll(false), -1) << "whatever the read gave";
    expectChanges({});
    expectNothingLeftOpen();
}

TEST_F(VrfRedistribution, FailedDelete_EndsTheWalkAndGivesTheCursorBack)
{
    stored(kRedVrf);
    stored(redistribution_rows(redistribution_row(70, 1) + redistribution_row(70, 2) + redistribution_row(70, 3)));
    faults().fail(Function::maapi_delete, "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{70 2}");
    EXPECT_EQ(removeAll(false), -1);
    expectChanges({"delete /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{70 1}"});
    expectNothingLeftOpen();
}

TEST_F(VrfRedistribution, CursorThatCannotBeOpenedOrPlaced_CountsAsAnEmptyTable)
{
    stored(kRedVrf);
    stored(redistribution_rows(redistribution_row(70, 1)));
    faults().fail(Function::maapi_init_cursor, {}, {}, 1);
    EXPECT_EQ(removeAll(false), 0);
    faults().fail(Function::maapi_find_next);
    EXPECT_EQ(removeAll(false), 0);
    expectChanges({});
    expectNothingLeftOpen();
}

class VrfRedistributionDeath : public VrfRedistribution {};

constexpr char kRemoveAllSignature[] = "static int BgpUtils::RtmVrfRedistRemoveAll(int, int, char*, bool)";

TEST_F(VrfRedistributionDeath, RtmIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "rtmIndex", "int32");
    stored(kRedVrf);
    EXPECT_DEATH(removeAll(false), bgp_test::asserts(kRemoveAllSignature, "(&myval)->type == C_UINT32"));
}

TEST_F(VrfRedistributionDeath, RowKeyOfAnotherType_FailsAnAssertion)
{
    stored(kRedVrf);
    stored(redistribution_rows(redistribution_row(70, 1)));
    row_key_type_is_wrong = true;
    EXPECT_DEATH(removeAll(false), bgp_test::asserts(kRemoveAllSignature, "(&mc.keys[0])->type == C_UINT32"));
    row_key_type_is_wrong = false;
}

}  // namespace
