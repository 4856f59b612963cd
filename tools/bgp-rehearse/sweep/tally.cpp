#include "sweep/tally.h"

#include <algorithm>
#include <utility>

namespace bgp_rehearse {

namespace {

template <std::size_t n>
void add_each(const std::array<std::size_t, n>& more, std::array<std::size_t, n>* sums)
{
    for (std::size_t i = 0; i < n; ++i) {
        (*sums)[i] += more[i];
    }
}

}  // namespace

void Tally::keep_break(const std::string& text, const std::string& run)
{
    const bool known =
        std::any_of(kept_breaks.begin(), kept_breaks.end(), [&](const auto& kept) { return kept.first == text; });
    if (!known && kept_breaks.size() < kKeptBreaks) {
        kept_breaks.emplace_back(text, run);
    }
}

void Tally::add_break(const std::string& text, const std::string& run)
{
    ++breaks;
    keep_break(text, run);
}

void Tally::take_baseline(const Baseline& baseline, const std::string& run)
{
    for (const Site& site : baseline.sites) {
        const std::size_t place = place_of(site);
        if (place < sites.size()) {
            sites[place].reached = true;
        } else {
            add_break(site.name() + ": a call site that the contract does not know", run);
        }
    }
}

void Tally::take(const SweepPlan& plan, const RunVerdict& verdict, const std::string& run)
{
    const auto outcome = static_cast<std::size_t>(verdict.outcome);
    ++runs[static_cast<std::size_t>(kind_of(plan))];
    ++outcomes[outcome];
    for (const std::size_t place : verdict.failed) {
        sites[place].reached = true;
    }
    for (const auto& [call, site] : verdict.found) {
        if (const std::size_t place = place_of(site); place < sites.size()) {
            sites[place].reached = true;
        }
    }
    const std::size_t place = plan.calls.empty() ? sites.size() : place_of(plan.calls.back().site);
    if (place < sites.size()) {
        ++sites[place].runs;
        ++sites[place].outcomes[outcome];
        sites[place].breaks += verdict.breaks.size();
    }
    for (const std::string& text : verdict.breaks) {
        add_break(text, run);
    }
}

void Tally::add(const Tally& other)
{
    for (std::size_t place = 0; place < sites.size(); ++place) {
        sites[place].reached = sites[place].reached || other.sites[place].reached;
        sites[place].runs += other.sites[place].runs;
        sites[place].breaks += other.sites[place].breaks;
        add_each(other.sites[place].outcomes, &sites[place].outcomes);
    }
    add_each(other.runs, &runs);
    add_each(other.outcomes, &outcomes);
    for (const auto& [text, run] : other.kept_breaks) {
        keep_break(text, run);
    }
    breaks += other.breaks;
}

std::size_t Tally::sites_reached() const
{
    return static_cast<std::size_t>(
        std::count_if(sites.begin(), sites.end(), [](const SiteTally& site) { return site.reached; }));
}

}  // namespace bgp_rehearse
