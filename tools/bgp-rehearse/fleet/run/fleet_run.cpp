#include "fleet/run/fleet_run.h"

#include <fmt/format.h>

#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/child.h"
#include "base/output_file.h"
#include "base/progress.h"
#include "fleet/merge/merge.h"
#include "fleet/plan/plan_reader.h"
#include "fleet/run/crew.h"
#include "fleet/run/known_results.h"
#include "fleet/run/state.h"
#include "fleet/shard/work.h"
#include "judge/words.h"
#include "report/device_time.h"

namespace bgp_rehearse {

namespace {

using std::chrono::steady_clock;

constexpr double kShardSeconds = 10;  // at most so much work is lost when a run is killed
constexpr std::size_t kShardsOfAJob = 4;

class FleetMember : public Crew::Member {
public:
    FleetMember(const PlanReader& plan, const UpgradeLibrary& library, const KnownResults& known,
                const FleetState& state, const Crew& crew, const InterruptGuard& interrupts)
        : plan_(plan), known_(known), state_(state), crew_(crew), worker_(plan.plan(), library, interrupts)
    {
    }

    // That no file can be made comes in the middle of a run.
    void work(std::size_t shard) override
    {
        try {
            write_part(plan_, shard, state_.part_file(shard),
                       [this](const PlannedInput& input) { return line_for(input); });
        } catch (const CommandError& error) {
            throw CommandError(error.status() == ExitStatus::BadInput ? ExitStatus::NotWritten : error.status(),
                               error.what());
        }
    }

private:
    std::string line_for(const PlannedInput& input)
    {
        const std::optional<std::string> known = known_.line_for(input);
        std::string line = known ? *known : worker_.rehearse(input);
        crew_.count(line);
        return line;
    }

    const PlanReader& plan_;
    const KnownResults& known_;
    const FleetState& state_;
    const Crew& crew_;
    Worker worker_;
};

// "rehearsing: 12,345 of 100,000 routers, 640 a second, 2 min left, 17 stops"
class Rate {
public:
    explicit Rate(std::size_t routers) : routers_(routers) {}

    std::string words(const CrewCounts& counts) const
    {
        const double seconds = std::chrono::duration<double>(steady_clock::now() - began_).count();
        const double rate = static_cast<double>(counts.done) / seconds;
        std::string words = fmt::format("rehearsing: {} of {} routers", grouped(counts.done), grouped(routers_));
        if (counts.done > 0) {
            const std::chrono::duration<double> left(static_cast<double>(routers_ - counts.done) / rate);
            words += fmt::format(", {} a second, {} left", grouped(static_cast<std::size_t>(rate)),
                                 words_of(std::chrono::duration_cast<Duration>(left)));
        }
        return words + fmt::format(", {}", counted(counts.stops, {"stop", "stops"}));
    }

private:
    std::size_t routers_;
    steady_clock::time_point began_ = steady_clock::now();
};

std::size_t routers_of(const PlanReader& plan, const std::vector<std::size_t>& shards)
{
    std::size_t routers = 0;
    for (const std::size_t shard : shards) {
        routers += plan.plan().shards[shard].inputs;
    }
    return routers;
}

// Fills in the parts that are missing. `library` lies there now.
void work(const PlanReader& plan, const std::string& library_file, const FleetState& state, std::size_t jobs)
{
    const std::vector<std::size_t> shards = state.missing(plan);
    if (shards.empty()) {
        return;
    }
    const InterruptGuard interrupts;
    const KnownResults known = state.known(plan);
    const UpgradeLibrary library = library_of(plan.plan(), library_file);
    const Crew crew;
    const Rate rate(routers_of(plan, shards));
    ProgressLine progress;
    try {
        crew.work(
            interrupts, shards, jobs,
            [&](const InterruptGuard& own) {
                return std::make_unique<FleetMember>(plan, library, known, state, crew, own);
            },
            [&] { progress.show([&] { return rate.words(crew.counts()); }); });
    } catch (...) {
        state.remove_unfinished();
        throw;
    }
}

}  // namespace

ExitStatus run_fleet(const FleetRunOptions& options)
{
    const std::string target = replaceable_file("-o", options.output);
    FleetState state(target + ".parts");
    PlanOptions planned = options.plan;
    planned.shard_seconds = kShardSeconds;
    planned.least_shards = kShardsOfAJob * options.jobs;
    const std::string library = state.plan(planned).library.path;
    const PlanReader plan(state.plan_file());
    work(plan, library, state, options.jobs);
    MergeOptions merged{state.plan_file(), {}, target};
    for (std::size_t shard = 0; shard < plan.plan().shards.size(); ++shard) {
        merged.parts.push_back(state.part_file(shard));
    }
    const ExitStatus status = merge_fleet(merged);
    state.remove_others();
    return status;
}

}  // namespace bgp_rehearse
