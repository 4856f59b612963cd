// The reasons of findings: what many routers have in common is told of each in the same words.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <iostream>
#include <regex>
#include <set>
#include <string>

#include "generate/configuration.h"
#include "support/judged_upgrade.h"

namespace bgp_test {
namespace {

using bgp_generator::healthy::known_flaws;
using bgp_generator::healthy::kRoles;
using bgp_rehearse::Finding;

constexpr uint64_t kSeeds = 15;
constexpr std::size_t kMostReasons = 150;  // adversarial routers have most of what rules can find

void add_reasons(const std::string& configuration, std::set<std::string>* reasons)
{
    JudgedUpgrade upgrade(configuration);
    upgrade.run();
    for (const Finding& finding : upgrade.judged().findings) {
        EXPECT_NE(finding.reason, "") << finding.sentence;
        reasons->insert(finding.reason);
    }
}

// Those of many routers, each with other rows, addresses and values.
std::set<std::string> drawn_reasons()
{
    std::set<std::string> reasons;
    for (uint64_t seed = 0; seed < kSeeds; ++seed) {
        bgp_generator::healthy::Request request;
        request.seed = seed;
        for (const auto& role : kRoles) {
            request.role = role.role;
            add_reasons(bgp_generator::configuration_text(request), &reasons);
        }
        request.role.reset();
        for (const auto& flaw : known_flaws()) {
            request.flaws = {flaw.flaw};
            if (flaw.finding != std::string("refused") && flaw.finding != std::string("ended")) {
                add_reasons(bgp_generator::configuration_text(request), &reasons);
            }
        }
        bgp_generator::Settings odd;
        odd.seed = seed;
        odd.neighbors = 30;
        odd.vrfs = 5;
        add_reasons(bgp_generator::configuration_text(odd), &reasons);
    }
    return reasons;
}

TEST(Reasons, OfManyDrawnRouters_AreFewAndTellNoNumberOrAddress)
{
    const std::set<std::string> reasons = drawn_reasons();
    std::cout << reasons.size() << " reasons\n";
    EXPECT_LE(reasons.size(), kMostReasons) << fmt::format("{}", fmt::join(reasons, "\n"));
    EXPECT_GT(reasons.size(), 10U);
    // The contract's own words name the address that stands for none.
    const std::regex none("0\\.0\\.0\\.0");
    const std::regex number_or_address("(^|[^A-Za-z0-9])[0-9]|[0-9a-f]:[0-9a-f]|[{}]");
    for (const std::string& reason : reasons) {
        EXPECT_FALSE(std::regex_search(std::regex_replace(reason, none, "none"), number_or_address)) << reason;
    }
}

}  // namespace
}  // namespace bgp_test
