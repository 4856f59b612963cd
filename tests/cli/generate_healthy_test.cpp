// bgp-rehearse generate --kind healthy: routers of every role keep what their tables refer to and upgrade as operators
// expect; and each flaw is the one thing that is wrong.
#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "confd_lib.h"
#include "device.h"
#include "generate/configuration.h"
#include "judge/finding.h"
#include "support/drawn_upgrade.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"
#include "support/table_rows.h"

namespace bgp_test {
namespace {

using bgp_generator::healthy::Flaw;
using bgp_generator::healthy::known;
using bgp_generator::healthy::known_flaws;
using bgp_generator::healthy::KnownFlaw;
using bgp_generator::healthy::KnownRole;
using bgp_generator::healthy::kRoles;
using bgp_generator::healthy::Request;
using bgp_generator::healthy::Role;
using bgp_platform::Datastore;
using bgp_platform::Device;
using bgp_platform::capi::Effect;
using bgp_platform::capi::Failure;
using bgp_platform::capi::Function;
using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::SizeIs;
using testing::UnorderedElementsAreArray;

constexpr uint64_t kSeedsOfRole = 20;
constexpr uint64_t kFewSeeds = 4;

constexpr char kNeighbors[] = "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry";
constexpr char kRouteMaps[] = "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry";
constexpr char kAccessRules[] = "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry";
constexpr char kEntities[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry";
constexpr char kVrfNumbers[] = "/internal/vrf-config/stringTOindex";

std::string drawn(Role role, uint64_t seed)
{
    Request request;
    request.role = role;
    request.seed = seed;
    return bgp_generator::configuration_text(request);
}

std::string flawed(Flaw flaw, uint64_t seed)
{
    Request request;
    request.flaws = {flaw};
    request.seed = seed;
    return bgp_generator::configuration_text(request);
}

template <typename Body>
void for_each_router(Body&& body)
{
    for (const KnownRole& role : kRoles) {
        for (uint64_t seed = 0; seed < kSeedsOfRole; ++seed) {
            SCOPED_TRACE(std::string(role.name) + ", seed " + std::to_string(seed));
            body(role.role, seed);
        }
    }
}

CommandResult check_references(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), BGP_SOURCE_DIR "/tests/scripts/check_references.py");
    return run_command(arguments);
}

// The kinds that `--kinds` tells, a line "NUMBER KIND" for each.
std::set<std::string> kinds_of(const std::string& out)
{
    std::set<std::string> kinds;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        kinds.insert(line.substr(line.find(' ') + 1));
    }
    return kinds;
}

// Each line of the data model's list of references, the agreement of hidden tables, and what of a router's own
// families neighbours use.
const std::vector<std::string> kKinds = {
    "AS and instance",
    "AS of the router",
    "VRF of /DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry",
    "VRF of /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry",
    "VRF of /router/bgp/vrf",
    "bgpNmEntRmIndex",
    "bgpPeerAfiSafiInMapIndex",
    "bgpPeerAfiSafiOutMapIndex",
    "bgpPeerEntry-prefix-list-hidden",
    "bgpPeerLocalNm",
    "bgpRmAfmPartnerIndex",
    "bgpRouteMapMaPrefixList",
    "entity of /DC-BGP-MIB/bgpConfigTable/bgpConfigEntry",
    "entity of /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry",
    "entity of /DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry",
    "entity of /DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry",
    "entity of /DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry",
    "family in use",
    "hidden bgpConfigEntry",
    "hidden bgpConfigEntry-get",
    "hidden bgpConfigEntry-set",
    "hidden bgpRouteMapEntry",
    "hidden bgpRouteMapEntry-get",
    "hidden bgpRouteMapEntry-set",
    "hidden keys of a neighbour",
    "hidden name of an access list",
    "hidden rtmRedistEntry-get",
    "hidden rtmRedistEntry-set",
    "listen row",
    "name and number of a VRF",
    "name and number of a prefix list",
    "neighbor-afi-safi-hidden",
    "neighbor-valid-hidden",
    "neighbour of /DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry",
    "neighbour of /DC-BGP-MIB/bgpPeerStatusTable/bgpPeerStatusEntry",
    "next number of /internal/aallPreAccessListEntry-hidden/",
    "next number of /internal/rtmRedistEntry-hidden/",
    "next number of /internal/vrf-config/route-map/vrf",
    "next number of /prefix-list-internal/",
    "prefix list and its name",
    "redist-protocol",
    "rtmMjRtmFteIndex",
    "rtmMjSlaveFteId ariPrtnrBgp",
    "rtmMjSlaveFteId ariPrtnrRtm",
    "rtmRedistFteIndex",
};

// A write that fails on every healthy router: what it would have made is there already, or there is nothing to set.
bool is_expected(const Failure& failure)
{
    struct Site {
        Function function;
        int error;
        const char* path;
    };
    constexpr Site kSites[] = {
        {Function::maapi_set_elem, CONFD_ERR_NOEXISTS, "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{"},
        {Function::maapi_create, CONFD_ERR_ALREADY_EXISTS, "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{"},
        {Function::maapi_create, CONFD_ERR_ALREADY_EXISTS, "/DC-RTM-MIB/rtmMjTable/rtmMjEntry{"},
    };
    for (const Site& site : kSites) {
        if (failure.function == site.function && failure.error == site.error && failure.path.find(site.path) == 0) {
            return true;
        }
    }
    return false;
}

// The writes of an upgrade that fail, but for those.
std::vector<std::string> unexpected_failures(Upgrade* upgrade)
{
    std::vector<std::string> failures;
    upgrade->device().recorder().after_failure = [&failures](const Failure& failure) {
        if (bgp_platform::capi::effect_of(failure.function) == Effect::Write && !is_expected(failure)) {
            failures.emplace_back(failure.message);
        }
    };
    upgrade->run();
    upgrade->device().recorder().after_failure = nullptr;
    return failures;
}

class GenerateHealthy : public testing::Test {
protected:
    std::string file_of(const std::string& name, const std::string& text) const { return folder.file(name, text); }

    // Routers with the flaw, of the seeds from 0.
    std::vector<std::string> files_of(Flaw flaw, uint64_t seeds) const
    {
        std::vector<std::string> files;
        for (uint64_t seed = 0; seed < seeds; ++seed) {
            files.push_back(
                file_of(known(flaw).name + std::string("-") + std::to_string(seed) + ".xml", flawed(flaw, seed)));
        }
        return files;
    }

    ScratchFolder folder;
};

TEST_F(GenerateHealthy, SameRequest_GivesTheSameBytes)
{
    const std::vector<std::string> arguments = {"generate", "--kind", "healthy", "--flaw", "host-bits", "--seed", "4"};
    const CommandResult once = rehearse(arguments);
    EXPECT_EQ(once.status, 0) << once.err;
    EXPECT_EQ(once.out, rehearse(arguments).out);
    EXPECT_EQ(once.out, flawed(Flaw::HostBits, 4));
    EXPECT_NE(once.out, flawed(Flaw::HostBits, 5));
}

TEST_F(GenerateHealthy, RoleThatIsNotGiven_IsDrawn)
{
    std::set<std::string> texts;
    std::set<std::string> of_roles;
    for (uint64_t seed = 0; seed < kSeedsOfRole; ++seed) {
        Request request;
        request.seed = seed;
        texts.insert(bgp_generator::configuration_text(request));
        of_roles.insert(std::to_string(static_cast<int>(bgp_generator::healthy::draw_router(request).role)));
    }
    EXPECT_EQ(texts.size(), kSeedsOfRole);
    EXPECT_EQ(of_roles.size(), std::size(kRoles));
}

TEST_F(GenerateHealthy, EveryRole_KeepsEveryReferenceAndHasEachKind)
{
    std::vector<std::string> arguments = {"--kinds"};
    for_each_router([&](Role role, uint64_t seed) {
        arguments.push_back(file_of(std::string(known(role).name) + std::to_string(seed) + ".xml", drawn(role, seed)));
    });
    const CommandResult result = check_references(arguments);
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_THAT(kinds_of(result.out), UnorderedElementsAreArray(kKinds));
}

TEST_F(GenerateHealthy, EveryRole_IsValidAndUpgradesWithoutAWriteThatMustNotFail)
{
    for_each_router([](Role role, uint64_t seed) {
        Upgrade upgrade(drawn(role, seed));
        EXPECT_EQ(upgrade.device().validate(Datastore::Stored), "");
        EXPECT_THAT(unexpected_failures(&upgrade), testing::IsEmpty());
        EXPECT_EQ(upgrade.device().validate(Datastore::Transaction), "");
    });
}

TEST_F(GenerateHealthy, UpgradedRouter_GetsNothingButAnotherLimit)
{
    for (uint64_t seed = 0; seed < kSeedsOfRole; ++seed) {
        Upgrade upgrade(drawn(Role::Upgraded, seed));
        upgrade.run();
        EXPECT_THAT(upgrade.changes(), AllOf(SizeIs(testing::Ge(4U)), Each(HasSubstr("/bgpPeerConfigMaxPrfx "))));
    }
}

TEST_F(GenerateHealthy, Sizes_AreAsAsked)
{
    for (const KnownRole& role : kRoles) {
        Request request;
        request.role = role.role;
        request.neighbors = 300;
        request.vrfs = 20;
        request.prefix_rules = 41;
        request.route_maps = 17;
        const Upgrade upgrade(bgp_generator::configuration_text(request));
        EXPECT_EQ(upgrade.stored(kNeighbors).size(), 300U) << role.name;
        EXPECT_EQ(upgrade.stored(kVrfNumbers).size(), 21U) << role.name;  // and the global one
        EXPECT_EQ(upgrade.stored(kAccessRules).size(), 41U) << role.name;
        EXPECT_EQ(upgrade.stored(kRouteMaps).size(), 17U) << role.name;
        EXPECT_EQ(upgrade.stored(kEntities).size(), 1U) << role.name;
    }
}

TEST_F(GenerateHealthy, RouterWithoutRows_IsDrawn)
{
    for (const KnownRole& role : kRoles) {
        Request request;
        request.role = role.role;
        request.neighbors = request.vrfs = request.prefix_rules = request.route_maps = 0;
        Upgrade upgrade(bgp_generator::configuration_text(request));
        EXPECT_EQ(upgrade.stored(kNeighbors).size(), 0U) << role.name;
        EXPECT_THAT(unexpected_failures(&upgrade), testing::IsEmpty()) << role.name;
    }
}

TEST_F(GenerateHealthy, SinkThatTakesNoMore_EndsTheDrawing)
{
    Request request;
    request.neighbors = bgp_generator::healthy::kMostNeighbors;
    std::size_t pieces = 0;
    EXPECT_FALSE(bgp_generator::write_configuration(request, [&pieces](std::string_view) { return ++pieces < 3; }));
    EXPECT_EQ(pieces, 3U);
}

// A finding's id and severity in the table are among those that a rehearsal has.
TEST_F(GenerateHealthy, TableOfFlaws_IsInTheirOrderAndNamesFindings)
{
    for (std::size_t i = 0; i < known_flaws().size(); ++i) {
        const KnownFlaw& flaw = known_flaws()[i];
        EXPECT_EQ(flaw.flaw, static_cast<Flaw>(i)) << flaw.name;
        EXPECT_EQ(bgp_generator::healthy::flaw_named(flaw.name), static_cast<Flaw>(i));
        EXPECT_TRUE(flaw.finding == std::string("refused") || bgp_rehearse::finding_named(flaw.finding)) << flaw.name;
        EXPECT_TRUE(bgp_rehearse::severity_named(flaw.severity)) << flaw.name;
    }
}

TEST_F(GenerateHealthy, EachFlaw_IsDrawnInEachOfItsRolesAndIsValid)
{
    for (const KnownFlaw& flaw : known_flaws()) {
        for (const KnownRole& role : kRoles) {
            SCOPED_TRACE(std::string(flaw.name) + " of " + role.name);
            Request request;
            request.role = role.role;
            request.flaws = {flaw.flaw};
            if (!flaw.roles.has(role.role)) {
                EXPECT_THROW(bgp_generator::configuration_text(request), std::invalid_argument);
                continue;
            }
            const std::string text = bgp_generator::configuration_text(request);
            EXPECT_NE(text, drawn(role.role, 0));
            Device device;
            if (flaw.finding == std::string("refused")) {
                EXPECT_ANY_THROW(device.load_text(text));
            } else {
                device.load_text(text);
                EXPECT_EQ(device.validate(Datastore::Stored), "");
            }
        }
    }
}

// What a flaw does to the upgrade's writes, beyond what healthy routers have.
TEST_F(GenerateHealthy, FlawThatTakesAPlace_FailsTheMovesThere)
{
    const std::pair<Flaw, std::vector<std::string>> kTaken[] = {
        {Flaw::PlaceTaken, {"bgpRouteMapEntry"}},
        {Flaw::PlaceTakenUnused, {"bgpRouteMapEntry"}},
        {Flaw::TakenRedistribution, {"/redist-protocol", "rtmRedistEntry"}},
    };
    for (const auto& [flaw, tables] : kTaken) {
        for (uint64_t seed = 0; seed < kSeedsOfRole; ++seed) {
            SCOPED_TRACE(std::string(known(flaw).name) + ", seed " + std::to_string(seed));
            Upgrade upgrade(flawed(flaw, seed));
            const std::vector<std::string> failures = unexpected_failures(&upgrade);
            ASSERT_EQ(failures.size(), tables.size());
            for (std::size_t i = 0; i < tables.size(); ++i) {
                EXPECT_THAT(failures[i], HasSubstr("maapi_move: item already exists"));
                EXPECT_THAT(failures[i], HasSubstr(tables[i]));
            }
        }
    }
}

TEST_F(GenerateHealthy, CollidingNames_LoseRulesOfTheSecondList)
{
    for (uint64_t seed = 0; seed < kSeedsOfRole; ++seed) {
        Upgrade upgrade(flawed(Flaw::CollidingNames, seed));
        const std::vector<std::string> failures = unexpected_failures(&upgrade);
        EXPECT_THAT(failures, Each(HasSubstr("maapi_create: item already exists: /prefix-list/{BOGONS}/seq{")));
        EXPECT_FALSE(failures.empty());
    }
}

// What an independent reader finds of a flaw: the one reference that it breaks, in a router that keeps all others.
TEST_F(GenerateHealthy, FlawThatBreaksAReference_BreaksThatAlone)
{
    const std::pair<Flaw, const char*> kBroken[] = {
        {Flaw::OtherEntityRows, "entity of /DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry"},
        {Flaw::PlaceTaken, "entity of /DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry"},
        {Flaw::BrokenReference, "bgpPeerAfiSafiInMapIndex"},
        {Flaw::UnnamedList, "hidden name of an access list"},
        {Flaw::UnnumberedVrf, "VRF of /router/bgp/vrf"},
        {Flaw::MissingNextIndex, "next number of /internal/aallPreAccessListEntry-hidden/"},
    };
    for (const auto& [flaw, kind] : kBroken) {
        SCOPED_TRACE(known(flaw).name);
        const std::vector<std::string> files = files_of(flaw, kFewSeeds);
        const CommandResult result = check_references(files);
        EXPECT_EQ(result.status, 1);
        for (const std::string& file : files) {
            EXPECT_THAT(result.out, HasSubstr(file + ": broken: "));
        }
        std::istringstream lines(result.out);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_THAT(line, HasSubstr("broken: " + std::string(kind) + ":"));
        }
    }
}

TEST_F(GenerateHealthy, AnnouncedNetworks_LeaveTheirHiddenRowsBehind)
{
    const std::vector<std::string> stored = files_of(Flaw::AnnouncedNetworks, kFewSeeds);
    EXPECT_EQ(check_references(stored).status, 0);
    std::vector<std::string> upgraded;
    for (const std::string& file : stored) {
        upgraded.push_back(file + ".upgraded");
        ASSERT_EQ(rehearse({"run", file, "-o", upgraded.back(), "--fail-on", "never"}).status, 0);
    }
    const CommandResult result = check_references(upgraded);
    EXPECT_EQ(result.status, 1);
    for (const std::string& file : upgraded) {
        EXPECT_THAT(result.out, HasSubstr(file + ": broken: hidden rtmRedistEntry-get:"));
    }
}

TEST_F(GenerateHealthy, FlawThatEndsTheUpgrade_EndsIt)
{
    for (const Flaw flaw : {Flaw::VrfWithoutStatus, Flaw::LongName}) {
        const std::string file = file_of("ends.xml", flawed(flaw, 3));
        EXPECT_EQ(rehearse({"run", file}).status, 1) << known(flaw).name;
    }
}

TEST_F(GenerateHealthy, FlawThatHasNoPlace_IsRefused)
{
    const auto expect_refused = [](std::vector<std::string> arguments, const std::string& text) {
        arguments.insert(arguments.begin(), {"generate", "--kind", "healthy"});
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr(text));
    };
    expect_refused({"--role", "leaf", "--flaw", "unnumbered-vrf"},
                   "--flaw unnumbered-vrf is not one of leaf: give --role provider-edge");
    expect_refused({"--flaw", "unnumbered-vrf", "--flaw", "missing-local-as"}, "no role can have all of these flaws");
    expect_refused({"--flaw", "unnumbered-vrf", "--vrfs", "0"}, "needs --vrfs of 1 or more");
    expect_refused({"--flaw", "place-takn"}, "did you mean place-taken?");
    expect_refused({"--role", "edgy"}, "did you mean edge?");
    expect_refused({"--neighbors", "16000001"}, "--neighbors: a healthy router has at most 16000000");
    expect_refused({"--entities", "2"}, "--flaw two-entities");
}

TEST_F(GenerateHealthy, OptionsOfHealthyRouters_AreRefusedForOthers)
{
    for (const char* option : {"--role", "--flaw"}) {
        const CommandResult result =
            rehearse({"generate", option, option == std::string("--role") ? "edge" : "host-bits"});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.err, HasSubstr(std::string(option) + " requires --kind healthy"));
    }
}

TEST_F(GenerateHealthy, Help_NamesEveryRoleAndFlaw)
{
    const std::string help = rehearse({"generate", "--help"}).out;
    for (const KnownRole& role : kRoles) {
        EXPECT_THAT(help, HasSubstr("  " + std::string(role.name) + " "));
    }
    for (const KnownFlaw& flaw : known_flaws()) {
        EXPECT_THAT(help, HasSubstr("  " + std::string(flaw.name) + " "));
        EXPECT_THAT(help, HasSubstr(flaw.adds));
    }
}

}  // namespace
}  // namespace bgp_test
