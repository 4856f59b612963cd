// What is wrong with a configuration file: all of it at once, up to a number of errors.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace bgp_platform::xml {

// A file that is refused. Each error is a line: "edge.xml:17: /router/bgp{65010}/as-size: "threeOctet" is not one of
// twoOctet, fourOctet". what() has them all, and how many more there are.
class LoadError : public std::runtime_error {
public:
    explicit LoadError(const std::string& error) : LoadError(std::vector<std::string>{error}, 0) {}
    LoadError(std::vector<std::string> errors, std::size_t more);

    const std::vector<std::string>& errors() const noexcept { return errors_; }
    std::size_t more() const noexcept { return more_; }  // that were found, and are not among them

private:
    std::vector<std::string> errors_;
    std::size_t more_;
};

// Gathers a file's errors while it is read.
class LoadErrors {
public:
    explicit LoadErrors(std::size_t most) : most_(most) {}

    void add(const std::string& error);
    void take_back();  // the one that was added last

    // Nothing can be read behind this one.
    [[noreturn]] void end(const std::string& error);

    bool any() const noexcept { return errors_.size() + more_ > 0; }

    // At the end of the file: throws what there is.
    void settle() const;

private:
    std::size_t most_;
    std::size_t more_ = 0;
    std::vector<std::string> errors_;
};

}  // namespace bgp_platform::xml
