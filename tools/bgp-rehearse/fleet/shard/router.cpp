#include "fleet/shard/router.h"

#include <fmt/format.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "base/exit_status.h"
#include "base/output_file.h"
#include "base/text_escape.h"
#include "fleet/plan/input_reader.h"
#include "fleet/shard/summary.h"
#include "judge/stored_condition.h"
#include "report/change_digests.h"
#include "run/ended.h"
#include "run/ending.h"
#include "run/memory_limit.h"
#include "run/messages.h"
#include "run/upgrade.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Device;
using std::chrono::steady_clock;

constexpr char kName[] = "configuration";  // of the input, to the loader
constexpr std::size_t kPage = 4096;
constexpr std::size_t kHeapAtFirst = 256 << 10;
constexpr std::size_t kHeapOfAByte = 8;  // of the configuration
constexpr std::size_t kMostHeap = 16 << 20;
constexpr char kResult = 'R';  // begins the line of a result; a message begins with a bracket

void send(const RouterTask& task, const RouterResult& result)
{
    const std::string line = kResult + line_of(result) + "\n";
    static_cast<void>(write_all(task.channel, line.data(), line.size()));
}

// The loaded device, which is never freed; none when the configuration was refused, which is told.
Device* load(const RouterTask& task)
{
    const DeviceOptions& options = task.options.device;
    Device& device = *new Device;
    device.set_interfaces(options.interfaces);
    device.set_user_profile(options.user_profile);
    device.keep_reports(false);
    bgp_platform::xml::Limits limits;
    limits.entries = options.max_entries;
    limits.errors = options.max_errors;
    try {
        device.load_text(unpacked_configuration(task.bytes, kName, task.max_bytes), kName, limits);
    } catch (const bgp_platform::xml::LoadError& error) {
        std::vector<std::string> errors;
        for (const std::string& each : error.errors()) {
            errors.push_back(escaped(without_name(each, kName)));
        }
        send(task, refused_result(task.input, std::move(errors)));
        return nullptr;
    }
    return &device;
}

void judge(const RouterTask& task, const Device& device, const FollowedUpgrade& upgrade)
{
    Finished finished;
    try {
        const Judgement judgement = upgrade.judged(task.options).judgement;
        finished.severity = static_cast<int>(judgement.verdict.severity);
        send(task, result_of(task.input, {device, judgement, upgrade.steps(), totals_of(device.calls()),
                                          ending_of(task.options, finished).status, change_digests(device)}));
    } catch (const std::logic_error& error) {
        finished.mistake = error.what();
        const Ending ending = ending_of(task.options, finished);
        send(task, failed_result(task.input, static_cast<ExitStatus>(ending.status), ending.error));
    }
}

// Has the pages that the heap will grow into at once: a fault for each of them would take a fifth of the time that a small
// router does. The heap's end must not be given back (Worker).
void populate_heap(std::size_t bytes)
{
    void* const memory = std::malloc(bytes);
    void* begin = memory;
    std::size_t room = bytes;
    if (memory != nullptr && std::align(kPage, kPage, begin, room) != nullptr) {
        madvise(begin, room / kPage * kPage, MADV_POPULATE_WRITE);
    }
    std::free(memory);
}

void each_line(std::string_view text, const std::function<void(std::string_view)>& take)
{
    for (std::size_t end; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        take(text.substr(0, end));
    }
}

}  // namespace

void Phases::begin(Phase phase) const noexcept
{
    shared_->began = steady_clock::now().time_since_epoch().count();
    shared_->phase = phase;
}

Duration Phases::since() const noexcept
{
    return steady_clock::now() - steady_clock::time_point(steady_clock::duration(shared_->began));
}

int rehearse_router(const RouterTask& task)
{
    populate_heap(std::min(kHeapAtFirst + task.bytes.size() * kHeapOfAByte, kMostHeap));
    Device* device = nullptr;
    {
        const MemoryLimit memory(task.options.limits.memory, task.watch);
        device = load(task);
    }
    if (device == nullptr) {
        return EXIT_SUCCESS;
    }
    const Teller teller(task.channel);
    FollowedUpgrade upgrade(task.library, *device, teller, task.watch);
    upgrade.pass_over_other_lines();
    task.phases.begin(Phases::Phase::Upgrading);
    if (!upgrade.run(task.options.limits)) {
        return EXIT_FAILURE;
    }
    task.phases.begin(Phases::Phase::Judging);
    judge(task, *device, upgrade);
    return EXIT_SUCCESS;
}

int tell_ended_router(const RouterTask& task, const ChildEnd& end, const std::string& told)
{
    Device* const device = load(task);
    if (device == nullptr) {
        return EXIT_SUCCESS;
    }
    Told all(conditions_on(*device));
    each_line(told, [&](std::string_view line) { all.take(line); });
    const Ended ended = ended_upgrade(end, task.watch, task.options.limits, *device, &all);
    const Judgement judgement = judge_ended(ended, chosen_severities(task.options.severities));
    send(task,
         result_of(
             task.input,
             {*device, judgement, all.steps.all(), ended.last.calls, static_cast<int>(ExitStatus::UpgradeEnded), {}}));
    return EXIT_SUCCESS;
}

// Only its own process has written the line: whether it is whole is all that there is to ask.
std::optional<std::string> result_in(const std::string& written, const PlannedInput& input)
{
    const std::string start = fmt::format("{}{{\"n\":{},", kResult, input.number);
    const std::size_t before = written.rfind('\n', written.size() - std::min<std::size_t>(written.size(), 2));
    const std::size_t begin = before == std::string::npos ? 0 : before + 1;
    const bool whole = written.size() > begin + start.size() && written.compare(begin, start.size(), start) == 0 &&
                       written.compare(written.size() - 2, 2, "}\n") == 0;
    return whole ? std::optional(written.substr(begin + 1, written.size() - begin - 2)) : std::nullopt;
}

}  // namespace bgp_rehearse
