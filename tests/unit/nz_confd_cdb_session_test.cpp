// The private CDB session class: the platform's, under the library's name.
#include "bgp_update/nz_confd_cdb_session.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "device.h"

namespace {

using bgp_platform::Device;

static_assert(std::is_base_of_v<NzConfdCdbSessionBase, NzConfdCdbSession>);
static_assert(sizeof(NzConfdCdbSession) == sizeof(NzConfdCdbSessionBase), "nothing is added");

TEST(NzConfdCdbSession, Constructed_ReadsTheRunningDatastore)
{
    Device device;
    NzConfdInterface confd(-1);
    const NzConfdCdbSession session(&confd, CDB_RUNNING, true);
    ASSERT_GE(session.Socket(), 0);
    EXPECT_EQ(cdb_num_instances(session.Socket(), "/prefix-list"), 0);
}

TEST(NzConfdCdbSession, NotStarted_HasAConnectionWithoutASession)
{
    Device device;
    NzConfdInterface confd(-1);
    const NzConfdCdbSession session(&confd, CDB_RUNNING, false);
    EXPECT_EQ(device.open_things().cdb_sockets, 1U);
    EXPECT_EQ(device.open_things().cdb_sessions, 0U);
}

TEST(NzConfdCdbSession, DestroyedThroughItsBase_ClosesTheSession)
{
    Device device;
    NzConfdInterface confd(-1);
    std::unique_ptr<NzConfdCdbSessionBase> session = std::make_unique<NzConfdCdbSession>(&confd, CDB_RUNNING, true);
    EXPECT_EQ(device.open_things().cdb_sessions, 1U);
    session.reset();
    EXPECT_TRUE(device.open_things().none());
}

}  // namespace
