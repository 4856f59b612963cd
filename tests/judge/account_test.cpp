// The account of rows: it closes whatever an upgrade does, and what is done by hand shows as exactly that.
#include "judge/account.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "confd_maapi.h"
#include "support/drawn_configuration.h"
#include "support/judged_upgrade.h"

namespace bgp_test {
namespace {

using bgp_platform::Datastore;
using bgp_platform::UpgradeHandles;
using bgp_rehearse::Account;
using bgp_rehearse::Judgement;
using bgp_rehearse::ListAccount;
using bgp_rehearse::RowCounts;

std::string file_text(const std::string& name)
{
    std::ifstream file(std::string(BGP_SOURCE_DIR) + "/" + name);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

RowCounts rows_of_list(const Account& account, const std::string& path)
{
    for (const ListAccount& list : account.lists) {
        if (list.list->path() == path) {
            return list.rows;
        }
    }
    return {};
}

// judged() throws where the sums do not close; here they are added up once more, and held against what the store counts.
void expect_closed(JudgedUpgrade& upgrade)
{
    const Account account = upgrade.judged().account;
    std::size_t stored = 0;
    std::size_t result = 0;
    for (const ListAccount& list : account.lists) {
        EXPECT_TRUE(list.rows.closes()) << list.list->path();
        stored += list.rows.stored;
        result += list.rows.result;
    }
    EXPECT_EQ(account.total.stored, stored);
    EXPECT_EQ(account.total.result, result);
    EXPECT_TRUE(account.total.closes());
    EXPECT_GT(stored, 0U);
}

TEST(AccountProperty, AdversarialConfigurations_Close)
{
    for (uint64_t seed = 0; seed < 500 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        JudgedUpgrade upgrade(adversarial_of_any_entities(seed));
        upgrade.run();
        expect_closed(upgrade);
    }
}

TEST(AccountProperty, HealthyConfigurations_Close)
{
    for (uint64_t seed = 0; seed < 500 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        JudgedUpgrade upgrade(healthy(seed));
        upgrade.run();
        expect_closed(upgrade);
    }
}

class AccountByHand : public testing::Test {
protected:
    AccountByHand()
    {
        upgrade_.run();
        before_ = fates(upgrade_.device());
        account_ = upgrade_.judged().account;
    }

    void by_hand(const std::function<int(int, int)>& call)
    {
        upgrade_.by_hand(
            [&](const UpgradeHandles& handles) { EXPECT_EQ(call(handles.maapi_socket, handles.thandle), CONFD_OK); });
    }

    // What has become other since the upgrade, and what is no longer told.
    void expect_told(const std::vector<std::string>& more, const std::vector<std::string>& gone)
    {
        const std::vector<std::string> now = fates(upgrade_.device());
        std::vector<std::string> added;
        std::vector<std::string> missing;
        for (const std::string& line : now) {
            if (std::find(before_.begin(), before_.end(), line) == before_.end()) {
                added.push_back(line);
            }
        }
        for (const std::string& line : before_) {
            if (std::find(now.begin(), now.end(), line) == now.end()) {
                missing.push_back(line);
            }
        }
        EXPECT_EQ(added, more);
        EXPECT_EQ(missing, gone);
        expect_closed(upgrade_);
    }

    JudgedUpgrade upgrade_{file_text("examples/edge-router.xml")};
    std::vector<std::string> before_;
    Account account_;
};

TEST_F(AccountByHand, MovedRowTakenOut_IsRemoved)
{
    const std::string row = kRouteMaps + std::string("{1 1 10}");
    by_hand([&](int sock, int thandle) { return maapi_delete(sock, thandle, "%s", row.c_str()); });
    expect_told({"removed " + std::string(kRouteMaps) + "{5 1 10}"}, {"moved and changed " + row + " from {5 1 10}"});
}

TEST_F(AccountByHand, RowAdded_IsNew)
{
    const std::string row = kRouteMaps + std::string("{1 99 10}");
    by_hand([&](int sock, int thandle) { return maapi_create(sock, thandle, "%s", row.c_str()); });
    expect_told({"new " + row}, {});
}

TEST_F(AccountByHand, LeafChangedInARowThatMoved_IsMovedAndChanged)
{
    std::string line;
    for (const std::string& each : before_) {
        line = each.rfind("moved /DC-BGP-MIB/bgpRmAfiSafiTable", 0) == 0 ? each : line;
    }
    ASSERT_FALSE(line.empty());
    const std::string path = line.substr(6, line.find(" from ") - 6);
    by_hand([&](int sock, int thandle) {
        return maapi_set_elem2(sock, thandle, "down", "%s/bgpRmAfiSafiAdminStatus", path.c_str());
    });
    expect_told({"moved and changed" + line.substr(5)}, {line});
}

TEST_F(AccountByHand, RowTakenOutAndMadeAnew_IsRemovedAndNew)
{
    const std::string row = kRouteMaps + std::string("{1 1 10}");
    by_hand([&](int sock, int thandle) { return maapi_delete(sock, thandle, "%s", row.c_str()); });
    by_hand([&](int sock, int thandle) { return maapi_create(sock, thandle, "%s", row.c_str()); });
    expect_told({"new " + row, "removed " + std::string(kRouteMaps) + "{5 1 10}"},
                {"moved and changed " + row + " from {5 1 10}"});
}

TEST_F(AccountByHand, UntouchedRowMovedThereAndBack_IsAsItWas)
{
    confd_value_t there;
    CONFD_SET_UINT32(&there, 3);
    confd_value_t back;
    CONFD_SET_UINT32(&back, 1);
    const RowCounts before = rows_of_list(account_, "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry");
    by_hand([&](int sock, int thandle) {
        return maapi_move(sock, thandle, &there, 1, "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{1}");
    });
    by_hand([&](int sock, int thandle) {
        return maapi_move(sock, thandle, &back, 1, "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry{3}");
    });
    expect_told({}, {});
    EXPECT_EQ(rows_of_list(upgrade_.judged().account, "/DC-RTM-MIB/rtmEntityTable/rtmEntityEntry").kept, before.kept);
}

TEST_F(AccountByHand, DefaultSetWhereNothingWas_IsNoChange)
{
    const std::string row = "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry{1 5}";
    const auto set_least_length = [&](const char* length) {
        by_hand([&](int sock, int thandle) {
            return maapi_set_elem2(sock, thandle, length, "%s/aallPreAccessListAddrPrefGe", row.c_str());
        });
    };
    set_least_length("0");
    expect_told({}, {});
    set_least_length("26");
    expect_told({"changed " + row}, {});
}

TEST_F(AccountByHand, FailedMove_TellsNothing)
{
    confd_value_t keys[3];
    CONFD_SET_UINT32(&keys[0], 1);
    CONFD_SET_UINT32(&keys[1], 1);
    CONFD_SET_UINT32(&keys[2], 20);
    upgrade_.by_hand([&](const UpgradeHandles& handles) {
        EXPECT_EQ(maapi_move(handles.maapi_socket, handles.thandle, keys, 3, "%s{1 1 10}", kRouteMaps), CONFD_ERR);
    });
    expect_told({}, {});
}

TEST(Account, OfTheEdgeRouter_SaysWhatBecameOfEachRow)
{
    JudgedUpgrade upgrade(file_text("examples/edge-router.xml"));
    upgrade.run();
    const RowCounts& rows = upgrade.judged().account.total;
    EXPECT_EQ(rows.stored, 123U);
    EXPECT_EQ(rows.moved, 53U);
    EXPECT_EQ(rows.moved_and_changed, 41U);
    EXPECT_EQ(rows.kept, 29U);
    EXPECT_EQ(rows.removed, 0U);
    EXPECT_EQ(rows.added, 50U);
}

// The sums are not made so that they close: a fate that is counted once too often shows.
TEST(Account, SumThatDoesNotClose_IsTold)
{
    JudgedUpgrade upgrade(file_text("examples/edge-router.xml"));
    upgrade.run();
    const auto& stored = upgrade.device().configuration(Datastore::Stored);
    const auto& result = upgrade.device().configuration(Datastore::Transaction);
    bgp_rehearse::AccountKeeper keeper(stored, result);
    walk_rows(upgrade.device(), keeper);
    EXPECT_EQ(keeper.take().mistake(), "");
    keeper.kept(*stored.schema().root().lists.front(), 1);
    EXPECT_THAT(keeper.take().mistake(), testing::StartsWith("/"));
}

}  // namespace
}  // namespace bgp_test
