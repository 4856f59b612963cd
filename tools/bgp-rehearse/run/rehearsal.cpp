#include "run/rehearsal.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <utility>

#include "base/exit_status.h"
#include "base/output_file.h"
#include "base/progress.h"
#include "base/text_escape.h"
#include "report/html/page.h"
#include "report/json.h"
#include "report/junit.h"
#include "report/text.h"
#include "run/ending.h"
#include "run/library.h"
#include "run/messages.h"
#include "run/upgrade.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::Device;

// Returns why it failed, or nothing.
std::string write_output(const std::string& name, const Device& device, int output)
{
    ProgressLine progress("writing " + escaped(name));
    try {
        device.write(Datastore::Transaction, output,
                     [&](std::size_t bytes, std::size_t total) { progress.show(bytes, total); });
    } catch (const std::exception& error) {
        return fmt::format("{} could not be written: {}", escaped(name), escaped(error.what()));
    }
    return {};
}

// Likewise.
std::string write_reports(const RunOptions& options, const Report& report, const Ending& ending,
                          const RehearsalFiles& files, const Look& look)
{
    if (!(options.json_printed() ? write_json_report(report, ending, files.report)
                                 : write_text_report(report, look, files.report))) {
        return fmt::format("the report could not be written: {}", std::strerror(errno));
    }
    if (files.json >= 0 && !write_json_report(report, ending, files.json)) {
        return fmt::format("{} could not be written: {}", escaped(options.json), std::strerror(errno));
    }
    if (files.junit >= 0 && !write_junit_report(report, ending, files.junit)) {
        return fmt::format("{} could not be written: {}", escaped(options.junit), std::strerror(errno));
    }
    if (files.html >= 0 && !write_html_report(report, ending, files.html)) {
        return fmt::format("{} could not be written: {}", escaped(options.html), std::strerror(errno));
    }
    return {};
}

}  // namespace

FollowedUpgrade::TakeLine log_taker(const RunOptions& options, int log, const Teller& teller)
{
    const bool tell = options.keeps_log();
    return [&teller, tell, log, failed = false](std::string_view line) mutable {
        if (tell) {
            teller.log_line(line);
        }
        if (log < 0 || failed) {
            return;
        }
        const std::string text = escaped_line(line) + "\n";
        if (!write_all(log, text.data(), text.size())) {
            failed = true;
            teller.log_failed(std::strerror(errno));
        }
    };
}

Report complete_report(const RunOptions& options, const FollowedUpgrade& upgrade, const Device& device, Report report)
{
    report.returned = upgrade.result();
    report.calls = device.calls();
    report.device = &device;
    report.failed_calls = &upgrade.failed_calls();
    report.faults = device.faults();
    report.log = device.log();
    report.steps = upgrade.steps();
    report.log_parts = options.keeps_log() ? upgrade.log_parts() : std::vector<LogPart>{};
    FollowedUpgrade::Judged judged = upgrade.judged(options);
    report.check = std::move(judged.check);
    report.judgement = std::move(judged.judgement);
    return report;
}

int rehearse(const RunOptions& options, const std::string& library, Device& device, Report report,
             const RehearsalFiles& files, const Watch& watch, const Look& look, int channel)
{
    const Teller teller(channel);
    std::optional<UpgradeLibrary> upgrade_library;
    try {
        upgrade_library.emplace(library);
    } catch (const CommandError& error) {
        teller.refused(error.what());
        return EXIT_FAILURE;
    }
    report.inputs.library = upgrade_library->path();
    teller.library(report.inputs.library);
    // The log of a large configuration takes as much memory as its rows.
    device.keep_reports(options.keeps_log());
    FollowedUpgrade upgrade(*upgrade_library, device, teller, watch, log_taker(options, files.log, teller));
    if (!upgrade.run(options.limits)) {
        return EXIT_FAILURE;
    }
    Finished finished;
    try {
        report = complete_report(options, upgrade, device, std::move(report));
    } catch (const std::logic_error& error) {
        finished.mistake = error.what();
        teller.finished(finished);
        return EXIT_SUCCESS;
    }
    finished.severity = static_cast<int>(report.judgement->verdict.severity);
    finished.invalid = report.check.value_or("");
    if (files.output >= 0 && finished.invalid.empty()) {
        finished.write_error = write_output(options.output, device, files.output);
    }
    finished.report_error = write_reports(options, report, ending_of(options, finished), files, look);
    teller.finished(finished);
    return EXIT_SUCCESS;
}

}  // namespace bgp_rehearse
