// Runs code in a child process, so that whatever it does ends only that process.
#pragma once

#include <csignal>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "base/duration.h"

namespace bgp_rehearse {

// While it lives, the signals that ask the command to end (SIGINT, SIGTERM, SIGHUP, those that are not ignored) wait,
// so that temporary files are removed before the command goes. Make it before the files, so that it outlives them: what
// still waits then strikes.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    int descriptor() const noexcept
    {
        return descriptor_;
    }                               // readable when a signal waits, the end of a child included
    int take() const noexcept;      // the next waiting signal, 0 when there is none
    void release() const noexcept;  // signals strike again; for the child

private:
    sigset_t before_;
    int descriptor_;
};

// How a child ended: by exit with a status, by a signal of its own, or killed because the command was interrupted or
// because it might not go on.
struct ChildEnd {
    int status = 0;
    int signal = 0;
    int interrupted_by = 0;
    bool stopped = false;
};

// Forks, and runs `body` in the child with a descriptor to send lines to the parent through; the child ends with the
// body's result as its exit status and runs no destructors or exit handlers. The parent calls `on_line` for each line
// that comes, without its line end, until the child is gone, and `on_tick` at least a few times a second, which says
// whether the child may go on. What the child started ends with it, and the child ends with the parent. In the child,
// standard output leads to standard error, standard input is empty, and a broken pipe ends it as usual. Throws
// CommandError when no process can be made.
ChildEnd run_in_child(const InterruptGuard& interrupts, const std::function<int(int channel)>& body,
                      const std::function<void(std::string_view)>& on_line, const std::function<bool()>& on_tick);

// The same of a child that sends nothing. `time_left` is asked whenever that may be over, and ends the child when nothing
// is left; none: it may take as long as it does.
ChildEnd run_in_child(const InterruptGuard& interrupts, const std::function<int()>& body,
                      const std::function<std::optional<Duration>()>& time_left);

// Several such children at a time that all do the same, until all have ended or the command is interrupted; calls `on_tick`
// a few times a second. When one ends by a signal or with another status than 0, the others are ended: that one's end is
// returned.
ChildEnd run_children(const InterruptGuard& interrupts, std::size_t count, const std::function<int()>& body,
                      const std::function<void()>& on_tick);

}  // namespace bgp_rehearse
