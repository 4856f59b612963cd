#include "sweep/messages.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace bgp_rehearse {

namespace {

using Json = nlohmann::json;

std::string text_of(const Json& message)
{
    return message.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string message_of(const RunVerdict& verdict)
{
    Json found = Json::array();
    for (const auto& [call, site] : verdict.found) {
        found.push_back({call, site.step, site.function, site.path});
    }
    return text_of({{"outcome", verdict.outcome},
                    {"failed", verdict.failed},
                    {"breaks", verdict.breaks},
                    {"found", std::move(found)}});
}

RunVerdict verdict_of(const std::string& message)
{
    const Json json = Json::parse(message);
    RunVerdict verdict{json.at("outcome").get<Outcome>(),
                       json.at("failed").get<std::vector<std::size_t>>(),
                       json.at("breaks").get<std::vector<std::string>>(),
                       {}};
    for (const Json& found : json.at("found")) {
        verdict.found.emplace_back(found.at(0).get<std::size_t>(),
                                   Site{found.at(1).get<std::string>(), found.at(2).get<bgp_platform::capi::Function>(),
                                        found.at(3).get<std::string>()});
    }
    return verdict;
}

std::string message_of(const Tally& tally)
{
    Json sites = Json::array();
    for (const SiteTally& site : tally.sites) {
        sites.push_back({site.reached, site.runs, site.outcomes, site.breaks});
    }
    return text_of({{"sites", std::move(sites)},
                    {"runs", tally.runs},
                    {"outcomes", tally.outcomes},
                    {"breaks", tally.breaks},
                    {"kept_breaks", tally.kept_breaks}});
}

Tally tally_of(const std::string& message)
{
    const Json json = Json::parse(message);
    Tally tally;
    for (std::size_t place = 0; place < tally.sites.size(); ++place) {
        const Json& site = json.at("sites").at(place);
        tally.sites[place] = {site.at(0).get<bool>(), site.at(1).get<std::size_t>(),
                              site.at(2).get<std::array<std::size_t, kOutcomes>>(), site.at(3).get<std::size_t>()};
    }
    tally.runs = json.at("runs").get<std::array<std::size_t, kRunKinds>>();
    tally.outcomes = json.at("outcomes").get<std::array<std::size_t, kOutcomes>>();
    tally.breaks = json.at("breaks").get<std::size_t>();
    tally.kept_breaks = json.at("kept_breaks").get<std::vector<std::pair<std::string, std::string>>>();
    return tally;
}

}  // namespace bgp_rehearse
