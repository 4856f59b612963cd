#include "sweep/verdict.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "contract/steps/update.h"
#include "judge/call_site.h"
#include "sweep/contract.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Fault;
using bgp_platform::capi::Effect;
using bgp_platform::capi::RecordedCall;

bool is_write(const RecordedCall& call)
{
    return bgp_platform::capi::effect_of(call.function) == Effect::Write;
}

std::string write_text(const RecordedCall& call)
{
    return call.text() + " " + call.values;
}

// How many calls before this one were the same but for their results.
std::size_t repetition_of(const Trail& trail, std::size_t call)
{
    const RecordedCall& made = trail.calls()[call];
    const auto end = trail.calls().begin() + static_cast<std::ptrdiff_t>(call);
    return static_cast<std::size_t>(std::count_if(trail.calls().begin(), end, [&](const RecordedCall& other) {
        return other.function == made.function && other.path == made.path && other.arguments == made.arguments;
    }));
}

// Goes through a run's calls and gathers where the contract is broken.
class Judge {
public:
    explicit Judge(const SweptRun& run) : baseline_(run.baseline), trail_(run.trail), run_(run)
    {
        if (run.refused_allocation) {
            lost_.push_back(&bgp_contract::kWithoutMemory);
        }
        for (std::size_t call = 0; call < trail_.calls().size(); ++call) {
            const RecordedCall& made = trail_.calls()[call];
            if (!lost_.empty()) {  // up to there the run is as the one without failures
                find_site(call);
            }
            if (made.result < 0) {
                take_failure(call);
            } else if (is_write(made)) {
                take_write(made);
            }
        }
    }

    RunVerdict returned(int result, const bgp_platform::OpenThings& open)
    {
        if (last_ != nullptr && ends(last_->demand)) {
            broken(last_->site.name() + ": went on after a failure that must end the process");
        }
        if (result != 0) {
            broken(fmt::format("update returned {}", result));
        }
        if (!open.none()) {
            broken(fmt::format("left open: {} sessions, {} sockets, {} cursors, {} values", open.cdb_sessions,
                               open.cdb_sockets, open.cursors, open.values));
        }
        return take(Outcome::Returned);
    }

    RunVerdict ended(const Fault& fault)
    {
        const Outcome outcome = fault.kind == Fault::Kind::Fault ? Outcome::Faulted : Outcome::Asserted;
        const bool by_call = last_ != nullptr && demanded(last_->demand, fault);
        if (!by_call && !(run_.refused_allocation && says_no_memory(fault))) {
            broken(fmt::format("ended in {} ({}:{}: {}) after {}", fault.function, fault.source, fault.line, fault.text,
                               last_failure()));
        }
        return take(outcome);
    }

private:
    static bool ends(const Demand& demand) { return demand.must == Must::Fault || demand.must == Must::Assert; }

    // Whether this end is the one that is demanded.
    static bool demanded(const Demand& demand, const Fault& fault)
    {
        if (demand.must == Must::Assert) {
            return fault.kind == Fault::Kind::Assertion && fault.source == demand.source &&
                   fault.function.find(demand.text) != std::string::npos;
        }
        const auto& lines = demand.lines;
        return demand.must == Must::Fault && fault.kind == Fault::Kind::Fault && fault.source == demand.source &&
               fault.function == demand.text && (lines[0] == 0 || fault.line == lines[0] || fault.line == lines[1]);
    }

    std::string last_failure() const
    {
        return last_ == nullptr ? "no failed call" : "a failure at " + last_->site.name();
    }

    void find_site(std::size_t call)
    {
        const Site site = trail_.site_of(call);
        if (baseline_.names.count(site.name()) == 0 && found_.insert(site.name()).second) {
            verdict_.found.emplace_back(call + 1, site);
        }
    }

    void take_failure(std::size_t call)
    {
        const Site site = trail_.site_of(call);
        if (last_ != nullptr && ends(last_->demand)) {
            broken(fmt::format("{}: called after {}, which must end the process", site.name(), last_failure()));
        }
        const std::size_t place = place_of(site);
        if (place == contract().size()) {
            broken(site.name() + ": a call site that the contract does not know");
            return;
        }
        last_ = &contract()[place];
        verdict_.failed.push_back(place);
        const Demand& demand = last_->demand;
        if (!fails_anyway(call)) {
            lost_.push_back(&demand);
        }
        if (demand.must == Must::Log && !trail_.logged_after(call, demand.text)) {
            broken(fmt::format("{}: its failure is not logged by \"{}\" but by \"{}\"", site.name(), demand.text,
                               trail_.lines_after(call)));
        }
    }

    // Whether the call fails in the run without failures, too.
    bool fails_anyway(std::size_t call) const
    {
        const auto known = baseline_.failures.find(trail_.calls()[call].text());
        return known != baseline_.failures.end() && known->second.count(repetition_of(trail_, call)) != 0;
    }

    // Whether what was lost before it explains a write that no run without failures makes.
    bool explained(const RecordedCall& made) const
    {
        return std::any_of(lost_.begin(), lost_.end(), [&](const Demand* demand) {
            return std::any_of(demand->writes.begin(), demand->writes.end(),
                               [&](const char* keypath) { return made.path.rfind(keypath, 0) == 0; });
        });
    }

    // Whether this is the end of an exported function of the library that had no memory.
    static bool says_no_memory(const Fault& fault)
    {
        return fault.kind == Fault::Kind::Fault && fault.text == "std::bad_alloc" && fault.source.rfind("src/", 0) == 0;
    }

    void take_write(const RecordedCall& made)
    {
        if (baseline_.writes.count(write_text(made)) == 0 && !explained(made)) {
            broken(fmt::format("{} {}: a write that the run without failures does not make, after {}",
                               bgp_platform::capi::name_of(made.function), without_keys(made.path), last_failure()));
        }
    }

    void broken(std::string text) { verdict_.breaks.push_back(std::move(text)); }

    RunVerdict take(Outcome outcome)
    {
        verdict_.outcome = outcome;
        return std::move(verdict_);
    }

    const Baseline& baseline_;
    const Trail& trail_;
    RunVerdict verdict_;
    std::set<std::string> found_;
    const SweptRun& run_;
    std::vector<const Demand*> lost_;  // what has failed that the run without failures had
    const SiteRule* last_ = nullptr;   // of the last failed call
};

}  // namespace

Baseline baseline_of(const Trail& trail, std::size_t allocations)
{
    Baseline baseline;
    baseline.allocations = allocations;
    for (std::size_t call = 0; call < trail.calls().size(); ++call) {
        baseline.sites.push_back(trail.site_of(call));
        baseline.names.insert(baseline.sites.back().name());
        const RecordedCall& made = trail.calls()[call];
        if (made.result < 0) {
            baseline.failures[made.text()].insert(repetition_of(trail, call));
        } else if (is_write(made)) {
            baseline.writes.insert(write_text(made));
        }
    }
    return baseline;
}

RunVerdict judge_returned(const SweptRun& run, int result, const bgp_platform::OpenThings& open)
{
    return Judge(run).returned(result, open);
}

RunVerdict judge_ended(const SweptRun& run, const Fault& fault)
{
    return Judge(run).ended(fault);
}

}  // namespace bgp_rehearse
