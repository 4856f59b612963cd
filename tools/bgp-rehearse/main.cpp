// bgp-rehearse: rehearses the upgrade of a stored configuration on this machine (docs/rehearse.md).
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "base/text_escape.h"
#include "findings/findings.h"
#include "generate/generate.h"
#include "options.h"
#include "run/run.h"
#include "sweep/sweep.h"

namespace {

using bgp_rehearse::ExitStatus;

// A file opened later must not become standard output because the caller had closed that.
void open_standard_streams()
{
    for (int descriptor = open("/dev/null", O_RDWR); descriptor >= 0; descriptor = dup(descriptor)) {
        if (descriptor > STDERR_FILENO) {
            close(descriptor);
            return;
        }
    }
}

ExitStatus run_command(int argc, const char* const* argv)
{
    try {
        const bgp_rehearse::CommandLine command = bgp_rehearse::parse_command_line(argc, argv);
        if (command.generate) {
            return bgp_rehearse::generate(*command.generate);
        }
        if (command.sweep) {
            return bgp_rehearse::sweep(*command.sweep);
        }
        if (command.findings) {
            return bgp_rehearse::tell_findings(*command.findings);
        }
        return command.run ? bgp_rehearse::run(*command.run) : command.status;
    } catch (const bgp_rehearse::CommandError& error) {
        fmt::print(stderr, "bgp-rehearse: {}\n", error.what());
        return error.status();
    } catch (const std::exception& error) {
        fmt::print(stderr, "bgp-rehearse: {}\n", bgp_rehearse::escaped(error.what()));
        return ExitStatus::BadInput;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    open_standard_streams();
    ExitStatus status{};
    try {
        status = run_command(argc, argv);
    } catch (const bgp_rehearse::Interrupted& interrupted) {
        std::signal(interrupted.signal, SIG_DFL);
        std::raise(interrupted.signal);
    }
    // A big configuration takes long to free row by row, for nothing.
    const bool flushed = std::fflush(nullptr) == 0;
    std::_Exit(static_cast<int>(flushed || status != ExitStatus::Ok ? status : ExitStatus::NotWritten));
}
