// How the command ends: its exit statuses, and the one exception by which a failure reaches main.
#pragma once

#include <stdexcept>
#include <string>

namespace bgp_rehearse {

enum class ExitStatus : int {
    Ok = 0,
    UpgradeEnded = 1,    // the upgrade did not return: a fault, an assertion, a signal, an exit, a limit
    BadInput = 2,        // a bad command line, configuration or library; nothing was rehearsed
    VerdictReached = 3,  // the upgrade returned, and the verdict is as bad as --fail-on says, or worse
    NotValid = 4,        // --commit-check: the result is not valid
    NotWritten = 5,      // the result, the log or the report could not be written
    ContractBroken = 6,  // a sweep found the library's contract broken
    PartsDiffer = 6,     // the parts of a fleet and its plan do not agree
    OwnFault = 70,       // the command found itself wrong: the account of a rehearsal does not close
};

// A failure that ends the command. The text says what was wanted, what is wrong and, where it helps, what to do.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitStatus status, const std::string& text) : std::runtime_error(text), status_(status) {}
    ExitStatus status() const noexcept { return status_; }

private:
    ExitStatus status_;
};

// A signal that asks the command to end came, and everything is cleaned up.
struct Interrupted {
    int signal;
};

}  // namespace bgp_rehearse
