#include "sweep/run.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>

#include "base/output_file.h"
#include "sweep/failing_allocations.h"
#include "sweep/messages.h"
#include "sweep/process.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Device;
using bgp_platform::Fault;

constexpr unsigned int kMostSeconds = 120;  // for one run, before it counts as hanging

void send(int channel, const RunVerdict& verdict)
{
    const std::string text = message_of(verdict);
    static_cast<void>(write_all(channel, text.data(), text.size()));
}

// Nothing of what the library or libc print, and no core files: ends are what a sweep is made of.
void be_quiet()
{
    const rlimit no_core{0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    alarm(kMostSeconds);
}

void order_failures(const SweepPlan& plan, Device& device)
{
    for (const SweepPlan::FailedCall& call : plan.calls) {
        device.fault_plan().fail_call(call.n, call.failure, call.from_there);
    }
}

// The upgrade with what is planned, up to the return of update().
RunVerdict judged_upgrade(Device& device, const UpgradeLibrary& library, const SweepPlan& plan, const SweptRun& run)
{
    const bgp_platform::UpgradeHandles handles = device.open_upgrade();
    if (plan.allocation != 0) {
        failing_allocations::watch(library.path(), plan.allocation);
    }
    try {
        const int result = library.update(handles.maapi_socket, handles.thandle, handles.cdb_socket);
        failing_allocations::stop();
        return judge_returned(run, result, device.open_things());
    } catch (const std::exception& error) {
        failing_allocations::stop();
        return {Outcome::Died, {}, {fmt::format("an exception left update: {}", error.what())}, {}};
    }
}

// In the child. A fault or an assertion is judged where it is reported, as the process ends then.
int run_and_tell(Device& device, const UpgradeLibrary& library, const Baseline& baseline, const SweepPlan& plan,
                 int channel)
{
    be_quiet();
    Trail trail(device.recorder());
    const SweptRun run{baseline, trail, plan.allocation != 0};
    device.keep_reports(false);
    device.recorder().start();
    order_failures(plan, device);
    device.log_sink = [&trail](std::string_view line) { trail.take_line(line); };
    device.fault_sink = [&](const Fault& fault) {
        failing_allocations::stop();
        send(channel, judge_ended(run, fault));
        close(channel);
    };
    send(channel, judged_upgrade(device, library, plan, run));
    return EXIT_SUCCESS;
}

// How a process must end that came to this outcome.
bool fits(int status, Outcome outcome)
{
    switch (outcome) {
        case Outcome::Returned:
            return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
        case Outcome::Faulted:
            return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE;
        case Outcome::Asserted:
            return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
        case Outcome::Died:
            return true;
    }
    return false;
}

std::string end_text(int status)
{
    return WIFSIGNALED(status) ? fmt::format("signal {}", WTERMSIG(status))
                               : fmt::format("exit status {}", WEXITSTATUS(status));
}

RunVerdict judge_end(const std::string& told, int status)
{
    if (told.empty()) {
        return {Outcome::Died, {}, {"the process ended by " + end_text(status) + ", without a report"}, {}};
    }
    RunVerdict verdict = verdict_of(told);
    if (!fits(status, verdict.outcome)) {
        verdict.breaks.push_back("the process ended by " + end_text(status) + " after its report");
    }
    return verdict;
}

}  // namespace

Baseline run_baseline(Device& device, const UpgradeLibrary& library)
{
    device.recorder().clear();
    Trail trail(device.recorder());
    device.keep_reports(false);
    device.recorder().start();
    device.log_sink = [&trail](std::string_view line) { trail.take_line(line); };
    const bgp_platform::UpgradeHandles handles = device.open_upgrade();
    failing_allocations::watch(library.path(), 0);
    library.update(handles.maapi_socket, handles.thandle, handles.cdb_socket);
    Baseline baseline = baseline_of(trail, failing_allocations::stop());
    device.log_sink = nullptr;
    device.recorder().clear();
    device.drop();
    return baseline;
}

RunVerdict run_plan(Device& device, const UpgradeLibrary& library, const Baseline& baseline, const SweepPlan& plan)
{
    const SweepProcess::End end =
        SweepProcess([&](int channel) { return run_and_tell(device, library, baseline, plan, channel); }).wait();
    return judge_end(end.text, end.status);
}

}  // namespace bgp_rehearse
