// What the runs of a sweep came to, counted by call site and by kind of run.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "sweep/contract.h"
#include "sweep/plan.h"
#include "sweep/verdict.h"

namespace bgp_rehearse {

constexpr std::size_t kOutcomes = 4;

struct SiteTally {
    bool reached = false;
    std::size_t runs = 0;  // in which a call there was made to fail, as the last one
    std::array<std::size_t, kOutcomes> outcomes{};
    std::size_t breaks = 0;
};

struct Tally {
    static constexpr std::size_t kKeptBreaks = 100;

    std::vector<SiteTally> sites = std::vector<SiteTally>(contract().size());  // by place in contract()
    std::array<std::size_t, kRunKinds> runs{};
    std::array<std::size_t, kOutcomes> outcomes{};
    std::size_t breaks = 0;
    // The first breaks that differ, each with the first run that showed it.
    std::vector<std::pair<std::string, std::string>> kept_breaks;

    // The sites that the run without failures reaches; one that the contract does not know is a break.
    void take_baseline(const Baseline& baseline, const std::string& run);
    void take(const SweepPlan& plan, const RunVerdict& verdict, const std::string& run);
    void add(const Tally& other);
    void add_break(const std::string& text, const std::string& run);

    std::size_t sites_reached() const;

private:
    void keep_break(const std::string& text, const std::string& run);
};

}  // namespace bgp_rehearse
