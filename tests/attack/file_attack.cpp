// Loaded into a command before the C library: makes one chosen call on the files of a folder fail, stop half-way, or be
// the last. Calls that have nothing to do with the folder are left alone. From the environment:
//
//   BGP_ATTACK_FOLDER  the folder, absolute
//   BGP_ATTACK_TRACE   a file elsewhere that gets a letter for each call: o open, c create, r read, w write, s fsync,
//                      m rename
//   BGP_ATTACK_AT      the number of the call, 1 the first
//   BGP_ATTACK_HOW     "kill-before", "kill-after": the process that makes the call; "end-before", "end-after": the
//                      command; "short": half of what is to be read or written; "fail": with BGP_ATTACK_ERRNO; "full":
//                      this and every later create, write and fsync fail so; anything else: nothing
//   BGP_ATTACK_ERRNO   an error number
//
// Nothing here allocates or calls what it wraps: a sanitizer's own start comes through here.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const pid_t kCommand = getpid();  // its child processes inherit the number

const char* setting(const char* name)
{
    const char* const value = getenv(name);
    return value == nullptr ? "" : value;
}

bool is_how(const char* how)
{
    return strcmp(setting("BGP_ATTACK_HOW"), how) == 0;
}

bool in_folder(const char* path)
{
    const char* const folder = setting("BGP_ATTACK_FOLDER");
    const size_t size = strlen(folder);
    return size > 0 && strncmp(path, folder, size) == 0 && (path[size] == '/' || path[size] == '\0');
}

bool in_folder(int descriptor)
{
    char link[64];
    char path[PATH_MAX];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t size = readlink(link, path, sizeof path - 1);
    if (size < 0) {
        return false;
    }
    path[size] = '\0';
    return in_folder(path);
}

// Notes the call, and returns its number.
long next_turn(char letter)
{
    const long trace =
        syscall(SYS_openat, AT_FDCWD, setting("BGP_ATTACK_TRACE"), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (trace < 0 || syscall(SYS_write, trace, &letter, 1) != 1) {
        abort();
    }
    struct stat status {};
    fstat(static_cast<int>(trace), &status);
    syscall(SYS_close, trace);
    return status.st_size;
}

bool is_due(long turn, char letter)
{
    const long at = atol(setting("BGP_ATTACK_AT"));
    return turn == at || (is_how("full") && turn > at && strchr("cws", letter) != nullptr);
}

void strike(const char* process_dies, const char* command_dies)
{
    if (is_how(process_dies)) {
        kill(getpid(), SIGKILL);
    } else if (is_how(command_dies)) {
        kill(kCommand, SIGKILL);
        for (;;) {
            pause();  // a child dies with the command
        }
    }
}

// `call` takes whether it shall do but half of its work.
template <typename Call>
long attacked(char letter, bool ours, Call call)
{
    if (!ours || !is_due(next_turn(letter), letter)) {
        return call(false);
    }
    strike("kill-before", "end-before");
    if (is_how("fail") || is_how("full")) {
        errno = atoi(setting("BGP_ATTACK_ERRNO"));
        return -1;
    }
    const long result = call(is_how("short"));
    strike("kill-after", "end-after");
    return result;
}

int attacked_open(const char* path, int flags, mode_t mode)
{
    return static_cast<int>(attacked((flags & O_CREAT) != 0 ? 'c' : 'o', in_folder(path),
                                     [=](bool /*half*/) { return syscall(SYS_openat, AT_FDCWD, path, flags, mode); }));
}

mode_t mode_of(int flags, va_list arguments)
{
    return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

size_t part_of(size_t size, bool half)
{
    return half ? (size + 1) / 2 : size;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_of(flags, arguments);
    va_end(arguments);
    return attacked_open(path, flags, mode);
}

int open64(const char* path, int flags, ...) __attribute__((alias("open")));

ssize_t read(int descriptor, void* buffer, size_t size)
{
    return attacked('r', in_folder(descriptor),
                    [=](bool half) { return syscall(SYS_read, descriptor, buffer, part_of(size, half)); });
}

ssize_t write(int descriptor, const void* buffer, size_t size)
{
    return attacked('w', in_folder(descriptor),
                    [=](bool half) { return syscall(SYS_write, descriptor, buffer, part_of(size, half)); });
}

int fsync(int descriptor)
{
    return static_cast<int>(
        attacked('s', in_folder(descriptor), [=](bool /*half*/) { return syscall(SYS_fsync, descriptor); }));
}

int rename(const char* from, const char* to) noexcept
{
    return static_cast<int>(attacked(
        'm', in_folder(to), [=](bool /*half*/) { return syscall(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to); }));
}

}  // extern "C"
