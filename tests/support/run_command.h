// Runs the built command as a user does: arguments in, exit status and both outputs out.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bgp_test {

struct CommandResult {
    int status = -1;  // exit status, -1 when a signal ended it
    int signal = 0;
    std::string out;
    std::string err;
};

// A command that runs, with its outputs in pipes or, for out, on a terminal.
class RunningCommand {
public:
    enum class Out { Pipe, Terminal };

    // `environment` ("NAME=value") is all that it gets beside PATH.
    RunningCommand(std::vector<std::string> arguments, std::vector<std::string> environment = {}, Out out = Out::Pipe)
    {
        int out_ends[2];
        int err_ends[2];
        if (out == Out::Terminal) {
            open_terminal(out_ends);
        } else if (pipe2(out_ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("pipe");
        }
        if (pipe2(err_ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("pipe");
        }
        out_ = out_ends[0];
        err_ = err_ends[0];
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out_ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, err_ends[1], STDERR_FILENO);
        environment.push_back(std::string("PATH=") + std::getenv("PATH"));
        // As from a shell, even where the test itself runs with signals ignored.
        sigset_t strike;
        sigfillset(&strike);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigdefault(&attributes, &strike);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
        const int failed = posix_spawnp(&process_, arguments.front().c_str(), &actions, &attributes,
                                        pointers(arguments).data(), pointers(environment).data());
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        close(out_ends[1]);
        close(err_ends[1]);
        if (failed != 0) {
            throw std::runtime_error("cannot run " + arguments.front());
        }
    }
    RunningCommand(const RunningCommand&) = delete;
    RunningCommand& operator=(const RunningCommand&) = delete;
    ~RunningCommand()
    {
        close(out_);
        close(err_);
    }

    void send(int signal) const { kill(process_, signal); }

    // Reads both outputs to their ends and waits.
    CommandResult wait()
    {
        CommandResult result;
        pollfd sources[] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
        std::string* const texts[] = {&result.out, &result.err};
        while (sources[0].fd >= 0 || sources[1].fd >= 0) {
            poll(sources, 2, -1);
            for (int i = 0; i < 2; ++i) {
                if (sources[i].fd >= 0 && sources[i].revents != 0 && !read_piece(sources[i].fd, texts[i])) {
                    sources[i].fd = -1;
                }
            }
        }
        int status = 0;
        waitpid(process_, &status, 0);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        return result;
    }

private:
    static std::vector<char*> pointers(std::vector<std::string>& texts)
    {
        std::vector<char*> all;
        for (std::string& text : texts) {
            all.push_back(text.data());
        }
        all.push_back(nullptr);
        return all;
    }

    static void open_terminal(int ends[2])
    {
        ends[0] = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (ends[0] < 0 || grantpt(ends[0]) != 0 || unlockpt(ends[0]) != 0) {
            throw std::runtime_error("no terminal can be made");
        }
        ends[1] = open(ptsname(ends[0]), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }

    // False at the end; a terminal's is an error.
    static bool read_piece(int descriptor, std::string* text)
    {
        char piece[4096];
        const ssize_t size = read(descriptor, piece, sizeof piece);
        if (size > 0) {
            text->append(piece, static_cast<std::size_t>(size));
        }
        return size > 0;
    }

    pid_t process_ = -1;
    int out_ = -1;
    int err_ = -1;
};

inline CommandResult run_command(std::vector<std::string> arguments, std::vector<std::string> environment = {})
{
    return RunningCommand(std::move(arguments), std::move(environment)).wait();
}

// The JSON report that `bgp-rehearse run` printed or wrote; empty when there is none.
inline std::string json_report_of(const std::vector<std::string>& arguments, const CommandResult& result)
{
    const std::string option = "--json=";
    std::string report;
    for (const std::string& argument : arguments) {
        if (argument == "--json") {
            report = result.out;
        } else if (argument.compare(0, option.size(), option) == 0) {
            std::ifstream file(argument.substr(option.size()));
            report.assign(std::istreambuf_iterator<char>(file), {});
        }
    }
    return !arguments.empty() && arguments[0] == "run" && report.compare(0, 1, "{") == 0 ? report : "";
}

// bgp-rehearse with these arguments. A JSON report is left in the folder BGP_JSON_REPORTS, where the environment names one,
// to be held to its schema.
inline CommandResult rehearse(std::vector<std::string> arguments, std::vector<std::string> environment = {})
{
    const std::vector<std::string> command = arguments;
    arguments.insert(arguments.begin(), BGP_REHEARSE);
    CommandResult result = run_command(std::move(arguments), std::move(environment));
    const char* const folder = std::getenv("BGP_JSON_REPORTS");
    const std::string report = folder == nullptr ? "" : json_report_of(command, result);
    if (!report.empty()) {
        std::ofstream(folder + ("/" + std::to_string(std::hash<std::string>()(report)) + ".json")) << report;
    }
    return result;
}

}  // namespace bgp_test
