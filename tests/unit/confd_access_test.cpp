// The little C++ over the C API that steps use: values, cursors and transactions give what the calls give, and release
// what they own.
#include <gtest/gtest.h>

#include "confd/cursor.h"
#include "confd/transaction.h"
#include "confd/value.h"
#include "confd_cdb.h"
#include "device.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::Device;
using bgp_platform::UpgradeHandles;
using bgp_platform::capi::Function;
using confd::Cursor;
using confd::Transaction;
using confd::Value;
using confd::ValueArray;

constexpr char kThreeRouters[] = R"(<router xmlns="urn:bgp-update:yang:router">
    <bgp><as-number>10</as-number><as-size>twoOctet</as-size></bgp>
    <bgp><as-number>20</as-number><vrf><name>red</name></vrf></bgp>
    <bgp><as-number>30</as-number></bgp></router>)";

class ConfdAccess : public bgp_test::UpdateTest {
protected:
    Transaction transaction()
    {
        const UpgradeHandles upgrade = open();
        return {upgrade.maapi_socket, upgrade.thandle};
    }
    int cdb() { return open().cdb_socket; }
};

std::vector<uint32_t> first_keys(Cursor& cursor)
{
    std::vector<uint32_t> keys;
    while (cursor.next()) {
        keys.push_back(CONFD_GET_UINT32(&cursor.keys()[0]));
    }
    return keys;
}

TEST_F(ConfdAccess, Value_GivesBackWhatAReadLeftInIt)
{
    stored(
        R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>1</as-number><vrf><name>a</name></vrf></bgp></router>)");
    {
        Value name;
        ASSERT_EQ(cdb_get(cdb(), &name, "/router/bgp{1}/vrf[0]/name"), CONFD_OK);
        EXPECT_EQ(device().open_things().values, 1U);
        name.release();
        EXPECT_EQ(device().open_things().values, 0U);
        EXPECT_EQ(name.type, C_NOEXISTS);
        ASSERT_EQ(cdb_get(cdb(), &name, "/router/bgp{1}/vrf[0]/name"), CONFD_OK);
        EXPECT_STREQ(CONFD_GET_CBUFPTR(&name), "a");
    }
    EXPECT_EQ(device().open_things().values, 0U);
}

TEST_F(ConfdAccess, ValueArray_GivesBackWhatABatchReadLeftInIt)
{
    stored(
        R"(<prefix-list-internal xmlns="urn:bgp-update:yang:prefix-list"><idx-to-name><idx>1</idx><val>a</val></idx-to-name>
        <idx-to-name><idx>2</idx></idx-to-name></prefix-list-internal>)");
    {
        ValueArray rows(4);
        EXPECT_EQ(rows[3].type, C_NOEXISTS);
        ASSERT_EQ(rows.read_objects(cdb(), 2, 0, 2, "/prefix-list-internal/idx-to-name"), 2);
        EXPECT_STREQ(CONFD_GET_CBUFPTR(&rows[1]), "a");
        EXPECT_EQ(CONFD_GET_INT32(&rows[2]), 2);
        EXPECT_EQ(device().open_things().values, 1U);
    }
    EXPECT_EQ(device().open_things().values, 0U);
}

TEST_F(ConfdAccess, Cursor_VisitsTheEntriesInOrder)
{
    stored(kThreeRouters);
    Cursor routers = transaction().cursor("/router/bgp");
    EXPECT_EQ(first_keys(routers), (std::vector<uint32_t>{10, 20, 30}));
    EXPECT_EQ(routers.result(), CONFD_OK);
    EXPECT_EQ(routers.n(), 0);
}

TEST_F(ConfdAccess, Cursor_TakesTheKeysOfItsPath)
{
    stored(kThreeRouters);
    Cursor vrfs = transaction().cursor("/router/bgp{%u}/vrf", 20U);
    ASSERT_TRUE(vrfs.next());
    EXPECT_EQ(vrfs.n(), 1);
    EXPECT_STREQ(CONFD_GET_CBUFPTR(&vrfs.position().keys[0]), "red");
    EXPECT_FALSE(vrfs.next());
}

TEST_F(ConfdAccess, Cursor_IsPlacedByKeys)
{
    stored(kThreeRouters);
    Cursor routers = transaction().cursor("/router/bgp");
    confd_value_t as;
    CONFD_SET_UINT32(&as, 20);
    ASSERT_TRUE(routers.find_next(CONFD_FIND_NEXT, &as, 1));
    EXPECT_EQ(CONFD_GET_UINT32(&routers.keys()[0]), 30U);
    ASSERT_TRUE(routers.find_next(CONFD_FIND_SAME_OR_NEXT, &as, 1));
    EXPECT_EQ(CONFD_GET_UINT32(&routers.keys()[0]), 20U);
    CONFD_SET_UINT32(&as, 31);
    EXPECT_FALSE(routers.find_next(CONFD_FIND_SAME_OR_NEXT, &as, 1));
    EXPECT_EQ(routers.result(), CONFD_OK);
}

TEST_F(ConfdAccess, CursorThatCannotBeOpened_HasNoEntriesAndSaysSo)
{
    stored(kThreeRouters);
    faults().fail(Function::maapi_init_cursor);
    Cursor routers = transaction().cursor("/router/bgp");
    EXPECT_EQ(routers.result(), CONFD_ERR);
    EXPECT_FALSE(routers.next());
    confd_value_t as;
    CONFD_SET_UINT32(&as, 20);
    EXPECT_FALSE(routers.find_next(CONFD_FIND_NEXT, &as, 1));
    EXPECT_EQ(confd_lasterr(), bgp_test::planned("maapi_init_cursor", "/router/bgp")) << "a step was tried";
}

TEST_F(ConfdAccess, FailedStep_EndsTheWalkWithItsResult)
{
    stored(kThreeRouters);
    faults().fail(Function::maapi_get_next, {}, {}, 1, 1);
    Cursor routers = transaction().cursor("/router/bgp");
    EXPECT_EQ(first_keys(routers), std::vector<uint32_t>{10});
    EXPECT_EQ(routers.result(), CONFD_ERR);
}

TEST_F(ConfdAccess, CursorLeftInTheMiddle_IsGivenBack)
{
    stored(kThreeRouters);
    {
        Cursor vrfs = transaction().cursor("/router/bgp{20}/vrf");
        ASSERT_TRUE(vrfs.next());
        EXPECT_EQ(device().open_things().cursors, 1U);
    }
    expectNothingLeftOpen();
}

TEST_F(ConfdAccess, Transaction_WritesWhereItsPathSays)
{
    stored(kThreeRouters);
    confd_value_t as_size;
    CONFD_SET_ENUM_VALUE(&as_size, 2);
    confd_value_t new_key;
    CONFD_SET_UINT32(&new_key, 31);
    EXPECT_EQ(transaction().create("/router/bgp{%u}", 15U), CONFD_OK);
    EXPECT_EQ(transaction().set(&as_size, "/router/bgp{%u}/as-size", 15U), CONFD_OK);
    EXPECT_EQ(transaction().set_text("10.0.0.1", "/router/bgp{%u}/router-id", 15U), CONFD_OK);
    EXPECT_EQ(transaction().remove("/router/bgp{%u}/vrf{%s}", 20U, "red"), CONFD_OK);
    EXPECT_EQ(transaction().move(&new_key, 1, "/router/bgp{%u}", 30U), CONFD_OK);
    expectChanges({"create /router/bgp{15}", "set /router/bgp{15}/router-id 10.0.0.1",
                   "set /router/bgp{15}/as-size fourOctet", "delete /router/bgp{20}/vrf{red}", "delete /router/bgp{30}",
                   "create /router/bgp{31}"});
}

TEST_F(ConfdAccess, Transaction_ReadsWhatItWrote)
{
    stored(kThreeRouters);
    ASSERT_EQ(transaction().create("/router/bgp{%u}", 15U), CONFD_OK);
    ASSERT_EQ(transaction().set_text("10.0.0.1", "/router/bgp{%u}/router-id", 15U), CONFD_OK);
    EXPECT_EQ(transaction().exists("/router/bgp{%u}", 15U), 1);
    EXPECT_EQ(transaction().exists("/router/bgp{%u}", 16U), 0);
    EXPECT_EQ(transaction().num_instances("/router/bgp"), 4);
    Value router_id;
    ASSERT_EQ(transaction().get(&router_id, "/router/bgp{%u}/router-id", 15U), CONFD_OK);
    EXPECT_EQ(CONFD_GET_IPV4(&router_id).s_addr, htonl(0x0A000001));
}

TEST_F(ConfdAccess, FailedCalls_GiveTheirResult)
{
    stored(kThreeRouters);
    EXPECT_EQ(transaction().create("/router/bgp{%u}", 10U), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_ALREADY_EXISTS);
    EXPECT_EQ(transaction().remove("/router/bgp{%u}", 11U), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
    expectChanges({});
}

}  // namespace
