#include "run/run.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
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
#include "report/html/page.h"
#include "report/json.h"
#include "report/json_ending.h"
#include "report/junit.h"
#include "report/text.h"
#include "run/blank_report.h"
#include "run/ended.h"
#include "run/ending.h"
#include "run/facts.h"
#include "run/files.h"
#include "run/library.h"
#include "run/messages.h"
#include "run/refused.h"
#include "run/rehearsal.h"
#include "run/watch.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Device;

// Whose changes are listed.
Subtree subtree_of(const std::string& keypath)
{
    try {
        return Subtree(*bgp_platform::schema::Schema::builtin(), keypath);
    } catch (const std::invalid_argument& error) {
        throw CommandError(ExitStatus::BadInput, fmt::format("--changes: {}", escaped(error.what())));
    }
}

Look look_of(const RunOptions& options)
{
    return {wants_colour(options.colour), line_columns()};
}

void check_severities(const RunOptions& options)
{
    try {
        chosen_severities(options.severities);
    } catch (const std::invalid_argument& error) {
        throw CommandError(ExitStatus::BadInput, fmt::format("--severity: {}", escaped(error.what())));
    }
}

Ending ending_with(const CommandError& error)
{
    return {static_cast<int>(error.status()), error.what()};
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

// Where the report waits until it is known how the command ends. A document is large, and need not be in memory.
int open_report_file(const RunOptions& options)
{
    const char* const folder = std::getenv("TMPDIR");
    const int file = options.json_printed()
                         ? open(folder == nullptr ? "/var/tmp" : folder, O_TMPFILE | O_RDWR | O_CLOEXEC, 0600)
                         : -1;
    return file >= 0 ? file : memfd_create("report", MFD_CLOEXEC);
}

class Run {
public:
    Run(const RunOptions& options, Report* report, Device& device)
        : options_(options), report_(*report), device_(device), told_(conditions_on(device))
    {
    }

    // Throws CommandError where there is no report to give.
    Ending run(const RunTargets& targets);

private:
    void show(ProgressLine& progress) const;
    bool may_go_on() const;
    ChildEnd rehearse(const InterruptGuard& interrupts, const RunFiles& files);
    void write_ended_report(const Ended& ended, const Ending& ending, const RunFiles& files) const;
    Ending ended(const ChildEnd& end, RunFiles& files);
    Ending returned() const;
    Ending put_files_in_place(const Ending& ending, RunFiles& files) const;
    void keep_log(std::optional<OutputFile>& log) const;
    Ending give_reports(const Ending& written, Ending ending, RunFiles& files) const;
    void give_document(const Ending& written, const Ending& ending, int file) const;
    void give_junit(const Ending& written, const Ending& ending, OutputFile& file) const;
    void give_page(const Ending& written, const Ending& ending, int file) const;

    const RunOptions& options_;
    Report& report_;  // what is known before the upgrade runs
    Device& device_;
    int report_file_ = -1;
    std::chrono::steady_clock::time_point began_;
    const Watch watch_;
    Told told_;
};

Ending Run::run(const RunTargets& targets)
{
    const InterruptGuard interrupts;
    RunFiles files(targets);
    const ChildEnd end = rehearse(interrupts, files);
    if (end.interrupted_by != 0) {
        throw Interrupted{end.interrupted_by};
    }
    if (told_.refused) {
        throw CommandError(ExitStatus::BadInput, *told_.refused);
    }
    report_.inputs.library = told_.library.empty() ? report_.inputs.library : told_.library;
    const Ending written = told_.finished ? returned() : ended(end, files);
    return give_reports(written, told_.finished ? put_files_in_place(written, files) : written, files);
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

// An upgrade that has returned may take its time over the reports.
bool Run::may_go_on() const
{
    return told_.returned || !options_.limits.time || std::chrono::steady_clock::now() - began_ < *options_.limits.time;
}

ChildEnd Run::rehearse(const InterruptGuard& interrupts, const RunFiles& files)
{
    report_file_ = open_report_file(options_);
    const RehearsalFiles open{report_file_,
                              RunFiles::descriptor(files.output),
                              RunFiles::descriptor(files.log),
                              RunFiles::descriptor(files.json),
                              RunFiles::descriptor(files.junit),
                              RunFiles::descriptor(files.html)};
    const Look look = look_of(options_);
    ProgressLine progress;
    began_ = std::chrono::steady_clock::now();
    const ChildEnd end = run_in_child(
        interrupts,
        [&](int channel) {
            return bgp_rehearse::rehearse(options_, report_.inputs.library, device_, report_, open, watch_, look,
                                          channel);
        },
        [this](std::string_view line) { told_.take(line); },
        [&, this] {
            show(progress);
            return may_go_on();
        });
    progress.clear();
    return end;
}

void Run::keep_log(std::optional<OutputFile>& log) const
{
    if (!told_.log_error.empty()) {
        throw CommandError(ExitStatus::NotWritten,
                           fmt::format("{} could not be written: {}", escaped(options_.log), told_.log_error));
    }
    put_in_place(log);
}

void Run::write_ended_report(const Ended& ended, const Ending& ending, const RunFiles& files) const
{
    Report report = report_;
    report.ended = ended;
    report.judgement = judge_ended(ended, chosen_severities(options_.severities));
    report.log = told_.log;
    report.log_parts = told_.log_parts.all();
    report.steps = told_.steps.all();
    if (ftruncate(report_file_, 0) != 0 || lseek(report_file_, 0, SEEK_SET) != 0 ||
        !(options_.json_printed() ? write_json_report(report, ending, report_file_)
                                  : write_text_report(report, look_of(options_), report_file_))) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("the report: {}", std::strerror(errno)));
    }
    if (files.json && !write_json_report(report, ending, files.json->descriptor())) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("{}: {}", escaped(options_.json), std::strerror(errno)));
    }
    if (files.junit && !write_junit_report(report, ending, files.junit->descriptor())) {
        throw CommandError(ExitStatus::NotWritten,
                           fmt::format("{}: {}", escaped(options_.junit), std::strerror(errno)));
    }
    if (files.html && !write_html_report(report, ending, files.html->descriptor())) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("{}: {}", escaped(options_.html), std::strerror(errno)));
    }
}

Ending Run::ended(const ChildEnd& end, RunFiles& files)
{
    if (told_.returned && !end.stopped) {
        throw CommandError(
            ExitStatus::NotWritten,
            fmt::format("update returned, but what came of it could not be written: the process ended by {}{}",
                        describe(explain_end(end, told_, watch_, options_.limits)), without_output(options_)));
    }
    const Ended ended = ended_upgrade(end, watch_, options_.limits, device_, &told_);
    Ending ending{static_cast<int>(ExitStatus::UpgradeEnded), sentence_of(ended) + without_output(options_)};
    try {
        keep_log(files.log);
    } catch (const CommandError& error) {
        ending.error += fmt::format("\n{}", error.what());
    }
    write_ended_report(ended, ending, files);
    return ending;
}

// What the process of the upgrade has put into its reports.
Ending Run::returned() const
{
    Ending ending = ending_of(options_, *told_.finished);
    if (!told_.finished->mistake.empty()) {
        throw CommandError(ExitStatus::OwnFault, ending.error);
    }
    if (!told_.finished->report_error.empty()) {
        throw CommandError(ExitStatus::NotWritten, told_.finished->report_error + without_output(options_));
    }
    return ending;
}

Ending Run::put_files_in_place(const Ending& ending, RunFiles& files) const
{
    try {
        keep_log(files.log);
    } catch (const CommandError& error) {
        return {static_cast<int>(error.status()), error.what() + without_output(options_)};
    }
    try {
        if (told_.finished->invalid.empty() && told_.finished->write_error.empty()) {
            put_in_place(files.output);
        }
        return ending;
    } catch (const CommandError& error) {
        return ending_with(error);
    }
}

void Run::give_document(const Ending& written, const Ending& ending, int file) const
{
    if (!(written == ending) && !replace_ending(written, ending, file)) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("the JSON report: {}", std::strerror(errno)));
    }
}

// Of a command that ends in another way than its document says, that is all that is told there: as of one that was refused.
void Run::give_junit(const Ending& written, const Ending& ending, OutputFile& file) const
{
    const int descriptor = file.descriptor();
    if (!(written == ending) && (ftruncate(descriptor, 0) != 0 || lseek(descriptor, 0, SEEK_SET) != 0 ||
                                 !write_junit_report(report_, ending, descriptor))) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("the JUnit report: {}", std::strerror(errno)));
    }
    file.put_in_place();
}

void Run::give_page(const Ending& written, const Ending& ending, int file) const
{
    if (!(written == ending) && !replace_page_ending(ending, file)) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("the page: {}", std::strerror(errno)));
    }
}

// The documents of files come last: they tell how the command ends.
Ending Run::give_reports(const Ending& written, Ending ending, RunFiles& files) const
{
    const auto also = [&ending](const CommandError& error) {
        ending.error = ending.error.empty() ? error.what() : fmt::format("{}\n{}", ending.error, error.what());
        ending.status = ending.status == static_cast<int>(ExitStatus::UpgradeEnded) ? ending.status
                                                                                    : static_cast<int>(error.status());
    };
    try {
        if (options_.json_printed()) {
            give_document(written, ending, report_file_);
        }
        print(report_file_);
    } catch (const CommandError& error) {
        also(error);
    }
    try {
        if (files.junit) {
            give_junit(written, ending, *files.junit);
        }
    } catch (const CommandError& error) {
        also(error);
    }
    try {
        if (files.json) {
            give_document(written, ending, files.json->descriptor());
            put_in_place(files.json);
        }
    } catch (const CommandError& error) {
        also(error);
    }
    try {
        if (files.html) {
            give_page(written, ending, files.html->descriptor());
            put_in_place(files.html);
        }
    } catch (const CommandError& error) {
        also(error);
    }
    return ending;
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

Ending rehearse(const RunOptions& asked, Report* report)
{
    const RunOptions options = with_facts(asked);
    check_severities(options);
    if (!options.changes.empty()) {
        report->listed = subtree_of(options.changes);
    }
    report->inputs.library = find_library(options.library);
    const RunTargets targets = check_targets(options, report->inputs.library);
    return Run(options, report, load_device(options.device, options.configuration)).run(targets);
}

}  // namespace

ExitStatus run(const RunOptions& asked)
{
    Report report = blank_report(asked);
    Ending ending;
    try {
        ending = rehearse(asked, &report);
    } catch (const CommandError& error) {
        ending = tell_refused(asked, report, ending_with(error));
    }
    if (!ending.error.empty()) {
        throw CommandError(static_cast<ExitStatus>(ending.status), ending.error);
    }
    return static_cast<ExitStatus>(ending.status);
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
