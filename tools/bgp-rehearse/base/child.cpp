#include "base/child.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base/exit_status.h"

namespace bgp_rehearse {

namespace {

constexpr int kTick = 100;  // ms

[[noreturn]] void no_child(const char* what)
{
    throw CommandError(ExitStatus::BadInput,
                       fmt::format("no process for the upgrade: {}: {}", what, std::strerror(errno)));
}

// Cuts what comes through the channel into lines.
class LineReader {
public:
    LineReader(int descriptor, const std::function<void(std::string_view)>& on_line)
        : descriptor_(descriptor), on_line_(on_line)
    {
    }

    enum class Got { Piece, Nothing, End };

    // Takes a piece of what is there now. A child that writes without end must not keep its parent from all else.
    Got read_piece()
    {
        char piece[65536];
        ssize_t size = 0;
        do {
            size = read(descriptor_, piece, sizeof piece);
        } while (size < 0 && errno == EINTR);
        if (size <= 0) {
            return size < 0 ? Got::Nothing : Got::End;
        }
        pending_.append(piece, static_cast<std::size_t>(size));
        pass_lines();
        return Got::Piece;
    }

    void read_rest()
    {
        while (read_piece() == Got::Piece) {
        }
    }

private:
    void pass_lines()
    {
        std::size_t start = 0;
        for (std::size_t end; (end = pending_.find('\n', start)) != std::string::npos; start = end + 1) {
            on_line_(std::string_view(pending_).substr(start, end - start));
        }
        pending_.erase(0, start);
    }

    int descriptor_;
    const std::function<void(std::string_view)>& on_line_;
    std::string pending_;
};

void redirect_standard_streams()
{
    dup2(STDERR_FILENO, STDOUT_FILENO);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing >= 0) {
        dup2(nothing, STDIN_FILENO);
        close(nothing);
    }
}

[[noreturn]] void be_child(const InterruptGuard& interrupts, pid_t parent, const std::function<int()>& body) noexcept
{
    // Its own process group: an interrupt from the terminal goes to the parent alone, which then ends the whole group.
    setpgid(0, 0);
    signal(SIGTTOU, SIG_IGN);  // so that the group may show progress on the terminal
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        std::_Exit(EXIT_FAILURE);
    }
    redirect_standard_streams();
    signal(SIGPIPE, SIG_DFL);
    interrupts.release();
    const int status = body();
    // A big configuration takes long to free row by row, for nothing.
    std::fflush(nullptr);
    std::_Exit(status);
}

pid_t begin_child(const InterruptGuard& interrupts, const std::function<int()>& body)
{
    std::fflush(nullptr);  // what is buffered now must not be written twice
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) {
        no_child("fork");
    }
    if (child == 0) {
        be_child(interrupts, parent, body);
    }
    setpgid(child, child);  // here too, so that it is done before the first kill()
    return child;
}

// An end that is not open is -1.
struct Pipe {
    Pipe()
    {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            no_child("pipe");
        }
    }
    ~Pipe()
    {
        close_end(0);
        close_end(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void close_end(int end)
    {
        if (ends[end] >= 0) {
            close(ends[end]);
        }
        ends[end] = -1;
    }

    int ends[2] = {-1, -1};
};

ChildEnd wait_for(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    kill(-child, SIGKILL);  // what it started and left behind
    ChildEnd end;
    (WIFSIGNALED(status) ? end.signal : end.status) = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
    return end;
}

// With what it started, unless that has left its group.
void end_child(pid_t child)
{
    kill(-child, SIGKILL);
    kill(child, SIGKILL);  // a library may have moved it to another group
    wait_for(child);
}

bool has_ended(pid_t child)
{
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == child;
}

ChildEnd watch(const InterruptGuard& interrupts, pid_t child, int channel,
               const std::function<void(std::string_view)>& on_line, const std::function<bool()>& on_tick)
{
    LineReader lines(channel, on_line);
    pollfd sources[] = {{interrupts.descriptor(), POLLIN, 0}, {channel, POLLIN, 0}};
    while (!has_ended(child)) {
        poll(sources, 2, kTick);
        if (sources[1].revents != 0 && lines.read_piece() == LineReader::Got::End) {
            sources[1].fd = -1;  // poll() passes over it
        }
        ChildEnd end;
        const int signal = interrupts.take();
        end.interrupted_by = signal == SIGCHLD ? 0 : signal;
        end.stopped = !on_tick();
        if (end.interrupted_by != 0 || (end.stopped && !has_ended(child))) {
            end_child(child);
            lines.read_rest();
            return end;
        }
    }
    lines.read_rest();
    return wait_for(child);
}

// The next signal, or 0 when none comes in time.
int wait_for_signal(const InterruptGuard& interrupts, const std::optional<Duration>& time)
{
    constexpr std::chrono::milliseconds kLongest{60000};
    pollfd signals{interrupts.descriptor(), POLLIN, 0};
    const auto rounded = time ? std::chrono::ceil<std::chrono::milliseconds>(*time) : kLongest;
    poll(&signals, 1, static_cast<int>(std::min(rounded, kLongest).count()));
    return interrupts.take();
}

}  // namespace

InterruptGuard::InterruptGuard()
{
    sigset_t waiting;
    sigemptyset(&waiting);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&waiting, number);
        }
    }
    signal(SIGCHLD, SIG_DFL);
    sigaddset(&waiting, SIGCHLD);
    sigprocmask(SIG_BLOCK, &waiting, &before_);
    descriptor_ = signalfd(-1, &waiting, SFD_NONBLOCK | SFD_CLOEXEC);
    if (descriptor_ < 0) {
        sigprocmask(SIG_SETMASK, &before_, nullptr);
        no_child("signals");
    }
}

InterruptGuard::~InterruptGuard()
{
    close(descriptor_);
    release();
}

int InterruptGuard::take() const noexcept
{
    signalfd_siginfo info{};
    return read(descriptor_, &info, sizeof info) == sizeof info ? static_cast<int>(info.ssi_signo) : 0;
}

void InterruptGuard::release() const noexcept
{
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

ChildEnd run_in_child(const InterruptGuard& interrupts, const std::function<int(int channel)>& body,
                      const std::function<void(std::string_view)>& on_line, const std::function<bool()>& on_tick)
{
    Pipe channel;
    fcntl(channel.ends[0], F_SETFL, O_NONBLOCK);
    const pid_t child = begin_child(interrupts, [&] {
        channel.close_end(0);
        return body(channel.ends[1]);
    });
    channel.close_end(1);
    return watch(interrupts, child, channel.ends[0], on_line, on_tick);
}

ChildEnd run_in_child(const InterruptGuard& interrupts, const std::function<int()>& body,
                      const std::function<std::optional<Duration>()>& time_left)
{
    const pid_t child = begin_child(interrupts, body);
    while (!has_ended(child)) {
        const std::optional<Duration> left = time_left();
        ChildEnd end;
        end.stopped = left && *left <= Duration{};
        const int signal = end.stopped ? 0 : wait_for_signal(interrupts, left);
        end.interrupted_by = signal == SIGCHLD ? 0 : signal;
        if (end.interrupted_by != 0 || (end.stopped && !has_ended(child))) {
            end_child(child);
            return end;
        }
    }
    return wait_for(child);
}

ChildEnd run_children(const InterruptGuard& interrupts, std::size_t count, const std::function<int()>& body,
                      const std::function<void()>& on_tick)
{
    std::vector<pid_t> children(count);
    std::generate(children.begin(), children.end(), [&] { return begin_child(interrupts, body); });
    ChildEnd end;
    while (!children.empty() && end.status == 0 && end.signal == 0 && end.interrupted_by == 0) {
        const int signal = wait_for_signal(interrupts, std::chrono::milliseconds(kTick));
        end.interrupted_by = signal == SIGCHLD ? 0 : signal;
        on_tick();
        const auto ended = std::find_if(children.begin(), children.end(), has_ended);
        if (ended != children.end() && end.interrupted_by == 0) {
            end = wait_for(*ended);
            children.erase(ended);
        }
    }
    std::for_each(children.begin(), children.end(), end_child);
    return end;
}

}  // namespace bgp_rehearse
