#include "run/refused.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/child.h"
#include "base/exit_status.h"
#include "base/output_file.h"
#include "base/text_escape.h"
#include "report/json.h"
#include "run/files.h"

namespace bgp_rehearse {

namespace {

void tell_in_json(const RunOptions& options, const Report& report, const Ending& ending)
{
    if (options.json_printed()) {
        if (!write_json_report(report, ending, STDOUT_FILENO)) {
            throw CommandError(ExitStatus::NotWritten, fmt::format("standard output: {}", std::strerror(errno)));
        }
        return;
    }
    const InterruptGuard interrupts;
    OutputFile file("--json", json_target(options, report.inputs.library));
    if (!write_json_report(report, ending, file.descriptor())) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("{}: {}", escaped(options.json), std::strerror(errno)));
    }
    file.put_in_place();
}

}  // namespace

Ending tell_refused(const RunOptions& options, const Report& report, Ending ending)
{
    try {
        if (!options.json.empty()) {
            tell_in_json(options, report, ending);
        }
    } catch (const CommandError& error) {
        if (ending.error != error.what()) {
            ending.error += fmt::format("\n{}", error.what());
        }
    }
    return ending;
}

}  // namespace bgp_rehearse
