// Rehearsals held against what stands in the files before and after them, by scripts that know nothing of the command.
#include <gtest/gtest.h>

#include "cli/fake_library.h"
#include "generate/configuration.h"
#include "support/drawn_configuration.h"

namespace bgp_test {
namespace {

using bgp_generator::healthy::Flaw;
using bgp_generator::healthy::known_flaws;
using bgp_generator::healthy::Request;

constexpr uint64_t kOfEachKind = 100;

// Healthy routers and, in turn, those with one of the flaws that an upgrade comes to its end with.
std::string healthy_or_flawed(uint64_t seed)
{
    Request request;
    request.seed = seed;
    const auto& flaw = known_flaws()[seed % known_flaws().size()];
    const std::string finding = flaw.finding;
    if (seed % 3 != 0 && finding != "ended" && finding != "refused") {
        request.flaws = {flaw.flaw};
    }
    return bgp_generator::configuration_text(request);
}

// Rehearses them all, and has what came of it checked by one run of the script.
void expect_checked(std::string (*configuration)(uint64_t seed))
{
    const ScratchFolder folder;
    for (uint64_t seed = 0; seed < kOfEachKind; ++seed) {
        const std::string name = "router-" + std::to_string(seed);
        const std::string stored = folder.file(name + ".xml", configuration(seed));
        const CommandResult result = rehearse({"run", stored, "-o", folder / (name + ".upgraded.xml"),
                                               "--json=" + (folder / (name + ".json")), "--fail-on", "never"});
        ASSERT_EQ(result.status, 0) << name << ": " << result.err;
    }
    const CommandResult checked = run_command({BGP_SOURCE_DIR "/tests/scripts/check_rehearsals.py", folder.path()});
    EXPECT_EQ(checked.status, 0) << checked.out << checked.err;
    EXPECT_EQ(checked.out, std::to_string(kOfEachKind) + " rehearsals, 0 mistakes\n");
}

TEST(CheckedRehearsals, OfOddRouters_AgreeWithTheFiles)
{
    expect_checked([](uint64_t seed) { return adversarial(seed); });
}

TEST(CheckedRehearsals, OfHealthyAndFlawedRouters_AgreeWithTheFiles)
{
    expect_checked(healthy_or_flawed);
}

}  // namespace
}  // namespace bgp_test
