#include "sweep/process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "base/exit_status.h"

namespace bgp_rehearse {

namespace {

constexpr int kTick = 200;  // ms

}  // namespace

SweepProcess::SweepProcess(const std::function<int(int channel)>& work)
{
    int channel[2];
    if (pipe2(channel, O_CLOEXEC) != 0) {
        throw CommandError(ExitStatus::BadInput, fmt::format("no pipe to a process: {}", std::strerror(errno)));
    }
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        signal(SIGPIPE, SIG_DFL);
        close(channel[0]);
        std::_Exit(work(channel[1]));
    }
    close(channel[1]);
    channel_ = channel[0];
    if (process_ < 0) {
        close(channel_);
        throw CommandError(ExitStatus::BadInput, fmt::format("no process to sweep in: {}", std::strerror(errno)));
    }
}

SweepProcess::End SweepProcess::wait(const std::function<void()>& on_tick)
{
    End end;
    char piece[4096];
    pollfd source{channel_, POLLIN, 0};
    while (on_tick && poll(&source, 1, kTick) == 0) {
        on_tick();
    }
    for (ssize_t size; (size = read(channel_, piece, sizeof piece)) > 0 || (size < 0 && errno == EINTR);) {
        end.text.append(piece, size < 0 ? 0 : static_cast<std::size_t>(size));
    }
    close(channel_);
    while (waitpid(process_, &end.status, 0) < 0 && errno == EINTR) {
    }
    return end;
}

}  // namespace bgp_rehearse
