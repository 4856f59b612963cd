#include "fleet/plan/git_process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <utility>

#include "fleet/plan/input_error.h"

namespace bgp_rehearse {

namespace {

// Without the variables that would lead git to another repository or run other programs.
std::vector<std::string> environment_for_git()
{
    std::vector<std::string> variables = {"LC_ALL=C.UTF-8", "GIT_TERMINAL_PROMPT=0", "GIT_OPTIONAL_LOCKS=0"};
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        if (text.compare(0, 4, "GIT_") != 0 && text.compare(0, 7, "LC_ALL=") != 0) {
            variables.push_back(text);
        }
    }
    return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> all(texts.size() + 1);
    std::transform(texts.begin(), texts.end(), all.begin(), [](std::string& text) { return text.data(); });
    return all;  // with a null at its end
}

// Signals strike as from a shell, also where the command has them wait.
int spawn(std::vector<std::string> command, const std::array<int, 3>& streams, pid_t* process)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int i = 0; i < 3; ++i) {
        posix_spawn_file_actions_adddup2(&actions, streams[static_cast<std::size_t>(i)], i);
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    std::vector<std::string> environment = environment_for_git();
    const int failed = posix_spawnp(process, command.front().c_str(), &actions, &attributes, pointers(command).data(),
                                    pointers(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return failed;
}

}  // namespace

GitProcess::GitProcess(const std::string& repository, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {"git", "-C", repository, "--no-pager", "-c", "protocol.allow=never"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    int to_git[2] = {-1, -1};
    int from_git[2] = {-1, -1};
    messages_ = memfd_create("git", MFD_CLOEXEC);
    int failed = messages_ < 0 || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, to_git) != 0 ||
                         pipe2(from_git, O_CLOEXEC) != 0
                     ? errno
                     : 0;
    if (failed == 0) {
        failed = spawn(command, {to_git[0], from_git[1], messages_}, &process_);
    }
    in_ = to_git[1];
    out_ = from_git[0];
    for (const int end : {to_git[0], from_git[1]}) {
        if (end >= 0) {
            close(end);
        }
    }
    if (failed != 0) {
        process_ = -1;
        wait();
        throw InputError(failed == ENOENT ? "git is not installed here; install it (apt-get install git)"
                                          : fmt::format("git cannot be run: {}", std::strerror(failed)));
    }
}

GitProcess::~GitProcess()
{
    wait();
}

bool GitProcess::send(const std::string& text)
{
    for (std::string_view rest = text; !rest.empty();) {
        const ssize_t sent = ::send(in_, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

std::optional<std::string> GitProcess::read_to(char end)
{
    std::size_t found = 0;
    while ((found = buffer_.find(end, taken_)) == std::string::npos) {
        if (!refill()) {
            return std::nullopt;
        }
    }
    std::string text = buffer_.substr(taken_, found - taken_);
    taken_ = found + 1;
    return text;
}

std::optional<std::string> GitProcess::read_bytes(std::size_t size)
{
    while (buffer_.size() - taken_ < size) {
        if (!refill()) {
            return std::nullopt;
        }
    }
    std::string bytes = buffer_.substr(taken_, size);
    taken_ += size;
    return bytes;
}

bool GitProcess::refill()
{
    constexpr std::size_t kPiece = 1 << 16;
    buffer_.erase(0, std::exchange(taken_, 0));
    const std::size_t size = buffer_.size();
    buffer_.resize(size + kPiece);
    ssize_t count = 0;
    do {
        count = read(out_, &buffer_[size], kPiece);
    } while (count < 0 && errno == EINTR);
    buffer_.resize(size + (count > 0 ? static_cast<std::size_t>(count) : 0));
    return count > 0;
}

std::string GitProcess::wait()
{
    for (int* const end : {&in_, &out_}) {
        if (*end >= 0) {
            close(std::exchange(*end, -1));
        }
    }
    int status = 0;
    if (process_ >= 0) {
        while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
    }
    std::string said;
    if (messages_ >= 0) {
        said.resize(4096);
        const ssize_t size = pread(messages_, said.data(), said.size(), 0);
        said.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        said.erase(said.find_last_not_of('\n') + 1);
        close(std::exchange(messages_, -1));
    }
    if (status == 0) {
        return {};
    }
    return said.empty() ? "git ended without a word" : said;
}

}  // namespace bgp_rehearse
