// The verdict on routers of which it is known what is wrong with them: on a healthy one nothing is above a note, and each
// flaw brings its own finding and no other.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "generate/configuration.h"
#include "support/judged_upgrade.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_generator::healthy {

void PrintTo(const KnownFlaw& flaw, std::ostream* out)
{
    *out << flaw.name;
}

}  // namespace bgp_generator::healthy

namespace bgp_test {
namespace {

using bgp_generator::healthy::Flaw;
using bgp_generator::healthy::known_flaws;
using bgp_generator::healthy::KnownFlaw;
using bgp_generator::healthy::kRoles;
using bgp_generator::healthy::Request;
using bgp_rehearse::Finding;
using bgp_rehearse::Judgement;
using bgp_rehearse::Severity;

constexpr uint64_t kSeedsOfARole = 40;
constexpr uint64_t kSeedsOfAFlaw = 20;

// Every finding above a note, "review row-left".
std::set<std::string> above_note(const Judgement& judgement)
{
    std::set<std::string> told;
    for (const Finding& finding : judgement.findings) {
        if (finding.severity > Severity::Note) {
            told.insert(fmt::format("{} {}", name_of(finding.severity), name_of(finding.id)));
        }
    }
    return told;
}

TEST(HealthyRouters, OfEachRole_HaveNothingAboveANote)
{
    for (const auto& role : kRoles) {
        for (uint64_t seed = 0; seed < kSeedsOfARole; ++seed) {
            Request request;
            request.role = role.role;
            request.seed = seed;
            JudgedUpgrade upgrade(bgp_generator::configuration_text(request));
            upgrade.run();
            const Judgement judgement = upgrade.judged();
            ASSERT_EQ(findings_text(judgement, Severity::Review), "") << role.name << " seed " << seed;
            ASSERT_EQ(judgement.verdict.word(), std::string("SAFE"));
        }
    }
}

class FlawedRouters : public testing::TestWithParam<KnownFlaw> {};

std::string configuration_with(const KnownFlaw& flaw, uint64_t seed)
{
    Request request;
    request.flaws = {flaw.flaw};
    request.seed = seed;
    return bgp_generator::configuration_text(request);
}

// Ends the process or is refused: told by the command alone.
bool is_told_by_the_command(const KnownFlaw& flaw)
{
    return std::string(flaw.finding) == "ended" || std::string(flaw.finding) == "refused";
}

TEST_P(FlawedRouters, HaveItsFindingAndNoOtherAboveANote)
{
    const KnownFlaw& flaw = GetParam();
    for (uint64_t seed = 0; seed < kSeedsOfAFlaw && !is_told_by_the_command(flaw); ++seed) {
        SCOPED_TRACE(fmt::format("{} seed {}", flaw.name, seed));
        const std::string configuration = configuration_with(flaw, seed);
        JudgedUpgrade upgrade(configuration);
        upgrade.assumptions().interfaces_given = std::string(flaw.finding) != "identity-guessed";
        upgrade.run();
        const Judgement judgement = upgrade.judged();
        std::set<std::string> told = above_note(judgement);
        if (flaw.flaw == Flaw::TwoEntities) {
            told.erase("review reference-broken");  // the closing steps write rows for instances that no step has made
        }
        // Lists that no route map matches have no effect.
        const bool unused =
            flaw.flaw == Flaw::CollidingNames && configuration.find("<bgpRouteMapMaPrefixList>") == std::string::npos;
        const bool note = unused || std::string(flaw.severity) == "note";
        ASSERT_EQ(told, note ? std::set<std::string>()
                             : std::set<std::string>{fmt::format("{} {}", flaw.severity, flaw.finding)})
            << findings_text(judgement);
        const auto id = bgp_rehearse::finding_named(flaw.finding);
        ASSERT_TRUE(id);
        ASSERT_FALSE(findings_of(judgement, *id).empty()) << findings_text(judgement);
    }
}

TEST_P(FlawedRouters, ThatCannotBeUpgraded_AreToldSoByTheCommand)
{
    const KnownFlaw& flaw = GetParam();
    if (!is_told_by_the_command(flaw)) {
        return;
    }
    const ScratchFolder folder;
    const CommandResult result = rehearse({"run", folder.file("router.xml", configuration_with(flaw, 3))});
    EXPECT_EQ(result.status, std::string(flaw.finding) == "refused" ? 2 : 1) << result.err;
}

std::string name_of_flaw(const testing::TestParamInfo<KnownFlaw>& info)
{
    std::string name = info.param.name;
    for (std::size_t at; (at = name.find('-')) != std::string::npos;) {
        name.erase(at, 1);
        name[at] = static_cast<char>(name[at] - 'a' + 'A');
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Each, FlawedRouters, testing::ValuesIn(known_flaws()), name_of_flaw);

}  // namespace
}  // namespace bgp_test
