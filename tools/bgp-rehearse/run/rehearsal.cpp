#include "run/rehearsal.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <unistd.h>

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
#include "judge/stored_condition.h"
#include "report/html/page.h"
#include "report/json.h"
#include "report/junit.h"
#include "report/text.h"
#include "run/again.h"
#include "run/ending.h"
#include "run/library.h"
#include "run/memory_limit.h"
#include "run/messages.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::Device;

// Each line goes out with a write of its own, so that the log is complete up to the moment the upgrade ends, whichever
// way it does.
void follow_log(const RunOptions& options, Device& device, int log, const Teller& teller, const Watch& watch,
                UpgradeSteps& steps, LogParts* parts)
{
    const bool tell = options.keeps_log();
    device.keep_reports(tell);  // the log of a large configuration takes as much memory as its rows
    device.log_sink = [&, tell, teller, log, parts, failed = false](std::string_view line) mutable {
        watch.take_line(line);
        const std::size_t step = steps.current_number();
        if (steps.take(line)) {
            device.history()->set_writer(static_cast<bgp_platform::store::Writer>(steps.current_number()));
            teller.step_line(line, totals_of(device.calls()));
        }
        if (tell) {
            parts->add(step, steps.current_number());
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

// The result of update(), or none when an exception left it.
std::optional<int> run_update(const UpgradeLibrary& library, Device& device, const Teller& teller,
                              const UpgradeLimits& limits, const Watch& watch)
{
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    const MemoryLimit memory(limits.memory, watch);
    try {
        return library.update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket);
    } catch (const std::bad_alloc& error) {
        MemoryLimit::reached();
        teller.exception(error.what());
    } catch (const std::exception& error) {
        teller.exception(error.what());
    } catch (...) {
        teller.exception("of a type that is not known");
    }
    return std::nullopt;
}

Assumptions assumptions_of(const DeviceOptions& device)
{
    Assumptions assumptions;
    assumptions.user_profile = std::to_string(device.user_profile);
    assumptions.user_profile_given = device.user_profile_known;
    assumptions.interfaces_given = device.interfaces_known;
    for (const in_addr& address : device.interfaces) {
        char text[INET_ADDRSTRLEN] = {};
        inet_ntop(AF_INET, &address, text, sizeof text);
        assumptions.interfaces.append(assumptions.interfaces.empty() ? "" : ",").append(text);
    }
    return assumptions;
}

// What is not valid in the result, or nothing. A text that XML has no place for shows before libyang sees it.
std::string check(const Device& device)
{
    try {
        return device.validate(Datastore::Transaction);
    } catch (const bgp_platform::xml::WriteError& error) {
        return error.what();
    }
}

Report complete_report(const RunOptions& options, const UpgradeLibrary& library, Device& device, int result,
                       const FailedCalls& failed_calls, const Watch& watch, Report report)
{
    report.returned = result;
    report.calls = device.calls();
    report.device = &device;
    report.failed_calls = &failed_calls;
    report.faults = device.faults();
    report.log = device.log();
    if (options.commit_check) {
        report.check = check(device);
    }
    const Evidence evidence{
        device,
        result,
        report.steps,
        failed_calls,
        assumptions_of(options.device),
        report.check,
        options.again ? std::optional<Again>(upgrade_again(library, device, options.limits, watch)) : std::nullopt};
    report.judgement = judge(evidence, chosen_severities(options.severities));
    return report;
}

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
    device.keep_history(true);
    UpgradeSteps steps([&device] { return totals_of(device.calls()); }, conditions_on(device));
    LogParts log_parts;
    follow_log(options, device, files.log, teller, watch, steps, &log_parts);
    device.fault_sink = [&](const bgp_platform::Fault& fault) { teller.fault(fault); };
    watch.start(device);

    FailedCalls failed_calls;
    device.recorder().after_failure = [&](const bgp_platform::capi::Failure& failure) {
        if (failure.error == CONFD_ERR_MALLOC) {
            MemoryLimit::reached();
        }
        failed_calls.add(steps.current(), failure.function, failure.error, failure.path, failure.message,
                         failure.number, device.log().size());
    };

    const std::optional<int> result = run_update(*upgrade_library, device, teller, options.limits, watch);
    if (!result) {
        return EXIT_FAILURE;
    }
    teller.returned();
    steps.returned();
    report.steps = steps.all();
    report.log_parts = log_parts.all();
    Finished finished;
    try {
        report = complete_report(options, *upgrade_library, device, *result, failed_calls, watch, std::move(report));
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
