// A git command in a repository, spoken to through a socket and a pipe.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace bgp_rehearse {

class GitProcess {
public:
    // Throws InputError where git is not installed or no process can be made. git finds the repository in its folder by
    // its own rules, fetches nothing, and runs nothing that the environment or the repository names.
    GitProcess(const std::string& repository, const std::vector<std::string>& arguments);
    ~GitProcess();
    GitProcess(const GitProcess&) = delete;
    GitProcess& operator=(const GitProcess&) = delete;

    // False: git is gone.
    [[nodiscard]] bool send(const std::string& text);

    // What stands before the next `end`, which is taken as well; nothing where git ended before.
    std::optional<std::string> read_to(char end);

    // That many bytes; nothing where git ended before.
    std::optional<std::string> read_bytes(std::size_t size);

    // Waits for the end. Empty when git succeeded, else what it said of its failure.
    std::string wait();

private:
    bool refill();

    pid_t process_ = -1;
    int in_ = -1;
    int out_ = -1;
    int messages_ = -1;
    std::string buffer_;
    std::size_t taken_ = 0;  // of the buffer
};

}  // namespace bgp_rehearse
