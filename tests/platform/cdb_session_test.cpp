// Private CDB sessions of daemon code: opened on the device, closed with their object.
#include <gtest/gtest.h>

#include "device.h"
#include "nz_confd_cdb_session.h"

namespace {

using bgp_platform::Device;

TEST(CdbSession, OnADevice_ReadsTheStoredConfiguration)
{
    Device device;
    NzConfdInterface confd(-1);
    const NzConfdCdbSessionBase session(&confd, CDB_RUNNING, true);
    ASSERT_GE(session.Socket(), 0);
    EXPECT_EQ(cdb_num_instances(session.Socket(), "/prefix-list"), 0);
    EXPECT_EQ(device.open_things().cdb_sessions, 1U);
}

TEST(CdbSession, Destroyed_LeavesNothingOpen)
{
    Device device;
    NzConfdInterface confd(-1);
    {
        const NzConfdCdbSessionBase session(&confd, CDB_RUNNING, true);
        EXPECT_EQ(device.open_things().cdb_sockets, 1U);
    }
    EXPECT_TRUE(device.open_things().none());
}

TEST(CdbSession, NotStarted_IsAConnectionWithoutASession)
{
    Device device;
    NzConfdInterface confd(-1);
    const NzConfdCdbSessionBase session(&confd, CDB_RUNNING, false);
    ASSERT_GE(session.Socket(), 0);
    EXPECT_EQ(device.open_things().cdb_sessions, 0U);
    EXPECT_EQ(cdb_start_session(session.Socket(), CDB_RUNNING), CONFD_OK);
}

TEST(CdbSession, WithoutADevice_HasNoSocket)
{
    NzConfdInterface confd(-1);
    EXPECT_LT(NzConfdCdbSessionBase(&confd, CDB_RUNNING, true).Socket(), 0);
}

TEST(CdbSession, WithoutAnInterface_HasNoSocket)
{
    Device device;
    EXPECT_LT(NzConfdCdbSessionBase(nullptr, CDB_RUNNING, true).Socket(), 0);
    EXPECT_TRUE(device.open_things().none());
}

TEST(CdbSession, TransactionContext_LeadsToTheInterfaceAttachedToIt)
{
    NzConfdInterface confd(12);
    confd_trans_ctx context{};
    EXPECT_EQ(NzConfdInterface::FromTransaction(&context), nullptr);
    EXPECT_EQ(NzConfdInterface::FromTransaction(nullptr), nullptr);
    context.t_opaque = &confd;
    ASSERT_EQ(NzConfdInterface::FromTransaction(&context), &confd);
    EXPECT_EQ(NzConfdInterface::FromTransaction(&context)->MaapiSocket(), 12);
}

}  // namespace
