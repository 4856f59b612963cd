// Rehearsals held against what stands in the files before and after them, by scripts that know nothing of the command.
#include <gtest/gtest.h>

#include "cli/fake_library.h"
#include "generate/configuration.h"

namespace bgp_test {
namespace {

using bgp_generator::healthy::Flaw;
using bgp_generator::healthy::known_flaws;
using bgp_generator::healthy::Request;

constexpr uint64_t kOfEachKind = 100;

std::string adversarial(uint64_t seed)
{
    bgp_generator::Settings settings;
    settings.seed = seed;
    settings.neighbors = static_cast<uint32_t>(seed * 7 % 33);
    settings.vrfs = static_cast<uint32_t>(seed % 4);
    settings.prefix_rules = static_cast<uint32_t>(seed * 11 % 70);
    settings.route_maps = static_cast<uint32_t>(seed * 5 % 24);
    return bgp_generator::configuration_text(settings);
}

// Healthy routers and, in turn, those with one of the flaws that an upgrade comes to its end with.
std::string healthy(uint64_t seed)
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

TEST(CheckedRehearsals, CountsAndJournal_AgreeWithTheFiles)
{
    const ScratchFolder folder;
    for (uint64_t seed = 0; seed < 2 * kOfEachKind; ++seed) {
        const std::string name = "router-" + std::to_string(seed);
        const std::string stored =
            folder.file(name + ".xml", seed % 2 == 0 ? adversarial(seed / 2) : healthy(seed / 2));
        const CommandResult result = rehearse({"run", stored, "-o", folder / (name + ".upgraded.xml"),
                                               "--json=" + (folder / (name + ".json")), "--fail-on", "never"});
        ASSERT_EQ(result.status, 0) << name << ": " << result.err;
    }
    const CommandResult checked = run_command({BGP_SOURCE_DIR "/tests/scripts/check_rehearsals.py", folder.path()});
    EXPECT_EQ(checked.status, 0) << checked.out << checked.err;
    EXPECT_EQ(checked.out, std::to_string(2 * kOfEachKind) + " rehearsals, 0 mistakes\n");
}

}  // namespace
}  // namespace bgp_test
