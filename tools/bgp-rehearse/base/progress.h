// A line on the terminal that says how far a long load or write is.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace bgp_rehearse {

// Shows nothing in the first second, and nothing at all when standard error is not a terminal. The line is taken away
// when the work, and with it this object, ends.
class ProgressLine {
public:
    explicit ProgressLine(std::string what);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // So many bytes of the total are done; total 0: not known.
    void show(std::size_t bytes, std::size_t total);

private:
    std::string what_;
    bool terminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace bgp_rehearse
