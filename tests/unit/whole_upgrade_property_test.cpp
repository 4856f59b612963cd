// The whole upgrade over configurations drawn at random, some hundred small ones with fixed seeds: what must hold of
// every upgrade, whichever steps it takes. The re-keying is compared with a small model of its own. None of them may end
// the process; the configurations with which the upgrade has to are in whole_upgrade_end_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "device.h"
#include "support/drawn_upgrade.h"
#include "support/rekeying_model.h"
#include "support/update_fixture.h"

namespace bgp_test {
namespace {

using bgp_contract::RekeyedTable;
using bgp_platform::Datastore;

constexpr uint32_t kFirstVrfIndex = 65537;

// Where rows that were not stored may come from after the re-keying: VRF instances, and partner families.
const std::set<std::string> kGrowing = {
    "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry",
    "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry",
    "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry",
    "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry",
    "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry",
    "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry",
    "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry",
    "/DC-RTM-MIB/rtmMjTable/rtmMjEntry",
};

// Leaves that a step sets on rows that are there. All others stay as they were stored.
const std::set<std::string> kSetLeaves = {
    "bgpPeerLocalNm",  "bgpPeerConfigDropWarn",        "bgpPeerConfigMaxPrfx", "bgpPeerAfiSafiDisable",
    "bgpNmEntRmIndex", "bgpPeerAfiSafiConfigDropWarn", "bgpRmEntSupportIpv6",  "bgpNmEntBfdEntityIndex",
    "protocol-index",  "bgpRouteMapMaAfiDef",          "bgpRouteMapMaSafiDef", "keys",
};

bool starts_with(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

// "set /a/b{1}/c x": the path without what the change is.
std::string_view path_of(std::string_view line)
{
    line.remove_prefix(line.find('/'));
    return line;
}

bool is_below(std::string_view line, const std::vector<const char*>& places)
{
    const std::string_view path = path_of(line);
    return std::any_of(places.begin(), places.end(), [path](const char* place) {
        const std::size_t size = std::string_view(place).size();
        return starts_with(path, place) && (path.size() == size || std::strchr("{/ ", path[size]) != nullptr);
    });
}

bool is_of_vrf(const RowText& row)
{
    return number(row.key.front()) >= kFirstVrfIndex;
}

// The join with the BVM, which goes when it is down: looked for under the index that was stored.
bool is_dead_bvm_join(const Upgrade& upgrade, const std::string& path, const Key& key)
{
    if (upgrade.facts().entities == 0 || path != "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry" ||
        key != Key{std::to_string(upgrade.facts().first_index), "3"}) {
        return false;
    }
    const auto joins = by_key(upgrade.stored(path.c_str()));
    const auto join = joins.find(key);
    return join != joins.end() && find(join->second, "bgpRmAfmAdminStatus") == "down";
}

// By table, where the rows that it has before the re-keying are to be after it.
using Places = std::map<std::string, std::map<Key, Key>>;

Places expected_places(uint64_t seed)
{
    Upgrade upgrade(seed);
    upgrade.run_until_rekeying();
    Places expected;
    for (const RekeyedTable& table : bgp_contract::kRekeyedTables) {
        const Table rows = upgrade.upgraded(table.path);
        expected[table.path] =
            upgrade.facts().rekeys() ? places(table.carries, rows, upgrade.facts().first_index) : at_home(rows);
    }
    return expected;
}

TEST(WholeUpgrade, Configurations_TakeEveryRoad)
{
    std::map<std::string, int> met;
    for (uint64_t seed = 0; seed < kSeeds; ++seed) {
        const Upgrade upgrade(seed);
        const Facts& facts = upgrade.facts();
        ++met[std::to_string(facts.entities) + " entities"];
        met["re-keyed"] += facts.rekeys();
        met["re-keyed in place"] += facts.rekeys() && facts.first_index == kGlobalIndex;
        met["map of VRF 0 there"] += facts.entities == 1 && facts.mapped;
        met["VRF 0 there without the map"] += facts.rekeys() && facts.container_0;
        met["no AS"] += facts.entities == 1 && !facts.as;
        met["IPv6 to be enabled"] += facts.entities == 1 && facts.without_ipv6;
    }
    EXPECT_EQ(met.size(), 10U);
    for (const auto& [what, times] : met) {
        EXPECT_GT(times, 4) << what;
    }
}

TEST(WholeUpgrade, EveryStoredRow_IsUnderItsNewKeyOrWhereItWas)
{
    for_each_seed([](uint64_t seed) {
        Places expected = expected_places(seed);
        Upgrade upgrade(seed);
        upgrade.run();
        for (const RekeyedTable& table : bgp_contract::kRekeyedTables) {
            const auto result = by_key(upgrade.upgraded(table.path));
            for (const RowText& row : upgrade.stored(table.path)) {
                EXPECT_EQ(expected[table.path].count(row.key), 1U) << table.path << " " << text(row.key);
            }
            std::size_t gone = 0;
            for (const auto& [from, to] : expected[table.path]) {
                const bool dead = is_dead_bvm_join(upgrade, table.path, to);
                gone += dead;
                EXPECT_EQ(result.count(to), dead ? 0U : 1U) << table.path << " " << text(from) << "-> " << text(to);
            }
            if (upgrade.facts().entities <= 1 && kGrowing.count(table.path) == 0) {
                EXPECT_EQ(result.size() + gone, expected[table.path].size()) << table.path;
            }
        }
    });
}

TEST(WholeUpgrade, LeavesThatNoStepSets_StayAsTheyWere)
{
    for_each_seed([](uint64_t seed) {
        Places expected = expected_places(seed);
        Upgrade upgrade(seed);
        upgrade.run();
        for (const RekeyedTable& table : bgp_contract::kRekeyedTables) {
            auto result = by_key(upgrade.upgraded(table.path));
            for (const RowText& row : upgrade.stored(table.path)) {
                const Key& place = expected[table.path][row.key];
                if (is_dead_bvm_join(upgrade, table.path, place) || is_of_vrf({place, {}})) {
                    continue;
                }
                for (const auto& [leaf, value] : row.leaves) {
                    if (kSetLeaves.count(leaf) == 0) {
                        EXPECT_EQ(find(result[place], leaf), value) << table.path << " " << text(place) << leaf;
                    }
                }
                for (const auto& [leaf, value] : result[place]) {
                    EXPECT_TRUE(kSetLeaves.count(leaf) == 1 || row.leaves.count(leaf) == 1)
                        << table.path << " " << text(place) << leaf << " came, " << value;
                }
            }
        }
    });
}

// The rows that moved, and what the companion leaves say of them.
TEST(WholeUpgrade, CompanionLeavesOfMovedRows_HoldTheNewIndex)
{
    std::size_t seen = 0;
    for_each_seed([&seen](uint64_t seed) {
        Upgrade upgrade(seed);
        upgrade.run();
        if (!upgrade.facts().rekeys()) {
            return;
        }
        const std::string index = std::to_string(kGlobalIndex);
        const auto expect_index = [&](const char* path, const char* leaf) {
            for (const RowText& row : upgrade.upgraded(path)) {
                if (row.key.front() == index) {
                    EXPECT_EQ(find(row.leaves, leaf), index) << path << " " << text(row.key);
                    ++seen;
                }
            }
        };
        expect_index("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", "bgpPeerLocalNm");
        expect_index("/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry", "bgpNmEntRmIndex");
        for (const RowText& row : upgrade.upgraded("/internal/bgpPeerEntry-global")) {
            const auto keys = find(row.leaves, "keys");
            if (row.key.front() == index && keys) {
                EXPECT_TRUE(starts_with(*keys, index + " ")) << *keys;
                ++seen;
            }
        }
    });
    EXPECT_GT(seen, 2000U);
}

TEST(WholeUpgrade, EveryNeighborOfTheEntity_HasTheNewSettings)
{
    std::size_t seen = 0;
    for_each_seed([&seen](uint64_t seed) {
        Upgrade upgrade(seed);
        upgrade.run();
        if (upgrade.facts().entities != 1) {
            return;
        }
        const std::string index = std::to_string(upgrade.facts().rekeys() ? kGlobalIndex : upgrade.facts().first_index);
        for (const RowText& row : upgrade.upgraded("/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry")) {
            if (row.key.front() == index) {
                EXPECT_EQ(find(row.leaves, "bgpPeerConfigDropWarn"), "warn") << text(row.key);
                EXPECT_EQ(find(row.leaves, "bgpPeerConfigMaxPrfx"), std::to_string(kProfile)) << text(row.key);
                ++seen;
            }
        }
    });
    EXPECT_GT(seen, 1000U);
}

// With one unicast family enabled a neighbour has the row of the other one too.
TEST(WholeUpgrade, EveryEnabledUnicastFamily_HasItsPartner)
{
    for_each_seed([](uint64_t seed) {
        Upgrade upgrade(seed);
        upgrade.run();
        if (upgrade.facts().entities == 0) {
            return;
        }
        const auto families = by_key(upgrade.upgraded("/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry"));
        for (const auto& [key, leaves] : families) {
            const bool unicast = key[9] == "unicast" && (key[8] == "ipv4" || key[8] == "ipv6");
            if (unicast && find(leaves, "bgpPeerAfiSafiDisable") == "false") {
                Key partner = key;
                partner[8] = key[8] == "ipv4" ? "ipv6" : "ipv4";
                EXPECT_EQ(families.count(partner), 1U) << text(key);
            }
        }
    });
}

TEST(WholeUpgrade, WithoutEntity_NothingChanges)
{
    for_each_seed([](uint64_t seed) {
        Upgrade upgrade(seed);
        upgrade.run();
        if (upgrade.facts().entities == 0) {
            EXPECT_EQ(listing(upgrade.changes()), "");
        }
    });
}

TEST(WholeUpgrade, Changes_AreWhereStepsWriteAndNowhereElse)
{
    std::vector<const char*> by_entity_steps = {"/router/bgp",
                                                "/prefix-list",
                                                "/prefix-list-internal",
                                                "/bgp-internal",
                                                "/DC-RTM-MIB/rtmEntityTable",
                                                "/internal/router-id-default-hidden"};
    for (const RekeyedTable& table : bgp_contract::kRekeyedTables) {
        by_entity_steps.push_back(table.path);
    }
    const std::vector<const char*> by_closing_steps = {
        "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry",
        "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry", "/DC-RTM-MIB/rtmMjTable/rtmMjEntry"};
    for_each_seed([&](uint64_t seed) {
        Upgrade upgrade(seed);
        upgrade.run();
        for (const std::string& line : upgrade.changes()) {
            EXPECT_TRUE(is_below(line, upgrade.facts().entities == 1 ? by_entity_steps : by_closing_steps)) << line;
        }
    });
}

TEST(WholeUpgrade, Result_IsValidWhereTheStoredConfigurationIs)
{
    for_each_seed([](uint64_t seed) {
        Upgrade upgrade(seed);
        ASSERT_EQ(upgrade.device().validate(Datastore::Stored), "");
        upgrade.run();
        EXPECT_EQ(upgrade.device().validate(Datastore::Transaction), "");
    });
}

TEST(WholeUpgrade, NothingIsLeftOpenAndNoFaultReported)
{
    for_each_seed([](uint64_t seed) {
        Upgrade upgrade(seed);
        upgrade.run();
        EXPECT_TRUE(upgrade.device().open_things().none());
        EXPECT_TRUE(upgrade.device().faults().empty());
    });
}

// What an upgrade of its own result still writes: the setting of address-family rows that the first one made, the VPN
// family of neighbours that came to the entity with the re-keying, the settings of neighbours that could not come, and
// the end of a BVM join that had moved. Everything else guards itself, but where VRF 0 had maps without the entity's AS:
// nothing is entered there, so that each upgrade re-keys again, which sets the index of rules that stayed where they
// were and lets another index's BVM join move up.
TEST(WholeUpgrade, SecondRun_WritesOnlyWhatTheFirstCouldNotSee)
{
    const std::string families = "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{";
    const std::string joins = "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{";
    const std::string bvm = "delete " + joins + "1 3}";
    const std::string rules = "set /redist-protocol{";
    const std::string neighbors = "set /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{";
    std::set<std::string> met;
    for_each_seed([&](uint64_t seed) {
        Upgrade upgrade(seed);
        upgrade.run();
        upgrade.run_again();
        for (const std::string& line : upgrade.changes()) {
            const bool of_families = starts_with(path_of(line), families) && !starts_with(line, "delete");
            const bool of_neighbors = starts_with(line, neighbors) && !starts_with(line, neighbors + "1 ");
            const bool of_rules = upgrade.facts().rekeys_each_time() && starts_with(line, rules) &&
                                  line.find("/protocol-index 1") != std::string::npos;
            const bool of_joins = upgrade.facts().rekeys_each_time() && starts_with(path_of(line), joins) &&
                                  line.find(" 3}") != std::string::npos;
            EXPECT_TRUE(of_families || of_neighbors || line == bvm || of_rules || of_joins) << line;
            met.insert(line.substr(0, line.find('{')));
        }
    });
    EXPECT_THAT(met, testing::IsSupersetOf({"create /DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry",
                                            "set /DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry",
                                            "set /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry", "set /redist-protocol",
                                            "delete /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry"}));
}

// Given back again and again, a result is one that an upgrade leaves as it is. Where each upgrade re-keys, a join of
// another index takes the place of the one that went, and goes in its turn.
TEST(WholeUpgrade, ResultGivenBackAFewTimes_StaysAsItIs)
{
    for_each_seed([](uint64_t seed) {
        Upgrade upgrade(seed);
        upgrade.run();
        const int settling = upgrade.facts().rekeys_each_time() ? 4 : 2;
        for (int i = 0; i < settling; ++i) {
            upgrade.run_again();
        }
        upgrade.run_again();
        EXPECT_EQ(listing(upgrade.changes()), "");
    });
}

}  // namespace
}  // namespace bgp_test
