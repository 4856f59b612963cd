#include "sweep/report.h"

#include <fmt/format.h>

#include <iterator>
#include <nlohmann/json.hpp>

#include "base/line_writer.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

using Json = nlohmann::json;

constexpr const char* kKinds[] = {"one failed call", "every call failed from one on", "two failed calls",
                                  "one refused allocation"};
static_assert(std::size(kKinds) == kRunKinds);
constexpr const char* kOutcomeNames[] = {"returned", "fault", "assertion", "died"};
static_assert(std::size(kOutcomeNames) == kOutcomes);

// What is demanded of a site, in a word.
const char* word_for(Must must)
{
    switch (must) {
        case Must::GoOn:
            return "goes on";
        case Must::Log:
            return "logs";
        case Must::Fault:
            return "fault";
        case Must::Assert:
            break;
    }
    return "assertion";
}

class TextReport : LineWriter {
public:
    TextReport(const Tally& tally, bool colour) : tally_(tally), colour_(colour) {}

    std::string write(std::size_t configurations)
    {
        line("Fault sweep of {} configuration{}", configurations, configurations == 1 ? "" : "s");
        totals();
        table();
        not_reached();
        breaks();
        return std::move(out_);
    }

private:
    std::string red(const std::string& text) const { return colour_ ? "\033[31m" + text + "\033[0m" : text; }

    void totals()
    {
        for (std::size_t kind = 0; kind < kRunKinds; ++kind) {
            line("  {:>8} runs with {}", tally_.runs[kind], kKinds[kind]);
        }
        for (std::size_t outcome = 0; outcome < kOutcomes; ++outcome) {
            line("  {:>8} {}", tally_.outcomes[outcome], kOutcomeNames[outcome]);
        }
        line("  {:>8} of {} call sites reached", tally_.sites_reached(), tally_.sites.size());
        const std::string breaks = fmt::format("{:>8} contract breaks", tally_.breaks);
        line("  {}", tally_.breaks > 0 ? red(breaks) : breaks);
    }

    void table()
    {
        std::string step;
        line("Call sites: what a failure must bring, runs, and how they ended");
        line("  {:<10}{:>8}{:>10}{:>8}{:>11}{:>6}{:>8}", "must", "runs", "returned", "fault", "assertion", "died",
             "breaks");
        for (std::size_t place = 0; place < contract().size(); ++place) {
            const SiteRule& rule = contract()[place];
            const SiteTally& site = tally_.sites[place];
            if (rule.site.step != step) {
                step = rule.site.step;
                line("  {}", step);
            }
            line("  {:<10}{:>8}{:>10}{:>8}{:>11}{:>6}{:>8}  {} {}", word_for(rule.demand.must), site.runs,
                 site.outcomes[0], site.outcomes[1], site.outcomes[2], site.outcomes[3], site.breaks,
                 bgp_platform::capi::name_of(rule.site.function), rule.site.path);
        }
    }

    void not_reached()
    {
        for (std::size_t place = 0; place < contract().size(); ++place) {
            if (!tally_.sites[place].reached) {
                line("Not reached: {}", contract()[place].site.name());
            }
        }
    }

    void breaks()
    {
        for (const auto& [text, run] : tally_.kept_breaks) {
            line("{} {}\n  first in {}", red("Broken:"), escaped(text), escaped(run));
        }
    }

    const Tally& tally_;
    bool colour_;
};

Json named(const std::array<std::size_t, kOutcomes>& outcomes)
{
    Json json = Json::object();
    for (std::size_t outcome = 0; outcome < kOutcomes; ++outcome) {
        json[kOutcomeNames[outcome]] = outcomes[outcome];
    }
    return json;
}

Json site_json(const SiteRule& rule, const SiteTally& site)
{
    return {{"step", rule.site.step},           {"function", bgp_platform::capi::name_of(rule.site.function)},
            {"path", rule.site.path},           {"must", word_for(rule.demand.must)},
            {"reached", site.reached},          {"runs", site.runs},
            {"outcomes", named(site.outcomes)}, {"breaks", site.breaks}};
}

}  // namespace

std::string text_sweep_report(const std::vector<std::string>& configurations, const Tally& tally, bool colour)
{
    return TextReport(tally, colour).write(configurations.size());
}

std::string json_sweep_report(const std::vector<std::string>& configurations, const Tally& tally)
{
    Json sites = Json::array();
    for (std::size_t place = 0; place < contract().size(); ++place) {
        sites.push_back(site_json(contract()[place], tally.sites[place]));
    }
    Json runs = Json::object();
    for (std::size_t kind = 0; kind < kRunKinds; ++kind) {
        runs[kKinds[kind]] = tally.runs[kind];
    }
    const Json report = {{"configurations", configurations},  {"runs", runs},
                         {"outcomes", named(tally.outcomes)}, {"sites_reached", tally.sites_reached()},
                         {"sites", std::move(sites)},         {"breaks", tally.breaks},
                         {"kept_breaks", tally.kept_breaks}};
    return report.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

}  // namespace bgp_rehearse
