// What each step made of a configuration, as a number.
#include "report/change_digests.h"

#include <gmock/gmock.h>

#include "confd_maapi.h"
#include "support/judged_upgrade.h"
#include "support/run_command.h"
#include "support/source_tree.h"

namespace bgp_test {
namespace {

using bgp_platform::UpgradeHandles;
using bgp_rehearse::change_digests;
using testing::ElementsAre;

using Digests = std::map<std::string, uint64_t>;

// Of the edge router's upgrade, behind whose last step, in "update", leaves are set by hand.
Digests digests_with(const std::vector<std::pair<std::string, std::string>>& set_by_hand)
{
    JudgedUpgrade upgrade(content_of(kHome / "examples/edge-router.xml"));
    upgrade.run();
    upgrade.by_hand([&](const UpgradeHandles& handles) {
        for (const auto& [leaf, value] : set_by_hand) {
            EXPECT_EQ(maapi_set_elem2(handles.maapi_socket, handles.thandle, value.c_str(), "%s", leaf.c_str()),
                      CONFD_OK)
                << leaf;
        }
    });
    return change_digests(upgrade.device());
}

// The names under which two of them differ.
std::vector<std::string> differing(const Digests& one, const Digests& other)
{
    std::vector<std::string> names;
    Digests all = one;
    all.insert(other.begin(), other.end());
    for (const auto& each : all) {
        if (one.count(each.first) != other.count(each.first) || one.at(each.first) != other.at(each.first)) {
            names.push_back(each.first);
        }
    }
    return names;
}

const std::string kClusterId = "/router/bgp{65010}/bgp/cluster-id";
const std::string kPassword =
    "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{1 unknown \"\" 0 ipv4 c6:33:64:02 0 0}/bgpPeerConfigPassword";

TEST(ChangeDigests, SameResult_SameNumbers)
{
    const Digests digests = digests_with({});
    EXPECT_EQ(digests, digests_with({}));
    EXPECT_EQ(digests.count("update_router_bgp"), 1U);
    EXPECT_EQ(digests.count("update_vrf"), 0U) << "it changed nothing";
}

TEST(ChangeDigests, LeafOfAStepThatHasAnotherValue_IsTheSteps)
{
    EXPECT_THAT(differing(digests_with({}), digests_with({{kClusterId, "192.0.2.77"}})),
                ElementsAre("update", "update_router_bgp"));
}

TEST(ChangeDigests, Secret_CountsAsSetWhateverItIs)
{
    const Digests set = digests_with({{kPassword, "one"}});
    EXPECT_EQ(set, digests_with({{kPassword, "another"}}));
    EXPECT_THAT(differing(set, digests_with({})), ElementsAre("update"));
}

}  // namespace
}  // namespace bgp_test
