#include "run/ending.h"

#include <fmt/format.h>

#include "base/exit_status.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

bool reaches(FailOn from, Severity verdict)
{
    return from != FailOn::Never && verdict >= (from == FailOn::Review ? Severity::Review : Severity::Stop);
}

Ending ends(ExitStatus status, const std::string& error = {})
{
    return {static_cast<int>(status), error};
}

}  // namespace

Ending ending_of(const RunOptions& options, const Finished& finished)
{
    if (!finished.mistake.empty()) {
        return ends(ExitStatus::OwnFault,
                    "the account of rows does not close, which is a bug of this command; nothing is written\n" +
                        finished.mistake);
    }
    if (!finished.invalid.empty()) {
        return ends(ExitStatus::NotValid,
                    "the result is not valid: " + escaped(finished.invalid) + without_output(options));
    }
    if (!finished.write_error.empty()) {
        return ends(ExitStatus::NotWritten, finished.write_error);
    }
    return ends(reaches(options.fail_on, static_cast<Severity>(finished.severity)) ? ExitStatus::VerdictReached
                                                                                   : ExitStatus::Ok);
}

std::string without_output(const RunOptions& options)
{
    return options.output.empty() ? std::string() : fmt::format("; {} is not written", escaped(options.output));
}

}  // namespace bgp_rehearse
