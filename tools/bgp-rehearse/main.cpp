// bgp-rehearse: rehearses the upgrade of a stored configuration on this machine (docs/rehearse.md).
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>

#include "base/standard_output.h"
#include "base/text_escape.h"
#include "findings/findings.h"
#include "generate/generate.h"
#include "manual/manual.h"
#include "options.h"
#include "run/run.h"
#include "sweep/sweep.h"

namespace {

using bgp_rehearse::ExitStatus;

// A file opened later must not become a standard stream because the caller had closed that. What is printed to a closed
// standard output fails all the same: it is open for reading only.
void open_standard_streams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);  // the lowest that is free
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
        if (command.manual) {
            return bgp_rehearse::write_manual(*command.manual);
        }
        if (command.fleet) {
            return command.fleet();
        }
        return command.run ? bgp_rehearse::run(*command.run) : command.status;
    } catch (const bgp_rehearse::CommandError& error) {
        bgp_rehearse::print_message(fmt::format("bgp-rehearse: {}\n", error.what()));
        return error.status();
    } catch (const std::exception& error) {
        bgp_rehearse::print_message(fmt::format("bgp-rehearse: {}\n", bgp_rehearse::escaped(error.what())));
        return ExitStatus::BadInput;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    open_standard_streams();
    std::signal(SIGPIPE, SIG_IGN);  // a broken pipe is a failed write
    ExitStatus status{};
    try {
        status = run_command(argc, argv);
    } catch (const bgp_rehearse::Interrupted& interrupted) {
        std::signal(interrupted.signal, SIG_DFL);
        std::raise(interrupted.signal);
    }
    std::_Exit(static_cast<int>(status));  // a big configuration takes long to free row by row, for nothing
}
