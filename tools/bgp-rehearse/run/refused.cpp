#include "run/refused.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/child.h"
#include "base/exit_status.h"
#include "base/output_file.h"
#include "base/text_escape.h"
#include "report/html/page.h"
#include "report/json.h"
#include "report/junit.h"
#include "run/files.h"

namespace bgp_rehearse {

namespace {

using Write = bool(const Report&, const Ending&, int file);

void tell_in_file(const char* option, const std::string& target, const std::string& name, Write* write,
                  const Report& report, const Ending& ending)
{
    const InterruptGuard interrupts;
    OutputFile file(option, target);
    if (!write(report, ending, file.descriptor())) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("{}: {}", escaped(name), std::strerror(errno)));
    }
    file.put_in_place();
}

void tell_in_json(const RunOptions& options, const Report& report, const Ending& ending)
{
    if (options.json_printed()) {
        if (!write_json_report(report, ending, STDOUT_FILENO)) {
            throw CommandError(ExitStatus::NotWritten, fmt::format("standard output: {}", std::strerror(errno)));
        }
        return;
    }
    tell_in_file("--json", json_target(options, report.inputs.library), options.json, write_json_report, report,
                 ending);
}

void tell_in_junit(const RunOptions& options, const Report& report, const Ending& ending)
{
    tell_in_file("--junit", junit_target(options, report.inputs.library), options.junit, write_junit_report, report,
                 ending);
}

void tell_in_page(const RunOptions& options, const Report& report, const Ending& ending)
{
    tell_in_file("--html", html_target(options, report.inputs.library), options.html, write_html_report, report,
                 ending);
}

// A file that is refused may be the very reason, and was told then.
template <typename Tell>
void tell(const RunOptions& options, const Report& report, Tell tell_it, Ending* ending)
{
    try {
        tell_it(options, report, *ending);
    } catch (const CommandError& error) {
        if (ending->error != error.what()) {
            ending->error += fmt::format("\n{}", error.what());
        }
    }
}

}  // namespace

Ending tell_refused(const RunOptions& options, const Report& report, Ending ending)
{
    if (!options.junit.empty()) {
        tell(options, report, tell_in_junit, &ending);
    }
    if (!options.json.empty()) {
        tell(options, report, tell_in_json, &ending);
    }
    if (!options.html.empty()) {
        tell(options, report, tell_in_page, &ending);
    }
    return ending;
}

}  // namespace bgp_rehearse
