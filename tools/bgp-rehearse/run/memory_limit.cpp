#include "run/memory_limit.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <new>

namespace bgp_rehearse {

namespace {

constexpr int kCrashes[] = {SIGSEGV, SIGBUS, SIGABRT};
constexpr std::size_t kHandlerStack = 65536;
constexpr rlim_t kLittle = 131072;  // less than this is left when the C library can get no more

const Watch* limited = nullptr;  // that of the process while it has a limit
rlimit before{};

// What the process has mapped, in bytes; by calls that a signal handler may make.
rlim_t mapped() noexcept
{
    char text[32] = {};
    const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    const ssize_t size = file < 0 ? -1 : read(file, text, sizeof text - 1);
    close(file);
    rlim_t pages = 0;
    for (ssize_t i = 0; i < size && text[i] >= '0' && text[i] <= '9'; ++i) {
        pages = 10 * pages + static_cast<rlim_t>(text[i] - '0');
    }
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Whether the end that the process is coming to is one for want of memory.
bool is_for_memory() noexcept
{
    rlimit now{};
    return errno == ENOMEM || getrlimit(RLIMIT_AS, &now) != 0 || mapped() + kLittle > now.rlim_cur;
}

void note_at_exit()
{
    if (limited != nullptr && is_for_memory()) {
        limited->note_out_of_memory();
    }
}

// It strikes again behind the handler, and then in its own way.
void note_crash(int number)
{
    if (is_for_memory()) {
        limited->note_out_of_memory();
    }
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void note_crashes()
{
    static char stack[kHandlerStack];  // the program's own may be what has no room
    stack_t alternate{};
    alternate.ss_sp = stack;
    alternate.ss_size = sizeof stack;
    sigaltstack(&alternate, nullptr);
    struct sigaction action {};
    action.sa_handler = note_crash;
    action.sa_flags = SA_ONSTACK;
    for (const int number : kCrashes) {
        sigaction(number, &action, nullptr);
    }
}

}  // namespace

MemoryLimit::MemoryLimit(std::optional<std::size_t> bytes, const Watch& watch)
{
    getrlimit(RLIMIT_AS, &before);
    if (!bytes || mapped() + *bytes >= before.rlim_cur) {
        return;
    }
    const rlimit limit{mapped() + *bytes, before.rlim_max};
    if (setrlimit(RLIMIT_AS, &limit) != 0) {
        return;
    }
    limited = &watch;
    errno = 0;
    std::set_new_handler(reached);
    std::atexit(note_at_exit);
    note_crashes();
}

MemoryLimit::~MemoryLimit()
{
    if (limited == nullptr) {
        return;
    }
    limited = nullptr;
    setrlimit(RLIMIT_AS, &before);
    std::set_new_handler(nullptr);
    for (const int number : kCrashes) {
        std::signal(number, SIG_DFL);
    }
}

void MemoryLimit::reached() noexcept
{
    if (limited != nullptr) {
        limited->note_out_of_memory();
        std::_Exit(EXIT_FAILURE);
    }
}

}  // namespace bgp_rehearse
