// What an assumption of the rehearsal decides: with another user profile or other interfaces just those leaves are other.
#include "judge/assumptions.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "store/changes.h"
#include "support/drawn_configuration.h"
#include "support/judged_upgrade.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace bgp_test {
namespace {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;
using bgp_rehearse::Assumption;
using bgp_rehearse::Finding;
using bgp_rehearse::FindingId;
using bgp_rehearse::Judgement;

constexpr uint64_t kDrawn = 120;

// Paths of leaves that two configurations differ in; rows that only one has are "row ...".
class Differences : public bgp_platform::store::ChangeVisitor {
public:
    void entry_created(const Trail& around, const Row& entry) override
    {
        paths.insert("row " + keypath(around, &entry));
    }
    void entry_deleted(const Trail& around, const Row& entry) override
    {
        paths.insert("row " + keypath(around, &entry));
    }
    void leaf_changed(const Trail& row, const Node& leaf, const Value& /*before*/, const Value& /*after*/) override
    {
        paths.insert(bgp_platform::store::keypath(row, leaf));
    }

    std::set<std::string> paths;
};

// The leaves that an assumption decided. None of these rows stands in another.
std::set<std::string> decided(const Assumption& assumption)
{
    std::set<std::string> paths;
    for (const Assumption::Leaf& leaf : assumption.decided) {
        Trail row;
        if (leaf.row->record().owner != nullptr) {
            row.push_back(leaf.row);
        }
        paths.insert(bgp_platform::store::keypath(row, *leaf.leaf));
    }
    EXPECT_EQ(paths.size(), assumption.decided.size());
    return paths;
}

class AnUpgrade {
public:
    AnUpgrade(const std::string& configuration, uint32_t profile, const char* address) : upgrade_(configuration)
    {
        in_addr interface {
        };
        EXPECT_EQ(inet_pton(AF_INET, address, &interface), 1);
        upgrade_.device().set_user_profile(profile);
        upgrade_.device().set_interfaces({interface});
        upgrade_.run();
        judgement_ = upgrade_.judged();
    }

    const Assumption& assumption(std::size_t number) const { return judgement_.assumptions.at(number); }
    std::set<std::string> differences(AnUpgrade& other)
    {
        Differences differences;
        walk_changes(result(), other.result(), differences);
        return differences.paths;
    }

private:
    const bgp_platform::store::Configuration& result()
    {
        return upgrade_.device().configuration(Datastore::Transaction);
    }

    JudgedUpgrade upgrade_;
    Judgement judgement_;
};

constexpr char kIsDefault[] = "/internal/router-id-default-hidden";

void expect_decided(const std::string& configuration, std::size_t* profiles, std::size_t* identities)
{
    AnUpgrade assumed(configuration, 0, "127.0.0.1");
    AnUpgrade other_profile(configuration, 77, "127.0.0.1");
    AnUpgrade other_interfaces(configuration, 0, "203.0.113.77");
    EXPECT_EQ(assumed.assumption(0).name, "user profile");
    EXPECT_EQ(assumed.differences(other_profile), decided(assumed.assumption(0)));

    EXPECT_EQ(assumed.assumption(1).name, "interfaces");
    std::set<std::string> marked = decided(assumed.assumption(1));
    std::set<std::string> different = assumed.differences(other_interfaces);
    if (different.count(kIsDefault) == 0) {
        marked.erase(kIsDefault);  // stored as it comes to be
    }
    EXPECT_EQ(different, marked);
    EXPECT_EQ(decided(other_interfaces.assumption(1)), decided(assumed.assumption(1)));
    *profiles += assumed.assumption(0).decided.size();
    *identities += assumed.assumption(1).decided.size();
}

TEST(AssumptionsProperty, OfDrawnRouters_DecideJustTheMarkedLeaves)
{
    std::size_t profiles = 0;
    std::size_t identities = 0;
    for (uint64_t seed = 0; seed < kDrawn && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        expect_decided(adversarial_of_any_entities(seed), &profiles, &identities);
        expect_decided(healthy(seed), &profiles, &identities);
    }
    EXPECT_GT(profiles, 1000U);
    EXPECT_GT(identities, 100U);
}

// It stays under the old index and is not written, though its limit is the profile's.
TEST(Assumptions, NeighbourThatStaysBehind_IsNotDecided)
{
    const auto peer = [](const std::string& index) {
        return leaf("bgpPeerEntry", peer_keys(index, "", "c0:00:02:02") + leaf("bgpPeerConfigMaxPrfx", "0"));
    };
    std::size_t profiles = 0;
    std::size_t identities = 0;
    expect_decided(config(mib(leaf("bgpRmEntTable", leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", "5") +
                                                                              leaf("bgpRmEntLocalAs", "65010"))) +
                              leaf("bgpPeerTable", peer("1") + peer("5")))),
                   &profiles, &identities);
    EXPECT_EQ(profiles, 1U);
}

// A router of AS 65010 with the VRF red, and what else it has.
std::string with_vrf(const std::string& more)
{
    return config(
        mib(leaf("bgpRmEntTable", leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", "1") + leaf("bgpRmEntLocalAs", "65010") +
                                                            leaf("bgpRmEntSupportIpv6", "true")))) +
        router("65010", more + leaf("administrative-status", "up") +
                            leaf("vrf", leaf("name", "red") + leaf("administrative-status", "up"))) +
        internal(leaf("vrf-config", leaf("stringTOindex", leaf("name", "red") + leaf("vrf-idx", "1")) +
                                        leaf("indexTOstring", leaf("index", "1") + leaf("vname", "red")))));
}

std::vector<Finding> guessed(const std::string& configuration, bool interfaces_given)
{
    JudgedUpgrade upgrade(configuration);
    upgrade.assumptions().interfaces_given = interfaces_given;
    upgrade.run();
    std::vector<Finding> found = findings_of(upgrade.judged(), FindingId::IdentityGuessed);
    for (Finding& finding : found) {
        finding.advice = words_of(finding, finding.places.at(0));  // while the rows live
    }
    return found;
}

TEST(IdentityGuessed, OfAVrfInstance_IsToBeLookedAt)
{
    const std::vector<Finding> found = guessed(with_vrf(""), false);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].sentence,
              "1 VRF instance gets the router id 0.0.0.0 by the router's interfaces, which are assumed");
    EXPECT_EQ(found[0].advice, "router entity 65537 of VRF red: (not set) -> 0.0.0.0");
    EXPECT_EQ(found[0].severity, bgp_rehearse::Severity::Review);
}

TEST(IdentityGuessed, WithTheRoutersOwnId_IsToBeLookedAtToo)
{
    const std::vector<Finding> found = guessed(with_vrf(leaf("router-id", "192.0.2.1")), false);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_THAT(found[0].sentence, testing::HasSubstr(" the router id 192.0.2.1 by the router's interfaces"));
}

TEST(IdentityGuessed, WhereInterfacesAreGiven_IsNone)
{
    EXPECT_TRUE(guessed(with_vrf(""), true).empty());
}

TEST(IdentityGuessed, WithoutVrfs_IsNone)
{
    JudgedUpgrade upgrade(config(mib(
        leaf("bgpRmEntTable", leaf("bgpRmEntEntry", leaf("bgpRmEntIndex", "5") + leaf("bgpRmEntLocalAs", "65010"))))));
    upgrade.assumptions().interfaces_given = false;
    upgrade.run();
    const Judgement judgement = upgrade.judged();
    EXPECT_TRUE(findings_of(judgement, FindingId::IdentityGuessed).empty());
    EXPECT_TRUE(judgement.assumptions.at(1).decided.empty());
}

}  // namespace
}  // namespace bgp_test
