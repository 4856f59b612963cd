#include "fleet/shard/worker.h"

#include <fmt/format.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include "base/exit_status.h"
#include "base/upgrade_limits.h"
#include "fleet/shard/summary.h"
#include "judge/judgement.h"
#include "run/ended.h"
#include "run/facts.h"
#include "run/messages.h"
#include "schema/schema.h"

namespace bgp_rehearse {

namespace {

using Phase = Phases::Phase;

constexpr int kHeap = 1 << 25;  // the most that glibc takes for the first of them

RunOptions options_of(const FleetOptions& fleet)
{
    RunOptions options;
    options.device = fleet.device;
    options.severities = fleet.severities;
    options.limits.time = fleet.time_limit > Duration{} ? std::optional(fleet.time_limit) : std::nullopt;
    options.limits.memory = fleet.memory_limit > 0 ? std::optional<std::size_t>(fleet.memory_limit) : std::nullopt;
    return options;
}

// A file in memory takes what a child writes without waking its parent.
int open_channel()
{
    const int channel = memfd_create("router", MFD_CLOEXEC);
    if (channel < 0) {
        throw CommandError(ExitStatus::BadInput, fmt::format("no memory for a worker: {}", std::strerror(errno)));
    }
    return channel;
}

std::string why_not_loaded(const ChildEnd& end, const RouterTask& task)
{
    const UpgradeLimits& limits = task.options.limits;
    const Ended ended = explain_end(end, Told({}), task.watch, limits);
    switch (ended.kind) {
        case Ended::Kind::TimeLimit:
            return "to read it takes " + ended.text;
        case Ended::Kind::MemoryLimit:
            return "to read it needs " + ended.text;
        default:
            return "the process that read it ended in " + describe(ended);
    }
}

}  // namespace

Worker::Worker(const Plan& plan, const UpgradeLibrary& library, const InterruptGuard& interrupts)
    : plan_(plan),
      library_(library),
      interrupts_(interrupts),
      options_(options_of(plan.options)),
      reader_(plan.options.max_bytes),
      channel_(open_channel())
{
    prepare_judgements(*bgp_platform::schema::Schema::builtin());  // once, before all children
    mallopt(M_MMAP_THRESHOLD, kHeap);                              // for populate_heap()
    mallopt(M_TRIM_THRESHOLD, kHeap);
}

Worker::~Worker()
{
    close(channel_);
}

RunOptions Worker::options_for(const PlannedInput& input) const
{
    RunOptions options = options_;
    take_facts(input.facts, &options.device);
    return options;
}

std::string Worker::rehearse(const PlannedInput& input)
{
    try {
        return rehearse(input, reader_.read(input));
    } catch (const InputError& error) {
        return line_of(refused_result(input, {error.what()}));
    }
}

std::string Worker::rehearse(const PlannedInput& input, const std::string& bytes)
{
    const RunOptions options = options_for(input);
    const Watch watch;
    const Phases phases;
    const RouterTask task{input, bytes, options, plan_.options.max_bytes, library_, watch, phases, channel_};
    const ChildEnd end = run([&] { return rehearse_router(task); }, phases);
    const std::string told = written();
    if (const std::optional<std::string> line = result_in(told, input)) {
        return *line;
    }
    return line_of_ended(task, end, told);
}

ChildEnd Worker::run(const std::function<int()>& body, const Phases& phases) const
{
    if (ftruncate(channel_, 0) != 0 || lseek(channel_, 0, SEEK_SET) != 0) {
        throw CommandError(ExitStatus::OwnFault, fmt::format("a worker's memory: {}", std::strerror(errno)));
    }
    phases.begin(Phase::Loading);
    const ChildEnd end = run_in_child(interrupts_, body, [&]() -> std::optional<Duration> {
        return options_.limits.time ? std::optional(*options_.limits.time - phases.since()) : std::nullopt;
    });
    if (end.interrupted_by != 0) {
        throw Interrupted{end.interrupted_by};
    }
    return end;
}

std::string Worker::line_of_ended(const RouterTask& task, const ChildEnd& end, const std::string& told)
{
    switch (task.phases.phase()) {
        case Phase::Loading:
            return line_of(refused_result(task.input, {why_not_loaded(end, task)}));
        case Phase::Judging:
            return line_of(failed_result(task.input, ExitStatus::NotWritten,
                                         fmt::format("update returned, but what came of it could not be told: {}",
                                                     describe(explain_end(end, Told({}), task.watch, {})))));
        case Phase::Upgrading:
            break;
    }
    const ChildEnd teller = run([&] { return tell_ended_router(task, end, told); }, Phases());
    const std::optional<std::string> line = result_in(written(), task.input);
    return line ? *line : line_of(refused_result(task.input, {why_not_loaded(teller, task)}));
}

std::string Worker::written() const
{
    const off_t size = lseek(channel_, 0, SEEK_END);
    std::string text(static_cast<std::size_t>(std::max<off_t>(size, 0)), '\0');
    const ssize_t count = pread(channel_, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return text;
}

}  // namespace bgp_rehearse
