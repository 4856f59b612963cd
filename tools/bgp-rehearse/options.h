// The command line of bgp-rehearse.
#pragma once

#include <functional>
#include <optional>

#include "base/exit_status.h"
#include "findings/findings.h"
#include "generate/generate.h"
#include "manual/manual.h"
#include "run/request.h"
#include "sweep/sweep.h"

namespace bgp_rehearse {

// What a command line comes to: something to do, or a status to exit with at once (help and version were printed, or a
// message about the command line was).
struct CommandLine {
    std::optional<RunOptions> run;
    std::optional<GenerateOptions> generate;
    std::optional<SweepOptions> sweep;
    std::optional<FindingsOptions> findings;
    std::function<ExitStatus()> fleet;
    std::optional<ManualOptions> manual;
    ExitStatus status = ExitStatus::Ok;
};

CommandLine parse_command_line(int argc, const char* const* argv);

}  // namespace bgp_rehearse
