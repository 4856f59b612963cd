// What docs/rehearse.md says of findings against those that routers give.
#include <gmock/gmock.h>

#include <algorithm>

#include "findings/page.h"
#include "generate/configuration.h"
#include "generate/healthy/flaw.h"
#include "support/judged_upgrade.h"

namespace bgp_test {
namespace {

using bgp_generator::healthy::known_flaws;
using bgp_generator::healthy::KnownFlaw;
using bgp_rehearse::Finding;
using bgp_rehearse::finding_sections;
using bgp_rehearse::FindingSection;
using bgp_rehearse::Severity;
using testing::Contains;

std::vector<Severity> told_severities(const std::string& id)
{
    for (const FindingSection& section : finding_sections(bgp_rehearse::builtin_page())) {
        if (section.id == id) {
            return section.severities;
        }
    }
    return {};
}

void expect_told(const std::string& configuration, bool given, const std::string& what)
{
    JudgedUpgrade upgrade(configuration);
    upgrade.assumptions().user_profile_given = given;
    upgrade.assumptions().interfaces_given = given;
    upgrade.run();
    for (const Finding& finding : upgrade.judged().findings) {
        EXPECT_THAT(told_severities(name_of(finding.id)), Contains(finding.severity))
            << name_of(finding.severity) << " " << name_of(finding.id) << ": " << finding.sentence << " (" << what
            << ")";
    }
}

TEST(FindingPages, Severities_AreThoseOfFlawedRouters)
{
    for (const KnownFlaw& flaw : known_flaws()) {
        const std::string expected = flaw.finding;
        if (expected == "ended" || expected == "refused") {
            continue;  // that would end this process, or does not load
        }
        bgp_generator::healthy::Request request;
        request.flaws = {flaw.flaw};
        request.seed = 7;
        const std::string configuration = bgp_generator::configuration_text(request);
        expect_told(configuration, true, flaw.name);
        expect_told(configuration, false, flaw.name);
    }
}

TEST(FindingPages, Severities_AreThoseOfAdversarialRouters)
{
    for (uint64_t seed = 0; seed < 40; ++seed) {
        bgp_generator::Settings settings;
        settings.neighbors = 12;
        settings.vrfs = 3;
        settings.prefix_rules = 12;
        settings.route_maps = 12;
        settings.seed = seed;
        expect_told(bgp_generator::configuration_text(settings), true, "seed " + std::to_string(seed));
    }
}

}  // namespace
}  // namespace bgp_test
