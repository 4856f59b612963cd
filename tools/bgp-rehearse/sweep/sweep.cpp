#include "sweep/sweep.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/output_file.h"
#include "base/progress.h"
#include "base/standard_output.h"
#include "base/terminal.h"
#include "base/text_escape.h"
#include "judge/words.h"
#include "run/library.h"
#include "run/run.h"
#include "sweep/errors.h"
#include "sweep/messages.h"
#include "sweep/plan.h"
#include "sweep/process.h"
#include "sweep/report.h"
#include "sweep/run.h"
#include "sweep/runs_done.h"
#include "sweep/tally.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Device;
using bgp_platform::capi::PlannedFailure;

in_addr documentation_address()
{
    return in_addr{htonl(0xC0000201)};  // 192.0.2.1
}

struct Part {
    unsigned int number;
    unsigned int of;
};

// One worker's part of a configuration's runs.
class PartSweep {
public:
    PartSweep(Device& device, const std::string& library, const SweepOptions& options, std::string name, Part part,
              RunsDone& runs)
        : device_(device), library_(library), options_(options), name_(std::move(name)), part_(part), runs_(runs)
    {
    }

    Tally sweep()
    {
        Baseline baseline = run_baseline(device_, library_);
        known_ = baseline.names;
        std::vector<SweepPlan> plans = all_plans(baseline, options_.pairs);
        sweep_plans(baseline, plans);

        // With an address of its own, a device takes its router id from there.
        device_.set_interfaces({documentation_address()});
        baseline = run_baseline(device_, library_);
        plans = call_plans(baseline);
        plans.erase(
            std::remove_if(plans.begin(), plans.end(),
                           [&](const SweepPlan& plan) { return known_.count(plan.calls.front().site.name()) != 0; }),
            plans.end());
        sweep_plans(baseline, plans);
        return std::move(tally_);
    }

private:
    void sweep_plans(const Baseline& baseline, const std::vector<SweepPlan>& plans)
    {
        tally_.take_baseline(baseline, name_);
        const std::size_t step = part_.of * options_.every;
        runs_.planned += plans.size() > part_.number ? (plans.size() - part_.number - 1) / step + 1 : 0;
        for (std::size_t i = part_.number; i < plans.size(); i += step) {
            sweep_found(baseline, plans[i], run(baseline, plans[i]));
        }
    }

    // A site that only a failure leads to: a call there fails as well.
    void sweep_found(const Baseline& baseline, const SweepPlan& plan, const RunVerdict& verdict)
    {
        if (plan.calls.size() != 1 || plan.calls.front().from_there) {
            return;
        }
        for (const auto& [call, site] : verdict.found) {
            if (!known_.insert(site.name()).second) {
                continue;
            }
            for (const PlannedFailure& failure : failures_of(site.function)) {
                ++runs_.planned;
                run(baseline, {{plan.calls.front(), {call, site, failure, false}}, 0});
            }
        }
    }

    RunVerdict run(const Baseline& baseline, const SweepPlan& plan)
    {
        RunVerdict verdict = run_plan(device_, library_, baseline, plan);
        tally_.take(plan, verdict, name_ + ": " + describe(plan));
        ++runs_.done;
        return verdict;
    }

    Device& device_;
    const UpgradeLibrary library_;
    const SweepOptions& options_;
    const std::string name_;
    const Part part_;
    RunsDone& runs_;
    Tally tally_;
    std::set<std::string> known_;  // names of sites that are swept
};

Tally tally_from(SweepProcess& worker, const std::string& name, const std::function<void()>& on_tick)
{
    const std::string text = worker.wait(on_tick).text;
    if (text.empty()) {
        throw CommandError(ExitStatus::UpgradeEnded,
                           fmt::format("{0}: the upgrade does not return even when nothing fails: "
                                       "bgp-rehearse run {0} shows how it ends",
                                       escaped(name)));
    }
    return tally_of(text);
}

// In a worker.
int tell(const Tally& tally, int channel)
{
    const std::string text = message_of(tally);
    return write_all(channel, text.data(), text.size()) ? EXIT_SUCCESS : EXIT_FAILURE;
}

Tally sweep_configuration(const SweepOptions& options, const std::string& library, const std::string& name)
{
    Device& device = load_device(options.device, name);
    const SharedRunsDone runs;
    std::vector<SweepProcess> workers;
    for (unsigned int i = 0; i < options.jobs; ++i) {
        workers.emplace_back([&](int channel) {
            return tell(PartSweep(device, library, options, name, {i, options.jobs}, *runs.get()).sweep(), channel);
        });
    }
    ProgressLine progress;
    const auto show = [&] {
        progress.show([&] {
            return runs->planned == 0 ? fmt::format("sweeping {}: a run without failures", escaped(name))
                                      : fmt::format("sweeping {}: {} of {} runs", escaped(name), grouped(runs->done),
                                                    grouped(runs->planned));
        });
    };
    Tally tally;
    for (SweepProcess& worker : workers) {
        tally.add(tally_from(worker, name, show));
    }
    return tally;
}

}  // namespace

ExitStatus sweep(const SweepOptions& options)
{
    const std::string library = find_library(options.library);
    Tally tally;
    for (const std::string& name : options.configurations) {
        tally.add(sweep_configuration(options, library, name));
    }
    print_out(options.json ? json_sweep_report(options.configurations, tally)
                           : text_sweep_report(options.configurations, tally, wants_colour(options.colour)));
    const bool all = tally.sites_reached() == tally.sites.size();
    return tally.breaks > 0 || (options.all_sites && !all) ? ExitStatus::ContractBroken : ExitStatus::Ok;
}

}  // namespace bgp_rehearse
