// What a fleet's database says of routers of which it is known what is wrong with them: each flaw is a reason of its own
// with exactly the routers that have it, and of the others nothing is above a note. BGP_FLEET_ROUTERS draws another number.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "fleet/merge/schema.h"
#include "generate/configuration.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

using bgp_generator::healthy::Flaw;
using bgp_generator::healthy::known_flaws;
using bgp_generator::healthy::KnownFlaw;
using bgp_generator::healthy::kRoles;
using bgp_generator::healthy::Request;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::size_t kRouters = 600;
constexpr std::size_t kFlawedOfAll = 30;  // each so-many-th, so that of 10,000 about 300 are
constexpr std::size_t kCut = 30;
constexpr char kRefused[] = "refused";
constexpr char kCutFlaw[] = "cut";

std::size_t routers_to_draw()
{
    const char* const asked = std::getenv("BGP_FLEET_ROUTERS");
    return asked == nullptr ? kRouters : std::stoul(asked);
}

// What is wrong with a router, by its device's name.
using Flaws = std::map<std::string, std::string>;

class DrawnFleet {
public:
    DrawnFleet() : facts_("device,interfaces,profile\n")
    {
        std::filesystem::create_directory(folder_ / "in");
        const std::size_t routers = routers_to_draw();
        const std::size_t flaws = known_flaws().size();
        for (std::size_t i = 0; i < routers; ++i) {
            const KnownFlaw* const flaw = i % kFlawedOfAll == 0 ? &known_flaws()[i / kFlawedOfAll % flaws] : nullptr;
            draw(i, flaw);
        }
        folder_.file("facts.csv", facts_);
    }

    std::string database() const
    {
        const CommandResult result =
            rehearse({"fleet", "run", folder_ / "in", "-o", folder_ / "fleet.db", "--facts", folder_ / "facts.csv"});
        EXPECT_EQ(result.status, 0) << result.err;
        return folder_ / "fleet.db";
    }

    const Flaws& flaws() const { return flaws_; }

private:
    void draw(std::size_t number, const KnownFlaw* flaw)
    {
        const std::string name = fmt::format("r{}", number);
        Request request;
        request.seed = number;
        if (flaw == nullptr) {
            request.role = kRoles[number % std::size(kRoles)].role;
        } else {
            request.flaws = {flaw->flaw};
        }
        std::string text = bgp_generator::configuration_text(request);
        if (flaw != nullptr && is_above_note(*flaw, text)) {
            flaws_[name] = flaw->name;
        } else if (flaw == nullptr && cut_ < kCut && number % 7 == 1) {
            ++cut_;
            flaws_[name] = kCutFlaw;
            text.resize(text.size() * (number % 89 + 1) / 100);
        }
        const bool guessed = flaw != nullptr && flaw->finding == std::string("identity-guessed");
        facts_ += fmt::format("{},{},0\n", name, guessed ? "" : "127.0.0.1");
        folder_.file("in/" + name + ".xml", text);
    }

    // Lists of one name that no route map matches have no effect.
    static bool is_above_note(const KnownFlaw& flaw, const std::string& text)
    {
        return flaw.severity != std::string("note") &&
               (flaw.flaw != Flaw::CollidingNames || text.find("<bgpRouteMapMaPrefixList>") != std::string::npos);
    }

    ScratchFolder folder_;
    Flaws flaws_;
    std::string facts_;
    std::size_t cut_ = 0;
};

// The reasons above a note, by their finding, and the devices that have them.
struct Reasons {
    std::map<std::pair<std::string, std::string>, std::set<std::string>> devices;

    explicit Reasons(const std::string& file)
    {
        const bgp_rehearse::Database database = bgp_rehearse::open_fleet(file);
        bgp_rehearse::Statement rows(database,
                                     "SELECT reason.finding, reason.text, router.name FROM finding "
                                     "JOIN reason ON reason.id = finding.reason "
                                     "JOIN router ON router.number = finding.router WHERE severity <> 'note'");
        while (rows.next()) {
            const std::filesystem::path name = rows.text(2);
            devices[{std::string(rows.text(0)), std::string(rows.text(1))}].insert(name.stem());
        }
    }
};

TEST(FleetOutcomes, OfADrawnFleet_AreItsFlaws)
{
    const DrawnFleet fleet;
    const Reasons reasons(fleet.database());
    std::set<std::string> told;
    std::map<std::string, std::set<std::string>> findings;  // of each flaw
    for (const auto& [reason, devices] : reasons.devices) {
        std::set<std::string> flaws;
        for (const std::string& device : devices) {
            const auto flaw = fleet.flaws().find(device);
            ASSERT_NE(flaw, fleet.flaws().end()) << device << " is healthy: " << reason.first << ": " << reason.second;
            flaws.insert(flaw->second);
            findings[flaw->second].insert(reason.first);
        }
        EXPECT_THAT(flaws, SizeIs(1)) << reason.first << ": " << reason.second;
        told.insert(devices.begin(), devices.end());
    }
    std::set<std::string> silent;
    for (const auto& [device, flaw] : fleet.flaws()) {
        if (told.count(device) == 0) {
            silent.insert(device + ": " + flaw);
        }
    }
    EXPECT_THAT(silent, IsEmpty());
    for (const KnownFlaw& flaw : known_flaws()) {
        if (findings.count(flaw.name) != 0) {
            EXPECT_EQ(findings[flaw.name].count(flaw.finding), 1U) << flaw.name;
        }
    }
    EXPECT_EQ(findings[kCutFlaw], std::set<std::string>{kRefused});
}

}  // namespace
}  // namespace bgp_test
