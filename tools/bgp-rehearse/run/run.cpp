#include "run/run.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <utility>

#include "base/child.h"
#include "base/output_file.h"
#include "base/progress.h"
#include "base/standard_output.h"
#include "base/terminal.h"
#include "base/text_escape.h"
#include "judge/judgement.h"
#include "judge/stored_condition.h"
#include "judge/words.h"
#include "report/report.h"
#include "run/facts.h"
#include "run/files.h"
#include "run/library.h"
#include "run/messages.h"
#include "run/rehearsal.h"
#include "run/watch.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Device;

// What is known of a run before it begins.
Report blank_report(const RunOptions& options, const std::string& library, const Device& device)
{
    Report report;
    report.configuration = bgp_platform::xml::shown_name(options.configuration);
    report.library = library;
    report.show_log = options.log_in_report();
    report.loaded = size_of(device.configuration(bgp_platform::Datastore::Stored));
    return report;
}

Ended explain(const ChildEnd& end, const Told& told)
{
    Ended ended;
    ended.signal = end.signal;
    ended.status = end.status;
    ended.kind = end.signal != 0 ? Ended::Kind::Signal : Ended::Kind::Exit;
    if (!told.faults.empty()) {
        const bgp_platform::Fault& fault = told.faults.back();
        ended.function = fault.function;
        ended.source = fault.source;
        ended.line = fault.line;
        ended.text = fault.text;
        if (fault.kind == bgp_platform::Fault::Kind::Assertion && end.signal == SIGABRT) {
            ended.kind = Ended::Kind::Assertion;
        } else if (fault.kind == bgp_platform::Fault::Kind::Fault && end.signal == 0) {
            ended.kind = Ended::Kind::Fault;
        }
    }
    if (told.exception) {
        ended.kind = Ended::Kind::Exception;
        ended.text = *told.exception;
    }
    return ended;
}

// How the command ends, and what it says about it on standard error; empty: nothing.
struct Outcome {
    ExitStatus status = ExitStatus::Ok;
    std::string message;
};

bool reaches(FailOn from, Severity verdict)
{
    return from != FailOn::Never && verdict >= (from == FailOn::Review ? Severity::Review : Severity::Stop);
}

class Run {
public:
    Run(const RunOptions& options, std::string library, const RunTargets& targets, Device& device)
        : options_(options),
          library_(std::move(library)),
          targets_(targets),
          device_(device),
          told_(conditions_on(device.configuration(bgp_platform::Datastore::Stored)))
    {
    }

    Outcome rehearse();

    // The report, as a descriptor to read it from.
    int report() const noexcept { return report_file_; }

private:
    void show(ProgressLine& progress) const;
    void write_ended_report(Report report, const Ended& ended, std::optional<OutputFile>& json) const;
    Outcome ended(const ChildEnd& end, Report report, RunFiles& files);
    Outcome settle(RunFiles& files) const;
    void keep_log(std::optional<OutputFile>& log) const;
    std::string without_output() const;

    const RunOptions& options_;
    std::string library_;
    const RunTargets& targets_;
    Device& device_;
    int report_file_ = -1;
    const Watch watch_;
    Told told_;
};

Outcome Run::rehearse()
{
    const Report blank = blank_report(options_, library_, device_);
    const bool colour = wants_colour(options_.colour);
    const InterruptGuard interrupts;
    RunFiles open(targets_);
    report_file_ = memfd_create("report", MFD_CLOEXEC);
    const RehearsalFiles files{report_file_, open.descriptor(open.output), open.descriptor(open.log),
                               open.descriptor(open.json)};
    ProgressLine progress;
    const ChildEnd end = run_in_child(
        interrupts,
        [&](int channel) {
            return bgp_rehearse::rehearse(options_, library_, device_, blank, files, watch_, colour, channel);
        },
        [this](std::string_view line) { told_.take(line); }, [&, this] { show(progress); });
    progress.clear();
    if (end.interrupted_by != 0) {
        throw Interrupted{end.interrupted_by};
    }
    if (told_.refused) {
        throw CommandError(ExitStatus::BadInput, *told_.refused);
    }
    return told_.finished ? settle(open) : ended(end, blank, open);
}

// What comes after the upgrade shows its own progress, from the child.
void Run::show(ProgressLine& progress) const
{
    if (told_.returned) {
        progress.clear();
        return;
    }
    progress.show(
        [this] { return fmt::format("upgrading: {}, {} calls", told_.steps.current(), grouped(watch_.calls())); });
}

std::string Run::without_output() const
{
    return options_.output.empty() ? std::string() : fmt::format("; {} is not written", escaped(options_.output));
}

void Run::keep_log(std::optional<OutputFile>& log) const
{
    if (!told_.log_error.empty()) {
        throw CommandError(ExitStatus::NotWritten,
                           fmt::format("{} could not be written: {}", escaped(options_.log), told_.log_error));
    }
    put_in_place(log);
}

void Run::write_ended_report(Report report, const Ended& ended, std::optional<OutputFile>& json) const
{
    report.library = told_.library.empty() ? library_ : told_.library;
    report.ended = ended;
    report.log = told_.log;
    report.steps = told_.steps.all();
    if (ftruncate(report_file_, 0) != 0 || lseek(report_file_, 0, SEEK_SET) != 0 ||
        !bgp_rehearse::write_report(report, options_.json_printed(), wants_colour(options_.colour), report_file_)) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("the report: {}", std::strerror(errno)));
    }
    if (json && !bgp_rehearse::write_report(report, true, false, json->descriptor())) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("{}: {}", escaped(options_.json), std::strerror(errno)));
    }
}

Outcome Run::ended(const ChildEnd& end, Report report, RunFiles& files)
{
    Ended ended = explain(end, told_);
    if (told_.returned) {
        throw CommandError(
            ExitStatus::NotWritten,
            fmt::format("update returned, but what came of it could not be written: the process ended by {}{}",
                        describe(ended), without_output()));
    }
    ended.last = watch_.seen(device_);
    ended.last.step = told_.steps.current();
    told_.steps.ended(ended.last.calls);
    write_ended_report(std::move(report), ended, files.json);
    Outcome outcome{ExitStatus::UpgradeEnded,
                    fmt::format("the upgrade ended in {}{}", describe(ended), without_output())};
    try {
        keep_log(files.log);
        put_in_place(files.json);
    } catch (const CommandError& error) {
        outcome.message += fmt::format("\n{}", error.what());
    }
    return outcome;
}

Outcome Run::settle(RunFiles& files) const
{
    const Finished& finished = *told_.finished;
    if (!finished.mistake.empty()) {
        return {
            ExitStatus::OwnFault,
            fmt::format("the account of rows does not close, which is a bug of this command; nothing is written\n{}",
                        finished.mistake)};
    }
    try {
        keep_log(files.log);
        if (finished.write_error.empty()) {
            put_in_place(files.json);
        }
    } catch (const CommandError& error) {
        return {error.status(), error.what() + without_output()};
    }
    if (!finished.invalid.empty()) {
        return {ExitStatus::NotValid, "the result is not valid: " + escaped(finished.invalid) + without_output()};
    }
    if (!finished.write_error.empty()) {
        return {ExitStatus::NotWritten, finished.write_error};
    }
    try {
        put_in_place(files.output);
    } catch (const CommandError& error) {
        return {error.status(), error.what()};
    }
    return {reaches(options_.fail_on, static_cast<Severity>(finished.severity)) ? ExitStatus::VerdictReached
                                                                                : ExitStatus::Ok,
            {}};
}

// The errors of a configuration, one a line.
std::string all_errors(const bgp_platform::xml::LoadError& error)
{
    std::string lines;
    for (const std::string& each : error.errors()) {
        lines += (lines.empty() ? "" : "\n") + escaped(each);
    }
    if (error.more() > 0) {
        lines += fmt::format("\nand {} more; --max-errors {} shows {}", error.more(),
                             error.errors().size() + error.more(), error.more() == 1 ? "it" : "them");
    }
    return lines;
}

// Copies the report to standard output.
void print(int report)
{
    char piece[65536];
    lseek(report, 0, SEEK_SET);
    for (ssize_t size; (size = read(report, piece, sizeof piece)) > 0;) {
        print_out({piece, static_cast<std::size_t>(size)});
    }
}

void check_severities(const RunOptions& options)
{
    try {
        chosen_severities(options.severities);
    } catch (const std::invalid_argument& error) {
        throw CommandError(ExitStatus::BadInput, fmt::format("--severity: {}", escaped(error.what())));
    }
}

}  // namespace

ExitStatus run(const RunOptions& asked)
{
    const RunOptions options = with_facts(asked);
    check_severities(options);
    const std::string library = find_library(options.library);
    const RunTargets targets = check_targets(options, library);
    Run run(options, library, targets, load_device(options.device, options.configuration));
    const Outcome outcome = run.rehearse();
    print(run.report());
    if (!outcome.message.empty()) {
        throw CommandError(outcome.status, outcome.message);
    }
    return outcome.status;
}

Device& load_device(const DeviceOptions& options, const std::string& configuration)
{
    Device& device = *new Device;
    device.set_interfaces(options.interfaces);
    device.set_user_profile(options.user_profile);
    bgp_platform::xml::Limits limits;
    limits.entries = options.max_entries;
    limits.errors = options.max_errors;
    ProgressLine progress("loading " + escaped(bgp_platform::xml::shown_name(configuration)));
    try {
        device.load_file(
            configuration, [&](std::size_t bytes, std::size_t total) { progress.show(bytes, total); }, limits);
    } catch (const bgp_platform::xml::LoadError& error) {
        throw CommandError(ExitStatus::BadInput, all_errors(error));
    }
    return device;
}

}  // namespace bgp_rehearse
